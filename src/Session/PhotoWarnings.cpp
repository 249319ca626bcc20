// SPDX-License-Identifier: GPL-3.0-or-later
#include "Session/PhotoWarnings.h"

#include <algorithm>
#include <utility>

namespace ferrow {

PhotoWarnings::PhotoWarnings(PhotoSession& session, const ExportSession& exportSession,
                             ExportCheckOperations operations, std::chrono::milliseconds settling, QObject* parent)
    : QObject(parent), session_(session), exportSession_(exportSession), operations_(std::move(operations))
{
    settling_.setSingleShot(true);
    settling_.setInterval(settling);
    connect(&settling_, &QTimer::timeout, this, &PhotoWarnings::check);
    for (const auto signal :
         {&PhotoSession::photosChanged, &PhotoSession::excludedPhotoIDsChanged, &PhotoSession::batchRecipeChanged,
          &PhotoSession::photoRecipesChanged, &PhotoSession::recipeScopeChanged, &PhotoSession::correctionsChanged})
        connect(&session_, signal, this, &PhotoWarnings::checkLater);
    connect(&exportSession_, &ExportSession::settingsChanged, this, &PhotoWarnings::checkLater);
}

void PhotoWarnings::setWatched(bool isWatched)
{
    if (std::exchange(isWatched_, isWatched) == isWatched)
        return;
    if (isWatched && isOutdated_)
        check();
    if (!isWatched) {
        isOutdated_ |= settling_.isActive() || task_.isBusy();
        settling_.stop();
        task_.stop();
    }
}

QStringList PhotoWarnings::of(const FileUrl& photoID) const
{
    const auto found = warnings_.find(photoID);
    return found == warnings_.end() || !session_.isIncluded(photoID) ? QStringList() : found->second;
}

std::size_t PhotoWarnings::count() const
{
    return std::size_t(std::ranges::count_if(warnings_, [this](const auto& entry) {
        return session_.isIncluded(entry.first) && session_.indexOf(entry.first);
    }));
}

void PhotoWarnings::checkLater()
{
    isOutdated_ = true;
    if (isWatched_)
        settling_.start();
}

void PhotoWarnings::check()
{
    isOutdated_ = false;
    task_.replace(
        [this, request = exportSession_.requestFor(session_),
         operations = operations_](const std::stop_token& stop) -> NewestTask::Deliver {
            std::vector<ExportFinding> findings = photoWarnings(request, operations, stop);
            return [this, findings = std::move(findings)] { take(findings); };
        },
        // The export's own check will tell why.
        [this](const std::exception_ptr&) { take({}); });
}

void PhotoWarnings::take(const std::vector<ExportFinding>& findings)
{
    warnings_.clear();
    for (const ExportFinding& finding : findings)
        for (const FileUrl& photoID : finding.photos)
            warnings_[photoID].append(finding.ofOnePhoto);
    emit changed();
}

} // namespace ferrow
