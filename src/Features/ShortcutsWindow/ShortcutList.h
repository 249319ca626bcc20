// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Features/ShortcutsWindow/ShortcutsWindow.h"
#include "Widgets/AccessibleItems.h"

#include <QStringList>
#include <QWidget>

namespace ferrow {

namespace KeyNames {
/// One text for each key cap: "Ctrl", "Shift", "Z".
[[nodiscard]] QStringList caps(const QKeySequence& keys);
/// As it is said: "Control Shift Z".
[[nodiscard]] QString spoken(const QKeySequence& keys);
/// "Undo, Control Z"; further keys follow after "or".
[[nodiscard]] QString spoken(const Shortcut& shortcut);
} // namespace KeyNames

/// The shortcuts of one group: what they do on the left, key caps on the right. One tab stop; Up and Down read the rows
/// to assistive technology.
class ShortcutList : public QWidget, public AccessibleItems {
    Q_OBJECT

public:
    explicit ShortcutList(const ShortcutGroup& group, QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

    int itemCount() const override;
    AccessibleItem item(int index) const override;
    int focusedItem() const override { return current_; }
    void pressItem(int index) override;
    QAccessible::Role itemsRole() const override { return QAccessible::List; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    [[nodiscard]] int rowHeight() const;
    [[nodiscard]] QRect rowRect(int index) const;

    ShortcutGroup group_;
    int current_ = 0;
};

} // namespace ferrow
