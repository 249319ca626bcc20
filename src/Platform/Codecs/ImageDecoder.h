// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/BlockGrid.h"
#include "Platform/Base/ByteSource.h"
#include "Platform/Base/PixelSize.h"
#include "Platform/Codecs/FileType.h"
#include "Platform/Pixels/ColorProfile.h"
#include "Platform/Pixels/PixelFormat.h"

#include <QString>

#include <cstddef>
#include <memory>
#include <optional>

namespace ferrow {

/// Why a codec gave up. Thrown by value.
struct CodecError {
    enum class Reason {
        malformed,   ///< Not a whole, valid file of its type: nothing can be shown.
        unsupported, ///< Valid, but of a kind this codec cannot decode; `kind` names it.
        damaged,     ///< Picture data is missing or broken.
        tooLarge,    ///< The library's memory ceiling was reached.
        unreadable,  ///< The system refused to read the descriptor.
    };

    Reason reason = Reason::malformed;
    QString kind; ///< For `unsupported`: what it is, to stand before "is not supported" ("12-bit JPEG").

    bool operator==(const CodecError&) const = default;
};

enum class Tolerance {
    strict,   ///< Export: any lost pixel is Reason::damaged.
    tolerant, ///< Thumbnail or preview: lost pixels stay gray as long as some of the picture is there.
};

struct DecodeOptions {
    /// Longest side that is enough, in pixels; 0 asks for the full size. A codec with a reduced decode of its own
    /// (JPEG's DCT scaling) delivers the smallest reduction whose longest side is still at least this; others deliver
    /// the full size. Embedded previews are never used.
    std::int64_t enoughDimension = 0;
    Tolerance tolerance = Tolerance::strict;
    /// The most that a side may be reduced by for enoughDimension: 8, 4 or 2.
    unsigned mostReduction = 8;
};

/// Decodes the first (for HEIF: the primary) picture of one file, row by row from the top, as stored: an orientation
/// tag is not applied, but HEIF's own rotation, mirror and crop boxes are. Opening reads only the header: no pixel
/// memory is asked for before the first readRows(). Use from one thread.
class ImageDecoder {
public:
    virtual ~ImageDecoder() = default;

    /// As the header declares it (HEIF: after its rotation, mirror and crop boxes).
    [[nodiscard]] virtual PixelSize storedSize() const = 0;
    /// Of the rows that readRows() delivers: storedSize(), or a codec's own reduction of it.
    [[nodiscard]] virtual PixelSize size() const = 0;
    /// Of the delivered pixels. Alpha is none or straight. 16-bit where the source holds more than 8 bits.
    [[nodiscard]] virtual PixelFormat format() const = 0;
    /// Of the delivered pixels; empty when the file brings none or one that cannot be used.
    [[nodiscard]] virtual ColorProfile profile() const = 0;
    /// Bytes of memory that decoding holds at once beyond some tens of rows: 0 for a decoder that streams; the
    /// whole picture (progressive, interlaced, HEIF, a single compressed strip) otherwise.
    [[nodiscard]] virtual std::int64_t heldBytes() const = 0;
    /// Where the picture, turned upright from `orientation` (1…8, as Exif counts them), may lie for JpegFraming; none
    /// where it can't keep its coded data.
    [[nodiscard]] virtual std::optional<BlockGrid> blockGrid(int /*orientation*/) const { return std::nullopt; }

    /// The next `count` rows (the caller never asks for more than are left) to `out`, `stride` bytes apart (both
    /// even where components have 16 bits).
    /// Throws CodecError.
    virtual void readRows(std::int64_t count, std::byte* out, std::size_t stride) = 0;
    /// Call after the last row: throws CodecError (damaged) when the codec learns only now that data was lost.
    virtual void finish() = 0;
};

/// Opens the codec for `type` (not pdf). `source` must outlive the decoder. Throws CodecError: malformed for a bad
/// header, including sizes below 1.
[[nodiscard]] std::unique_ptr<ImageDecoder> openDecoder(FileType type, const ByteSource& source,
                                                        const DecodeOptions& options);

// One per codec; callers use openDecoder().
[[nodiscard]] std::unique_ptr<ImageDecoder> openJpegDecoder(const ByteSource& source, const DecodeOptions& options);
[[nodiscard]] std::unique_ptr<ImageDecoder> openPngDecoder(const ByteSource& source, const DecodeOptions& options);
[[nodiscard]] std::unique_ptr<ImageDecoder> openTiffDecoder(const ByteSource& source, const DecodeOptions& options);
[[nodiscard]] std::unique_ptr<ImageDecoder> openHeifDecoder(const ByteSource& source, const DecodeOptions& options);

/// Loads what libraries find by name in the file system when they are first used, for whoever gives that up later.
void loadCodecPlugins();

} // namespace ferrow
