// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/ByteSource.h"
#include "Platform/Codecs/CodecSupport.h"
#include "Platform/Codecs/ImageEncoder.h"

#include <array>
#include <cstddef>
#include <cstdio>
#include <span>

#include <jpeglib.h>

// For the codecs over libjpeg alone.
namespace ferrow {

/// A file on its way through the library: its handle and callbacks. Throws EncoderError.
class JpegWriting {
public:
    /// `sink` must outlive the writing.
    explicit JpegWriting(ByteSink& sink);
    JpegWriting(const JpegWriting&) = delete;
    JpegWriting& operator=(const JpegWriting&) = delete;
    ~JpegWriting() { jpeg_destroy_compress(&codec); }

    /// `call` into the library, as for ErrorTrap.
    template <typename Call>
    void run(Call&& call)
    {
        if (!trap_.run(call))
            throw EncoderError{errorNumber_};
    }
    /// From a callback: ends the call of run().
    [[noreturn]] void giveUp() { trap_.spring(); }

    /// Metadata and profile, between the library's header and the first row. The Exif segment says what a JFIF segment
    /// would, and must come first.
    void writeSegments(const EncodeOptions& options);
    /// Completes the file and flushes the sink.
    void finish();

    jpeg_compress_struct codec{};
    void* owner = nullptr; ///< For callbacks of whoever writes.

private:
    static JpegWriting& of(j_compress_ptr codec) { return *static_cast<JpegWriting*>(codec->client_data); }
    void offerBuffer();
    void write(std::size_t count);

    ErrorTrap trap_;
    ByteSink& sink_;
    jpeg_error_mgr errors_{};
    jpeg_destination_mgr bytes_{};
    int errorNumber_ = 0;
    std::array<JOCTET, 65536> buffer_;
};

} // namespace ferrow
