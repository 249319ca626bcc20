// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/RenderRecipe.h"
#include "Widgets/NumberField.h"

#include <QString>
#include <QStringList>

#include <optional>

class QComboBox;
class QVBoxLayout;
class QWidget;

namespace ferrow {

class FormRow;
class SliderField;

/// What a slider covers, what its field takes beyond that, and how the number is shown.
struct ValueRange {
    double least = 0;
    double greatest = 100;
    NumberFormat format;
    double step = 1; ///< In display units.
};

/// The sensible ranges of a recipe's values. Presets may hold others: those stay until they are edited.
namespace InspectorRanges {
[[nodiscard]] ValueRange borderWidth(BorderUnit unit);
[[nodiscard]] ValueRange captionSize();
[[nodiscard]] ValueRange lineSpacing();
[[nodiscard]] ValueRange inset();
[[nodiscard]] ValueRange logoWidth();
[[nodiscard]] ValueRange opacity();
} // namespace InspectorRanges

/// Switches the unit and keeps the thickness that a photo of `size` shows. Without a photo, that of a usual one: 120
/// pixels must not become 120 percent.
void convertBorderUnit(Border& border, BorderUnit unit, const std::optional<PixelSize>& size);

void applyRange(SliderField* field, const ValueRange& range);

/// A label of the form and its control.
FormRow* addRow(QVBoxLayout* rows, const QString& label, QWidget* control, const QString& tip = QString());

/// A list of choices that may be narrower than its longest text: the inspector has no room for it at its narrowest.
[[nodiscard]] QComboBox* makeCombo(const QString& name, const QStringList& texts);

/// A label of the form, a slider and its number. `name` is for assistive technology, `tip` may be empty.
SliderField* addSliderRow(QVBoxLayout* rows, const QString& label, const QString& name, const ValueRange& range,
                          const QString& tip = QString());

/// The raw values of an enumeration: what menus show.
template <typename Enum>
[[nodiscard]] QStringList choicesOf()
{
    QStringList texts;
    for (const Enum value : allCases<Enum>())
        texts.append(rawValue(value));
    return texts;
}

/// A column of rows, 12 apart and without margins, that can be disabled or hidden as one.
[[nodiscard]] QVBoxLayout* addGroup(QVBoxLayout* rows);

} // namespace ferrow
