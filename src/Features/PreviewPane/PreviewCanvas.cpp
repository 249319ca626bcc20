// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/PreviewPane/PreviewCanvas.h"

#include "Widgets/FocusRing.h"
#include "Widgets/Theme.h"

#include <QAccessibleWidget>
#include <QKeyEvent>
#include <QPainter>
#include <QTimer>

#include <cmath>

namespace ferrow {

namespace {

/// How far an arrow key moves the picture, in logical pixels.
constexpr double keyStep = 64;
/// A notch of the wheel, in eighths of a degree, makes the picture larger by this.
constexpr double notch = 120;
constexpr double zoomPerNotch = 1.25;

QAccessibleInterface* accessibleCanvas(const QString&, QObject* object)
{
    auto* canvas = qobject_cast<PreviewCanvas*>(object);
    return canvas ? new QAccessibleWidget(canvas, QAccessible::Graphic) : nullptr;
}

/// Widgets may lie between device pixels at fractional scales: the painter is moved to whole ones.
void useDevicePixels(QPainter& painter, double scale)
{
    const QPointF corner = painter.deviceTransform().map(QPointF());
    const QPointF whole(std::round(corner.x()), std::round(corner.y()));
    painter.scale(1 / scale, 1 / scale);
    painter.translate(whole - corner);
}

} // namespace

PreviewCanvas::PreviewCanvas(QWidget* parent) : QWidget(parent)
{
    static const bool isRegistered = (QAccessible::installFactory(accessibleCanvas), true);
    Q_UNUSED(isRegistered)
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFocusPolicy(Qt::StrongFocus);
    setFocusLook(this, FocusLook::own);
    connect(&picture_, &PreviewPicture::changed, this, qOverload<>(&QWidget::update));
    connect(&picture_, &PreviewPicture::outputSizeChanged, this,
            [this] { change([this] { viewport_.setPicture(picture_.outputSize()); }); });
}

template <class Change>
void PreviewCanvas::change(Change apply)
{
    const double zoom = viewport_.zoom();
    const bool isFit = viewport_.isFit();
    apply();
    picture_.setView(viewport_);
    updateCursor();
    update();
    if (viewport_.zoom() != zoom || viewport_.isFit() != isFit)
        emit zoomChanged();
}

void PreviewCanvas::setBackdrop(const QColor& backdrop)
{
    backdrop_ = backdrop;
    update();
}

void PreviewCanvas::fit()
{
    change([this] { viewport_.fit(); });
}

void PreviewCanvas::setZoom(double zoom)
{
    change([this, zoom] { viewport_.setZoom(zoom, viewport_.center()); });
}

void PreviewCanvas::zoomTo(double zoom, QPointF position)
{
    change([this, zoom, position] { viewport_.setZoom(zoom, position * scale_); });
}

void PreviewCanvas::setComparing(bool isComparing)
{
    picture_.setComparing(isComparing);
}

void PreviewCanvas::followSize()
{
    scale_ = devicePixelRatioF();
    change([this] {
        viewport_.setView(QSizeF(std::round(width() * scale_), std::round(height() * scale_)),
                          std::round(Space::preview * scale_));
    });
}

void PreviewCanvas::resizeEvent(QResizeEvent*)
{
    followSize();
}

void PreviewCanvas::paintEvent(QPaintEvent*)
{
    // The window may have moved to a screen of another scale; there is no event for it.
    if (devicePixelRatioF() != scale_)
        QTimer::singleShot(0, this, &PreviewCanvas::followSize);

    QPainter painter(this);
    painter.fillRect(rect(), backdrop_);
    painter.save();
    useDevicePixels(painter, scale_);
    picture_.paint(painter, backdrop_);
    painter.restore();
    if (!hasFocus() || !FocusRing::isKeyboardFocus())
        return;
    const double half = Measure::focusWidth / 2.0;
    painter.setPen(
        QPen(themeColor(&ThemeColors::accent), Measure::focusWidth, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    painter.drawRect(QRectF(rect()).adjusted(half, half, -half, -half));
}

bool PreviewCanvas::moveByKey(int key)
{
    const bool pans = picture_.isShown() && viewport_.canPan();
    const double step = keyStep * scale_;
    const auto pan = [this](QPointF delta) { change([this, delta] { viewport_.panBy(delta); }); };
    switch (key) {
    case Qt::Key_Left:
        pans ? pan({step, 0}) : emit stepRequested(-1);
        return true;
    case Qt::Key_Right:
        pans ? pan({-step, 0}) : emit stepRequested(1);
        return true;
    case Qt::Key_Up:
    case Qt::Key_Down:
        if (pans)
            pan({0, key == Qt::Key_Up ? step : -step});
        return pans;
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        emit stepRequested(key == Qt::Key_PageUp ? -1 : 1);
        return true;
    default:
        return false;
    }
}

void PreviewCanvas::keyPressEvent(QKeyEvent* event)
{
    // On most keyboards plus is above another sign.
    const bool isPlus = event->key() == Qt::Key_Plus;
    if ((event->modifiers() & ~(Qt::KeypadModifier | (isPlus ? Qt::ShiftModifier : Qt::NoModifier))) !=
        Qt::NoModifier) {
        event->ignore();
        return;
    }
    if (isPlus || event->key() == Qt::Key_Minus)
        return emit cullRequested(isPlus);
    // Other photos are within reach also where this one can't be shown.
    if (moveByKey(event->key()))
        return;
    if (event->key() == Qt::Key_Backslash && picture_.isShown()) {
        if (!event->isAutoRepeat())
            setComparing(true);
    } else if (event->key() == Qt::Key_Delete) {
        emit removeRequested();
    } else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter || event->key() == Qt::Key_Escape) {
        emit sheetRequested();
    } else {
        event->ignore();
    }
}

void PreviewCanvas::keyReleaseEvent(QKeyEvent* event)
{
    if (event->key() != Qt::Key_Backslash)
        event->ignore();
    else if (!event->isAutoRepeat())
        setComparing(false);
}

void PreviewCanvas::mousePressEvent(QMouseEvent* event)
{
    const bool drags = event->button() == Qt::LeftButton || event->button() == Qt::MiddleButton;
    if (!drags || !viewport_.canPan()) {
        event->ignore();
        return;
    }
    dragged_ = event->position();
    updateCursor();
}

void PreviewCanvas::mouseMoveEvent(QMouseEvent* event)
{
    if (!dragged_)
        return;
    const QPointF delta = (event->position() - *dragged_) * scale_;
    dragged_ = event->position();
    change([this, delta] { viewport_.panBy(delta); });
}

void PreviewCanvas::mouseReleaseEvent(QMouseEvent*)
{
    dragged_.reset();
    updateCursor();
}

void PreviewCanvas::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || !viewport_.hasPicture())
        return;
    if (viewport_.isFit())
        zoomTo(1, event->position());
    else
        fit();
}

void PreviewCanvas::wheelEvent(QWheelEvent* event)
{
    const QPointF turn = event->angleDelta();
    if (event->modifiers() & Qt::ControlModifier) {
        zoomTo(viewport_.zoom() * std::pow(zoomPerNotch, turn.y() / notch), event->position());
        return;
    }
    if (!viewport_.canPan()) {
        event->ignore();
        return;
    }
    const QPointF pixels = event->pixelDelta();
    QPointF delta = pixels.isNull() ? turn / notch * keyStep : pixels;
    if (event->modifiers() & Qt::ShiftModifier)
        delta = delta.transposed();
    change([this, delta] { viewport_.panBy(delta * scale_); });
}

void PreviewCanvas::focusInEvent(QFocusEvent* event)
{
    QWidget::focusInEvent(event);
    update();
}

void PreviewCanvas::focusOutEvent(QFocusEvent* event)
{
    QWidget::focusOutEvent(event);
    // The release of a key that is held goes to whoever has the focus by then.
    setComparing(false);
    update();
}

void PreviewCanvas::updateCursor()
{
    if (dragged_)
        setCursor(Qt::ClosedHandCursor);
    else if (viewport_.canPan())
        setCursor(Qt::OpenHandCursor);
    else
        unsetCursor();
}

} // namespace ferrow
