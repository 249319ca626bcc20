// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/IconLabel.h"

#include "Widgets/Theme.h"

#include <QPainter>

namespace ferrow {

IconLabel::IconLabel(IconName name, int size, ColorRole color, QWidget* parent)
    : QWidget(parent), name_(name), size_(size), color_(color)
{
    setFixedSize(size, size);
}

void IconLabel::setIcon(IconName name, ColorRole color)
{
    name_ = name;
    color_ = color;
    update();
}

void IconLabel::setIconSize(int size)
{
    size_ = size;
    setFixedSize(size, size);
}

void IconLabel::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    paintIcon(painter, name_, rect(), size_, themeColor(isEnabled() ? color_ : &ThemeColors::disabled));
}

} // namespace ferrow
