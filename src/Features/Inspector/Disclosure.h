// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Widgets/Fold.h"

namespace ferrow {

/// Rows that are seldom needed, folded away under a line that opens and closes them. Closed at first.
class Disclosure : public QWidget {
    Q_OBJECT

public:
    /// `text` is on the line ("More"), `name` says the same for assistive technology ("More caption settings").
    Disclosure(const QString& text, const QString& name, QWidget* parent = nullptr);

    [[nodiscard]] QVBoxLayout* rows() const { return fold_->rows(); }

private:
    Fold* fold_ = nullptr;
};

} // namespace ferrow
