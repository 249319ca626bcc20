// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/PreviewPane/RegionLoader.h"

#include "Engine/Answerer.h"
#include "Features/PreviewPane/PaintableImage.h"
#include "Imaging/ImageLoader.h"
#include "Imaging/ImageRenderer.h"
#include "Models/ErrorTexts.h"
#include "Persistence/ManagedLogoStore.h"
#include "Platform/Base/Cancellation.h"
#include "Platform/Pixels/Resampler.h"
#include "Session/ScreenImage.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace ferrow {

namespace {

bool isSameSubject(const RegionSubject& left, const RegionSubject& right)
{
    return left.photo.id() == right.photo.id() && left.outputSize == right.outputSize && left.recipe == right.recipe;
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

/// A logo that can't be loaded is left out, as in the preview.
Bitmap logoIfThere(const std::optional<LogoConfiguration>& configuration, const std::stop_token& stop)
{
    try {
        return ManagedLogoStore::loadIfEnabled(configuration, {}, stop).value_or(Bitmap());
    } catch (const LogoAssetError&) {
        return {};
    } catch (const SystemError&) {
        return {};
    }
}

Bitmap reduced(const Bitmap& picture, double scale)
{
    if (scale >= 1 || picture.isNull())
        return picture;
    const auto length = [scale](std::int64_t pixels) {
        return std::max<std::int64_t>(1, std::llround(double(pixels) * scale));
    };
    return Resampler::scaled(picture, {length(picture.size().width), length(picture.size().height)});
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

QImage RegionLoader::composed(const RegionRequest& request, const std::stop_token& stop)
{
    const auto& [photo, recipe, outputSize] = request.subject;
    const OpenedFile source = ImageLoader::openSource(photo.url);
    const Bitmap logo = logoIfThere(recipe.logo, stop);

    Engine::RegionRequest region;
    region.source = {source.descriptor(), source.size()};
    region.expectedSize = photo.pixelSize;
    region.composition = ImageRenderer::exportComposition(photo.pixelSize, recipe, photo.metadata, logo, stop);
    region.x = request.region.x();
    region.y = request.region.y();
    region.size = {request.region.width(), request.region.height()};
    const Bitmap pixels = Engine::answerer().composeRegion(region, stop);
    throwIfCancelled(stop);
    return paintableImage(screenImage(reduced(pixels, request.scale)));
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
            const LoadedRegion region{compose(request, stop), request.region, request.scale};
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
