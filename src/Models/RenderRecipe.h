// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/Border.h"
#include "Models/Caption.h"
#include "Models/CodedEnum.h"
#include "Models/OutputSize.h"
#include "Models/ValueHash.h"

#include <QString>
#include <QUuid>

#include <cstddef>
#include <optional>
#include <vector>

namespace ferrow {

enum class OutputColorProfile { sRGB, displayP3, preserveSource };

struct LogoAssetReference {
    QUuid id;
    QString displayName;
    QString managedFilename; ///< Name of the file inside the managed logo folder.

    bool operator==(const LogoAssetReference&) const = default;
};

struct LogoConfiguration {
    LogoAssetReference asset;
    bool isEnabled = true;
    CaptionPosition position = CaptionPosition::imageBottomRight;
    double widthPercent = 18;      ///< Of the photo's width.
    double horizontalPadding = 30; ///< Output pixels at full size, like every length of a recipe.
    double verticalPadding = 30;
    double opacity = 1;

    /// What controls show while a recipe has no logo: a fresh reference named "Logo" without a file.
    [[nodiscard]] static LogoConfiguration placeholder();

    bool operator==(const LogoConfiguration&) const = default;
};

/// How one photo is framed.
struct RenderRecipe {
    Border border = {};
    /// Drawn in this order, over the logo. Never empty: a recipe that shows none has one that is switched off.
    std::vector<Caption> captions = {Caption()};
    std::optional<LogoConfiguration> logo = std::nullopt;
    OutputColorProfile outputColorProfile = OutputColorProfile::sRGB;

    static constexpr std::size_t mostCaptions = 6;

    /// Whether any caption is switched on.
    [[nodiscard]] bool showsCaption() const;
    /// One more caption in the style of the one at `index`, at the next place where none is. It has no chips yet.
    [[nodiscard]] Caption captionLike(std::size_t index) const;

    bool operator==(const RenderRecipe&) const = default;
};

enum class ExportFormat { jpeg, png, tiff, heic };
[[nodiscard]] QString filenameExtension(ExportFormat format);
/// MIME type.
[[nodiscard]] QString contentType(ExportFormat format);
[[nodiscard]] bool supportsQuality(ExportFormat format);

/// Bits of a component in an output.
enum class BitDepth { eight, ten, sixteen };
/// What the format can hold, 8 bits first.
[[nodiscard]] std::vector<BitDepth> depthsOf(ExportFormat format);

struct ExportSettings {
    ExportFormat format = ExportFormat::jpeg;
    double quality = 0.9; ///< 0…1, where the format supports it.
    OutputSize size = {};
    bool checksWritten = false; ///< Whether each file is read back before it gets its name.
    /// A JPEG of a JPEG keeps the photo's coded data where that can be; `quality` is for all others.
    bool keepsPhotoData = false;
    BitDepth depth = BitDepth::eight; ///< Where the format holds it: see writtenDepth().

    /// `depth`, or 8 bits where the format can't hold it.
    [[nodiscard]] BitDepth writtenDepth() const;

    bool operator==(const ExportSettings&) const = default;
};

template <>
struct CodedCases<OutputColorProfile> {
    static constexpr std::array<CodedCase<OutputColorProfile>, 3> table{
        {{OutputColorProfile::sRGB, u"sRGB"},
         {OutputColorProfile::displayP3, u"Display P3"},
         {OutputColorProfile::preserveSource, u"Preserve source profile"}}};
};

template <>
struct CodedCases<ExportFormat> {
    static constexpr std::array<CodedCase<ExportFormat>, 4> table{{{ExportFormat::jpeg, u"JPEG"},
                                                                   {ExportFormat::png, u"PNG"},
                                                                   {ExportFormat::tiff, u"TIFF"},
                                                                   {ExportFormat::heic, u"HEIC"}}};
};

template <>
struct CodedCases<BitDepth> {
    static constexpr std::array<CodedCase<BitDepth>, 3> table{
        {{BitDepth::eight, u"8"}, {BitDepth::ten, u"10"}, {BitDepth::sixteen, u"16"}}};
};

void feed(ValueHash& hash, const LogoAssetReference& asset);
void feed(ValueHash& hash, const LogoConfiguration& logo);
void feed(ValueHash& hash, const RenderRecipe& recipe);
void feed(ValueHash& hash, const ExportSettings& settings);

} // namespace ferrow

template <>
struct std::hash<ferrow::LogoAssetReference> : ferrow::ValueHasher {
};
template <>
struct std::hash<ferrow::LogoConfiguration> : ferrow::ValueHasher {
};
template <>
struct std::hash<ferrow::RenderRecipe> : ferrow::ValueHasher {
};
template <>
struct std::hash<ferrow::ExportSettings> : ferrow::ValueHasher {
};
