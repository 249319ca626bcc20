// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Features/Inspector/PickedColor.h"
#include "Widgets/AccessibleItems.h"

#include <QWidget>

namespace ferrow {

/// The named colors, seven in a row. One tab stop, with the focus ring round all of them; arrows choose at once.
class SwatchGrid : public QWidget, public AccessibleItems {
    Q_OBJECT

public:
    /// Drawn beyond the swatches on every side: the ring of the chosen one.
    static constexpr int overhang = 4;

    explicit SwatchGrid(QWidget* parent = nullptr);
    /// Emits nothing.
    void setColor(const RGBAColor& color);

    QSize sizeHint() const override;
    int itemCount() const override { return int(namedColors.size()); }
    AccessibleItem item(int index) const override;
    int focusedItem() const override { return current_; }
    void pressItem(int index) override;

signals:
    void chosen(const ferrow::NamedColor& color);

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;

private:
    [[nodiscard]] QRectF swatch(int index) const;
    [[nodiscard]] int indexAt(QPointF point) const;
    void moveTo(int index);

    std::optional<std::size_t> chosen_;
    int current_ = 0; ///< What keys start from.
};

} // namespace ferrow
