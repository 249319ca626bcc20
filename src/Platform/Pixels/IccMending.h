// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

namespace ferrow {

/// A profile that the color library takes, as strict readers take it too (libpng's of PNG among them): with a valid
/// intent and illuminant, the length that its version asks for, and no tags outside. What is valid stays byte for byte.
/// `icc` has a whole header and tag count.
[[nodiscard]] QByteArray mendedIcc(const QByteArray& icc);

} // namespace ferrow
