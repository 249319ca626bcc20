// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/FileUrl.h"

#include <QString>

#include <functional>
#include <optional>
#include <vector>

class QWidget;

namespace ferrow {

/// What is to be chosen in the desktop's file panel.
struct PanelRequest {
    enum class Kind { photos, folder, logo };

    Kind kind = Kind::photos;
    QString title;
    QString prompt;   ///< On the button that chooses; empty for the panel's own.
    FileUrl startsIn; ///< Empty for where the panel was last.
};

/// The panels, replaceable in tests. Main thread.
struct FilePanels {
    using Chosen = std::function<void(const std::vector<FileUrl>&)>;

    /// Shows a panel and returns; `chosen` is called when something was chosen, never when it was dismissed.
    std::function<void(QWidget* window, const PanelRequest&, const Chosen&)> open;
    /// Shows a panel and waits for it, for the questions that an export asks one after the other.
    std::function<std::optional<FileUrl>(QWidget* window, const PanelRequest&)> openAndWait;

    [[nodiscard]] static FilePanels system();
};

} // namespace ferrow
