// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Engine/RoundedRect.h"
#include "Models/ImportedPhoto.h"
#include "Models/RenderRecipe.h"
#include "Platform/Codecs/ImageEncoder.h"
#include "Platform/Pixels/Bitmap.h"
#include "Platform/Pixels/PictureSums.h"
#include "Platform/Properties/PropertyMap.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

/// Everything that touches untrusted bytes, as requests that carry values and descriptors, and answers that carry
/// values: whoever answers needs no files, no network and no window.
namespace ferrow::Engine {

/// Limits on source photos and on logos; each is the largest value still accepted.
inline constexpr std::int64_t maximumSourceSide = 50'000;
inline constexpr std::int64_t maximumSourcePixels = 200'000'000;
inline constexpr std::int64_t maximumLogoSide = 20'000;
inline constexpr std::int64_t maximumLogoPixels = 100'000'000;

/// Most memory that a codec may hold for a picture: what the largest ones need, for any layout, but nothing that a few
/// bytes of a small picture's header could ask for (tiles far larger than the picture).
[[nodiscard]] constexpr std::int64_t maximumHeldBytes(PixelSize size)
{
    return 256'000'000 + size.width * size.height * 16;
}

/// An open, regular file, borrowed until the request is answered. `size` as seen at open.
struct SourceFile {
    int descriptor = -1;
    std::int64_t size = 0;
};

/// What is this photo? With `maximumDimension` above 0 also: what does it look like, upright, at most that long.
struct InspectRequest {
    SourceFile source;
    std::int64_t maximumDimension = 0;
};

struct InspectAnswer {
    FileType type = FileType::jpeg; ///< One of photos.
    PixelSize storedSize;
    PixelSize uprightSize;
    ImageProperties properties;
    QString colorProfileName;
    std::optional<CodedData> codedData;
    Bitmap picture; ///< 8-bit RGB, alpha none or straight, in its own RGB space where well known (see
                    ///< viewingColorSpace()); or null.
};

/// A small picture laid over the canvas, already at its final size.
struct Overlay {
    Bitmap picture;     ///< Premultiplied RGBA in any RGB profile.
    std::int64_t x = 0; ///< Of its left edge on the canvas, origin at the top left; may lie outside.
    std::int64_t y = 0;
    double opacity = 1; ///< 0…1.
};

/// The photo itself as the canvas's background, covering it, out of focus.
struct BlurredPhoto {
    double sigma = 0; ///< Of the Gaussian, in canvas pixels.
    double light = 1; ///< 0…1: how much is kept of the photo's.

    bool operator==(const BlurredPhoto&) const = default;
};

/// What the photo casts on the background, in canvas pixels.
struct PhotoShadow {
    double sigma = 0;   ///< Of the Gaussian.
    double offset = 0;  ///< Downward.
    double opacity = 0; ///< 0…1.

    bool operator==(const PhotoShadow&) const = default;
};

/// A line around the photo, in canvas pixels; it follows the photo's corners.
struct PhotoLine {
    double distance = 0; ///< From the photo's edge outward.
    double thickness = 0;
    RGBAColor color; ///< sRGB.

    bool operator==(const PhotoLine&) const = default;
};

/// A framed picture as values: a canvas filled with one color or with the blurred photo, what the photo casts and what
/// surrounds it, a photo at whole-pixel position, overlays in order.
struct Composition {
    PixelSize canvasSize;
    RGBAColor borderColor;   ///< sRGB.
    std::int64_t photoX = 0; ///< Of the photo's left edge, origin at the top left.
    std::int64_t photoY = 0;
    PixelSize photoSize; ///< What the photo is reduced to; 0 × 0: it is drawn at its own size.
    std::vector<Overlay> overlays;
    OutputColorProfile colorProfile = OutputColorProfile::sRGB;
    /// The place of the photo, by which its corners are cut and line and shadow are drawn. In a preview, whose photo
    /// may be the lowest overlay, not always on whole pixels.
    RoundedRect photoArea = {};
    std::optional<BlurredPhoto> blurredPhoto = std::nullopt; ///< In place of `borderColor`.
    std::optional<PhotoShadow> shadow = std::nullopt;
    std::optional<PhotoLine> line = std::nullopt;
};

/// With how many bits a component, 8 or 16, a picture is composed that is written with that depth.
[[nodiscard]] constexpr int componentBits(BitDepth depth)
{
    return depth == BitDepth::eight ? 8 : 16;
}

/// Decode this photo at full size, frame it, encode it into that empty file.
struct FrameRequest {
    SourceFile source;
    int outputDescriptor = -1;
    PixelSize expectedSize; ///< Upright size at import; anything else is fullResolutionMismatch.
    Composition composition;
    ExportFormat format = ExportFormat::jpeg;
    double quality = 0.9;
    OutputMetadata metadata;
    bool summarizes = false; ///< Whether a summary of what is written is wanted, to compare its file with.
    /// The photo's coded data is to stand in the output as it is: see JpegFraming. Its place is on the photo's grid.
    bool keepsPhotoData = false;
    BitDepth depth = BitDepth::eight;
};

/// A picture in few enough words to compare one that was written with what its file holds.
struct PictureSummary {
    PixelSize size; ///< As stored.
    int orientation = 1;
    bool hasAlpha = false;
    std::uint64_t profile = 0;    ///< Digest of its ICC bytes.
    bool mayHoldPosition = false; ///< See mayHoldPosition().
    PictureSums pixels;           ///< Nothing, of a picture that is written without being decoded.

    bool operator==(const PictureSummary&) const = default;
};

/// What does that file, written in `format`, hold? Every pixel is decoded, and nothing is forgiven.
struct ReadBackRequest {
    SourceFile source;
    ExportFormat format = ExportFormat::jpeg;
};

/// The pixels of one part of the framed picture, as an export would write them.
struct RegionRequest {
    SourceFile source;
    PixelSize expectedSize;
    Composition composition;
    std::int64_t x = 0; ///< Of the region's left edge on the canvas, origin at the top left.
    std::int64_t y = 0;
    PixelSize size; ///< What reaches beyond the canvas is cut off.
};

/// A logo at most `maximumDimension` long (PDF pages and SVGs are drawn at exactly that).
struct LogoRequest {
    SourceFile source;
    std::int64_t maximumDimension = 0;
};

struct LogoAnswer {
    QByteArray fileExtension; ///< By content: "png", "tiff", "pdf" or "svg".
    Bitmap picture;           ///< Upright, premultiplied RGBA, in a space as above.
};

} // namespace ferrow::Engine
