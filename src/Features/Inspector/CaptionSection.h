// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Features/Inspector/InspectorContext.h"
#include "Session/CaptionEditing.h"
#include "Widgets/Section.h"

#include <QPointer>

class QComboBox;

namespace ferrow {

class CaptionBuilder;
class ColorPopover;
class ColorWell;
class FormRow;
class PositionButton;
class PositionPopover;
class SegmentedControl;
class SliderField;

/// What the caption says, how it looks and where it lies.
class CaptionSection : public Section {
    Q_OBJECT

public:
    explicit CaptionSection(const InspectorContext& context, QWidget* parent = nullptr);
    /// Shows what the models say now.
    void refresh();

private:
    void buildText();
    void buildLook(QVBoxLayout* rows);
    void buildAlignment(QVBoxLayout* rows);
    void buildPosition(QVBoxLayout* rows);
    void buildMore(QVBoxLayout* rows);
    template <typename Value>
    void edit(const QString& step, Value Caption::*member, const Value& value);
    void openColor();
    void openPosition();
    void refreshPosition(const RenderRecipe& recipe);

    InspectorContext context_;
    CaptionEditing editing_;
    QWidget* group_ = nullptr; ///< All rows: they rest while the caption is off.
    CaptionBuilder* builder_ = nullptr;
    QComboBox* font_ = nullptr;
    SliderField* size_ = nullptr;
    ColorWell* color_ = nullptr;
    SegmentedControl* alignment_ = nullptr;
    PositionButton* position_ = nullptr;
    FormRow* positionRow_ = nullptr;
    SliderField* lineSpacing_ = nullptr;
    SliderField* sideInset_ = nullptr;
    SliderField* edgeInset_ = nullptr;
    SliderField* opacity_ = nullptr;
    QPointer<ColorPopover> colorPopover_;
    QPointer<PositionPopover> positionPopover_;
};

} // namespace ferrow
