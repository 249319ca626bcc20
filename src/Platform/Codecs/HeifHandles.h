// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/ByteSource.h"
#include "Platform/Base/Releaser.h"

#include <libheif/heif.h>

#include <cstdint>
#include <memory>

/// Owners of the library's objects and what it reads from, for the HEIF codec and the reader of HEIF metadata.
namespace ferrow::heif {

using Context = std::unique_ptr<heif_context, Releaser<heif_context_free>>;
using Handle = std::unique_ptr<heif_image_handle, Releaser<heif_image_handle_release>>;
using Image = std::unique_ptr<heif_image, Releaser<heif_image_release>>;
using Encoder = std::unique_ptr<heif_encoder, Releaser<heif_encoder_release>>;
using DecodingOptions = std::unique_ptr<heif_decoding_options, Releaser<heif_decoding_options_free>>;
using EncodingOptions = std::unique_ptr<heif_encoding_options, Releaser<heif_encoding_options_free>>;
using CodePoints = std::unique_ptr<heif_color_profile_nclx, Releaser<heif_nclx_color_profile_free>>;

/// What the library reads from: a position in the source, and whether the system refused to read. Must outlive the
/// context that it is handed to.
struct Reader {
    const ByteSource& source;
    std::int64_t position = 0;
    bool hasFailed = false;
};

/// Lets `context` read the file behind `reader`, which the library keeps for what it loads later.
[[nodiscard]] heif_error open(heif_context* context, Reader& reader);

} // namespace ferrow::heif
