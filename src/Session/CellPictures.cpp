// SPDX-License-Identifier: GPL-3.0-or-later
#include "Session/CellPictures.h"

#include "Imaging/ImageLoader.h"
#include "Imaging/ImageRenderer.h"
#include "Models/ErrorTexts.h"
#include "Persistence/ManagedLogoStore.h"
#include "Platform/Base/Cancellation.h"
#include "Platform/Pixels/ColorTransform.h"
#include "Platform/Pixels/Resampler.h"
#include "Session/ScreenImage.h"

#include <algorithm>
#include <array>
#include <exception>
#include <system_error>
#include <thread>
#include <unordered_set>
#include <utility>

namespace ferrow {

namespace {

/// Finished pictures are seen as they are; 0.9, as thumbnails have it, would be seen around letters.
constexpr double cellQuality = 0.95;
/// Kilobytes of pictures ready to paint. What is in sight at once never has more pixels than the screen: 33 MB on one
/// of 3,840 by 2,160.
constexpr int paintedKilobytes = 48'000;
/// Longest side that a logo is drawn from: it is seldom a third as long in a cell.
constexpr std::int64_t logoDimension = 800;
/// Photos are read at these sizes alone, so that another size of the cells seldom reads them again.
constexpr std::array<std::int64_t, 3> readDimensions{400, 800, 1'600};

int threadCount()
{
    return std::clamp(int(std::thread::hardware_concurrency()), 1, 4);
}

/// The photo's longest side within the frame, when that is drawn as large as `canvas`.
double wantedDimension(PixelSize photo, const RenderRecipe& recipe, PixelSize canvas)
{
    const PixelSize full = RenderLayout::framedLayout(photo, recipe).canvasSize;
    return double(photo.longestSide()) * double(canvas.longestSide()) / double(full.longestSide());
}

std::int64_t readDimension(double wanted)
{
    const auto enough =
        std::ranges::find_if(readDimensions, [wanted](std::int64_t each) { return double(each) >= wanted; });
    return enough == readDimensions.end() ? readDimensions.back() : *enough;
}

/// Takes out those used longest ago, but for what is in sight, until `bytes` are within the bound.
template <typename Map>
void shrink(Map& map, qsizetype& bytes, const std::vector<FileUrl>& inSight)
{
    if (bytes <= CellPictures::keptBytes)
        return;
    const std::unordered_set<FileUrl> seen(inSight.begin(), inSight.end());
    std::vector<std::pair<std::int64_t, typename Map::key_type>> byAge;
    for (const auto& [photoID, entry] : map)
        if (!seen.contains(photoID))
            byAge.emplace_back(entry.usedAt, photoID);
    std::ranges::sort(byAge, {}, [](const auto& each) { return each.first; });
    // Down to nine tenths: sorting for each new picture would cost more than composing it.
    for (const auto& [usedAt, photoID] : byAge) {
        if (bytes <= CellPictures::keptBytes / 10 * 9)
            break;
        const auto entry = map.find(photoID);
        bytes -= entry->second.picture.byteCount();
        map.erase(entry);
    }
}

/// Exchanges an entry's picture and keeps the sum right.
template <typename Entry>
void exchangePicture(Entry& entry, const CompressedPicture& picture, qsizetype& bytes)
{
    bytes += picture.byteCount() - entry.picture.byteCount();
    entry.picture = picture;
}

} // namespace

/// What has to be done for one cell: decoding what is kept, or composing anew.
struct CellPictures::Job {
    FileUrl photoID;
    CompressedPicture finished; ///< Is to be decoded, and nothing else done.
    CompressedPicture photo;    ///< To compose from; none where the file has to be read first.
    std::int64_t readDimension = 0;
    PixelSize pixelSize;
    PhotoMetadata metadata;
    Origin origin;
};

struct CellPictures::Outcome {
    enum class Kind {
        canceled,
        decoded,
        composed,
        unreadable,
        failed, ///< There is nothing to be seen of this framing.
    };

    Kind kind = Kind::canceled;
    QImage image;
    CompressedPicture picture; ///< Where it was composed.
    CompressedPicture reduced; ///< Of a file that was read.
    std::int64_t readDimension = 0;
    Origin origin;
};

CellPictures::Operations CellPictures::Operations::system()
{
    return {.load =
                [](const FileUrl& url, std::int64_t maximumDimension, const std::stop_token& stop) {
                    return ImageLoader::load(url, maximumDimension, stop).previewSource;
                },
            .loadLogo = [](const std::optional<LogoConfiguration>& logo,
                           const std::stop_token& stop) -> std::optional<Bitmap> {
                if (!logo || !logo->isEnabled)
                    return std::nullopt;
                return ManagedLogoStore::load(logo->asset, logoDimension, {}, stop);
            }};
}

CellPictures::CellPictures(PhotoSession& session, Operations operations, QObject* parent)
    : QObject(parent), session_(session), operations_(std::move(operations)), painted_(paintedKilobytes),
      threads_(threadCount()), work_(std::make_unique<WorkQueue>(threads_))
{
    for (const auto signal : {&PhotoSession::batchRecipeChanged, &PhotoSession::photoRecipesChanged,
                              &PhotoSession::recipeScopeChanged, &PhotoSession::correctionsChanged})
        connect(&session_, signal, this, &CellPictures::renew);
    connect(&session_, &PhotoSession::photosChanged, this, [this] {
        forgetRemoved();
        renew();
    });
}

CellPictures::~CellPictures()
{
    for (auto& [photoID, stop] : running_)
        stop.request_stop();
}

void CellPictures::setInSight(std::vector<FileUrl> photoIDs, QSize room)
{
    if (photoIDs == inSight_ && room == room_)
        return;
    inSight_ = std::move(photoIDs);
    room_ = room;
    const std::unordered_set<FileUrl> seen(inSight_.begin(), inSight_.end());
    for (auto& [photoID, stop] : running_)
        if (!seen.contains(photoID))
            stop.request_stop();
    renew();
}

QImage CellPictures::image(const FileUrl& photoID) const
{
    const QImage* image = painted_.object(photoID.path());
    return image ? *image : QImage();
}

const std::shared_ptr<const RenderRecipe>& CellPictures::shared(const RenderRecipe& recipe)
{
    if (!recipe_ || *recipe_ != recipe)
        recipe_ = std::make_shared<const RenderRecipe>(recipe);
    return recipe_;
}

/// Whether what is kept is of the present framing.
bool CellPictures::isCurrent(const FileUrl& photoID) const
{
    const auto found = kept_.find(photoID);
    const ImportedPhoto* photo = session_.photo(photoID);
    if (found == kept_.end() || !photo)
        return false;
    const Origin& origin = found->second.origin;
    const RenderRecipe& recipe = session_.resolvedRecipe(photoID);
    return origin.isFinal && origin.room == room_ && origin.corrections == photo->corrections && origin.recipe &&
           *origin.recipe == recipe;
}

bool CellPictures::isWanted(const FileUrl& photoID) const
{
    return session_.photo(photoID) && (!isCurrent(photoID) || !painted_.contains(photoID.path()));
}

void CellPictures::renew()
{
    waiting_.clear();
    for (const FileUrl& photoID : inSight_)
        if (isWanted(photoID))
            waiting_.push_back(photoID);
    // Those of which nothing is seen come first, then those not composed for longest: during a drag all cells follow,
    // and not the first ones alone.
    const auto turn = [this](const FileUrl& photoID) {
        const auto found = kept_.find(photoID);
        return !painted_.contains(photoID.path()) || found == kept_.end() ? -1 : found->second.usedAt;
    };
    std::ranges::stable_sort(waiting_, {}, turn);
    std::ranges::reverse(waiting_);
    startNext();
}

void CellPictures::startNext()
{
    while (int(running_.size()) < threads_ && !waiting_.empty()) {
        const FileUrl photoID = waiting_.back();
        waiting_.pop_back();
        if (running_.contains(photoID))
            continue; // Its end looks whether it was enough.
        const std::optional<Job> job = jobFor(photoID);
        if (!job)
            continue;
        std::stop_source& stop = running_[photoID];
        stop = std::stop_source();
        const auto work = [this, job = *job, operations = operations_, token = stop.get_token(),
                           sender = relay_.sender()] {
            Outcome outcome = outcomeOf(job, operations, token);
            sender.post([this, photoID = job.photoID, outcome] { finish(photoID, outcome); });
        };
        try {
            work_->post(work);
        } catch (const std::system_error&) {
            // The system allows no thread: another scroll or edit asks again.
            running_.erase(photoID);
            waiting_.clear();
        }
    }
}

std::optional<CellPictures::Job> CellPictures::jobFor(const FileUrl& photoID)
{
    const ImportedPhoto* photo = session_.photo(photoID);
    if (!photo)
        return std::nullopt;
    Job job;
    job.photoID = photoID;
    if (const auto found = kept_.find(photoID); found != kept_.end() && !found->second.picture.isNull() &&
                                                (isCurrent(photoID) || !painted_.contains(photoID.path()))) {
        // What there was is seen at once, and replaced.
        job.finished = found->second.picture;
        job.origin = found->second.origin;
        return job;
    }
    if (isCurrent(photoID))
        return std::nullopt; // There is no picture of it.
    job.pixelSize = photo->pixelSize;
    job.metadata = photo->captionMetadata();
    job.origin = {shared(session_.resolvedRecipe(photoID)), photo->corrections, room_};
    double wanted = 0;
    try {
        const RenderRecipe& recipe = *job.origin.recipe;
        wanted =
            wantedDimension(photo->pixelSize, recipe,
                            ImageRenderer::fittedCanvas(photo->pixelSize, recipe, {room_.width(), room_.height()}));
    } catch (const ImagePipelineError&) {
        // Composing it will say so.
    }
    job.photo = session_.compressedThumbnail(photoID);
    const auto thumbnailSide =
        std::min<double>(double(photo->pixelSize.longestSide()), double(ImageLoader::batchThumbnailDimension));
    if (wanted <= thumbnailSide && !job.photo.isNull())
        return job;
    job.readDimension = readDimension(wanted);
    if (const auto found = reduced_.find(photoID);
        found != reduced_.end() && found->second.dimension >= job.readDimension) {
        found->second.usedAt = ++clock_;
        job.photo = found->second.picture;
        return job;
    }
    // First what can be had at once, where nothing is seen yet.
    job.origin.isFinal = painted_.contains(photoID.path()) || job.photo.isNull();
    if (job.origin.isFinal)
        job.photo = {};
    return job;
}

CellPictures::Outcome CellPictures::outcomeOf(const Job& job, const Operations& operations, const std::stop_token& stop)
{
    Outcome outcome;
    outcome.origin = job.origin;
    try {
        throwIfCanceled(stop);
        if (!job.finished.isNull()) {
            outcome.image = paintableImage(job.finished.decoded());
            outcome.kind = Outcome::Kind::decoded;
            return outcome;
        }
        Bitmap photo = job.photo.decoded();
        if (photo.isNull()) {
            try {
                photo = operations.load(job.photoID, job.readDimension, stop);
            } catch (const ImagePipelineError&) {
                outcome.kind = Outcome::Kind::unreadable;
                return outcome;
            }
            outcome.reduced = CompressedPicture::compress(photo, cellQuality);
            outcome.readDimension = job.readDimension;
        }
        const RenderRecipe& recipe = *job.origin.recipe;
        Bitmap logo;
        try {
            logo = operations.loadLogo(recipe.logo, stop).value_or(Bitmap());
        } catch (const Canceled&) {
            throw;
        } catch (...) {
            // It is left out, as in the preview; the warnings say why.
        }
        const PixelSize canvas =
            ImageRenderer::fittedCanvas(job.pixelSize, recipe, {job.origin.room.width(), job.origin.room.height()});
        const Bitmap composed =
            inColorSpace(ImageRenderer::renderReduced(photo, job.pixelSize, recipe, job.metadata, logo, canvas, stop),
                         ColorProfile::sRGB());
        outcome.picture = CompressedPicture::compress(composed, cellQuality);
        outcome.image = paintableImage(composed);
        outcome.kind = Outcome::Kind::composed;
    } catch (const Canceled&) {
        outcome.kind = Outcome::Kind::canceled;
    } catch (...) {
        outcome.kind = Outcome::Kind::failed;
    }
    return outcome;
}

void CellPictures::finish(const FileUrl& photoID, Outcome outcome)
{
    const auto running = running_.find(photoID);
    running_.erase(running);
    if (session_.photo(photoID)) {
        keep(photoID, outcome);
        if (!outcome.image.isNull()) {
            const auto cost = std::max<int>(int(outcome.image.sizeInBytes() / 1'000), 1);
            painted_.insert(photoID.path(), new QImage(outcome.image), cost);
            emit changed(photoID);
        }
        if (outcome.kind == Outcome::Kind::unreadable)
            emit unreadable(photoID);
        // It may have been edited meanwhile, or was a stand-in: its next turn comes after those that wait.
        if (isWanted(photoID) && std::ranges::find(inSight_, photoID) != inSight_.end() &&
            std::ranges::find(waiting_, photoID) == waiting_.end())
            waiting_.insert(waiting_.begin(), photoID);
    }
    startNext();
}

void CellPictures::keep(const FileUrl& photoID, const Outcome& outcome)
{
    if (!outcome.reduced.isNull()) {
        Reduced& reduced = reduced_[photoID];
        exchangePicture(reduced, outcome.reduced, reducedNow_);
        reduced.dimension = outcome.readDimension;
        reduced.usedAt = ++clock_;
        shrink(reduced_, reducedNow_, inSight_);
    }
    if (outcome.kind == Outcome::Kind::canceled)
        return;
    Kept& kept = kept_[photoID];
    kept.usedAt = ++clock_;
    if (outcome.kind == Outcome::Kind::decoded) {
        if (!outcome.image.isNull())
            return;
        // It is composed anew.
        exchangePicture(kept, {}, keptNow_);
        kept.origin = {};
        return;
    }
    kept.origin = outcome.origin;
    // A photo that can't be read any more stays as it was seen last, and is not read again for the same.
    if (outcome.kind != Outcome::Kind::unreadable)
        exchangePicture(kept, outcome.picture, keptNow_);
    shrink(kept_, keptNow_, inSight_);
}

void CellPictures::forgetRemoved()
{
    const auto forget = [this](auto& map, qsizetype& bytes) {
        std::erase_if(map, [&](const auto& entry) {
            if (session_.indexOf(entry.first))
                return false;
            bytes -= entry.second.picture.byteCount();
            return true;
        });
    };
    forget(kept_, keptNow_);
    forget(reduced_, reducedNow_);
}

} // namespace ferrow
