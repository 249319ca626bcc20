// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/CaptionBuilder/ChipMotion.h"

#include "Widgets/Theme.h"

#include <QEasingCurve>

namespace ferrow {

namespace {

QRectF between(const QRectF& start, const QRectF& end, double progress)
{
    const auto mix = [progress](double from, double to) { return from + (to - from) * progress; };
    return {mix(start.x(), end.x()), mix(start.y(), end.y()), mix(start.width(), end.width()),
            mix(start.height(), end.height())};
}

} // namespace

ChipMotion::ChipMotion(QObject* parent) : QObject(parent)
{
    animation_.setStartValue(0.0);
    animation_.setEndValue(1.0);
    animation_.setEasingCurve(QEasingCurve::OutCubic);
    connect(&animation_, &QVariantAnimation::valueChanged, this, [this](const QVariant& value) {
        progress_ = value.toDouble();
        emit moved();
    });
}

void ChipMotion::setTargets(const QHash<QUuid, QRectF>& targets, Way way)
{
    if (targets == targets_)
        return;
    QHash<QUuid, QRectF> starts;
    for (auto target = targets.begin(); target != targets.end(); ++target)
        starts.insert(target.key(), targets_.contains(target.key()) ? rect(target.key()) : target.value());
    animation_.stop();
    starts_ = starts;
    targets_ = targets;
    const int duration = way == Way::glide ? Theme::current().duration(Motion::unfold) : 0;
    progress_ = duration > 0 ? 0 : 1;
    if (duration > 0) {
        animation_.setDuration(duration);
        animation_.start();
    }
    emit moved();
}

void ChipMotion::place(const QUuid& chip, const QRectF& rect)
{
    starts_.insert(chip, rect);
    targets_.insert(chip, rect);
}

QRectF ChipMotion::rect(const QUuid& chip) const
{
    const QRectF target = targets_.value(chip);
    return progress_ >= 1 ? target : between(starts_.value(chip, target), target, progress_);
}

} // namespace ferrow
