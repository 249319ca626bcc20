// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/PhotoSidebar/SearchField.h"

#include "Widgets/Icons.h"
#include "Widgets/Theme.h"

#include <QKeyEvent>
#include <QPainter>

namespace ferrow {

SearchField::SearchField(QWidget* parent) : QLineEdit(parent)
{
    setObjectName(QStringLiteral("searchField"));
    setAccessibleName(QStringLiteral("Search photos"));
    setPlaceholderText(QStringLiteral("Search"));
    setToolTip(QStringLiteral("Show the photos that have this in their names (Ctrl+F)"));
    setClearButtonEnabled(false);
    setTextMargins(Measure::fieldIcon + Space::iconEdge, 0, 0, 0);
}

bool SearchField::event(QEvent* event)
{
    // Esc is for the search before it is for anything else.
    if (event->type() == QEvent::ShortcutOverride && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
        event->accept();
        return true;
    }
    return QLineEdit::event(event);
}

void SearchField::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Escape:
        text().isEmpty() ? emit left() : clear();
        return;
    case Qt::Key_Down:
    case Qt::Key_Return:
    case Qt::Key_Enter:
        emit left();
        return;
    default:
        QLineEdit::keyPressEvent(event);
    }
}

void SearchField::paintEvent(QPaintEvent* event)
{
    QLineEdit::paintEvent(event);
    QPainter painter(this);
    const QRect place(Space::group, (height() - Measure::fieldIcon) / 2, Measure::fieldIcon, Measure::fieldIcon);
    paintIcon(painter, IconName::search, place, Measure::fieldIcon, themeColor(&ThemeColors::text2));
}

} // namespace ferrow
