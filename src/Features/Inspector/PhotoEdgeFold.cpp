// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/PhotoEdgeFold.h"

#include "Features/Inspector/InspectorRows.h"
#include "Session/WindowTexts.h"
#include "Widgets/SliderField.h"
#include "Widgets/Theme.h"
#include "Widgets/ToggleSwitch.h"

#include <QVBoxLayout>

namespace ferrow {

namespace {

/// No radius has no unit of its own, and goes by the border's.
BorderUnit unitOfRadius(const Border& border)
{
    const Length& radius = border.photoEdge.cornerRadius;
    return radius.value == 0 ? border.unit : radius.unit;
}

} // namespace

PhotoEdgeFold::PhotoEdgeFold(const InspectorContext& context, QWidget* parent)
    : Disclosure(QStringLiteral("Photo Edge"), QStringLiteral("Photo edge settings"), parent), context_(context)
{
    line()->setObjectName(QStringLiteral("photoEdgeLine"));
    corners_ = addSliderRow(rows(), QStringLiteral("Corners"), QStringLiteral("Corner radius"),
                            InspectorRanges::cornerRadius(BorderUnit::pixels));
    corners_->field()->setObjectName(QStringLiteral("cornerRadiusField"));
    bindEdits(corners_, &SliderField::valueEdited, context_.history, QStringLiteral("Corner Radius"),
              [](RenderRecipe& recipe, double radius) {
                  const BorderUnit unit = unitOfRadius(recipe.border);
                  recipe.border.photoEdge.cornerRadius = radius == 0 ? Length() : Length{radius, unit};
              });

    shadow_ = addSwitchRow(rows(), QStringLiteral("Shadow"), QStringLiteral("Photo shadow"));
    shadow_->setObjectName(QStringLiteral("photoShadowSwitch"));
    connect(shadow_, &ToggleSwitch::clicked, this, [this](bool on) {
        context_.history.editRecipe(QStringLiteral("Photo Shadow"),
                                    [on](RenderRecipe& recipe) { recipe.border.photoEdge.hasShadow = on; });
    });
}

void PhotoEdgeFold::refresh()
{
    const Border& border = context_.recipe().border;
    setSummary(WindowTexts::photoEdgeSummary(border.photoEdge));
    showLength(corners_, {border.photoEdge.cornerRadius.value, unitOfRadius(border)}, InspectorRanges::cornerRadius);
    shadow_->setChecked(border.photoEdge.hasShadow);
}

} // namespace ferrow
