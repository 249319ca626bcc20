// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Base/TaskGroup.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <latch>
#include <numeric>
#include <stdexcept>
#include <thread>
#include <vector>

namespace ferrow::test {
namespace {

TEST(TaskGroup, runsEverythingWithinItsBound)
{
    std::atomic<int> running = 0;
    std::atomic<int> most = 0;
    std::vector<std::size_t> seen;
    runBounded<std::size_t>(
        200, 3,
        [&](std::size_t index) {
            const int now = ++running;
            for (int before = most; now > before && !most.compare_exchange_weak(before, now);) {
            }
            std::this_thread::yield();
            --running;
            return index * 2;
        },
        [&](std::size_t index, std::size_t result) {
            EXPECT_EQ(result, index * 2);
            seen.push_back(index);
        },
        [] { return true; });
    std::sort(seen.begin(), seen.end());
    std::vector<std::size_t> all(200);
    std::iota(all.begin(), all.end(), 0u);
    EXPECT_EQ(seen, all);
    EXPECT_LE(most, 3);
}

TEST(TaskGroup, runsAsManyAtOnceAsItMay)
{
    std::latch together(3); // Nobody passes before three are running.
    int collected = 0;
    runBounded<int>(
        3, 3,
        [&](std::size_t) {
            together.arrive_and_wait();
            return 1;
        },
        [&](std::size_t, int one) { collected += one; }, [] { return true; });
    EXPECT_EQ(collected, 3);
}

TEST(TaskGroup, startsNothingAfterARefusalAndCollectsWhatRuns)
{
    std::vector<std::size_t> seen;
    int asked = 0;
    runBounded<int>(
        100, 2, [](std::size_t) { return 0; }, [&](std::size_t index, int) { seen.push_back(index); },
        [&] { return ++asked != 4; }); // Would allow again afterwards.
    EXPECT_THAT(seen, testing::UnorderedElementsAre(0, 1, 2));
}

TEST(TaskGroup, endsWhenCollectingThrows)
{
    std::atomic<int> ran = 0;
    EXPECT_THROW(runBounded<int>(
                     50, 2, [&](std::size_t) { return ++ran; },
                     [](std::size_t, int) { throw std::runtime_error("no"); }, [] { return true; }),
                 std::runtime_error);
    EXPECT_LE(ran, 2);
}

TEST(TaskGroup, countsNoConcurrencyAsOne)
{
    int collected = 0;
    runBounded<int>(
        2, 0, [](std::size_t) { return 1; }, [&](std::size_t, int one) { collected += one; }, [] { return true; });
    EXPECT_EQ(collected, 2);
}

} // namespace
} // namespace ferrow::test
