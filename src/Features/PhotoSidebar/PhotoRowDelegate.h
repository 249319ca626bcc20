// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Session/PhotoListModel.h"
#include "Session/ThumbnailCache.h"

#include "Widgets/Icons.h"

#include <QStyledItemDelegate>

#include <optional>

namespace ferrow {

/// Of the picture of a photo that is left out.
inline constexpr double excludedPhotoOpacity = 0.45;

/// What a photo is marked with at the end of its name: how its export went, that it can't be read, its own framing.
struct RowMark {
    IconName icon;
    ColorRole color;
};
[[nodiscard]] std::optional<RowMark> rowMark(const PhotoListModel& model, int row);

/// Draws the rows of the photo list and knows where their parts lie.
class PhotoRowDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    PhotoRowDelegate(PhotoListModel& model, ThumbnailCache& thumbnails, QObject* parent = nullptr);

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    /// Parts of a row that the mouse acts on, in the coordinates of the row's own rectangle `row`.
    [[nodiscard]] static QRect checkTarget(const QRect& row);
    [[nodiscard]] static QRect removeButton(const QRect& row);

    /// While an export runs, boxes and remove buttons are disabled.
    void setLocked(bool locked) { locked_ = locked; }

private:
    void paintCheckBox(QPainter& painter, const QStyleOptionViewItem& row, bool checked) const;
    void paintThumbnail(QPainter& painter, const QRect& row, int index) const;
    void paintTexts(QPainter& painter, const QRect& row, int index, int right) const;
    [[nodiscard]] int paintTrailing(QPainter& painter, const QRect& row, int index, bool hovered) const;

    PhotoListModel& model_;
    ThumbnailCache& thumbnails_;
    bool locked_ = false;
};

} // namespace ferrow
