// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/FileUrl.h"

#include <vector>

/// The desktop's file manager. Nothing here waits: it is asked over the session bus, then the desktop portal, then the
/// default program for folders. Main thread.
namespace ferrow::FileManager {

/// Opens the folder that holds these files and selects them.
void showItems(const std::vector<FileUrl>& items);
void openFolders(const std::vector<FileUrl>& folders);

} // namespace ferrow::FileManager
