// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Pixels/PictureSums.h"

#include "Platform/Pixels/PixelRows.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>

namespace ferrow {

namespace {

/// In large cells every so many rows are compared with the one above: changes are an allowance, not a proof.
constexpr std::int64_t rowsAChange = 4;

constexpr double partsOfLevel = 256;

/// Four words at a time, since each multiplication waits for the one before it. Against damage, not against intent.
std::uint64_t digestOf(const std::byte* bytes, std::size_t length, std::uint64_t seed)
{
    constexpr std::uint64_t odd = 0x9E3779B97F4A7C15; // 2⁶⁴ divided by the golden ratio: its bits follow no pattern.
    std::array<std::uint64_t, 4> lanes{seed, ~seed, seed + odd, length};
    const auto mix = [](std::uint64_t lane, std::uint64_t word) { return std::rotl((lane ^ word) * odd, 29); };
    while (length > 0) {
        std::array<std::uint64_t, 4> words{};
        const std::size_t count = std::min(length, sizeof words);
        std::memcpy(words.data(), bytes, count);
        for (std::size_t i = 0; i < lanes.size(); ++i)
            lanes[i] = mix(lanes[i], words[i]);
        bytes += count;
        length -= count;
    }
    return mix(mix(mix(lanes[0], lanes[1]), lanes[2]), lanes[3]);
}

std::int64_t cellsAlong(std::int64_t side)
{
    return std::clamp<std::int64_t>(side / PictureSummer::cellSide, 1, PictureSummer::gridSide);
}

std::uint16_t partsOf(std::uint64_t sum, std::int64_t count)
{
    return std::uint16_t((double(sum) / double(count)) * partsOfLevel + 0.5);
}

} // namespace

PictureSummer::PictureSummer(PixelSize size, PixelFormat format, Kind kind)
    : size_(size), format_(format), kind_(kind),
      rowBytes_(std::size_t(size.width) * std::size_t(format.bytesPerPixel())),
      rowLevels_(std::size_t(size.width) * std::size_t(format.channels())), columns_(cellsAlong(size.width)),
      gridRows_(cellsAlong(size.height)), changeStep_(size.height >= 2 * rowsAChange * gridSide ? rowsAChange : 1)
{
    if (kind_ == Kind::exact)
        return;
    levels_.resize(rowLevels_);
    changes_.resize(rowLevels_);
    cells_.reserve(std::size_t(columns_ * gridRows_));
}

void PictureSummer::add(std::int64_t count, const std::byte* rows, std::size_t stride)
{
    for (std::int64_t i = 0; i < count; ++i, rows += stride)
        if (kind_ == Kind::exact)
            digest_ = digestOf(rows, rowBytes_, digest_);
        else
            addRoughly(rows);
}

void PictureSummer::addRoughly(const std::byte* row)
{
    if (format_.bitsPerComponent == 8) {
        addLevels(reinterpret_cast<const std::uint8_t*>(row));
        return;
    }
    reduced_.resize(rowLevels_);
    for (std::size_t i = 0; i < rowLevels_; ++i)
        reduced_[i] = levelAs<std::uint8_t>(reinterpret_cast<const std::uint16_t*>(row)[i]);
    addLevels(reduced_.data());
}

void PictureSummer::addLevels(const std::uint8_t* row)
{
    for (std::size_t i = 0; i < rowLevels_; ++i)
        levels_[i] += row[i];
    ++levelRows_;
    if (y_ == 0)
        rowBefore_.assign(row, row + rowLevels_);
    if ((y_ + 1) % changeStep_ == 0) {
        const auto channels = std::size_t(format_.channels());
        for (std::size_t i = channels; i < rowLevels_; ++i)
            changes_[i] +=
                std::uint32_t(std::abs(row[i] - row[i - channels])) + std::uint32_t(std::abs(row[i] - rowBefore_[i]));
        ++changeRows_;
    }
    if ((y_ + 2) % changeStep_ == 0)
        rowBefore_.assign(row, row + rowLevels_);
    ++y_;
    if (y_ * gridRows_ / size_.height > std::int64_t(cells_.size()) / columns_)
        closeCells();
}

void PictureSummer::closeCells()
{
    const auto channels = std::size_t(format_.channels());
    for (std::int64_t column = 0; column < columns_; ++column) {
        const std::int64_t first = column * size_.width / columns_;
        const std::int64_t end = (column + 1) * size_.width / columns_;
        PictureSums::Cell cell;
        for (std::size_t channel = 0; channel < channels; ++channel) {
            std::uint64_t level = 0;
            std::uint64_t change = 0;
            for (std::int64_t x = first; x < end; ++x) {
                level += levels_[std::size_t(x) * channels + channel];
                change += changes_[std::size_t(x) * channels + channel];
            }
            cell.means[channel] = partsOf(level, levelRows_ * (end - first));
            cell.activity = std::max(cell.activity, partsOf(change, changeRows_ * (end - first) * 2));
        }
        cells_.push_back(cell);
    }
    std::ranges::fill(levels_, 0);
    std::ranges::fill(changes_, 0);
    levelRows_ = changeRows_ = 0;
}

PictureSums PictureSummer::take()
{
    return {digest_, std::move(cells_)};
}

bool areClose(const PictureSums& written, const PictureSums& read, double tolerance)
{
    constexpr double ofActivity = 0.5;
    return std::ranges::equal(written.cells, read.cells, [=](const auto& a, const auto& b) {
        const double allowed = tolerance * partsOfLevel + ofActivity * a.activity;
        for (std::size_t channel = 0; channel < a.means.size(); ++channel)
            if (std::abs(int(a.means[channel]) - int(b.means[channel])) > allowed)
                return false;
        return true;
    });
}

} // namespace ferrow
