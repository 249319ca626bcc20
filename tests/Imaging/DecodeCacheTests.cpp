// SPDX-License-Identifier: GPL-3.0-or-later
#include "Imaging/DecodeCache.h"

#include "Support/Pictures.h"

namespace ferrow {

TEST(DecodeCache, evictsByAgeAloneAndKeepsTheFirstPicture)
{
    DecodeCache cache;
    const auto key = [](int number) { return DecodeCache::Key{QByteArray::number(number), 100}; };
    const auto picture = [](int value) { return test::flat({1, 1}, rgb8, {value, 0, 0}); };
    for (int i = 0; i < 4; ++i)
        cache.store(picture(i), key(i));
    EXPECT_TRUE(cache.image(key(0))) << "a look-up must not make it younger";
    cache.store(picture(99), key(1));
    EXPECT_EQ(test::component(*cache.image(key(1)), 0, 0, 0), 1);
    EXPECT_FALSE(cache.image({"1", 200})) << "another size is another picture";
    cache.store(picture(4), key(4));
    EXPECT_FALSE(cache.image(key(0)));
    EXPECT_TRUE(cache.image(key(1)));
    EXPECT_EQ(cache.hits(), 3);
    EXPECT_EQ(cache.misses(), 2);
}

} // namespace ferrow
