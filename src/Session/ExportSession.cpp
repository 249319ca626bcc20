// SPDX-License-Identifier: GPL-3.0-or-later
#include "Session/ExportSession.h"

#include "Batch/BatchExportCoordinator.h"
#include "Export/ImageExporter.h"
#include "Session/PhotoSession.h"
#include "Shared/UserFacingError.h"

#include <algorithm>
#include <utility>

namespace ferrow {

namespace {

using Clock = std::chrono::steady_clock;

/// Closing the window ends the program within two seconds; what else there is to end takes its share of them.
constexpr std::chrono::milliseconds patienceAtEnd{1'500};

void exportToDisk(const BatchExportJob& job, const std::stop_token& stop, const std::function<void()>& framed)
{
    ImageExporter::exportPhoto(job, stop, {}, framed);
}

PhotoExportState stateOf(const BatchExportOutcome& outcome)
{
    if (std::holds_alternative<BatchExportOutcome::Exported>(outcome.result))
        return PhotoExportState::exported;
    if (std::holds_alternative<BatchExportOutcome::Canceled>(outcome.result))
        return PhotoExportState::canceled;
    return PhotoExportState::failed;
}

/// Where each photo stands before the first job starts.
std::unordered_map<FileUrl, PhotoExportState> statesAtStart(const BatchExportPlan& plan)
{
    std::unordered_map<FileUrl, PhotoExportState> states;
    for (const BatchExportJob& job : plan.jobs)
        states.insert_or_assign(job.photo.id(), PhotoExportState::waiting);
    for (const FileUrl& photo : plan.skippedPhotos)
        states.insert_or_assign(photo, PhotoExportState::skipped);
    for (const BatchExportFailure& failure : plan.failures)
        states.insert_or_assign(failure.source, PhotoExportState::failed);
    return states;
}

/// What is left of a batch that could not be planned.
BatchExportPlan failedPlan(const ExportRequest& request, const std::exception_ptr& error)
{
    BatchExportPlan plan;
    const QString message = UserFacingError::message(error);
    for (const ImportedPhoto& photo : request.photos)
        if (!request.only || request.only->contains(photo.id()))
            plan.failures.push_back({.filename = photo.filename(), .message = message, .source = photo.url});
    return plan;
}

/// What is left of a run that could not be done.
std::vector<BatchExportOutcome> failedOutcomes(const std::vector<BatchExportJob>& jobs, const std::exception_ptr& error)
{
    std::vector<BatchExportOutcome> outcomes;
    const QString message = UserFacingError::message(error);
    for (std::size_t index = 0; index < jobs.size(); ++index)
        outcomes.push_back(
            {BatchExportOutcome::Failed{
                 {.filename = jobs[index].photo.filename(), .message = message, .source = jobs[index].photo.url}},
             index});
    return outcomes;
}

} // namespace

/// What the worker reads; not changed once it runs.
struct ExportSession::Run {
    BatchExportPlan plan;
    std::int64_t batchCount = 0;
    std::stop_source stop;
};

ExportSession::ExportSession(Export exportJob, ExportPlanner planner, QObject* parent)
    : QObject(parent), export_(exportJob ? std::move(exportJob) : exportToDisk), planner_(std::move(planner)),
      work_({}, patienceAtEnd)
{
}

ExportSession::~ExportSession()
{
    if (run_)
        run_->stop.request_stop();
}

std::optional<PhotoExportState> ExportSession::photoState(const FileUrl& photoID) const
{
    const auto found = photoStates_.find(photoID);
    return found == photoStates_.end() ? std::nullopt : std::optional(found->second);
}

void ExportSession::setSettings(const ExportSettings& settings)
{
    if (settings == settings_)
        return;
    settings_ = settings;
    emit settingsChanged();
}

void ExportSession::setConfiguration(const BatchExportConfiguration& configuration)
{
    if (configuration == configuration_)
        return;
    configuration_ = configuration;
    emit configurationChanged();
}

void ExportSession::apply(const PresetPayload& payload)
{
    ExportSettings settings = settings_;
    BatchExportConfiguration configuration = configuration_;
    payload.applyTo(settings, configuration);
    setSettings(settings);
    setConfiguration(configuration);
}

ExportRequest ExportSession::requestFor(const PhotoSession& session) const
{
    ExportRequest request{.photos = session.includedPhotos(),
                          .configuration = configuration_,
                          .settings = settings_,
                          .framing = session.framing()};
    // All of the session: no output may replace one, included or not.
    for (const ImportedPhoto& photo : session.photos())
        request.originals.push_back(photo.url);
    return request;
}

void ExportSession::planAndStart(ExportRequest request, Planned planned)
{
    if (isRunning() || isPlanning_)
        return;
    request_ = std::move(request);
    planInBackground(std::move(planned));
}

void ExportSession::retry(const std::unordered_set<FileUrl>& photoIDs)
{
    if (!report_ || isPlanning_)
        return;
    clearReport();
    request_.only = photoIDs;
    planInBackground({});
}

void ExportSession::planInBackground(Planned planned)
{
    setPlanning(true);
    const auto begin = [this, planned = std::move(planned), count = request_.count()](BatchExportPlan plan) {
        if (planned)
            planned(plan);
        // Both change at once for whoever asks "is it busy".
        isPlanning_ = false;
        start(std::move(plan), count);
        emit isPlanningChanged();
    };
    work_.replace(
        [request = request_, planner = planner_, begin](const std::stop_token& stop) -> NewestTask::Deliver {
            const auto plan = std::make_shared<BatchExportPlan>(planner.plan(request, stop));
            return [begin, plan] { begin(std::move(*plan)); };
        },
        [this, begin](const std::exception_ptr& error) { begin(failedPlan(request_, error)); });
}

void ExportSession::start(BatchExportPlan plan, std::int64_t batchCount)
{
    if (isRunning() || isPlanning_)
        return;
    const auto run = std::make_shared<Run>();
    run->plan = std::move(plan);
    run->batchCount = batchCount;
    run_ = run;
    photoStates_ = statesAtStart(run->plan);
    skippedPhotos_ = run->plan.skippedPhotos;
    if (run->plan.jobs.empty()) {
        finish({});
        return;
    }
    setReport(std::nullopt);
    const std::int64_t settled = run->plan.skipped + std::int64_t(run->plan.failures.size());
    setProgress(
        ExportProgress{{settled, batchCount, run->plan.jobs.front().photo.filename()}, settled, 0, Clock::now()});
    beginRun(run);
}

void ExportSession::beginRun(const std::shared_ptr<Run>& run)
{
    const auto work = [this, run, exportJob = export_, concurrency = configuration_.maximumConcurrentExports,
                       sender = relay_.sender()](const std::stop_token&) -> NewestTask::Deliver {
        const auto& jobs = run->plan.jobs;
        auto outcomes = BatchExportCoordinator::run(
            jobs, concurrency,
            [&](const BatchExportJob& job, const std::stop_token& stop, const std::function<void()>& framed) {
                sender.post([this, index = std::size_t(&job - jobs.data())] { noteStarted(index); });
                exportJob(job, stop, framed);
            },
            [&](const BatchExportOutcome& outcome) { sender.post([this, outcome] { noteOutcome(outcome); }); },
            run->stop.get_token());
        if (run->stop.stop_requested())
            std::ranges::move(BatchExportCoordinator::neverStarted(jobs, outcomes), std::back_inserter(outcomes));
        return [this, outcomes] { finish(outcomes); };
    };
    work_.run(work, [this](const std::exception_ptr& error) { finish(failedOutcomes(run_->plan.jobs, error)); });
}

void ExportSession::noteStarted(std::size_t jobIndex)
{
    const FileUrl photoID = run_->plan.jobs[jobIndex].photo.id();
    photoStates_[photoID] = PhotoExportState::exporting;
    atWork_.push_back(photoID);
    emit photoStarted(photoID);
}

void ExportSession::noteOutcome(const BatchExportOutcome& outcome)
{
    const FileUrl photoID = run_->plan.jobs[outcome.jobIndex].photo.id();
    photoStates_[photoID] = stateOf(outcome);
    std::erase(atWork_, photoID);
    emit photoSettled(photoID, outcome);
    ExportProgress next = *progress_;
    ++next.counts.completed;
    if (photoStates_[photoID] == PhotoExportState::exported)
        ++next.exported;
    next.counts.currentFilename = outcome.filename();
    setProgress(next);
}

void ExportSession::finish(const std::vector<BatchExportOutcome>& outcomes)
{
    const std::shared_ptr<Run> run = std::exchange(run_, nullptr);
    for (const BatchExportOutcome& outcome : outcomes) {
        const BatchExportJob& job = run->plan.jobs[outcome.jobIndex];
        const PhotoExportState state = stateOf(outcome);
        photoStates_[job.photo.id()] = state;
        if (state == PhotoExportState::exported)
            request_.written.push_back(job.destination);
    }
    progress_.reset();
    atWork_.clear();
    const bool wasStopping = std::exchange(isStopping_, false);
    setReport(BatchExportCoordinator::report(run->plan, run->batchCount, outcomes));
    if (!run->plan.jobs.empty())
        emit progressChanged();
    if (wasStopping)
        emit isStoppingChanged();
}

void ExportSession::cancel()
{
    if (isPlanning_) {
        work_.stop();
        setPlanning(false);
    }
    if (!run_ || run_->stop.stop_requested())
        return;
    run_->stop.request_stop();
    setStopping(true);
}

void ExportSession::clearReport()
{
    if (isRunning())
        return;
    photoStates_.clear();
    skippedPhotos_.clear();
    setReport(std::nullopt);
}

void ExportSession::setProgress(std::optional<ExportProgress> progress)
{
    if (progress == progress_)
        return;
    progress_ = std::move(progress);
    emit progressChanged();
}

void ExportSession::setReport(std::optional<BatchExportReport> report)
{
    if (!report && !report_)
        return;
    report_ = std::move(report);
    emit reportChanged();
}

void ExportSession::setPlanning(bool isPlanning)
{
    if (std::exchange(isPlanning_, isPlanning) != isPlanning)
        emit isPlanningChanged();
}

void ExportSession::setStopping(bool isStopping)
{
    if (std::exchange(isStopping_, isStopping) != isStopping)
        emit isStoppingChanged();
}

} // namespace ferrow
