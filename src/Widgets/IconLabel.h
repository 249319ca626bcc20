// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Widgets/Icons.h"

#include <QWidget>

namespace ferrow {

/// An icon that only shows. Assistive technology passes it over, so its meaning has to stand in words beside it.
class IconLabel : public QWidget {
    Q_OBJECT

public:
    IconLabel(IconName name, int size, ColorRole color = &ThemeColors::text, QWidget* parent = nullptr);
    void setIcon(IconName name, ColorRole color);
    void setIconSize(int size);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    IconName name_;
    int size_;
    ColorRole color_;
};

} // namespace ferrow
