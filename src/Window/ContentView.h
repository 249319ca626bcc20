// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Persistence/PresetLibrary.h"
#include "Session/EditHistory.h"
#include "Session/ExportSession.h"
#include "Session/LogoImporter.h"
#include "Session/PhotoListModel.h"
#include "Session/PhotoSession.h"
#include "Session/PhotoWarnings.h"
#include "Session/Preferences.h"
#include "Session/PreviewLoader.h"
#include "Session/PreviewRenderQueue.h"
#include "Window/ErrorAlerts.h"
#include "Window/ExportFlow.h"
#include "Window/PresetFlow.h"
#include "Window/WindowServices.h"

#include <QPointer>
#include <QWidget>

#include <stop_token>

class QMimeData;

namespace ferrow {

class ConfirmSheet;
class ContactSheet;
struct Framing;
class InspectorView;
class MainToolBar;
class PhotoDetails;
class PhotoSidebar;
class PreviewPane;
class SettingsView;
class WindowActions;
class WindowColumns;

/// The main window: owns the models, lays out the views, and turns commands into calls on the models with the panels,
/// questions and alerts that they need. Closing it stops an import or export; finished files stay.
class ContentView : public QWidget {
    Q_OBJECT

public:
    explicit ContentView(Preferences& preferences, WindowServices services = WindowServices::system());
    ~ContentView() override;

    void importRoots(const std::vector<FileUrl>& urls);
    /// Files that another start was given: at once, or as soon as an import or export that runs has ended.
    void importWhenFree(const std::vector<FileUrl>& urls);
    /// To the front, by the desktop's permission where it gave one.
    void present(const QByteArray& activationToken);
    /// Closes without asking, as the system demands it.
    void closeAtOnce();

    [[nodiscard]] PhotoSession& session() { return session_; }
    [[nodiscard]] ExportSession& exportSession() { return exportSession_; }
    [[nodiscard]] PresetLibrary& presetLibrary() { return presetLibrary_; }
    [[nodiscard]] EditHistory& history() { return history_; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    enum class DropTarget { none, photos, logo };

    void buildViews();
    void connectActions();
    void connectModels();
    void updateActions();

    void choosePhotos();
    void chooseFolder();
    void loadSelectedPreview();
    void importLogo();
    void importLogoFile(const FileUrl& url, const Framing& framing);
    /// For the framing that it was asked for, also where another photo is selected by now.
    void useLogo(const LogoAssetReference& asset, const Framing& framing);
    void clearAll();
    void importWaiting();
    void askBeforeClosing();

    void stopAllAccess();

    void showSettings();
    void showShortcuts();
    void followZoom();
    void showSheet(bool isShown);
    void searchPhotos();
    /// Includes the selected photo, or leaves it out, and goes on to the next one shown.
    void cull(bool included);
    void setComparing(bool comparing);
    void moveToArea(int direction);
    [[nodiscard]] bool handleDrag(const QWidget& widget, QEvent* event);
    [[nodiscard]] DropTarget dropTargetAt(const QPoint& globalPosition, const QMimeData& mime) const;
    void showDropTarget(DropTarget target, const QMimeData* mime);
    [[nodiscard]] bool handleCompareKey(const QEvent& event);

    Preferences& preferences_;
    WindowServices services_;
    PhotoSession session_;
    PreviewLoader previewLoader_;
    PreviewRenderQueue renderQueue_;
    ExportSession exportSession_;
    PhotoWarnings photoWarnings_;
    PhotoListModel photoList_;
    PresetLibrary presetLibrary_;
    LogoImporter logoImporter_;
    EditHistory history_;
    ErrorAlerts alerts_;
    PresetFlow presetFlow_;
    ExportFlow exportFlow_;

    WindowActions* actions_ = nullptr;
    MainToolBar* toolBar_ = nullptr;
    PhotoSidebar* sidebar_ = nullptr;
    PreviewPane* preview_ = nullptr;
    ContactSheet* sheet_ = nullptr;
    InspectorView* inspector_ = nullptr;
    PhotoDetails* details_ = nullptr;
    WindowColumns* columns_ = nullptr;
    QPointer<SettingsView> settings_;

    std::stop_source previewLoad_;
    std::vector<FileUrl> waitingRoots_;
    QPointer<ConfirmSheet> closingQuestion_;
    bool mayClose_ = false;                    ///< In the middle of an export.
    DropTarget dropTarget_ = DropTarget::none; ///< Of the drag over the window.
};

} // namespace ferrow
