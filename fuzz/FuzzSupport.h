// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/ByteSource.h"

#include <QByteArray>

#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <span>

/// What the targets share. Each has one entry point, called with one input after the other.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace ferrow::fuzz {

/// A promise of the code under test. Broken, it ends the run, which keeps the input.
inline void require(bool isKept, const char* promise)
{
    if (isKept)
        return;
    std::fprintf(stderr, "broken promise: %s\n", promise);
    std::abort();
}

inline QByteArray bytesOf(const std::uint8_t* data, std::size_t size)
{
    return {reinterpret_cast<const char*>(data), qsizetype(size)};
}

/// The input as what readers of untrusted bytes work from: a file, here one without a name in memory.
class InputFile {
public:
    explicit InputFile(std::span<const std::uint8_t> bytes)
        : descriptor_(::memfd_create("fuzz", MFD_CLOEXEC)), source_(descriptor_, std::int64_t(bytes.size()))
    {
        require(::pwrite(descriptor_, bytes.data(), bytes.size(), 0) == ssize_t(bytes.size()), "room in memory");
    }
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;
    ~InputFile() { ::close(descriptor_); }

    [[nodiscard]] const ByteSource& source() const { return source_; }
    [[nodiscard]] int descriptor() const { return descriptor_; }

private:
    int descriptor_;
    ByteSource source_;
};

} // namespace ferrow::fuzz
