// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/ContactSheet/CellPainter.h"

#include "Features/ContactSheet/SheetLayout.h"
#include "Features/PhotoSidebar/PhotoRowDelegate.h"
#include "Features/PreviewPane/PreviewPicture.h"
#include "Platform/Base/Localization.h"
#include "Widgets/Icons.h"
#include "Widgets/ListRow.h"
#include "Widgets/Theme.h"

#include <QPainter>
#include <QStyleOption>
#include <QWidget>

namespace ferrow {

namespace {

/// From the tile's edge to where the name begins.
constexpr int textIndent = Measure::checkBox + Space::group;

QRect textBlock(const QRect& cell)
{
    const QRect tile = SheetLayout::tile(cell);
    return {tile.left(), tile.bottom() + 1 + Space::group, tile.width(), CellPainter::textHeight()};
}

QRect checkBox(const QRect& cell)
{
    const QRect text = textBlock(cell);
    const int line = Theme::current().lineHeight(TextRole::strong);
    return {text.left(), text.top() + (line - Measure::checkBox) / 2, Measure::checkBox, Measure::checkBox};
}

/// The same picture at another size, until the new one is there.
QRectF placeOf(const QImage& image, const QRect& room, double scale)
{
    QSizeF size(image.size());
    const QSizeF pixels = QSizeF(room.size()) * scale;
    const bool isOfThisRoom = image.width() == qRound(pixels.width()) || image.height() == qRound(pixels.height());
    const bool isTooLarge = size.width() > pixels.width() + 1 || size.height() > pixels.height() + 1;
    if (isTooLarge || !isOfThisRoom)
        size = size.scaled(isTooLarge ? pixels : size.boundedTo(pixels), Qt::KeepAspectRatio);
    QRectF place(QPointF(), size / scale);
    place.moveCenter(QRectF(room).center());
    // On whole device pixels.
    place.moveTopLeft((place.topLeft() * scale).toPoint().toPointF() / scale);
    return place;
}

} // namespace

CellPainter::CellPainter(const PhotoListModel& model, const PhotoSession& session, const ExportSession& exportSession,
                         const CellPictures& pictures)
    : model_(model), session_(session), exportSession_(exportSession), pictures_(pictures)
{
}

int CellPainter::textHeight()
{
    return Theme::current().lineHeight(TextRole::strong) + Theme::current().lineHeight(TextRole::small);
}

QRect CellPainter::checkTarget(const QRect& cell)
{
    constexpr int margin = (Measure::hitArea - Measure::checkBox) / 2 + 2;
    return checkBox(cell).adjusted(-margin, -margin, margin, margin);
}

void CellPainter::paint(QPainter& painter, const QRect& cell, int row, const State& state, const QWidget& sheet) const
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    QStyleOption ground;
    ground.state.setFlag(QStyle::State_Selected, state.isSelected);
    ground.state.setFlag(QStyle::State_HasFocus, state.hasFocusRing);
    paintListRow(painter, cell, ground, state.isHovered);
    paintPicture(painter, SheetLayout::tile(cell), row);
    paintCheckBox(painter, cell, row, state, sheet);
    paintTexts(painter, cell, row);
    painter.restore();
}

void CellPainter::paintPicture(QPainter& painter, const QRect& tile, int row) const
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(backdrop_);
    painter.drawRoundedRect(tile, Radius::control, Radius::control);
    const FileUrl& photoID = model_.photoID(row);
    const QImage image = pictures_.image(photoID);
    if (image.isNull())
        return;
    const QRectF place = placeOf(image, SheetLayout::pictureRoom(tile), painter.device()->devicePixelRatioF());
    painter.setOpacity(model_.isIncluded(row) ? 1 : excludedPhotoOpacity);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(place, image);
    if (needsHairline(session_.resolvedRecipe(photoID).border.color, backdrop_)) {
        painter.setPen(themeColor(&ThemeColors::border));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(place.adjusted(-0.5, -0.5, 0.5, 0.5));
    }
    painter.setOpacity(1);
}

void CellPainter::paintCheckBox(QPainter& painter, const QRect& cell, int row, const State& state,
                                const QWidget& sheet) const
{
    QStyleOption box;
    box.rect = checkBox(cell);
    box.state = QStyle::State_None;
    box.state.setFlag(QStyle::State_Enabled, !state.isLocked);
    box.state.setFlag(QStyle::State_On, model_.isIncluded(row));
    box.state.setFlag(QStyle::State_MouseOver, state.isOverBox);
    box.state.setFlag(QStyle::State_Sunken, state.isBoxPressed);
    sheet.style()->drawPrimitive(QStyle::PE_IndicatorItemViewItemCheck, &box, &painter, &sheet);
}

void CellPainter::paintTexts(QPainter& painter, const QRect& cell, int row) const
{
    const ImportedPhoto* photo = model_.photo(row);
    if (!photo)
        return;
    const Theme& theme = Theme::current();
    const int nameHeight = theme.lineHeight(TextRole::strong);
    const QRect block = textBlock(cell).adjusted(textIndent, 0, 0, 0);
    int right = block.right() + 1;
    if (const std::optional<RowMark> mark = rowMark(model_, row)) {
        const QRect place(right - Measure::fieldIcon, block.top() + (nameHeight - Measure::fieldIcon) / 2,
                          Measure::fieldIcon, Measure::fieldIcon);
        paintIcon(painter, mark->icon, place, Measure::fieldIcon, themeColor(mark->color));
        right = place.left() - Space::group;
    }
    constexpr int flags = int(Qt::AlignLeft) | int(Qt::AlignVCenter) | int(Qt::TextSingleLine);
    const QRect name(block.left(), block.top(), right - block.left(), nameHeight);
    painter.setFont(theme.font(TextRole::strong));
    painter.setPen(themeColor(model_.isIncluded(row) ? &ThemeColors::text : &ThemeColors::text2));
    painter.drawText(name, flags, painter.fontMetrics().elidedText(photo->filename(), Qt::ElideMiddle, name.width()));

    QRect second(block.left(), block.top() + nameHeight, block.width(), theme.lineHeight(TextRole::small));
    painter.setFont(theme.font(TextRole::small));
    const QStringList warnings = model_.warnings(row);
    QString text;
    if (warnings.isEmpty()) {
        const std::optional<PixelSize> size =
            framedSize(*photo, session_.resolvedRecipe(photo->id()), exportSession_.settings().size);
        text = size.value_or(photo->pixelSize).formatted();
        painter.setPen(themeColor(&ThemeColors::text2));
    } else {
        text = warnings.size() == 1
                   ? warnings.front()
                   : QStringLiteral("%1 warnings").arg(Localization::number(std::int64_t(warnings.size())));
        const QRect icon(second.left(), second.center().y() + 1 - Measure::chipIcon / 2, Measure::chipIcon,
                         Measure::chipIcon);
        paintIcon(painter, IconName::warning, icon, Measure::chipIcon, themeColor(&ThemeColors::warning));
        second.setLeft(icon.right() + 1 + Space::iconEdge);
        painter.setPen(themeColor(&ThemeColors::warning));
    }
    painter.drawText(second, flags, painter.fontMetrics().elidedText(text, Qt::ElideRight, second.width()));
}

} // namespace ferrow
