// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <QKeySequence>
#include <QList>
#include <QString>

#include <vector>

namespace ferrow {

struct Shortcut {
    QString text;             ///< What it does: "Undo".
    QList<QKeySequence> keys; ///< Any of these.
};

struct ShortcutGroup {
    QString title;
    std::vector<Shortcut> shortcuts;
};

/// All keyboard shortcuts in groups, in two columns.
class ShortcutsWindow : public QDialog {
    Q_OBJECT

public:
    explicit ShortcutsWindow(const std::vector<ShortcutGroup>& groups, QWidget* parent = nullptr);
};

} // namespace ferrow
