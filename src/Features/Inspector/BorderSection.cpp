// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/BorderSection.h"

#include "Features/Inspector/InspectorRows.h"
#include "Features/Inspector/LineFold.h"
#include "Features/Inspector/PhotoEdgeFold.h"
#include "Features/Inspector/RecipeColorWell.h"
#include "Features/Inspector/ShapeRows.h"
#include "Features/Inspector/SidesField.h"
#include "Session/WindowTexts.h"
#include "Widgets/FerrowStyle.h"
#include "Widgets/FormRow.h"
#include "Widgets/Icons.h"
#include "Widgets/SegmentedControl.h"
#include "Widgets/SliderField.h"
#include "Widgets/Theme.h"

#include <QPushButton>
#include <QVBoxLayout>

namespace ferrow {

namespace {

constexpr int colorSegment = 0;
constexpr int blurredSegment = 1;

} // namespace

BorderSection::BorderSection(const InspectorContext& context, QWidget* parent)
    : Section(QStringLiteral("Border"), parent), context_(context)
{
    setObjectName(QStringLiteral("borderSection"));
    // The lines that fold are higher than their texts: that air is part of the distances.
    body()->setContentsMargins(Space::inspector, 0, Space::inspector, Space::row);
    unit_ = new SegmentedControl(QStringLiteral("Border unit"), choicesOf<BorderUnit>());
    unit_->setObjectName(QStringLiteral("borderUnitControl"));
    connect(unit_, &SegmentedControl::chosen, this,
            [this](int index) { chooseUnit(allCases<BorderUnit>()[std::size_t(index)]); });
    addRow(body(), QStringLiteral("Unit"), unit_);
    buildWidth();
    buildSides();
    buildBackground();
    shape_ = new ShapeRows(context_);
    body()->addWidget(shape_);

    auto* folds = new QVBoxLayout;
    folds->setSpacing(Space::iconEdge);
    body()->addLayout(folds);
    line_ = new LineFold(context_);
    folds->addWidget(line_);
    edge_ = new PhotoEdgeFold(context_);
    folds->addWidget(edge_);
}

void BorderSection::buildWidth()
{
    width_ = new SliderField(QStringLiteral("Border width"));
    width_->field()->setObjectName(QStringLiteral("borderWidthField"));
    bindEdits(width_, &SliderField::valueEdited, context_.history, QStringLiteral("Border Width"),
              [](RenderRecipe& recipe, double width) { recipe.border.width = width; });
    widthRow_ = addRow(body(), QStringLiteral("Width"), width_);
}

void BorderSection::buildSides()
{
    unlink_ = makeIconButton(IconName::link, QStringLiteral("Set Each Side"));
    unlink_->setObjectName(QStringLiteral("unlinkSidesButton"));
    unlink_->setCheckable(true);
    setSmallControl(unlink_);
    connect(unlink_, &QPushButton::clicked, this, &BorderSection::unlinkSides);
    widthRow_->setLabelButton(unlink_);

    sides_ = new SidesField(QStringLiteral("Border"));
    sides_->setObjectName(QStringLiteral("borderSidesField"));
    bindEdits(sides_, &SidesField::sidesEdited, context_.history, QStringLiteral("Border Sides"),
              [](RenderRecipe& recipe, const SideLengths& sides) { recipe.border.sides = sides; });
    connect(sides_, &SidesField::errorChanged, widthRow_,
            [row = widthRow_](const QString& message) { row->setMessage(Severity::error, message); });
    widthRow_->setWideControl(sides_);

    setTabOrder(unlink_, width_->slider());
    setTabOrder(width_->slider(), width_->field());
    QWidget* before = width_->field();
    for (const Side side : {Side::top, Side::right, Side::bottom, Side::left}) {
        setTabOrder(before, sides_->field(side));
        before = sides_->field(side);
    }
}

void BorderSection::buildBackground()
{
    background_ =
        new SegmentedControl(QStringLiteral("Background"), {QStringLiteral("Color"), QStringLiteral("Blurred Photo")});
    background_->setObjectName(QStringLiteral("backgroundControl"));
    connect(background_, &SegmentedControl::chosen, this,
            [this](int index) { chooseBackground(index == blurredSegment); });
    addRow(body(), QStringLiteral("Background"), background_);

    color_ = new RecipeColorWell(context_, QStringLiteral("Border color"), QStringLiteral("Border Color"),
                                 [](RenderRecipe& recipe, const RGBAColor& color) { recipe.border.color = color; });
    color_->setObjectName(QStringLiteral("borderColorWell"));
    addRow(body(), QStringLiteral("Color"), color_);
    blur_ = addStrength(QStringLiteral("Blur"), QStringLiteral("Background Blur"), &BlurredBackground::blur);
    blur_->field()->setObjectName(QStringLiteral("backgroundBlurField"));
    dim_ = addStrength(QStringLiteral("Dim"), QStringLiteral("Background Dim"), &BlurredBackground::dim);
    dim_->field()->setObjectName(QStringLiteral("backgroundDimField"));
}

SliderField* BorderSection::addStrength(const QString& label, const QString& step, double BlurredBackground::*strength)
{
    SliderField* field = addSliderRow(body(), label, step, InspectorRanges::strength());
    bindEdits(field, &SliderField::valueEdited, context_.history, step, [strength](RenderRecipe& recipe, double value) {
        if (recipe.border.blurredBackground)
            (*recipe.border.blurredBackground).*strength = value;
    });
    return field;
}

void BorderSection::chooseUnit(BorderUnit unit)
{
    const PixelSize size = measuredSize(context_.session.selectedPhoto());
    context_.history.editRecipe(QStringLiteral("Border Unit"),
                                [&](RenderRecipe& recipe) { recipe.border.convert(unit, size); });
}

void BorderSection::unlinkSides(bool unlink)
{
    context_.history.editRecipe(unlink ? QStringLiteral("Unlink Sides") : QStringLiteral("Link Sides"),
                                [unlink](RenderRecipe& recipe) {
                                    Border& border = recipe.border;
                                    if (unlink)
                                        border.sides = {border.width, border.width, border.width, border.width};
                                    else if (border.sides)
                                        border.width = border.sides->top;
                                    if (!unlink)
                                        border.sides.reset();
                                });
}

void BorderSection::chooseBackground(bool isBlurred)
{
    if (const auto& blurred = context_.recipe().border.blurredBackground)
        keptBackground_ = *blurred;
    context_.history.editRecipe(QStringLiteral("Background"), [&](RenderRecipe& recipe) {
        recipe.border.blurredBackground = isBlurred ? std::optional(keptBackground_) : std::nullopt;
    });
}

void BorderSection::refresh()
{
    const Border& border = context_.recipe().border;
    setSummary(WindowTexts::borderSummary(border));
    unit_->setCurrentIndex(border.unit == BorderUnit::pixels ? 0 : 1);
    refreshWidth(border);
    refreshBackground(border);
    shape_->refresh();
    line_->refresh();
    edge_->refresh();
}

void BorderSection::refreshWidth(const Border& border)
{
    if (shownUnit_ != border.unit) {
        shownUnit_ = border.unit;
        applyRange(width_, InspectorRanges::borderWidth(border.unit));
        sides_->setNumberRange(InspectorRanges::borderWidth(border.unit));
    }
    const bool isUnlinked = border.sides.has_value();
    unlink_->setChecked(isUnlinked);
    unlink_->setIcon(icon(isUnlinked ? IconName::unlink : IconName::link));
    unlink_->setToolTip(isUnlinked ? QStringLiteral("Same width on all sides") : QStringLiteral("Set each side"));
    width_->setVisible(!isUnlinked);
    sides_->setVisible(isUnlinked);
    width_->setValue(border.width);
    if (!isUnlinked)
        return;
    sides_->setSides(*border.sides);
    const ImportedPhoto* photo = context_.session.selectedPhoto();
    const PixelSize size = measuredSize(photo);
    sides_->picture()->setFrame({size, border.around(size)});
    sides_->picture()->setColor(border.blurredBackground ? std::nullopt : std::optional(border.color));
    if (const std::optional<FileUrl> shown = photo ? std::optional(photo->id()) : std::nullopt; shown != shownPhoto_) {
        shownPhoto_ = shown;
        sides_->picture()->setPhoto(shown ? context_.session.thumbnail(*shown) : QImage());
    }
}

void BorderSection::refreshBackground(const Border& border)
{
    const auto& blurred = border.blurredBackground;
    background_->setCurrentIndex(blurred ? blurredSegment : colorSegment);
    color_->parentWidget()->setVisible(!blurred);
    blur_->parentWidget()->setVisible(blurred.has_value());
    dim_->parentWidget()->setVisible(blurred.has_value());
    color_->showColor(border.color);
    if (!blurred)
        return;
    color_->closePopover();
    blur_->setValue(blurred->blur);
    dim_->setValue(blurred->dim);
}

} // namespace ferrow
