// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Features/CaptionBuilder/ChipRow.h"
#include "Session/CaptionEditing.h"

#include <QBasicTimer>
#include <QObject>
#include <QPointer>

#include <optional>

class QScrollBar;

namespace ferrow {

class FloatingChip;

/// A chip on its way by the pointer: one of the row, which the caption shows at each gap it comes to, or a new one, of
/// which nothing is seen in the caption before it is let go. Scrolls the well near its edges.
class ChipDrag : public QObject {
    Q_OBJECT

public:
    /// All of them must outlive it.
    ChipDrag(CaptionEditing& editing, ChipRow& row, QScrollBar& bar, QWidget& well);
    ~ChipDrag() override;

    [[nodiscard]] bool isActive() const { return carried_.has_value(); }
    /// Where the chip would go; absent outside the well, and beside its own place.
    [[nodiscard]] ChipRow::Gap gap() const { return carried_ ? carried_->gap : std::nullopt; }

    /// `press` is where the chip was taken, in the well; all other places are global.
    void begin(int index, const QPoint& press, const QPoint& pointer);
    /// Of a new chip; `label` stands on it meanwhile.
    void begin(CaptionChips::Kind kind, const QString& label, const QPoint& pointer);
    void moveTo(const QPoint& pointer);
    /// Lets go where the pointer is; outside the well it is the same as giving up.
    void drop();
    void giveUp();
    /// The caption has other chips now: leaves them as they are.
    void end();

signals:
    void gapChanged();
    void ended();
    void newChipDropped(ferrow::CaptionChips::Kind kind, int gap, const QPoint& pointer);

protected:
    void timerEvent(QTimerEvent* event) override;

private:
    struct Carried {
        CaptionChips::Kind kind = CaptionChips::Kind::text;
        std::optional<int> source; ///< Absent for a new chip.
        ChipRow::Gap gap;
        QPoint pointer;
    };

    void lift(const Carried& carried, const ChipLook& look, const QSize& size, const QPoint& grab);
    void setGap(const ChipRow::Gap& gap);
    void scroll();
    [[nodiscard]] bool isOverWell(const QPoint& place) const;

    CaptionEditing& editing_;
    ChipRow& row_;
    QScrollBar& bar_;
    QWidget& well_;
    std::optional<Carried> carried_;
    QPointer<FloatingChip> floating_;
    QBasicTimer scrollTimer_;
};

} // namespace ferrow
