// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Pixels/PressSpace.h"

namespace ferrow {

const QByteArray& pressProfile()
{
    static const QByteArray profile;
    return profile;
}

} // namespace ferrow
