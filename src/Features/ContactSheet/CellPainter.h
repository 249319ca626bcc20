// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Session/CellPictures.h"
#include "Session/ExportSession.h"
#include "Session/PhotoListModel.h"
#include "Session/PhotoSession.h"

#include <QColor>
#include <QRect>

class QPainter;
class QWidget;

namespace ferrow {

/// Draws the cells of a contact sheet and knows where their parts lie.
class CellPainter {
public:
    CellPainter(const PhotoListModel& model, const PhotoSession& session, const ExportSession& exportSession,
                const CellPictures& pictures);

    struct State {
        bool isSelected = false;
        bool hasFocusRing = false;
        bool isHovered = false;
        bool isOverBox = false;
        bool isBoxPressed = false;
        bool isLocked = false;
    };
    void paint(QPainter& painter, const QRect& cell, int row, const State& state, const QWidget& sheet) const;
    void setBackdrop(const QColor& backdrop) { backdrop_ = backdrop; }

    /// Of the two lines below a tile, in logical pixels.
    [[nodiscard]] static int textHeight();
    /// What a press on the check box may hit.
    [[nodiscard]] static QRect checkTarget(const QRect& cell);

private:
    void paintPicture(QPainter& painter, const QRect& tile, int row) const;
    void paintCheckBox(QPainter& painter, const QRect& cell, int row, const State& state, const QWidget& sheet) const;
    void paintTexts(QPainter& painter, const QRect& cell, int row) const;

    const PhotoListModel& model_;
    const PhotoSession& session_;
    const ExportSession& exportSession_;
    const CellPictures& pictures_;
    QColor backdrop_;
};

} // namespace ferrow
