// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/BorderSection.h"

#include "Features/Inspector/ColorPopover.h"
#include "Features/Inspector/InspectorRows.h"
#include "Session/WindowTexts.h"
#include "Widgets/ColorWell.h"
#include "Widgets/SegmentedControl.h"
#include "Widgets/SliderField.h"

#include <QVBoxLayout>

namespace ferrow {

namespace {

const QString colorStep = QStringLiteral("Border Color");

void setColor(RenderRecipe& recipe, const RGBAColor& color)
{
    recipe.border.color = color;
}

} // namespace

BorderSection::BorderSection(const InspectorContext& context, QWidget* parent)
    : Section(QStringLiteral("Border"), parent), context_(context)
{
    build();
}

void BorderSection::build()
{
    unit_ = new SegmentedControl(QStringLiteral("Border unit"), choicesOf<BorderUnit>());
    unit_->setObjectName(QStringLiteral("borderUnitControl"));
    connect(unit_, &SegmentedControl::chosen, this,
            [this](int index) { chooseUnit(allCases<BorderUnit>()[std::size_t(index)]); });
    addRow(body(), QStringLiteral("Unit"), unit_);

    width_ = addSliderRow(body(), QStringLiteral("Width"), QStringLiteral("Border width"),
                          InspectorRanges::borderWidth(BorderUnit::pixels));
    width_->field()->setObjectName(QStringLiteral("borderWidthField"));
    bindEdits(width_, &SliderField::valueEdited, context_.history, QStringLiteral("Border Width"),
              [](RenderRecipe& recipe, double width) { recipe.border.width = width; });

    color_ = new ColorWell(QStringLiteral("Border color"));
    color_->setObjectName(QStringLiteral("borderColorWell"));
    connect(color_, &ColorWell::openRequested, this, &BorderSection::openColor);
    connect(color_, &ColorWell::colorEdited, this, [this](const RGBAColor& color) {
        context_.history.editRecipe(colorStep, [&](RenderRecipe& recipe) { setColor(recipe, color); });
    });
    addRow(body(), QStringLiteral("Color"), color_);
}

void BorderSection::chooseUnit(BorderUnit unit)
{
    const ImportedPhoto* photo = context_.session.selectedPhoto();
    const std::optional<PixelSize> size = photo ? std::optional(photo->pixelSize) : std::nullopt;
    context_.history.editRecipe(QStringLiteral("Border Unit"),
                                [&](RenderRecipe& recipe) { convertBorderUnit(recipe.border, unit, size); });
}

void BorderSection::openColor()
{
    popover_ = new ColorPopover(color_->swatch(), QStringLiteral("Border Color"), context_.recipe().border.color,
                                ColorPopover::Opacity::offered, context_.screenColorPicker);
    popover_->setPane(context_.pane);
    bindEdits(popover_.data(), &ColorPopover::colorEdited, context_.history, colorStep, setColor);
    popover_->present();
}

void BorderSection::refresh()
{
    const Border& border = context_.recipe().border;
    setSummary(WindowTexts::borderSummary(border));
    unit_->setCurrentIndex(border.unit == BorderUnit::pixels ? 0 : 1);
    if (shownUnit_ != border.unit) {
        shownUnit_ = border.unit;
        applyRange(width_, InspectorRanges::borderWidth(border.unit));
    }
    width_->setValue(border.width);
    color_->setColor(border.color);
    if (popover_)
        popover_->setColor(border.color);
}

} // namespace ferrow
