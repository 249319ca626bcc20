// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/FileUrl.h"
#include "Platform/Files/Descriptor.h"

namespace ferrow {

/// A folder for the logos of one run, which goes away with this object: "ferrow-logo-XXXXXX". While it is in use it is
/// locked, which the system undoes for a run that was killed; the next run then removes it.
class TemporaryLogoFolder {
public:
    /// Sweeps `parent` of what killed runs left a day ago or earlier, and makes a new one there. Throws SystemError.
    explicit TemporaryLogoFolder(const FileUrl& parent = systemFolder());
    TemporaryLogoFolder(const TemporaryLogoFolder&) = delete;
    TemporaryLogoFolder& operator=(const TemporaryLogoFolder&) = delete;
    ~TemporaryLogoFolder();

    [[nodiscard]] const FileUrl& url() const { return url_; }

    /// $TMPDIR, else /tmp.
    [[nodiscard]] static FileUrl systemFolder();

private:
    FileUrl url_;
    Descriptor descriptor_; ///< Holds the lock.
};

} // namespace ferrow
