// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Base/ByteSource.h"

#include "Support/Files.h"

#include <array>
#include <cerrno>

namespace ferrow::test {
namespace {

QByteArray pattern(qsizetype size, qsizetype seed = 0)
{
    QByteArray bytes(size, Qt::Uninitialized);
    for (qsizetype i = 0; i < size; ++i)
        bytes[i] = char((i * 31 + i / 251 + seed) & 0xFF);
    return bytes;
}

std::span<const std::byte> asBytes(const QByteArray& bytes)
{
    return std::as_bytes(std::span(bytes.constData(), size_t(bytes.size())));
}

TEST(ByteSource, readsNoMoreThanTheSizeSeenAtOpenAndWhatIsLeft)
{
    const MemoryFile file(QByteArray("0123456789"));
    const ByteSource source(file.descriptor(), 8); // The file has grown since.
    std::array<std::byte, 16> into{};
    EXPECT_EQ(source.readAt(5, into), 3u);
    EXPECT_EQ(into[2], std::byte{'7'});
    EXPECT_EQ(source.readAt(8, into) + source.readAt(-1, into), 0u);
    EXPECT_EQ(source.bytesAt(6, 2).size(), 2u);
    for (const auto& [offset, length] : {std::pair(std::int64_t{6}, size_t{3}), {1, SIZE_MAX}, {INT64_MAX, 1}})
        EXPECT_TRUE(source.bytesAt(offset, length).empty()) << offset;
    ASSERT_EQ(::ftruncate(file.descriptor(), 3), 0);
    EXPECT_EQ(source.readAt(0, into), 3u);
    EXPECT_TRUE(source.bytesAt(0, 5).empty());
    EXPECT_EQ(errnoOf([&] { return ByteSource(-1, 10).readAt(0, into); }), EBADF);
}

TEST(ByteSink, writesPiecesOfAllSizesInOrderAndPatchesThem)
{
    const MemoryFile file;
    ByteSink sink(file.descriptor());
    QByteArray expected;
    for (const qsizetype size : {1, 262'143, 0, 1, 2, 262'144, 5, 1'000'000, 100'000, 100'000, 100'000}) {
        const QByteArray piece = pattern(size, expected.size());
        sink.write(asBytes(piece));
        expected += piece;
        EXPECT_EQ(sink.position(), expected.size());
    }
    sink.seek(4);
    sink.write(asBytes("BODY"));
    expected.replace(4, 4, "BODY");
    std::array<char, 12> back{};
    EXPECT_EQ(sink.readAt(0, std::as_writable_bytes(std::span(back))), 12u);
    EXPECT_EQ(QByteArray(back.data(), 12), expected.left(12));
    sink.seek(expected.size());
    sink.write(asBytes("!"));
    sink.flush();
    EXPECT_EQ(file.bytes(), expected + '!');
}

TEST(ByteSink, goesOnAfterAShortWriteAndStaysFailedAfterARefusal)
{
    const MemoryFile file;
    ByteSink sink(file.descriptor());
    {
        const FileSizeLimit full(300'000);
        EXPECT_EQ(errnoOf([&] { sink.write(asBytes(pattern(400'000))); }), EFBIG);
    }
    EXPECT_EQ(file.bytes(), pattern(300'000));
    EXPECT_EQ(errnoOf([&] { sink.write(asBytes("x")); }), EFBIG);
    EXPECT_EQ(errnoOf([&] { sink.seek(0); }), EFBIG);
    EXPECT_EQ(errnoOf([&] { sink.flush(); }), EFBIG);
}

} // namespace
} // namespace ferrow::test
