// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/BareCheckBox.h"

#include "Widgets/Theme.h"

namespace ferrow {

BareCheckBox::BareCheckBox(const QString& name, QWidget* parent) : QCheckBox(parent)
{
    setAccessibleName(name);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QSize BareCheckBox::sizeHint() const
{
    return QSize(Measure::checkBox, Measure::hitArea);
}

bool BareCheckBox::hitButton(const QPoint& point) const
{
    return rect().contains(point);
}

} // namespace ferrow
