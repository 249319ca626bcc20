// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/CodedEnum.h"
#include "Models/ValueHash.h"
#include "Platform/Base/FileUrl.h"
#include "Platform/Base/PixelSize.h"

#include <QString>
#include <QUuid>

#include <optional>
#include <unordered_map>
#include <variant>
#include <vector>

namespace ferrow {

enum class RecipeScope;

/// Components nominally 0…1 in sRGB; kept as given, never clamped here.
struct RGBAColor {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;

    static const RGBAColor white;
    static const RGBAColor black;

    /// "red 255, green 255, blue 255". The components must be finite: any other ends the program.
    [[nodiscard]] QString accessibilityDescription() const;

    bool operator==(const RGBAColor&) const = default;
};

inline constexpr RGBAColor RGBAColor::white{1, 1, 1, 1};
inline constexpr RGBAColor RGBAColor::black{0, 0, 0, 1};

enum class BorderUnit { pixels, percent };
/// "px" or "%".
[[nodiscard]] QString suffix(BorderUnit unit);

enum class MetadataToken {
    filename,
    captureDate,
    camera,
    cameraMake,
    cameraModel,
    lens,
    focalLength,
    aperture,
    shutterSpeed,
    iso,
    exposureCompensation,
    artist,
    copyright,
    title,
    caption,
    year
};
/// Label in menus and on chips: "Capture Date".
[[nodiscard]] QString displayName(MetadataToken token);
/// "{captureDate}".
[[nodiscard]] QString templateValue(MetadataToken token);

enum class CaptionSeparator { middleDot, verticalBar, emDash, lineBreak };
/// Label in menus, with two spaces before the symbol.
[[nodiscard]] QString displayName(CaptionSeparator separator);
/// Glyph on a chip.
[[nodiscard]] QString chipLabel(CaptionSeparator separator);

/// One chip of a caption: text kept exactly, a metadata token, or a separator.
struct CaptionSegment {
    using Content = std::variant<QString, MetadataToken, CaptionSeparator>;

    QUuid id = QUuid::createUuid();
    Content content;

    /// Token camera, middle dot, token lens; the identifiers are made once for the whole process.
    [[nodiscard]] static const std::vector<CaptionSegment>& defaultCaption();
    /// Segments of a template string, each with a fresh identifier.
    [[nodiscard]] static std::vector<CaptionSegment> parse(const QString& captionTemplate);
    [[nodiscard]] QString templateValue() const;

    bool operator==(const CaptionSegment&) const = default;
};

enum class CaptionPosition {
    imageTopLeft,
    imageTopCenter,
    imageTopRight,
    imageCenterLeft,
    imageCenter,
    imageCenterRight,
    imageBottomLeft,
    imageBottomCenter,
    imageBottomRight,
    borderTopLeft,
    borderTopCenter,
    borderTopRight,
    borderBottomLeft,
    borderBottomCenter,
    borderBottomRight
};
[[nodiscard]] bool isInBorder(CaptionPosition position);

enum class CaptionFont { system, rounded, serif, monospaced, avenirNext };
enum class CaptionAlignment { left, center, right };
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

/// How one photo is framed. Lengths are output pixels at full resolution.
struct RenderRecipe {
    BorderUnit borderUnit = BorderUnit::pixels;
    double borderWidth = 120; ///< Pixels, or percent of the photo's shorter side.
    RGBAColor borderColor = RGBAColor::white;
    bool captionEnabled = true;
    std::vector<CaptionSegment> captionSegments = CaptionSegment::defaultCaption();
    CaptionPosition captionPosition = CaptionPosition::borderBottomRight;
    CaptionFont captionFont = CaptionFont::system;
    double captionFontSize = 48;
    RGBAColor captionColor = RGBAColor::black;
    CaptionAlignment captionAlignment = CaptionAlignment::right;
    double captionLineSpacing = 8;
    double captionPadding = 36;
    double captionVerticalPadding = 16;
    double captionOpacity = 0.9;
    std::optional<LogoConfiguration> logo = std::nullopt;
    OutputColorProfile outputColorProfile = OutputColorProfile::sRGB;

    /// Border on every side in pixels, not rounded; a negative width counts as 0.
    [[nodiscard]] double borderWidthFor(PixelSize size) const;
    /// Switches the unit and keeps the thickness that a photo of `size` shows.
    void convertBorder(BorderUnit unit, PixelSize size);

    [[nodiscard]] QString captionTemplate() const;
    void setCaptionTemplate(const QString& captionTemplate);

    /// The recipe that applies to a photo.
    [[nodiscard]] static const RenderRecipe& resolve(RecipeScope scope, const std::optional<FileUrl>& photoID,
                                                     const RenderRecipe& batch,
                                                     const std::unordered_map<FileUrl, RenderRecipe>& perPhoto);

    bool operator==(const RenderRecipe&) const = default;
};

enum class ExportFormat { jpeg, png, tiff, heic };
[[nodiscard]] QString filenameExtension(ExportFormat format);
/// MIME type.
[[nodiscard]] QString contentType(ExportFormat format);
[[nodiscard]] bool supportsQuality(ExportFormat format);

struct ExportSettings {
    ExportFormat format = ExportFormat::jpeg;
    double quality = 0.9; ///< 0…1, where the format supports it.

    bool operator==(const ExportSettings&) const = default;
};

template <>
struct CodedCases<BorderUnit> {
    static constexpr std::array<CodedCase<BorderUnit>, 2> table{
        {{BorderUnit::pixels, u"Pixels"}, {BorderUnit::percent, u"Percent"}}};
};

template <>
struct CodedCases<MetadataToken> {
    static constexpr std::array<CodedCase<MetadataToken>, 16> table{
        {{MetadataToken::filename, u"filename"},
         {MetadataToken::captureDate, u"captureDate"},
         {MetadataToken::camera, u"camera"},
         {MetadataToken::cameraMake, u"cameraMake"},
         {MetadataToken::cameraModel, u"cameraModel"},
         {MetadataToken::lens, u"lens"},
         {MetadataToken::focalLength, u"focalLength"},
         {MetadataToken::aperture, u"aperture"},
         {MetadataToken::shutterSpeed, u"shutterSpeed"},
         {MetadataToken::iso, u"iso"},
         {MetadataToken::exposureCompensation, u"exposureCompensation"},
         {MetadataToken::artist, u"artist"},
         {MetadataToken::copyright, u"copyright"},
         {MetadataToken::title, u"title"},
         {MetadataToken::caption, u"caption"},
         {MetadataToken::year, u"year"}}};
};

template <>
struct CodedCases<CaptionSeparator> {
    static constexpr std::array<CodedCase<CaptionSeparator>, 4> table{{{CaptionSeparator::middleDot, u" \u00B7 "},
                                                                       {CaptionSeparator::verticalBar, u" | "},
                                                                       {CaptionSeparator::emDash, u" \u2014 "},
                                                                       {CaptionSeparator::lineBreak, u"\n"}}};
};

template <>
struct CodedCases<CaptionPosition> {
    static constexpr std::array<CodedCase<CaptionPosition>, 15> table{
        {{CaptionPosition::imageTopLeft, u"Image \u00B7 Top Left"},
         {CaptionPosition::imageTopCenter, u"Image \u00B7 Top Center"},
         {CaptionPosition::imageTopRight, u"Image \u00B7 Top Right"},
         {CaptionPosition::imageCenterLeft, u"Image \u00B7 Center Left"},
         {CaptionPosition::imageCenter, u"Image \u00B7 Center"},
         {CaptionPosition::imageCenterRight, u"Image \u00B7 Center Right"},
         {CaptionPosition::imageBottomLeft, u"Image \u00B7 Bottom Left"},
         {CaptionPosition::imageBottomCenter, u"Image \u00B7 Bottom Center"},
         {CaptionPosition::imageBottomRight, u"Image \u00B7 Bottom Right"},
         {CaptionPosition::borderTopLeft, u"Border \u00B7 Top Left"},
         {CaptionPosition::borderTopCenter, u"Border \u00B7 Top Center"},
         {CaptionPosition::borderTopRight, u"Border \u00B7 Top Right"},
         {CaptionPosition::borderBottomLeft, u"Border \u00B7 Bottom Left"},
         {CaptionPosition::borderBottomCenter, u"Border \u00B7 Bottom Center"},
         {CaptionPosition::borderBottomRight, u"Border \u00B7 Bottom Right"}}};
};

template <>
struct CodedCases<CaptionFont> {
    static constexpr std::array<CodedCase<CaptionFont>, 5> table{{{CaptionFont::system, u"System"},
                                                                  {CaptionFont::rounded, u"Rounded"},
                                                                  {CaptionFont::serif, u"New York"},
                                                                  {CaptionFont::monospaced, u"Monospaced"},
                                                                  {CaptionFont::avenirNext, u"Avenir Next"}}};
};

template <>
struct CodedCases<CaptionAlignment> {
    static constexpr std::array<CodedCase<CaptionAlignment>, 3> table{{{CaptionAlignment::left, u"Left"},
                                                                       {CaptionAlignment::center, u"Center"},
                                                                       {CaptionAlignment::right, u"Right"}}};
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

void feed(ValueHash& hash, const RGBAColor& color);
void feed(ValueHash& hash, const CaptionSegment& segment);
void feed(ValueHash& hash, const LogoAssetReference& asset);
void feed(ValueHash& hash, const LogoConfiguration& logo);
void feed(ValueHash& hash, const RenderRecipe& recipe);
void feed(ValueHash& hash, const ExportSettings& settings);

} // namespace ferrow

template <>
struct std::hash<ferrow::RGBAColor> : ferrow::ValueHasher {
};
template <>
struct std::hash<ferrow::CaptionSegment> : ferrow::ValueHasher {
};
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
