// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Engine/JobObserver.h"
#include "Engine/Requests.h"
#include "Engine/RowSource.h"
#include "Platform/Codecs/ImageDecoder.h"
#include "Platform/Pixels/Bitmap.h"
#include "Platform/Pixels/ColorTransform.h"
#include "Platform/Pixels/RowReducer.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace ferrow::Engine {

/// A photo whose header was read and found within the limits; no pixel memory has been asked for yet.
struct OpenedPhoto {
    FileType type = FileType::jpeg;           ///< One of photos.
    std::unique_ptr<const ByteSource> source; ///< On the heap: the decoder keeps a reference while this moves.
    ImageProperties properties;
    int orientation = 1; ///< 1…8, as the Exif and TIFF tag count them.
    std::unique_ptr<ImageDecoder> decoder;

    [[nodiscard]] PixelSize uprightSize() const;
};

/// Type by content, properties, orientation, decoder, limits, in this order. Throws ImagePipelineError.
[[nodiscard]] OpenedPhoto openPhoto(const SourceFile& source, const DecodeOptions& options);

/// Of a job that reads the photo and holds `bytes` at once.
[[nodiscard]] JobSize jobSize(const OpenedPhoto& photo, std::int64_t bytes);

/// For what keeps a JPEG's coded data; none where that can't be.
[[nodiscard]] std::optional<CodedData> codedDataOf(const OpenedPhoto& photo);

/// Whether an orientation turns the picture by a quarter.
[[nodiscard]] constexpr bool swapsDimensions(int orientation)
{
    return orientation >= 5 && orientation <= 8;
}

/// `picture` turned and mirrored upright.
[[nodiscard]] Bitmap oriented(const Bitmap& picture, int orientation);

/// How many pixels a side are averaged into one before the fine filter does the rest: down to no less than twice
/// `maximumDimension`.
[[nodiscard]] inline std::int64_t blockFactor(PixelSize size, std::int64_t maximumDimension)
{
    return std::clamp<std::int64_t>(size.longestSide() / (2 * maximumDimension), 1, 256);
}

/// Options for a photo that PhotoRows reduces to `size`; 0 × 0 for none. A picture decoded at half size, where that
/// leaves a quarter more pixels a side than are needed, is within 45 dB of the whole one reduced; at a quarter it would
/// not be, since codecs average levels instead of light.
[[nodiscard]] DecodeOptions decodingFor(PixelSize size);

/// Upright rows of a photo, RGB or straight RGBA in a given RGB space. Streams where the decoder streams and the
/// picture need not be turned; else holds one whole bitmap, 3 or 4 components a pixel of the result. Throws
/// ImagePipelineError.
class PhotoRows : public RowSource {
public:
    /// `photo` must outlive the rows. `size`, unless 0 × 0, is what the upright picture is reduced to; `bits` is the
    /// depth of a component, 8 or 16, whichever the file has.
    PhotoRows(OpenedPhoto& photo, const ColorProfile& target, PixelSize size = {}, int bits = 8);

    [[nodiscard]] PixelSize size() const override;
    [[nodiscard]] PixelFormat format() const override { return format_; }
    void readRows(std::int64_t count, std::byte* out, std::size_t stride) override;
    /// After the last row: throws where the decoder learns only at the end that pixels were lost.
    void finish();

private:
    void readStored(std::int64_t count, std::byte* out, std::size_t stride);
    void readDecoded(std::int64_t count, std::byte* out, std::size_t stride);
    void readReduced(std::int64_t count, std::byte* out, std::size_t stride);

    OpenedPhoto& photo_;
    PixelFormat format_;
    ColorTransform transform_;
    std::vector<std::byte> scratch_;
    PixelSize storedSize_; ///< Of the rows as they are handed out, before they are turned.
    std::optional<RowReducer> reducer_;
    std::vector<std::byte> ahead_; ///< Rows decoded for the reducer.
    std::int64_t aheadFirst_ = 0;
    std::int64_t aheadCount_ = 0;
    std::int64_t decodedRows_ = 0;
    Bitmap whole_; ///< As stored, for orientations that can't be streamed.
    std::int64_t nextRow_ = 0;
};

/// The picture upright and at most `maximumDimension` long, in `target`'s space. Throws ImagePipelineError, and what
/// `beforeBand` throws, which is called before each band of rows is read.
[[nodiscard]] Bitmap reducedPicture(
    OpenedPhoto& photo, std::int64_t maximumDimension, const ColorProfile& target,
    const std::function<void()>& beforeBand = [] {});

} // namespace ferrow::Engine
