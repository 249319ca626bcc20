// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Base/ByteSource.h"

#include "Support/TestSupport.h"

#include <sys/resource.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <functional>

namespace ferrow::test {
namespace {

QByteArray pattern(qsizetype size, int seed = 0)
{
    QByteArray bytes(size, Qt::Uninitialized);
    for (qsizetype i = 0; i < size; ++i)
        bytes[i] = static_cast<char>((i * 31 + i / 251 + seed) & 0xFF);
    return bytes;
}

std::span<const std::byte> asBytes(const QByteArray& bytes)
{
    return std::as_bytes(std::span(bytes.constData(), size_t(bytes.size())));
}

int errorOf(const std::function<void()>& action)
{
    try {
        action();
    } catch (const InputOutputError& error) {
        return error.errorNumber;
    }
    return 0;
}

TEST(ByteSource, readsNothingBeyondTheSizeSeenAtOpen)
{
    const MemoryFile file(QByteArray("0123456789"));
    const ByteSource source(file.descriptor(), 8); // The file has grown since.
    std::array<std::byte, 16> into{};
    EXPECT_EQ(source.readAt(5, into), 3u);
    EXPECT_EQ(into[2], std::byte{'7'});
    EXPECT_EQ(source.readAt(8, into), 0u);
    EXPECT_EQ(source.readAt(-1, into), 0u);
    EXPECT_EQ(source.bytesAt(6, 2).size(), 2u);
    EXPECT_TRUE(source.bytesAt(6, 3).empty());
    EXPECT_TRUE(source.bytesAt(1, SIZE_MAX).empty());
    EXPECT_TRUE(source.bytesAt(INT64_MAX, 1).empty());
}

TEST(ByteSource, answersShortForAFileCutAfterOpening)
{
    const MemoryFile file(pattern(100));
    const ByteSource source(file.descriptor(), 100);
    ASSERT_EQ(::ftruncate(file.descriptor(), 10), 0);
    std::array<std::byte, 50> into{};
    EXPECT_EQ(source.readAt(0, into), 10u);
    EXPECT_TRUE(source.bytesAt(0, 50).empty());
}

TEST(ByteSource, carriesTheSystemsReason)
{
    std::array<std::byte, 4> into{};
    EXPECT_EQ(errorOf([&] { ByteSource(-1, 10).readAt(0, into); }), EBADF);
    EXPECT_EQ(errorOf([&] { ByteSink(-1).readAt(0, into); }), EBADF);
}

TEST(ByteSink, writesPiecesOfAllSizesInOrder)
{
    const MemoryFile file;
    ByteSink sink(file.descriptor());
    QByteArray expected;
    for (const qsizetype size : {1, 262'143, 0, 1, 2, 262'144, 5, 1'000'000, 100'000, 100'000, 100'000}) {
        const QByteArray piece = pattern(size, int(expected.size()));
        sink.write(asBytes(piece));
        expected += piece;
        EXPECT_EQ(sink.position(), expected.size());
    }
    sink.flush();
    EXPECT_EQ(file.bytes(), expected);
}

TEST(ByteSink, patchesAndReadsBackWhatWasWritten)
{
    const MemoryFile file;
    ByteSink sink(file.descriptor());
    sink.write(asBytes(QByteArray("head????tail")));
    sink.seek(4);
    sink.write(asBytes(QByteArray("BODY")));
    std::array<char, 12> back{};
    EXPECT_EQ(sink.readAt(0, std::as_writable_bytes(std::span(back))), 12u);
    EXPECT_EQ(QByteArray(back.data(), 12), QByteArray("headBODYtail"));
    EXPECT_EQ(sink.position(), 8);
    sink.seek(12);
    sink.write(asBytes(QByteArray("!")));
    sink.flush();
    EXPECT_EQ(file.bytes(), QByteArray("headBODYtail!"));
}

TEST(ByteSink, staysFailedAfterAFullDisk)
{
    const int descriptor = ::open("/dev/full", O_RDWR | O_CLOEXEC);
    ASSERT_GE(descriptor, 0);
    ByteSink sink(descriptor);
    sink.write(asBytes(pattern(10)));
    EXPECT_EQ(errorOf([&] { sink.flush(); }), ENOSPC);
    EXPECT_EQ(errorOf([&] { sink.flush(); }), ENOSPC);
    EXPECT_EQ(errorOf([&] { sink.write(asBytes(pattern(1))); }), ENOSPC);
    EXPECT_EQ(errorOf([&] { sink.seek(0); }), ENOSPC);
    ::close(descriptor);
}

/// A limit on file sizes makes the system take a part of a write, then refuse the rest.
TEST(ByteSink, goesOnAfterAShortWriteAndReportsTheNextRefusal)
{
    const TemporaryFolder folder;
    const FileUrl place = folder.write("out", {});
    const int descriptor = ::open(place.path().constData(), O_RDWR | O_CLOEXEC);
    rlimit before{};
    ::getrlimit(RLIMIT_FSIZE, &before);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{300'000, before.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    ByteSink sink(descriptor);
    const int error = errorOf([&] { sink.write(asBytes(pattern(400'000))); });
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    ::close(descriptor);
    EXPECT_EQ(error, EFBIG);
    EXPECT_EQ(readFile(place), pattern(300'000));
}

} // namespace
} // namespace ferrow::test
