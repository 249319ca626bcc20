// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

namespace ferrow::Worker {

/// What libraries load when they first draw a PDF or SVG must be loaded while files can still be opened: draws a line
/// of text by way of a PDF. Answers the folders in which fonts are looked for, what describes them, and the fonts that
/// lie elsewhere.
[[nodiscard]] std::vector<std::string> warmUpText();

} // namespace ferrow::Worker
