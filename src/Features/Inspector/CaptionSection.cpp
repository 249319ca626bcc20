// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/CaptionSection.h"

#include "Features/CaptionBuilder/CaptionBuilder.h"
#include "Features/Inspector/CaptionTabs.h"
#include "Features/Inspector/ColorPopover.h"
#include "Features/Inspector/Disclosure.h"
#include "Features/Inspector/FontButton.h"
#include "Features/Inspector/FontPopover.h"
#include "Features/Inspector/InspectorRows.h"
#include "Features/Inspector/PositionButton.h"
#include "Features/Inspector/PositionGrid.h"
#include "Features/Inspector/PositionPopover.h"
#include "Imaging/CaptionDrawing.h"
#include "Platform/Base/Localization.h"
#include "Platform/Text/TextFrame.h"
#include "Session/WindowTexts.h"
#include "Widgets/AccessibleEvents.h"
#include "Widgets/ColorWell.h"
#include "Widgets/FormRow.h"
#include "Widgets/HairLine.h"
#include "Widgets/SegmentedControl.h"
#include "Widgets/SliderField.h"
#include "Widgets/Theme.h"
#include "Widgets/ToggleSwitch.h"

#include <QComboBox>
#include <QPushButton>
#include <QVBoxLayout>

namespace ferrow {

namespace {

const QString colorStep = QStringLiteral("Caption Color");

/// Where the style that is meant without a name stands among a family's; it has many names.
int regularOf(const QStringList& styles)
{
    for (const QLatin1StringView name : {QLatin1StringView("Regular"), QLatin1StringView("Book"),
                                         QLatin1StringView("Roman"), QLatin1StringView("Normal")})
        if (const qsizetype index = styles.indexOf(name); index >= 0)
            return int(index);
    return 0;
}

} // namespace

CaptionSection::CaptionSection(const InspectorContext& context, QWidget* parent)
    : Section(QStringLiteral("Caption"), parent), context_(context), editing_(context.session, context.history)
{
    ToggleSwitch* shown = addSwitch(QStringLiteral("Show caption"));
    shown->setObjectName(QStringLiteral("captionSwitch"));
    connect(shown, &ToggleSwitch::clicked, this, [this](bool on) {
        context_.history.editRecipe(QStringLiteral("Show Caption"), [on](RenderRecipe& recipe) {
            for (Caption& caption : recipe.captions)
                caption.isEnabled = on;
        });
    });
    connect(&editing_, &CaptionEditing::chosenChanged, this, &CaptionSection::refresh);

    QVBoxLayout* rows = addGroup(body());
    group_ = rows->parentWidget();
    buildTabs(rows);
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

void CaptionSection::buildTabs(QVBoxLayout* rows)
{
    tabs_ = new CaptionTabs;
    connect(tabs_, &CaptionTabs::chosen, &editing_, &CaptionEditing::choose);
    connect(tabs_, &CaptionTabs::addRequested, this, &CaptionSection::addCaption);
    connect(tabs_, &CaptionTabs::removeRequested, &editing_, &CaptionEditing::removeCaption);
    connect(tabs_, &CaptionTabs::moveRequested, this, &CaptionSection::moveCaption);
    rows->addWidget(tabs_);
}

void CaptionSection::buildText()
{
    builder_ = new CaptionBuilder(editing_);
    builder_->setPane(context_.pane);
    // Its buttons give up their icons where it is narrow, rather than make the pane wider.
    builder_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
}

void CaptionSection::buildLook(QVBoxLayout* rows)
{
    font_ = new FontButton(QStringLiteral("Caption font"));
    font_->setObjectName(QStringLiteral("captionFontButton"));
    connect(font_, &QPushButton::clicked, this, &CaptionSection::openFont);
    fontRow_ = addRow(rows, QStringLiteral("Font"), font_);
    style_ = makeCombo(QStringLiteral("Caption font style"), {});
    style_->setObjectName(QStringLiteral("captionStyleCombo"));
    connect(style_, &QComboBox::activated, this, &CaptionSection::chooseStyle);
    styleRow_ = addRow(rows, QStringLiteral("Style"), style_);

    size_ = new SliderField(QStringLiteral("Caption size"));
    applyRange(size_, InspectorRanges::captionSize(BorderUnit::pixels));
    sizeRow_ = addRow(rows, QStringLiteral("Size"), size_);
    size_->field()->setObjectName(QStringLiteral("captionSizeField"));
    bindLength(size_, QStringLiteral("Caption Size"), &Caption::fontSize);

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
    addOrRemove_ = more->addButton(QString());
    addOrRemove_->setObjectName(QStringLiteral("addOrRemoveCaptionButton"));
    connect(addOrRemove_, &QPushButton::clicked, this, [this] {
        if (context_.recipe().captions.size() == 1)
            addCaption();
        else
            editing_.removeCaption();
    });
    rows->addWidget(more);

    unit_ = new SegmentedControl(QStringLiteral("Caption unit"), choicesOf<BorderUnit>());
    unit_->setObjectName(QStringLiteral("captionUnitControl"));
    connect(unit_, &SegmentedControl::chosen, this,
            [this](int index) { chooseUnit(allCases<BorderUnit>()[std::size_t(index)]); });
    addRow(more->rows(), QStringLiteral("Unit"), unit_,
           QStringLiteral("Of size, spacing and insets; percent of the photo’s shorter side"));
    shrinks_ = addSwitchRow(more->rows(), QStringLiteral("Shrink to Fit"), QStringLiteral("Shrink caption to fit"));
    shrinks_->setObjectName(QStringLiteral("captionShrinkSwitch"));
    shrinks_->setToolTip(QStringLiteral("Smaller where it would be cut off otherwise"));
    connect(shrinks_, &ToggleSwitch::clicked, this,
            [this](bool on) { edit(QStringLiteral("Shrink to Fit"), &Caption::shrinksToFit, on); });
    uppercase_ = addSwitchRow(more->rows(), QStringLiteral("Uppercase"), QStringLiteral("Caption in uppercase"));
    uppercase_->setObjectName(QStringLiteral("captionUppercaseSwitch"));
    connect(uppercase_, &ToggleSwitch::clicked, this,
            [this](bool on) { edit(QStringLiteral("Uppercase"), &Caption::isUppercase, on); });
    const auto addNumber = [&](const QString& label, const QString& name, const ValueRange& range, const QString& tip,
                               double Caption::*number) {
        SliderField* field = addSliderRow(more->rows(), label, name, range, tip);
        bind(field, &SliderField::valueEdited, name, number);
        return field;
    };
    const auto addLength = [&](const QString& label, const QString& name, const ValueRange& range, const QString& tip,
                               Length Caption::*length) {
        SliderField* field = addSliderRow(more->rows(), label, name, range, tip);
        bindLength(field, name, length);
        return field;
    };
    letterSpacing_ =
        addNumber(QStringLiteral("Letters"), QStringLiteral("Caption Letter Spacing"), InspectorRanges::letterSpacing(),
                  QStringLiteral("Extra space between letters, in percent of the size"), &Caption::letterSpacing);
    letterSpacing_->field()->setObjectName(QStringLiteral("captionLetterSpacingField"));
    lineSpacing_ = addLength(QStringLiteral("Spacing"), QStringLiteral("Caption Line Spacing"),
                             InspectorRanges::lineSpacing(BorderUnit::pixels),
                             QStringLiteral("Extra space between lines"), &Caption::lineSpacing);
    sideInset_ = addLength(QStringLiteral("Side inset"), QStringLiteral("Caption Side Inset"), InspectorRanges::inset(),
                           QStringLiteral("Distance to the left and right edge"), &Caption::padding);
    edgeInset_ = addLength(QStringLiteral("Edge inset"), QStringLiteral("Caption Edge Inset"), InspectorRanges::inset(),
                           QStringLiteral("Distance to the upper or lower edge"), &Caption::verticalPadding);
    opacity_ = addNumber(QStringLiteral("Opacity"), QStringLiteral("Caption Opacity"), InspectorRanges::opacity(),
                         QString(), &Caption::opacity);
}

template <typename Value>
void CaptionSection::edit(const QString& step, Value Caption::*member, const Value& value)
{
    context_.history.editRecipe(step, [&](RenderRecipe& recipe) { editing_.captionOf(recipe).*member = value; });
}

/// Sends what a control tells to one member of the chosen caption.
template <typename Source, typename Value, typename Member>
void CaptionSection::bind(Source* source, void (Source::*edited)(Value), const QString& step, Member Caption::*member)
{
    bindEdits(source, edited, context_.history, step, [this, member](RenderRecipe& recipe, const Member& value) {
        editing_.captionOf(recipe).*member = value;
    });
}

void CaptionSection::bindLength(SliderField* field, const QString& step, Length Caption::*length)
{
    bindEdits(
        field, &SliderField::valueEdited, context_.history, step,
        [this, length](RenderRecipe& recipe, double value) { (editing_.captionOf(recipe).*length).value = value; });
}

void CaptionSection::addCaption()
{
    editing_.addCaption();
    // The button has become one that removes.
    builder_->setFocus(Qt::OtherFocusReason);
    tellChosen();
}

void CaptionSection::stepCaption(int by)
{
    const int before = editing_.chosen();
    editing_.choose(before + by);
    if (editing_.chosen() != before)
        tellChosen();
}

void CaptionSection::moveCaption(int by)
{
    const int before = editing_.chosen();
    editing_.moveCaption(by);
    if (editing_.chosen() != before)
        tellChosen();
}

void CaptionSection::tellChosen()
{
    const std::vector<Caption>& captions = context_.recipe().captions;
    const CaptionPosition position = editing_.captionOf(context_.recipe()).position;
    announce(tabs_, QStringLiteral("Caption %1 of %2, %3")
                        .arg(QString::number(editing_.chosen() + 1), QString::number(captions.size()),
                             PositionGrid::inWords(position)));
}

void CaptionSection::chooseUnit(BorderUnit unit)
{
    const PixelSize size = measuredSize(context_.session.selectedPhoto());
    context_.history.editRecipe(QStringLiteral("Caption Unit"),
                                [&](RenderRecipe& recipe) { editing_.captionOf(recipe).convert(unit, size); });
}

void CaptionSection::chooseStyle(int index)
{
    context_.history.editRecipe(QStringLiteral("Caption Font Style"), [&](RenderRecipe& recipe) {
        if (auto& face = editing_.captionOf(recipe).face)
            face->style = style_->itemText(index);
    });
}

void CaptionSection::openFont()
{
    const Caption before = editing_.captionOf(context_.recipe());
    auto* popover = new FontPopover(font_, FontChoice::of(before));
    popover->setPane(context_.pane);
    connect(popover, &FontPopover::tried, this, [this, before](const FontChoice& choice) {
        context_.history.preview(QStringLiteral("Caption Font"), [&](RenderRecipe& recipe) {
            Caption& caption = editing_.captionOf(recipe);
            caption.font = before.font;
            caption.face = before.face; // With its style, which another family may not have.
            choice.applyTo(caption);
        });
    });
    connect(popover, &FontPopover::kept, &context_.history, &EditHistory::keepPreview);
    connect(popover, &FontPopover::givenUp, &context_.history, &EditHistory::dropPreview);
    popover->present();
}

void CaptionSection::openColor()
{
    // A caption's transparency is a value of its own, so that its color has none.
    colorPopover_ =
        new ColorPopover(color_->swatch(), QStringLiteral("Caption Color"), editing_.captionOf(context_.recipe()).color,
                         ColorPopover::Opacity::fixed, context_.screenColorPicker);
    colorPopover_->setPane(context_.pane);
    bind(colorPopover_.data(), &ColorPopover::colorEdited, colorStep, &Caption::color);
    colorPopover_->present();
}

void CaptionSection::openPosition()
{
    const PositionScene scene =
        PositionScene::make(PlacedElement::caption, context_.recipe(), context_.session.selectedPhoto(), logoSize_,
                            std::size_t(editing_.chosen()));
    const QString title = scene.number > 0 ? QStringLiteral("Position of Caption %1").arg(scene.number)
                                           : QStringLiteral("Caption Position");
    positionPopover_ = new PositionPopover(
        position_, title, scene, [this](const FileUrl& photoID) { return context_.session.thumbnail(photoID); });
    positionPopover_->setPane(context_.pane);
    connect(positionPopover_.data(), &PositionPopover::gestureStarted, this, [this] {
        placesBefore_.clear();
        for (const Caption& caption : context_.recipe().captions)
            placesBefore_.push_back(caption.position);
    });
    bindEdits(positionPopover_.data(), &PositionPopover::positionEdited, context_.history,
              QStringLiteral("Caption Position"), [this](RenderRecipe& recipe, CaptionPosition position) {
                  putCaption(recipe, std::size_t(editing_.chosen()), position, placesBefore_);
              });
    positionPopover_->present();
}

void CaptionSection::refresh()
{
    const RenderRecipe& recipe = context_.recipe();
    const Caption& caption = editing_.captionOf(recipe);
    const ImportedPhoto* photo = context_.session.selectedPhoto();
    const bool isAlone = recipe.captions.size() == 1;
    const PhotoMetadata metadata = photo ? photo->captionMetadata() : PhotoMetadata();
    setSummary(WindowTexts::captionsSummary(recipe.captions, photo ? &metadata : nullptr));
    headerSwitch()->setChecked(recipe.showsCaption());
    group_->setEnabled(caption.isEnabled);
    tabs_->setVisible(!isAlone);
    tabs_->setCaptions(recipe.captions, editing_.chosen());
    addOrRemove_->setText(isAlone ? QStringLiteral("Add Caption")
                                  : QStringLiteral("Remove Caption %1").arg(editing_.chosen() + 1));

    builder_->setCutNote(
        photo ? WindowTexts::captionCutNote(CaptionDrawing::cut(photo->pixelSize, recipe, caption, metadata))
              : QString());
    refreshFont(caption);
    refreshLengths(recipe, caption);
    color_->setColor(caption.color);
    alignment_->setCurrentIndex(int(caption.alignment));
    shrinks_->setChecked(caption.shrinksToFit);
    uppercase_->setChecked(caption.isUppercase);
    letterSpacing_->setValue(caption.letterSpacing);
    opacity_->setValue(caption.opacity);
    if (colorPopover_)
        colorPopover_->setColor(caption.color);
    refreshPosition(recipe);
}

void CaptionSection::refreshFont(const Caption& caption)
{
    font_->setChoice(FontChoice::of(caption));
    const auto missing = CaptionDrawing::missingFont(caption);
    fontRow_->setMessage(
        Severity::warning,
        missing ? QStringLiteral("This font is not installed. %1 stands in for it.").arg(missing->standIn) : QString());
    styleRow_->setVisible(caption.face.has_value());
    if (!caption.face || *caption.face == shownFace_)
        return;
    shownFace_ = *caption.face;
    QStringList styles = FontFamilies::styles(shownFace_.family);
    const bool isKnown = shownFace_.style.isEmpty() || styles.contains(shownFace_.style);
    if (!isKnown)
        styles.prepend(shownFace_.style);
    style_->clear();
    style_->addItems(styles);
    style_->setCurrentIndex(shownFace_.style.isEmpty() ? regularOf(styles) : int(styles.indexOf(shownFace_.style)));
    styleRow_->setMessage(Severity::warning, isKnown || missing ? QString()
                                                                : QStringLiteral("This font has no such style. The "
                                                                                 "nearest stands in for it."));
}

void CaptionSection::refreshLengths(const RenderRecipe& recipe, const Caption& caption)
{
    showLength(size_, caption.fontSize, InspectorRanges::captionSize);
    showLength(lineSpacing_, caption.lineSpacing, InspectorRanges::lineSpacing);
    showLength(sideInset_, caption.padding, InspectorRanges::inset);
    showLength(edgeInset_, caption.verticalPadding, InspectorRanges::inset);
    unit_->setCurrentIndex(int(caption.fontSize.unit));

    const ImportedPhoto* photo = context_.session.selectedPhoto();
    QString note;
    if (photo && caption.shrinksToFit) {
        const double size = CaptionDrawing::fontSize(photo->pixelSize, recipe, caption, photo->captionMetadata());
        if (size < caption.fontSize.pixels(photo->pixelSize))
            note = QStringLiteral("Shrunk to %1 px on this photo.").arg(Localization::number(size, 0));
    }
    sizeRow_->setMessage(Severity::info, note);
}

void CaptionSection::setLogoSize(PixelSize size)
{
    logoSize_ = size;
    refreshPosition(context_.recipe());
}

void CaptionSection::refreshPosition(const RenderRecipe& recipe)
{
    const PositionScene scene = PositionScene::make(PlacedElement::caption, recipe, context_.session.selectedPhoto(),
                                                    logoSize_, std::size_t(editing_.chosen()));
    position_->setPosition(scene.position);
    positionRow_->setMessage(Severity::warning, editing_.captionOf(recipe).isEnabled ? scene.warning : QString());
    if (positionPopover_)
        positionPopover_->setScene(scene);
}

} // namespace ferrow
