// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/CodecSupport.h"
#include "Platform/Codecs/ExifBlock.h"
#include "Platform/Codecs/ImageEncoder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include <jpeglib.h>

namespace ferrow {

namespace {

/// Rows handed to the library in one call.
constexpr std::int64_t rowsAtOnce = 16;

/// From here on chroma keeps its full resolution.
constexpr double fullChromaQuality = 0.9;

class JpegEncoder final : public ImageEncoder {
public:
    JpegEncoder(ByteSink& sink, const EncodeOptions& options) : sink_(sink)
    {
        if (options.format != rgb8)
            throw EncoderError{};
        connect();
        const QByteArray exif =
            QByteArrayLiteral("Exif\0\0") +
            makeExifBlock(options.metadata, options.size, options.profile.isEquivalentTo(ColorProfile::sRGB()));
        run([&] { writeHeader(options, exif); });
    }

    void writeRows(std::int64_t count, const std::byte* rows, std::size_t stride) override
    {
        run([=, this] {
            std::array<JSAMPROW, rowsAtOnce> pointers;
            for (std::int64_t done = 0; done < count;) {
                const std::int64_t some = std::min(rowsAtOnce, count - done);
                // The library does not write to them; its type is older than const.
                for (std::int64_t i = 0; i < some; ++i)
                    pointers[std::size_t(i)] =
                        reinterpret_cast<JSAMPROW>(const_cast<std::byte*>(rows + std::size_t(done + i) * stride));
                done += jpeg_write_scanlines(&codec_, pointers.data(), JDIMENSION(some));
            }
        });
    }

    void finish() override
    {
        run([this] { jpeg_finish_compress(&codec_); });
        try {
            sink_.flush();
        } catch (const InputOutputError& error) {
            throw EncoderError{error.errorNumber};
        }
    }

private:
    struct Handle : jpeg_compress_struct {
        ~Handle() { jpeg_destroy_compress(this); }
    };

    static JpegEncoder& of(j_compress_ptr codec) { return *static_cast<JpegEncoder*>(codec->client_data); }

    void connect()
    {
        codec_.err = jpeg_std_error(&errors_);
        codec_.client_data = this;
        errors_.error_exit = [](j_common_ptr codec) { static_cast<JpegEncoder*>(codec->client_data)->trap_.spring(); };
        errors_.emit_message = [](j_common_ptr, int) {};
        errors_.output_message = [](j_common_ptr) {};
        bytes_.init_destination = [](j_compress_ptr codec) { of(codec).offerBuffer(); };
        bytes_.empty_output_buffer = [](j_compress_ptr codec) {
            of(codec).write(of(codec).buffer_.size());
            of(codec).offerBuffer();
            return boolean(TRUE);
        };
        bytes_.term_destination = [](j_compress_ptr codec) {
            of(codec).write(of(codec).buffer_.size() - of(codec).bytes_.free_in_buffer);
        };
    }

    /// Chroma at full resolution or the library's usual halves, standard Huffman tables, no JFIF segment: the Exif one,
    /// which must come first, says the same.
    void writeHeader(const EncodeOptions& options, const QByteArray& exif)
    {
        jpeg_create_compress(&codec_);
        codec_.dest = &bytes_;
        codec_.image_width = JDIMENSION(options.size.width);
        codec_.image_height = JDIMENSION(options.size.height);
        codec_.input_components = 3;
        codec_.in_color_space = JCS_RGB;
        jpeg_set_defaults(&codec_);
        jpeg_set_quality(&codec_, int(std::lround(std::clamp(options.quality, 0.0, 1.0) * 100)), TRUE);
        if (options.quality >= fullChromaQuality)
            codec_.comp_info[0].h_samp_factor = codec_.comp_info[0].v_samp_factor = 1;
        codec_.write_JFIF_header = FALSE;
        jpeg_start_compress(&codec_, TRUE);

        jpeg_write_marker(&codec_, JPEG_APP0 + 1, reinterpret_cast<const JOCTET*>(exif.constData()),
                          unsigned(exif.size()));
        const QByteArray& icc = options.profile.icc();
        if (!icc.isEmpty())
            jpeg_write_icc_profile(&codec_, reinterpret_cast<const JOCTET*>(icc.constData()), unsigned(icc.size()));
    }

    template <typename Call>
    void run(Call&& call)
    {
        if (!trap_.run(call))
            throw EncoderError{errorNumber_};
    }

    void offerBuffer()
    {
        bytes_.next_output_byte = buffer_.data();
        bytes_.free_in_buffer = buffer_.size();
    }

    void write(std::size_t count)
    {
        errorNumber_ = writeQuietly(sink_, std::as_bytes(std::span(buffer_).first(count)));
        if (errorNumber_ != 0)
            trap_.spring();
    }

    ErrorTrap trap_;
    ByteSink& sink_;
    Handle codec_{};
    jpeg_error_mgr errors_{};
    jpeg_destination_mgr bytes_{};
    int errorNumber_ = 0;
    std::array<JOCTET, 65536> buffer_;
};

} // namespace

std::unique_ptr<ImageEncoder> openJpegEncoder(ByteSink& sink, const EncodeOptions& options)
{
    return std::make_unique<JpegEncoder>(sink, options);
}

} // namespace ferrow
