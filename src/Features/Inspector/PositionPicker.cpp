// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/PositionPicker.h"

#include "Features/Inspector/CheckerBoard.h"
#include "Session/ScreenImage.h"
#include "Widgets/ColorWell.h"
#include "Widgets/FocusRing.h"
#include "Widgets/Icons.h"
#include "Widgets/Theme.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <cmath>

namespace ferrow {

namespace {

/// Spots lie on photos, so that their colors are the same in both appearances.
const ThemeColors& spotColors()
{
    static const ThemeColors colors = Theme::colorsOf(Appearance::light, Contrast::normal);
    return colors;
}

constexpr double spotSize = 10;
constexpr double hoveredSize = 12;
constexpr double chosenSize = 18;
constexpr double haloSize = 20;
constexpr double numberSize = 22; ///< Of the disc that a chosen caption's number lies in.
const QColor spotEdge(0x3A, 0x3A, 0x3A);
const QColor absentPhoto(0xBD, 0xBD, 0xBD);
const QColor absentBackground(0x8A, 0x8A, 0x8A); // Of a photo that is blurred and dimmed.

void paintDisc(QPainter& painter, QPointF center, double size, const QColor& fill, const QColor& edge, double edgeWidth)
{
    painter.setBrush(fill);
    painter.setPen(edgeWidth > 0 ? QPen(edge, edgeWidth) : QPen(Qt::NoPen));
    const double radius = (size - edgeWidth) / 2;
    painter.drawEllipse(center, radius, radius);
}

/// The middle of `photo` in the proportion of `target`.
QRectF croppedTo(const QSize& photo, const QSizeF& target)
{
    const QSizeF kept = target.scaled(photo, Qt::KeepAspectRatio);
    return {QPointF((photo.width() - kept.width()) / 2, (photo.height() - kept.height()) / 2), kept};
}

QString spokenOther(const PositionScene::Other& other)
{
    if (other.element == PlacedElement::logo)
        return QStringLiteral("The logo is here.");
    return other.number > 0 ? QStringLiteral("Caption %1 is here.").arg(other.number)
                            : QStringLiteral("The caption is here.");
}

void paintNumber(QPainter& painter, QPointF center, int number, const QColor& color)
{
    QFont font = Theme::current().font(TextRole::strong);
    font.setPixelSize(12);
    painter.setFont(font);
    painter.setPen(color);
    painter.drawText(QRectF(center - QPointF(10, 10), QSizeF(20, 20)), Qt::AlignCenter, QString::number(number));
}

} // namespace

PositionPicker::PositionPicker(const QString& name, QWidget* parent) : QWidget(parent)
{
    setAccessibleName(name);
    setFocusPolicy(Qt::StrongFocus);
    setFocusLook(this, FocusLook::own);
    setMouseTracking(true);
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

void PositionPicker::setScene(const PositionScene& scene)
{
    const bool hasOtherShape = scene.frame != scene_.frame;
    const bool hasMoved = scene.position != scene_.position;
    scene_ = scene;
    if (hasOtherShape)
        updateGeometry();
    if (hasMoved)
        notifyItemsChanged(this);
    update();
}

void PositionPicker::setPhoto(const QImage& photo)
{
    photo_ = photo;
    update();
}

QSize PositionPicker::sizeHint() const
{
    constexpr int width = 256;
    return {width, heightForWidth(width)};
}

QSize PositionPicker::minimumSizeHint() const
{
    constexpr int width = 200;
    return {width, heightForWidth(width)};
}

int PositionPicker::heightForWidth(int width) const
{
    return int(std::ceil(PositionGrid::picture(width, scene_.frame).canvas.height()));
}

PositionGrid::Picture PositionPicker::picture() const
{
    return PositionGrid::picture(width(), scene_.frame);
}

AccessibleItem PositionPicker::item(int index) const
{
    const CaptionPosition position = PositionGrid::at(index);
    AccessibleItem item;
    item.name = PositionGrid::spoken(position);
    if (const PositionScene::Other* other = scene_.otherAt(position))
        item.description = spokenOther(*other);
    constexpr QPointF half(14, 14);
    item.rect = QRectF(picture().spot(index) - half, QSizeF(28, 28)).toRect();
    item.isChosen = position == scene_.position;
    return item;
}

int PositionPicker::focusedItem() const
{
    return PositionGrid::indexOf(scene_.position);
}

void PositionPicker::pressItem(int index)
{
    choose(PositionGrid::at(index));
}

void PositionPicker::choose(CaptionPosition position)
{
    if (position == scene_.position)
        return;
    scene_.position = position;
    notifyItemsChanged(this);
    notifyItemFocused(this);
    update();
    emit chosen(position);
}

void PositionPicker::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Left:
        return choose(PositionGrid::moved(scene_.position, -1, 0));
    case Qt::Key_Right:
        return choose(PositionGrid::moved(scene_.position, 1, 0));
    case Qt::Key_Up:
        return choose(PositionGrid::moved(scene_.position, 0, -1));
    case Qt::Key_Down:
        return choose(PositionGrid::moved(scene_.position, 0, 1));
    case Qt::Key_Home:
        return choose(PositionGrid::at(0));
    case Qt::Key_End:
        return choose(PositionGrid::at(PositionGrid::spots - 1));
    default:
        QWidget::keyPressEvent(event);
    }
}

void PositionPicker::mousePressEvent(QMouseEvent* event)
{
    const int index = PositionGrid::spotAt(picture(), event->position());
    if (event->button() == Qt::LeftButton && index >= 0)
        choose(PositionGrid::at(index));
}

void PositionPicker::mouseMoveEvent(QMouseEvent* event)
{
    setHovered(PositionGrid::spotAt(picture(), event->position()));
}

void PositionPicker::leaveEvent(QEvent*)
{
    setHovered(-1);
}

void PositionPicker::focusInEvent(QFocusEvent* event)
{
    QWidget::focusInEvent(event);
    update();
}

void PositionPicker::focusOutEvent(QFocusEvent* event)
{
    QWidget::focusOutEvent(event);
    update();
}

void PositionPicker::setHovered(int index)
{
    if (index == hovered_)
        return;
    hovered_ = index;
    setToolTip(index < 0 ? QString()
                         : PositionGrid::title(PositionGrid::at(index)) + QStringLiteral(" · ") +
                               PositionGrid::place(PositionGrid::at(index)));
    update();
}

void PositionPicker::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const PositionGrid::Picture shown = picture();
    paintPicture(painter, shown);
    for (int i = 0; i < PositionGrid::spots; ++i)
        paintSpot(painter, shown.spot(i), i);
}

void PositionPicker::paintPicture(QPainter& painter, const PositionGrid::Picture& picture) const
{
    const Border& border = scene_.border;
    if (border.blurredBackground && !photo_.isNull()) {
        painter.drawImage(picture.canvas, blurredStandIn(photo_, *border.blurredBackground, picture.canvas.size()));
    } else {
        const bool isColor = !border.blurredBackground;
        if (isColor && border.color.alpha < 1)
            paintCheckerBoard(painter, picture.canvas);
        painter.fillRect(picture.canvas, isColor ? ColorText::toQColor(border.color) : absentBackground);
    }
    if (photo_.isNull())
        painter.fillRect(picture.photo, absentPhoto);
    else
        painter.drawImage(picture.photo, photo_, croppedTo(photo_.size(), picture.photo.size()));

    const double line = 1 / devicePixelRatioF();
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(themeColor(&ThemeColors::border), line));
    painter.drawRect(picture.canvas.adjusted(line / 2, line / 2, -line / 2, -line / 2));
}

void PositionPicker::paintSpot(QPainter& painter, QPointF center, int index) const
{
    const CaptionPosition position = PositionGrid::at(index);
    const QColor accent = spotColors().accent;
    const bool isChosen = position == scene_.position;
    const bool hasKeys = isChosen && hasFocus() && FocusRing::isKeyboardFocus();
    if (index == hovered_ || hasKeys)
        paintDisc(painter, center, isChosen ? chosenSize + 8 : haloSize, QColor(255, 255, 255, 150), {}, 0);

    if (isChosen && scene_.number > 0) {
        paintDisc(painter, center, numberSize + 4, Qt::white, accent, hasKeys ? 3 : 2);
        paintDisc(painter, center, numberSize - 2, accent, {}, 0);
        paintNumber(painter, center, scene_.number, Qt::white);
        return;
    }
    if (isChosen) {
        paintDisc(painter, center, chosenSize + 2, Qt::white, {}, 0);
        paintDisc(painter, center, chosenSize, Qt::white, accent, hasKeys ? 3 : 2);
        paintDisc(painter, center, spotSize, accent, {}, 0);
        return;
    }
    if (const PositionScene::Other* other = scene_.otherAt(position)) {
        paintDisc(painter, center, haloSize + 2, Qt::white, index == hovered_ ? accent : spotEdge,
                  index == hovered_ ? 2 : 1);
        if (other->number > 0)
            return paintNumber(painter, center, other->number, spotEdge);
        const IconName sign = other->element == PlacedElement::logo ? IconName::logo : IconName::textChip;
        paintIcon(painter, sign, QRectF(center - QPointF(7, 7), QSizeF(14, 14)), 14, spotEdge);
        return;
    }
    if (index == hovered_)
        paintDisc(painter, center, hoveredSize, Qt::white, accent, 2);
    else
        paintDisc(painter, center, spotSize, Qt::white, spotEdge, 1.25);
}

} // namespace ferrow
