// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/FileUrl.h"

#include <sys/stat.h>
#include <unistd.h>

namespace ferrow::test {

/// While it lives, permissions count even where the tests run as root, whom nothing is forbidden.
class OrdinaryUser {
public:
    explicit OrdinaryUser(const FileUrl& mayEnter) : wasRoot_(::geteuid() == 0)
    {
        ::chmod(mayEnter.path().constData(), 0777);
        if (wasRoot_ && ::seteuid(65534) != 0)
            throw std::runtime_error("cannot stop being root");
    }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;
    ~OrdinaryUser()
    {
        if (wasRoot_ && ::seteuid(0) != 0)
            std::abort();
    }

private:
    bool wasRoot_;
};

} // namespace ferrow::test
