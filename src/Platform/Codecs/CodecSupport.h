// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/ByteSource.h"

#include <array>
#include <cerrno>
#include <csetjmp>
#include <cstddef>
#include <limits>
#include <new>
#include <span>

// What the codecs over C libraries share: leaving a library in the midst of its work, and callbacks for its bytes that
// let no exception through.
namespace ferrow {

/// Runs calls into a library that gives up by a jump. Jumping skips destructors, so nothing that has one may live in
/// the callback that springs the trap or inside the call. Traps of one object do not nest.
class ErrorTrap {
public:
    /// False when spring() ended the call.
    template <typename Call>
    [[nodiscard]] bool run(Call&& call)
    {
        if (setjmp(mark_) != 0)
            return false;
        call();
        return true;
    }

    [[noreturn]] void spring() { std::longjmp(mark_, 1); }

private:
    std::jmp_buf mark_;
};

/// Reads a source from its start in buffers of 64 kB. Nothing here throws.
class SourceReader {
public:
    /// Bytes from `end` on are treated as if the file did not hold them.
    explicit SourceReader(const ByteSource& source,
                          std::int64_t end = std::numeric_limits<std::int64_t>::max()) noexcept
        : source_(source), end_(end < source.size() ? end : source.size())
    {
    }

    /// The bytes that follow, valid until the next call; empty at the end, and when the system refuses to read.
    [[nodiscard]] std::span<const std::byte> next() noexcept
    {
        const std::int64_t left = end_ - position_;
        if (left <= 0 || refused_)
            return {};
        const std::size_t wanted = left < std::int64_t(buffer_.size()) ? std::size_t(left) : buffer_.size();
        std::size_t count = 0;
        try {
            count = source_.readAt(position_, std::span(buffer_).first(wanted));
        } catch (...) { // Nothing may cross the library that called.
            refused_ = true;
        }
        position_ += std::int64_t(count);
        return std::span(buffer_).first(count);
    }

    void skip(std::int64_t count) noexcept { position_ = count < end_ - position_ ? position_ + count : end_; }

    /// Offset behind what next() has handed out.
    [[nodiscard]] std::int64_t position() const noexcept { return position_; }
    [[nodiscard]] bool refused() const noexcept { return refused_; }

private:
    const ByteSource& source_;
    std::int64_t end_;
    std::int64_t position_ = 0;
    bool refused_ = false;
    std::array<std::byte, 65536> buffer_;
};

/// Writes to `sink` and answers the system's error number, 0 when all went well.
[[nodiscard]] inline int writeQuietly(ByteSink& sink, std::span<const std::byte> bytes) noexcept
{
    try {
        sink.write(bytes);
    } catch (const InputOutputError& error) {
        return error.errorNumber;
    } catch (...) { // Nothing may cross the library that called.
        return ENOMEM;
    }
    return 0;
}

} // namespace ferrow
