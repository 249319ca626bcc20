// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/Icons.h"

#include "Widgets/FerrowStyle.h"

#include <QFile>
#include <QIconEngine>
#include <QPainter>
#include <QPixmapCache>
#include <QPushButton>
#include <QSvgRenderer>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

// Outside every namespace, as Qt's macro asks. A static library's resources are not registered without it.
static void registerIcons()
{
    Q_INIT_RESOURCE(icons);
}

namespace ferrow {

namespace {

constexpr std::array fileNames{
    "add",         "check",          "chevron-down", "chevron-right",  "close",   "color",   "compare",
    "drag-handle", "error",          "export",       "folder",         "info",    "link",    "logo",
    "more",        "own-framing",    "photo",        "presets",        "redo",    "remove",  "reset",
    "search",      "separator-chip", "settings",     "show-in-folder", "sidebar", "sort",    "text-chip",
    "tiles-large", "tiles-small",    "token-chip",   "undo",           "unlink",  "warning", "zoom-100",
    "zoom-fit",    "zoom-in",        "zoom-out"};
static_assert(fileNames.size() == std::size_t(IconName::zoomOut) + 1);

/// An SVG with currentColor, and the name under which its pixels are kept.
struct Drawing {
    QByteArray svg;
    QString key;
};

const Drawing& drawing(IconName name)
{
    static const std::array<Drawing, fileNames.size()> drawings = [] {
        registerIcons();
        std::array<Drawing, fileNames.size()> read;
        for (std::size_t i = 0; i < read.size(); ++i) {
            read[i].key = QString::fromLatin1(fileNames[i]);
            QFile file(QStringLiteral(":/ferrow/icons/%1.svg").arg(read[i].key));
            if (file.open(QIODevice::ReadOnly))
                read[i].svg = file.readAll();
            Q_ASSERT(!read[i].svg.isEmpty());
        }
        return read;
    }();
    return drawings[std::size_t(name)];
}

/// The stroke in the drawing is 1.5 on a grid of 20; large icons look clumsy with it.
double strokeFor(int size)
{
    return size >= 32 ? 1.5 * 20 / size : 1.5;
}

/// A rectangle of `ratio` on the grid of 20, as large as the others of its kind look; dashed without one.
Drawing shapeDrawing(std::optional<double> ratio)
{
    constexpr double squareSide = 13;
    constexpr double longest = 16;
    constexpr double shortest = 3;
    const double root = std::sqrt(std::clamp(ratio.value_or(1.5), 0.01, 100.0));
    const double fit = std::min(1.0, longest / (squareSide * std::max(root, 1 / root)));
    const double width = std::max(squareSide * root * fit, shortest);
    const double height = std::max(squareSide / root * fit, shortest);
    const QString rect = QStringLiteral(R"(<rect x="%1" y="%2" width="%3" height="%4" rx="1.25"%5/>)")
                             .arg((20 - width) / 2)
                             .arg((20 - height) / 2)
                             .arg(width)
                             .arg(height)
                             .arg(ratio ? QString() : QStringLiteral(R"( stroke-dasharray="1.5 2.6")"));
    static const QString frame = QStringLiteral(
        R"(<svg xmlns="http://www.w3.org/2000/svg" width="20" height="20" viewBox="0 0 20 20" fill="none" )"
        R"(stroke="currentColor" stroke-width="1.5" stroke-linecap="round" stroke-linejoin="round">%1</svg>)");
    return {frame.arg(rect).toLatin1(), rect};
}

/// Draws `size` logical pixels at `scale`. Qt's SVG draws currentColor black, so the color is put in before it is
/// read.
QPixmap drawn(QByteArray svg, int size, const QColor& color, double scale)
{
    svg.replace("currentColor", color.name(QColor::HexRgb).toLatin1());
    svg.replace("stroke-width=\"1.5\"", "stroke-width=\"" + QByteArray::number(strokeFor(size)) + '"');
    QSvgRenderer renderer(svg);
    const int pixels = int(std::ceil(size * scale));
    QPixmap pixmap(pixels, pixels);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(color.alphaF());
    renderer.render(&painter, QRectF(0, 0, pixels, pixels));
    painter.end();
    pixmap.setDevicePixelRatio(scale);
    return pixmap;
}

QPixmap pixmapOf(const Drawing& drawing, int size, const QColor& color, double scale)
{
    const QString key = QStringLiteral("ferrow-icon/%1/%2/%3/%4")
                            .arg(drawing.key)
                            .arg(size)
                            .arg(color.name(QColor::HexArgb))
                            .arg(scale);
    QPixmap pixmap;
    if (!QPixmapCache::find(key, &pixmap)) {
        pixmap = drawn(drawing.svg, size, color, scale);
        QPixmapCache::insert(key, pixmap);
    }
    return pixmap;
}

void paintDrawing(QPainter& painter, const Drawing& drawing, const QRectF& rect, int size, const QColor& color)
{
    const double scale = painter.device()->devicePixelRatioF();
    // On whole device pixels, or the strokes blur.
    const auto snapped = [scale](double at) { return std::round(at * scale) / scale; };
    const QPointF corner(snapped(rect.center().x() - size / 2.0), snapped(rect.center().y() - size / 2.0));
    painter.drawPixmap(corner, pixmapOf(drawing, size, color, scale));
}

class ThemedIconEngine : public QIconEngine {
public:
    ThemedIconEngine(Drawing drawing, ColorRole role) : drawing_(std::move(drawing)), role_(role) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override
    {
        paintDrawing(*painter, drawing_, rect, std::min(rect.width(), rect.height()), colorFor(mode));
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override
    {
        return scaledPixmap(size, mode, state, 1);
    }

    /// `size` is in device pixels.
    QPixmap scaledPixmap(const QSize& size, QIcon::Mode mode, QIcon::State, qreal scale) override
    {
        const int side = int(std::lround(std::min(size.width(), size.height()) / scale));
        return pixmapOf(drawing_, side, colorFor(mode), scale);
    }

    QIconEngine* clone() const override { return new ThemedIconEngine(*this); }
    QString key() const override { return QStringLiteral("ferrow"); }
    bool isNull() override { return false; }

private:
    [[nodiscard]] QColor colorFor(QIcon::Mode mode) const
    {
        return themeColor(mode == QIcon::Disabled ? &ThemeColors::disabled : role_);
    }

    Drawing drawing_;
    ColorRole role_;
};

} // namespace

QIcon icon(IconName name, ColorRole role)
{
    return QIcon(new ThemedIconEngine(drawing(name), role));
}

QIcon shapeIcon(std::optional<double> ratio, ColorRole role)
{
    return QIcon(new ThemedIconEngine(shapeDrawing(ratio), role));
}

QPixmap iconPixmap(IconName name, int size, const QColor& color, double scale)
{
    return pixmapOf(drawing(name), size, color, scale);
}

void paintIcon(QPainter& painter, IconName name, const QRectF& rect, int size, const QColor& color)
{
    paintDrawing(painter, drawing(name), rect, size, color);
}

QPushButton* makeIconButton(IconName name, const QString& text, QWidget* parent)
{
    auto* button = new QPushButton(parent);
    button->setIcon(icon(name));
    button->setToolTip(text);
    button->setAccessibleName(text);
    setButtonRole(button, ButtonRole::flat);
    return button;
}

} // namespace ferrow
