// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Features/Inspector/InspectorContext.h"
#include "Widgets/Section.h"

#include <optional>

class QPushButton;

namespace ferrow {

class FormRow;
class LineFold;
class PhotoEdgeFold;
class RecipeColorWell;
class SegmentedControl;
class ShapeRows;
class SidesField;
class SliderField;

/// What surrounds the photo.
class BorderSection : public Section {
    Q_OBJECT

public:
    explicit BorderSection(const InspectorContext& context, QWidget* parent = nullptr);
    /// Shows what the models say now.
    void refresh();

private:
    void buildWidth();
    void buildSides();
    void buildBackground();
    SliderField* addStrength(const QString& label, const QString& step, double BlurredBackground::*strength);
    void chooseUnit(BorderUnit unit);
    void unlinkSides(bool unlink);
    void chooseBackground(bool isBlurred);
    void refreshWidth(const Border& border);
    void refreshBackground(const Border& border);

    InspectorContext context_;
    BlurredBackground keptBackground_; ///< What going back to the blurred photo brings.
    SegmentedControl* unit_ = nullptr;
    FormRow* widthRow_ = nullptr;
    SliderField* width_ = nullptr;
    QPushButton* unlink_ = nullptr;
    SidesField* sides_ = nullptr; ///< In the width's place while the sides are not linked.
    SegmentedControl* background_ = nullptr;
    RecipeColorWell* color_ = nullptr;
    SliderField* blur_ = nullptr;
    SliderField* dim_ = nullptr;
    ShapeRows* shape_ = nullptr;
    LineFold* line_ = nullptr;
    PhotoEdgeFold* edge_ = nullptr;
    std::optional<BorderUnit> shownUnit_;
    std::optional<FileUrl> shownPhoto_;
};

} // namespace ferrow
