// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/NumberGroup.h"

#include "Widgets/NumberField.h"

#include <QEvent>

namespace ferrow {

NumberGroup::NumberGroup(QWidget* parent) : QWidget(parent)
{
    connect(&run_, &EditRun::gestureStarted, this, &NumberGroup::gestureStarted);
    connect(&run_, &EditRun::gestureEnded, this, &NumberGroup::gestureEnded);
}

NumberField* NumberGroup::addField(const QString& name)
{
    auto* field = new NumberField(name, this);
    field->installEventFilter(this);
    connect(field, &NumberField::stepped, &run_, &EditRun::noteEdit);
    connect(field, &NumberField::valueEdited, this, [this] { takeNumbers(); });
    connect(field, &NumberField::errorChanged, this, &NumberGroup::errorChanged);
    return field;
}

bool NumberGroup::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::FocusOut || event->type() == QEvent::Hide)
        run_.finish();
    return QWidget::eventFilter(watched, event);
}

} // namespace ferrow
