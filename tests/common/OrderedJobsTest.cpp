#include "common/OrderedJobs.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <stdexcept>
#include <string>
#include <system_error>

#include <gtest/gtest.h>

namespace trevolt {
namespace {

using namespace std::chrono_literals;

TEST(OrderedJobs, DeliversInOrderOnTheCallingThread) {
    for (const std::size_t jobs : {1U, 2U, 3U, 8U, 100U}) {
        std::vector<std::size_t> delivered;
        const auto caller = std::this_thread::get_id();
        RunOrdered<std::size_t>(
            50, jobs,
            [](std::size_t i) {
                if (i % 7 == 0)
                    std::this_thread::sleep_for(1ms); // some finish behind those after them
                return i * i;
            },
            [&](std::size_t result) {
                EXPECT_EQ(std::this_thread::get_id(), caller);
                delivered.push_back(result);
            });
        ASSERT_EQ(delivered.size(), 50U);
        for (std::size_t i = 0; i < delivered.size(); ++i)
            EXPECT_EQ(delivered[i], i * i);
    }
}

TEST(OrderedJobs, DoesNothingForNothing) {
    RunOrdered<int>(
        0, 4, [](std::size_t) -> int { throw 1; }, [](int) { FAIL(); });
}

TEST(OrderedJobs, RunsOnOneThreadWhenNoneIsNamed) {
    int sum = 0;
    RunOrdered<int>(
        3, 0, [](std::size_t i) { return static_cast<int>(i); },
        [&](int result) { sum += result; });
    EXPECT_EQ(sum, 3);
}

TEST(OrderedJobs, WorksOnNoMoreThanJobsAtOnce) {
    std::atomic<int> working{0};
    std::atomic<int> most{0};
    RunOrdered<int>(
        40, 3,
        [&](std::size_t) {
            const int now = ++working;
            int before = most;
            while (before < now && !most.compare_exchange_weak(before, now)) {
            }
            std::this_thread::sleep_for(1ms);
            --working;
            return 0;
        },
        [](int) {});
    EXPECT_LE(most, 3);
    EXPECT_GE(most, 2);
}

TEST(OrderedJobs, DeliversEachAsSoonAsItIsThere) {
    std::atomic<bool> firstDelivered{false};
    bool secondSawIt = false;
    RunOrdered<int>(
        2, 2,
        [&](std::size_t i) {
            for (int n = 0; i == 1 && n < 5000 && !firstDelivered; ++n)
                std::this_thread::sleep_for(1ms);
            secondSawIt = i == 1 ? firstDelivered.load() : secondSawIt;
            return static_cast<int>(i);
        },
        [&](int result) { firstDelivered = firstDelivered || result == 0; });
    EXPECT_TRUE(secondSawIt);
}

TEST(OrderedJobs, GoesNoFurtherAheadThanTold) {
    std::atomic<std::size_t> delivered{0};
    std::atomic<std::size_t> farthest{0};
    RunOrdered<std::size_t>(
        60, 3,
        [&](std::size_t i) {
            const std::size_t ahead = i - delivered;
            std::size_t before = farthest;
            while (before < ahead && !farthest.compare_exchange_weak(before, ahead)) {
            }
            return i;
        },
        [&](std::size_t result) {
            EXPECT_EQ(result, delivered);
            std::this_thread::sleep_for(1ms); // the workers would run away
            ++delivered;
        },
        4);
    EXPECT_EQ(delivered, 60U);
    EXPECT_LE(farthest, 4U); // a result that is being delivered waits no more
    EXPECT_GE(farthest, 2U);
}

TEST(OrderedJobs, DoesOneJobOnTheCallingThread) {
    const auto caller = std::this_thread::get_id();
    for (const auto& [count, jobs] : {std::pair{5U, 1U}, std::pair{1U, 8U}})
        RunOrdered<bool>(
            count, jobs, [&](std::size_t) { return std::this_thread::get_id() == caller; },
            [](bool byCaller) { EXPECT_TRUE(byCaller); });
}

TEST(OrderedJobs, SharesOutEveryPieceOnce) {
    for (const std::size_t jobs : {0U, 1U, 2U, 5U, 100U}) {
        std::vector<std::atomic<int>> calls(37);
        ShareOut(calls.size(), jobs, [&](std::size_t i) { ++calls[i]; });
        for (const std::atomic<int>& count : calls)
            EXPECT_EQ(count, 1) << jobs;
    }
    ShareOut(0, 3, [](std::size_t) { FAIL(); });
}

TEST(OrderedJobs, SharesOutAmongTheCallerAndOthers) {
    std::atomic<int> working{0};
    std::atomic<int> most{0};
    std::atomic<int> byCaller{0};
    const auto caller = std::this_thread::get_id();
    ShareOut(40, 3, [&](std::size_t) {
        const int now = ++working;
        int before = most;
        while (before < now && !most.compare_exchange_weak(before, now)) {
        }
        byCaller += std::this_thread::get_id() == caller ? 1 : 0;
        std::this_thread::sleep_for(1ms);
        --working;
    });
    EXPECT_LE(most, 3);
    EXPECT_GE(most, 2);
    EXPECT_GT(byCaller, 0);
}

TEST(OrderedJobs, WhatDeliverThrowsEndsTheWorkAndComesThrough) {
    for (const std::size_t jobs : {1U, 3U}) {
        std::atomic<std::size_t> begun{0};
        const auto work = [&](std::size_t i) {
            ++begun;
            return i;
        };
        const auto deliver = [](std::size_t i) {
            if (i == 2)
                throw std::out_of_range("no more");
        };
        EXPECT_THROW(RunOrdered<std::size_t>(1000, jobs, work, deliver, 4), std::out_of_range);
        EXPECT_LE(begun, 2 + 1 + 4U) << "none that was not on its way";
        EXPECT_GE(begun, 3U);
    }
}

TEST(OrderedJobs, GivesResultsOutAsTheyAreAskedFor) {
    const auto work = [](std::size_t i) { return i * 2; };
    COrderedWork<std::size_t, decltype(work)> alone(3, 1, work);
    EXPECT_FALSE(alone.HasThreads());
    EXPECT_FALSE(alone.IsReady());
    EXPECT_EQ(alone.Take(), 0U);
    EXPECT_EQ(alone.Take(), 2U);

    std::atomic<bool> mayEnd{false};
    const auto held = [&](std::size_t i) {
        while (i == 1 && !mayEnd)
            std::this_thread::sleep_for(1ms);
        return i;
    };
    COrderedWork<std::size_t, decltype(held)> shared(3, 2, held);
    EXPECT_TRUE(shared.HasThreads());
    EXPECT_EQ(shared.Take(), 0U);
    EXPECT_FALSE(shared.IsReady());
    mayEnd = true;
    while (!shared.IsReady())
        std::this_thread::sleep_for(1ms);
    EXPECT_EQ(shared.Take(), 1U);
    EXPECT_EQ(shared.Take(), 2U);
    EXPECT_FALSE(shared.IsReady()) << "no further one comes";
}

/// A thread of a system that gives only some, or has memory only for some.
class CScarceThread {
  public:
    static inline int g_left = 0;
    static inline bool g_lacksMemory = false;

    template <class Body>
    explicit CScarceThread(Body body) {
        if (g_left == 0 && g_lacksMemory)
            throw std::bad_alloc();
        if (g_left == 0)
            throw std::system_error(EAGAIN, std::generic_category());
        --g_left;
        m_thread = std::jthread(body);
    }

  private:
    std::jthread m_thread;
};

TEST(OrderedJobs, GoesOnWithTheThreadsThatThereIsMemoryFor) {
    CScarceThread::g_lacksMemory = true;
    for (const int given : {0, 1, 2}) {
        CScarceThread::g_left = given;
        std::vector<std::size_t> delivered;
        RunOrdered<std::size_t, CScarceThread>(
            5, 3, [](std::size_t i) { return i; },
            [&](std::size_t result) { delivered.push_back(result); }, 2);
        EXPECT_EQ(delivered, (std::vector<std::size_t>{0, 1, 2, 3, 4}));
    }
    CScarceThread::g_lacksMemory = false;
}

TEST(OrderedJobs, GoesOnWithTheThreadsThatTheSystemGives) {
    const auto caller = std::this_thread::get_id();
    for (const int given : {0, 1, 2}) {
        CScarceThread::g_left = given;
        std::atomic<int> byCaller{0};
        std::vector<std::size_t> delivered;
        RunOrdered<std::size_t, CScarceThread>(
            20, 8,
            [&](std::size_t i) {
                byCaller += std::this_thread::get_id() == caller ? 1 : 0;
                return i;
            },
            [&](std::size_t result) {
                delivered.push_back(result);
                EXPECT_TRUE(given > 0 || byCaller == static_cast<int>(delivered.size()))
                    << "told at once";
            });
        EXPECT_EQ(byCaller, given == 0 ? 20 : 0);
        ASSERT_EQ(delivered.size(), 20U);
        for (std::size_t i = 0; i < delivered.size(); ++i)
            EXPECT_EQ(delivered[i], i);
    }
}

} // namespace
} // namespace trevolt
