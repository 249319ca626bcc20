// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/FillFade.h"

#include "Widgets/Theme.h"

#include <QElapsedTimer>
#include <QTimer>
#include <QWidget>

#include <algorithm>

namespace ferrow::FillFade {

namespace {

constexpr int frame = 16; // milliseconds

QColor between(const QColor& from, const QColor& to, double share)
{
    const auto mix = [share](float a, float b) { return a + (b - a) * float(share); };
    return QColor::fromRgbF(mix(from.redF(), to.redF()), mix(from.greenF(), to.greenF()), mix(from.blueF(), to.blueF()),
                            mix(from.alphaF(), to.alphaF()));
}

/// A child of its widget, so that it goes with it.
class Fade : public QObject {
public:
    Fade(QWidget* widget, const QColor& fill) : QObject(widget), from_(fill), to_(fill) {}

    QColor towards(const QColor& target, int duration)
    {
        if (target != to_) {
            from_ = shown(duration);
            to_ = target;
            clock_.start();
        }
        const QColor now = shown(duration);
        if (now != to_)
            QTimer::singleShot(frame, this, [this] { static_cast<QWidget*>(parent())->update(); });
        return now;
    }

private:
    [[nodiscard]] QColor shown(int duration) const
    {
        if (!clock_.isValid() || duration <= 0)
            return to_;
        const double share = std::min(1.0, double(clock_.elapsed()) / duration);
        return share < 1 ? between(from_, to_, share) : to_;
    }

    QColor from_;
    QColor to_;
    QElapsedTimer clock_;
};

Fade* fadeOf(const QWidget* widget)
{
    for (QObject* child : widget->children())
        if (auto* fade = dynamic_cast<Fade*>(child))
            return fade;
    return nullptr;
}

} // namespace

QColor step(const QWidget* widget, const QColor& target)
{
    if (!widget)
        return target;
    if (Fade* fade = fadeOf(widget))
        return fade->towards(target, Theme::current().duration(Motion::hover));
    // The style is given its widgets to look at only; the fade is no part of what they are.
    new Fade(const_cast<QWidget*>(widget), target);
    return target;
}

} // namespace ferrow::FillFade
