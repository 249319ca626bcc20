// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Codecs/CodecTesting.h"

#include <cstdio>
#include <cstdlib>
#include <functional>

#include <jpeglib.h>

namespace ferrow::test {

using Adjust = std::function<void(jpeg_compress_struct&)>;

inline const Adjust baseline = [](auto&) {};
inline const Adjust progressive = [](auto& codec) { jpeg_simple_progression(&codec); };

/// Factors of the first component; the others have one sample each.
inline Adjust sampled(int across, int down)
{
    return [=](auto& codec) { codec.comp_info[0].h_samp_factor = across, codec.comp_info[0].v_samp_factor = down; };
}

/// A file straight from the library, with whatever `adjust` sets between the defaults and the first row.
inline QByteArray libraryFile(const Adjust& adjust, PixelSize size, J_COLOR_SPACE space, int channels, Pixels pixels)
{
    jpeg_compress_struct codec{};
    jpeg_error_mgr errors{};
    codec.err = jpeg_std_error(&errors);
    jpeg_create_compress(&codec);
    unsigned char* bytes = nullptr;
    unsigned long length = 0;
    jpeg_mem_dest(&codec, &bytes, &length);
    codec.image_width = JDIMENSION(size.width);
    codec.image_height = JDIMENSION(size.height);
    codec.input_components = channels;
    codec.in_color_space = space;
    jpeg_set_defaults(&codec);
    jpeg_set_quality(&codec, 95, TRUE);
    adjust(codec);
    jpeg_start_compress(&codec, TRUE);
    for (JSAMPROW row = pixels.data(); codec.next_scanline < codec.image_height; row += size.width * channels)
        jpeg_write_scanlines(&codec, &row, 1);
    jpeg_finish_compress(&codec);
    jpeg_destroy_compress(&codec);
    const QByteArray file(reinterpret_cast<const char*>(bytes), qsizetype(length));
    std::free(bytes);
    return file;
}

} // namespace ferrow::test
