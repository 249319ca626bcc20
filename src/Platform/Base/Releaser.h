// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace ferrow {

/// The deleter of a smart pointer to what a C library made: calls the library's own `release`.
template <auto release>
struct Releaser {
    template <typename T>
    void operator()(T* handle) const
    {
        release(handle);
    }
};

} // namespace ferrow
