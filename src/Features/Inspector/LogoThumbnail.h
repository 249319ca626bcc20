// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/RenderRecipe.h"
#include "Platform/Pixels/Bitmap.h"
#include "Session/NewestTask.h"

#include <QImage>
#include <QWidget>

#include <cstdint>
#include <functional>
#include <optional>
#include <stop_token>

namespace ferrow {

/// The logo on the pattern that means transparent, 72 square. Loaded in the background.
class LogoThumbnail : public QWidget {
    Q_OBJECT

public:
    /// Called on a worker thread; throws LogoAssetError, SystemError and Canceled.
    using Load =
        std::function<Bitmap(const LogoAssetReference&, std::int64_t maximumDimension, const std::stop_token&)>;

    /// Without `load`: the managed logos.
    explicit LogoThumbnail(Load load = {}, QWidget* parent = nullptr);

    /// Absent: an empty frame.
    void setLogo(const std::optional<LogoAssetReference>& asset);
    /// Of the picture as it was loaded, which has the logo's proportion; empty without one.
    [[nodiscard]] PixelSize loadedSize() const { return {picture_.width(), picture_.height()}; }
    /// A file that would become the logo is over it.
    void setDropTarget(bool isDropTarget);

    QSize sizeHint() const override;

signals:
    /// The sentence for the user when the newest logo could not be loaded, and an empty text when it could.
    void loaded(const QString& error);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void showPicture(const QImage& picture, const QString& error);

    Load load_;
    std::optional<LogoAssetReference> asset_;
    QImage picture_;
    bool isDropTarget_ = false;
    NewestTask loading_;
};

} // namespace ferrow
