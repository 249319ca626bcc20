// SPDX-License-Identifier: GPL-3.0-or-later
#include "Window/WindowServices.h"

#include "Platform/Desktop/FileManager.h"
#include "Platform/Desktop/Notifications.h"
#include "Platform/Desktop/Portal.h"

namespace ferrow {

WindowServices WindowServices::system()
{
    return {.panels = FilePanels::system(),
            .showItems = FileManager::showItems,
            .openFolders = FileManager::openFolders,
            .notify = Notifications::show,
            .isSandboxed = ferrow::isSandboxed()};
}

} // namespace ferrow
