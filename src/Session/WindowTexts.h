// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/PhotoMetadata.h"
#include "Models/RenderRecipe.h"
#include "Platform/Text/TextFrame.h"
#include "Session/PhotoSession.h"
#include "Shared/UserFacingError.h"

#include <QString>
#include <QStringList>

#include <chrono>
#include <cstdint>
#include <optional>
#include <vector>

/// The sentences that the window puts together from values.
namespace ferrow::WindowTexts {

/// "1 photo", "11 photos".
[[nodiscard]] QString photoCount(std::int64_t count);
/// "11 of 11 will be exported".
[[nodiscard]] QString willBeExported(std::int64_t included, std::int64_t total);
/// "2 of 11 exported".
[[nodiscard]] QString exported(std::int64_t exported, std::int64_t total);
/// "48 of 120": a position, or how much of an import has been read.
[[nodiscard]] QString outOf(std::int64_t part, std::int64_t total);
/// "6,000 × 4,000 → 6,480 × 4,480 px".
[[nodiscard]] QString sizeChange(PixelSize source, PixelSize output);

/// "about 20 seconds left": absent in the first three seconds and before anything was done. Rounded up to five seconds,
/// from two minutes on to minutes. `done` and `left` count what this run does, without what planning settled.
[[nodiscard]] std::optional<QString> remainingTime(std::chrono::milliseconds elapsed, std::int64_t done,
                                                   std::int64_t left);
/// "Exporting 3 of 11": the photo in hand, never beyond the last.
[[nodiscard]] QString exporting(std::int64_t completed, std::int64_t total);
/// "Export 11 Photos".
[[nodiscard]] QString exportButton(std::int64_t count);

/// Where a file or a folder lies. What a sandbox was given begins with the name of what was chosen: the document portal
/// keeps that in a folder of its own, whose name means nothing to people.
[[nodiscard]] QString place(const FileUrl& url);

/// What to tell of an import, if anything.
[[nodiscard]] std::optional<PresentedError> importMessage(const ImportOutcome& outcome);

/// Which photos an edit changes: "Changes apply to all 11 photos." or "pug.heic has its own framing."
[[nodiscard]] QString scopeHint(const PhotoSession& session);

/// "2 photos have their own framing, not used while Entire Batch is chosen".
[[nodiscard]] QString ownFramingUnused(std::size_t count);

/// "4:5": decimals only where the numbers have some.
[[nodiscard]] QString ratio(const FrameShape& shape);
/// "120 px", or from the top clockwise "120, 40, 360, 40 px"; in percent with one decimal.
[[nodiscard]] QString borderWidths(const Border& border);
/// What a border has beyond width and color: "4:5", "blurred photo", "line", "24 px corners", "shadow".
[[nodiscard]] QStringList borderFeatures(const Border& border);
/// "Square, no shadow" or "24 px, shadow".
[[nodiscard]] QString photoEdgeSummary(const PhotoEdge& edge);

/// What a closed section of the inspector shows of its values: "120 px · As Photo".
[[nodiscard]] QString borderSummary(const Border& border);
/// The caption as it reads for a photo, in one line; the names of its parts where there is no photo.
[[nodiscard]] QString captionSummary(const Caption& caption, const PhotoMetadata* metadata);
/// That of all that are shown, one after the other.
[[nodiscard]] QString captionsSummary(const std::vector<Caption>& captions, const PhotoMetadata* metadata);
/// What is lost of a caption; empty for nothing.
[[nodiscard]] QString captionCutNote(const TextCut& cut);
/// "Serif": what a font is called on this desktop. Files hold its raw value.
[[nodiscard]] QString fontName(CaptionFont font);
[[nodiscard]] QString logoSummary(const RenderRecipe& recipe);
/// "JPEG · Preserve source profile".
[[nodiscard]] QString outputSummary(const ExportSettings& settings, const RenderRecipe& recipe);

} // namespace ferrow::WindowTexts
