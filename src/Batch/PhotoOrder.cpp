// SPDX-License-Identifier: GPL-3.0-or-later
#include "Batch/PhotoOrder.h"

#include "Platform/Base/Localization.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <utility>

namespace ferrow {

namespace {

bool hasNamesDownwards(const PhotoOrder& order)
{
    return order.key == PhotoOrder::Key::name && order.isDescending;
}

} // namespace

std::int64_t orderRank(const ImportedPhoto& photo, const PhotoOrder& order)
{
    const auto directed = [&order](std::int64_t number) { return order.isDescending ? -number : number; };
    switch (order.key) {
    case PhotoOrder::Key::name:
        return 0;
    case PhotoOrder::Key::captureDate: {
        const std::optional<QDateTime> date = photo.captionMetadata().captureDate;
        return date ? directed(date->toMSecsSinceEpoch()) : std::numeric_limits<std::int64_t>::max();
    }
    case PhotoOrder::Key::added:
        break;
    }
    return directed(photo.addedAt);
}

bool precedes(const ImportedPhoto& left, const ImportedPhoto& right, const PhotoOrder& order)
{
    const std::int64_t leftRank = orderRank(left, order);
    const std::int64_t rightRank = orderRank(right, order);
    if (leftRank != rightRank)
        return leftRank < rightRank;
    const int names = Localization::standardCompare(left.filename(), right.filename());
    return hasNamesDownwards(order) ? names > 0 : names < 0;
}

void sortPhotos(std::vector<ImportedPhoto>& photos, const PhotoOrder& order)
{
    struct Key {
        std::int64_t rank = 0;
        QByteArray name;
        std::size_t index = 0;
    };
    std::vector<Key> keys;
    keys.reserve(photos.size());
    for (const ImportedPhoto& photo : photos)
        keys.push_back({orderRank(photo, order), Localization::sortKey(photo.filename()), keys.size()});
    std::ranges::stable_sort(keys, [downwards = hasNamesDownwards(order)](const Key& left, const Key& right) {
        if (left.rank != right.rank)
            return left.rank < right.rank;
        return downwards ? right.name < left.name : left.name < right.name;
    });
    std::vector<ImportedPhoto> sorted;
    sorted.reserve(photos.size());
    for (const Key& key : keys)
        sorted.push_back(std::move(photos[key.index]));
    photos = std::move(sorted);
}

} // namespace ferrow
