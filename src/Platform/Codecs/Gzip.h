// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

namespace ferrow {

/// Whether the bytes begin as a gzip file does.
[[nodiscard]] bool isGzip(const QByteArray& bytes);

/// What a gzip file holds, as far as it is there and whole, and at most `most` bytes of it.
[[nodiscard]] QByteArray inflatedGzip(const QByteArray& gzip, qsizetype most);

} // namespace ferrow
