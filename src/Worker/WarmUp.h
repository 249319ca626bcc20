// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

/// What libraries load when they are first used must be loaded while files can still be opened.
namespace ferrow::Worker {

/// For reading photos, and writing them as anything but HEIC.
void warmUpCodecs();

void warmUpHeicEncoder();

/// Draws a line of text by way of a PDF. Answers the folders in which fonts are looked for, what describes them,
/// and the fonts that lie elsewhere.
[[nodiscard]] std::vector<std::string> warmUpText();

} // namespace ferrow::Worker
