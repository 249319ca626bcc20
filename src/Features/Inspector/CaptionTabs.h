// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/RenderRecipe.h"

#include <QWidget>

class QPushButton;

namespace ferrow {

class SegmentedControl;

/// Which of several captions is edited, and a button for one more. From three on only the chosen one has its place
/// beside its number.
class CaptionTabs : public QWidget {
    Q_OBJECT

public:
    explicit CaptionTabs(QWidget* parent = nullptr);

    void setCaptions(const std::vector<Caption>& captions, int chosen);

signals:
    void chosen(int index);
    void addRequested();
    void removeRequested();
    /// The chosen one is to go so many places to the front (below 0) or back.
    void moveRequested(int by);

private:
    void openMenu(const QPoint& globalPosition);

    SegmentedControl* tabs_ = nullptr;
    QPushButton* add_ = nullptr;
};

} // namespace ferrow
