// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Features/PreviewPane/PreviewCards.h"
#include "Session/EditHistory.h"
#include "Session/ExportFindings.h"
#include "Session/ExportSession.h"
#include "Session/PhotoListModel.h"
#include "Session/PhotoSession.h"
#include "Session/Preferences.h"
#include "Session/PreviewLoader.h"
#include "Session/PreviewRenderQueue.h"

#include <QTimer>
#include <QWidget>

#include <optional>

namespace ferrow {

class EmptyPreview;
class ExportFooter;
class PreviewCanvas;
class PreviewFooter;
class PreviewRequester;
class ReviewBar;

/// The selected photo in its frame, on the backdrop of the user's choice. Feeds the render queue and selects other
/// photos; decoding the selected one is the business of whoever owns the loader.
class PreviewPane : public QWidget {
    Q_OBJECT

public:
    PreviewPane(PhotoSession& session, PreviewLoader& loader, PreviewRenderQueue& queue, ExportSession& exportSession,
                EditHistory& history, Preferences& preferences, QWidget* parent = nullptr);
    ~PreviewPane() override;

    /// Device pixels for one output pixel; 0 while nothing is shown.
    [[nodiscard]] double zoom() const;
    [[nodiscard]] bool isFit() const;
    void zoomIn();
    void zoomOut();
    void zoomToFit();
    void zoomToActualPixels();
    void setZoom(double zoom);

    /// Shows the bare photo, for as long as a button or key is held.
    void setComparing(bool isComparing);
    /// A drop of so many photos would be taken, anywhere in the window; 0: of an unknown number. Nothing when it has
    /// left or been dropped.
    void setDropTarget(std::optional<int> fileCount);
    /// The photos that steps lead through; all of the session's without one.
    void setList(const PhotoListModel& list);
    /// What is shown in place of the single photo while setSheetShown() says so, and its control for the footer.
    void setSheet(QWidget* sheet, QWidget* control);
    void setSheetShown(bool isShown);
    [[nodiscard]] bool isSheetShown() const { return isSheetShown_; }
    /// There is no list beside it: the footer leads through the photos.
    void setNarrow(bool isNarrow);
    /// The selected photo could not be decoded. Gone with the next selection, a retry, or when it has been loaded after
    /// all.
    void showLoadError(const QString& message);
    /// Leads through the photos of a finding until endReview(), or until none of them is left.
    void review(const ExportFinding& finding);
    void endReview();

signals:
    void zoomChanged();
    void addPhotosRequested();
    void addFolderRequested();
    void cancelExportRequested();
    /// The selected photo is to be included, or left out, and the next to be shown.
    void cullRequested(bool included);
    /// By Enter or Esc over the single photo.
    void sheetRequested();
    void retryRequested();
    /// Of the selected photo, which can't be read.
    void showInFolderRequested();
    /// The first photos took the place of the buttons that had the focus; the picture has it now.
    void focusHandedOn();
    /// From the review of a finding back to the export.
    void backToExportRequested();

private:
    void buildCanvas();
    void connectModels();
    void connectParts();
    void followSelection();
    void followRecipe();
    void followLoader();
    void followExport();
    void followBackdrop();
    void chooseBackdrop(PreviewBackdrop backdrop);
    void step(int places);
    [[nodiscard]] int shownCount() const;
    /// Among those shown; -1 for none.
    [[nodiscard]] int shownPosition() const;
    void removeSelected();
    void showStandIn();
    void giveBare();
    void showError(const QString& title, const QString& message, ErrorCard::WaysOut waysOut);
    void hideErrors();
    void renewNotice();
    void renewLoading();
    void renewTexts();

    PhotoSession& session_;
    PreviewLoader& loader_;
    PreviewRenderQueue& queue_;
    ExportSession& exportSession_;
    EditHistory& history_;
    Preferences& preferences_;
    const PhotoListModel* list_ = nullptr;
    std::optional<FileUrl> shownPhoto_;
    std::optional<LogoAssetReference> missingLogo_;   ///< The last that could not be loaded.
    std::optional<LogoAssetReference> dismissedLogo_; ///< Missing too, but the user has read of it.
    QString missingLogoText_;
    bool isSheetShown_ = false;
    bool hasLoadError_ = false;
    bool hasToldUnsaved_ = false;
    QTimer loadingDelay_;

    PreviewRequester* requester_ = nullptr;
    QWidget* area_ = nullptr;
    PreviewCanvas* canvas_ = nullptr;
    QWidget* sheet_ = nullptr; ///< None before setSheet().
    EmptyPreview* empty_ = nullptr;
    ErrorCard* error_ = nullptr;
    NoticeCard* notice_ = nullptr;
    LoadingLine* loadingLine_ = nullptr;
    DropOverlay* drop_ = nullptr;
    ReviewBar* review_ = nullptr;
    PreviewFooter* footer_ = nullptr;
    ExportFooter* exportFooter_ = nullptr;
};

} // namespace ferrow
