// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/FontButton.h"

#include <QKeyEvent>
#include <QStyleOptionComboBox>
#include <QStylePainter>

namespace ferrow {

FontButton::FontButton(const QString& name, QWidget* parent) : QPushButton(parent), name_(name)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setAttribute(Qt::WA_Hover);
    setChoice(choice_);
}

void FontButton::setChoice(const FontChoice& choice)
{
    choice_ = choice;
    setAccessibleName(QStringLiteral("%1: %2").arg(name_, choice.name()));
    setToolTip(choice.family);
    update();
}

QSize FontButton::sizeHint() const
{
    QStyleOptionComboBox option;
    option.initFrom(this);
    const QSize text(fontMetrics().horizontalAdvance(QLatin1Char('x')) * 6, fontMetrics().height());
    return style()->sizeFromContents(QStyle::CT_ComboBox, &option, text, this);
}

QSize FontButton::minimumSizeHint() const
{
    return sizeHint();
}

void FontButton::paintEvent(QPaintEvent*)
{
    QStylePainter painter(this);
    QStyleOptionComboBox option;
    option.initFrom(this);
    option.state.setFlag(QStyle::State_Sunken, isDown());
    option.state.setFlag(QStyle::State_HasFocus, false); // The ring shows the focus, as on other buttons.
    painter.drawComplexControl(QStyle::CC_ComboBox, option);
    const QRect room = style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, this);
    painter.setFont(choice_.sample(font()));
    option.fontMetrics = painter.fontMetrics();
    option.currentText = painter.fontMetrics().elidedText(choice_.name(), Qt::ElideRight, room.width());
    painter.drawControl(QStyle::CE_ComboBoxLabel, option);
}

void FontButton::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Down)
        return click();
    QPushButton::keyPressEvent(event);
}

} // namespace ferrow
