// SPDX-License-Identifier: GPL-3.0-or-later
#include "Session/PreviewRenderQueue.h"

#include "Imaging/ExportLayout.h"
#include "Imaging/ImageRenderer.h"
#include "Imaging/RenderLayout.h"
#include "Persistence/ManagedLogoStore.h"
#include "Platform/Base/Cancellation.h"
#include "Platform/Pixels/ColorTransform.h"
#include "Platform/Pixels/Resampler.h"
#include "Shared/UserFacingError.h"

#include <QTimer>

#include <algorithm>
#include <cmath>
#include <utility>

namespace ferrow {

namespace {

double scaleOf(PixelSize picture, PixelSize original)
{
    return std::min(double(picture.width) / double(original.width), double(picture.height) / double(original.height));
}

/// The source, or a smaller one where the frame around it would grow beyond what a screen shows.
Bitmap boundedSource(const Bitmap& source, PixelSize canvas)
{
    const double factor = PreviewRenderQueue::maximumSide / double(canvas.longestSide());
    if (factor >= 1)
        return source;
    const auto shrunk = [factor](std::int64_t side) { return std::max(std::llround(double(side) * factor), 1LL); };
    return Resampler::scaled(source, {shrunk(source.size().width), shrunk(source.size().height)});
}

/// The layout counts from the bottom left corner.
QRectF fromTop(const RenderLayout& layout)
{
    const QRectF& rect = layout.imageRect;
    return {rect.x(), double(layout.canvasSize.height) - rect.y() - rect.height(), rect.width(), rect.height()};
}

PreviewResult framed(PreviewRequest request, const Bitmap& logo, const PreviewRenderQueue::Operations& operations,
                     const std::stop_token& stop)
{
    PreviewResult result;
    if (!request.source.isNull() && request.pixelSize.width > 0 && request.pixelSize.height > 0) {
        result.outputSize = largestLayout(request.pixelSize, request.recipe, request.outputSize).layout.canvasSize;
        const double scale = scaleOf(request.source.size(), request.pixelSize);
        request.source =
            boundedSource(request.source, RenderLayout::calculate(request.pixelSize, request.recipe, scale).canvasSize);
    }
    result.picture = inColorSpace(operations.render(request, logo, stop), ColorProfile::sRGB());
    const double scale = scaleOf(request.source.size(), request.pixelSize);
    result.photoRect = fromTop(RenderLayout::calculate(request.pixelSize, request.recipe, scale));
    result.photoID = std::move(request.photoID);
    result.recipe = std::move(request.recipe);
    return result;
}

} // namespace

/// What a render came to: a result, or why there is none.
struct PreviewRenderQueue::Outcome {
    FileUrl photoID;
    std::optional<PreviewResult> result = {};
    QString failure = {};
    QString logoFilename = {}; ///< That was loaded, or could not be.
    QString logoFailure = {};
};

PreviewRenderQueue::Operations PreviewRenderQueue::Operations::system()
{
    return {.render =
                [](const PreviewRequest& request, const Bitmap& logo, const std::stop_token& stop) {
                    return ImageRenderer::render(request.source, request.pixelSize, request.recipe, request.metadata,
                                                 logo, ImageRenderer::SourceScale::fromSource, stop);
                },
            .loadLogo = [](const std::optional<LogoConfiguration>& logo,
                           const std::stop_token& stop) { return ManagedLogoStore::loadIfEnabled(logo, {}, stop); },
            .now = &Clock::now,
            .callLater = {}};
}

PreviewRenderQueue::PreviewRenderQueue(Operations operations, QObject* parent)
    : QObject(parent), operations_(std::move(operations)), render_([this] { startIfPossible(); })
{
    if (!operations_.callLater)
        operations_.callLater = [this](std::chrono::milliseconds delay, const std::function<void()>& call) {
            QTimer::singleShot(delay, Qt::PreciseTimer, this, call);
        };
}

void PreviewRenderQueue::request(PreviewRequest request)
{
    if (currentPhoto_ != request.photoID) {
        clear();
        currentPhoto_ = request.photoID;
    }
    pending_ = std::move(request);
    startIfPossible();
}

void PreviewRenderQueue::clear()
{
    render_.stop();
    pending_.reset();
    currentPhoto_.reset();
}

void PreviewRenderQueue::startIfPossible()
{
    if (render_.isBusy() || isWaiting_ || !pending_)
        return;
    const Clock::time_point now = operations_.now();
    if (lastStart_ && now < *lastStart_ + minimumInterval) {
        isWaiting_ = true;
        const auto rest = std::chrono::ceil<std::chrono::milliseconds>(*lastStart_ + minimumInterval - now);
        operations_.callLater(rest, [this] {
            isWaiting_ = false;
            startIfPossible();
        });
        return;
    }
    lastStart_ = now;
    const FileUrl photoID = pending_->photoID;
    render_.run(
        [this, request = *std::exchange(pending_, std::nullopt),
         operations = operations_](const std::stop_token& stop) -> NewestTask::Deliver {
            const Outcome outcome = outcomeOf(request, operations, stop);
            return [this, outcome] { finish(outcome); };
        },
        [this, photoID](const std::exception_ptr& error) {
            finish({.photoID = photoID, .failure = UserFacingError::message(error)});
        });
}

PreviewRenderQueue::Outcome PreviewRenderQueue::outcomeOf(const PreviewRequest& request, const Operations& operations,
                                                          const std::stop_token& stop)
{
    Outcome outcome;
    outcome.photoID = request.photoID;
    Bitmap logo;
    try {
        logo = operations.loadLogo(request.recipe.logo, stop).value_or(Bitmap());
        if (!logo.isNull())
            outcome.logoFilename = request.recipe.logo->asset.managedFilename;
    } catch (const Canceled&) {
        throw;
    } catch (...) {
        outcome.logoFilename = request.recipe.logo ? request.recipe.logo->asset.managedFilename : QString();
        outcome.logoFailure = UserFacingError::message(std::current_exception());
    }
    try {
        outcome.result = framed(request, logo, operations, stop);
    } catch (const Canceled&) {
        throw;
    } catch (...) {
        outcome.failure = UserFacingError::message(std::current_exception());
    }
    return outcome;
}

void PreviewRenderQueue::finish(const Outcome& outcome)
{
    reportLogo(outcome);
    if (outcome.result)
        emit rendered(*outcome.result);
    else if (!pending_)
        emit failed(outcome.photoID, outcome.failure);
}

void PreviewRenderQueue::reportLogo(const Outcome& outcome)
{
    if (outcome.logoFailure.isEmpty()) {
        // A photo without a logo says nothing of it.
        if (outcome.logoFilename.isEmpty())
            return;
        if (std::exchange(reportedLogo_, std::nullopt) == outcome.logoFilename)
            emit logoFound();
        return;
    }
    if (std::exchange(reportedLogo_, outcome.logoFilename) != outcome.logoFilename)
        emit logoFailed(outcome.logoFailure);
}

} // namespace ferrow
