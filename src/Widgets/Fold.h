// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Widgets/FocusRing.h"

#include <QPushButton>
#include <QVariantAnimation>
#include <QWidget>

class QVBoxLayout;

namespace ferrow {

/// A button that shows and hides something, and says to assistive technology which it has done.
class ExpanderButton : public QPushButton {
    Q_OBJECT

public:
    using QPushButton::QPushButton;

    [[nodiscard]] bool isOpen() const { return open_; }
    void setOpen(bool open);
    /// What stands for the rows while they are folded away; read out as the button's description.
    [[nodiscard]] virtual QString summary() const { return {}; }

private:
    bool open_ = true;
};

/// The button above the rows that it folds away.
class FoldButton : public ExpanderButton, public FocusShape {
    Q_OBJECT

public:
    using ExpanderButton::ExpanderButton;
    double focusRadius() const override;
};

/// The rows that a FoldButton folds away. Open at first. What is opened in a ScrollPane comes into sight, opener and
/// rows.
class Fold : public QWidget {
    Q_OBJECT

public:
    Fold(FoldButton* opener, QWidget* parent);

    [[nodiscard]] QVBoxLayout* rows() const { return rows_; }
    /// At once; the user's own opening and closing is animated.
    void setOpen(bool open);

private:
    void unfold();
    void finish();
    void comeIntoSight();
    [[nodiscard]] int contentHeight() const;

    FoldButton* opener_;
    QWidget* content_;
    QVBoxLayout* rows_;
    QVariantAnimation animation_;
};

} // namespace ferrow
