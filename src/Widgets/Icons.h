// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Widgets/Theme.h"

#include <QIcon>
#include <QPixmap>

#include <optional>

class QPushButton;

namespace ferrow {

enum class IconName {
    add,
    check,
    chevronDown,
    chevronRight,
    close,
    color,
    compare,
    dragHandle,
    error,
    exportPhotos,
    folder,
    info,
    link,
    logo,
    more,
    ownFraming,
    photo,
    presets,
    redo,
    remove,
    reset,
    search,
    separatorChip,
    settings,
    showInFolder,
    sidebar,
    sort,
    textChip,
    tilesLarge,
    tilesSmall,
    tokenChip,
    undo,
    unlink,
    warning,
    zoom100,
    zoomFit,
    zoomIn,
    zoomOut
};

/// An icon that draws itself in the theme's color of `role` at any size and scale, also after the theme has changed;
/// grayed when disabled.
[[nodiscard]] QIcon icon(IconName name, ColorRole role = &ThemeColors::text);

/// A pictogram of a frame whose width is `ratio` times its height; a dashed one where that is the photo's affair.
[[nodiscard]] QIcon shapeIcon(std::optional<double> ratio, ColorRole role = &ThemeColors::text2);

/// The icon as a square of `size` logical pixels at `scale` device pixels each. Does not follow the theme: for
/// painting.
[[nodiscard]] QPixmap iconPixmap(IconName name, int size, const QColor& color, double scale);

/// Paints the icon centered in `rect`, `size` logical pixels large.
void paintIcon(QPainter& painter, IconName name, const QRectF& rect, int size, const QColor& color);

/// A flat button of 32 x 32 with a tooltip; `text` is tooltip and accessible name.
[[nodiscard]] QPushButton* makeIconButton(IconName name, const QString& text, QWidget* parent = nullptr);

} // namespace ferrow
