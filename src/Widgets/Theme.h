// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QFont>
#include <QObject>
#include <QPalette>

#include <array>

class QLabel;
class QWidget;

namespace ferrow {

/// The colors of one appearance, by role. What stands round photos is neutral gray; `accent` alone means "here".
struct ThemeColors {
    QColor window;  ///< Toolbar, inspector, footers.
    QColor sidebar; ///< Photo list, empty preview.
    QColor surface; ///< Fields, chip well.
    QColor raised;  ///< Popovers, sheets, cards.
    QColor fill;    ///< Buttons, segment track, text chips; with `hover` and `pressed`.
    QColor hover;
    QColor pressed;
    QColor line;   ///< Hairlines: decoration only.
    QColor border; ///< Edge of every field, check box, switch and well.
    QColor text;
    QColor text2;
    QColor disabled;
    QColor accent; ///< Focus, drop, progress, own framing.
    QColor onAccent;
    QColor selection; ///< Selected row, token chip.
    QColor on;        ///< Ticks, switches, the filled part of a slider.
    QColor onMark;
    QColor ink; ///< The one main button of a view.
    QColor onInk;
    QColor inkHover;
    QColor inkPressed;
    QColor warning; ///< Always with the triangle.
    QColor warningGround;
    QColor error; ///< Always with the octagon.
    QColor errorGround;
    QColor success;     ///< Always with the tick.
    QColor groove;      ///< Unfilled part of a slider.
    QColor chosen;      ///< Ground of the chosen segment.
    QColor thumb;       ///< Of a slider.
    QColor hoverEdge;   ///< Edge of fields, boxes and switches under the pointer.
    QColor fillEdge;    ///< Edge of what has none; transparent unless more contrast is asked for.
    QColor popoverEdge; ///< May be translucent.
    QColor scrim;       ///< Translucent; lies over the window below a sheet.

    bool operator==(const ThemeColors&) const = default;
};

/// One color of the theme, named where a call needs "which": `icon(IconName::warning, &ThemeColors::warning)`.
using ColorRole = QColor ThemeColors::*;

enum class Appearance { light, dark };
enum class Contrast { normal, more };

/// The backdrops behind the framed photo, in the order that they are offered; the same in both appearances.
struct BackdropColors {
    QColor black{0x00, 0x00, 0x00};
    QColor charcoal{0x2B, 0x2B, 0x2B};
    QColor gray{0x80, 0x80, 0x80};
    QColor lightGray{0xD4, 0xD4, 0xD4};
    QColor white{0xFF, 0xFF, 0xFF};

    [[nodiscard]] const QColor& at(int index) const
    {
        return *std::array{&black, &charcoal, &gray, &lightGray, &white}.at(std::size_t(index));
    }
};

/// Lengths in logical pixels.
namespace Space {
inline constexpr int rowGap = 2;       ///< Between list rows.
inline constexpr int iconEdge = 4;     ///< Icon to edge.
inline constexpr int group = 8;        ///< Inside a control group.
inline constexpr int row = 12;         ///< Between rows of a form; toolbar ends.
inline constexpr int sidebar = 16;     ///< Sidebar inset.
inline constexpr int inspector = 20;   ///< Inspector and popover inset.
inline constexpr int sheet = 24;       ///< Sheet inset.
inline constexpr int preview = 32;     ///< Free margin round the photo.
inline constexpr int emptyBlocks = 48; ///< Between blocks of an empty state.
} // namespace Space

/// Corner radii in logical pixels.
namespace Radius {
inline constexpr int box = 4;     ///< Check box, swatch.
inline constexpr int control = 6; ///< Button, field, chip, segment.
inline constexpr int row = 8;     ///< List row, chip well, message.
inline constexpr int popover = 10;
inline constexpr int sheet = 12;
} // namespace Radius

/// Sizes in logical pixels at a system font of 10 points. Those of what holds text grow through Theme::scaled.
namespace Measure {
inline constexpr int control = 32;
inline constexpr int smallControl = 28; ///< Chips, buttons in rows.
inline constexpr int hitArea = 24;      ///< The least that can be aimed at.
inline constexpr int icon = 20;
inline constexpr int fieldIcon = 16;
inline constexpr int chipIcon = 14;
inline constexpr int emptyIcon = 40;
inline constexpr int checkBox = 16;
inline constexpr int switchWidth = 34;
inline constexpr int switchHeight = 20;
inline constexpr int thumb = 16;
inline constexpr int groove = 4;
inline constexpr int swatch = 32;
inline constexpr int swatchInner = 24;
inline constexpr int progress = 4;
inline constexpr int scrollBar = 6;
inline constexpr int focusWidth = 2;
inline constexpr int focusGap = 2;
inline constexpr int dropFrame = 3;
inline constexpr int formLabel = 80;
inline constexpr int sectionHeader = 48;
inline constexpr int toolBar = 52;
inline constexpr int footer = 40;
inline constexpr int sheetFoot = 64;
inline constexpr int numberField = 76;
} // namespace Measure

/// Opacity of a control that cannot be used.
inline constexpr double disabledOpacity = 0.42;

enum class TextRole { small, body, strong, section, title, empty };
enum class Motion { hover, popIn, popOut, unfold, sweep };

/// Which look the program has now, and everything that follows from it. Main thread only.
class Theme : public QObject {
    Q_OBJECT

public:
    static Theme& current();

    [[nodiscard]] const ThemeColors& colors() const { return colors_; }
    [[nodiscard]] QColor color(ColorRole role) const { return colors_.*role; }
    [[nodiscard]] static const BackdropColors& backdrops();

    /// The font of a role, scaled from the desktop's; Inter where it is installed.
    [[nodiscard]] QFont font(TextRole role) const;
    /// Height of one line of that role, in logical pixels.
    [[nodiscard]] int lineHeight(TextRole role) const;
    /// A length at a system font of 10 points, grown with a larger font; never shrunk.
    [[nodiscard]] int scaled(int length) const;

    /// Milliseconds; 0 for all but the sweep when motion is reduced. The sweep is then shown as a still bar.
    [[nodiscard]] int duration(Motion motion) const;

    [[nodiscard]] Appearance appearance() const { return appearance_; }
    [[nodiscard]] Contrast contrast() const { return contrast_; }
    [[nodiscard]] bool reducedMotion() const { return reducedMotion_; }

    void setAppearance(Appearance appearance);
    void setContrast(Contrast contrast);
    void setReducedMotion(bool reduced);

    /// What `appearance` and `contrast` look like, without switching to it.
    [[nodiscard]] static ThemeColors colorsOf(Appearance appearance, Contrast contrast);
    /// The colors as Qt's own widgets ask for them.
    [[nodiscard]] static QPalette paletteOf(const ThemeColors& colors);
    /// Gives the application palette and fonts. FerrowStyle::install does it.
    void renewApplication();

signals:
    /// Colors, fonts or motion have changed. Palette, fonts and icons of the widgets have been renewed by then.
    void changed();

private:
    Theme();
    void renew();
    void renewFonts();

    Appearance appearance_ = Appearance::light;
    Contrast contrast_ = Contrast::normal;
    bool reducedMotion_ = false;
    QFont systemFont_;
    ThemeColors colors_;
    std::array<QFont, 6> fonts_;
};

/// The current color of a role.
[[nodiscard]] inline QColor themeColor(ColorRole role)
{
    return Theme::current().color(role);
}

/// Gives a label or other text-bearing widget the font and color of its role and keeps both through theme changes.
void setTextRole(QWidget* widget, TextRole role, ColorRole color = &ThemeColors::text);

/// A label with that text and role.
[[nodiscard]] QLabel* makeLabel(const QString& text, TextRole role, ColorRole color = &ThemeColors::text,
                                QWidget* parent = nullptr);

/// Fills the widget's background with a color of the theme and keeps it through theme changes. Never a style sheet:
/// that would break the style of everything inside.
void setGround(QWidget* widget, ColorRole color);

} // namespace ferrow
