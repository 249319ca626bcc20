// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Properties/PropertyMap.h"

#include <QByteArray>

namespace ferrow {

/// The listed values of one XMP packet under "dc:title" and so on: texts, lists of texts, and language alternatives as
/// maps from language to text, x-default first. Of a damaged packet, what was whole before the damage; nothing of a
/// packet with a document type declaration, or of one longer than MetadataBlocks::maximumLength.
[[nodiscard]] PropertyMap readXmpPacket(const QByteArray& packet);

} // namespace ferrow
