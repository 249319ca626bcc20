// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Widgets/CommitField.h"

#include <limits>
#include <optional>

namespace ferrow {

/// How a number is shown and read. Display value = value x factor, so a share of 0.08 shows as "8.0 %" with factor 100.
struct NumberFormat {
    int decimals = 0;
    double factor = 1;
    QString unit;
    double least = -std::numeric_limits<double>::max(); ///< Typed values outside these limits are refused.
    double greatest = std::numeric_limits<double>::max();
    bool dropsZeros = false; ///< Decimals only as far as there are some: "2.35", and "7" for 7.00.

    /// In the user's digits, without grouping and without the unit. Negative numbers have a minus sign, not a hyphen.
    [[nodiscard]] QString text(double value) const;
    /// The display value, rounded as `text` shows it.
    [[nodiscard]] double shown(double value) const;
    /// Nothing for what is no number or outside the limits. Takes the user's decimal separator and the point; a unit
    /// that was typed along is passed over.
    [[nodiscard]] std::optional<double> value(const QString& text) const;

    bool operator==(const NumberFormat&) const = default;
};

/// A number that is typed: Enter and leaving commit, Esc restores, Up and Down add a step, with Shift ten; the wheel
/// does so only while the field has the focus. A value that is shown rounded keeps its digits until it is edited.
class NumberField : public CommitField {
    Q_OBJECT

public:
    enum class Steps {
        areTaken, ///< A step changes the value, within the format's limits.
        areTold   ///< A step changes nothing here: whoever listens to `stepped` (SliderField) sets the value.
    };

    explicit NumberField(const QString& name, QWidget* parent = nullptr);

    [[nodiscard]] const NumberFormat& format() const { return format_; }
    void setFormat(const NumberFormat& format);
    /// In display units: 1 is one pixel, or one percent with factor 100.
    void setStep(double step) { step_ = step; }
    [[nodiscard]] double step() const { return step_; }
    void setSteps(Steps steps) { steps_ = steps; }

    [[nodiscard]] double value() const { return value_; }
    /// Does not emit `valueEdited`. A text that is being typed stays until it is committed.
    void setValue(double value);
    /// By assistive technology: as if it had been typed.
    void enter(double value) { take(format_.text(value)); }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    /// The user committed another value.
    void valueEdited(double value);
    /// The user asked for a step by key or wheel, in value units.
    void stepped(double delta);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void take(const QString& text);
    void stepBy(double steps);
    void updateMargins();

    NumberFormat format_;
    double value_ = 0;
    double step_ = 1;
    Steps steps_ = Steps::areTaken;
    int wheelRest_ = 0;
};

/// Whole notches in a wheel event, counting what small movements before it left over in `rest` (eighths of a degree).
/// Up is positive; with Alt or a sideways wheel too.
[[nodiscard]] int wheelNotches(const QWheelEvent& event, int& rest);

} // namespace ferrow
