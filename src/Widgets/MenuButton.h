// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Widgets/Icons.h"

#include <QPushButton>

namespace ferrow {

/// A button that opens a menu below itself: icon, text, chevron. Enter, Space and Down open it.
class MenuButton : public QPushButton {
    Q_OBJECT

public:
    MenuButton(IconName iconName, const QString& text, QWidget* parent = nullptr);
    /// Without icon.
    explicit MenuButton(const QString& text, QWidget* parent = nullptr);

protected:
    void keyPressEvent(QKeyEvent* event) override;
};

} // namespace ferrow
