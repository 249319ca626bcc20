// SPDX-License-Identifier: GPL-3.0-or-later
#include "Imaging/DecodeCache.h"

namespace ferrow {

std::size_t DecodeCache::KeyHash::operator()(const Key& key) const noexcept
{
    return qHashMulti(0, key.path, qint64(key.maximumDimension));
}

DecodeCache& DecodeCache::shared()
{
    static DecodeCache cache;
    return cache;
}

std::optional<Bitmap> DecodeCache::image(const Key& key)
{
    const std::scoped_lock guard(lock_);
    const auto entry = entries_.find(key);
    if (entry == entries_.end()) {
        ++misses_;
        return std::nullopt;
    }
    ++hits_;
    return entry->second;
}

void DecodeCache::store(const Bitmap& image, const Key& key)
{
    const std::scoped_lock guard(lock_);
    if (!entries_.emplace(key, image).second)
        return;
    insertionOrder_.push_back(key);
    while (insertionOrder_.size() > capacity) {
        entries_.erase(insertionOrder_.front());
        insertionOrder_.pop_front();
    }
}

std::int64_t DecodeCache::hits() const
{
    const std::scoped_lock guard(lock_);
    return hits_;
}

std::int64_t DecodeCache::misses() const
{
    const std::scoped_lock guard(lock_);
    return misses_;
}

} // namespace ferrow
