// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Base/ProgramStart.h"

#include <QDir>
#include <QFile>

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>

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

TemporaryRuntimeFolder::TemporaryRuntimeFolder()
{
    if (!qEnvironmentVariableIsEmpty(variable))
        return;
    QByteArray path = QFile::encodeName(QDir::tempPath()) + "/ferrow-XXXXXX";
    if (!::mkdtemp(path.data()))
        return;
    path_ = path;
    qputenv(variable, path_);
}

TemporaryRuntimeFolder::~TemporaryRuntimeFolder()
{
    if (path_.isEmpty())
        return;
    qunsetenv(variable);
    ::rmdir(path_.constData());
}

} // namespace ferrow::ProgramStart
