// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/CaptionSection.h"

#include "Features/CaptionBuilder/CaptionBuilder.h"
#include "Features/Inspector/ColorPopover.h"
#include "Features/Inspector/Disclosure.h"
#include "Features/Inspector/InspectorRows.h"
#include "Features/Inspector/PositionButton.h"
#include "Features/Inspector/PositionPopover.h"
#include "Imaging/ImageRenderer.h"
#include "Session/WindowTexts.h"
#include "Widgets/ColorWell.h"
#include "Widgets/FormRow.h"
#include "Widgets/HairLine.h"
#include "Widgets/SegmentedControl.h"
#include "Widgets/SliderField.h"
#include "Widgets/Theme.h"
#include "Widgets/ToggleSwitch.h"

#include <QComboBox>
#include <QVBoxLayout>

namespace ferrow {

namespace {

const QString colorStep = QStringLiteral("Caption Color");

void setColor(RenderRecipe& recipe, const RGBAColor& color)
{
    recipe.captionColor = color;
}

/// Sends what a slider tells to one number of the recipe.
void bindNumber(SliderField* field, EditHistory& history, const QString& step, double RenderRecipe::*number)
{
    bindEdits(field, &SliderField::valueEdited, history, step,
              [number](RenderRecipe& recipe, double value) { recipe.*number = value; });
}

} // namespace

CaptionSection::CaptionSection(const InspectorContext& context, QWidget* parent)
    : Section(QStringLiteral("Caption"), parent), context_(context), draft_(context.session, context.history)
{
    ToggleSwitch* shown = addSwitch(QStringLiteral("Show caption"));
    shown->setObjectName(QStringLiteral("captionSwitch"));
    connect(shown, &ToggleSwitch::clicked, this, [this](bool on) {
        edit(QStringLiteral("Show Caption"), [on](RenderRecipe& recipe) { recipe.captionEnabled = on; });
    });

    QVBoxLayout* rows = addGroup(body());
    group_ = rows->parentWidget();
    buildText();
    rows->addWidget(builder_);
    rows->addWidget(new HairLine);
    buildLook(rows);
    buildAlignment(rows);
    // The line that folds is higher than its text: that air is part of the distances.
    auto* last = new QVBoxLayout;
    last->setSpacing(Space::iconEdge);
    rows->addLayout(last);
    buildPosition(last);
    buildMore(last);
    body()->setContentsMargins(Space::inspector, 0, Space::inspector, Space::row);
}

void CaptionSection::buildText()
{
    builder_ = new CaptionBuilder;
    // Its buttons give up their icons where it is narrow, rather than make the pane wider.
    builder_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    connect(
        builder_, &CaptionBuilder::segmentsEdited, this,
        [this](const QString& step, const std::vector<CaptionSegment>& segments) { draft_.commit(step, segments); });
    connect(builder_, &CaptionBuilder::segmentsPreviewed, this,
            [this](const std::vector<CaptionSegment>& segments) { draft_.preview(segments); });
    connect(builder_, &CaptionBuilder::interrupted, this, [this] { draft_.interrupt(); });
}

void CaptionSection::buildLook(QVBoxLayout* rows)
{
    QStringList fonts;
    for (const CaptionFont font : allCases<CaptionFont>())
        fonts.append(WindowTexts::fontName(font));
    font_ = makeCombo(QStringLiteral("Caption font"), fonts);
    font_->setObjectName(QStringLiteral("captionFontCombo"));
    connect(font_, &QComboBox::activated, this, [this](int index) {
        const CaptionFont font = allCases<CaptionFont>()[std::size_t(index)];
        edit(QStringLiteral("Caption Font"), [font](RenderRecipe& recipe) { recipe.captionFont = font; });
    });
    addRow(rows, QStringLiteral("Font"), font_);

    size_ = addSliderRow(rows, QStringLiteral("Size"), QStringLiteral("Caption size"), InspectorRanges::captionSize());
    size_->field()->setObjectName(QStringLiteral("captionSizeField"));
    bindNumber(size_, context_.history, QStringLiteral("Caption Size"), &RenderRecipe::captionFontSize);

    color_ = new ColorWell(QStringLiteral("Caption color"));
    color_->setObjectName(QStringLiteral("captionColorWell"));
    connect(color_, &ColorWell::openRequested, this, &CaptionSection::openColor);
    connect(color_, &ColorWell::colorEdited, this, [this](const RGBAColor& color) {
        edit(colorStep, [&](RenderRecipe& recipe) { setColor(recipe, color); });
    });
    addRow(rows, QStringLiteral("Color"), color_);
}

void CaptionSection::buildAlignment(QVBoxLayout* rows)
{
    alignment_ = new SegmentedControl(QStringLiteral("Caption alignment"), choicesOf<CaptionAlignment>());
    alignment_->setObjectName(QStringLiteral("captionAlignmentControl"));
    connect(alignment_, &SegmentedControl::chosen, this, [this](int index) {
        const CaptionAlignment alignment = allCases<CaptionAlignment>()[std::size_t(index)];
        edit(QStringLiteral("Caption Alignment"),
             [alignment](RenderRecipe& recipe) { recipe.captionAlignment = alignment; });
    });
    addRow(rows, QStringLiteral("Alignment"), alignment_);
}

void CaptionSection::buildPosition(QVBoxLayout* rows)
{
    position_ = new PositionButton(QStringLiteral("Caption position"));
    position_->setObjectName(QStringLiteral("captionPositionButton"));
    connect(position_, &QPushButton::clicked, this, &CaptionSection::openPosition);
    positionRow_ = addRow(rows, QStringLiteral("Position"), position_);
}

void CaptionSection::buildMore(QVBoxLayout* rows)
{
    auto* more = new Disclosure(QStringLiteral("More"), QStringLiteral("More caption settings"));
    rows->addWidget(more);
    const auto add = [&](const QString& label, const QString& name, const ValueRange& range, const QString& tip,
                         double RenderRecipe::*number) {
        SliderField* field = addSliderRow(more->rows(), label, name, range, tip);
        bindNumber(field, context_.history, name, number);
        return field;
    };
    lineSpacing_ =
        add(QStringLiteral("Spacing"), QStringLiteral("Caption Line Spacing"), InspectorRanges::lineSpacing(),
            QStringLiteral("Extra space between lines"), &RenderRecipe::captionLineSpacing);
    sideInset_ = add(QStringLiteral("Side inset"), QStringLiteral("Caption Side Inset"), InspectorRanges::inset(),
                     QStringLiteral("Distance to the left and right edge"), &RenderRecipe::captionPadding);
    edgeInset_ = add(QStringLiteral("Edge inset"), QStringLiteral("Caption Edge Inset"), InspectorRanges::inset(),
                     QStringLiteral("Distance to the upper or lower edge"), &RenderRecipe::captionVerticalPadding);
    opacity_ = add(QStringLiteral("Opacity"), QStringLiteral("Caption Opacity"), InspectorRanges::opacity(), QString(),
                   &RenderRecipe::captionOpacity);
}

void CaptionSection::edit(const QString& step, const EditHistory::RecipeEdit& edit)
{
    context_.history.editRecipe(step, edit);
}

void CaptionSection::openColor()
{
    // A caption's transparency is a value of its own, so that its colour has none.
    colorPopover_ = new ColorPopover(color_->swatch(), QStringLiteral("Caption Color"), context_.recipe().captionColor,
                                     ColorPopover::Opacity::fixed, context_.screenColorPicker);
    colorPopover_->setPane(context_.pane);
    bindEdits(colorPopover_.data(), &ColorPopover::colorEdited, context_.history, colorStep, setColor);
    colorPopover_->present();
}

void CaptionSection::openPosition()
{
    const PositionScene scene =
        PositionScene::make(PlacedElement::caption, context_.recipe(), context_.session.selectedPhoto());
    positionPopover_ =
        new PositionPopover(position_, QStringLiteral("Caption Position"), scene,
                            [this](const FileUrl& photoID) { return context_.session.thumbnail(photoID); });
    positionPopover_->setPane(context_.pane);
    bindEdits(positionPopover_.data(), &PositionPopover::positionEdited, context_.history,
              QStringLiteral("Caption Position"),
              [](RenderRecipe& recipe, CaptionPosition position) { recipe.captionPosition = position; });
    positionPopover_->present();
}

void CaptionSection::refresh()
{
    const RenderRecipe& recipe = context_.recipe();
    const ImportedPhoto* photo = context_.session.selectedPhoto();
    setSummary(WindowTexts::captionSummary(recipe, photo ? &photo->metadata : nullptr));
    headerSwitch()->setChecked(recipe.captionEnabled);
    group_->setEnabled(recipe.captionEnabled);

    builder_->setMetadata(photo ? std::optional(photo->metadata) : std::nullopt);
    builder_->setSegments(recipe.captionSegments);
    builder_->setCutNote(
        photo ? WindowTexts::captionCutNote(ImageRenderer::captionCut(photo->pixelSize, recipe, photo->metadata))
              : QString());
    font_->setCurrentIndex(int(recipe.captionFont));
    size_->setValue(recipe.captionFontSize);
    color_->setColor(recipe.captionColor);
    alignment_->setCurrentIndex(int(recipe.captionAlignment));
    lineSpacing_->setValue(recipe.captionLineSpacing);
    sideInset_->setValue(recipe.captionPadding);
    edgeInset_->setValue(recipe.captionVerticalPadding);
    opacity_->setValue(recipe.captionOpacity);
    if (colorPopover_)
        colorPopover_->setColor(recipe.captionColor);
    refreshPosition(recipe);
}

void CaptionSection::refreshPosition(const RenderRecipe& recipe)
{
    const PositionScene scene = PositionScene::make(PlacedElement::caption, recipe, context_.session.selectedPhoto());
    position_->setPosition(scene.position);
    positionRow_->setMessage(Severity::warning, recipe.captionEnabled ? scene.warning : QString());
    if (positionPopover_)
        positionPopover_->setScene(scene);
}

} // namespace ferrow
