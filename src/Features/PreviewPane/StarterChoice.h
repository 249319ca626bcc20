// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Session/NewestTask.h"
#include "Widgets/ChoiceStrip.h"

#include <QImage>

#include <vector>

namespace ferrow {

class EditHistory;
class PhotoSession;

/// The frames to begin with, as framed pictures with their names below. Choosing one is an edit of the recipe; the one
/// that the recipe still equals is the chosen one.
class StarterChoice : public ChoiceStrip {
    Q_OBJECT

public:
    /// How far its tiles stand from its own edge, where the chosen one is filled.
    static constexpr int inset = 8;

    StarterChoice(PhotoSession& session, EditHistory& history, QWidget* parent = nullptr);

    AccessibleItem item(int index) const override;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    int heightForWidth(int width) const override;

protected:
    QRect itemRect(int index) const override;
    void paintEvent(QPaintEvent* event) override;

private:
    void choose(int index);
    void followRecipe();
    void paintItem(QPainter& painter, int index);
    void renderPictures(QSize box);

    PhotoSession& session_;
    EditHistory& history_;
    std::vector<QImage> pictures_; ///< One for each frame, or none yet.
    QSize pictureBox_;             ///< In device pixels: what the pictures were asked for.
    NewestTask rendering_;
};

} // namespace ferrow
