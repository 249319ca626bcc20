// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/InspectorRows.h"

#include "Widgets/FormRow.h"
#include "Widgets/SliderField.h"
#include "Widgets/Theme.h"

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

ValueRange captionSize()
{
    ValueRange range{8, 300, pixels(5'000), 1};
    range.format.least = 1;
    return range;
}

ValueRange lineSpacing()
{
    return {0, 100, pixels(5'000), 1};
}

ValueRange inset()
{
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

void convertBorderUnit(Border& border, BorderUnit unit, const std::optional<PixelSize>& size)
{
    border.convert(unit, size.value_or(usualPhoto));
}

void applyRange(SliderField* field, const ValueRange& range)
{
    field->setFormat(range.format);
    field->setRange(range.least, range.greatest);
    field->setStep(range.step);
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
