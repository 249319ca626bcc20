// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/TiffDirectory.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <limits>

namespace ferrow {

namespace {

constexpr std::size_t maximumDepth = 8;

int widthOf(TiffType type)
{
    switch (type) {
    case TiffType::byte:
    case TiffType::ascii:
    case TiffType::signedByte:
    case TiffType::undefined:
        return 1;
    case TiffType::unsignedShort:
    case TiffType::signedShort:
        return 2;
    case TiffType::unsignedLong:
    case TiffType::signedLong:
    case TiffType::singleFloat:
    case TiffType::directory:
        return 4;
    case TiffType::rational:
    case TiffType::signedRational:
    case TiffType::doubleFloat:
    case TiffType::unsignedLong8:
    case TiffType::signedLong8:
    case TiffType::directory8:
        return 8;
    }
    return 0;
}

bool isSignedInteger(TiffType type)
{
    return type == TiffType::signedByte || type == TiffType::signedShort || type == TiffType::signedLong ||
           type == TiffType::signedLong8;
}

bool isInteger(TiffType type)
{
    return isSignedInteger(type) || type == TiffType::byte || type == TiffType::undefined ||
           type == TiffType::unsignedShort || type == TiffType::unsignedLong || type == TiffType::directory ||
           type == TiffType::unsignedLong8 || type == TiffType::directory8;
}

std::int64_t signExtended(std::uint64_t value, int width)
{
    const int unusedBits = 64 - 8 * width;
    return std::bit_cast<std::int64_t>(value << unusedBits) >> unusedBits;
}

std::int64_t clamped(std::uint64_t value)
{
    return std::int64_t(std::min(value, std::uint64_t(std::numeric_limits<std::int64_t>::max())));
}

} // namespace

const TiffEntry* TiffDirectory::find(std::uint16_t tag) const
{
    const auto found =
        std::find_if(entries.begin(), entries.end(), [&](const auto& entry) { return entry.tag == tag; });
    return found == entries.end() ? nullptr : &*found;
}

TiffStructure::TiffStructure(ReadAt readAt, std::int64_t size) : readAt_(std::move(readAt)), size_(size) {}

std::optional<TiffStructure> TiffStructure::open(const ByteSource& source)
{
    return open([&source](std::int64_t offset, std::span<std::byte> into) { return source.readAt(offset, into); },
                source.size());
}

std::optional<TiffStructure> TiffStructure::open(std::span<const std::byte> block)
{
    const auto readBlock = [block](std::int64_t offset, std::span<std::byte> into) -> std::size_t {
        if (offset < 0 || std::uint64_t(offset) >= block.size())
            return 0;
        const auto available = block.subspan(std::size_t(offset));
        const std::size_t length = std::min(available.size(), into.size());
        std::memcpy(into.data(), available.data(), length);
        return length;
    };
    return open(readBlock, std::int64_t(block.size()));
}

std::optional<TiffStructure> TiffStructure::open(ReadAt readAt, std::int64_t size)
{
    TiffStructure structure(std::move(readAt), size);
    std::array<std::byte, 16> header{};
    if (!structure.readExactly(0, std::span(header).first(8)))
        return std::nullopt;
    if (header[0] != header[1] || (header[0] != std::byte('I') && header[0] != std::byte('M')))
        return std::nullopt;
    structure.isBigEndian_ = header[0] == std::byte('M');

    const auto version = structure.unsignedAt(header.data() + 2, 2);
    if (version == 42) {
        structure.firstOffset_ = structure.unsignedAt(header.data() + 4, 4);
        return structure;
    }
    // BigTIFF declares the width of its offsets, and only 8 was ever defined.
    if (version != 43 || structure.unsignedAt(header.data() + 4, 2) != 8 || !structure.readExactly(0, header))
        return std::nullopt;
    structure.isBigTiff_ = true;
    structure.firstOffset_ = structure.unsignedAt(header.data() + 8, 8);
    return structure;
}

std::optional<TiffDirectory> TiffStructure::firstDirectory() const
{
    return directoryAt(firstOffset_, {});
}

std::optional<TiffDirectory> TiffStructure::childDirectory(const TiffDirectory& parent, std::uint16_t tag,
                                                           std::size_t index) const
{
    const TiffEntry* entry = parent.find(tag);
    if (!entry || index >= maximumTiffEntries || isSignedInteger(entry->type))
        return std::nullopt;
    const auto offsets = integers(*entry, index + 1);
    if (index >= offsets.size())
        return std::nullopt;
    return directoryAt(std::uint64_t(offsets[index]), parent.path);
}

QByteArray TiffStructure::bytes(const TiffEntry& entry, std::int64_t maximumLength) const
{
    QByteArray result(qsizetype(std::max<std::int64_t>(0, std::min(entry.length, maximumLength))), Qt::Uninitialized);
    const std::span into(reinterpret_cast<std::byte*>(result.data()), std::size_t(result.size()));
    return readExactly(entry.offset, into) ? result : QByteArray();
}

std::vector<std::int64_t> TiffStructure::integers(const TiffEntry& entry, std::size_t maximumCount) const
{
    std::vector<std::int64_t> values;
    if (!isInteger(entry.type))
        return values;
    const int width = widthOf(entry.type);
    const QByteArray stored = bytes(entry, clamped(maximumCount) * width);
    const auto* at = reinterpret_cast<const std::byte*>(stored.constData());
    for (qsizetype i = 0; i + width <= stored.size(); i += width) {
        const std::uint64_t value = unsignedAt(at + i, width);
        values.push_back(isSignedInteger(entry.type) ? signExtended(value, width) : clamped(value));
    }
    return values;
}

std::vector<TiffRational> TiffStructure::rationals(const TiffEntry& entry, std::size_t maximumCount) const
{
    std::vector<TiffRational> values;
    if (entry.type != TiffType::rational && entry.type != TiffType::signedRational)
        return values;
    const QByteArray stored = bytes(entry, clamped(maximumCount) * 8);
    const auto* at = reinterpret_cast<const std::byte*>(stored.constData());
    const auto part = [&](qsizetype offset) {
        const std::uint64_t value = unsignedAt(at + offset, 4);
        return entry.type == TiffType::signedRational ? signExtended(value, 4) : std::int64_t(value);
    };
    for (qsizetype i = 0; i + 8 <= stored.size(); i += 8)
        values.push_back({part(i), part(i + 4)});
    return values;
}

std::vector<double> TiffStructure::numbers(const TiffEntry& entry, std::size_t maximumCount) const
{
    std::vector<double> values;
    for (const std::int64_t value : integers(entry, maximumCount))
        values.push_back(double(value));
    for (const auto& [numerator, denominator] : rationals(entry, maximumCount))
        values.push_back(denominator == 0 ? std::numeric_limits<double>::quiet_NaN()
                                          : double(numerator) / double(denominator));
    if (entry.type != TiffType::singleFloat && entry.type != TiffType::doubleFloat)
        return values;
    const int width = widthOf(entry.type);
    const QByteArray stored = bytes(entry, clamped(maximumCount) * width);
    const auto* at = reinterpret_cast<const std::byte*>(stored.constData());
    for (qsizetype i = 0; i + width <= stored.size(); i += width) {
        const std::uint64_t value = unsignedAt(at + i, width);
        values.push_back(width == 4 ? double(std::bit_cast<float>(std::uint32_t(value)))
                                    : std::bit_cast<double>(value));
    }
    return values;
}

bool TiffStructure::readExactly(std::int64_t offset, std::span<std::byte> into) const
{
    if (offset < 0 || std::int64_t(into.size()) > size_ || offset > size_ - std::int64_t(into.size()))
        return false;
    return into.empty() || readAt_(offset, into) == into.size();
}

std::uint64_t TiffStructure::unsignedAt(const std::byte* bytes, int width) const
{
    std::uint64_t value = 0;
    for (int i = 0; i < width; ++i)
        value = value << 8 | std::to_integer<std::uint64_t>(bytes[isBigEndian_ ? i : width - 1 - i]);
    return value;
}

std::optional<TiffDirectory> TiffStructure::directoryAt(std::uint64_t offset, std::vector<std::int64_t> path) const
{
    const int countWidth = isBigTiff_ ? 8 : 2;
    const std::int64_t entryWidth = isBigTiff_ ? 20 : 12;
    const std::int64_t start = clamped(offset);
    std::array<std::byte, 8> countBytes{};
    if (path.size() >= maximumDepth || std::find(path.begin(), path.end(), start) != path.end() ||
        !readExactly(start, std::span(countBytes).first(std::size_t(countWidth))))
        return std::nullopt;

    const std::uint64_t count = unsignedAt(countBytes.data(), countWidth);
    if (count == 0 || count > maximumTiffEntries)
        return std::nullopt;
    const std::int64_t table = start + countWidth;
    const std::int64_t available = std::min(std::int64_t(count), (size_ - table) / entryWidth);
    std::vector<std::byte> stored(std::size_t(available * entryWidth));
    if (!readExactly(table, stored))
        return std::nullopt;

    TiffDirectory directory;
    directory.path = std::move(path);
    directory.path.push_back(start);
    directory.isComplete = available == std::int64_t(count);
    for (std::int64_t i = 0; i < available; ++i)
        directory.entries.push_back(entryAt(stored.data() + i * entryWidth, table + i * entryWidth));
    return directory;
}

TiffEntry TiffStructure::entryAt(const std::byte* bytes, std::int64_t offset) const
{
    const int offsetWidth = isBigTiff_ ? 8 : 4;
    TiffEntry entry;
    entry.tag = std::uint16_t(unsignedAt(bytes, 2));
    entry.type = TiffType(unsignedAt(bytes + 2, 2));
    entry.count = unsignedAt(bytes + 4, offsetWidth);

    // The count is limited by the file's size before it is multiplied: widths are at most 8.
    const int width = widthOf(entry.type);
    if (width == 0 || entry.count > std::uint64_t(size_))
        return entry;
    const std::int64_t length = std::int64_t(entry.count) * width;
    entry.offset =
        length <= offsetWidth ? offset + 4 + offsetWidth : clamped(unsignedAt(bytes + 4 + offsetWidth, offsetWidth));
    if (length <= size_ && entry.offset <= size_ - length)
        entry.length = length;
    return entry;
}

} // namespace ferrow
