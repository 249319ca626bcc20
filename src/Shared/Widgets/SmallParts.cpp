// SPDX-License-Identifier: GPL-3.0-or-later
#include "Shared/Widgets/SmallParts.h"

#include "Shared/Widgets/FerrowStyle.h"
#include "Shared/Widgets/StyleDrawing.h"

#include <QEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QScrollBar>
#include <QStyleOptionButton>
#include <QVariantAnimation>

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
    const double thickness = 1 / devicePixelRatioF();
    const QRectF line =
        orientation_ == Qt::Horizontal ? QRectF(0, 0, width(), thickness) : QRectF(0, 0, thickness, height());
    painter.fillRect(line, themeColor(&ThemeColors::line));
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

BackdropDot::BackdropDot(const QColor& color, const QString& name, QWidget* parent)
    : QRadioButton(parent), color_(color)
{
    setAccessibleName(name);
    setToolTip(name);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QSize BackdropDot::sizeHint() const
{
    return QSize(Measure::hitArea, Measure::hitArea);
}

QRectF BackdropDot::focusRect() const
{
    // Outside the mark of the chosen one.
    const double side = isChecked() ? dot + 8 : dot;
    return QRectF((width() - side) / 2, (height() - side) / 2, side, side);
}

double BackdropDot::focusRadius() const
{
    return focusRect().width() / 2;
}

void BackdropDot::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QRectF circle((width() - dot) / 2.0, (height() - dot) / 2.0, dot, dot);
    painter.setOpacity(isEnabled() ? 1 : disabledOpacity);
    const QColor edge = themeColor(underMouse() ? &ThemeColors::text : &ThemeColors::border);
    StyleDrawing::paintBox(painter, circle, dot / 2.0, color_, edge);
    if (isChecked()) {
        StyleDrawing::paintBox(painter, circle.adjusted(-4, -4, 4, 4), dot, Qt::transparent,
                               themeColor(&ThemeColors::accent), 2);
    }
}

bool BackdropDot::hitButton(const QPoint& point) const
{
    return rect().contains(point);
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

ScrollPane::ScrollPane(QWidget* parent) : QScrollArea(parent), bar_(new QScrollBar(Qt::Vertical, this))
{
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setFocusPolicy(Qt::NoFocus);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    viewport()->setAutoFillBackground(false);
    QScrollBar* inner = verticalScrollBar();
    connect(inner, &QScrollBar::rangeChanged, this, &ScrollPane::placeBar);
    connect(inner, &QScrollBar::valueChanged, bar_, &QScrollBar::setValue);
    connect(bar_, &QScrollBar::valueChanged, inner, &QScrollBar::setValue);
    bar_->setFocusPolicy(Qt::NoFocus);
    bar_->setAccessibleName(QStringLiteral("Scroll"));
}

void ScrollPane::setPage(QWidget* page)
{
    setWidget(page);
    // QScrollArea fills its page; what shines through is the caller's.
    page->setAutoFillBackground(false);
    page->installEventFilter(this);
}

void ScrollPane::resizeEvent(QResizeEvent* event)
{
    QScrollArea::resizeEvent(event);
    placeBar();
}

bool ScrollPane::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == widget() && event->type() == QEvent::LayoutRequest) {
        updateGeometry();
    }
    return QScrollArea::eventFilter(watched, event);
}

void ScrollPane::placeBar()
{
    const QScrollBar* inner = verticalScrollBar();
    bar_->setRange(inner->minimum(), inner->maximum());
    bar_->setPageStep(inner->pageStep());
    bar_->setSingleStep(inner->singleStep());
    bar_->setValue(inner->value());
    const int width = bar_->sizeHint().width();
    const int left = isRightToLeft() ? 0 : this->width() - width;
    bar_->setGeometry(left, 0, width, height());
    bar_->setVisible(inner->maximum() > inner->minimum());
    bar_->raise();
}

} // namespace ferrow
