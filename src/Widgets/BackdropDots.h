// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Widgets/ChoiceStrip.h"

namespace ferrow {

/// The backdrops as dots of 14 in targets of 24.
class BackdropDots : public ChoiceStrip {
    Q_OBJECT

public:
    /// `names` in the order of Theme::backdrops.
    BackdropDots(const QString& name, const QStringList& names, QWidget* parent = nullptr);
    QSize sizeHint() const override;

protected:
    QRect itemRect(int index) const override;
    void paintEvent(QPaintEvent* event) override;
};

} // namespace ferrow
