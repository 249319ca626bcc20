// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Features/Inspector/InspectorContext.h"
#include "Features/Inspector/NumberGroup.h"

#include <optional>
#include <utility>

namespace ferrow {

class FormRow;
class ShapeCombo;
class SliderField;
class ToggleSwitch;

/// The two numbers of a shape.
class RatioField : public NumberGroup {
    Q_OBJECT

public:
    using Ratio = std::pair<double, double>;

    explicit RatioField(QWidget* parent = nullptr);
    /// Emits nothing.
    void setRatio(const Ratio& ratio);

signals:
    void ratioEdited(const std::pair<double, double>& ratio);

protected:
    void takeNumbers() override;

private:
    NumberField* width_ = nullptr;
    NumberField* height_ = nullptr;
};

/// The rows for the shape of the frame. Which there are depends on the shape.
class ShapeRows : public QWidget {
    Q_OBJECT

public:
    explicit ShapeRows(const InspectorContext& context, QWidget* parent = nullptr);
    /// Shows what the models say now.
    void refresh();

private:
    void buildShape();
    void buildBalance();
    void chooseCustom();
    void setRatio(const RatioField::Ratio& ratio);

    InspectorContext context_;
    /// What was chosen as custom or typed there last: shown as such although the list may have it too.
    std::optional<RatioField::Ratio> custom_;
    ShapeCombo* shape_ = nullptr;
    RatioField* ratio_ = nullptr;
    FormRow* ratioRow_ = nullptr;
    ToggleSwitch* turns_ = nullptr;
    SliderField* balance_ = nullptr;
    FormRow* balanceRow_ = nullptr;
};

/// Where the photo stands in the room that the shape adds: "The photo sits in the middle." Empty for a frame that can't
/// be drawn. `photo` has a border of `recipe`, which has a shape.
[[nodiscard]] QString balanceHint(const RenderRecipe& recipe, PixelSize photo);

} // namespace ferrow
