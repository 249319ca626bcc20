// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/PhotoMetadata.h"
#include "Models/RenderRecipe.h"

#include <QString>

#include <optional>
#include <vector>

/// A caption as a row of chips: what edits make of it, what the chips are called, and what it reads for a photo. A gap
/// is counted from 0, before the first chip, to the number of chips, after the last.
namespace ferrow::CaptionChips {

using Segments = std::vector<CaptionSegment>;

/// In the order of CaptionSegment's alternatives.
enum class Kind { text, token, separator };
[[nodiscard]] Kind kindOf(const CaptionSegment::Content& content);

[[nodiscard]] Segments inserted(Segments segments, int gap, CaptionSegment segment);
[[nodiscard]] Segments removed(Segments segments, int index);
/// The chip keeps its identifier.
[[nodiscard]] Segments replaced(Segments segments, int index, CaptionSegment::Content content);
/// `gap` counts in the row as it stands: the two gaps beside a chip leave it where it is.
[[nodiscard]] Segments moved(Segments segments, int index, int gap);
/// Where a chip is found after `moved`.
[[nodiscard]] int indexAfterMove(int index, int gap);

/// What stands on a chip. Blanks that would not be seen, and line breaks inside a text, are shown by signs.
[[nodiscard]] QString label(const CaptionSegment& segment);
/// What stands behind the label of a token with options: "ISO", "or Manual lens".
[[nodiscard]] QString optionsLabel(const CaptionSegment& segment);
/// For menus and steps to take back: "Aperture", "Text", "Separator".
[[nodiscard]] QString title(const CaptionSegment& segment);
/// What stands beside the pointer: the whole text, or "Aperture: f/2.8".
[[nodiscard]] QString tip(const CaptionSegment& segment, const std::optional<PhotoMetadata>& metadata);
/// For assistive technology: "Aperture, token, 2 of 5".
[[nodiscard]] QString spokenName(const Segments& segments, int index);
/// The same of its options: "Style: ISO. If missing: Manual lens."
[[nodiscard]] QString spokenOptions(const CaptionSegment& segment);
/// After a move: "Aperture, 2 of 5".
[[nodiscard]] QString spokenPlace(const Segments& segments, int index);

/// The tokens that this photo has no value for and that leave it out, each once, in the order of the chips.
[[nodiscard]] std::vector<MetadataToken> missingTokens(const Segments& segments, const PhotoMetadata& metadata);
/// "Lens is missing here and is left out."; empty when nothing is missing.
[[nodiscard]] QString missingNote(const std::vector<MetadataToken>& missing);

struct Reading {
    QString text;
    bool isHint = false; ///< The text tells why there is no caption to show.

    bool operator==(const Reading&) const = default;
};
/// What the caption says for a photo; absent metadata stand for no photo.
[[nodiscard]] Reading reading(const Segments& segments, const std::optional<PhotoMetadata>& metadata);

} // namespace ferrow::CaptionChips
