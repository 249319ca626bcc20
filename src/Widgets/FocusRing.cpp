// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/FocusRing.h"

#include "Widgets/StyleDrawing.h"
#include "Widgets/Theme.h"

#include <QAbstractScrollArea>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPainter>
#include <QRadioButton>
#include <QScrollArea>
#include <QStyleOptionButton>

#include <algorithm>
#include <utility>

namespace ferrow {

namespace {

constexpr const char* lookProperty = "ferrowFocusLook";
constexpr int margin = Measure::focusGap + Measure::focusWidth;

FocusRing* installed = nullptr;

class Ring : public QWidget {
public:
    explicit Ring(QWidget* host) : QWidget(host)
    {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        setFocusPolicy(Qt::NoFocus);
        setObjectName(QStringLiteral("focusRing"));
    }

    void surround(const QRectF& shape, double radius)
    {
        radius_ = radius + margin;
        shape_ = shape.adjusted(-margin, -margin, margin, margin);
        setGeometry(shape_.toAlignedRect());
        shape_.translate(-geometry().topLeft());
        update();
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        StyleDrawing::paintBox(painter, shape_, radius_, Qt::transparent, themeColor(&ThemeColors::accent),
                               Measure::focusWidth);
    }

private:
    QRectF shape_;
    double radius_ = 0;
};

bool drawsItsOwn(const QWidget* widget)
{
    if (!dynamic_cast<const FocusShape*>(widget) &&
        (qobject_cast<const QLineEdit*>(widget) || qobject_cast<const QComboBox*>(widget) ||
         qobject_cast<const QAbstractSpinBox*>(widget) || qobject_cast<const QAbstractScrollArea*>(widget)))
        return true;
    const QVariant look = widget->property(lookProperty);
    return look.isValid() && look.toInt() == int(FocusLook::own);
}

/// The box alone, not the words beside it.
QRectF indicatorRect(const QAbstractButton* button, QStyle::SubElement element)
{
    QStyleOptionButton option;
    option.initFrom(button);
    return button->style()->subElementRect(element, &option, button);
}

struct Shape {
    QRectF rect;
    double radius;
};

Shape shapeOf(const QWidget* widget)
{
    if (const auto* shape = dynamic_cast<const FocusShape*>(widget))
        return {shape->focusRect(), shape->focusRadius()};
    if (const auto* box = qobject_cast<const QCheckBox*>(widget))
        return {indicatorRect(box, QStyle::SE_CheckBoxIndicator), Radius::box};
    if (const auto* radio = qobject_cast<const QRadioButton*>(widget))
        return {indicatorRect(radio, QStyle::SE_RadioButtonIndicator), Measure::checkBox / 2.0};
    return {QRectF(widget->rect()), Radius::control};
}

/// What scrolls as one: the ring moves and is cut off with it.
bool isPage(const QWidget* widget)
{
    const QWidget* viewport = widget->parentWidget();
    const auto* area = viewport ? qobject_cast<QScrollArea*>(viewport->parentWidget()) : nullptr;
    return (area && area->widget() == widget) || widget->property("ferrowCard").toBool();
}

QWidget* hostOf(const QWidget* target)
{
    QWidget* host = target->parentWidget();
    while (host && !host->isWindow() && !isPage(host))
        host = host->parentWidget();
    return host;
}

bool showsFocus(int key)
{
    switch (key) {
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Alt:
    case Qt::Key_Meta:
    case Qt::Key_AltGr:
        return false;
    default:
        return true;
    }
}

} // namespace

void setFocusLook(QWidget* widget, FocusLook look)
{
    widget->setProperty(lookProperty, int(look));
}

FocusRing::FocusRing(QObject* parent) : QObject(parent)
{
    qApp->installEventFilter(this);
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) { follow(now); });
    connect(&Theme::current(), &Theme::changed, this, [this] { place(); });
}

void FocusRing::install()
{
    if (!installed) {
        installed = new FocusRing(qApp);
        connect(installed, &QObject::destroyed, [] { installed = nullptr; });
    }
}

void FocusRing::refresh(const QWidget* widget)
{
    if (installed && installed->target_ == widget)
        installed->place();
}

bool FocusRing::isKeyboardFocus()
{
    return installed && installed->byKeyboard_;
}

/// Sees every event of the program, so it asks for the type first.
bool FocusRing::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::FocusIn:
        noteFocus(static_cast<QFocusEvent*>(event)->reason());
        break;
    case QEvent::KeyPress:
    case QEvent::ShortcutOverride: // A key that a shortcut takes comes as nothing else.
        if (showsFocus(static_cast<QKeyEvent*>(event)->key())) {
            lastInputWasKey_ = true;
            setByKeyboard(true);
        }
        break;
    case QEvent::MouseButtonPress:
        lastInputWasKey_ = false;
        setByKeyboard(false);
        break;
    case QEvent::Move:
    case QEvent::Resize:
    case QEvent::Show:
    case QEvent::Hide:
    case QEvent::EnabledChange:
    case QEvent::ParentChange:
        if (std::find(chain_.begin(), chain_.end(), watched) != chain_.end()) {
            // After the event: geometry and visibility are not final before.
            QMetaObject::invokeMethod(
                this, [this] { place(); }, Qt::QueuedConnection);
        }
        break;
    default:
        break;
    }
    return false;
}

void FocusRing::noteFocus(Qt::FocusReason reason)
{
    switch (reason) {
    case Qt::TabFocusReason:
    case Qt::BacktabFocusReason:
    case Qt::ShortcutFocusReason:
        byKeyboard_ = true;
        break;
    case Qt::MouseFocusReason:
        byKeyboard_ = false;
        break;
    case Qt::OtherFocusReason:
        byKeyboard_ = lastInputWasKey_;
        break;
    default:
        break;
    }
}

void FocusRing::setByKeyboard(bool byKeyboard)
{
    if (std::exchange(byKeyboard_, byKeyboard) == byKeyboard)
        return;
    if (target_)
        target_->update();
    place();
}

void FocusRing::follow(QWidget* target)
{
    target_ = target;
    chain_.clear();
    QWidget* host = target ? hostOf(target) : nullptr;
    for (const QWidget* widget = target; widget && widget != host; widget = widget->parentWidget())
        chain_.push_back(widget);
    place();
}

void FocusRing::place()
{
    QWidget* host = target_ ? hostOf(target_) : nullptr;
    const bool isShown = host && byKeyboard_ && target_->isVisible() && target_->isEnabled() && !drawsItsOwn(target_);
    if (!isShown) {
        if (ring_)
            ring_->hide();
        return;
    }
    if (!ring_ || ring_->parentWidget() != host) {
        delete ring_;
        ring_ = new Ring(host);
    }
    const Shape shape = shapeOf(target_);
    static_cast<Ring*>(ring_.data())->surround(shape.rect.translated(target_->mapTo(host, QPoint())), shape.radius);
    ring_->raise();
    ring_->show();
}

} // namespace ferrow
