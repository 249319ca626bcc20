// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/FileUrl.h"

#include <functional>

/// Where Ferrow keeps what is its own: presets and logos.
namespace ferrow::FerrowStorage {

/// What the location is worked out from, replaceable in tests.
struct Operations {
    std::function<FileUrl()> userDataFolder;
    std::function<bool(const FileUrl&)> exists;
    std::function<bool(const FileUrl& from, const FileUrl& to)> move; ///< Answers whether it moved; never replaces.

    /// $XDG_DATA_HOME where it is absolute, else ~/.local/share.
    [[nodiscard]] static Operations system();
};

/// "Ferrow" in the user's data folder; not created here. A folder under an older name of the program is moved there
/// first, and used where it lies when that fails.
[[nodiscard]] FileUrl applicationSupportDirectory(const Operations& operations = Operations::system());

} // namespace ferrow::FerrowStorage
