#include "common/OrderedJobs.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <mutex>
#include <set>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace trevolt {
namespace {

using namespace std::chrono_literals;

constexpr std::array kTakers{ETaker::Works, ETaker::Waits};

/// Takes all results, one after the other.
template <class Result, class Thread = std::jthread, class Work, class Taken>
void TakeAll(std::size_t count, std::size_t jobs, ETaker taker, const Work& work,
             const Taken& taken, std::size_t ahead = SIZE_MAX) {
    COrderedWork<Result, Work, Thread> results(count, jobs, work, taker, ahead);
    for (std::size_t i = 0; i < count; ++i)
        taken(results.Take());
}

bool IsThread(std::thread::id id) { return std::this_thread::get_id() == id; }

/// How many are at work, and how many were at most.
class CAtWork {
  public:
    void WorkAWhile() {
        const int now = ++m_working;
        int before = m_most;
        while (before < now && !m_most.compare_exchange_weak(before, now)) {
        }
        std::this_thread::sleep_for(1ms);
        --m_working;
    }
    int Most() const { return m_most; }

  private:
    std::atomic<int> m_working{0};
    std::atomic<int> m_most{0};
};

TEST(OrderedJobs, GivesResultsInTheirOrder) {
    for (const ETaker taker : kTakers) {
        for (const std::size_t jobs : {1U, 2U, 3U, 8U, 100U}) {
            std::vector<std::size_t> taken;
            TakeAll<std::size_t>(
                50, jobs, taker,
                [](std::size_t i) {
                    if (i % 7 == 0)
                        std::this_thread::sleep_for(1ms); // some finish behind those after them
                    return i * i;
                },
                [&](std::size_t result) { taken.push_back(result); });
            ASSERT_EQ(taken.size(), 50U);
            for (std::size_t i = 0; i < taken.size(); ++i)
                EXPECT_EQ(taken[i], i * i);
        }
    }
}

TEST(OrderedJobs, DoesNothingForNothing) {
    for (const ETaker taker : kTakers) {
        const auto work = [](std::size_t) -> int { throw 1; };
        COrderedWork<int, decltype(work)> nothing(0, 4, work, taker);
        EXPECT_FALSE(nothing.HasThreads());
        EXPECT_FALSE(nothing.IsReady());
    }
}

TEST(OrderedJobs, HasOneJobWhenNoneIsNamed) {
    for (const ETaker taker : kTakers) {
        CAtWork atWork;
        int sum = 0;
        TakeAll<int>(
            3, 0, taker,
            [&](std::size_t i) {
                atWork.WorkAWhile();
                return static_cast<int>(i);
            },
            [&](int result) { sum += result; });
        EXPECT_EQ(sum, 3);
        EXPECT_EQ(atWork.Most(), 1);
    }
}

TEST(OrderedJobs, WorksOnAsManyAsJobsAtOnce) {
    for (const ETaker taker : kTakers) {
        CAtWork atWork;
        TakeAll<int>(
            40, 3, taker,
            [&](std::size_t) {
                atWork.WorkAWhile();
                return 0;
            },
            [](int) {});
        EXPECT_LE(atWork.Most(), 3);
        EXPECT_GE(atWork.Most(), 2);
    }
}

TEST(OrderedJobs, WhoWaitsGetsEachAsSoonAsItIsThere) {
    std::atomic<bool> isFirstTaken{false};
    bool secondSawIt = false;
    TakeAll<int>(
        2, 2, ETaker::Waits,
        [&](std::size_t i) {
            for (int n = 0; i == 1 && n < 5000 && !isFirstTaken; ++n)
                std::this_thread::sleep_for(1ms);
            secondSawIt = i == 1 ? isFirstTaken.load() : secondSawIt;
            return static_cast<int>(i);
        },
        [&](int result) { isFirstTaken = isFirstTaken || result == 0; });
    EXPECT_TRUE(secondSawIt);
}

TEST(OrderedJobs, WhoWorksIsOneOfTheJobs) {
    const auto caller = std::this_thread::get_id();
    for (const auto& [taker, byCallerAtLeast] :
         {std::pair(ETaker::Works, 1), std::pair(ETaker::Waits, 0)}) {
        std::atomic<int> byCaller{0};
        std::mutex mutex;
        std::set<std::thread::id> threads;
        TakeAll<int>(
            40, 3, taker,
            [&](std::size_t) {
                byCaller += IsThread(caller) ? 1 : 0;
                std::this_thread::sleep_for(1ms);
                const std::lock_guard lock(mutex);
                threads.insert(std::this_thread::get_id());
                return 0;
            },
            [](int) {});
        EXPECT_GE(byCaller, byCallerAtLeast);
        EXPECT_EQ(byCaller > 0, taker == ETaker::Works);
        EXPECT_LE(threads.size(), 3U);
    }
}

// What is asked for is there: no other piece is begun first.
TEST(OrderedJobs, WhoWorksTakesWhatIsThereFirst) {
    const auto caller = std::this_thread::get_id();
    std::atomic<bool> mayGoOn{false};
    std::atomic<int> byCaller{0};
    const auto work = [&](std::size_t i) {
        byCaller += IsThread(caller) ? 1 : 0;
        while (i == 1 && !mayGoOn)
            std::this_thread::sleep_for(1ms);
        return i;
    };
    COrderedWork<std::size_t, decltype(work)> results(3, 2, work, ETaker::Works);
    while (!results.IsReady())
        std::this_thread::sleep_for(1ms);
    EXPECT_EQ(results.Take(), 0U);
    EXPECT_EQ(byCaller, 0);
    mayGoOn = true;
    EXPECT_EQ(results.Take(), 1U);
    EXPECT_EQ(results.Take(), 2U);
}

TEST(OrderedJobs, GoesNoFurtherAheadThanTold) {
    for (const ETaker taker : kTakers) {
        std::atomic<std::size_t> taken{0};
        std::atomic<std::size_t> farthest{0};
        TakeAll<std::size_t>(
            60, 3, taker,
            [&](std::size_t i) {
                const std::size_t ahead = i - taken;
                std::size_t before = farthest;
                while (before < ahead && !farthest.compare_exchange_weak(before, ahead)) {
                }
                if (i % 10 == 0)
                    std::this_thread::sleep_for(3ms); // the others would run away
                return i;
            },
            [&](std::size_t result) {
                EXPECT_EQ(result, taken);
                std::this_thread::sleep_for(1ms);
                ++taken;
            },
            4);
        EXPECT_EQ(taken, 60U);
        EXPECT_LE(farthest, 4U); // a result that is being taken waits no more
        EXPECT_GE(farthest, 2U);
    }
}

TEST(OrderedJobs, WhoWorksGoesNoFurtherAheadThanTold) {
    std::atomic<bool> isFirstBegun{false};
    std::atomic<bool> isSecondBegun{false};
    bool wasSecondBegunMeanwhile = false;
    const auto work = [&](std::size_t i) {
        (i == 0 ? isFirstBegun : isSecondBegun) = true;
        for (int n = 0; i == 0 && n < 5 && !isSecondBegun; ++n)
            std::this_thread::sleep_for(1ms);
        wasSecondBegunMeanwhile = i == 0 ? isSecondBegun.load() : wasSecondBegunMeanwhile;
        return i;
    };
    COrderedWork<std::size_t, decltype(work)> results(2, 2, work, ETaker::Works, 1);
    while (!isFirstBegun)
        std::this_thread::sleep_for(1ms);
    EXPECT_EQ(results.Take(), 0U);
    EXPECT_FALSE(wasSecondBegunMeanwhile);
    EXPECT_EQ(results.Take(), 1U);
}

TEST(OrderedJobs, DoesOneJobOnTheTakersThreadUnlessThatWaits) {
    const auto caller = std::this_thread::get_id();
    for (const auto& [count, jobs, taker, isByCaller] :
         {std::tuple(5U, 1U, ETaker::Works, true), std::tuple(1U, 8U, ETaker::Works, true),
          std::tuple(1U, 8U, ETaker::Waits, true), std::tuple(5U, 1U, ETaker::Waits, false),
          std::tuple(5U, 0U, ETaker::Waits, false)})
        TakeAll<bool>(
            count, jobs, taker, [&](std::size_t) { return IsThread(caller); },
            [&, expected = isByCaller](bool byCaller) { EXPECT_EQ(byCaller, expected); });
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
    CAtWork atWork;
    std::atomic<int> byCaller{0};
    const auto caller = std::this_thread::get_id();
    ShareOut(40, 3, [&](std::size_t) {
        byCaller += IsThread(caller) ? 1 : 0;
        atWork.WorkAWhile();
    });
    EXPECT_LE(atWork.Most(), 3);
    EXPECT_GE(atWork.Most(), 2);
    EXPECT_GT(byCaller, 0);
}

TEST(OrderedJobs, AThreadThatIsToldToStopBeginsNothingMore) {
    std::vector<std::size_t> begun;
    ShareOut(10, 1, [&](std::size_t i) {
        begun.push_back(i);
        return i < 3;
    });
    EXPECT_EQ(begun, (std::vector<std::size_t>{0, 1, 2, 3}));

    std::atomic<int> count{0};
    ShareOut(1000, 3, [&](std::size_t) {
        ++count;
        return false;
    });
    EXPECT_GE(count, 1);
    EXPECT_LE(count, 3);
}

TEST(OrderedJobs, EndsTheWorkWhenItGoes) {
    for (const ETaker taker : kTakers) {
        for (const std::size_t jobs : {1U, 3U}) {
            std::atomic<std::size_t> begun{0};
            const auto work = [&](std::size_t i) {
                ++begun;
                return i;
            };
            const auto taken = [](std::size_t i) {
                if (i == 2)
                    throw std::out_of_range("no more");
            };
            EXPECT_THROW(TakeAll<std::size_t>(1000, jobs, taker, work, taken, 4),
                         std::out_of_range);
            EXPECT_LE(begun, 2 + 1 + 4U) << "none that was not on its way";
            EXPECT_GE(begun, 3U);
        }
    }
}

TEST(OrderedJobs, EndsEveryThreadThatWaitsWhenItGoes) {
    std::atomic<std::size_t> begun{0};
    {
        const auto work = [&](std::size_t i) {
            ++begun;
            return i;
        };
        COrderedWork<std::size_t, decltype(work)> results(9, 3, work, ETaker::Waits, 1);
        std::this_thread::sleep_for(
            5ms); // all are there by now, and wait for the first to be taken
    }
    EXPECT_LE(begun, 1U);
}

TEST(OrderedJobs, GivesResultsOutAsTheyAreAskedFor) {
    const auto work = [](std::size_t i) { return i * 2; };
    COrderedWork<std::size_t, decltype(work)> alone(3, 1, work, ETaker::Works);
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
    COrderedWork<std::size_t, decltype(held)> shared(3, 2, held, ETaker::Waits);
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
    for (const ETaker taker : kTakers) {
        for (const int given : {0, 1, 2}) {
            CScarceThread::g_left = given;
            std::vector<std::size_t> taken;
            TakeAll<std::size_t, CScarceThread>(
                5, 3, taker, [](std::size_t i) { return i; },
                [&](std::size_t result) { taken.push_back(result); }, 2);
            EXPECT_EQ(taken, (std::vector<std::size_t>{0, 1, 2, 3, 4}));
        }
    }
    CScarceThread::g_lacksMemory = false;
}

TEST(OrderedJobs, GoesOnWithTheThreadsThatTheSystemGives) {
    const auto caller = std::this_thread::get_id();
    for (const ETaker taker : kTakers) {
        for (const int given : {0, 1, 2}) {
            CScarceThread::g_left = given;
            std::atomic<int> byCaller{0};
            std::vector<std::size_t> taken;
            TakeAll<std::size_t, CScarceThread>(
                20, 8, taker,
                [&](std::size_t i) {
                    byCaller += IsThread(caller) ? 1 : 0;
                    return i;
                },
                [&](std::size_t result) {
                    taken.push_back(result);
                    EXPECT_TRUE(given > 0 || byCaller == static_cast<int>(taken.size()))
                        << "told at once";
                });
            EXPECT_TRUE(given > 0 || byCaller == 20);
            EXPECT_TRUE(given == 0 || taker == ETaker::Works || byCaller == 0);
            ASSERT_EQ(taken.size(), 20U);
            for (std::size_t i = 0; i < taken.size(); ++i)
                EXPECT_EQ(taken[i], i);
        }
    }
}

} // namespace
} // namespace trevolt
