// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLineEdit>

namespace ferrow {

/// What is typed narrows the list at each letter; Esc takes it back, and from an empty field leads on.
class SearchField : public QLineEdit {
    Q_OBJECT

public:
    explicit SearchField(QWidget* parent = nullptr);

signals:
    /// Enter, Down, or Esc in an empty field: whoever searched goes on with the list.
    void left();

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
};

} // namespace ferrow
