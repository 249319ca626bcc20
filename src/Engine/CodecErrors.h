// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/ErrorTexts.h"
#include "Platform/Base/ByteSource.h"
#include "Platform/Codecs/ImageDecoder.h"

#include <new>

namespace ferrow::Engine {

/// How the codecs' reasons read to the user, while the header is being read and while pixels are.
enum class Stage { header, pixels };

[[noreturn]] void rethrow(const CodecError& error, Stage stage);

/// What `work` answers, with the codecs' errors as ours.
template <typename Work>
auto translated(Stage stage, Work&& work)
{
    try {
        return work();
    } catch (const CodecError& error) {
        rethrow(error, stage);
    } catch (const InputOutputError&) {
        throw ImagePipelineError(ImagePipelineError::unreadableFile);
    } catch (const std::bad_alloc&) {
        throw ImagePipelineError(ImagePipelineError::decodingFailed);
    }
}

} // namespace ferrow::Engine
