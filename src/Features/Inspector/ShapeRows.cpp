// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/ShapeRows.h"

#include "Features/Inspector/FrameProportions.h"
#include "Features/Inspector/InspectorRows.h"
#include "Features/Inspector/ShapeCombo.h"
#include "Widgets/FormRow.h"
#include "Widgets/SliderField.h"
#include "Widgets/Theme.h"
#include "Widgets/ToggleSwitch.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

#include <cmath>

namespace ferrow {

namespace {

const QString shapeStep = QStringLiteral("Frame Shape");

/// What Custom begins with where there is no shape to go on from: a ratio of prints that the list does not have.
constexpr RatioField::Ratio firstCustom{7, 5};

/// In percent, how near the middle a drag catches on it.
constexpr double catchesWithin = 2;

RatioField::Ratio ratioOf(const FrameShape& shape)
{
    return {shape.width, shape.height};
}

} // namespace

QString balanceHint(const RenderRecipe& recipe, PixelSize photo)
{
    RenderRecipe plain = recipe;
    plain.border.shape.reset();
    const auto shaped = FrameProportions::of(recipe, photo);
    const auto before = FrameProportions::of(plain, photo);
    if (!shaped || !before)
        return {};
    const auto across = [](const FrameProportions& frame) { return frame.around.left + frame.around.right; };
    const auto upright = [](const FrameProportions& frame) { return frame.around.top + frame.around.bottom; };
    const bool isBeside = across(*shaped) > across(*before);
    if (!isBeside && upright(*shaped) <= upright(*before))
        return QStringLiteral("This photo’s frame has the shape already.");
    const double balance = recipe.border.shape->balance;
    if (balance == 0)
        return QStringLiteral("The photo sits in the middle.");
    if (std::abs(balance) >= 100)
        return isBeside ? (balance < 0 ? QStringLiteral("The photo sits at the left.")
                                       : QStringLiteral("The photo sits at the right."))
                        : (balance < 0 ? QStringLiteral("The photo sits at the top.")
                                       : QStringLiteral("The photo sits at the bottom."));
    return isBeside ? (balance < 0 ? QStringLiteral("The photo sits left of the middle.")
                                   : QStringLiteral("The photo sits right of the middle."))
                    : (balance < 0 ? QStringLiteral("The photo sits above the middle.")
                                   : QStringLiteral("The photo sits below the middle."));
}

RatioField::RatioField(QWidget* parent)
    : NumberGroup(parent), width_(addField(QStringLiteral("Shape width"))),
      height_(addField(QStringLiteral("Shape height")))
{
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(Space::group);
    row->addWidget(width_);
    row->addWidget(makeLabel(QStringLiteral(":"), TextRole::body, &ThemeColors::text2));
    row->addWidget(height_);
    for (NumberField* field : {width_, height_}) {
        field->setFormat(InspectorRanges::ratioNumber());
        field->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    }
    setFocusProxy(width_);
}

void RatioField::setRatio(const Ratio& ratio)
{
    width_->setValue(ratio.first);
    height_->setValue(ratio.second);
}

void RatioField::takeNumbers()
{
    emit ratioEdited({width_->value(), height_->value()});
}

ShapeRows::ShapeRows(const InspectorContext& context, QWidget* parent) : QWidget(parent), context_(context)
{
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(Space::row);
    buildShape();
    buildBalance();
}

void ShapeRows::buildShape()
{
    auto* rows = static_cast<QVBoxLayout*>(layout());
    shape_ = new ShapeCombo(QStringLiteral("Frame shape"));
    shape_->setObjectName(QStringLiteral("frameShapeCombo"));
    connect(shape_, &ShapeCombo::asPhotoChosen, this, [this] {
        custom_.reset();
        context_.history.editRecipe(shapeStep, [](RenderRecipe& recipe) { recipe.border.shape.reset(); });
    });
    connect(shape_, &ShapeCombo::ratioChosen, this, [this](double width, double height) {
        custom_.reset();
        setRatio({width, height});
        refresh();
    });
    connect(shape_, &ShapeCombo::customChosen, this, &ShapeRows::chooseCustom);
    addRow(rows, QStringLiteral("Shape"), shape_);

    ratio_ = new RatioField;
    ratio_->setObjectName(QStringLiteral("frameRatioField"));
    connect(ratio_, &NumberGroup::gestureStarted, &context_.history, &EditHistory::beginGesture);
    connect(ratio_, &NumberGroup::gestureEnded, &context_.history, &EditHistory::endGesture);
    connect(ratio_, &RatioField::ratioEdited, this, [this](const RatioField::Ratio& ratio) {
        custom_ = ratio;
        setRatio(ratio);
    });
    ratioRow_ = addRow(rows, QStringLiteral("Ratio"), ratio_);
    connect(ratio_, &NumberGroup::errorChanged, ratioRow_,
            [row = ratioRow_](const QString& message) { row->setMessage(Severity::error, message); });

    turns_ = addSwitchRow(rows, QStringLiteral("Turn with photo"), QStringLiteral("Turn shape with photo"));
    turns_->setObjectName(QStringLiteral("shapeTurnsSwitch"));
    turns_->setToolTip(QStringLiteral("Width and height change places for photos that lie the other way"));
    connect(turns_, &ToggleSwitch::clicked, this, [this](bool on) {
        context_.history.editRecipe(QStringLiteral("Turn Shape With Photo"), [on](RenderRecipe& recipe) {
            if (recipe.border.shape)
                recipe.border.shape->turnsWithPhoto = on;
        });
    });
}

void ShapeRows::buildBalance()
{
    balance_ = new SliderField(QStringLiteral("Balance"));
    balance_->field()->setObjectName(QStringLiteral("frameBalanceField"));
    balance_->setNeutral(0, catchesWithin);
    applyRange(balance_, InspectorRanges::balance());
    bindEdits(balance_, &SliderField::valueEdited, context_.history, QStringLiteral("Balance"),
              [](RenderRecipe& recipe, double balance) {
                  if (recipe.border.shape)
                      recipe.border.shape->balance = balance;
              });
    balanceRow_ = addRow(static_cast<QVBoxLayout*>(layout()), QStringLiteral("Balance"), balance_,
                         QStringLiteral("Where the photo stands in the room that the shape adds"));
    // An error takes the hint's place under the field, and gives it back.
    connect(balance_, &SliderField::errorChanged, this, &ShapeRows::refresh);
}

void ShapeRows::chooseCustom()
{
    const std::optional<FrameShape>& shape = context_.recipe().border.shape;
    custom_ = shape ? ratioOf(*shape) : firstCustom;
    setRatio(*custom_);
    refresh();
}

void ShapeRows::setRatio(const RatioField::Ratio& ratio)
{
    context_.history.editRecipe(shapeStep, [&](RenderRecipe& recipe) {
        FrameShape shape = recipe.border.shape.value_or(FrameShape());
        shape.width = ratio.first;
        shape.height = ratio.second;
        recipe.border.shape = shape;
    });
}

void ShapeRows::refresh()
{
    const RenderRecipe& recipe = context_.recipe();
    const std::optional<FrameShape>& shape = recipe.border.shape;
    const bool isCustom = shape && (custom_ == ratioOf(*shape) || !ShapeCombo::isListed(*shape));
    shape_->setShape(shape, isCustom);
    ratioRow_->setVisible(isCustom);
    turns_->setVisible(shape && shape->width != shape->height);
    balanceRow_->setVisible(shape.has_value());
    if (!shape)
        return;
    ratio_->setRatio(ratioOf(*shape));
    turns_->setChecked(shape->turnsWithPhoto);
    balance_->setValue(shape->balance);
    if (!balance_->field()->hasError())
        balanceRow_->setMessage(Severity::plain, balanceHint(recipe, measuredSize(context_.session.selectedPhoto())));
}

} // namespace ferrow
