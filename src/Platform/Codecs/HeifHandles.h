// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <libheif/heif.h>

#include <memory>

/// Owners of the library's objects, for the HEIF codec's own files.
namespace ferrow::heif {

template <auto release>
struct Releaser {
    template <typename T>
    void operator()(T* handle) const
    {
        release(handle);
    }
};

using Context = std::unique_ptr<heif_context, Releaser<heif_context_free>>;
using Handle = std::unique_ptr<heif_image_handle, Releaser<heif_image_handle_release>>;
using Image = std::unique_ptr<heif_image, Releaser<heif_image_release>>;
using Encoder = std::unique_ptr<heif_encoder, Releaser<heif_encoder_release>>;
using DecodingOptions = std::unique_ptr<heif_decoding_options, Releaser<heif_decoding_options_free>>;
using EncodingOptions = std::unique_ptr<heif_encoding_options, Releaser<heif_encoding_options_free>>;
using CodePoints = std::unique_ptr<heif_color_profile_nclx, Releaser<heif_nclx_color_profile_free>>;

} // namespace ferrow::heif
