// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/FileUrl.h"
#include "Platform/Pixels/Bitmap.h"

#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <unordered_map>

namespace ferrow {

/// A handful of decoded pictures by file and requested size, oldest out first. Thread-safe; nothing is called out to
/// while its lock is held.
class DecodeCache {
public:
    struct Key {
        QByteArray path;
        std::int64_t maximumDimension = 0;

        bool operator==(const Key&) const = default;
    };

    /// Small on purpose: each entry may be a full logo picture.
    static constexpr std::size_t capacity = 4;

    [[nodiscard]] static DecodeCache& shared();

    [[nodiscard]] std::optional<Bitmap> image(const Key& key);
    /// Keeps what is already there under `key`. Looking an entry up never makes it younger.
    void store(const Bitmap& image, const Key& key);

    [[nodiscard]] std::int64_t hits() const;
    [[nodiscard]] std::int64_t misses() const;

private:
    struct KeyHash {
        std::size_t operator()(const Key& key) const noexcept;
    };

    mutable std::mutex lock_;
    std::unordered_map<Key, Bitmap, KeyHash> entries_;
    std::deque<Key> insertionOrder_;
    std::int64_t hits_ = 0;
    std::int64_t misses_ = 0;
};

} // namespace ferrow
