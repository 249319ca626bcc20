// SPDX-License-Identifier: GPL-3.0-or-later
#include "Session/ThumbnailCache.h"

#include "Session/ScreenImage.h"

#include <algorithm>

namespace ferrow {

namespace {

constexpr int keptImages = 400;        // Some twenty screens; 50 kB each at two device pixels a point.
constexpr std::size_t keptWishes = 60; // More rows than a screen shows: older wishes have been scrolled away.

} // namespace

ThumbnailCache::ThumbnailCache(PhotoSession& session, QObject* parent)
    : QObject(parent), session_(session), images_(keptImages), decoding_([this] { decodeNext(); })
{
}

QImage ThumbnailCache::image(const FileUrl& photoID, const QSize& box)
{
    if (box != box_) {
        box_ = box;
        images_.clear();
        decoding_.stop(); // It is for another size.
    }
    const CompressedPicture picture = session_.compressedThumbnail(photoID);
    if (picture.isNull())
        return {};
    if (const Decoded* decoded = images_.object(photoID.path()); decoded && decoded->picture == picture)
        return decoded->image;
    std::erase(wanted_, photoID);
    wanted_.push_back(photoID);
    if (wanted_.size() > keptWishes)
        wanted_.erase(wanted_.begin());
    decodeNext();
    return {};
}

void ThumbnailCache::decodeNext()
{
    if (decoding_.isBusy() || wanted_.empty())
        return;
    const FileUrl photoID = wanted_.back();
    wanted_.pop_back();
    const auto decode = [this, photoID, picture = session_.compressedThumbnail(photoID),
                         box = box_](const std::stop_token&) -> NewestTask::Deliver {
        QImage image = screenImage(picture.decoded());
        if (image.isNull())
            return {}; // The photo has left the list meanwhile; it may come back.
        if (image.width() > box.width() || image.height() > box.height())
            image = image.scaled(box, Qt::KeepAspectRatio, Qt::SmoothTransformation);
        const Decoded decoded{picture, image.convertToFormat(QImage::Format_ARGB32_Premultiplied)};
        return [this, photoID, decoded] { take(photoID, decoded); };
    };
    // Rows that are painted again ask again.
    decoding_.run(decode, [this](const std::exception_ptr&) { wanted_.clear(); });
}

void ThumbnailCache::take(const FileUrl& photoID, const Decoded& decoded)
{
    images_.insert(photoID.path(), new Decoded(decoded));
    emit ready(photoID);
}

} // namespace ferrow
