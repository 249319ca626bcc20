// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Base/TaskGroup.h"

#include "Support/NoThreads.h"

#include <gmock/gmock.h>

#include <atomic>
#include <barrier>
#include <stdexcept>

namespace ferrow::test {

TEST(TaskGroup, runsAsManyAtOnceAsItMayAndNoMore)
{
    std::barrier together(3); // Nobody passes before three are running.
    std::atomic<int> running = 0;
    std::vector<int> seen(99);
    const auto operation = [&](std::size_t index) {
        const bool isWithinBound = ++running <= 3;
        together.arrive_and_wait();
        --running;
        return isWithinBound ? index * 2 : 0;
    };
    const auto collect = [&](std::size_t index, std::size_t result) {
        EXPECT_EQ(result, index * 2);
        ++seen[index];
    };
    runBounded<std::size_t>(seen.size(), 3, operation, collect, [] { return true; });
    EXPECT_THAT(seen, testing::Each(1));
}

TEST(TaskGroup, startsOthersForThoseThatWaitAndNeverMoreThanAsManyAgain)
{
    constexpr std::size_t most = 2;
    std::atomic<std::size_t> working = 0;
    std::atomic<std::size_t> inHand = 0;
    std::barrier together(2 * most); // Nobody's wait is over before that many are in hand.
    const auto operation = [&](std::size_t, const std::function<void()>& release) {
        const bool isWithinBounds = ++working <= most && ++inHand <= 2 * most;
        --working;
        release();
        release(); // Once is enough.
        together.arrive_and_wait();
        --inHand;
        return isWithinBounds;
    };
    std::size_t ended = 0;
    runReleasing<bool>(
        40, most, operation,
        [&](std::size_t, bool isWithinBounds) {
            EXPECT_TRUE(isWithinBounds);
            ++ended;
        },
        [] { return true; });
    EXPECT_EQ(ended, 40u);
}

TEST(TaskGroup, startsNothingAfterARefusalAndCollectsWhatRuns)
{
    for (const std::size_t concurrency : {0, 2}) { // None counts as one.
        std::vector<std::size_t> seen;
        int asked = 0;
        runBounded<int>(
            100, concurrency, [](std::size_t) { return 0; }, [&](std::size_t index, int) { seen.push_back(index); },
            [&] { return ++asked != 4; }); // Would allow again afterwards.
        EXPECT_THAT(seen, testing::UnorderedElementsAre(0, 1, 2));
    }
}

TEST(TaskGroup, worksOnTheCallingThreadWhereNoOtherIsToBeHad)
{
    const NoThreads none;
    std::vector<std::size_t> seen;
    runBounded<bool>(
        5, 3, [caller = std::this_thread::get_id()](std::size_t) { return std::this_thread::get_id() == caller; },
        [&](std::size_t index, bool isCaller) {
            EXPECT_TRUE(isCaller);
            seen.push_back(index);
        },
        [&] { return seen.size() < 3; });
    EXPECT_THAT(seen, testing::ElementsAre(0, 1, 2));
}

TEST(TaskGroup, endsWhenCollectingThrows)
{
    int ran = 0;
    const auto operation = [&](std::size_t) { return ++ran; };
    const auto collect = [](std::size_t, int) { throw std::runtime_error("no"); };
    EXPECT_THROW(runBounded<int>(50, 1, operation, collect, [] { return true; }), std::runtime_error);
    EXPECT_EQ(ran, 1);
}

} // namespace ferrow::test
