// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/FileUrl.h"

#include <QDBusMessage>
#include <QString>

#include <functional>
#include <vector>

class QMimeData;
class QObject;

namespace ferrow {

/// Whether this process lives in a sandbox (Flatpak, Snap), where files are reached only through the user's choices.
[[nodiscard]] bool isSandboxed();

/// A call to the desktop portal's object, to be filled with arguments.
[[nodiscard]] QDBusMessage portalCall(const QString& interface, const QString& method);

/// What was dropped or pasted, as places: through the portal's file transfer where the data carries a key for it, else
/// its file URLs. Blocks for at most a second, while the portal answers. Main thread.
[[nodiscard]] std::vector<FileUrl> droppedFiles(const QMimeData& data);
/// Whether droppedFiles() could find anything; cheap enough for each move of a drag.
[[nodiscard]] bool carriesFiles(const QMimeData& data);
/// How many places a drag carries, where that can be known without asking anybody; else 0.
[[nodiscard]] int carriedFileCount(const QMimeData& data);

} // namespace ferrow
