// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Features/Inspector/InspectorContext.h"
#include "Widgets/Section.h"

#include <QPointer>

#include <optional>

namespace ferrow {

class ColorPopover;
class ColorWell;
class SegmentedControl;
class SliderField;

/// Unit, width and color of the border.
class BorderSection : public Section {
    Q_OBJECT

public:
    explicit BorderSection(const InspectorContext& context, QWidget* parent = nullptr);
    /// Shows what the models say now.
    void refresh();

private:
    void build();
    void chooseUnit(BorderUnit unit);
    void openColor();

    InspectorContext context_;
    SegmentedControl* unit_ = nullptr;
    SliderField* width_ = nullptr;
    ColorWell* color_ = nullptr;
    QPointer<ColorPopover> popover_;
    std::optional<BorderUnit> shownUnit_;
};

} // namespace ferrow
