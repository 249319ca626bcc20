// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/Icons.h"

#include "Widgets/FerrowStyle.h"

#include <QFile>
#include <QIconEngine>
#include <QPainter>
#include <QPixmapCache>
#include <QPushButton>
#include <QSvgRenderer>

#include <array>
#include <cmath>

// Outside every namespace, as Qt's macro asks. A static library's resources are not registered without it.
static void registerIcons()
{
    Q_INIT_RESOURCE(icons);
}

namespace ferrow {

namespace {

constexpr std::array fileNames{"add",      "check",          "chevron-down", "chevron-right", "close",
                               "color",    "compare",        "drag-handle",  "error",         "export",
                               "folder",   "info",           "logo",         "more",          "own-framing",
                               "photo",    "presets",        "redo",         "remove",        "separator-chip",
                               "settings", "show-in-folder", "sidebar",      "text-chip",     "token-chip",
                               "undo",     "warning",        "zoom-100",     "zoom-fit",      "zoom-in",
                               "zoom-out"};
static_assert(fileNames.size() == std::size_t(IconName::zoomOut) + 1);

const QByteArray& drawing(IconName name)
{
    static const std::array<QByteArray, fileNames.size()> drawings = [] {
        registerIcons();
        std::array<QByteArray, fileNames.size()> read;
        for (std::size_t i = 0; i < read.size(); ++i) {
            QFile file(QStringLiteral(":/ferrow/icons/%1.svg").arg(QLatin1StringView(fileNames[i])));
            if (file.open(QIODevice::ReadOnly))
                read[i] = file.readAll();
            Q_ASSERT(!read[i].isEmpty());
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

/// Draws `size` logical pixels at `scale`. Qt's SVG draws currentColor black, so the color is put in before it is
/// read.
QPixmap drawn(IconName name, int size, const QColor& color, double scale)
{
    QByteArray svg = drawing(name);
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

class ThemedIconEngine : public QIconEngine {
public:
    ThemedIconEngine(IconName name, ColorRole role) : name_(name), role_(role) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override
    {
        paintIcon(*painter, name_, rect, std::min(rect.width(), rect.height()), colorFor(mode));
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override
    {
        return scaledPixmap(size, mode, state, 1);
    }

    /// `size` is in device pixels.
    QPixmap scaledPixmap(const QSize& size, QIcon::Mode mode, QIcon::State, qreal scale) override
    {
        const int side = int(std::lround(std::min(size.width(), size.height()) / scale));
        return iconPixmap(name_, side, colorFor(mode), scale);
    }

    QIconEngine* clone() const override { return new ThemedIconEngine(*this); }
    QString key() const override { return QStringLiteral("ferrow"); }
    bool isNull() override { return false; }

private:
    [[nodiscard]] QColor colorFor(QIcon::Mode mode) const
    {
        return themeColor(mode == QIcon::Disabled ? &ThemeColors::disabled : role_);
    }

    IconName name_;
    ColorRole role_;
};

} // namespace

QIcon icon(IconName name, ColorRole role)
{
    return QIcon(new ThemedIconEngine(name, role));
}

QPixmap iconPixmap(IconName name, int size, const QColor& color, double scale)
{
    const QString key =
        QStringLiteral("ferrow-icon/%1/%2/%3/%4").arg(int(name)).arg(size).arg(color.name(QColor::HexArgb)).arg(scale);
    QPixmap pixmap;
    if (!QPixmapCache::find(key, &pixmap)) {
        pixmap = drawn(name, size, color, scale);
        QPixmapCache::insert(key, pixmap);
    }
    return pixmap;
}

void paintIcon(QPainter& painter, IconName name, const QRectF& rect, int size, const QColor& color)
{
    const double scale = painter.device()->devicePixelRatioF();
    // On whole device pixels, or the strokes blur.
    const auto snapped = [scale](double at) { return std::round(at * scale) / scale; };
    const QPointF corner(snapped(rect.center().x() - size / 2.0), snapped(rect.center().y() - size / 2.0));
    painter.drawPixmap(corner, iconPixmap(name, size, color, scale));
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
