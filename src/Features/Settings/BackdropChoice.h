// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "App/Preferences.h"
#include "Shared/Widgets/AccessibleItems.h"

#include <QWidget>

namespace ferrow {

/// The five backdrops as swatches with their names below. One tab stop; Left and Right (Up, Down) choose at once.
class BackdropChoice : public QWidget, public AccessibleItems {
    Q_OBJECT

public:
    /// `name` is what assistive technology calls the group.
    explicit BackdropChoice(const QString& name, QWidget* parent = nullptr);

    [[nodiscard]] PreviewBackdrop backdrop() const { return backdrop_; }
    /// Does not emit `chosen`.
    void setBackdrop(PreviewBackdrop backdrop);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

    int itemCount() const override;
    AccessibleItem item(int index) const override;
    void pressItem(int index) override;

signals:
    /// By the user's hand only.
    void chosen(ferrow::PreviewBackdrop backdrop);

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    [[nodiscard]] QRect itemRect(int index) const;
    [[nodiscard]] QRect swatchRect(int index) const;

    PreviewBackdrop backdrop_ = PreviewBackdrop::white;
};

} // namespace ferrow
