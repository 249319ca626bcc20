// SPDX-License-Identifier: GPL-3.0-or-later
#include "Shared/Widgets/SmallParts.h"

#include "Shared/Widgets/FerrowStyle.h"
#include "Shared/Widgets/FocusRing.h"
#include "Shared/Widgets/InputRules.h"
#include "Shared/Widgets/StyleDrawing.h"

#include <QApplication>
#include <QEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QScrollBar>
#include <QStyleOption>
#include <QVariantAnimation>
#include <QWheelEvent>

#include <algorithm>

namespace ferrow {

HairLine::HairLine(Qt::Orientation orientation, QWidget* parent) : QWidget(parent), orientation_(orientation)
{
    const bool isLevel = orientation == Qt::Horizontal;
    setSizePolicy(isLevel ? QSizePolicy::Expanding : QSizePolicy::Fixed,
                  isLevel ? QSizePolicy::Fixed : QSizePolicy::Expanding);
}

QSize HairLine::sizeHint() const
{
    return QSize(1, 1);
}

void HairLine::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), themeColor(&ThemeColors::line));
}

IconLabel::IconLabel(IconName name, int size, ColorRole color, QWidget* parent)
    : QWidget(parent), name_(name), size_(size), color_(color)
{
    setFixedSize(size, size);
}

void IconLabel::setIcon(IconName name, ColorRole color)
{
    name_ = name;
    color_ = color;
    update();
}

void IconLabel::setIconSize(int size)
{
    size_ = size;
    setFixedSize(size, size);
}

void IconLabel::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    paintIcon(painter, name_, rect(), size_, themeColor(isEnabled() ? color_ : &ThemeColors::disabled));
}

namespace {

constexpr int dot = 14;

} // namespace

BackdropDots::BackdropDots(const QString& name, const QStringList& names, QWidget* parent)
    : ChoiceStrip(name, names, parent)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QSize BackdropDots::sizeHint() const
{
    return QSize(itemRect(itemCount() - 1).right() + 1, Measure::hitArea);
}

QRect BackdropDots::itemRect(int index) const
{
    return QRect(index * (Measure::hitArea + Space::rowGap), 0, Measure::hitArea, Measure::hitArea);
}

void BackdropDots::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setOpacity(isEnabled() ? 1 : disabledOpacity);
    for (int i = 0; i < itemCount(); ++i) {
        QRectF circle(0, 0, dot, dot);
        circle.moveCenter(QRectF(itemRect(i)).center());
        const QColor edge = themeColor(i == hovered() ? &ThemeColors::text : &ThemeColors::border);
        StyleDrawing::paintBox(painter, circle, dot / 2.0, Theme::backdrops().at(i), edge);
        if (i == currentIndex()) {
            StyleDrawing::paintBox(painter, circle.adjusted(-4, -4, 4, 4), dot, Qt::transparent,
                                   themeColor(&ThemeColors::accent), 2);
        }
    }
}

Checkbox16::Checkbox16(const QString& name, QWidget* parent) : QCheckBox(parent)
{
    setAccessibleName(name);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QSize Checkbox16::sizeHint() const
{
    return QSize(Measure::checkBox, Measure::hitArea);
}

bool Checkbox16::hitButton(const QPoint& point) const
{
    return rect().contains(point);
}

MenuButton::MenuButton(IconName iconName, const QString& text, QWidget* parent) : MenuButton(text, parent)
{
    setIcon(ferrow::icon(iconName));
}

MenuButton::MenuButton(const QString& text, QWidget* parent) : QPushButton(text, parent)
{
    setAccessibleName(text);
}

void MenuButton::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Down && menu()) {
        showMenu();
        return;
    }
    QPushButton::keyPressEvent(event);
}

ProgressLine::ProgressLine(const QString& name, QWidget* parent)
    : QProgressBar(parent), sweep_(new QVariantAnimation(this))
{
    setAccessibleName(name);
    setTextVisible(false);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    sweep_->setStartValue(0.0);
    sweep_->setEndValue(1.0);
    sweep_->setLoopCount(-1);
    connect(sweep_, &QVariantAnimation::valueChanged, this, [this] { update(); });
    connect(&Theme::current(), &Theme::changed, this, &ProgressLine::updateSweep);
}

QSize ProgressLine::sizeHint() const
{
    return QSize(160, Measure::progress);
}

QSize ProgressLine::minimumSizeHint() const
{
    return QSize(24, Measure::progress);
}

void ProgressLine::paintEvent(QPaintEvent* event)
{
    const bool isUnknown = minimum() == maximum();
    if (isUnknown != (sweep_->state() == QAbstractAnimation::Running)) {
        updateSweep();
    }
    if (!isUnknown) {
        QProgressBar::paintEvent(event);
        return;
    }
    QPainter painter(this);
    const QRectF bar(0, (height() - Measure::progress) / 2.0, width(), Measure::progress);
    StyleDrawing::paintBox(painter, bar, Measure::progress / 2.0, themeColor(&ThemeColors::pressed));
    // A third of the bar wanders through; standing still it fills the middle.
    const double part = bar.width() / 3;
    const bool isStill = Theme::current().reducedMotion();
    const double at = isStill ? part : sweep_->currentValue().toDouble() * (bar.width() + part) - part;
    const QRectF piece = QRectF(at, bar.top(), part, bar.height()).intersected(bar);
    StyleDrawing::paintBox(painter, piece, Measure::progress / 2.0, themeColor(&ThemeColors::accent));
}

void ProgressLine::updateSweep()
{
    const bool sweeps = isVisible() && minimum() == maximum() && !Theme::current().reducedMotion();
    sweep_->setDuration(Theme::current().duration(Motion::sweep));
    if (sweeps && sweep_->state() != QAbstractAnimation::Running) {
        sweep_->start();
    } else if (!sweeps) {
        sweep_->stop();
    }
}

void ProgressLine::showEvent(QShowEvent* event)
{
    QProgressBar::showEvent(event);
    updateSweep();
}

void ProgressLine::hideEvent(QHideEvent* event)
{
    QProgressBar::hideEvent(event);
    updateSweep();
}

void paintRow(QPainter& painter, const QRectF& row, const QStyleOption& option, bool isHovered)
{
    const bool isSelected = option.state & QStyle::State_Selected;
    if (isSelected || isHovered) {
        StyleDrawing::paintBox(painter, row, Radius::row,
                               themeColor(isSelected ? &ThemeColors::selection : &ThemeColors::fill));
    }
    if (option.state & QStyle::State_HasFocus && FocusRing::isKeyboardFocus()) {
        StyleDrawing::paintBox(painter, row, Radius::row, Qt::transparent, themeColor(&ThemeColors::accent),
                               Measure::focusWidth);
    }
}

namespace {

/// Shows what the area's own bar, which is hidden, says.
class OverlayBar : public QScrollBar {
public:
    explicit OverlayBar(QAbstractScrollArea* area)
        : QScrollBar(Qt::Vertical, area), area_(area), inner_(area->verticalScrollBar())
    {
        area->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        area->installEventFilter(this);
        setFocusPolicy(Qt::NoFocus);
        setAccessibleName(QStringLiteral("Scroll"));
        connect(inner_, &QScrollBar::rangeChanged, this, &OverlayBar::place);
        connect(inner_, &QScrollBar::valueChanged, this, &QScrollBar::setValue);
        connect(this, &QScrollBar::valueChanged, inner_, &QScrollBar::setValue);
        place();
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Resize || event->type() == QEvent::Show) {
            place();
        }
        return QScrollBar::eventFilter(watched, event);
    }

private:
    void place()
    {
        setRange(inner_->minimum(), inner_->maximum());
        setPageStep(inner_->pageStep());
        setSingleStep(inner_->singleStep());
        setValue(inner_->value());
        const int width = sizeHint().width();
        setGeometry(area_->width() - width, 0, width, area_->height());
        setVisible(inner_->maximum() > inner_->minimum());
        raise();
    }

    QAbstractScrollArea* area_;
    QScrollBar* inner_;
};

} // namespace

void overlayScrollBar(QAbstractScrollArea* area)
{
    new OverlayBar(area);
}

ScrollPane::ScrollPane(QWidget* parent) : QScrollArea(parent)
{
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setFocusPolicy(Qt::NoFocus);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    viewport()->setAutoFillBackground(false);
    overlayScrollBar(this);
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) { showFocused(now); });
}

ScrollPane::~ScrollPane()
{
    // The page loses the focus while it is deleted, and by then this is no pane any more.
    qApp->disconnect(this);
}

void ScrollPane::setPage(QWidget* page)
{
    setWidget(page);
    // QScrollArea fills its page; what shines through is the caller's.
    page->setAutoFillBackground(false);
    page->installEventFilter(this);
}

/// Also where the focus came from outside of the pane. What was clicked stays under the pointer.
void ScrollPane::showFocused(QWidget* focused)
{
    if (focused && widget() && widget()->isAncestorOf(focused) && FocusRing::isKeyboardFocus()) {
        ensureWidgetVisible(focused, 0, Space::sheet);
    }
}

void ScrollPane::wheelEvent(QWheelEvent* event)
{
    noteScrolling(*event);
    QScrollArea::wheelEvent(event);
}

bool ScrollPane::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == widget() && event->type() == QEvent::LayoutRequest) {
        updateGeometry();
    }
    return QScrollArea::eventFilter(watched, event);
}

} // namespace ferrow
