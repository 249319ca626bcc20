// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/BatchExportModels.h"
#include "Session/ExportSession.h"
#include "Session/PhotoSession.h"

#include <QString>

#include <vector>

/// The sentences of the sheets before and after an export, and what their lists hold.
namespace ferrow::ExportTexts {

/// "11 photos · JPEG, quality 90 · long side 2,048 px · sRGB", without a size where none is set; "JPEG, photo’s data
/// kept". The profile is that of the photos to export.
[[nodiscard]] QString subtitle(const PhotoSession& session, const ExportSettings& settings);

/// A folder below `home` as "Pictures / Framed", any other by its path.
[[nodiscard]] QString folder(const FileUrl& folder, const FileUrl& home);
/// The same for the user's home.
[[nodiscard]] QString folder(const FileUrl& folder);

/// The output name of the selected photo; of the first one to export where the selected is left out. Empty without
/// photos.
[[nodiscard]] QString exampleName(const PhotoSession& session, const ExportSession& exportSession);

/// "6,240 × 4,240 → 2,048 × 1,392": what the same photo's frame is at full size, and what is written. Empty without
/// photos, and where it can't be framed.
[[nodiscard]] QString exampleSize(const PhotoSession& session, const ExportSettings& settings);

/// What keeping the photos' data means: for the same photo's border, where that is moved for it ("Border 120 → 128
/// px").
[[nodiscard]] QString keptDataHint(const PhotoSession& session, const ExportSettings& settings);

/// "Export finished, with 2 failures".
[[nodiscard]] QString reportTitle(const BatchExportReport& report);
/// Everything was written.
[[nodiscard]] bool isAllWell(const BatchExportReport& report);
/// "11 photos exported".
[[nodiscard]] QString allWellSentence(const BatchExportReport& report);
/// "in Pictures / Framed", "in 3 folders"; empty without folders.
[[nodiscard]] QString whereTo(const std::vector<FileUrl>& folders);
/// Why a photo failed, in one paragraph.
[[nodiscard]] QString reason(const BatchExportFailure& failure);

/// One line of the report's list.
struct ReportRow {
    enum class Kind { heading, failed, skipped };

    Kind kind = Kind::heading;
    QString title;
    QString detail;
    FileUrl photo; ///< Empty for headings, and where nobody knows it.

    bool operator==(const ReportRow&) const = default;
};

/// What failed, then what was skipped, each under its heading; nothing of what is empty.
[[nodiscard]] std::vector<ReportRow> reportRows(const BatchExportReport& report,
                                                const std::vector<FileUrl>& skippedPhotos);
/// The photos behind the failures, each once, in the report's order.
[[nodiscard]] std::vector<FileUrl> failedPhotos(const BatchExportReport& report);
/// The whole report as plain text, for the clipboard. Ends with a line break.
[[nodiscard]] QString reportText(const BatchExportReport& report, const std::vector<FileUrl>& skippedPhotos);

/// A number and its word: "8" and "exported".
struct ReportCount {
    enum class Kind { exported, skipped, failed, canceled };

    Kind kind = Kind::exported;
    std::int64_t count = 0;
    QString word;
};

/// Exported, skipped and failed always, canceled only where there are any.
[[nodiscard]] std::vector<ReportCount> reportCounts(const BatchExportReport& report);

} // namespace ferrow::ExportTexts
