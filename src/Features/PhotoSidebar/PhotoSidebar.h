// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Session/EditHistory.h"
#include "Session/ExportSession.h"
#include "Session/PhotoSession.h"

#include <QWidget>

class QLabel;
class QMenu;
class QPushButton;

namespace ferrow {

class BareCheckBox;
class PhotoListModel;
class PhotoListView;
class SearchField;
class ProgressLine;
class ThumbnailCache;

/// The photos of the session with their ticks, what an import has read so far, and how many will be exported.
class PhotoSidebar : public QWidget {
    Q_OBJECT

public:
    PhotoSidebar(PhotoListModel& model, PhotoSession& session, EditHistory& history, ExportSession& exportSession,
                 QWidget* parent = nullptr);

    [[nodiscard]] PhotoListView* list() const { return list_; }
    /// Where names are searched; shows the list first, where that is folded away.
    [[nodiscard]] SearchField* searchField() const { return search_; }
    /// What can be done with the photo, as a menu.
    void showMenu(const FileUrl& photoID, const QPoint& place);

signals:
    void clearAllRequested();
    void detailsRequested(const ferrow::FileUrl& photoID);
    void showInFolderRequested(const ferrow::FileUrl& photoID);
    /// By a click or Enter, also where it was selected already.
    void photoChosen();
    /// The selected photo is to be included, or left out, and the next to be shown.
    void cullRequested(bool included);

private:
    QWidget* buildHeader();
    QWidget* buildSearch();
    QWidget* buildImportBlock();
    QWidget* buildFooter();
    void buildList();

    void followSelection();
    void followImport();
    void followFilter();
    void showSortMenu();
    void updateCounts();
    /// As one step; all become what the row `to` becomes.
    void toggleRange(int from, int to);

    PhotoListModel& model_;
    PhotoSession& session_;
    EditHistory& history_;
    ExportSession& exportSession_;
    ThumbnailCache* thumbnails_ = nullptr;
    PhotoListView* list_ = nullptr;
    QWidget* searchRow_ = nullptr;
    SearchField* search_ = nullptr;
    QPushButton* sort_ = nullptr;
    BareCheckBox* includeAll_ = nullptr;
    QLabel* count_ = nullptr;
    QPushButton* clearAll_ = nullptr;
    QLabel* empty_ = nullptr;
    QWidget* importBlock_ = nullptr;
    QLabel* importCount_ = nullptr;
    ProgressLine* importBar_ = nullptr;
    QWidget* footer_ = nullptr;
    QLabel* status_ = nullptr;
};

} // namespace ferrow
