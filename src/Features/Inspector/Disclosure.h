// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Widgets/Fold.h"

class QHBoxLayout;
class QPushButton;

namespace ferrow {

class DisclosureLine;
class ToggleSwitch;

/// Rows that are seldom needed, folded away under a line that opens and closes them. Closed at first.
class Disclosure : public QWidget {
    Q_OBJECT

public:
    /// `text` is on the line ("More"), `name` says the same for assistive technology ("More caption settings").
    Disclosure(const QString& text, const QString& name, QWidget* parent = nullptr);

    [[nodiscard]] QVBoxLayout* rows() const { return fold_->rows(); }

    /// At the end of the line, a tab stop of its own each.
    [[nodiscard]] ToggleSwitch* addSwitch(const QString& name);
    [[nodiscard]] QPushButton* addButton(const QString& text);
    /// What stands at the end of the line while the rows are folded away.
    void setSummary(const QString& summary);
    [[nodiscard]] FoldButton* line() const;
    /// At once; the user's own opening and closing is animated.
    void setOpen(bool open) { fold_->setOpen(open); }

private:
    DisclosureLine* line_ = nullptr;
    QHBoxLayout* head_ = nullptr;
    Fold* fold_ = nullptr;
};

} // namespace ferrow
