// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHash>
#include <QRectF>
#include <QUuid>
#include <QVariantAnimation>

namespace ferrow {

/// Lets chips glide from where they are seen to where they belong; at once where motion is reduced.
class ChipMotion : public QObject {
    Q_OBJECT

public:
    enum class Way { glide, atOnce };

    explicit ChipMotion(QObject* parent = nullptr);

    void setTargets(const QHash<QUuid, QRectF>& targets, Way way);
    /// Where the next glide of this chip begins: where it was let go.
    void place(const QUuid& chip, const QRectF& rect);
    /// Where the chip is seen now.
    [[nodiscard]] QRectF rect(const QUuid& chip) const;

signals:
    void moved();

private:
    QHash<QUuid, QRectF> starts_;
    QHash<QUuid, QRectF> targets_;
    QVariantAnimation animation_;
    double progress_ = 1;
};

} // namespace ferrow
