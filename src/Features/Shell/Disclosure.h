// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class QVariantAnimation;
class QVBoxLayout;

namespace ferrow {

class DisclosureLine;

/// Rows that are seldom needed, folded away under a line that opens and closes them. Closed at first.
class Disclosure : public QWidget {
    Q_OBJECT

public:
    /// `text` is on the line ("More"), `name` says the same for assistive technology ("More caption settings").
    Disclosure(const QString& text, const QString& name, QWidget* parent = nullptr);

    [[nodiscard]] QVBoxLayout* rows() const { return rows_; }
    /// At once; the user's own opening and closing is animated.
    void setExpanded(bool expanded);

private:
    void unfold(bool expanded);
    void showState();

    DisclosureLine* line_ = nullptr;
    QWidget* clip_ = nullptr;
    QWidget* content_ = nullptr;
    QVBoxLayout* rows_ = nullptr;
    QVariantAnimation* animation_ = nullptr;
    bool expanded_ = false;
};

} // namespace ferrow
