// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/Overlay.h"

#include "Widgets/AccessibleEvents.h"
#include "Widgets/Theme.h"

#include <QApplication>
#include <QGraphicsOpacityEffect>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QVariantAnimation>

#include <algorithm>
#include <vector>

namespace ferrow {

namespace {

/// Lowest first, of all windows.
std::vector<Overlay*>& openOverlays()
{
    static std::vector<Overlay*> overlays;
    return overlays;
}

bool canHaveFocus(const QWidget* widget)
{
    return widget && widget->isEnabled() && widget->isVisible();
}

bool takesTab(const QWidget* widget)
{
    return (widget->focusPolicy() & Qt::TabFocus) && !widget->focusProxy() && canHaveFocus(widget);
}

bool isKey(const QEvent& event)
{
    switch (event.type()) {
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::InputMethod:
        return true;
    default:
        return false;
    }
}

} // namespace

Overlay::Overlay(QWidget* window, const QString& name)
    : QWidget(window->window()), card_(new QWidget(this)), animation_(new QVariantAnimation(this))
{
    setAccessibleName(name);
    card_->setProperty("ferrowCard", true);
    hide();
    connect(animation_, &QVariantAnimation::valueChanged, this, [this](const QVariant& value) {
        opacity_ = value.toDouble();
        if (auto* effect = qobject_cast<QGraphicsOpacityEffect*>(card_->graphicsEffect()))
            effect->setOpacity(opacity_);
        update();
    });
    connect(animation_, &QVariantAnimation::finished, this, &Overlay::finishFade);
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) { keepFocusInside(now); });
    connect(&Theme::current(), &Theme::changed, this, [this] { relayout(); });
    parentWidget()->installEventFilter(this);
}

Overlay::~Overlay()
{
    // The content loses the focus while it is deleted, and by then this is no overlay any more.
    qApp->disconnect(this);
    std::erase(openOverlays(), this);
}

Overlay* Overlay::topmost(const QWidget* window)
{
    std::vector<Overlay*>& overlays = openOverlays();
    const auto found = std::find_if(overlays.rbegin(), overlays.rend(), [window](const Overlay* overlay) {
        return overlay->parentWidget() == window->window();
    });
    return found == overlays.rend() ? nullptr : *found;
}

void Overlay::open(QWidget* firstFocus)
{
    if (open_)
        return;
    // Under a sheet nothing lies that a press outside would close.
    for (Overlay* below = topmost(this);
         shortcuts_ == WindowShortcuts::rest && below && below->outside_ == OutsidePress::closes; below = topmost(this))
        below->dismiss();
    if (!returnFocus_)
        returnFocus_ = window()->focusWidget();
    open_ = true;
    openOverlays().push_back(this);
    // The window's shortcuts are stopped where keys arrive.
    qApp->installEventFilter(this);
    setAttribute(Qt::WA_TransparentForMouseEvents, false);
    aboutToOpen();
    setGeometry(parentWidget()->rect());
    relayout();
    show();
    raise();
    takeFirstFocus(firstFocus);
    fade(1, Theme::current().duration(Motion::popIn));
    QAccessibleEvent event(this, QAccessible::DialogStart);
    sendAccessible(event);
}

void Overlay::dismiss()
{
    if (!open_)
        return;
    // A field that is being typed in commits now, while its owner still listens.
    if (QWidget* focused = window()->focusWidget(); focused && isAncestorOf(focused))
        focused->clearFocus();
    open_ = false;
    std::erase(openOverlays(), this);
    qApp->removeEventFilter(this);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    aboutToClose();
    giveFocusBack();
    QAccessibleEvent event(this, QAccessible::DialogEnd);
    sendAccessible(event);
    fade(0, isVisible() ? Theme::current().duration(Motion::popOut) : 0);
    emit closed();
}

void Overlay::fade(double goal, int duration)
{
    animation_->stop();
    if (duration == 0) {
        opacity_ = goal;
        finishFade();
        return;
    }
    auto* effect = new QGraphicsOpacityEffect(card_);
    effect->setOpacity(opacity_);
    card_->setGraphicsEffect(effect);
    animation_->setDuration(duration);
    animation_->setEasingCurve(goal > 0 ? QEasingCurve::OutCubic : QEasingCurve::Linear);
    animation_->setStartValue(opacity_);
    animation_->setEndValue(goal);
    animation_->start();
}

void Overlay::finishFade()
{
    card_->setGraphicsEffect(nullptr);
    update();
    if (open_)
        return;
    hide();
    if (deletedAfterClose_)
        deleteLater();
}

void Overlay::takeFirstFocus(QWidget* firstFocus)
{
    QWidget* target = canHaveFocus(firstFocus) ? firstFocus : nextFocus(this, true);
    lastInside_ = nullptr;
    (target ? target : this)->setFocus(Qt::OtherFocusReason);
}

void Overlay::giveFocusBack()
{
    QWidget* target = returnFocus_;
    returnFocus_ = nullptr;
    if (canHaveFocus(target)) {
        target->setFocus(Qt::OtherFocusReason);
        return;
    }
    if (Overlay* below = topmost(this)) {
        below->takeFirstFocus(nullptr);
        return;
    }
    // What had it has gone with a part of the window: whatever comes next beside that.
    while (target && !target->isVisible())
        target = target->parentWidget();
    if (QWidget* next = nextOutside(target ? target : this))
        next->setFocus(Qt::OtherFocusReason);
}

QWidget* Overlay::nextOutside(QWidget* from) const
{
    QWidget* widget = from->nextInFocusChain();
    while (widget != from && (!takesTab(widget) || isAncestorOf(widget) || widget->window() != window()))
        widget = widget->nextInFocusChain();
    return widget == from ? nullptr : widget;
}

void Overlay::keepFocusInside(QWidget* now)
{
    if (!open_ || topmost(this) != this)
        return;
    if (now && isAncestorOf(now)) {
        lastInside_ = now;
        return;
    }
    const bool isElsewhere = now ? now != this && now->window() == window() : window()->isActiveWindow();
    if (!isElsewhere || QApplication::activePopupWidget())
        return;
    const bool canReturn = lastInside_ != now && canHaveFocus(lastInside_);
    (canReturn && now ? lastInside_.data() : this)->setFocus(Qt::OtherFocusReason);
}

QWidget* Overlay::nextFocus(QWidget* from, bool forward) const
{
    QWidget* widget = from;
    do {
        widget = forward ? widget->nextInFocusChain() : widget->previousInFocusChain();
        if (widget != this && isAncestorOf(widget) && takesTab(widget))
            return widget;
    } while (widget != from);
    return nullptr;
}

bool Overlay::focusNextPrevChild(bool next)
{
    QWidget* from = window()->focusWidget();
    QWidget* target = nextFocus(from && isAncestorOf(from) ? from : this, next);
    // What is disabled or goes while it has the focus asks for the next one as well.
    (target ? target : this)->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    return true;
}

void Overlay::relayout()
{
    if (open_) {
        card_->setGeometry(cardRect());
        update();
    }
}

bool Overlay::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == parentWidget() && event->type() == QEvent::Resize) {
        setGeometry(parentWidget()->rect());
        // The opener has its new place only after the window's layout.
        QMetaObject::invokeMethod(
            this, [this] { relayout(); }, Qt::QueuedConnection);
    }
    if (isKey(*event) && isForWhatIsBehind(watched)) {
        if (event->type() == QEvent::KeyPress) {
            takeFirstFocus(lastInside_);
            keyPressEvent(static_cast<QKeyEvent*>(event));
        }
        event->accept();
        return true;
    }
    if (event->type() == QEvent::ShortcutOverride && shortcuts_ == WindowShortcuts::rest && topmost(this) == this) {
        const auto* widget = qobject_cast<QWidget*>(watched);
        if (widget && widget->window() == window()) {
            event->accept();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

/// Whoever the focus was left with: while this is open its keys are for nobody out there.
bool Overlay::isForWhatIsBehind(const QObject* receiver) const
{
    const auto* widget = qobject_cast<const QWidget*>(receiver);
    return widget && widget->window() == window() && widget != this && !isAncestorOf(widget) && topmost(this) == this;
}

bool Overlay::event(QEvent* event)
{
    if (event->type() == QEvent::LayoutRequest)
        relayout();
    return QWidget::event(event);
}

void Overlay::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setOpacity(opacity_);
    paintGround(painter);
}

void Overlay::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Escape:
        dismiss();
        break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        handleEnter();
        break;
    default:
        break;
    }
    // What nobody used in here is not for the window behind.
    event->accept();
}

void Overlay::mousePressEvent(QMouseEvent* event)
{
    event->accept();
    if (outside_ == OutsidePress::closes && !card_->geometry().contains(event->position().toPoint()))
        dismiss();
}

void Overlay::wheelEvent(QWheelEvent* event)
{
    event->accept();
}

} // namespace ferrow
