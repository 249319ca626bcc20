// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Export/ExportRequest.h"
#include "Platform/Pixels/Bitmap.h"

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

    [[nodiscard]] static ExportCheckOperations system();
};

/// The findings in the order of the sheet: photos, own framings, folder, names, captions, logos, sizes. Creates and
/// changes nothing. Throws Canceled.
[[nodiscard]] std::vector<ExportFinding>
findingsFor(const ExportRequest& request, const ExportCheckOperations& operations, const std::stop_token& stop);

/// Whether an export may start.
[[nodiscard]] bool hasErrors(const std::vector<ExportFinding>& findings);

/// The name that the template gives the photo at the 0-based position `index`, for showing.
[[nodiscard]] QString exampleFilename(const QString& nameTemplate, const FileUrl& photo, std::int64_t index,
                                      ExportFormat format);

} // namespace ferrow
