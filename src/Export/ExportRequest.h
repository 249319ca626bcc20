// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/BatchExportModels.h"
#include "Models/BatchFraming.h"
#include "Models/ImportedPhoto.h"
#include "Models/RenderRecipe.h"
#include "Platform/Base/FileUrl.h"

#include <cstdint>
#include <optional>
#include <unordered_set>
#include <vector>

namespace ferrow {

/// Everything that planning and checking an export need, as values that may go to another thread.
struct ExportRequest {
    std::vector<ImportedPhoto> photos = {}; ///< Those to be exported, in their order.
    BatchExportConfiguration configuration = {};
    ExportSettings settings = {};
    BatchFraming framing = {};
    std::vector<FileUrl> originals = {}; ///< Photos that no output may replace, beside those to be exported.
    /// When set, only these are planned; the others keep their places in the numbering.
    std::optional<std::unordered_set<FileUrl>> only = std::nullopt;
    std::vector<FileUrl> written = {}; ///< By an earlier run of the same batch: no other photo gets their places.

    /// How many photos are to be exported.
    [[nodiscard]] std::int64_t count() const { return std::int64_t(only ? only->size() : photos.size()); }
};

} // namespace ferrow
