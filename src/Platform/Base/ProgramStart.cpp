// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Base/ProgramStart.h"

#include <QByteArray>

#include <fcntl.h>
#include <unistd.h>

namespace ferrow::ProgramStart {

namespace {

constexpr const char* variable = "XDG_RUNTIME_DIR";

} // namespace

void occupyStandardDescriptors()
{
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (::fcntl(descriptor, F_GETFD) < 0)
            (void)::open("/dev/null", O_RDWR); // Takes the lowest free number: this one.
}

NoRuntimeFolderMade::NoRuntimeFolderMade() : hadNone_(qEnvironmentVariableIsEmpty(variable))
{
    if (hadNone_)
        qputenv(variable, "/dev/null"); // Is there and no folder: the toolkit goes without.
}

NoRuntimeFolderMade::~NoRuntimeFolderMade()
{
    if (hadNone_)
        qunsetenv(variable);
}

} // namespace ferrow::ProgramStart
