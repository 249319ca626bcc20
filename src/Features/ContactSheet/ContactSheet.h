// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Session/CellPictures.h"
#include "Session/EditHistory.h"
#include "Session/ExportSession.h"
#include "Session/PhotoListModel.h"
#include "Session/PhotoSession.h"
#include "Session/PhotoWarnings.h"
#include "Session/Preferences.h"

#include <QWidget>

class QMenu;

namespace ferrow {

class MenuButton;
class SegmentedControl;
class SheetGrid;

/// All photos framed as they will be exported, below a bar that chooses which of them are shown. The warnings are
/// watched while it is to be seen.
class ContactSheet : public QWidget {
    Q_OBJECT

public:
    ContactSheet(PhotoListModel& model, PhotoSession& session, PhotoWarnings& warnings, EditHistory& history,
                 ExportSession& exportSession, Preferences& preferences, QWidget* parent = nullptr);

    /// Leaves out every photo that has this warning, one of those that PhotoWarnings tells.
    void leaveOutAllWith(const QString& warning);

    [[nodiscard]] SheetGrid* grid() const { return grid_; }
    /// The size of the cells, to be placed by whoever has room for it.
    [[nodiscard]] QWidget* sizeControl() const { return sizes_; }

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    QWidget* buildBar();
    void buildSizes();
    void buildNothingFound();
    void fillLeaveOutMenu();
    void followCounts();
    void followBackdrop();

    PhotoListModel& model_;
    PhotoSession& session_;
    PhotoWarnings& warnings_;
    EditHistory& history_;
    ExportSession& exportSession_;
    Preferences& preferences_;
    CellPictures* pictures_ = nullptr;
    SegmentedControl* filter_ = nullptr;
    SheetGrid* grid_ = nullptr;
    QWidget* sizes_ = nullptr;
    MenuButton* leaveOut_ = nullptr;
    QMenu* leaveOutMenu_ = nullptr;
    QWidget* nothingFound_ = nullptr;
};

} // namespace ferrow
