// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Features/Inspector/FontChoice.h"
#include "Features/Inspector/InspectorContext.h"
#include "Session/CaptionEditing.h"
#include "Widgets/Section.h"

#include <QPointer>

#include <vector>

class QComboBox;
class QPushButton;

namespace ferrow {

class CaptionBuilder;
class CaptionTabs;
class ColorPopover;
class ColorWell;
class FontButton;
class FormRow;
class PositionButton;
class PositionPopover;
class SegmentedControl;
class SliderField;

/// What each caption says, how it looks and where it lies. All but the switch is about the chosen one.
class CaptionSection : public Section {
    Q_OBJECT

public:
    explicit CaptionSection(const InspectorContext& context, QWidget* parent = nullptr);
    /// Shows what the models say now.
    void refresh();
    void stepCaption(int by);
    void moveCaption(int by);
    /// How large the logo's picture is, so that captions over it can be told.
    void setLogoSize(PixelSize size);

private:
    void buildTabs(QVBoxLayout* rows);
    void buildText();
    void buildLook(QVBoxLayout* rows);
    void buildAlignment(QVBoxLayout* rows);
    void buildPosition(QVBoxLayout* rows);
    void buildMore(QVBoxLayout* rows);
    template <typename Value>
    void edit(const QString& step, Value Caption::*member, const Value& value);
    template <typename Source, typename Value, typename Member>
    void bind(Source* source, void (Source::*edited)(Value), const QString& step, Member Caption::*member);
    void bindLength(SliderField* field, const QString& step, Length Caption::*length);
    void addCaption();
    void tellChosen();
    void chooseUnit(BorderUnit unit);
    void chooseStyle(int index);
    void openFont();
    void openColor();
    void openPosition();
    void refreshFont(const Caption& caption);
    void refreshLengths(const RenderRecipe& recipe, const Caption& caption);
    void refreshPosition(const RenderRecipe& recipe);

    InspectorContext context_;
    PixelSize logoSize_;
    CaptionEditing editing_;
    QWidget* group_ = nullptr; ///< All rows: they rest while the caption is off.
    CaptionTabs* tabs_ = nullptr;
    CaptionBuilder* builder_ = nullptr;
    FontButton* font_ = nullptr;
    FormRow* fontRow_ = nullptr;
    QComboBox* style_ = nullptr;
    FormRow* styleRow_ = nullptr;
    FontFace shownFace_; ///< What `style_` lists the styles of; an empty family for nothing yet.
    SliderField* size_ = nullptr;
    FormRow* sizeRow_ = nullptr;
    ColorWell* color_ = nullptr;
    SegmentedControl* alignment_ = nullptr;
    PositionButton* position_ = nullptr;
    FormRow* positionRow_ = nullptr;
    SegmentedControl* unit_ = nullptr;
    ToggleSwitch* shrinks_ = nullptr;
    SliderField* letterSpacing_ = nullptr;
    ToggleSwitch* uppercase_ = nullptr;
    SliderField* lineSpacing_ = nullptr;
    SliderField* sideInset_ = nullptr;
    SliderField* edgeInset_ = nullptr;
    SliderField* opacity_ = nullptr;
    QPushButton* addOrRemove_ = nullptr;        ///< Adds where there is one caption, else removes the chosen one.
    std::vector<CaptionPosition> placesBefore_; ///< The gesture that moves a caption about.
    QPointer<ColorPopover> colorPopover_;
    QPointer<PositionPopover> positionPopover_;
};

} // namespace ferrow
