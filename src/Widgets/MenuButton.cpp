// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/MenuButton.h"

#include <QKeyEvent>

namespace ferrow {

MenuButton::MenuButton(IconName iconName, const QString& text, QWidget* parent) : MenuButton(text, parent)
{
    setIcon(ferrow::icon(iconName));
}

MenuButton::MenuButton(const QString& text, QWidget* parent) : QPushButton(text, parent)
{
    setAccessibleName(text);
}

void MenuButton::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Down && menu()) {
        showMenu();
        return;
    }
    QPushButton::keyPressEvent(event);
}

} // namespace ferrow
