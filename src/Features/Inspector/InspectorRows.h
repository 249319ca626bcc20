// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/ImportedPhoto.h"
#include "Models/RenderRecipe.h"
#include "Widgets/NumberField.h"

#include <QString>
#include <QStringList>

class QComboBox;
class QVBoxLayout;
class QWidget;

namespace ferrow {

class FormRow;
class SliderField;
class ToggleSwitch;

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
[[nodiscard]] ValueRange lineThickness(BorderUnit unit);
[[nodiscard]] ValueRange lineDistance(BorderUnit unit);
[[nodiscard]] ValueRange cornerRadius(BorderUnit unit);
/// Of blur and dim.
[[nodiscard]] ValueRange strength();
[[nodiscard]] ValueRange balance();
/// One number of a shape's two; there is no slider for them.
[[nodiscard]] NumberFormat ratioNumber();
[[nodiscard]] ValueRange captionSize(BorderUnit unit);
[[nodiscard]] ValueRange letterSpacing();
[[nodiscard]] ValueRange lineSpacing(BorderUnit unit);
[[nodiscard]] ValueRange inset(BorderUnit unit = BorderUnit::pixels);
[[nodiscard]] ValueRange logoWidth();
[[nodiscard]] ValueRange opacity();
} // namespace InspectorRanges

/// What lengths are converted by and little frames are drawn after: the photo's size, or without one that of a usual
/// one. 120 pixels must not become 120 percent.
[[nodiscard]] PixelSize measuredSize(const ImportedPhoto* photo);

void applyRange(SliderField* field, const ValueRange& range);

/// Shows a length in its own unit. `range` is what there is of the kind in a unit.
void showLength(SliderField* field, const Length& length, ValueRange (*range)(BorderUnit));

/// A label of the form and its control.
FormRow* addRow(QVBoxLayout* rows, const QString& label, QWidget* control, const QString& tip = QString());

/// A list of choices that may be narrower than its longest text: the inspector has no room for it at its narrowest.
[[nodiscard]] QComboBox* makeCombo(const QString& name, const QStringList& texts);

/// A label of the form, a slider and its number. `name` is for assistive technology, `tip` may be empty.
SliderField* addSliderRow(QVBoxLayout* rows, const QString& label, const QString& name, const ValueRange& range,
                          const QString& tip = QString());

/// A switch that fills its row, with its label before it. `name` is for assistive technology.
ToggleSwitch* addSwitchRow(QVBoxLayout* rows, const QString& label, const QString& name);

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
