// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Session/ExportSession.h"
#include "Session/PhotoSession.h"

#include <QObject>
#include <QTimer>

#include <optional>

namespace ferrow {

/// Selects the photo that was exported last, so that the wait becomes a look at the results. Whoever selects another
/// one meanwhile is left alone for the rest of the run; else the selection from before comes back at its end.
class ExportFollower : public QObject {
    Q_OBJECT

public:
    /// Both must outlive it.
    ExportFollower(PhotoSession& photos, const ExportSession& exports, QObject* parent = nullptr);

private:
    void beginOrEnd();
    void advance();
    void select(const FileUrl& photoID);

    PhotoSession& photos_;
    const ExportSession& exports_;
    QTimer pause_; ///< While it runs the photo shown stays: small ones are written faster than anybody looks.
    bool isRunning_ = false;
    bool isFollowing_ = false;
    bool isSelecting_ = false;
    std::optional<FileUrl> before_;
    std::optional<FileUrl> latest_;
};

} // namespace ferrow
