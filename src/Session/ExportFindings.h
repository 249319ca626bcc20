// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Export/ExportRequest.h"
#include "Platform/Pixels/Bitmap.h"
#include "Session/SpaceEstimate.h"

#include <QString>

#include <cstdint>
#include <functional>
#include <optional>
#include <stop_token>
#include <vector>

namespace ferrow {

/// One line of the check before an export: a cause and, in `detail`, what follows or the way out.
struct ExportFinding {
    enum class Severity { ok, info, warning, error }; ///< An error leaves nothing to start.

    enum class Remedy { none, useOwnFraming, besideEachSource }; ///< What one press can do about it.

    Severity severity = Severity::ok;
    QString title;
    QString detail;              ///< May be empty.
    std::vector<FileUrl> photos; ///< Those it is about, where it is about some of them; in list order.

    Remedy remedy = Remedy::none;

    QString ofOnePhoto = {}; ///< The same of one of the photos, in a few words: "No lens". Empty for other lines.

    bool operator==(const ExportFinding&) const = default;
};

/// What the check asks of the system, replaceable in tests.
struct ExportCheckOperations {
    std::function<bool(const FileUrl&)> isReadable;
    /// Whether anything stands there, even a dangling link. Throws SystemError where that can't be known.
    std::function<bool(const FileUrl&)> exists;
    std::function<void(const FileUrl&)> checkWritable;                    ///< Throws SystemError.
    std::function<std::optional<std::int64_t>(const FileUrl&)> freeBytes; ///< Absent where nobody knows.
    /// Throws LogoAssetError, SystemError and Canceled.
    std::function<Bitmap(const LogoAssetReference&, const std::stop_token&)> loadLogo;
    EncodedSize encodedSize;

    [[nodiscard]] static ExportCheckOperations system();
};

/// What has to be measured to tell whether there is room for the export: that takes as long as framing does.
struct SpaceQuestion {
    std::size_t finding = 0; ///< Index of the line that the answer belongs to.
    std::vector<SpaceSample> samples;
    std::optional<std::int64_t> freeBytes; ///< Absent where nobody knows, or the folders' disks differ.
};

struct ExportFindings {
    std::vector<ExportFinding> lines;
    std::optional<SpaceQuestion> space; ///< Where the folders can be written.
};

/// The findings in the order of the sheet: photos, own framings, folder, names, captions, logos, kept data, sizes.
/// Creates and changes nothing. Throws Canceled.
[[nodiscard]] ExportFindings findingsFor(const ExportRequest& request, const ExportCheckOperations& operations,
                                         const std::stop_token& stop);

/// Those of the findings that are about single photos, whatever the folder and the names: warnings alone, each with
/// `ofOnePhoto`. Throws Canceled.
[[nodiscard]] std::vector<ExportFinding>
photoWarnings(const ExportRequest& request, const ExportCheckOperations& operations, const std::stop_token& stop);

/// The line of the folders, with the room that is needed.
[[nodiscard]] ExportFinding withSpace(ExportFinding folders, const SpaceEstimate& needed,
                                      const std::optional<std::int64_t>& freeBytes);

/// Whether an export may start.
[[nodiscard]] bool hasErrors(const std::vector<ExportFinding>& findings);

/// The name that the template gives the photo at the 0-based position `index`, for showing.
[[nodiscard]] QString exampleFilename(const QString& nameTemplate, const FileUrl& photo, std::int64_t index,
                                      ExportFormat format);

} // namespace ferrow
