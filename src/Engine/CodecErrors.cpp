// SPDX-License-Identifier: GPL-3.0-or-later
#include "Engine/CodecErrors.h"

namespace ferrow::Engine {

void rethrow(const CodecError& error, Stage stage)
{
    switch (error.reason) {
    case CodecError::Reason::unsupported:
        throw ImagePipelineError(ImagePipelineError::UnsupportedType{error.kind});
    case CodecError::Reason::unreadable:
        throw ImagePipelineError(ImagePipelineError::unreadableFile);
    case CodecError::Reason::tooLarge:
        throw ImagePipelineError(ImagePipelineError::decodingFailed);
    case CodecError::Reason::malformed:
    case CodecError::Reason::damaged:
        break;
    }
    throw ImagePipelineError(stage == Stage::header ? ImagePipelineError::malformedImage
                                                    : ImagePipelineError::decodingFailed);
}

} // namespace ferrow::Engine
