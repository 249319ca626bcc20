// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace ferrow::Notifications {

/// One message of the desktop's notification area, through the portal inside a sandbox. Never waits; a desktop without
/// such an area shows nothing. Main thread.
void show(const QString& title, const QString& body);

} // namespace ferrow::Notifications
