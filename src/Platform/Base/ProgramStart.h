// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// What a program does before it makes an application object, while it has one thread.
namespace ferrow::ProgramStart {

/// A launcher may have closed standard input, output or error. The next file opened would then take such a number, and
/// what is printed would go into it.
void occupyStandardDescriptors();

/// While it lives, the toolkit makes no folder of its own beside the temporary files: where the session has no folder
/// for a run, it would, and leave it behind, only to look for what can't be in there.
class NoRuntimeFolderMade {
public:
    NoRuntimeFolderMade();
    NoRuntimeFolderMade(const NoRuntimeFolderMade&) = delete;
    NoRuntimeFolderMade& operator=(const NoRuntimeFolderMade&) = delete;
    ~NoRuntimeFolderMade();

private:
    bool hadNone_;
};

} // namespace ferrow::ProgramStart
