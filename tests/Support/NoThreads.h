// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <pthread.h>

#include <cstddef>

namespace ferrow::test {

/// While it lives, no thread can be made, as under a limit on processes: each would get a stack larger than there are
/// addresses.
class NoThreads {
public:
    NoThreads()
    {
        ::pthread_getattr_default_np(&before_);
        pthread_attr_t impossible;
        ::pthread_getattr_default_np(&impossible);
        ::pthread_attr_setstacksize(&impossible, std::size_t(1) << 47);
        ::pthread_setattr_default_np(&impossible);
        ::pthread_attr_destroy(&impossible);
    }
    NoThreads(const NoThreads&) = delete;
    NoThreads& operator=(const NoThreads&) = delete;
    ~NoThreads()
    {
        ::pthread_setattr_default_np(&before_);
        ::pthread_attr_destroy(&before_);
    }

private:
    pthread_attr_t before_{};
};

} // namespace ferrow::test
