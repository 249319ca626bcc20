// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/Theme.h"

#include <QApplication>
#include <QFontDatabase>
#include <QFontMetrics>
#include <QLabel>
#include <QScreen>

#include <algorithm>
#include <cmath>
#include <utility>

namespace ferrow {

namespace {

constexpr double baseFontPoints = 10;

QColor translucent(QColor color, double opacity)
{
    color.setAlphaF(float(opacity));
    return color;
}

ThemeColors lightColors()
{
    ThemeColors c;
    c.window = 0xF7F7F7;
    c.sidebar = 0xF1F1F1;
    c.surface = 0xFFFFFF;
    c.raised = 0xFFFFFF;
    c.fill = 0xE9E9E9;
    c.hover = 0xE1E1E1;
    c.pressed = 0xD6D6D6;
    c.line = 0xE0E0E0;
    c.border = 0x808080;
    c.text = 0x1B1B1B;
    c.text2 = 0x5C5C5C;
    c.disabled = 0x949494;
    c.accent = 0x2A5B8C;
    c.onAccent = 0xFFFFFF;
    c.selection = 0xD9E4EF;
    c.on = 0x4A4A4A;
    c.onMark = 0xFFFFFF;
    c.ink = 0x262626;
    c.onInk = 0xFFFFFF;
    c.inkHover = 0x3A3A3A;
    c.inkPressed = 0x0F0F0F;
    c.warning = 0x855000;
    c.warningGround = 0xFFF4DE;
    c.error = 0xB0261C;
    c.errorGround = 0xFDECEA;
    c.success = 0x1F6B3D;
    c.groove = 0xB5B5B5;
    c.chosen = 0xFFFFFF;
    c.thumb = 0xFFFFFF;
    c.popoverEdge = translucent(Qt::black, 0.22);
    c.scrim = translucent(Qt::black, 0.28);
    return c;
}

ThemeColors darkColors()
{
    ThemeColors c;
    c.window = 0x1E1E1E;
    c.sidebar = 0x191919;
    c.surface = 0x262626;
    c.raised = 0x2A2A2A;
    c.fill = 0x333333;
    c.hover = 0x3C3C3C;
    c.pressed = 0x474747;
    c.line = 0x343434;
    c.border = 0x818181;
    c.text = 0xECECEC;
    c.text2 = 0xA9A9A9;
    c.disabled = 0x6C6C6C;
    c.accent = 0x8AB6E1;
    c.onAccent = 0x14202C;
    c.selection = 0x2B3946;
    c.on = 0xBDBDBD;
    c.onMark = 0x1A1A1A;
    c.ink = 0xE6E6E6;
    c.onInk = 0x1A1A1A;
    c.inkHover = 0xFFFFFF;
    c.inkPressed = 0xC9C9C9;
    c.warning = 0xE6B45C;
    c.warningGround = 0x352B18;
    c.error = 0xF2938A;
    c.errorGround = 0x3A2422;
    c.success = 0x7CC796;
    c.groove = 0x545454;
    c.chosen = 0x4A4A4A;
    c.thumb = 0xE6E6E6;
    c.popoverEdge = 0x4A4A4A;
    c.scrim = translucent(Qt::black, 0.50);
    return c;
}

/// The desktop's size in points. Without a desktop Qt falls back to 9 points, which says nothing about its user.
double systemPoints(const QFont& font)
{
    if (font.pointSizeF() <= 0)
        return baseFontPoints;
    const bool isFallback = font.family() == QStringLiteral("Sans Serif") && font.pointSizeF() == 9;
    return isFallback ? baseFontPoints : font.pointSizeF();
}

/// Pixel height at a system font of 10 points.
int pixelsOf(TextRole role)
{
    switch (role) {
    case TextRole::small:
        return 12;
    case TextRole::body:
    case TextRole::strong:
        return 13;
    case TextRole::section:
        return 14;
    case TextRole::title:
        return 17;
    case TextRole::empty:
        return 20;
    }
    Q_UNREACHABLE();
}

QFont::Weight weightOf(TextRole role)
{
    switch (role) {
    case TextRole::small:
    case TextRole::body:
        return QFont::Normal;
    case TextRole::strong:
        return QFont::Medium;
    case TextRole::section:
    case TextRole::title:
    case TextRole::empty:
        return QFont::DemiBold;
    }
    Q_UNREACHABLE();
}

QFont fontOf(TextRole role, const QFont& system)
{
    static const bool hasInter = QFontDatabase::hasFamily(QStringLiteral("Inter"));
    QFont font = system;
    if (hasInter)
        font.setFamilies({QStringLiteral("Inter"), system.family()});
    // 96 pixels and 72 points to the inch: points keep the fractions that QFont's whole pixels would lose.
    font.setPointSizeF(pixelsOf(role) * 0.75 * systemPoints(system) / baseFontPoints);
    font.setWeight(weightOf(role));
    // Inter's outlines are made for unhinted drawing, and hinted widths would differ from scale to scale.
    font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}

/// Keeps one widget dressed in the theme's colors and font.
class Dress : public QObject {
public:
    explicit Dress(QWidget* widget) : QObject(widget)
    {
        connect(&Theme::current(), &Theme::changed, this, [this] { apply(); });
    }

    static Dress* of(QWidget* widget)
    {
        for (QObject* child : widget->children())
            if (auto* dress = dynamic_cast<Dress*>(child))
                return dress;
        return new Dress(widget);
    }

    void apply()
    {
        auto* widget = static_cast<QWidget*>(parent());
        QPalette palette;
        palette.setResolveMask(0);
        if (ground)
            palette.setColor(QPalette::Window, themeColor(ground));
        if (color) {
            for (const auto part : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
                palette.setColor(part, themeColor(color));
                palette.setColor(QPalette::Disabled, part, themeColor(&ThemeColors::disabled));
            }
            widget->setFont(Theme::current().font(role));
        }
        widget->setPalette(palette);
    }

    ColorRole ground = nullptr;
    ColorRole color = nullptr;
    TextRole role = TextRole::body;
};

} // namespace

Theme& Theme::current()
{
    static Theme theme;
    return theme;
}

Theme::Theme() : systemFont_(QFontDatabase::systemFont(QFontDatabase::GeneralFont))
{
    colors_ = colorsOf(appearance_, contrast_);
    renewFonts();
}

const BackdropColors& Theme::backdrops()
{
    static const BackdropColors colors;
    return colors;
}

QFont Theme::font(TextRole role) const
{
    return fonts_[std::size_t(role)];
}

int Theme::lineHeight(TextRole role) const
{
    constexpr std::array heights{16, 18, 18, 18, 24, 24};
    const int natural = QFontMetrics(font(role)).height();
    return std::max(natural, scaled(heights[std::size_t(role)]));
}

int Theme::scaled(int length) const
{
    const QScreen* screen = QGuiApplication::primaryScreen();
    // Desktops enlarge text by the font's size or by the dots that they say an inch has.
    const double density = screen ? screen->logicalDotsPerInch() / 96 : 1;
    const double scale = density * systemPoints(systemFont_) / baseFontPoints;
    return int(std::lround(length * std::max(1.0, scale)));
}

int Theme::duration(Motion motion) const
{
    if (motion == Motion::sweep)
        return 1200;
    if (reducedMotion_)
        return 0;
    switch (motion) {
    case Motion::hover:
        return 80;
    case Motion::popIn:
        return 140;
    case Motion::popOut:
        return 100;
    case Motion::unfold:
        return 180;
    case Motion::sweep:
        break;
    }
    Q_UNREACHABLE();
}

void Theme::setAppearance(Appearance appearance)
{
    if (std::exchange(appearance_, appearance) != appearance)
        renew();
}

void Theme::setContrast(Contrast contrast)
{
    if (std::exchange(contrast_, contrast) != contrast)
        renew();
}

void Theme::setReducedMotion(bool reduced)
{
    if (std::exchange(reducedMotion_, reduced) != reduced)
        emit changed();
}

ThemeColors Theme::colorsOf(Appearance appearance, Contrast contrast)
{
    ThemeColors colors = appearance == Appearance::light ? lightColors() : darkColors();
    colors.hoverEdge = colors.text2;
    colors.fillEdge = Qt::transparent;
    if (contrast == Contrast::more) {
        colors.line = colors.border;
        colors.hoverEdge = colors.text;
        colors.fillEdge = colors.border;
        colors.popoverEdge = colors.border;
    }
    return colors;
}

QPalette Theme::paletteOf(const ThemeColors& c)
{
    QPalette palette;
    const auto set = [&palette](QPalette::ColorRole role, const QColor& color, const QColor& disabled) {
        palette.setColor(role, color);
        palette.setColor(QPalette::Disabled, role, disabled);
    };
    set(QPalette::Window, c.window, c.window);
    set(QPalette::WindowText, c.text, c.disabled);
    set(QPalette::Base, c.surface, c.surface);
    set(QPalette::AlternateBase, c.sidebar, c.sidebar);
    set(QPalette::Text, c.text, c.disabled);
    set(QPalette::PlaceholderText, c.text2, c.disabled);
    set(QPalette::Button, c.fill, c.fill);
    set(QPalette::ButtonText, c.text, c.disabled);
    set(QPalette::BrightText, c.onAccent, c.onAccent);
    set(QPalette::Highlight, c.selection, c.fill);
    set(QPalette::HighlightedText, c.text, c.disabled);
    set(QPalette::Link, c.accent, c.disabled);
    set(QPalette::LinkVisited, c.accent, c.disabled);
    set(QPalette::ToolTipBase, c.raised, c.raised);
    set(QPalette::ToolTipText, c.text, c.text);
    set(QPalette::Light, c.raised, c.raised);
    set(QPalette::Midlight, c.fill, c.fill);
    set(QPalette::Mid, c.line, c.line);
    set(QPalette::Dark, c.border, c.border);
    set(QPalette::Shadow, c.border, c.border);
    return palette;
}

void Theme::renewFonts()
{
    for (std::size_t i = 0; i < fonts_.size(); ++i)
        fonts_[i] = fontOf(static_cast<TextRole>(i), systemFont_);
}

void Theme::renew()
{
    colors_ = colorsOf(appearance_, contrast_);
    renewFonts();
    renewApplication();
    emit changed();
}

void Theme::renewApplication()
{
    QPalette palette = paletteOf(colors_);
    QApplication::setPalette(palette);
    palette.setColor(QPalette::Window, colors_.raised);
    QApplication::setPalette(palette, "QMenu");
    QApplication::setFont(font(TextRole::body));
    for (const char* className : {"QPushButton", "QToolButton"})
        QApplication::setFont(font(TextRole::strong), className);
    // Qt keeps fonts of its own for these, taken from the desktop.
    for (const char* className : {"QMenu", "QComboBoxPrivateContainer", "QComboBox", "QCheckBox", "QLineEdit"})
        QApplication::setFont(font(TextRole::body), className);
    QApplication::setFont(font(TextRole::small), "QTipLabel");
}

void setTextRole(QWidget* widget, TextRole role, ColorRole color)
{
    Dress* dress = Dress::of(widget);
    dress->role = role;
    dress->color = color;
    dress->apply();
}

QLabel* makeLabel(const QString& text, TextRole role, ColorRole color, QWidget* parent)
{
    auto* label = new QLabel(text, parent);
    label->setTextFormat(Qt::PlainText);
    setTextRole(label, role, color);
    return label;
}

void setGround(QWidget* widget, ColorRole color)
{
    Dress* dress = Dress::of(widget);
    dress->ground = color;
    widget->setAutoFillBackground(true);
    dress->apply();
}

} // namespace ferrow
