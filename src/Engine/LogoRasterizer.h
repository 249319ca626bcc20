// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Engine/JobObserver.h"
#include "Engine/Requests.h"

namespace ferrow::Engine {

/// Reads a logo and draws it at the size asked for. Apart from the answerer, so that what reads photos alone loads
/// none of the libraries that draw PDF and SVG. Throws LogoAssetError, and what `observer` does.
[[nodiscard]] LogoAnswer rasterizeLogo(const LogoRequest& request, JobObserver& observer);

} // namespace ferrow::Engine
