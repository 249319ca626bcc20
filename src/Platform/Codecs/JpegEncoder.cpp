// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/ImageEncoder.h"
#include "Platform/Codecs/JpegWriting.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace ferrow {

namespace {

/// Rows handed to the library in one call.
constexpr std::int64_t rowsAtOnce = 16;

/// From here on chroma keeps its full resolution.
constexpr double fullChromaQuality = 0.9;

class JpegEncoder final : public ImageEncoder {
public:
    JpegEncoder(ByteSink& sink, const EncodeOptions& options) : writing_(sink)
    {
        if (options.format != rgb8)
            throw EncoderError{};
        writing_.run([&, this] { writeHeader(options); });
        writing_.writeSegments(options);
    }

    void writeRows(std::int64_t count, const std::byte* rows, std::size_t stride) override
    {
        writing_.run([=, this] {
            std::array<JSAMPROW, rowsAtOnce> pointers;
            for (std::int64_t done = 0; done < count;) {
                const std::int64_t some = std::min(rowsAtOnce, count - done);
                // The library does not write to them; its type is older than const.
                for (std::int64_t i = 0; i < some; ++i)
                    pointers[std::size_t(i)] =
                        reinterpret_cast<JSAMPROW>(const_cast<std::byte*>(rows + std::size_t(done + i) * stride));
                done += jpeg_write_scanlines(&writing_.codec, pointers.data(), JDIMENSION(some));
            }
        });
    }

    void finish() override { writing_.finish(); }

private:
    /// Chroma at full resolution or the library's usual halves, standard Huffman tables, no JFIF segment.
    void writeHeader(const EncodeOptions& options)
    {
        jpeg_compress_struct& codec = writing_.codec;
        codec.image_width = JDIMENSION(options.size.width);
        codec.image_height = JDIMENSION(options.size.height);
        codec.input_components = 3;
        codec.in_color_space = JCS_RGB;
        jpeg_set_defaults(&codec);
        jpeg_set_quality(&codec, int(std::lround(std::clamp(options.quality, 0.0, 1.0) * 100)), TRUE);
        if (options.quality >= fullChromaQuality)
            codec.comp_info[0].h_samp_factor = codec.comp_info[0].v_samp_factor = 1;
        codec.write_JFIF_header = FALSE;
        jpeg_start_compress(&codec, TRUE);
    }

    JpegWriting writing_;
};

} // namespace

std::unique_ptr<ImageEncoder> openJpegEncoder(ByteSink& sink, const EncodeOptions& options)
{
    return std::make_unique<JpegEncoder>(sink, options);
}

} // namespace ferrow
