// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Session/ExportFindings.h"
#include "Session/ExportSession.h"
#include "Session/NewestTask.h"
#include "Session/PhotoSession.h"

#include <QObject>
#include <QStringList>
#include <QTimer>

#include <chrono>
#include <cstddef>
#include <unordered_map>

namespace ferrow {

/// What the check before an export would say of each included photo, kept up to date in the background while somebody
/// looks. Lives on the main thread.
class PhotoWarnings : public QObject {
    Q_OBJECT

public:
    /// `settling` is how long nothing must change before a check begins.
    PhotoWarnings(PhotoSession& session, const ExportSession& exportSession,
                  ExportCheckOperations operations = ExportCheckOperations::system(),
                  std::chrono::milliseconds settling = std::chrono::milliseconds(250), QObject* parent = nullptr);

    /// Nothing is checked unless it is watched; what was found last stays.
    void setWatched(bool isWatched);

    /// In a few words each; those of the last check that ended. Empty for a photo that is left out.
    [[nodiscard]] QStringList of(const FileUrl& photoID) const;
    /// How many photos have any.
    [[nodiscard]] std::size_t count() const;

signals:
    void changed();

private:
    void checkLater();
    void check();
    void take(const std::vector<ExportFinding>& findings);

    PhotoSession& session_;
    const ExportSession& exportSession_;
    ExportCheckOperations operations_;
    std::unordered_map<FileUrl, QStringList> warnings_;
    bool isWatched_ = false;
    bool isOutdated_ = true;
    QTimer settling_;
    NewestTask task_;
};

} // namespace ferrow
