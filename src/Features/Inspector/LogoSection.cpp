// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/LogoSection.h"

#include "Features/Inspector/Disclosure.h"
#include "Features/Inspector/InspectorRows.h"
#include "Features/Inspector/LogoThumbnail.h"
#include "Features/Inspector/PositionButton.h"
#include "Features/Inspector/PositionPopover.h"
#include "Session/WindowTexts.h"
#include "Widgets/ElidedLabel.h"
#include "Widgets/FerrowStyle.h"
#include "Widgets/FlowLayout.h"
#include "Widgets/FormRow.h"
#include "Widgets/SliderField.h"
#include "Widgets/ToggleSwitch.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace ferrow {

namespace {

/// What kind of file a managed logo is, by the suffix that it was stored under.
QString kindOf(const LogoAssetReference& asset)
{
    const QString suffix = asset.managedFilename.section(u'.', -1).toUpper();
    const bool isDrawing = suffix == QLatin1StringView("PDF") || suffix == QLatin1StringView("SVG");
    return (isDrawing ? QStringLiteral("%1, vector") : QStringLiteral("%1 image")).arg(suffix);
}

void bindNumber(SliderField* field, EditHistory& history, const QString& step, double LogoConfiguration::*number)
{
    bindEdits(field, &SliderField::valueEdited, history, step, [number](RenderRecipe& recipe, double value) {
        if (recipe.logo)
            (*recipe.logo).*number = value;
    });
}

} // namespace

LogoSection::LogoSection(const InspectorContext& context, QWidget* parent)
    : Section(QStringLiteral("Logo"), parent), context_(context)
{
    setObjectName(QStringLiteral("logoSection"));
    body()->setContentsMargins(Space::inspector, 0, Space::inspector, Space::row);
    buildSwitch();
    buildFile();
    buildLook();
}

void LogoSection::buildSwitch()
{
    ToggleSwitch* shown = addSwitch(QStringLiteral("Show logo"));
    shown->setObjectName(QStringLiteral("logoSwitch"));
    connect(shown, &ToggleSwitch::clicked, this, &LogoSection::toggle);
}

void LogoSection::buildFile()
{
    well_ = new QWidget;
    well_->setObjectName(QStringLiteral("logoWell"));
    auto* row = new QHBoxLayout(well_);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(Space::row);
    thumbnail_ = new LogoThumbnail;
    row->addWidget(thumbnail_, 0, Qt::AlignTop);

    auto* column = new QVBoxLayout;
    column->setSpacing(0);
    name_ = new ElidedLabel(QString(), Qt::ElideMiddle);
    setTextRole(name_, TextRole::strong);
    kind_ = makeLabel(QString(), TextRole::small, &ThemeColors::text2);
    column->addWidget(name_);
    column->addWidget(kind_);
    column->addStretch();

    auto* buttons = new QWidget;
    auto* flow = new FlowLayout(Space::group, buttons);
    flow->setContentsMargins(0, Space::group, 0, 0);
    import_ = new QPushButton;
    import_->setObjectName(QStringLiteral("importLogoButton"));
    connect(import_, &QPushButton::clicked, this, &LogoSection::importRequested);
    remove_ = new QPushButton(QStringLiteral("Remove"));
    remove_->setObjectName(QStringLiteral("removeLogoButton"));
    remove_->setAccessibleName(QStringLiteral("Remove Logo"));
    connect(remove_, &QPushButton::clicked, this, [this] {
        import_->setFocus(Qt::OtherFocusReason); // This button is about to go.
        context_.history.removeLogo();
    });
    for (QPushButton* button : {import_, remove_}) {
        setSmallControl(button);
        flow->addWidget(button);
    }
    column->addWidget(buttons);
    row->addLayout(column, 1);
    body()->addWidget(well_);

    error_ = new MessageLine(Severity::error, QString());
    error_->setRole(TextRole::small);
    error_->hide();
    body()->addWidget(error_);
    connect(thumbnail_, &LogoThumbnail::loaded, error_, [this](const QString& error) {
        // What happened, and in further paragraphs what to do about it.
        error_->setMessage(Severity::error, error.section(u'\n', 0, 0), error.section(u'\n', 1).trimmed());
        error_->setVisible(!error.isEmpty());
        if (context_.recipe().logo)
            refreshPosition(context_.recipe());
        emit logoSizeChanged(thumbnail_->loadedSize());
    });
}

void LogoSection::buildLook()
{
    QVBoxLayout* rows = addGroup(body());
    group_ = rows->parentWidget();
    width_ = addSliderRow(rows, QStringLiteral("Size"), QStringLiteral("Logo width"), InspectorRanges::logoWidth(),
                          QStringLiteral("Share of the photo’s width"));
    width_->field()->setObjectName(QStringLiteral("logoWidthField"));
    bindNumber(width_, context_.history, QStringLiteral("Logo Width"), &LogoConfiguration::widthPercent);
    opacity_ =
        addSliderRow(rows, QStringLiteral("Opacity"), QStringLiteral("Logo opacity"), InspectorRanges::opacity());
    bindNumber(opacity_, context_.history, QStringLiteral("Logo Opacity"), &LogoConfiguration::opacity);

    // As in the caption's section.
    auto* last = new QVBoxLayout;
    last->setSpacing(Space::iconEdge);
    rows->addLayout(last);
    position_ = new PositionButton(QStringLiteral("Logo position"));
    position_->setObjectName(QStringLiteral("logoPositionButton"));
    connect(position_, &QPushButton::clicked, this, &LogoSection::openPosition);
    positionRow_ = addRow(last, QStringLiteral("Position"), position_);

    auto* more = new Disclosure(QStringLiteral("More"), QStringLiteral("More logo settings"));
    last->addWidget(more);
    sideInset_ = addSliderRow(more->rows(), QStringLiteral("Side inset"), QStringLiteral("Logo side inset"),
                              InspectorRanges::inset(), QStringLiteral("Distance to the left and right edge"));
    bindNumber(sideInset_, context_.history, QStringLiteral("Logo Side Inset"), &LogoConfiguration::horizontalPadding);
    edgeInset_ = addSliderRow(more->rows(), QStringLiteral("Edge inset"), QStringLiteral("Logo edge inset"),
                              InspectorRanges::inset(), QStringLiteral("Distance to the upper or lower edge"));
    bindNumber(edgeInset_, context_.history, QStringLiteral("Logo Edge Inset"), &LogoConfiguration::verticalPadding);
}

void LogoSection::toggle(bool on)
{
    if (!context_.recipe().logo) {
        headerSwitch()->setChecked(false);
        setExpanded(true);
        if (!isImporting_)
            emit importRequested();
        return;
    }
    context_.history.editRecipe(QStringLiteral("Show Logo"), [on](RenderRecipe& recipe) {
        if (recipe.logo)
            recipe.logo->isEnabled = on;
    });
}

void LogoSection::openPosition()
{
    const PositionScene scene = PositionScene::make(PlacedElement::logo, context_.recipe(),
                                                    context_.session.selectedPhoto(), thumbnail_->loadedSize());
    popover_ = new PositionPopover(position_, QStringLiteral("Logo Position"), scene,
                                   [this](const FileUrl& photoID) { return context_.session.thumbnail(photoID); });
    popover_->setPane(context_.pane);
    bindEdits(popover_.data(), &PositionPopover::positionEdited, context_.history, QStringLiteral("Logo Position"),
              [](RenderRecipe& recipe, CaptionPosition position) {
                  if (recipe.logo)
                      recipe.logo->position = position;
              });
    popover_->present();
}

void LogoSection::refresh()
{
    const RenderRecipe& recipe = context_.recipe();
    const bool isShown = recipe.logo && recipe.logo->isEnabled;
    setSummary(recipe.logo ? WindowTexts::logoSummary(recipe) : QString());
    headerSwitch()->setChecked(isShown);
    refreshFile(recipe);

    group_->setVisible(recipe.logo.has_value());
    group_->setEnabled(isShown);
    if (!recipe.logo) {
        if (popover_)
            popover_->dismiss();
        return;
    }
    width_->setValue(recipe.logo->widthPercent);
    opacity_->setValue(recipe.logo->opacity);
    sideInset_->setValue(recipe.logo->horizontalPadding);
    edgeInset_->setValue(recipe.logo->verticalPadding);
    refreshPosition(recipe);
}

void LogoSection::setImporting(bool isImporting)
{
    isImporting_ = isImporting;
    const bool hadFocus = isImporting && window()->focusWidget() == import_;
    refreshFile(context_.recipe());
    // Disabled, the button hands the focus on; whoever has not moved on meanwhile gets it back.
    if (hadFocus)
        focusMeanwhile_ = window()->focusWidget();
    else if (!isImporting && focusMeanwhile_ && focusMeanwhile_ == window()->focusWidget())
        import_->setFocus(Qt::OtherFocusReason);
    if (!isImporting)
        focusMeanwhile_ = nullptr;
}

void LogoSection::setDropTarget(bool isDropTarget)
{
    thumbnail_->setDropTarget(isDropTarget);
}

void LogoSection::refreshFile(const RenderRecipe& recipe)
{
    const bool hasLogo = recipe.logo.has_value();
    thumbnail_->setLogo(hasLogo ? std::optional(recipe.logo->asset) : std::nullopt);
    name_->setText(hasLogo ? recipe.logo->asset.displayName : QStringLiteral("No logo"));
    kind_->setText(hasLogo ? kindOf(recipe.logo->asset) : QStringLiteral("PNG, TIFF, PDF or SVG"));
    import_->setText(isImporting_ ? QStringLiteral("Importing…")
                     : hasLogo    ? QStringLiteral("Replace Logo…")
                                  : QStringLiteral("Import Logo…"));
    import_->setEnabled(!isImporting_);
    remove_->setVisible(hasLogo);
}

void LogoSection::refreshPosition(const RenderRecipe& recipe)
{
    const PositionScene scene =
        PositionScene::make(PlacedElement::logo, recipe, context_.session.selectedPhoto(), thumbnail_->loadedSize());
    position_->setPosition(scene.position);
    positionRow_->setMessage(Severity::warning, recipe.logo->isEnabled ? scene.warning : QString());
    if (popover_)
        popover_->setScene(scene);
}

} // namespace ferrow
