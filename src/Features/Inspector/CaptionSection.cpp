// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/CaptionSection.h"

#include "Features/CaptionBuilder/CaptionBuilder.h"
#include "Features/Inspector/ColorPopover.h"
#include "Features/Inspector/Disclosure.h"
#include "Features/Inspector/InspectorRows.h"
#include "Features/Inspector/PositionButton.h"
#include "Features/Inspector/PositionPopover.h"
#include "Imaging/CaptionDrawing.h"
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

/// Sends what a control tells to one member of the caption.
template <typename Source, typename Value, typename Member>
void bindMember(Source* source, void (Source::*edited)(Value), EditHistory& history, const QString& step,
                Member Caption::*member)
{
    bindEdits(source, edited, history, step, [member](RenderRecipe& recipe, const Member& value) {
        CaptionEditing::captionOf(recipe).*member = value;
    });
}

void bindLength(SliderField* field, EditHistory& history, const QString& step, Length Caption::*length)
{
    bindEdits(field, &SliderField::valueEdited, history, step, [length](RenderRecipe& recipe, double value) {
        (CaptionEditing::captionOf(recipe).*length).value = value;
    });
}

} // namespace

CaptionSection::CaptionSection(const InspectorContext& context, QWidget* parent)
    : Section(QStringLiteral("Caption"), parent), context_(context), editing_(context.session, context.history)
{
    ToggleSwitch* shown = addSwitch(QStringLiteral("Show caption"));
    shown->setObjectName(QStringLiteral("captionSwitch"));
    connect(shown, &ToggleSwitch::clicked, this,
            [this](bool on) { edit(QStringLiteral("Show Caption"), &Caption::isEnabled, on); });

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
    builder_ = new CaptionBuilder(editing_);
    // Its buttons give up their icons where it is narrow, rather than make the pane wider.
    builder_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
}

void CaptionSection::buildLook(QVBoxLayout* rows)
{
    QStringList fonts;
    for (const CaptionFont font : allCases<CaptionFont>())
        fonts.append(WindowTexts::fontName(font));
    font_ = makeCombo(QStringLiteral("Caption font"), fonts);
    font_->setObjectName(QStringLiteral("captionFontCombo"));
    connect(font_, &QComboBox::activated, this, [this](int index) {
        edit(QStringLiteral("Caption Font"), &Caption::font, allCases<CaptionFont>()[std::size_t(index)]);
    });
    addRow(rows, QStringLiteral("Font"), font_);

    size_ = addSliderRow(rows, QStringLiteral("Size"), QStringLiteral("Caption size"), InspectorRanges::captionSize());
    size_->field()->setObjectName(QStringLiteral("captionSizeField"));
    bindLength(size_, context_.history, QStringLiteral("Caption Size"), &Caption::fontSize);

    color_ = new ColorWell(QStringLiteral("Caption color"));
    color_->setObjectName(QStringLiteral("captionColorWell"));
    connect(color_, &ColorWell::openRequested, this, &CaptionSection::openColor);
    connect(color_, &ColorWell::colorEdited, this,
            [this](const RGBAColor& color) { edit(colorStep, &Caption::color, color); });
    addRow(rows, QStringLiteral("Color"), color_);
}

void CaptionSection::buildAlignment(QVBoxLayout* rows)
{
    alignment_ = new SegmentedControl(QStringLiteral("Caption alignment"), choicesOf<CaptionAlignment>());
    alignment_->setObjectName(QStringLiteral("captionAlignmentControl"));
    connect(alignment_, &SegmentedControl::chosen, this, [this](int index) {
        edit(QStringLiteral("Caption Alignment"), &Caption::alignment,
             allCases<CaptionAlignment>()[std::size_t(index)]);
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
                         Length Caption::*length) {
        SliderField* field = addSliderRow(more->rows(), label, name, range, tip);
        bindLength(field, context_.history, name, length);
        return field;
    };
    lineSpacing_ =
        add(QStringLiteral("Spacing"), QStringLiteral("Caption Line Spacing"), InspectorRanges::lineSpacing(),
            QStringLiteral("Extra space between lines"), &Caption::lineSpacing);
    sideInset_ = add(QStringLiteral("Side inset"), QStringLiteral("Caption Side Inset"), InspectorRanges::inset(),
                     QStringLiteral("Distance to the left and right edge"), &Caption::padding);
    edgeInset_ = add(QStringLiteral("Edge inset"), QStringLiteral("Caption Edge Inset"), InspectorRanges::inset(),
                     QStringLiteral("Distance to the upper or lower edge"), &Caption::verticalPadding);
    const QString opacityStep = QStringLiteral("Caption Opacity");
    opacity_ = addSliderRow(more->rows(), QStringLiteral("Opacity"), opacityStep, InspectorRanges::opacity());
    bindMember(opacity_, &SliderField::valueEdited, context_.history, opacityStep, &Caption::opacity);
}

template <typename Value>
void CaptionSection::edit(const QString& step, Value Caption::*member, const Value& value)
{
    context_.history.editRecipe(step, [&](RenderRecipe& recipe) { CaptionEditing::captionOf(recipe).*member = value; });
}

void CaptionSection::openColor()
{
    // A caption's transparency is a value of its own, so that its color has none.
    colorPopover_ = new ColorPopover(color_->swatch(), QStringLiteral("Caption Color"),
                                     CaptionEditing::captionOf(context_.recipe()).color, ColorPopover::Opacity::fixed,
                                     context_.screenColorPicker);
    colorPopover_->setPane(context_.pane);
    bindMember(colorPopover_.data(), &ColorPopover::colorEdited, context_.history, colorStep, &Caption::color);
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
    bindMember(positionPopover_.data(), &PositionPopover::positionEdited, context_.history,
               QStringLiteral("Caption Position"), &Caption::position);
    positionPopover_->present();
}

void CaptionSection::refresh()
{
    const RenderRecipe& recipe = context_.recipe();
    const Caption& caption = CaptionEditing::captionOf(recipe);
    const ImportedPhoto* photo = context_.session.selectedPhoto();
    setSummary(WindowTexts::captionSummary(caption, photo ? &photo->metadata : nullptr));
    headerSwitch()->setChecked(caption.isEnabled);
    group_->setEnabled(caption.isEnabled);

    builder_->setCutNote(
        photo ? WindowTexts::captionCutNote(CaptionDrawing::cut(photo->pixelSize, recipe, caption, photo->metadata))
              : QString());
    font_->setCurrentIndex(int(caption.font));
    size_->setValue(caption.fontSize.value);
    color_->setColor(caption.color);
    alignment_->setCurrentIndex(int(caption.alignment));
    lineSpacing_->setValue(caption.lineSpacing.value);
    sideInset_->setValue(caption.padding.value);
    edgeInset_->setValue(caption.verticalPadding.value);
    opacity_->setValue(caption.opacity);
    if (colorPopover_)
        colorPopover_->setColor(caption.color);
    refreshPosition(recipe);
}

void CaptionSection::refreshPosition(const RenderRecipe& recipe)
{
    const PositionScene scene = PositionScene::make(PlacedElement::caption, recipe, context_.session.selectedPhoto());
    position_->setPosition(scene.position);
    positionRow_->setMessage(Severity::warning,
                             CaptionEditing::captionOf(recipe).isEnabled ? scene.warning : QString());
    if (positionPopover_)
        positionPopover_->setScene(scene);
}

} // namespace ferrow
