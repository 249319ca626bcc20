// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/Shadow.h"

#include "Widgets/Theme.h"

#include <QPainter>
#include <QPixmapCache>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace ferrow {

namespace {

/// One blurred copy of the card, in logical pixels.
struct Layer {
    double drop;
    double blur; ///< Twice the Gaussian's sigma, as designers count.
    double opacity;
};

struct Recipe {
    double radius;
    int margin; ///< How far the shadow reaches beyond the card.
    std::array<Layer, 2> layers;
};

const Recipe& recipeOf(ShadowKind kind)
{
    static const Recipe popover{Radius::popover, 26, {{{1, 3, 0.10}, {6, 18, 0.16}}}};
    static const Recipe sheet{Radius::sheet, 46, {{{2, 6, 0.10}, {12, 32, 0.20}}}};
    return kind == ShadowKind::popover ? popover : sheet;
}

/// Running mean over 2 x reach + 1 values along one line; what lies outside the line is 0.
void blurLine(float* values, int count, int stride, int reach, std::vector<float>& line)
{
    line.resize(std::size_t(count));
    for (int i = 0; i < count; ++i)
        line[std::size_t(i)] = values[i * stride];
    float sum = 0;
    for (int i = 0; i < std::min(reach, count); ++i)
        sum += line[std::size_t(i)];
    const float share = 1.0F / float(2 * reach + 1);
    for (int i = 0; i < count; ++i) {
        sum += i + reach < count ? line[std::size_t(i + reach)] : 0;
        sum -= i - reach - 1 >= 0 ? line[std::size_t(i - reach - 1)] : 0;
        values[i * stride] = sum * share;
    }
}

/// Three running means come close to a Gaussian.
void blur(std::vector<float>& alpha, int width, int height, double sigma)
{
    const int reach = std::max(1, int(std::lround((std::sqrt(4 * sigma * sigma + 1) - 1) / 2)));
    std::vector<float> line;
    for (int pass = 0; pass < 3; ++pass) {
        for (int y = 0; y < height; ++y)
            blurLine(alpha.data() + y * width, width, 1, reach, line);
        for (int x = 0; x < width; ++x)
            blurLine(alpha.data() + x, height, width, reach, line);
    }
}

void addLayer(std::vector<float>& total, const QSize& pixels, const QRectF& card, const Recipe& recipe,
              const Layer& layer, double scale)
{
    QImage shape(pixels, QImage::Format_Alpha8);
    shape.fill(0);
    QPainter painter(&shape);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(scale, scale);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::black);
    painter.drawRoundedRect(card.translated(0, layer.drop), recipe.radius, recipe.radius);
    painter.end();
    std::vector<float> alpha(total.size());
    for (int y = 0; y < pixels.height(); ++y)
        std::copy_n(shape.constScanLine(y), pixels.width(), alpha.begin() + y * pixels.width());
    blur(alpha, pixels.width(), pixels.height(), layer.blur / 2 * scale);
    for (std::size_t i = 0; i < total.size(); ++i) {
        const float added = alpha[i] / 255 * float(layer.opacity);
        total[i] += added * (1 - total[i]);
    }
}

/// The shadow of a card of `size` with its margin round it, black.
QPixmap makeShadow(const QSize& size, const Recipe& recipe, double scale)
{
    const QSize logical = size + QSize(2 * recipe.margin, 2 * recipe.margin);
    const QSize pixels = (QSizeF(logical) * scale).toSize();
    std::vector<float> total(std::size_t(pixels.width()) * std::size_t(pixels.height()));
    const QRectF card(recipe.margin, recipe.margin, size.width(), size.height());
    for (const Layer& layer : recipe.layers)
        addLayer(total, pixels, card, recipe, layer, scale);
    QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < pixels.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < pixels.width(); ++x) {
            const float alpha = total[std::size_t(y) * std::size_t(pixels.width()) + std::size_t(x)];
            line[x] = qRgba(0, 0, 0, int(std::lround(alpha * 255)));
        }
    }
    return QPixmap::fromImage(image);
}

QPixmap shadowOf(const QSize& size, ShadowKind kind, double scale)
{
    const QString key =
        QStringLiteral("ferrow-shadow/%1/%2x%3/%4").arg(int(kind)).arg(size.width()).arg(size.height()).arg(scale);
    QPixmap pixmap;
    if (!QPixmapCache::find(key, &pixmap)) {
        pixmap = makeShadow(size, recipeOf(kind), scale);
        QPixmapCache::insert(key, pixmap);
    }
    return pixmap;
}

/// Corners are drawn as they are; the middle line of the picture stretches along each edge.
void paintNinePatch(QPainter& painter, const QRectF& target, const QPixmap& pixmap, double corner, double scale)
{
    const std::array<double, 4> across{target.left(), target.left() + corner, target.right() - corner, target.right()};
    const std::array<double, 4> down{target.top(), target.top() + corner, target.bottom() - corner, target.bottom()};
    const double far = pixmap.width() / scale;
    const std::array<double, 4> from{0, corner, far - corner, far};
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            const QRectF part(across[column], down[row], across[column + 1] - across[column],
                              down[row + 1] - down[row]);
            const QRectF source(from[column] * scale, from[row] * scale, (from[column + 1] - from[column]) * scale,
                                (from[row + 1] - from[row]) * scale);
            painter.drawPixmap(part, pixmap, source);
        }
    }
}

} // namespace

void paintShadow(QPainter& painter, const QRectF& card, ShadowKind kind)
{
    const Recipe& recipe = recipeOf(kind);
    const double scale = painter.device()->devicePixelRatioF();
    const double margin = recipe.margin;
    const QRectF target = card.adjusted(-margin, -margin, margin, margin);
    // Beyond this distance from a corner the shadow of an edge no longer changes.
    const int reach = int(recipe.radius) + recipe.margin;
    const int side = 2 * reach + 2;
    if (card.width() >= side && card.height() >= side) {
        paintNinePatch(painter, target, shadowOf(QSize(side, side), kind, scale), reach + margin, scale);
        return;
    }
    painter.drawPixmap(target, shadowOf(card.size().toSize(), kind, scale), QRectF());
}

} // namespace ferrow
