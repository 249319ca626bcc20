// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLineEdit>

namespace ferrow {

/// The field over a text chip: Enter and leaving commit, Esc gives up. Answers once.
class ChipTextField : public QLineEdit {
    Q_OBJECT

public:
    explicit ChipTextField(const QString& text, QWidget* parent);

    /// What the chip needs to show all of the text while it is edited, in logical pixels.
    [[nodiscard]] int wantedWidth() const;

signals:
    void committed();
    void givenUp();

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
};

} // namespace ferrow
