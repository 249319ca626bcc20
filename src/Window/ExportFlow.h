// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Export/ExportRequest.h"
#include "Session/ExportFindings.h"
#include "Window/WindowServices.h"

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QWidget>

namespace ferrow {

class ErrorAlerts;
class ExportOptionsSheet;
class ExportSession;
class PhotoSession;
class Preferences;

/// An export from its options to its report, with the questions between. All that is given must outlive it.
class ExportFlow : public QObject {
    Q_OBJECT

public:
    ExportFlow(QWidget& window, PhotoSession& session, ExportSession& exportSession, Preferences& preferences,
               const WindowServices& services, ErrorAlerts& alerts);

    void showExportOptions();
    void cancelExport();

signals:
    void optionsOpening();
    /// The options are left for a look at the photos that a finding is about. showExportOptions() leads back.
    void reviewRequested(const ferrow::ExportFinding& finding);
    /// The options are left, and planning is about to begin.
    void began();

private:
    void chooseExportFolder();
    void startExport();
    [[nodiscard]] bool mayWriteBesideSources();
    void confirmReplacement();
    void runExport(ExportRequest request);
    void showReport();
    void finishExportReport();
    void notifyOfReport();

    QWidget& window_;
    PhotoSession& session_;
    ExportSession& exportSession_;
    Preferences& preferences_;
    const WindowServices& services_;
    ErrorAlerts& alerts_;
    QPointer<ExportOptionsSheet> exportOptions_;
    QElapsedTimer exportTime_;
};

} // namespace ferrow
