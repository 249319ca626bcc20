// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Features/Inspector/Disclosure.h"
#include "Features/Inspector/InspectorContext.h"

namespace ferrow {

class RecipeColorWell;
class SliderField;

/// The line around the photo, with a switch. What is switched off keeps its settings until the program ends.
class LineFold : public Disclosure {
    Q_OBJECT

public:
    explicit LineFold(const InspectorContext& context, QWidget* parent = nullptr);
    /// Shows what the models say now.
    void refresh();

private:
    SliderField* addLength(QVBoxLayout* rows, const QString& label, const QString& step, Length FrameLine::*length);
    void toggle(bool on);
    /// The line that is shown: the recipe's, or while there is none what switching on would bring.
    [[nodiscard]] FrameLine line() const;

    InspectorContext context_;
    FrameLine kept_;
    ToggleSwitch* switch_ = nullptr;
    QWidget* group_ = nullptr; ///< All rows: they rest while the line is off.
    SliderField* thickness_ = nullptr;
    SliderField* distance_ = nullptr;
    RecipeColorWell* color_ = nullptr;
};

} // namespace ferrow
