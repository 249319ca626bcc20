// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/Border.h"

#include <QComboBox>

#include <optional>

namespace ferrow {

/// The shapes of a frame, each with a pictogram, its name and its ratio, and one with numbers of the user's own.
class ShapeCombo : public QComboBox {
    Q_OBJECT

public:
    /// `name` is what assistive technology calls it.
    explicit ShapeCombo(const QString& name, QWidget* parent = nullptr);

    /// Whether the list has the shape's ratio.
    [[nodiscard]] static bool isListed(const FrameShape& shape);
    /// Emits nothing. A shape that is not listed is custom in any case.
    void setShape(const std::optional<FrameShape>& shape, bool isCustom);

signals:
    // By the user's hand only.
    void asPhotoChosen();
    void ratioChosen(double width, double height);
    void customChosen();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void addShape(const QIcon& icon, const QString& name, const QString& ratio);
    void tell(int row);

    QIcon customIcon_; ///< In the shape's own ratio; the list has a sign for any.
};

} // namespace ferrow
