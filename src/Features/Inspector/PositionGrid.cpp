// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/PositionGrid.h"

#include <QStringList>

#include <algorithm>
#include <array>
#include <cmath>

namespace ferrow::PositionGrid {

namespace {

constexpr std::array<CaptionPosition, spots> readingOrder{
    CaptionPosition::borderTopLeft,    CaptionPosition::borderTopCenter,    CaptionPosition::borderTopRight,
    CaptionPosition::imageTopLeft,     CaptionPosition::imageTopCenter,     CaptionPosition::imageTopRight,
    CaptionPosition::imageCenterLeft,  CaptionPosition::imageCenter,        CaptionPosition::imageCenterRight,
    CaptionPosition::imageBottomLeft,  CaptionPosition::imageBottomCenter,  CaptionPosition::imageBottomRight,
    CaptionPosition::borderBottomLeft, CaptionPosition::borderBottomCenter, CaptionPosition::borderBottomRight};

constexpr double leastSide = 4;
constexpr double leastUpper = 32; ///< Where spots lie, with a little air.
constexpr double leastPhotoWidth = 108;
constexpr double leastPhotoHeight = 100;
constexpr double greatestHeight = 360;
constexpr double spotInset = 24; ///< From the photo's left and right edge.
constexpr double rowInset = 20;  ///< From its upper and lower edge.
constexpr double targetSide = 28;
constexpr double leastRatio = 0.8; ///< 4:5
constexpr double greatestRatio = 5.0 / 3;

/// Takes from what two lengths have beyond `least` until both fit into `room`.
void shrink(double& first, double& second, double least, double room)
{
    const double spare = first + second - 2 * least;
    const double kept = std::clamp(room - 2 * least, 0.0, spare);
    if (spare <= kept)
        return;
    first = least + (first - least) / spare * kept;
    second = least + (second - least) / spare * kept;
}

} // namespace

CaptionPosition at(int index)
{
    return readingOrder[std::size_t(std::clamp(index, 0, spots - 1))];
}

int indexOf(CaptionPosition position)
{
    return int(std::find(readingOrder.begin(), readingOrder.end(), position) - readingOrder.begin());
}

CaptionPosition moved(CaptionPosition position, int columnsBy, int rowsBy)
{
    const int index = indexOf(position);
    const int column = std::clamp(index % columns + columnsBy, 0, columns - 1);
    const int row = std::clamp(index / columns + rowsBy, 0, rows - 1);
    return at(row * columns + column);
}

QString title(CaptionPosition position)
{
    static const QStringList inBorder{QStringLiteral("Left"), QStringLiteral("Center"), QStringLiteral("Right")};
    static const QStringList onPhoto{
        QStringLiteral("Top left"),    QStringLiteral("Top center"),    QStringLiteral("Top right"),
        QStringLiteral("Center left"), QStringLiteral("Center"),        QStringLiteral("Center right"),
        QStringLiteral("Bottom left"), QStringLiteral("Bottom center"), QStringLiteral("Bottom right")};
    const int index = indexOf(position);
    return isInBorder(position) ? inBorder[index % columns] : onPhoto[index - columns];
}

QString place(CaptionPosition position)
{
    if (!isInBorder(position))
        return QStringLiteral("On the image");
    return indexOf(position) < columns ? QStringLiteral("Top border") : QStringLiteral("Bottom border");
}

QString inWords(CaptionPosition position)
{
    return QStringLiteral("%1, %2").arg(title(position).toLower(), place(position).toLower());
}

QString corner(CaptionPosition position)
{
    if (!isInBorder(position))
        return title(position);
    const QString row =
        position < CaptionPosition::borderBottomLeft ? QStringLiteral("Top %1") : QStringLiteral("Bottom %1");
    return row.arg(title(position).toLower());
}

QString spoken(CaptionPosition position)
{
    QString where = place(position);
    where[0] = where[0].toLower();
    return QStringLiteral("%1, %2, %3 of %4").arg(title(position), where).arg(indexOf(position) + 1).arg(spots);
}

QPointF Picture::spot(int index) const
{
    const int row = index / columns;
    const double xs[] = {photo.left() + spotInset, photo.center().x(), photo.right() - spotInset};
    const double ys[] = {(canvas.top() + photo.top()) / 2, photo.top() + rowInset, photo.center().y(),
                         photo.bottom() - rowInset, (photo.bottom() + canvas.bottom()) / 2};
    return {xs[index % columns], ys[row]};
}

double shownAspectRatio(double aspectRatio)
{
    return std::clamp(aspectRatio, leastRatio, greatestRatio);
}

Picture picture(double width, const FrameProportions& frame)
{
    const double aspectRatio = shownAspectRatio(frame.photo.aspectRatio());
    const double area = double(frame.photo.width) * double(frame.photo.height);
    const auto drawn = [&](double photoWidth) {
        const double scale = std::sqrt(photoWidth * photoWidth / aspectRatio / area);
        const SideLengths& around = frame.around;
        return SideLengths{std::max(around.top * scale, leastUpper), std::max(around.right * scale, leastSide),
                           std::max(around.bottom * scale, leastUpper), std::max(around.left * scale, leastSide)};
    };
    const auto fits = [&](double photoWidth) {
        const SideLengths around = drawn(photoWidth);
        return around.left + photoWidth + around.right <= width &&
               around.top + photoWidth / aspectRatio + around.bottom <= greatestHeight;
    };
    double photoWidth = std::max(leastPhotoWidth, leastPhotoHeight * aspectRatio);
    for (double tooWide = width; tooWide - photoWidth > 0.5;) {
        const double middle = (photoWidth + tooWide) / 2;
        (fits(middle) ? photoWidth : tooWide) = middle;
    }
    photoWidth = std::floor(photoWidth);
    const double photoHeight = std::round(photoWidth / aspectRatio);
    SideLengths around = drawn(photoWidth);
    shrink(around.left, around.right, leastSide, width - photoWidth);
    shrink(around.top, around.bottom, leastUpper, greatestHeight - photoHeight);

    const double canvasWidth = std::round(around.left + photoWidth + around.right);
    const double x = std::floor((width - canvasWidth) / 2);
    Picture picture;
    picture.canvas = QRectF(x, 0, canvasWidth, std::round(around.top + photoHeight + around.bottom));
    picture.photo = QRectF(x + std::round(around.left), std::round(around.top), photoWidth, photoHeight);
    return picture;
}

int spotAt(const Picture& picture, QPointF point)
{
    for (int i = 0; i < spots; ++i) {
        const QPointF away = point - picture.spot(i);
        if (std::abs(away.x()) <= targetSide / 2 && std::abs(away.y()) <= targetSide / 2)
            return i;
    }
    return -1;
}

} // namespace ferrow::PositionGrid
