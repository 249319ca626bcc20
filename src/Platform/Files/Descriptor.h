// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace ferrow {

/// Owns an open descriptor, or none. Moves only.
class Descriptor {
public:
    explicit Descriptor(int number = -1) : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(other.release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(number_, other.number_);
        return *this;
    }
    ~Descriptor() { close(); }

    [[nodiscard]] int get() const { return number_; }
    [[nodiscard]] bool isOpen() const { return number_ >= 0; }
    /// 0, or the errno of closing what is gone all the same.
    int close() { return isOpen() && ::close(release()) != 0 ? errno : 0; }
    /// Somebody else's to close from here on.
    [[nodiscard]] int release() { return std::exchange(number_, -1); }

private:
    int number_;
};

/// Takes back what was written to a file; 0, or the system's errno.
[[nodiscard]] inline int emptied(int descriptor)
{
    return ::ftruncate(descriptor, 0) == 0 && ::lseek(descriptor, 0, SEEK_SET) == 0 ? 0 : errno;
}

} // namespace ferrow
