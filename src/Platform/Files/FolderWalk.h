// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/FileUrl.h"

#include <functional>

namespace ferrow {

/// Calls `visit` for everything below `folder` that is not itself a folder to be entered: hidden names (a leading dot)
/// and the inside of package folders are left out; links to files are reported, links to folders are neither entered
/// nor reported; unreadable folders are passed over. `folder` itself is entered even when it is a link or hidden: the
/// answer is 0, or the errno of what kept it from being read. Names are bytes. The order is unspecified.
int walkFolder(const FileUrl& folder, const std::function<void(const FileUrl&)>& visit);

} // namespace ferrow
