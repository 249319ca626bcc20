// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

namespace ferrow {

/// A line of one logical pixel, like all that part panes, rows of menus and the splitter's columns.
class HairLine : public QWidget {
    Q_OBJECT

public:
    explicit HairLine(Qt::Orientation orientation = Qt::Horizontal, QWidget* parent = nullptr);
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    Qt::Orientation orientation_;
};

} // namespace ferrow
