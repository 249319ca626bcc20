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

constexpr double sideBorder = 26;
constexpr double upperBorder = 39;
constexpr double spotInset = 24; ///< From the photo's left and right edge.
constexpr double rowInset = 20;  ///< From its upper and lower edge.
constexpr double targetSide = 28;
constexpr double leastRatio = 0.8; ///< 4:5
constexpr double greatestRatio = 5.0 / 3;

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

Picture picture(double width, double aspectRatio)
{
    const double photoWidth = std::max(width - 2 * sideBorder, 1.0);
    const double photoHeight = std::round(photoWidth / shownAspectRatio(aspectRatio));
    Picture picture;
    picture.canvas = QRectF(0, 0, width, photoHeight + 2 * upperBorder);
    picture.photo = QRectF(sideBorder, upperBorder, photoWidth, photoHeight);
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
