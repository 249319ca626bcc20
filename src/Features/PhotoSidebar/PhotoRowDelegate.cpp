// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/PhotoSidebar/PhotoRowDelegate.h"

#include "Widgets/Icons.h"
#include "Widgets/ListRow.h"
#include "Widgets/Theme.h"

#include <QApplication>
#include <QCursor>
#include <QPainter>
#include <QStyleOption>
#include <QWidget>

namespace ferrow {

namespace {

constexpr int rowHeight = 64;
constexpr int thumbnailWidth = 64;
constexpr int thumbnailHeight = 48;
constexpr int textGap = 10;

/// What the row's fill covers: the item without the inset at the sides and the gap below.
QRect rowFill(const QRect& item)
{
    return item.adjusted(Space::group, 0, -Space::group, -Space::rowGap);
}

QRect checkBox(const QRect& item)
{
    const QRect fill = rowFill(item);
    return {fill.left() + Space::group, fill.center().y() - Measure::checkBox / 2 + 1, Measure::checkBox,
            Measure::checkBox};
}

QRect thumbnailBox(const QRect& item)
{
    const QRect fill = rowFill(item);
    return {checkBox(item).right() + 1 + textGap, fill.center().y() - thumbnailHeight / 2 + 1, thumbnailWidth,
            thumbnailHeight};
}

} // namespace

std::optional<RowMark> rowMark(const PhotoListModel& model, int row)
{
    switch (model.exportState(row).value_or(PhotoExportState::waiting)) {
    case PhotoExportState::exporting:
        return RowMark{IconName::exportPhotos, &ThemeColors::accent};
    case PhotoExportState::exported:
        return RowMark{IconName::check, &ThemeColors::success};
    case PhotoExportState::failed:
        return RowMark{IconName::error, &ThemeColors::error};
    case PhotoExportState::skipped:
        return RowMark{IconName::info, &ThemeColors::text2};
    case PhotoExportState::waiting:
    case PhotoExportState::canceled:
        break;
    }
    if (model.isUnreadable(row))
        return RowMark{IconName::error, &ThemeColors::error};
    if (model.hasOwnFraming(row))
        return RowMark{IconName::ownFraming, model.areOwnFramingsUsed() ? &ThemeColors::accent : &ThemeColors::text2};
    return std::nullopt;
}

PhotoRowDelegate::PhotoRowDelegate(PhotoListModel& model, ThumbnailCache& thumbnails, QObject* parent)
    : QStyledItemDelegate(parent), model_(model), thumbnails_(thumbnails)
{
}

QRect PhotoRowDelegate::checkTarget(const QRect& row)
{
    const QRect box = checkBox(row);
    constexpr int margin = (Measure::hitArea - Measure::checkBox) / 2 + 2;
    return box.adjusted(-margin, -margin, margin, margin);
}

QRect PhotoRowDelegate::removeButton(const QRect& row)
{
    const QRect fill = rowFill(row);
    return {fill.right() + 1 - Space::group - Measure::smallControl, fill.center().y() - Measure::smallControl / 2 + 1,
            Measure::smallControl, Measure::smallControl};
}

QSize PhotoRowDelegate::sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const
{
    return {0, Theme::current().scaled(rowHeight) + Space::rowGap};
}

void PhotoRowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    const bool hovered = option.state.testFlag(QStyle::State_MouseOver) && !locked_;
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    paintListRow(*painter, rowFill(option.rect), option, hovered);
    paintCheckBox(*painter, option, model_.isIncluded(index.row()));
    paintThumbnail(*painter, option.rect, index.row());
    paintTexts(*painter, option.rect, index.row(), paintTrailing(*painter, option.rect, index.row(), hovered));
    painter->restore();
}

/// As the style draws the box of the list's header, its states too.
void PhotoRowDelegate::paintCheckBox(QPainter& painter, const QStyleOptionViewItem& row, bool checked) const
{
    QStyleOption box;
    box.rect = checkBox(row.rect);
    box.state = QStyle::State_None;
    box.state.setFlag(QStyle::State_Enabled, !locked_);
    box.state.setFlag(QStyle::State_On, checked);
    const QWidget* list = row.widget;
    if (list && row.state.testFlag(QStyle::State_MouseOver)) {
        const bool isOver = checkTarget(row.rect).contains(list->mapFromGlobal(QCursor::pos()));
        box.state.setFlag(QStyle::State_MouseOver, isOver);
        box.state.setFlag(QStyle::State_Sunken, isOver && QGuiApplication::mouseButtons().testFlag(Qt::LeftButton));
    }
    (list ? list->style() : QApplication::style())
        ->drawPrimitive(QStyle::PE_IndicatorItemViewItemCheck, &box, &painter, list);
}

void PhotoRowDelegate::paintThumbnail(QPainter& painter, const QRect& row, int index) const
{
    const QRect box = thumbnailBox(row);
    const double scale = painter.device()->devicePixelRatioF();
    const QImage image = thumbnails_.image(model_.photoID(index), box.size() * scale);
    painter.setOpacity(model_.isIncluded(index) ? 1 : excludedPhotoOpacity);
    if (image.isNull()) {
        painter.fillRect(box, themeColor(&ThemeColors::fill));
    } else {
        QRectF place(QPointF(), QSizeF(image.size()) / scale);
        place.moveCenter(QRectF(box).center());
        // On whole device pixels, where it was scaled for.
        place.moveTopLeft((place.topLeft() * scale).toPoint().toPointF() / scale);
        painter.drawImage(place, image);
    }
    painter.setOpacity(1);
}

void PhotoRowDelegate::paintTexts(QPainter& painter, const QRect& row, int index, int right) const
{
    const ImportedPhoto* photo = model_.photo(index);
    if (!photo)
        return;
    const Theme& theme = Theme::current();
    const int left = thumbnailBox(row).right() + 1 + textGap;
    const int width = right - left;
    const int nameHeight = theme.lineHeight(TextRole::strong);
    const int sizeHeight = theme.lineHeight(TextRole::small);
    const int top = rowFill(row).center().y() + 1 - (nameHeight + sizeHeight) / 2;

    const bool included = model_.isIncluded(index);
    painter.setFont(theme.font(TextRole::strong));
    painter.setPen(themeColor(included ? &ThemeColors::text : &ThemeColors::text2));
    painter.drawText(QRect(left, top, width, nameHeight), Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                     painter.fontMetrics().elidedText(photo->filename(), Qt::ElideMiddle, width));
    painter.setFont(theme.font(TextRole::small));
    painter.setPen(themeColor(&ThemeColors::text2));
    painter.drawText(QRect(left, top + nameHeight, width, sizeHeight),
                     Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                     painter.fontMetrics().elidedText(photo->pixelSize.formatted(), Qt::ElideRight, width));
}

int PhotoRowDelegate::paintTrailing(QPainter& painter, const QRect& row, int index, bool hovered) const
{
    const QRect button = removeButton(row);
    const QRect mark(button.right() + 1 - Measure::fieldIcon - Space::iconEdge,
                     button.center().y() + 1 - Measure::fieldIcon / 2, Measure::fieldIcon, Measure::fieldIcon);
    if (hovered) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(themeColor(&ThemeColors::pressed));
        painter.drawRoundedRect(button, Radius::control, Radius::control);
        paintIcon(painter, IconName::remove, button, Measure::fieldIcon, themeColor(&ThemeColors::text));
        return button.left() - Space::group;
    }
    const std::optional<RowMark> shown = rowMark(model_, index);
    if (!shown)
        return rowFill(row).right() - Space::group;
    paintIcon(painter, shown->icon, mark, Measure::fieldIcon, themeColor(shown->color));
    return mark.left() - Space::group;
}

} // namespace ferrow
