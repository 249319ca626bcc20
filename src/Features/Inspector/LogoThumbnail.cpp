// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/LogoThumbnail.h"

#include "Features/Inspector/CheckerBoard.h"
#include "Persistence/ManagedLogoStore.h"
#include "Session/ScreenImage.h"
#include "Shared/UserFacingError.h"
#include "Widgets/Icons.h"
#include "Widgets/Theme.h"

#include <QPainter>
#include <QPainterPath>

namespace ferrow {

namespace {

constexpr int side = 72;
constexpr int pictureInset = 6;
/// Enough for a screen of three device pixels each.
constexpr std::int64_t loadedDimension = 216;
/// A logo is loaded quickly as a rule; a window that closes does not wait long for one that is not.
constexpr std::chrono::milliseconds patience{200};

} // namespace

LogoThumbnail::LogoThumbnail(Load load, QWidget* parent)
    : QWidget(parent), load_(std::move(load)), loading_({}, patience)
{
    if (!load_)
        load_ = [](const LogoAssetReference& asset, std::int64_t dimension, const std::stop_token& stop) {
            return ManagedLogoStore::load(asset, dimension, {}, stop);
        };
    setFixedSize(side, side);
}

void LogoThumbnail::setLogo(const std::optional<LogoAssetReference>& asset)
{
    if (asset == asset_)
        return;
    asset_ = asset;
    loading_.stop();
    showPicture({}, {});
    if (!asset)
        return;
    loading_.run(
        [this, asset = *asset, load = load_](const std::stop_token& stop) -> NewestTask::Deliver {
            return [this, picture = screenImage(load(asset, loadedDimension, stop))] { showPicture(picture, {}); };
        },
        [this](const std::exception_ptr& error) { showPicture({}, UserFacingError::message(error)); });
}

void LogoThumbnail::setDropTarget(bool isDropTarget)
{
    isDropTarget_ = isDropTarget;
    update();
}

void LogoThumbnail::showPicture(const QImage& picture, const QString& error)
{
    picture_ = picture;
    update();
    emit loaded(error);
}

QSize LogoThumbnail::sizeHint() const
{
    return {side, side};
}

void LogoThumbnail::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const double line = 1 / devicePixelRatioF();
    QPainterPath shape;
    shape.addRoundedRect(QRectF(rect()).adjusted(line / 2, line / 2, -line / 2, -line / 2), Radius::row, Radius::row);
    if (asset_) {
        painter.save();
        painter.setClipPath(shape);
        paintCheckerBoard(painter, rect());
        painter.restore();
    }
    const QRectF inside = QRectF(rect()).adjusted(pictureInset, pictureInset, -pictureInset, -pictureInset);
    if (!picture_.isNull()) {
        QRectF target(QPointF(), QSizeF(picture_.size()).scaled(inside.size(), Qt::KeepAspectRatio));
        target.moveCenter(inside.center());
        painter.drawImage(target, picture_);
    } else if (!asset_) {
        paintIcon(painter, IconName::logo, inside, Measure::icon + 8, themeColor(&ThemeColors::text2));
    }
    painter.setBrush(Qt::NoBrush);
    if (isDropTarget_) {
        const double half = Measure::dropFrame / 2.0;
        painter.setPen(QPen(themeColor(&ThemeColors::accent), Measure::dropFrame));
        painter.drawRoundedRect(QRectF(rect()).adjusted(half, half, -half, -half), Radius::row, Radius::row);
        return;
    }
    painter.setPen(QPen(themeColor(&ThemeColors::border), line));
    painter.drawPath(shape);
}

} // namespace ferrow
