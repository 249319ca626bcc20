// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/PreviewPane/ExportFollower.h"

#include <chrono>
#include <variant>

namespace ferrow {

ExportFollower::ExportFollower(PhotoSession& photos, const ExportSession& exports, QObject* parent)
    : QObject(parent), photos_(photos), exports_(exports)
{
    pause_.setSingleShot(true);
    pause_.setInterval(std::chrono::milliseconds(800));
    connect(&pause_, &QTimer::timeout, this, &ExportFollower::advance);
    connect(&exports_, &ExportSession::progressChanged, this, &ExportFollower::beginOrEnd);
    connect(&exports_, &ExportSession::photoSettled, this,
            [this](const FileUrl& photoID, const BatchExportOutcome& outcome) {
                if (!std::holds_alternative<BatchExportOutcome::Exported>(outcome.result))
                    return;
                latest_ = photoID;
                advance();
            });
    connect(&photos_, &PhotoSession::selectedPhotoIDChanged, this, [this] {
        if (!isSelecting_)
            isFollowing_ = false;
    });
}

void ExportFollower::beginOrEnd()
{
    if (exports_.isRunning() == isRunning_)
        return;
    isRunning_ = exports_.isRunning();
    if (isRunning_) {
        before_ = photos_.selectedPhotoID();
        isFollowing_ = true;
        return;
    }
    latest_.reset();
    pause_.stop();
    if (isFollowing_ && before_)
        select(*before_);
    isFollowing_ = false;
}

void ExportFollower::advance()
{
    if (!isFollowing_ || !latest_ || pause_.isActive())
        return;
    select(*latest_);
    latest_.reset();
    pause_.start();
}

void ExportFollower::select(const FileUrl& photoID)
{
    isSelecting_ = true;
    if (photos_.photo(photoID))
        photos_.setSelectedPhotoID(photoID);
    isSelecting_ = false;
}

} // namespace ferrow
