// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/TiffDirectory.h"

#include "Codecs/TiffBytes.h"
#include "Support/TestSupport.h"

#include <cmath>
#include <limits>
#include <span>
#include <vector>

namespace ferrow {

namespace {

using namespace test;

std::span<const std::byte> spanOf(const QByteArray& bytes)
{
    return std::as_bytes(std::span(bytes.constData(), std::size_t(bytes.size())));
}

} // namespace

TEST(TiffDirectory, readsValuesOfEveryWidth)
{
    const QByteArray rationals =
        littleEndian(qint32(-1)) + littleEndian(qint32(3)) + littleEndian(qint32(5)) + littleEndian(qint32(0));
    const QByteArray bytes = tiffFile({
        textTag(271, "Make"),
        {272, 8, 2, littleEndian(qint16(-2)) + littleEndian(qint16(7))},
        {273, 16, 1, littleEndian(quint64(1) << 63)},
        {274, 10, 2, rationals},
        {275, 11, 1, littleEndian(1.5F)},
        {276, 12, 1, littleEndian(-0.25)},
        {277, 99, 1, "abcd"},
    });
    const MemoryFile file(bytes);
    const ByteSource source(file.descriptor(), file.size());
    for (const auto& structure : {TiffStructure::open(source), TiffStructure::open(spanOf(bytes))}) {
        ASSERT_TRUE(structure);
        const auto directory = structure->firstDirectory();
        ASSERT_TRUE(directory);
        const auto entry = [&](std::uint16_t tag) { return *directory->find(tag); };
        EXPECT_EQ(structure->bytes(entry(271), 100), QByteArray("Make\0", 5));
        EXPECT_EQ(structure->bytes(entry(271), 2), "Ma");
        EXPECT_EQ(structure->integers(entry(272), 9), (std::vector<std::int64_t>{-2, 7}));
        EXPECT_EQ(structure->integers(entry(272), 1), (std::vector<std::int64_t>{-2}));
        EXPECT_EQ(structure->integers(entry(273), 1), std::vector{std::numeric_limits<std::int64_t>::max()});
        EXPECT_EQ(structure->rationals(entry(274), 2), (std::vector<TiffRational>{{-1, 3}, {5, 0}}));
        EXPECT_DOUBLE_EQ(structure->numbers(entry(274), 2)[0], -1.0 / 3);
        EXPECT_TRUE(std::isnan(structure->numbers(entry(274), 2)[1]));
        EXPECT_EQ(structure->numbers(entry(275), 1), std::vector{1.5});
        EXPECT_EQ(structure->numbers(entry(276), 1), std::vector{-0.25});
        EXPECT_EQ(entry(277).length, 0);
        EXPECT_EQ(directory->find(999), nullptr);
    }
}

TEST(TiffDirectory, readsBothByteOrdersAndBigTiff)
{
    const QByteArray big("MM\0*\0\0\0\x08\0\1\1\0\0\3\0\0\0\1\x12\x34\0\0\0\0\0\0", 26);
    const QByteArray bigTiff("II\x2b\0\x08\0\0\0\x10\0\0\0\0\0\0\0"
                             "\1\0\0\0\0\0\0\0\0\1\3\0\1\0\0\0\0\0\0\0\x34\x12\0\0\0\0\0\0",
                             44);
    for (const QByteArray& bytes : {big, bigTiff}) {
        const auto structure = TiffStructure::open(spanOf(bytes));
        ASSERT_TRUE(structure);
        EXPECT_EQ(structure->isBigEndian(), bytes.startsWith('M'));
        const auto directory = structure->firstDirectory();
        ASSERT_TRUE(directory);
        EXPECT_EQ(structure->integers(*directory->find(256), 1), std::vector<std::int64_t>{0x1234});
    }
}

TEST(TiffDirectory, staysInsideTheFile)
{
    const auto firstEntry = [](const TiffTag& tag) {
        const QByteArray bytes = tiffFile({tag});
        return TiffStructure::open(spanOf(bytes))->firstDirectory()->entries.front();
    };
    // 26 bytes of file; values given as an offset and a count.
    const auto at = [&](std::uint32_t offset, std::uint32_t count, std::uint16_t type) {
        return firstEntry({700, type, count, littleEndian(offset)}).length;
    };
    EXPECT_EQ(at(16, 10, 1), 10);
    EXPECT_EQ(at(17, 10, 1), 0);
    EXPECT_EQ(at(0xffffffff, 10, 1), 0);
    EXPECT_EQ(at(8, 0xffffffff, 12), 0);
    EXPECT_EQ(at(8, 0x20000001, 12), 0);
}

TEST(TiffDirectory, followsNoLoop)
{
    const QByteArray loop = tiffFile({longTag(0x8769, 8)});
    const auto own = TiffStructure::open(spanOf(loop));
    EXPECT_FALSE(own->childDirectory(*own->firstDirectory(), 0x8769));

    // Two directories of 18 bytes that point to each other.
    const QByteArray pair = tiffFile({longTag(0x8769, 26)}) + tiffDirectory({longTag(0x8769, 8)}, 26);
    const auto structure = TiffStructure::open(spanOf(pair));
    const auto child = structure->childDirectory(*structure->firstDirectory(), 0x8769);
    ASSERT_TRUE(child);
    EXPECT_FALSE(structure->childDirectory(*child, 0x8769));
    EXPECT_FALSE(structure->childDirectory(*structure->firstDirectory(), 0x8769, 1));
}

TEST(TiffDirectory, givesWhatACutTableStillHolds)
{
    const QByteArray whole = tiffFile({shortTag(256, 1), shortTag(257, 2), shortTag(258, 3)});
    for (qsizetype length = 0; length < 46; ++length) {
        SCOPED_TRACE(length);
        const QByteArray cut = whole.left(length);
        const auto structure = TiffStructure::open(spanOf(cut));
        ASSERT_EQ(structure.has_value(), length >= 8);
        const auto directory = structure ? structure->firstDirectory() : std::nullopt;
        ASSERT_EQ(directory.has_value(), length >= 10);
        if (!directory)
            continue;
        EXPECT_EQ(qsizetype(directory->entries.size()), (length - 10) / 12);
        EXPECT_EQ(directory->isComplete, length >= 46);
    }
    EXPECT_FALSE(TiffStructure::open(spanOf(tiffFile(std::vector(513, shortTag(256, 1)))))->firstDirectory());
    EXPECT_TRUE(TiffStructure::open(spanOf(tiffFile(std::vector(512, shortTag(256, 1)))))->firstDirectory());
}

} // namespace ferrow
