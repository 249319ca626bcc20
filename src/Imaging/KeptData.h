// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Imaging/ExportLayout.h"
#include "Models/CodedEnum.h"
#include "Models/ImportedPhoto.h"
#include "Models/RenderRecipe.h"

#include <cstdint>
#include <optional>

// An export that keeps the coded data of JPEGs: for which photos it can, and what that means for their frames.
namespace ferrow {

/// Why a photo's coded data can't stand in its framed copy; in the order of asking.
enum class KeepObstacle {
    notJpeg,
    coding, ///< Inks, or a sampling of colors that can't go on beside the photo.
    colorProfile,
    size, ///< It is made smaller; or is just too large for a frame on the grid.
    blurredBackground,
    translucentBorder,
    roundCorners,
    data, ///< Known only once the photo was read: numbers that no encoder may write.
};

/// For "2 photos: …".
[[nodiscard]] QString reasonText(KeepObstacle obstacle);

/// Absent where nothing is known against it. Asks photo and frame; whether it is wanted is for ExportSettings to say.
[[nodiscard]] std::optional<KeepObstacle> obstacleToKeeping(const ImportedPhoto& photo, const RenderRecipe& recipe,
                                                            const OutputSize& size);

/// What the photo's place goes by where an export with these settings keeps its coded data; else absent.
[[nodiscard]] std::optional<BlockGrid> keptGrid(const ImportedPhoto& photo, const RenderRecipe& recipe,
                                                const ExportSettings& settings);

/// The geometry of what an export with these settings writes. Throws ImagePipelineError.
[[nodiscard]] ExportLayout exportLayout(const ImportedPhoto& photo, const RenderRecipe& recipe,
                                        const ExportSettings& settings);

/// What keeping the photo's data makes of the border's left and top; in pixels, at full size.
struct MovedBorder {
    std::int64_t fromLeft = 0;
    std::int64_t toLeft = 0;
    std::int64_t fromTop = 0;
    std::int64_t toTop = 0;

    /// The larger of both ways.
    [[nodiscard]] std::int64_t distance() const;
};

/// Absent where nothing is kept or moved, or can be framed.
[[nodiscard]] std::optional<MovedBorder> movedBorder(const ImportedPhoto& photo, const RenderRecipe& recipe,
                                                     const ExportSettings& settings);

/// As JSON names them.
template <>
struct CodedCases<KeepObstacle> {
    static constexpr std::array<CodedCase<KeepObstacle>, 8> table{
        {{KeepObstacle::notJpeg, u"notJpeg"},
         {KeepObstacle::coding, u"coding"},
         {KeepObstacle::colorProfile, u"colorProfile"},
         {KeepObstacle::size, u"size"},
         {KeepObstacle::blurredBackground, u"blurredBackground"},
         {KeepObstacle::translucentBorder, u"translucentBorder"},
         {KeepObstacle::roundCorners, u"roundCorners"},
         {KeepObstacle::data, u"data"}}};
};

} // namespace ferrow
