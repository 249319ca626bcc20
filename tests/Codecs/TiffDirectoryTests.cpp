// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/TiffDirectory.h"

#include "Codecs/TiffBytes.h"
#include "Support/TestSupport.h"

#include <cmath>
#include <limits>
#include <span>

namespace ferrow {

namespace {

using namespace test;
using Integers = std::vector<std::int64_t>;

/// `bytes` must outlive it.
std::optional<TiffStructure> structureOf(const QByteArray& bytes)
{
    return TiffStructure::open(std::as_bytes(std::span(bytes.constData(), std::size_t(bytes.size()))));
}

} // namespace

TEST(TiffDirectory, readsValuesOfEveryWidthFromMemoryAndFile)
{
    const auto rational = [](int above, int below) { return littleEndian(above) + littleEndian(below); };
    const QByteArray bytes = tiffFile({
        textTag(271, "Make"),
        {272, 8, 2, littleEndian(qint16(-2)) + littleEndian(qint16(7))},
        {273, 16, 1, littleEndian(quint64(1) << 63)},
        {274, 10, 2, rational(-1, 3) + rational(5, 0)},
        {275, 11, 1, littleEndian(1.5F)},
        {276, 12, 1, littleEndian(-0.25)},
        {277, 99, 1, "abcd"},
    });
    const MemoryFile file(bytes);
    const ByteSource source(file.descriptor(), file.size());
    for (const auto& structure : {TiffStructure::open(source), structureOf(bytes)}) {
        const auto directory = structure->firstDirectory();
        ASSERT_TRUE(directory);
        const auto entry = [&](std::uint16_t tag) { return *directory->find(tag); };
        EXPECT_EQ(structure->bytes(entry(271), 100), QByteArray("Make\0", 5));
        EXPECT_EQ(structure->bytes(entry(271), 2), "Ma");
        EXPECT_EQ(structure->integers(entry(272), 9), (Integers{-2, 7}));
        EXPECT_EQ(structure->integers(entry(272), 1), Integers{-2});
        EXPECT_EQ(structure->integers(entry(273), 1), Integers{std::numeric_limits<std::int64_t>::max()});
        EXPECT_EQ(structure->rationals(entry(274), 2), (std::vector<TiffRational>{{-1, 3}, {5, 0}}));
        EXPECT_TRUE(std::isnan(structure->numbers(entry(274), 2)[1]));
        EXPECT_EQ(structure->numbers(entry(275), 1), std::vector{1.5});
        EXPECT_EQ(structure->numbers(entry(276), 1), std::vector{-0.25});
        EXPECT_EQ(entry(277).length, 0);
        EXPECT_EQ(directory->find(999), nullptr);
    }
    const QByteArray big("MM\0*\0\0\0\x08\0\1\1\0\0\3\0\0\0\1\x12\x34\0\0\0\0\0\0", 26);
    const QByteArray bigTiff = QByteArray("II\x2b\0\x08\0\0\0\x10\0\0\0\0\0\0\0\1\0\0\0\0\0\0\0", 24) +
                               QByteArray("\0\1\3\0\1\0\0\0\0\0\0\0\x34\x12\0\0\0\0\0\0", 20);
    for (const QByteArray& other : {big, bigTiff}) {
        const auto structure = structureOf(other);
        EXPECT_EQ(structure->integers(*structure->firstDirectory()->find(256), 1), Integers{0x1234});
    }
}

TEST(TiffDirectory, staysInsideTheFileAndFollowsNoLoop)
{
    // 26 bytes of file; values given as an offset and a count.
    const auto lengthAt = [&](std::uint32_t offset, std::uint32_t count, std::uint16_t type) {
        const QByteArray bytes = tiffFile({{700, type, count, littleEndian(offset)}});
        return structureOf(bytes)->firstDirectory()->entries.front().length;
    };
    EXPECT_EQ(lengthAt(16, 10, 1), 10);
    EXPECT_EQ(lengthAt(17, 10, 1), 0);
    EXPECT_EQ(lengthAt(0xffffffff, 10, 1), 0);
    EXPECT_EQ(lengthAt(8, 0xffffffff, 12), 0);
    EXPECT_EQ(lengthAt(8, 0x20000001, 12), 0);

    const QByteArray loop = tiffFile({longTag(0x8769, 8)});
    EXPECT_FALSE(structureOf(loop)->childDirectory(*structureOf(loop)->firstDirectory(), 0x8769));
    // Two directories of 18 bytes that point to each other.
    const QByteArray pair = tiffFile({longTag(0x8769, 26)}) + tiffDirectory({longTag(0x8769, 8)}, 26);
    const auto structure = structureOf(pair);
    const auto child = structure->childDirectory(*structure->firstDirectory(), 0x8769);
    ASSERT_TRUE(child);
    EXPECT_FALSE(structure->childDirectory(*child, 0x8769));
    EXPECT_FALSE(structure->childDirectory(*structure->firstDirectory(), 0x8769, 1));
}

TEST(TiffDirectory, givesWhatACutTableStillHolds)
{
    const QByteArray whole = tiffFile({shortTag(256, 1), shortTag(257, 2), shortTag(258, 3)});
    for (qsizetype length = 0; length < 46; ++length) {
        const QByteArray cut = whole.left(length);
        const auto structure = structureOf(cut);
        ASSERT_EQ(structure.has_value(), length >= 8) << length;
        const auto directory = structure ? structure->firstDirectory() : std::nullopt;
        ASSERT_EQ(directory.has_value(), length >= 10) << length;
        if (directory) {
            EXPECT_EQ(qsizetype(directory->entries.size()), (length - 10) / 12);
            EXPECT_EQ(directory->isComplete, length >= 46);
        }
    }
}

} // namespace ferrow
