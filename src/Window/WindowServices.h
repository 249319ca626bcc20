// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/FileUrl.h"
#include "Window/FilePanels.h"

#include <QString>

#include <functional>
#include <vector>

namespace ferrow {

/// What the window asks of the desktop, replaceable in tests.
struct WindowServices {
    FilePanels panels;
    std::function<void(const std::vector<FileUrl>&)> showItems;
    std::function<void(const std::vector<FileUrl>&)> openFolders;
    std::function<void(const QString& title, const QString& body)> notify;
    bool isSandboxed = false;
    std::function<QString()> missingWallsNote; ///< For the settings; empty for nothing to tell. May be null.

    [[nodiscard]] static WindowServices system();
};

} // namespace ferrow
