// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Features/Inspector/ColorPopover.h"
#include "Features/Inspector/InspectorContext.h"
#include "Widgets/ColorWell.h"

#include <QPointer>

#include <functional>

namespace ferrow {

/// Edits a color of the active recipe, by its hex text or in a popover.
class RecipeColorWell : public ColorWell {
    Q_OBJECT

public:
    using Apply = std::function<void(RenderRecipe&, const RGBAColor&)>;

    /// `step` names the edit for undo, and the popover: "Border Color". Opacity is offered.
    RecipeColorWell(const InspectorContext& context, const QString& name, const QString& step, Apply apply,
                    QWidget* parent = nullptr);

    /// What the model says now, in the popover too.
    void showColor(const RGBAColor& color);
    void closePopover();

private:
    void openPopover();

    InspectorContext context_;
    QString step_;
    Apply apply_;
    QPointer<ColorPopover> popover_;
};

} // namespace ferrow
