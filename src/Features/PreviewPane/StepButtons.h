// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class QLabel;
class QPushButton;

namespace ferrow {

/// "‹ 2 of 11 ›": where one is among photos, and the ways on.
class StepButtons : public QWidget {
    Q_OBJECT

public:
    /// `previous` and `next` say what the arrows do.
    StepButtons(const QString& previous, const QString& next, QWidget* parent = nullptr);

    void setText(const QString& text);
    void setStepsEnabled(bool previous, bool next);
    [[nodiscard]] QPushButton* previous() const { return previous_; }
    [[nodiscard]] QPushButton* next() const { return next_; }

signals:
    void stepRequested(int places);

private:
    QPushButton* previous_ = nullptr;
    QLabel* position_ = nullptr;
    QPushButton* next_ = nullptr;
};

} // namespace ferrow
