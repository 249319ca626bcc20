// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

/// What a program does before it makes an application object, while it has one thread.
namespace ferrow::ProgramStart {

/// A launcher may have closed standard input, output or error. The next file opened would then take such a number, and
/// what is printed would go into it.
void occupyStandardDescriptors();

/// A folder for the run, where the session has none. The toolkit looks for something in it when an application object
/// is made; it would make one itself, beside the temporary files, and leave it there.
class TemporaryRuntimeFolder {
public:
    TemporaryRuntimeFolder();
    TemporaryRuntimeFolder(const TemporaryRuntimeFolder&) = delete;
    TemporaryRuntimeFolder& operator=(const TemporaryRuntimeFolder&) = delete;
    ~TemporaryRuntimeFolder();

private:
    QByteArray path_; ///< Empty where the session has one.
};

} // namespace ferrow::ProgramStart
