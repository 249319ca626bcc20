// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/ErrorTexts.h"

#include <stdexcept>

namespace ferrow::test {

/// Why `steps` failed.
template <typename Steps>
ImagePipelineError::Case pipelineErrorOf(const Steps& steps)
{
    try {
        static_cast<void>(steps());
    } catch (const ImagePipelineError& error) {
        return error.value;
    }
    throw std::runtime_error("it did not fail");
}

} // namespace ferrow::test
