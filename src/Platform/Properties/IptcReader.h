// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Properties/PropertyMap.h"

#include <QByteArray>

namespace ferrow {

/// The {IPTC} sub-map out of a run of IPTC-IIM datasets. One that occurs several times becomes a list. Reading ends at
/// the first dataset that does not fit into the block.
[[nodiscard]] PropertyMap readIptc(const QByteArray& datasets);

/// The IPTC-IIM datasets inside a Photoshop image resource block ("8BIM" resources); empty when it has none.
[[nodiscard]] QByteArray iptcOfPhotoshopResources(const QByteArray& resources);

} // namespace ferrow
