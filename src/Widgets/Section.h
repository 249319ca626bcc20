// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Widgets/Fold.h"

namespace ferrow {

class ToggleSwitch;

/// The header of a section: chevron, title and, while closed, a summary. Enter and Space open and close it.
class SectionHeader : public FoldButton {
    Q_OBJECT

public:
    explicit SectionHeader(const QString& title, QWidget* parent = nullptr);

    [[nodiscard]] QString summary() const override { return summary_; }
    void setSummary(const QString& summary);
    /// Pixels on the right that belong to the switch.
    void setReservedWidth(int width);
    QSize sizeHint() const override;
    QRectF focusRect() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString summary_;
    int reserved_ = 0;
};

/// A part of the inspector that folds: header of 48, body with rows 12 apart, a hairline at the end.
class Section : public QWidget {
    Q_OBJECT

public:
    explicit Section(const QString& title, QWidget* parent = nullptr);

    /// Where rows go: `section->body()->addWidget(new FormRow(…))`.
    [[nodiscard]] QVBoxLayout* body() const { return fold_->rows(); }
    [[nodiscard]] SectionHeader* header() const { return header_; }

    /// A switch at the header's end, a tab stop of its own, usable while closed. Made by the first call.
    ToggleSwitch* addSwitch(const QString& name);
    [[nodiscard]] ToggleSwitch* headerSwitch() const { return switch_; }

    /// Shown in the header while closed; elided at its end.
    void setSummary(const QString& summary);

    /// At once; the user's own opening and closing is animated.
    void setExpanded(bool expanded) { fold_->setOpen(expanded); }

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void placeSwitch();

    SectionHeader* header_ = nullptr;
    ToggleSwitch* switch_ = nullptr;
    Fold* fold_ = nullptr;
};

} // namespace ferrow
