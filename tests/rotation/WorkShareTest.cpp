#include "app/rotation/WorkShare.h"

#include <atomic>
#include <chrono>
#include <optional>
#include <thread>

#include <gtest/gtest.h>

#include "common/OrderedJobs.h"
#include "tests/rotation/AllocationLimit.h"

namespace trevolt {
namespace {

using namespace std::chrono_literals;

TEST(WorkShare, DividesTheThreadsBetweenUnfinishedFiles) {
    CWorkShare share(4, 5, 100);
    EXPECT_EQ(share.ThreadsOfOne(), 1U);
    share.Finish();
    share.Finish();
    EXPECT_EQ(share.ThreadsOfOne(), 2U);
    share.Finish();
    EXPECT_EQ(share.ThreadsOfOne(), 5U);
    share.Finish();
    EXPECT_EQ(share.ThreadsOfOne(), 5U);
    EXPECT_EQ(CWorkShare(9, 2, 100).ThreadsOfOne(), 1U);
}

/// Takes a part on a thread of its own and holds it until told.
class CHolder {
  public:
    CHolder(CWorkShare& share, std::uint64_t bytes)
        : m_thread([this, &share, bytes] {
              const CWorkShare::CPart part(share, bytes);
              m_has = true;
              while (!m_mayGo)
                  std::this_thread::sleep_for(1ms);
          }) {}
    ~CHolder() { m_mayGo = true; }

    bool Has() const { return m_has; }
    bool GetsIt() const {
        for (int n = 0; n < 5000 && !m_has; ++n)
            std::this_thread::sleep_for(1ms);
        return m_has;
    }

  private:
    std::atomic<bool> m_has{false};
    std::atomic<bool> m_mayGo{false};
    std::jthread m_thread;
};

TEST(WorkShare, GivesMemoryOnlyWhileThereIsSome) {
    CWorkShare share(3, 3, 100);
    std::optional<CHolder> first;
    first.emplace(share, 60);
    EXPECT_TRUE(first->GetsIt());
    const CHolder second(share, 40);
    EXPECT_TRUE(second.GetsIt());
    const CHolder third(share, 1);
    std::this_thread::sleep_for(20ms);
    EXPECT_FALSE(third.Has());
    first.reset();
    EXPECT_TRUE(third.GetsIt());
}

TEST(WorkShare, LetsAFileThatIsTooLargeTryAlone) {
    CWorkShare share(2, 2, 100);
    std::optional<CHolder> small;
    small.emplace(share, 1);
    EXPECT_TRUE(small->GetsIt());
    const CHolder large(share, 1000);
    std::this_thread::sleep_for(20ms);
    EXPECT_FALSE(large.Has());
    small.reset();
    EXPECT_TRUE(large.GetsIt());
}

TEST(WorkShare, TellsWhatFitsAloneWhateverIsTaken) {
    CWorkShare share(2, 2, 100);
    const CWorkShare::CPart part(share, 60);
    EXPECT_TRUE(share.Holds(100));
    EXPECT_FALSE(share.Holds(101));
}

TEST(WorkShare, ExtendsAPartByWhatIsFree) {
    CWorkShare share(2, 2, 100);
    const CWorkShare::CPart other(share, 10);
    {
        CWorkShare::CPart part(share, 60);
        EXPECT_EQ(part.Extend(10, 2), 2U);
        EXPECT_EQ(part.Extend(4, 9), 2U); // of the last 10
        EXPECT_EQ(part.Extend(4, 9), 0U);
    }
    CWorkShare::CPart next(share, 0);
    EXPECT_EQ(next.Extend(90, 1), 1U); // all of it came back
}

TEST(WorkShare, ResultsAreHandedOverWithoutMemory) {
    for (const ETaker taker : {ETaker::Works, ETaker::Waits}) {
        std::optional<test::CAllocationLimit> limit;
        const auto work = [&](std::size_t i) {
            if (i == 0)
                limit.emplace(64);
            return i;
        };
        std::size_t sum = 0;
        {
            COrderedWork<std::size_t, decltype(work)> results(500, 2, work, taker);
            for (int i = 0; i < 500; ++i)
                sum += results.Take();
        }
        limit.reset();
        EXPECT_EQ(sum, 500U * 499 / 2);
    }
}

TEST(WorkShare, GivesNothingOfNothing) {
    CWorkShare share(1, 1, 0);
    const CHolder one(share, 5);
    EXPECT_TRUE(one.GetsIt());
}

} // namespace
} // namespace trevolt
