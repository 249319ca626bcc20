// SPDX-License-Identifier: GPL-3.0-or-later
#include "Worker/SharedMemory.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <new>

namespace ferrow::Worker {

namespace {

/// `transfer` moves bytes at an offset, as pread and pwrite do.
template <typename Byte, typename Transfer>
bool transferRow(int descriptor, Byte* bytes, std::size_t length, std::size_t offset, Transfer transfer)
{
    while (length > 0) {
        const ssize_t count = transfer(descriptor, bytes, length, off_t(offset));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        bytes += count;
        offset += std::size_t(count);
        length -= std::size_t(count);
    }
    return true;
}

template <typename Picture, typename Transfer>
bool transferRows(int descriptor, Picture& picture, std::size_t offset, Transfer transfer)
{
    const auto length = std::size_t(picture.size().width * picture.format().bytesPerPixel());
    for (std::int64_t y = 0; y < picture.size().height; ++y, offset += length)
        if (!transferRow(descriptor, picture.row(y), length, offset, transfer))
            return false;
    return true;
}

} // namespace

SharedMemory::SharedMemory(std::size_t bytes)
    : descriptor_(::memfd_create("ferrow-picture", MFD_CLOEXEC | MFD_ALLOW_SEALING))
{
    if (!descriptor_.isOpen() || ::ftruncate(descriptor(), off_t(bytes)) != 0 ||
        ::fcntl(descriptor(), F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW) != 0)
        throw std::bad_alloc();
}

bool SharedMemory::seal()
{
    return ::fcntl(descriptor(), F_ADD_SEALS, F_SEAL_WRITE | F_SEAL_SEAL) == 0;
}

bool writePicture(int descriptor, const Bitmap& picture, std::size_t offset)
{
    return transferRows(descriptor, picture, offset, ::pwrite);
}

bool readPicture(int descriptor, Bitmap& picture, std::size_t offset)
{
    return transferRows(descriptor, picture, offset, ::pread);
}

} // namespace ferrow::Worker
