// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Session/Preferences.h"
#include "Widgets/ChoiceStrip.h"

namespace ferrow {

/// The five backdrops as swatches with their names below.
class BackdropChoice : public ChoiceStrip {
    Q_OBJECT

public:
    /// `name` is what assistive technology calls the group.
    explicit BackdropChoice(const QString& name, QWidget* parent = nullptr);

    [[nodiscard]] PreviewBackdrop backdrop() const { return static_cast<PreviewBackdrop>(currentIndex()); }
    /// Does not emit `chosen`.
    void setBackdrop(PreviewBackdrop backdrop) { setCurrentIndex(int(backdrop)); }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    /// By the user's hand only.
    void chosen(ferrow::PreviewBackdrop backdrop);

protected:
    QRect itemRect(int index) const override;
    void paintEvent(QPaintEvent* event) override;

private:
    [[nodiscard]] QRect swatchRect(int index) const;
};

} // namespace ferrow
