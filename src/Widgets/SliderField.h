// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Widgets/NumberField.h"

#include <QTimer>
#include <QWidget>

namespace ferrow {

class ValueSlider;

/// Where a step of `delta` leads on a slider whose sensible range is least…greatest: never out of the range, and from
/// outside of it only nearer.
[[nodiscard]] double steppedWithin(double value, double delta, double least, double greatest);

/// A slider and a number field for one value. The slider covers the sensible range; the field takes anything within the
/// format's limits, and a value outside the sensible range stays as it is until the user changes it.
///
/// Up and Down (on the slider Left and Right too) add a step, with Shift ten; Home and End go to the ends of the
/// sensible range; the wheel acts only while slider or field has the focus. On the slider a step never leaves the
/// sensible range.
///
/// Edits come in gestures: one from press to release of the mouse; one for a run of steps by keys or wheel, which ends
/// 500 ms after the last of them or when the focus leaves. A typed value is a gesture of its own. Every `valueEdited`
/// lies between `gestureStarted` and `gestureEnded`; a press that changes nothing has no gesture.
class SliderField : public QWidget {
    Q_OBJECT

public:
    /// `name` is what assistive technology calls it, unique in its pane: "Caption size". The field is called "… value".
    explicit SliderField(const QString& name, QWidget* parent = nullptr);

    /// The sensible range, in value units.
    void setRange(double least, double greatest);
    void setFormat(const NumberFormat& format);
    /// In display units; 1 from the start.
    void setStep(double step);

    /// A value that others are more or less than, such as the middle: the slider is filled from its tick on, a drag
    /// catches on it within `catches`, and a double click goes there.
    void setNeutral(double value, double catches);

    [[nodiscard]] double value() const { return value_; }
    /// Emits nothing. During a drag the thumb stays with the pointer.
    void setValue(double value);

    [[nodiscard]] NumberField* field() const { return field_; }
    [[nodiscard]] QWidget* slider() const;

signals:
    void gestureStarted();
    void valueEdited(double value);
    void gestureEnded();
    /// As NumberField's.
    void errorChanged(const QString& message);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void connectParts();
    void edit(double value);
    void editAlone(double value);
    void editInRun(double value);
    void endGesture();
    void showValue();
    [[nodiscard]] double rounded(double value) const;

    ValueSlider* slider_ = nullptr;
    NumberField* field_ = nullptr;
    QTimer burst_;
    double least_ = 0;
    double greatest_ = 100;
    double value_ = 0;
    double step_ = 1;
    bool inGesture_ = false;
};

} // namespace ferrow
