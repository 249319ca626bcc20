// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/RecipeColorWell.h"

#include <utility>

namespace ferrow {

RecipeColorWell::RecipeColorWell(const InspectorContext& context, const QString& name, const QString& step, Apply apply,
                                 QWidget* parent)
    : ColorWell(name, parent), context_(context), step_(step), apply_(std::move(apply))
{
    connect(this, &ColorWell::openRequested, this, &RecipeColorWell::openPopover);
    connect(this, &ColorWell::colorEdited, this, [this](const RGBAColor& color) {
        context_.history.editRecipe(step_, [&](RenderRecipe& recipe) { apply_(recipe, color); });
    });
}

void RecipeColorWell::openPopover()
{
    popover_ = new ColorPopover(swatch(), step_, color(), ColorPopover::Opacity::offered, context_.screenColorPicker);
    popover_->setPane(context_.pane);
    bindEdits(popover_.data(), &ColorPopover::colorEdited, context_.history, step_, apply_);
    popover_->present();
}

void RecipeColorWell::showColor(const RGBAColor& color)
{
    setColor(color);
    if (popover_)
        popover_->setColor(color);
}

void RecipeColorWell::closePopover()
{
    if (popover_)
        popover_->dismiss();
}

} // namespace ferrow
