// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/ColorPopover.h"

#include "Features/Inspector/CheckerBoard.h"
#include "Features/Inspector/ColorField.h"
#include "Features/Inspector/HueBar.h"
#include "Features/Inspector/InspectorRows.h"
#include "Features/Inspector/SwatchGrid.h"
#include "Platform/Desktop/ScreenColorPicker.h"
#include "Widgets/ColorWell.h"
#include "Widgets/FerrowStyle.h"
#include "Widgets/FormRow.h"
#include "Widgets/HairLine.h"
#include "Widgets/Icons.h"
#include "Widgets/MessageLine.h"
#include "Widgets/SliderField.h"
#include "Widgets/Theme.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <QVBoxLayout>
#include <QWidgetItem>

#include <algorithm>

namespace ferrow {

namespace {

/// Of the label column, to leave the slider as long as may be.
constexpr int opacityLabel = 60;

/// Lets a widget reach beyond its place in a layout on all sides, by what its thumbs and rings need, so that what it
/// draws stands flush with its neighbors.
class OverhangItem : public QWidgetItem {
public:
    OverhangItem(QWidget* widget, int across, int upright) : QWidgetItem(widget), across_(across), upright_(upright) {}

    QSize sizeHint() const override { return smaller(QWidgetItem::sizeHint()); }
    QSize minimumSize() const override { return smaller(QWidgetItem::minimumSize()); }
    QSize maximumSize() const override { return smaller(QWidgetItem::maximumSize()); }

    void setGeometry(const QRect& rect) override
    {
        widget()->setGeometry(rect.adjusted(-across_, -upright_, across_, upright_));
    }

private:
    [[nodiscard]] QSize smaller(const QSize& size) const
    {
        return {std::max(size.width() - 2 * across_, 0), std::max(size.height() - 2 * upright_, 0)};
    }

    int across_;
    int upright_;
};

} // namespace

/// The color at opening beside the color now. A press goes back.
class BeforeAfterButton : public QPushButton {
public:
    explicit BeforeAfterButton(QWidget* parent) : QPushButton(parent)
    {
        setToolTip(QStringLiteral("Back to the previous color"));
        setFixedSize(48, Measure::control);
    }

    void setColors(const RGBAColor& before, const RGBAColor& after)
    {
        before_ = before;
        after_ = after;
        setEnabled(before != after);
        setAccessibleName(QStringLiteral("Back to the previous color"));
        setAccessibleDescription(ColorText::spoken(before));
        update();
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const double line = 1 / devicePixelRatioF();
        const QRectF area = QRectF(rect()).adjusted(line / 2, line / 2, -line / 2, -line / 2);
        QPainterPath shape;
        shape.addRoundedRect(area, Radius::control, Radius::control);
        painter.save();
        painter.setClipPath(shape);
        if (before_.alpha < 1 || after_.alpha < 1)
            paintCheckerBoard(painter, area);
        QRectF half = area;
        half.setWidth(area.width() / 2);
        painter.fillRect(half, ColorText::toQColor(before_));
        painter.fillRect(half.translated(half.width(), 0), ColorText::toQColor(after_));
        painter.restore();
        painter.setPen(QPen(themeColor(&ThemeColors::border), line));
        painter.drawPath(shape);
        painter.drawLine(half.topRight(), half.bottomRight());
    }

private:
    RGBAColor before_;
    RGBAColor after_;
};

ColorPopover::ColorPopover(QWidget* opener, const QString& title, const RGBAColor& color, Opacity opacity,
                           ScreenColorPicker& picker)
    : Popover(opener, title), picked_(PickedColor::from(color, {})), before_(color), color_(color)
{
    setDeletedAfterClose(true);
    connect(&run_, &EditRun::gestureStarted, this, &ColorPopover::gestureStarted);
    connect(&run_, &EditRun::gestureEnded, this, &ColorPopover::gestureEnded);
    connect(this, &Overlay::closed, &run_, &EditRun::finish);
    build(opacity, picker);
    showColor();
}

ColorPopover::~ColorPopover()
{
    run_.finish();
}

void ColorPopover::build(Opacity opacity, ScreenColorPicker& picker)
{
    body()->setSpacing(Space::row);

    swatches_ = new SwatchGrid;
    addOverhanging(swatches_, SwatchGrid::overhang, SwatchGrid::overhang);
    connect(swatches_, &SwatchGrid::chosen, this,
            [this](const NamedColor& named) { takeColor(named.color(color_.alpha)); });

    body()->addWidget(new HairLine);
    field_ = new ColorField;
    addOverhanging(field_, ColorField::overhang, ColorField::overhang);
    follow(field_);

    hue_ = new HueBar;
    addOverhanging(hue_, HueBar::overhang, HueBar::overhangUpright);
    follow(hue_);

    if (opacity == Opacity::offered)
        addOpacity();
    body()->addWidget(makeLastRow(picker));
}

void ColorPopover::addOverhanging(QWidget* widget, int across, int upright)
{
    widget->setParent(body()->parentWidget());
    body()->addItem(new OverhangItem(widget, across, upright));
}

void ColorPopover::addOpacity()
{
    opacity_ = new SliderField(QStringLiteral("Color opacity"));
    applyRange(opacity_, InspectorRanges::opacity());
    connect(opacity_, &SliderField::gestureStarted, &run_, &EditRun::beginDrag);
    connect(opacity_, &SliderField::valueEdited, this, [this](double alpha) {
        RGBAColor color = color_;
        color.alpha = alpha;
        takeColor(color);
    });
    connect(opacity_, &SliderField::gestureEnded, &run_, &EditRun::endDrag);
    auto* row = new FormRow(QStringLiteral("Opacity"), opacity_);
    row->setLabelWidth(opacityLabel);
    body()->addWidget(row);
}

template <typename Part>
void ColorPopover::follow(Part* part)
{
    connect(part, &Part::dragStarted, &run_, &EditRun::beginDrag);
    connect(part, &Part::edited, this, [this](const PickedColor& picked) { take(picked, picked.color()); });
    connect(part, &Part::dragEnded, &run_, &EditRun::endDrag);
}

QWidget* ColorPopover::makeLastRow(ScreenColorPicker& picker)
{
    auto* rows = new QWidget;
    auto* column = new QVBoxLayout(rows);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(Space::iconEdge);
    auto* row = new QHBoxLayout;
    row->setSpacing(Space::group);
    column->addLayout(row);

    beforeAfter_ = new BeforeAfterButton(rows);
    connect(beforeAfter_, &QPushButton::clicked, this, [this] { takeColor(before_); });
    row->addWidget(beforeAfter_);

    // The field of a well without its swatch: this popover is what the swatch would open.
    hex_ = new ColorWell(QStringLiteral("Picked color"));
    hex_->swatch()->hide();
    connect(hex_, &ColorWell::colorEdited, this, &ColorPopover::takeColor);
    row->addWidget(hex_, 1);

    QPushButton* eyedropper = makeIconButton(IconName::color, QStringLiteral("Pick a color from the screen"), rows);
    setButtonRole(eyedropper, ButtonRole::standard);
    eyedropper->setVisible(picker.isAvailable());
    connect(&picker, &ScreenColorPicker::availableChanged, eyedropper,
            [eyedropper, &picker] { eyedropper->setVisible(picker.isAvailable()); });
    connect(eyedropper, &QPushButton::clicked, &picker, &ScreenColorPicker::pick);
    connect(&picker, &ScreenColorPicker::picked, this, [this](const QColor& color) {
        takeColor({color.redF(), color.greenF(), color.blueF(), color_.alpha});
    });
    row->addWidget(eyedropper);

    auto* error = new MessageLine(Severity::error, QString(), MessageLine::Ground::none, rows);
    error->setRole(TextRole::small);
    error->hide();
    connect(hex_, &ColorWell::errorChanged, error, [this, error](const QString& message) {
        error->setMessage(Severity::error, message);
        error->setVisible(!message.isEmpty());
        relayout();
    });
    column->addWidget(error);
    return rows;
}

void ColorPopover::present()
{
    open(namedColorIndex(color_) ? static_cast<QWidget*>(swatches_) : field_);
}

void ColorPopover::setColor(const RGBAColor& color)
{
    if (color == color_)
        return;
    color_ = color;
    picked_ = PickedColor::from(color, picked_);
    showColor();
}

void ColorPopover::takeColor(const RGBAColor& color)
{
    take(PickedColor::from(color, picked_), color);
}

void ColorPopover::take(const PickedColor& picked, const RGBAColor& color)
{
    picked_ = picked;
    const bool isOther = color != color_;
    color_ = color;
    showColor();
    if (!isOther)
        return;
    run_.noteEdit();
    emit colorEdited(color);
}

void ColorPopover::showColor()
{
    swatches_->setColor(color_);
    field_->setColor(picked_);
    hue_->setColor(picked_);
    if (opacity_)
        opacity_->setValue(color_.alpha);
    beforeAfter_->setColors(before_, color_);
    hex_->setColor(color_);
}

} // namespace ferrow
