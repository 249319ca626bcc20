// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/InspectorRows.h"

#include "Widgets/FormRow.h"
#include "Widgets/SliderField.h"
#include "Widgets/Theme.h"
#include "Widgets/ToggleSwitch.h"

#include <QComboBox>
#include <QLabel>
#include <QVBoxLayout>
#include <QWidget>

#include <algorithm>

namespace ferrow {

namespace {

NumberFormat pixels(double greatest)
{
    NumberFormat format;
    format.unit = QStringLiteral("px");
    format.least = 0;
    format.greatest = greatest;
    return format;
}

NumberFormat percent(int decimals, double factor, double least, double greatest)
{
    NumberFormat format;
    format.unit = QStringLiteral("%");
    format.decimals = decimals;
    format.factor = factor;
    format.least = least;
    format.greatest = greatest;
    return format;
}

/// What most cameras give: 24 megapixels in 3:2.
constexpr PixelSize usualPhoto{6'000, 4'000};

} // namespace

namespace InspectorRanges {

ValueRange borderWidth(BorderUnit unit)
{
    if (unit == BorderUnit::pixels)
        return {0, 500, pixels(20'000), 1};
    return {0, 25, percent(1, 1, 0, 500), 0.1};
}

ValueRange lineThickness(BorderUnit unit)
{
    if (unit == BorderUnit::pixels)
        return {0, 50, pixels(5'000), 1};
    return {0, 2, percent(2, 1, 0, 100), 0.05};
}

ValueRange lineDistance(BorderUnit unit)
{
    if (unit == BorderUnit::pixels)
        return {0, 200, pixels(20'000), 1};
    return {0, 10, percent(1, 1, 0, 500), 0.1};
}

ValueRange cornerRadius(BorderUnit unit)
{
    if (unit == BorderUnit::pixels)
        return {0, 200, pixels(20'000), 1};
    // Half of the shorter side makes it round.
    return {0, 10, percent(1, 1, 0, 50), 0.1};
}

ValueRange strength()
{
    return {0, 100, percent(0, 1, 0, 100), 1};
}

ValueRange balance()
{
    return {-100, 100, percent(0, 1, -100, 100), 1};
}

NumberFormat ratioNumber()
{
    NumberFormat format;
    format.decimals = 2;
    format.least = 0.01;
    format.greatest = 10'000;
    format.dropsZeros = true;
    return format;
}

ValueRange captionSize(BorderUnit unit)
{
    if (unit == BorderUnit::percent)
        return {0.2, 10, percent(1, 1, 0.1, 100), 0.1};
    ValueRange range{8, 300, pixels(5'000), 1};
    range.format.least = 1;
    return range;
}

ValueRange letterSpacing()
{
    constexpr double most = Caption::mostLetterSpacing;
    return {-most, most, percent(0, 1, -most, most), 1};
}

ValueRange lineSpacing(BorderUnit unit)
{
    if (unit == BorderUnit::percent)
        return {0, 4, percent(1, 1, 0, 100), 0.1};
    return {0, 100, pixels(5'000), 1};
}

ValueRange inset(BorderUnit unit)
{
    if (unit == BorderUnit::percent)
        return {0, 15, percent(1, 1, 0, 100), 0.1};
    return {0, 400, pixels(20'000), 1};
}

ValueRange logoWidth()
{
    // The layout takes anything below 1 as 1 and above 100 as 100.
    return {1, 60, percent(1, 1, 1, 100), 1};
}

ValueRange opacity()
{
    return {0, 1, percent(0, 100, 0, 1), 1};
}

} // namespace InspectorRanges

PixelSize measuredSize(const ImportedPhoto* photo)
{
    return photo ? photo->pixelSize : usualPhoto;
}

void applyRange(SliderField* field, const ValueRange& range)
{
    field->setFormat(range.format);
    field->setRange(range.least, range.greatest);
    field->setStep(range.step);
}

void showLength(SliderField* field, const Length& length, ValueRange (*range)(BorderUnit))
{
    if (const ValueRange units = range(length.unit); field->field()->format() != units.format)
        applyRange(field, units);
    field->setValue(length.value);
}

FormRow* addRow(QVBoxLayout* rows, const QString& label, QWidget* control, const QString& tip)
{
    auto* row = new FormRow(label, control);
    row->setToolTip(tip);
    row->label()->setMinimumHeight(std::max(row->label()->minimumHeight(), control->sizeHint().height()));
    rows->addWidget(row);
    return row;
}

QComboBox* makeCombo(const QString& name, const QStringList& texts)
{
    auto* combo = new QComboBox;
    combo->setAccessibleName(name);
    combo->addItems(texts);
    combo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    combo->setMinimumContentsLength(6);
    return combo;
}

SliderField* addSliderRow(QVBoxLayout* rows, const QString& label, const QString& name, const ValueRange& range,
                          const QString& tip)
{
    auto* field = new SliderField(name);
    applyRange(field, range);
    addRow(rows, label, field, tip);
    return field;
}

ToggleSwitch* addSwitchRow(QVBoxLayout* rows, const QString& label, const QString& name)
{
    auto* toggle = new ToggleSwitch(name);
    toggle->setText(label);
    toggle->setTextColor(&ThemeColors::text2);
    toggle->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    toggle->setMinimumHeight(Theme::current().scaled(Measure::control));
    rows->addWidget(toggle);
    return toggle;
}

QVBoxLayout* addGroup(QVBoxLayout* rows)
{
    auto* group = new QWidget;
    auto* layout = new QVBoxLayout(group);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(Space::row);
    rows->addWidget(group);
    return layout;
}

} // namespace ferrow
