// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/JpegWriting.h"

#include "Platform/Codecs/ExifBlock.h"

namespace ferrow {

JpegWriting::JpegWriting(ByteSink& sink) : sink_(sink)
{
    codec.err = jpeg_std_error(&errors_);
    codec.client_data = this;
    errors_.error_exit = [](j_common_ptr common) { static_cast<JpegWriting*>(common->client_data)->giveUp(); };
    errors_.emit_message = [](j_common_ptr, int) {};
    errors_.output_message = [](j_common_ptr) {};
    bytes_.init_destination = [](j_compress_ptr writing) { of(writing).offerBuffer(); };
    bytes_.empty_output_buffer = [](j_compress_ptr writing) {
        of(writing).write(of(writing).buffer_.size());
        of(writing).offerBuffer();
        return boolean(TRUE);
    };
    bytes_.term_destination = [](j_compress_ptr writing) {
        of(writing).write(of(writing).buffer_.size() - of(writing).bytes_.free_in_buffer);
    };
    run([this] {
        jpeg_create_compress(&codec);
        codec.dest = &bytes_;
    });
}

void JpegWriting::writeSegments(const EncodeOptions& options)
{
    const QByteArray exif =
        QByteArrayLiteral("Exif\0\0") +
        makeExifBlock(options.metadata, options.size, options.profile.isEquivalentTo(ColorProfile::sRGB()));
    const QByteArray& icc = options.profile.icc();
    run([&, this] {
        jpeg_write_marker(&codec, JPEG_APP0 + 1, reinterpret_cast<const JOCTET*>(exif.constData()),
                          unsigned(exif.size()));
        if (!icc.isEmpty())
            jpeg_write_icc_profile(&codec, reinterpret_cast<const JOCTET*>(icc.constData()), unsigned(icc.size()));
    });
}

void JpegWriting::finish()
{
    run([this] { jpeg_finish_compress(&codec); });
    try {
        sink_.flush();
    } catch (const InputOutputError& error) {
        throw EncoderError{error.errorNumber};
    }
}

void JpegWriting::offerBuffer()
{
    bytes_.next_output_byte = buffer_.data();
    bytes_.free_in_buffer = buffer_.size();
}

void JpegWriting::write(std::size_t count)
{
    errorNumber_ = writeQuietly(sink_, std::as_bytes(std::span(buffer_).first(count)));
    if (errorNumber_ != 0)
        giveUp();
}

} // namespace ferrow
