// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/PresetManager/PresetSummary.h"

#include "Session/WindowTexts.h"

#include <QStringList>

#include <algorithm>
#include <cmath>

namespace ferrow {

namespace {

constexpr double exaggeration = 2;
constexpr double leastShare = 0.04;
constexpr double greatestShare = 0.35;

/// Of 12 million pixels or so.
constexpr PixelSize usualPhoto{4'500, 3'000};

/// Of a photo that is drawn `side` high.
double exaggerated(const Length& length, double side)
{
    return side * exaggeration * length.pixels(usualPhoto) / double(usualPhoto.height);
}

double drawnWidth(double pixels, double side)
{
    if (!(pixels > 0))
        return 0;
    const double share = exaggerated({pixels, BorderUnit::pixels}, side) / side;
    return std::round(side * std::clamp(leastShare + share, leastShare, greatestShare));
}

QRectF canvasIn(const QRectF& box, const FrameShape& shape)
{
    const double ratio = shape.ratioFor(usualPhoto);
    if (!(ratio > 0))
        return box;
    QRectF canvas(QPointF(), QSizeF(ratio, 1).scaled(box.size(), Qt::KeepAspectRatio).toSize().expandedTo(QSize(8, 8)));
    canvas.moveCenter(box.center());
    canvas.moveTo(std::round(canvas.x()), std::round(canvas.y()));
    return canvas;
}

/// As large as it goes in its own proportion, with the rest shared out as `balance` says.
QRectF photoIn(const QRectF& room, double balance)
{
    const QSizeF size =
        QSizeF(double(usualPhoto.width), double(usualPhoto.height)).scaled(room.size(), Qt::KeepAspectRatio);
    const double share = (1 + std::clamp(balance, -100.0, 100.0) / 100) / 2;
    return {QPointF(room.x() + std::round((room.width() - size.width()) * share),
                    room.y() + std::round((room.height() - size.height()) * share)),
            QSizeF(std::round(size.width()), std::round(size.height()))};
}

} // namespace

QString payloadSummary(const PresetPayload& payload)
{
    const RenderRecipe& recipe = payload.framing;
    QStringList parts{WindowTexts::borderWidths(recipe.border)};
    parts << WindowTexts::borderFeatures(recipe.border)
          << (recipe.showsCaption() ? QStringLiteral("caption") : QStringLiteral("no caption"))
          << (recipe.logo ? QStringLiteral("logo") : QStringLiteral("no logo")) << rawValue(payload.exportFormat);
    return parts.join(QStringLiteral(" · "));
}

DrawnFrame drawnFrame(const Border& border, const QRectF& box)
{
    DrawnFrame frame;
    frame.canvas = border.shape ? canvasIn(box, *border.shape) : box;
    const double side = std::min(frame.canvas.width(), frame.canvas.height());
    const SideLengths around = border.around(usualPhoto);
    frame.photo = frame.canvas.adjusted(drawnWidth(around.left, side), drawnWidth(around.top, side),
                                        -drawnWidth(around.right, side), -drawnWidth(around.bottom, side));
    if (border.shape)
        frame.photo = photoIn(frame.photo, border.shape->balance);
    if (border.line) {
        const double away = std::clamp(std::round(exaggerated(border.line->distance, side)), 1.0, side * greatestShare);
        frame.line = frame.photo.adjusted(-away, -away, away, away) & frame.canvas;
    }
    if (border.photoEdge.cornerRadius.value > 0)
        frame.cornerRadius = std::clamp(exaggerated(border.photoEdge.cornerRadius, side), 2.0, side / 2);
    return frame;
}

} // namespace ferrow
