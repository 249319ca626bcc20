// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/ByteSource.h"

#include <QByteArray>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

namespace ferrow {

/// How the values of a tag are stored; the numbers are the file format's own.
enum class TiffType : std::uint16_t {
    byte = 1,
    ascii = 2,
    unsignedShort = 3,
    unsignedLong = 4,
    rational = 5,
    signedByte = 6,
    undefined = 7,
    signedShort = 8,
    signedLong = 9,
    signedRational = 10,
    singleFloat = 11,
    doubleFloat = 12,
    directory = 13,
    unsignedLong8 = 16,
    signedLong8 = 17,
    directory8 = 18,
};

/// One tag of a directory with the place of its values.
struct TiffEntry {
    std::uint16_t tag = 0;
    TiffType type = TiffType::undefined;
    std::uint64_t count = 0; ///< Number of values, not bytes, as declared.
    std::int64_t offset = 0; ///< Of the values, in bytes from the structure's start.
    std::int64_t length =
        0; ///< Of all values, in bytes; 0 when the type is unknown or not all of them are in the file.
};

/// Numerator and denominator as stored; a denominator of 0 is passed on.
struct TiffRational {
    std::int64_t numerator = 0;
    std::int64_t denominator = 0;

    bool operator==(const TiffRational&) const = default;
};

/// The tags of one directory, in stored order.
struct TiffDirectory {
    std::vector<TiffEntry> entries;
    bool isComplete = true;         ///< False when the file ends inside the table: the entries before that are there.
    std::vector<std::int64_t> path; ///< Offsets of the directories that led here, this one's last.

    /// The first entry of that tag, or nothing. Later ones of the same tag are not looked at.
    [[nodiscard]] const TiffEntry* find(std::uint16_t tag) const;
};

/// More tags than this make a directory unusable: no program writes them, and codec libraries spend memory on each.
inline constexpr std::uint64_t maximumTiffEntries = 512;

/// Our own bounded reading of a TIFF or BigTIFF structure: a TIFF file, or an Exif block in memory. Asks for nothing
/// outside the given bytes and for no memory beyond what a caller allows. Immutable; reading throws InputOutputError
/// when the system refuses to read.
class TiffStructure {
public:
    /// Absent unless the bytes start with a TIFF or BigTIFF header. Both borrow what they are given.
    [[nodiscard]] static std::optional<TiffStructure> open(const ByteSource& source);
    /// `block` starts at the byte order mark: leave out "Exif\0\0".
    [[nodiscard]] static std::optional<TiffStructure> open(std::span<const std::byte> block);

    /// Directory 0: the first page. Absent when it lies outside, is empty or exceeds maximumTiffEntries.
    [[nodiscard]] std::optional<TiffDirectory> firstDirectory() const;
    /// The directory that the `index`-th value of `parent`'s `tag` points to (Exif: 0x8769). Absent as above, and when
    /// it is one of those that led to it.
    [[nodiscard]] std::optional<TiffDirectory> childDirectory(const TiffDirectory& parent, std::uint16_t tag,
                                                              std::size_t index = 0) const;

    /// The first bytes of the values as stored, at most `maximumLength`. Empty when the values are not in the file.
    [[nodiscard]] QByteArray bytes(const TiffEntry& entry, std::int64_t maximumLength) const;
    /// At most `maximumCount` whole numbers; empty for other types. Unsigned 64-bit values beyond the range become its
    /// end.
    [[nodiscard]] std::vector<std::int64_t> integers(const TiffEntry& entry, std::size_t maximumCount) const;
    [[nodiscard]] std::vector<TiffRational> rationals(const TiffEntry& entry, std::size_t maximumCount) const;
    /// At most `maximumCount` numbers of any numeric type; a rational with denominator 0 becomes a NaN.
    [[nodiscard]] std::vector<double> numbers(const TiffEntry& entry, std::size_t maximumCount) const;

private:
    using ReadAt = std::function<std::size_t(std::int64_t offset, std::span<std::byte> into)>;

    TiffStructure(ReadAt readAt, std::int64_t size);
    static std::optional<TiffStructure> open(ReadAt readAt, std::int64_t size);

    [[nodiscard]] bool readExactly(std::int64_t offset, std::span<std::byte> into) const;
    [[nodiscard]] std::uint64_t unsignedAt(const std::byte* bytes, int width) const;
    [[nodiscard]] std::optional<TiffDirectory> directoryAt(std::uint64_t offset, std::vector<std::int64_t> path) const;
    [[nodiscard]] TiffEntry entryAt(const std::byte* bytes, std::int64_t offset) const;

    ReadAt readAt_;
    std::int64_t size_;
    bool isBigEndian_ = false;
    bool isBigTiff_ = false;
    std::uint64_t firstOffset_ = 0;
};

} // namespace ferrow
