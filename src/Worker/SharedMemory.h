// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Files/Descriptor.h"
#include "Platform/Pixels/Bitmap.h"

#include <cstddef>

namespace ferrow::Worker {

/// Memory behind a descriptor that another process can be given: of fixed size, costing only what is written to. Moves
/// only.
class SharedMemory {
public:
    /// Can neither grow nor shrink, whoever holds it. Throws std::bad_alloc.
    explicit SharedMemory(std::size_t bytes);

    [[nodiscard]] int descriptor() const { return descriptor_.get(); }
    /// Nobody can write any more. False while some process still has it mapped for writing.
    [[nodiscard]] bool seal();

private:
    Descriptor descriptor_;
};

/// A picture's rows, one behind the other without gaps, to and from `offset` on behind a descriptor. False when they do
/// not fit there, or the system refuses.
[[nodiscard]] bool writePicture(int descriptor, const Bitmap& picture, std::size_t offset);
[[nodiscard]] bool readPicture(int descriptor, Bitmap& picture, std::size_t offset);

} // namespace ferrow::Worker
