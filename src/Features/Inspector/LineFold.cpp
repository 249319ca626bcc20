// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/LineFold.h"

#include "Features/Inspector/InspectorRows.h"
#include "Features/Inspector/RecipeColorWell.h"
#include "Widgets/SliderField.h"
#include "Widgets/Theme.h"
#include "Widgets/ToggleSwitch.h"

#include <QVBoxLayout>

namespace ferrow {

LineFold::LineFold(const InspectorContext& context, QWidget* parent)
    : Disclosure(QStringLiteral("Line"), QStringLiteral("Line settings"), parent), context_(context),
      switch_(addSwitch(QStringLiteral("Show line")))
{
    Disclosure::line()->setObjectName(QStringLiteral("frameLineLine"));
    switch_->setObjectName(QStringLiteral("frameLineSwitch"));
    connect(switch_, &ToggleSwitch::clicked, this, &LineFold::toggle);

    rows()->setContentsMargins(0, Space::row, 0, Space::group);
    QVBoxLayout* group = addGroup(rows());
    group_ = group->parentWidget();
    thickness_ = addLength(group, QStringLiteral("Thickness"), QStringLiteral("Line Thickness"), &FrameLine::thickness);
    thickness_->field()->setObjectName(QStringLiteral("lineThicknessField"));
    distance_ = addLength(group, QStringLiteral("Distance"), QStringLiteral("Line Distance"), &FrameLine::distance);
    distance_->field()->setObjectName(QStringLiteral("lineDistanceField"));
    distance_->setToolTip(QStringLiteral("From the photo to the line"));
    color_ = new RecipeColorWell(context_, QStringLiteral("Line color"), QStringLiteral("Line Color"),
                                 [](RenderRecipe& recipe, const RGBAColor& color) {
                                     if (recipe.border.line)
                                         recipe.border.line->color = color;
                                 });
    color_->setObjectName(QStringLiteral("lineColorWell"));
    addRow(group, QStringLiteral("Color"), color_);
}

SliderField* LineFold::addLength(QVBoxLayout* rows, const QString& label, const QString& step,
                                 Length FrameLine::*length)
{
    SliderField* field = addSliderRow(rows, label, step, InspectorRanges::lineDistance(BorderUnit::pixels));
    bindEdits(field, &SliderField::valueEdited, context_.history, step, [length](RenderRecipe& recipe, double value) {
        if (recipe.border.line)
            ((*recipe.border.line).*length).value = value;
    });
    return field;
}

FrameLine LineFold::line() const
{
    const Border& border = context_.recipe().border;
    if (border.line)
        return *border.line;
    FrameLine line = kept_;
    const PixelSize size = measuredSize(context_.session.selectedPhoto());
    line.thickness = line.thickness.converted(border.unit, size);
    line.distance = line.distance.converted(border.unit, size);
    return line;
}

void LineFold::toggle(bool on)
{
    const FrameLine shown = line();
    kept_ = shown;
    context_.history.editRecipe(QStringLiteral("Show Line"), [&](RenderRecipe& recipe) {
        recipe.border.line = on ? std::optional(shown) : std::nullopt;
    });
    if (on)
        setOpen(true);
}

void LineFold::refresh()
{
    const bool isShown = context_.recipe().border.line.has_value();
    const FrameLine shown = line();
    switch_->setChecked(isShown);
    group_->setEnabled(isShown);
    showLength(thickness_, shown.thickness, InspectorRanges::lineThickness);
    showLength(distance_, shown.distance, InspectorRanges::lineDistance);
    color_->showColor(shown.color);
    if (!isShown)
        color_->closePopover();
}

} // namespace ferrow
