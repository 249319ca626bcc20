// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

namespace ferrow {

/// A profile of a web-offset press, for CMYK pictures that bring none. Worked out at its first use.
[[nodiscard]] const QByteArray& pressProfile();

} // namespace ferrow
