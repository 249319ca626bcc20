// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/ProgressLine.h"

#include "Widgets/StyleDrawing.h"
#include "Widgets/Theme.h"

#include <QPainter>
#include <QVariantAnimation>

namespace ferrow {

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
    if (isUnknown != (sweep_->state() == QAbstractAnimation::Running))
        updateSweep();
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
    if (sweeps && sweep_->state() != QAbstractAnimation::Running)
        sweep_->start();
    else if (!sweeps)
        sweep_->stop();
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

} // namespace ferrow
