// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Features/Inspector/FramePicture.h"
#include "Features/Inspector/InspectorRows.h"
#include "Features/Inspector/NumberGroup.h"

#include <array>

namespace ferrow {

/// The four sides of a border: a number field at each side of a little picture of the frame, in which the side is
/// marked whose field has the focus.
class SidesField : public NumberGroup {
    Q_OBJECT

public:
    /// `name` is what assistive technology calls the fields: "Border" makes "Border top".
    explicit SidesField(const QString& name, QWidget* parent = nullptr);

    void setNumberRange(const ValueRange& range);
    /// Emits nothing.
    void setSides(const SideLengths& sides);
    [[nodiscard]] FramePicture* picture() const { return picture_; }
    [[nodiscard]] NumberField* field(Side side) const { return fields_[std::size_t(side)]; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    void sidesEdited(const ferrow::SideLengths& sides);

protected:
    void takeNumbers() override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    [[nodiscard]] QSize sizeWith(int pictureWidth) const;

    FramePicture* picture_ = nullptr;
    std::array<NumberField*, 4> fields_{}; ///< By Side.
};

} // namespace ferrow
