// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Command/Arguments.h"
#include "Models/BatchExportModels.h"
#include "Persistence/PresetModels.h"
#include "Platform/Base/FileUrl.h"

#include <QString>

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace ferrow::Command {

/// What tells a file from its successor on every machine that sees it: devices and inodes have other numbers elsewhere.
struct ReplacedFile {
    std::int64_t size = 0;
    std::int64_t modifiedNanoseconds = 0;

    bool operator==(const ReplacedFile&) const = default;

    /// Absent where `file` is missing or can't be opened.
    [[nodiscard]] static std::optional<ReplacedFile> at(const FileUrl& file);
};

/// What a plan says of one photo: where its framed copy goes, or why there will be none.
struct PlannedPhoto {
    FileUrl source;
    std::optional<FileUrl> destination;
    PixelSize size; ///< Of the framed copy.
    bool replaceExisting = false;
    MetadataCorrections corrections;
    /// What is to be replaced: while that stands there, the photo has not been framed.
    std::optional<ReplacedFile> replaced;
    QString failure; ///< The sentence; empty where `destination` is set, and for photos that are skipped.
};

/// What holds for all photos of a plan.
struct PlanHead {
    PresetPayload payload;
    std::optional<FileUrl> logo; ///< In place of the recipe's.
};

/// A batch whose names were settled once, to be framed in parts, on any machine that sees its folders. As a file: JSON
/// Lines, the first of which has what holds for all.
struct PlanFile {
    PlanHead head;
    std::vector<PlannedPhoto> photos;

    /// With the photos of that part alone: those that follow one another, and so come from one folder, go to different
    /// parts in turn. Throws UsageError, which names the line.
    [[nodiscard]] static PlanFile read(const FileUrl& file, const Shard& part);

    /// Takes the next photo of a plan.
    using Add = std::function<void(const PlannedPhoto&)>;
    /// Replaces what is there by a plan of the photos that `addPhotos` adds. Throws SystemError, and what that throws:
    /// then nothing is replaced.
    static void write(const FileUrl& file, const PlanHead& head, const std::function<void(const Add&)>& addPhotos);
};

} // namespace ferrow::Command
