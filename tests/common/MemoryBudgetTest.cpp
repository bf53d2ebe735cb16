#include "trevolt/MemoryBudget.h"

#include <cstring>
#include <thread>
#include <utility>

#include <gtest/gtest.h>

#include "platform/PhysicalMemory.h"
#include "tests/support/BudgetLimit.h"
#include "trevolt/TransferReport.h"

namespace trevolt {
namespace {

using test::CBudgetLimit;

TEST(MemoryBudget, CountsWhatIsOutstanding) {
    CMemoryBudget budget(100);
    EXPECT_EQ(budget.Limit(), 100U);
    void* first = budget.Allocate(60);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(budget.Outstanding(), 60U);
    EXPECT_TRUE(budget.HasRoomFor(40));
    EXPECT_FALSE(budget.HasRoomFor(41));
    EXPECT_EQ(budget.Allocate(41), nullptr);
    EXPECT_EQ(budget.Outstanding(), 60U);
    void* second = budget.Allocate(40);
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(budget.Allocate(1), nullptr);
    budget.Free(first, 60);
    EXPECT_EQ(budget.Outstanding(), 40U);
    budget.Free(second, 40);
    budget.Free(nullptr, 40);
    EXPECT_EQ(budget.Outstanding(), 0U);
}

TEST(MemoryBudget, KeepsWhatIsOutstandingWhenTheLimitFalls) {
    CMemoryBudget budget(100);
    void* memory = budget.Allocate(80);
    budget.SetLimit(50);
    EXPECT_FALSE(budget.HasRoomFor(0));
    EXPECT_EQ(budget.Allocate(1), nullptr);
    EXPECT_EQ(budget.Outstanding(), 80U);
    budget.Free(memory, 80);
    EXPECT_TRUE(budget.HasRoomFor(50));
}

TEST(MemoryBudget, RefusesSizesThatWouldOverflow) {
    CMemoryBudget budget(UINT64_MAX);
    void* memory = budget.Allocate(16);
    EXPECT_EQ(budget.Allocate(SIZE_MAX), nullptr);
    EXPECT_EQ(budget.Allocate(SIZE_MAX - 16), nullptr); // within the budget, beyond the system
    EXPECT_EQ(budget.Outstanding(), 16U);
    budget.Free(memory, 16);
}

TEST(MemoryBudget, StartsBelowThePhysicalMemory) {
    EXPECT_EQ(CMemoryBudget::Process().Limit(), PhysicalMemoryBytes() / 10 * 9);
    EXPECT_GT(PhysicalMemoryBytes(), std::uint64_t{1} << 28);
}

TEST(MemoryBudget, HoldsAmongThreads) {
    CMemoryBudget budget(1000);
    std::atomic<int> given{0};
    {
        std::vector<std::jthread> threads;
        for (int n = 0; n < 4; ++n)
            threads.emplace_back([&] {
                for (int i = 0; i < 1000; ++i) {
                    void* memory = budget.Allocate(300);
                    if (memory == nullptr)
                        continue;
                    EXPECT_LE(++given, 3);
                    --given;
                    budget.Free(memory, 300);
                }
            });
    }
    EXPECT_EQ(budget.Outstanding(), 0U);
}

TEST(BudgetBlock, GivesItsMemoryBackOnce) {
    const std::uint64_t before = CMemoryBudget::Process().Outstanding();
    {
        CBudgetBlock block(1000);
        ASSERT_TRUE(block);
        EXPECT_EQ(block.Size(), 1000U);
        std::memset(block.Data(), 1, block.Size());
        CBudgetBlock moved(std::move(block));
        EXPECT_EQ(moved.Size(), 1000U);
        EXPECT_EQ(CMemoryBudget::Process().Outstanding(), before + 1000);
        moved = CBudgetBlock(500);
        EXPECT_EQ(CMemoryBudget::Process().Outstanding(), before + 500);
        moved.Release();
        EXPECT_FALSE(moved);
        EXPECT_EQ(CMemoryBudget::Process().Outstanding(), before);
    }
    EXPECT_EQ(CMemoryBudget::Process().Outstanding(), before);
}

TEST(BudgetBlock, IsEmptyAndNotedWhenRefused) {
    const CBudgetLimit limit(0);
    const CTransferReport report;
    const CBudgetBlock block(1);
    EXPECT_FALSE(block);
    EXPECT_EQ(block.Size(), 0U);
    EXPECT_EQ(block.Data(), nullptr);
    EXPECT_TRUE(report.WasMemoryRefused());
}

TEST(PhysicalMemory, LargeAllocationsAreWritableThroughout) {
    for (const std::size_t bytes : {std::size_t{1}, (std::size_t{2} << 20) - 1,
                                    std::size_t{2} << 20, (std::size_t{5} << 20) + 3}) {
        void* memory = AllocateLarge(bytes);
        ASSERT_NE(memory, nullptr);
        std::memset(memory, 0x5A, bytes);
        FreeLarge(memory, bytes);
    }
    EXPECT_EQ(AllocateLarge(SIZE_MAX), nullptr);
}

} // namespace
} // namespace trevolt
