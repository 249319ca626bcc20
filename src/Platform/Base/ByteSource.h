// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace ferrow {

/// Why bytes could not be read or written. `errorNumber` is the system's errno.
struct InputOutputError {
    int errorNumber = 0;
};

/// Random-access bytes behind a descriptor: what every reader of untrusted bytes works from. Never maps the file (a
/// file cut short while mapped would end the process) and never reads past the size seen at construction.
/// Reading is safe from several threads; the descriptor's file position is neither used nor changed.
class ByteSource {
public:
    /// Borrows `descriptor`, which must stay open as long as the source. `size` in bytes, as seen by fstat at open.
    ByteSource(int descriptor, std::int64_t size);

    [[nodiscard]] int descriptor() const { return descriptor_; }
    [[nodiscard]] std::int64_t size() const { return size_; }

    /// Fills as much of `into` as the file holds from `offset` on, and answers how many bytes that were: fewer only at
    /// the end of the file. Throws InputOutputError when the system refuses to read.
    std::size_t readAt(std::int64_t offset, std::span<std::byte> into) const;

    /// `length` bytes from `offset`; empty when the file does not hold all of them. Throws InputOutputError.
    [[nodiscard]] std::vector<std::byte> bytesAt(std::int64_t offset, std::size_t length) const;

private:
    int descriptor_;
    std::int64_t size_;
};

/// Writes bytes to a descriptor through one buffer, checking every write. Not thread-safe.
class ByteSink {
public:
    /// Borrows `descriptor`, which must be open for reading and writing, positioned at the start of an empty file.
    explicit ByteSink(int descriptor);
    ByteSink(const ByteSink&) = delete;
    ByteSink& operator=(const ByteSink&) = delete;
    ~ByteSink();

    /// Appends at the current position. Throws InputOutputError; afterwards the sink stays failed.
    void write(std::span<const std::byte> bytes);
    /// Moves the position of the next write, for containers that patch what they wrote. Flushes the buffer.
    void seek(std::int64_t position);
    [[nodiscard]] std::int64_t position() const;
    /// Reads back what was written (TIFF directories need it). Flushes the buffer.
    std::size_t readAt(std::int64_t offset, std::span<std::byte> into);
    /// Hands everything buffered to the system. Must be called at the end: the destructor does not write.
    void flush();

private:
    void writeOut(std::span<const std::byte> bytes);

    int descriptor_;
    std::int64_t position_ = 0; ///< Of the first buffered byte.
    std::vector<std::byte> buffer_;
    int failure_ = 0;
};

} // namespace ferrow
