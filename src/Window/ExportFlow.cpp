// SPDX-License-Identifier: GPL-3.0-or-later
#include "Window/ExportFlow.h"

#include "Features/ExportSheets/ExportOptionsSheet.h"
#include "Features/ExportSheets/ReportSheet.h"
#include "Session/ExportSession.h"
#include "Session/PhotoSession.h"
#include "Session/Preferences.h"
#include "Session/WindowTexts.h"
#include "Widgets/ConfirmSheet.h"
#include "Window/ErrorAlerts.h"

#include <utility>

namespace ferrow {

namespace {

constexpr qint64 longExport = 10'000; // Milliseconds; a shorter batch ends before anybody has turned away.

} // namespace

ExportFlow::ExportFlow(QWidget& window, PhotoSession& session, ExportSession& exportSession, Preferences& preferences,
                       const WindowServices& services, ErrorAlerts& alerts)
    : window_(window), session_(session), exportSession_(exportSession), preferences_(preferences), services_(services),
      alerts_(alerts)
{
    connect(&exportSession, &ExportSession::reportChanged, this, &ExportFlow::showReport);
}

void ExportFlow::showExportOptions()
{
    if (exportOptions_ && exportOptions_->isOpen())
        return;
    emit optionsOpening();
    exportOptions_ = new ExportOptionsSheet(session_, exportSession_, preferences_, &window_);
    exportOptions_->setDeletedAfterClose(true);
    connect(exportOptions_, &ExportOptionsSheet::startRequested, this, &ExportFlow::startExport);
    connect(exportOptions_, &ExportOptionsSheet::chooseFolderRequested, this, &ExportFlow::chooseExportFolder);
    connect(exportOptions_, &ExportOptionsSheet::showPhotosRequested, this, [this](const ExportFinding& finding) {
        exportOptions_->dismiss();
        emit reviewRequested(finding);
    });
    exportOptions_->open();
}

void ExportFlow::chooseExportFolder()
{
    const BatchExportConfiguration& configuration = exportSession_.configuration();
    services_.panels.open(&window_,
                          {.kind = PanelRequest::Kind::folder,
                           .title = QStringLiteral("Choose Export Folder"),
                           .prompt = QStringLiteral("Choose"),
                           .startsIn = configuration.chosenFolder.value_or(FileUrl())},
                          [this](const std::vector<FileUrl>& urls) {
                              session_.accessBroker().retainDestination(urls.front());
                              BatchExportConfiguration chosen = exportSession_.configuration();
                              chosen.chosenFolder = urls.front();
                              exportSession_.setConfiguration(chosen);
                              if (exportOptions_)
                                  exportOptions_->goOnToStart();
                          });
}

void ExportFlow::startExport()
{
    if (exportSession_.configuration().destinationMode == ExportDestinationMode::sourceSubfolder &&
        !mayWriteBesideSources())
        return;
    if (exportSession_.configuration().collisionRule == CollisionRule::replace)
        confirmReplacement();
    else
        runExport(exportSession_.requestFor(session_));
}

bool ExportFlow::mayWriteBesideSources()
{
    std::vector<FileUrl> photos;
    for (const ImportedPhoto& photo : session_.includedPhotos())
        photos.push_back(photo.url);
    const auto grant = [this](const FileUrl& folder, std::size_t index, std::size_t total) -> std::optional<FileUrl> {
        // Outside a sandbox the program may go wherever the user may: there is nothing to ask.
        if (!services_.isSandboxed)
            return folder;
        QString title = QStringLiteral("Allow Access to Source Folder");
        if (total > 1)
            title += QStringLiteral(" %1 of %2").arg(index + 1).arg(total);
        // This desktop's panels have no message of their own: it stands behind the title.
        const QString message =
            QStringLiteral("To create “%1” beside these photos, select “%2” and click Allow.")
                .arg(exportSession_.configuration().sourceSubfolderName, folder.lastPathComponent());
        return services_.panels.openAndWait(&window_, {.kind = PanelRequest::Kind::folder,
                                                       .title = title + QStringLiteral(": ") + message,
                                                       .prompt = QStringLiteral("Allow"),
                                                       .startsIn = folder.deletingLastPathComponent()});
    };
    using Case = SandboxAccessBroker::SourceAccessOutcome::Case;
    const auto outcome = session_.accessBroker().ensureSourceFolderAccess(photos, grant);
    switch (outcome.value) {
    case Case::granted:
        return true;
    case Case::outsideScope:
        alerts_.present(QStringLiteral("Choose the Source Folder"),
                        QStringLiteral("Select “%1” or one of its parent folders to allow this export.")
                            .arg(outcome.folder.lastPathComponent()));
        return false;
    case Case::accessDenied:
        alerts_.present(
            QStringLiteral("Folder Access Wasn’t Granted"),
            QStringLiteral("Ferrow still cannot write beside the source photos. Please choose an export folder "
                           "instead."));
        return false;
    case Case::canceled:
        break;
    }
    return false;
}

void ExportFlow::confirmReplacement()
{
    const Question question{
        .title = QStringLiteral("Replace Existing Files?"),
        .message = QStringLiteral("Existing output files with matching names will be replaced. Source photos can "
                                  "never be replaced."),
        .accept = QStringLiteral("Replace and Export"),
        .leave = QStringLiteral("Cancel"),
    };
    ConfirmSheet::ask(&window_, question, this, [this](const Answer& answer) {
        if (answer.accepted)
            runExport(exportSession_.requestFor(session_));
    });
}

void ExportFlow::runExport(ExportRequest request)
{
    if (exportOptions_)
        exportOptions_->dismiss();
    emit began();
    exportTime_.start();
    exportSession_.planAndStart(std::move(request));
}

void ExportFlow::cancelExport()
{
    exportSession_.cancel();
}

void ExportFlow::showReport()
{
    if (!exportSession_.report())
        return;
    notifyOfReport();
    auto* sheet =
        new ReportSheet(*exportSession_.report(), session_, preferences_, &window_, exportSession_.skippedPhotos());
    sheet->setDeletedAfterClose(true);
    connect(sheet, &ReportSheet::showInFolderRequested, this,
            [this](const FileUrl& file) { services_.showItems({file}); });
    connect(sheet, &ReportSheet::openFoldersRequested, this, services_.openFolders);
    connect(sheet, &ReportSheet::closed, this, &ExportFlow::finishExportReport);
    connect(sheet, &ReportSheet::tryAgainRequested, this, [this, sheet](const std::vector<FileUrl>& photos) {
        disconnect(sheet, &ReportSheet::closed, this, nullptr);
        sheet->dismiss();
        exportTime_.start();
        exportSession_.retry({photos.begin(), photos.end()});
    });
    sheet->open();
}

void ExportFlow::notifyOfReport()
{
    if (window_.isActiveWindow() || !exportTime_.isValid() || !exportTime_.hasExpired(longExport))
        return;
    const BatchExportReport& report = *exportSession_.report();
    QString body = WindowTexts::exported(report.exported, report.total);
    if (!report.failures.empty())
        body += QStringLiteral(", %1 failed").arg(report.failures.size());
    services_.notify(report.canceled > 0 ? QStringLiteral("Export stopped") : QStringLiteral("Export finished"), body);
}

void ExportFlow::finishExportReport()
{
    const std::vector<FileUrl> folders =
        exportSession_.report() ? exportSession_.report()->outputFolders : std::vector<FileUrl>();
    exportSession_.clearReport();
    if (preferences_.opensExportFolders() && !folders.empty())
        services_.openFolders(folders);
}

} // namespace ferrow
