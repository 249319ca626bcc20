// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/CaptionBuilder/ChipTextField.h"

#include "Widgets/FocusRing.h"
#include "Widgets/Theme.h"

#include <QKeyEvent>
#include <QPainter>

namespace ferrow {

namespace {

constexpr int textInset = 8;
constexpr int leastWidth = 72;

} // namespace

ChipTextField::ChipTextField(const QString& text, QWidget* parent) : QLineEdit(text, parent)
{
    setObjectName(QStringLiteral("chipTextField"));
    setAccessibleName(QStringLiteral("Caption text"));
    setFrame(false);
    setTextMargins(textInset - 2, 0, textInset - 2, 0);
    setFocusLook(this, FocusLook::own);
    setTextRole(this, TextRole::strong);
    QPalette see = palette();
    see.setColor(QPalette::Base, Qt::transparent);
    setPalette(see);
}

int ChipTextField::wantedWidth() const
{
    // Two pixels on each side are Qt's own margin inside line edits, one is the text cursor.
    return std::max(leastWidth, fontMetrics().horizontalAdvance(text()) + 2 * textInset + 5);
}

bool ChipTextField::event(QEvent* event)
{
    // Esc ends the edit even where the window has a shortcut for it.
    if (event->type() == QEvent::ShortcutOverride && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape)
        event->accept();
    return QLineEdit::event(event);
}

void ChipTextField::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        emit committed();
        return;
    case Qt::Key_Escape:
        emit givenUp();
        return;
    default:
        QLineEdit::keyPressEvent(event);
    }
}

void ChipTextField::focusOutEvent(QFocusEvent* event)
{
    QLineEdit::focusOutEvent(event);
    // The field's own context menu and another window in front are no end of the edit.
    if (event->reason() != Qt::PopupFocusReason && event->reason() != Qt::ActiveWindowFocusReason)
        emit committed();
}

void ChipTextField::paintEvent(QPaintEvent* event)
{
    {
        constexpr double half = Measure::focusWidth / 2.0;
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(themeColor(&ThemeColors::accent), Measure::focusWidth));
        painter.setBrush(themeColor(&ThemeColors::surface));
        painter.drawRoundedRect(QRectF(rect()).adjusted(half, half, -half, -half), Radius::control - half,
                                Radius::control - half);
    }
    QLineEdit::paintEvent(event);
}

} // namespace ferrow
