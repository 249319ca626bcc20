// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/BlockGrid.h"
#include "Platform/Base/ByteSource.h"
#include "Platform/Codecs/ImageDecoder.h"
#include "Platform/Codecs/ImageEncoder.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace ferrow {

/// The coded data of a photo can't be kept after all. Thrown by value; what was written until then is rubbish.
struct CannotKeep {};

/// Where the upright photo lies on the canvas, in pixels from the left top.
struct PhotoPlace {
    std::int64_t x = 0;
    std::int64_t y = 0;
    PixelSize size;
};

/// A JPEG made larger without being coded anew: its 8 × 8 blocks stand in the output as they stand in the file, turned
/// upright. Only what lies around and over it is coded, with the photo's own tables and sampling. Damage is found as
/// by strict decoding. Use from one thread.
class JpegFraming {
public:
    /// What covers the photo: canvas rows from the top, straight rgba8.
    struct Cover {
        /// The next rows, `stride` bytes apart. In the photo's place what lies over it is drawn on what is there: clear
        /// pixels, or anything where columnsOverPhoto() has nothing. All else is opaque.
        std::function<void(std::int64_t count, std::byte* out, std::size_t stride)> read;
        /// The canvas columns from the first to behind the last in which these rows of the photo may be covered; two
        /// equal ones for none.
        std::function<std::pair<std::int64_t, std::int64_t>(std::int64_t firstRow, std::int64_t count)>
            columnsOverPhoto;
    };

    /// Reads the header; `source` must outlive the framing. Throws CodecError, and CannotKeep where gridOf() the
    /// decoder has none.
    JpegFraming(const ByteSource& source, int orientation);
    ~JpegFraming();

    /// Where the upright photo may lie.
    [[nodiscard]] BlockGrid grid() const;
    /// Bytes of memory held at once beyond some rows: all coefficients of a photo in several scans, or of one that is
    /// turned or upside down; else 0.
    [[nodiscard]] std::int64_t heldBytes() const;

    /// Writes the whole output, `options.size` pixels of it. Profile and metadata are `options`'s, its format and
    /// quality play no part. Once. Throws CodecError (damaged), EncoderError, CannotKeep (for a place that is not on
    /// the grid, or coefficients that no file may hold), and what `cover` does.
    void write(const PhotoPlace& photo, const Cover& cover, ByteSink& sink, const EncodeOptions& options);

private:
    class Work;
    std::unique_ptr<Work> work_;
};

} // namespace ferrow
