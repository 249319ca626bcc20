// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/ColorWell.h"

#include "Widgets/StyleDrawing.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QRegularExpression>
#include <QStyleOptionButton>

#include <algorithm>
#include <cmath>

namespace ferrow {

namespace ColorText {

QString hex(const RGBAColor& color)
{
    return toQColor(color).name(QColor::HexRgb).toUpper();
}

std::optional<RGBAColor> parse(const QString& text, double alpha)
{
    static const QRegularExpression pattern(QStringLiteral("^#?([0-9a-fA-F]{3}|[0-9a-fA-F]{6})$"));
    const QRegularExpressionMatch match = pattern.match(text.trimmed());
    if (!match.hasMatch())
        return std::nullopt;
    const QColor color(QLatin1Char('#') + match.captured(1));
    return RGBAColor{color.red() / 255.0, color.green() / 255.0, color.blue() / 255.0, alpha};
}

QColor toQColor(const RGBAColor& color)
{
    const auto byte = [](double component) { return int(std::lround(std::clamp(component, 0.0, 1.0) * 255)); };
    return QColor(byte(color.red), byte(color.green), byte(color.blue), byte(color.alpha));
}

QString spoken(const RGBAColor& color)
{
    const auto shown = [](double component) { return std::clamp(component, 0.0, 1.0); };
    return RGBAColor{shown(color.red), shown(color.green), shown(color.blue)}.accessibilityDescription();
}

} // namespace ColorText

namespace {

/// Transparent colors lie on squares of two grays.
void paintColor(QPainter& painter, const QRectF& rect, const QColor& color)
{
    if (color.alpha() < 255) {
        StyleDrawing::paintBox(painter, rect, Radius::box, Qt::white);
        painter.save();
        QColor opaque = color;
        opaque.setAlpha(255);
        painter.setClipRect(QRectF(rect.left(), rect.top(), rect.width() / 2, rect.height()));
        StyleDrawing::paintBox(painter, rect, Radius::box, opaque);
        painter.restore();
    }
    StyleDrawing::paintBox(painter, rect, Radius::box, color);
    // A quarter of the opposite tells the color from the ground round it, whichever both are.
    QColor edge = themeColor(&ThemeColors::text);
    edge.setAlphaF(0.22F);
    StyleDrawing::paintBox(painter, rect, Radius::box, Qt::transparent, edge);
}

} // namespace

ColorSwatch::ColorSwatch(const QString& name, QWidget* parent) : QPushButton(parent)
{
    setAccessibleName(name);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setColor(RGBAColor::white);
}

void ColorSwatch::setColor(const RGBAColor& color)
{
    color_ = color;
    setAccessibleDescription(ColorText::spoken(color));
    update();
}

QSize ColorSwatch::sizeHint() const
{
    const int side = Theme::current().scaled(Measure::swatch);
    return QSize(side, side);
}

void ColorSwatch::paintEvent(QPaintEvent*)
{
    QStyleOptionButton option;
    initStyleOption(&option);
    StyleDrawing::ControlState state = StyleDrawing::ControlState::of(&option, this);
    state.focused = false;
    QPainter painter(this);
    StyleDrawing::paintField(painter, rect(), state);
    const double inset = (Measure::swatch - Measure::swatchInner) / 2.0;
    painter.setOpacity(state.enabled ? 1 : disabledOpacity);
    paintColor(painter, QRectF(rect()).adjusted(inset, inset, -inset, -inset), ColorText::toQColor(color_));
}

ColorWell::ColorWell(const QString& name, QWidget* parent)
    : QWidget(parent), swatch_(new ColorSwatch(name, this)),
      field_(new CommitField(name + QStringLiteral(" hex"), this))
{
    constexpr int gap = 10;
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(gap);
    layout->addWidget(swatch_);
    layout->addWidget(field_, 1);
    setFocusProxy(swatch_);
    setColor(RGBAColor::white);

    connect(swatch_, &QPushButton::clicked, this, &ColorWell::openRequested);
    connect(field_, &CommitField::committed, this, &ColorWell::take);
    connect(field_, &CommitField::errorChanged, this, &ColorWell::errorChanged);
}

void ColorWell::setColor(const RGBAColor& color)
{
    color_ = color;
    swatch_->setColor(color);
    field_->showText(ColorText::hex(color));
}

void ColorWell::take(const QString& text)
{
    const std::optional<RGBAColor> typed = ColorText::parse(text, color_.alpha);
    if (!typed) {
        field_->setError(QStringLiteral("A color is # and six digits, such as #F4F1EA."));
        return;
    }
    const bool isNew = ColorText::hex(*typed) != ColorText::hex(color_);
    // A color finer than its hex text stays as fine as it is when the same text is typed again.
    setColor(isNew ? *typed : color_);
    field_->restore();
    if (isNew)
        emit colorEdited(color_);
}

} // namespace ferrow
