// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Base/ByteSource.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace ferrow {

namespace {

/// Few calls for an encoder that writes in small pieces, and little memory for each of several exports.
constexpr std::size_t bufferSize = 256 * 1024;

/// pread until `into` is full or the file ends; interrupted and short reads go on.
std::size_t readFully(int descriptor, std::int64_t offset, std::span<std::byte> into)
{
    std::size_t done = 0;
    while (done < into.size()) {
        const ssize_t count = ::pread(descriptor, into.data() + done, into.size() - done, offset + std::int64_t(done));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            throw InputOutputError{errno};
        if (count == 0)
            break;
        done += std::size_t(count);
    }
    return done;
}

} // namespace

ByteSource::ByteSource(int descriptor, std::int64_t size) : descriptor_(descriptor), size_(size) {}

std::size_t ByteSource::readAt(std::int64_t offset, std::span<std::byte> into) const
{
    if (offset < 0 || offset >= size_)
        return 0;
    const auto left = std::uint64_t(size_ - offset);
    return readFully(descriptor_, offset, into.first(std::min<std::uint64_t>(into.size(), left)));
}

std::vector<std::byte> ByteSource::bytesAt(std::int64_t offset, std::size_t length) const
{
    // The length often comes out of the file itself, so it is checked before it may cost memory.
    if (offset < 0 || offset > size_ || length > std::uint64_t(size_ - offset))
        return {};
    std::vector<std::byte> bytes(length);
    if (readAt(offset, bytes) != length)
        return {};
    return bytes;
}

ByteSink::ByteSink(int descriptor) : descriptor_(descriptor) {}

ByteSink::~ByteSink() = default;

void ByteSink::write(std::span<const std::byte> bytes)
{
    if (failure_ != 0)
        throw InputOutputError{failure_};
    if (buffer_.size() + bytes.size() > bufferSize)
        flush();
    if (bytes.size() >= bufferSize) {
        writeOut(bytes);
        return;
    }
    if (buffer_.capacity() == 0)
        buffer_.reserve(bufferSize);
    buffer_.insert(buffer_.end(), bytes.begin(), bytes.end());
}

void ByteSink::seek(std::int64_t position)
{
    flush();
    if (position < 0)
        throw InputOutputError{failure_ = EINVAL};
    position_ = position;
}

std::int64_t ByteSink::position() const
{
    return position_ + std::int64_t(buffer_.size());
}

std::size_t ByteSink::readAt(std::int64_t offset, std::span<std::byte> into)
{
    flush();
    if (offset < 0)
        throw InputOutputError{EINVAL};
    return readFully(descriptor_, offset, into);
}

void ByteSink::flush()
{
    if (failure_ != 0)
        throw InputOutputError{failure_};
    if (buffer_.empty())
        return;
    writeOut(buffer_);
    buffer_.clear();
}

void ByteSink::writeOut(std::span<const std::byte> bytes)
{
    while (!bytes.empty()) {
        const ssize_t count = ::pwrite(descriptor_, bytes.data(), bytes.size(), position_);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0) {
            // Nothing taken and no reason given would otherwise be asked for ever.
            failure_ = count < 0 ? errno : EIO;
            throw InputOutputError{failure_};
        }
        position_ += count;
        bytes = bytes.subspan(std::size_t(count));
    }
}

} // namespace ferrow
