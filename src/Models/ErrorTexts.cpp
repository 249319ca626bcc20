// SPDX-License-Identifier: GPL-3.0-or-later
#include "Models/ErrorTexts.h"

#include "Platform/Base/Localization.h"

namespace ferrow {

namespace {

template <typename... Visitors>
struct Overloaded : Visitors... {
    using Visitors::operator()...;
};
template <typename... Visitors>
Overloaded(Visitors...) -> Overloaded<Visitors...>;

/// Plain decimals without grouping, unlike a size that is shown on its own.
QString dimensions(std::int64_t width, std::int64_t height)
{
    return QStringLiteral("%1 \u00D7 %2").arg(width).arg(height);
}

QString smallerCopyAdvice()
{
    return QStringLiteral("Use a smaller exported copy of the image. The original file was not changed.");
}

QString frameWidthAdvice()
{
    return QStringLiteral("Reduce the frame width or restore a known-good preset.");
}

QString diskSpaceAdvice()
{
    return QStringLiteral("Check available disk space and folder permissions, then try again.");
}

QString viewerAdvice()
{
    return QStringLiteral("Try opening the file in an image viewer and exporting a fresh copy.");
}

QString smallerLogoAdvice()
{
    return QStringLiteral("Resize or simplify the logo, then import the smaller copy.");
}

QString workerDescription(const QString& what)
{
    return what + QStringLiteral(" can’t be read: the program that reads them, ferrow-worker, does not start.");
}

QString workerAdvice()
{
    return QStringLiteral("Install Ferrow again, and allow ferrow-worker where programs need permission to run.");
}

QString description(ImagePipelineError::Plain error)
{
    using Plain = ImagePipelineError::Plain;
    switch (error) {
    case Plain::unreadableFile:
        return QStringLiteral("Ferrow could not read this file.");
    case Plain::malformedImage:
        return QStringLiteral("This file is not a valid image or is damaged.");
    case Plain::decodingFailed:
        return QStringLiteral("The image could not be decoded.");
    case Plain::renderingFailed:
        return QStringLiteral("Ferrow could not render the framed image.");
    case Plain::writtenFileDiffers:
        return QStringLiteral(
            "The written file was read back, and does not hold the framed photo. No output file was kept.");
    case Plain::encoderMissing:
        return QStringLiteral("This system has no HEVC encoder, which HEIC images need. No output file was written.");
    case Plain::invalidRenderRecipe:
        return QStringLiteral("These framing settings contain an invalid numeric value.");
    case Plain::destinationIsSource:
        return QStringLiteral("The output cannot replace the source image. Choose a different filename.");
    case Plain::destinationExists:
        return QStringLiteral("A file already exists at that location. Choose a new filename.");
    case Plain::workerUnavailable:
        return workerDescription(QStringLiteral("Photos"));
    }
    return {};
}

QString advice(ImagePipelineError::Plain error)
{
    using Plain = ImagePipelineError::Plain;
    switch (error) {
    case Plain::unreadableFile:
        return QStringLiteral("Confirm the file still exists and that you have permission to read it.");
    case Plain::malformedImage:
    case Plain::decodingFailed:
        return viewerAdvice();
    case Plain::renderingFailed:
        return QStringLiteral("Reduce the frame or logo size and try again.");
    case Plain::writtenFileDiffers:
        return QStringLiteral("Export it again. If that fails too, check the disk, or choose another folder.");
    case Plain::encoderMissing:
        return QStringLiteral("Install libheif’s encoder (on Debian: libheif-plugin-x265), or choose another format.");
    case Plain::invalidRenderRecipe:
        return frameWidthAdvice();
    case Plain::destinationIsSource:
        return QStringLiteral("Choose a different output folder or filename.");
    case Plain::destinationExists:
        return QStringLiteral("Choose Append a Number, Skip Existing, or explicitly confirm replacement.");
    case Plain::workerUnavailable:
        return workerAdvice();
    }
    return {};
}

LocalizedErrorTexts texts(const QString& errorDescription, std::optional<QString> recoverySuggestion)
{
    return {.errorDescription = errorDescription,
            .failureReason = std::nullopt,
            .recoverySuggestion = std::move(recoverySuggestion),
            .genericDescription = errorDescription};
}

} // namespace

QString ImagePipelineError::errorDescription() const
{
    return std::visit(
        Overloaded{
            [](const FileTooLarge& error) {
                return QStringLiteral("This file is too large to inspect safely (%1).")
                    .arg(Localization::fileSize(error.bytes));
            },
            [](const UnsupportedType& error) {
                return error.type + QStringLiteral(" is not supported. Choose a JPEG, PNG, TIFF, or HEIC image.");
            },
            [](const UnreasonableDimensions& error) {
                return QStringLiteral("The image dimensions (%1) are too large to process safely.")
                    .arg(dimensions(error.width, error.height));
            },
            [](const UnreasonableOutputDimensions& error) {
                return QStringLiteral("The framed output dimensions (%1) are too large to render safely.")
                    .arg(dimensions(error.width, error.height));
            },
            [](const FullResolutionMismatch& error) {
                return QStringLiteral("Ferrow decoded this image at %1 instead of its full %2. No output file was "
                                      "written.")
                    .arg(dimensions(error.decoded.width, error.decoded.height),
                         dimensions(error.expected.width, error.expected.height));
            },
            [](const EncodingFailed& error) {
                return QStringLiteral("The %1 image could not be encoded. No output file was written.")
                    .arg(error.format);
            },
            [](const OutputWriteFailed& error) {
                return QStringLiteral(
                           "The %1 image was created, but it could not be written to the selected location. No "
                           "output file was written.")
                    .arg(error.format);
            },
            [](Plain error) { return description(error); }},
        value);
}

std::optional<QString> ImagePipelineError::failureReason() const
{
    const auto* failed = std::get_if<OutputWriteFailed>(&value);
    return failed && failed->reason ? std::optional(failed->reason->description()) : std::nullopt;
}

QString ImagePipelineError::recoverySuggestion() const
{
    return std::visit(
        Overloaded{[](const FileTooLarge&) { return smallerCopyAdvice(); },
                   [](const UnsupportedType&) {
                       return QStringLiteral("Export the source as JPEG, PNG, TIFF, or HEIC, then add that copy.");
                   },
                   [](const UnreasonableDimensions&) { return smallerCopyAdvice(); },
                   [](const UnreasonableOutputDimensions&) { return frameWidthAdvice(); },
                   [](const FullResolutionMismatch&) {
                       return QStringLiteral(
                           "Export a fresh copy of the image from an image editor, then add that copy and try again.");
                   },
                   [](const EncodingFailed&) { return diskSpaceAdvice(); },
                   [](const OutputWriteFailed&) { return diskSpaceAdvice(); },
                   [](Plain error) { return advice(error); }},
        value);
}

QString LogoAssetError::errorDescription() const
{
    switch (value) {
    case Case::fileTooLarge:
        return QStringLiteral("The logo file is too large to import safely (%1).").arg(Localization::fileSize(bytes));
    case Case::malformed:
        return QStringLiteral("The logo file could not be decoded.");
    case Case::unsupportedType:
        return QStringLiteral("Choose a PNG, TIFF, PDF, or SVG logo.");
    case Case::unreasonableDimensions:
        return QStringLiteral("The logo has unsafe or unreasonable dimensions.");
    case Case::missingManagedAsset:
        return QStringLiteral("The saved logo asset is missing. Import it again.");
    case Case::textInDrawing:
        return QStringLiteral("The SVG holds text, which would be drawn in another font.");
    case Case::referencesInDrawing:
        return QStringLiteral("The SVG refers to files, or holds pictures other than PNG and JPEG. Neither is drawn.");
    case Case::tooComplexDrawing:
        return QStringLiteral("The SVG is too complex to draw safely.");
    case Case::workerUnavailable:
        return workerDescription(QStringLiteral("Logos"));
    }
    return {};
}

QString LogoAssetError::recoverySuggestion() const
{
    switch (value) {
    case Case::fileTooLarge:
    case Case::unreasonableDimensions:
        return smallerLogoAdvice();
    case Case::malformed:
        return QStringLiteral("Open the logo in an image editor and export a fresh copy.");
    case Case::unsupportedType:
        return QStringLiteral("Export a tightly cropped PNG, TIFF, or PDF copy.");
    case Case::missingManagedAsset:
        return QStringLiteral("Use Replace Logo to select the asset again.");
    case Case::textInDrawing:
        return QStringLiteral("Convert text to paths in a vector editor, then choose the SVG again.");
    case Case::referencesInDrawing:
        return QStringLiteral("Embed pictures as PNG in a vector editor, then choose the SVG again.");
    case Case::tooComplexDrawing:
        return QStringLiteral("Simplify it in a vector editor, or export a PNG.");
    case Case::workerUnavailable:
        return workerAdvice();
    }
    return {};
}

LocalizedErrorTexts localizedTexts(const ImagePipelineError& error)
{
    LocalizedErrorTexts all = texts(error.errorDescription(), error.recoverySuggestion());
    all.failureReason = error.failureReason();
    return all;
}

LocalizedErrorTexts localizedTexts(const LogoAssetError& error)
{
    return texts(error.errorDescription(), error.recoverySuggestion());
}

LocalizedErrorTexts localizedTexts(BatchPlanningError error)
{
    switch (error) {
    case BatchPlanningError::missingDestination:
        return texts(QStringLiteral("Choose an export folder."), std::nullopt);
    case BatchPlanningError::invalidSubfolder:
        return texts(QStringLiteral("Enter a valid source subfolder name."), std::nullopt);
    }
    return {};
}

LocalizedErrorTexts localizedTexts(const PresetPersistenceError& error)
{
    switch (error.value) {
    case PresetPersistenceError::Case::unsupportedVersion:
        return texts(
            QStringLiteral("These presets were saved by a newer Ferrow format (version %1).").arg(error.version),
            QStringLiteral("Update Ferrow before changing this preset library."));
    case PresetPersistenceError::Case::invalidName:
        return texts(QStringLiteral("Enter a preset name."), QStringLiteral("Use at least one visible character."));
    }
    return {};
}

} // namespace ferrow
