// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/ByteSource.h"
#include "Platform/Base/PixelSize.h"
#include "Platform/Pixels/ColorProfile.h"
#include "Platform/Pixels/PixelFormat.h"

#include <QString>

#include <cstddef>
#include <memory>
#include <optional>

namespace ferrow {

enum class OutputType { jpeg, png, tiff, heif };

/// Everything that an output carries besides pixels and profile; orientation 1 is always written. Texts go out as
/// UTF-8. Nothing else is ever written, position data least of all.
struct OutputMetadata {
    std::optional<QString> make;
    std::optional<QString> model;
    std::optional<QString> artist;
    std::optional<QString> copyright;
    std::optional<QString> dateTimeOriginal; ///< "yyyy:MM:dd HH:mm:ss".

    bool operator==(const OutputMetadata&) const = default;
};

struct EncodeOptions {
    PixelSize size;
    /// rgb8; for PNG, TIFF and HEIF straight alpha and 16 bits besides, of which HEIF keeps ten.
    PixelFormat format = rgb8;
    ColorProfile profile; ///< Embedded as it is; none where it is empty.
    double quality = 0.9; ///< 0…1, for JPEG and HEIF.
    OutputMetadata metadata;
};

/// The picture could not be encoded. `errorNumber` is the system's where writing was the cause, else 0.
struct EncoderError {
    int errorNumber = 0;
    bool isEncoderMissing = false; ///< Of HEIF, whose library may find its encoder among plugins, or none.
};

/// Encodes one picture, rows from the top. Use from one thread.
class ImageEncoder {
public:
    virtual ~ImageEncoder() = default;
    /// The next `count` rows, `stride` bytes apart. Throws EncoderError.
    virtual void writeRows(std::int64_t count, const std::byte* rows, std::size_t stride) = 0;
    /// After the last row: completes the container and flushes the sink. Throws EncoderError.
    virtual void finish() = 0;
};

/// Longest side of a HEIC, in pixels: the library writes larger ones and then refuses to read them back.
inline constexpr std::int64_t heifMaximumSide = 32'768;

/// Bytes of memory that encoding a HEIC of that size takes at most, measured: docs/heic-encoder.md.
[[nodiscard]] std::int64_t heifEncoderBytes(PixelSize size, PixelFormat format);

/// `sink` must outlive the encoder. Throws EncoderError; a HEIC beyond heifMaximumSide is refused here.
[[nodiscard]] std::unique_ptr<ImageEncoder> openEncoder(OutputType type, ByteSink& sink, const EncodeOptions& options);

// One per codec; callers use openEncoder().
[[nodiscard]] std::unique_ptr<ImageEncoder> openJpegEncoder(ByteSink& sink, const EncodeOptions& options);
[[nodiscard]] std::unique_ptr<ImageEncoder> openPngEncoder(ByteSink& sink, const EncodeOptions& options);
[[nodiscard]] std::unique_ptr<ImageEncoder> openTiffEncoder(ByteSink& sink, const EncodeOptions& options);
[[nodiscard]] std::unique_ptr<ImageEncoder> openHeifEncoder(ByteSink& sink, const EncodeOptions& options);

} // namespace ferrow
