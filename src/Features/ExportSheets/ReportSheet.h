// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/BatchExportModels.h"
#include "Session/PhotoSession.h"
#include "Session/Preferences.h"
#include "Widgets/Sheet.h"

#include <vector>

namespace ferrow {

/// How an export ended: counts, then what failed and what was skipped. Keeps its own copy of the report.
class ReportSheet : public Sheet {
    Q_OBJECT

public:
    /// `skippedPhotos` where they are known (ExportSession::skippedPhotos): else their count stands alone. Session and
    /// preferences must outlive the sheet.
    ReportSheet(const BatchExportReport& report, PhotoSession& session, Preferences& preferences, QWidget* window,
                const std::vector<FileUrl>& skippedPhotos = {});

    /// With the focus on the button that leaves it.
    void open();

signals:
    void showInFolderRequested(const ferrow::FileUrl& file);
    void openFoldersRequested(const std::vector<ferrow::FileUrl>& folders);
    /// The sheet closes after this.
    void tryAgainRequested(const std::vector<ferrow::FileUrl>& photos);

private:
    void buildBody(PhotoSession& session);
    void addOpenFolders(Preferences& preferences);
    void buildFoot();
    void copyReport();

    BatchExportReport report_;
    std::vector<FileUrl> skippedPhotos_;
    QPushButton* copy_ = nullptr;
};

} // namespace ferrow
