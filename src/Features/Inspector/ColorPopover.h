// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Features/Inspector/EditRun.h"
#include "Features/Inspector/PickedColor.h"
#include "Widgets/Popover.h"

namespace ferrow {

class BeforeAfterButton;
class HueBar;
class ColorField;
class ColorWell;
class ScreenColorPicker;
class SliderField;
class SwatchGrid;

/// Picks a color: names, a field, hue, where it makes sense opacity, hex, and the desktop's eyedropper where there is
/// one. Every change is told at once. Edits come in gestures as EditRun has them; each lies between `gestureStarted`
/// and `gestureEnded`.
class ColorPopover : public Popover {
    Q_OBJECT

public:
    enum class Opacity { fixed, offered };

    /// `color` is what a press on the old color goes back to. `picker` outlives the popover.
    ColorPopover(QWidget* opener, const QString& title, const RGBAColor& color, Opacity opacity,
                 ScreenColorPicker& picker);
    ~ColorPopover() override;

    /// The model's color, after undo for example. Emits nothing.
    void setColor(const RGBAColor& color);

    /// Opens with the focus on the current value: its name where it has one, else its place in the field.
    void present();

signals:
    void gestureStarted();
    void colorEdited(const ferrow::RGBAColor& color);
    void gestureEnded();

private:
    void build(Opacity opacity, ScreenColorPicker& picker);
    void addOverhanging(QWidget* widget, int across, int upright);
    template <typename Part>
    void follow(Part* part);
    void addOpacity();
    QWidget* makeLastRow(ScreenColorPicker& picker);
    void take(const PickedColor& picked, const RGBAColor& color);
    void takeColor(const RGBAColor& color);
    void showColor();

    PickedColor picked_;
    RGBAColor before_;
    RGBAColor color_; ///< Exactly what the model has.
    EditRun run_;
    SwatchGrid* swatches_ = nullptr;
    ColorField* field_ = nullptr;
    HueBar* hue_ = nullptr;
    SliderField* opacity_ = nullptr; ///< Null where opacity is fixed.
    BeforeAfterButton* beforeAfter_ = nullptr;
    ColorWell* hex_ = nullptr;
};

} // namespace ferrow
