// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Base/EnumCases.h"

#include "Support/TestSupport.h"

namespace ferrow {

enum class Counted { none, only8, last };
enum class Apart : unsigned char { one = 1, two, farOff = 64, farther };

TEST(EnumCases, findsTheLastOfThoseThatCountOn)
{
    EXPECT_EQ(lastEnumerator<Counted{}>(), Counted::last);
    EXPECT_EQ(lastEnumerator<Apart::one>(), Apart::two);
    EXPECT_EQ(lastEnumerator<Apart::farOff>(), Apart::farther);
}

} // namespace ferrow
