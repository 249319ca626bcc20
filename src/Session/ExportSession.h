// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Export/ExportPlanner.h"
#include "Export/ExportRequest.h"
#include "Models/BatchExportModels.h"
#include "Persistence/PresetModels.h"
#include "Session/NewestTask.h"

#include <QObject>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace ferrow {

class PhotoSession;

/// How far a run is. `counts.completed` begins with what planning settled: skipped and failed photos.
struct ExportProgress {
    BatchExportProgress counts;
    std::int64_t settledAtStart = 0;
    std::int64_t exported = 0; ///< Of those completed: neither skipped nor failed.
    std::chrono::steady_clock::time_point startedAt;

    bool operator==(const ExportProgress&) const = default;
};

/// Where a photo of the batch stands, while a run is in progress and until its report is cleared.
enum class PhotoExportState { waiting, exporting, exported, skipped, failed, canceled };

/// Export settings, and the run of a planned batch. Lives on the main thread. Idle: neither progress nor report;
/// running: progress; finished: report, until clearReport().
class ExportSession : public QObject {
    Q_OBJECT

public:
    using Export =
        std::function<void(const BatchExportJob&, const std::stop_token&, const std::function<void()>& framed)>;
    using Planned = std::function<void(const BatchExportPlan&)>;

    /// `exportJob` runs on worker threads, several at once; it throws as BatchExportCoordinator::Operation does.
    /// Without one: ImageExporter.
    explicit ExportSession(Export exportJob = {}, ExportPlanner planner = {}, QObject* parent = nullptr);
    /// Cancels a run and waits at most about two seconds for the jobs in hand; finished files stay.
    ~ExportSession() override;

    [[nodiscard]] const ExportSettings& settings() const { return settings_; }
    [[nodiscard]] const BatchExportConfiguration& configuration() const { return configuration_; }
    [[nodiscard]] const std::optional<ExportProgress>& progress() const { return progress_; }
    [[nodiscard]] const std::optional<BatchExportReport>& report() const { return report_; }
    [[nodiscard]] bool isRunning() const { return progress_.has_value(); }
    /// Names are being worked out; no progress yet.
    [[nodiscard]] bool isPlanning() const { return isPlanning_; }
    /// From the start of planning to the report: photos and framing are not to be changed.
    [[nodiscard]] bool isBusy() const { return isPlanning() || isRunning(); }
    /// Canceled, with jobs still in hand.
    [[nodiscard]] bool isStopping() const { return isStopping_; }
    /// Absent for photos outside the batch, and when there is neither run nor report.
    [[nodiscard]] std::optional<PhotoExportState> photoState(const FileUrl& photoID) const;
    /// Being exported just now, the one that was begun first in front.
    [[nodiscard]] const std::vector<FileUrl>& photosAtWork() const { return atWork_; }
    /// Photos of the reported run that were skipped, in list order.
    [[nodiscard]] const std::vector<FileUrl>& skippedPhotos() const { return skippedPhotos_; }

    void setSettings(const ExportSettings& settings);
    void setConfiguration(const BatchExportConfiguration& configuration);
    /// What a preset keeps of the two; the chosen folder and the concurrency stay.
    void apply(const PresetPayload& payload);

    /// An export of what the session holds now, with the present settings.
    [[nodiscard]] ExportRequest requestFor(const PhotoSession& session) const;
    /// Runs a plan in the background and returns at once. `batchCount` is the number of photos that were to be
    /// exported. A plan without jobs gives its report at once. Does nothing while planning or running.
    void start(BatchExportPlan plan, std::int64_t batchCount);
    /// Plans on a worker thread and starts; `planned` is told of the plan just before. Does nothing while planning or
    /// running.
    void planAndStart(ExportRequest request, Planned planned = {});
    /// Runs the reported batch once more for these of its photos, as it was planned: the same settings and numbers, and
    /// what it has written stays. Clears the report. Does nothing without one, or while planning.
    void retry(const std::unordered_set<FileUrl>& photoIDs);
    /// Starts no further job and asks those in hand to stop; the report follows. While planning: nothing starts.
    void cancel();
    /// The report was seen.
    void clearReport();

signals:
    void settingsChanged();
    void configurationChanged();
    void progressChanged();
    void reportChanged();
    void isPlanningChanged();
    void isStoppingChanged();
    void photoStarted(const ferrow::FileUrl& photoID);
    /// One job ended, in completion order, before progress counts it.
    void photoSettled(const ferrow::FileUrl& photoID, const ferrow::BatchExportOutcome& outcome);

private:
    struct Run;

    void planInBackground(Planned planned);
    void setProgress(std::optional<ExportProgress> progress);
    void setReport(std::optional<BatchExportReport> report);
    void setPlanning(bool isPlanning);
    void setStopping(bool isStopping);
    void beginRun(const std::shared_ptr<Run>& run);
    void noteStarted(std::size_t jobIndex);
    void noteOutcome(const BatchExportOutcome& outcome);
    void finish(const std::vector<BatchExportOutcome>& outcomes);

    Export export_;
    ExportPlanner planner_;
    ExportSettings settings_;
    BatchExportConfiguration configuration_;
    std::optional<ExportProgress> progress_;
    std::optional<BatchExportReport> report_;
    std::unordered_map<FileUrl, PhotoExportState> photoStates_;
    std::vector<FileUrl> atWork_;
    std::vector<FileUrl> skippedPhotos_;
    bool isPlanning_ = false;
    bool isStopping_ = false;
    std::shared_ptr<Run> run_;
    ExportRequest request_; ///< Of the run that was planned last, with what it and its retries have written.
    MainThreadRelay relay_; ///< For news of a run.
    NewestTask work_;
};

} // namespace ferrow
