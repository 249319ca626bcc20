// SPDX-License-Identifier: GPL-3.0-or-later
#include "Session/RegionLoader.h"

#include "Export/ImageExporter.h"
#include "Session/ScreenImage.h"

#include <algorithm>
#include <utility>

namespace ferrow {

namespace {

bool isSameSubject(const RegionSubject& left, const RegionSubject& right)
{
    return left.photo.id() == right.photo.id() && left.outputSize == right.outputSize && left.recipe == right.recipe &&
           left.photo.corrections == right.photo.corrections;
}

std::int64_t pixelCount(const QRect& rect)
{
    return std::int64_t(rect.width()) * rect.height();
}

/// A quarter of the view more on each side, where there is that much.
QRect withSurroundings(const QRect& visible, PixelSize output)
{
    const int x = visible.width() / 4;
    const int y = visible.height() / 4;
    const QRect wider = visible.adjusted(-x, -y, x, y).intersected(QRect(0, 0, int(output.width), int(output.height)));
    return pixelCount(wider) <= RegionLoader::maximumPixels ? wider : visible;
}

} // namespace

bool RegionLoader::Wish::covers(const QRect& visible, double wantedScale) const
{
    return scale == wantedScale && region.contains(visible);
}

RegionLoader::RegionLoader(Compose compose, std::chrono::milliseconds settling, QObject* parent)
    : QObject(parent), compose_(std::move(compose))
{
    settling_.setSingleShot(true);
    settling_.setInterval(settling);
    connect(&settling_, &QTimer::timeout, this, &RegionLoader::ask);
}

Bitmap RegionLoader::exported(const RegionRequest& request, const std::stop_token& stop)
{
    return ImageExporter::region(request.subject.photo, request.subject.recipe, request.region, request.scale, stop);
}

void RegionLoader::setSubject(const std::optional<RegionSubject>& subject)
{
    if (subject && subject_ && isSameSubject(*subject, *subject_))
        return;
    release();
    subject_ = subject;
    hasFailed_ = false;
    if (subject_)
        settling_.start();
    else
        settling_.stop();
}

void RegionLoader::want(const QRect& visible, double zoom)
{
    const double scale = std::min(zoom, 1.0);
    if (!subject_ || hasFailed_ || visible.isEmpty() || pixelCount(visible) > maximumPixels)
        return;
    if (wish_ && wish_->covers(visible, scale))
        return;
    wish_ = Wish{withSurroundings(visible, subject_->outputSize), scale};
    if (!settling_.isActive())
        ask();
}

void RegionLoader::release()
{
    task_.stop();
    wish_.reset();
    region_.reset();
}

void RegionLoader::ask()
{
    if (!subject_ || !wish_)
        return;
    const RegionRequest request{*subject_, wish_->region, wish_->scale};
    task_.run(
        [this, request, compose = compose_](const std::stop_token& stop) -> NewestTask::Deliver {
            const LoadedRegion region{paintableImage(compose(request, stop)), request.region, request.scale};
            return [this, region] { take(region); };
        },
        // The preview stays under it, and loading it has told the user already what is wrong with the file.
        [this](const std::exception_ptr&) { hasFailed_ = true; });
}

void RegionLoader::take(const LoadedRegion& region)
{
    if (region.image.isNull())
        return;
    region_ = region;
    emit loaded();
}

} // namespace ferrow
