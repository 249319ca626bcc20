// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/FileUrl.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

namespace ferrow::test {

/// While it lives, permissions count even where the tests run as root, whom nothing is forbidden. Skips the test where
/// root can't become anybody else, or nobody else may enter the place.
class OrdinaryUser {
public:
    explicit OrdinaryUser(const FileUrl& mayEnter) : wasRoot_(::geteuid() == 0)
    {
        ::chmod(mayEnter.path().constData(), 0777);
        if (!wasRoot_)
            return;
        const bool isOrdinary = ::seteuid(nobody) == 0;
        if (isOrdinary && ::faccessat(AT_FDCWD, mayEnter.path().constData(), F_OK, AT_EACCESS) == 0)
            return;
        if (isOrdinary)
            beRoot();
        [] { GTEST_SKIP() << "NOT TESTED: permissions, since root can't become an ordinary user here."; }();
        // Ends the test; the skip itself is reported.
        throw testing::AssertionException({testing::TestPartResult::kSkip, __FILE__, __LINE__, ""});
    }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;
    ~OrdinaryUser()
    {
        if (wasRoot_)
            beRoot();
    }

private:
    static constexpr uid_t nobody = 65534;

    static void beRoot()
    {
        if (::seteuid(0) != 0)
            std::abort();
    }

    bool wasRoot_;
};

} // namespace ferrow::test
