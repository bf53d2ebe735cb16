#include "trevolt/MemoryBudget.h"

#include <cstring>
#include <memory>
#include <thread>
#include <utility>

#include <gtest/gtest.h>

#include "platform/PhysicalMemory.h"
#include "tests/support/BudgetLimit.h"
#include "trevolt/TransferReport.h"

#ifdef TREVOLT_ADDRESS_SANITIZER
#include <sanitizer/asan_interface.h>
#endif

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

constexpr std::size_t kBlock = std::size_t{64} << 10;

TEST(KeptMemory, ServesTheNextAllocationOfItsSize) {
    CMemoryBudget budget(UINT64_MAX);
    void* const first = budget.Allocate(kBlock);
    void* const second = budget.Allocate(2 * kBlock);
    EXPECT_EQ(budget.Kept(), 0U);
    budget.Free(first, kBlock);
    EXPECT_EQ(budget.Kept(), kBlock);
    EXPECT_EQ(budget.Outstanding(), 2 * kBlock);
    budget.Free(second, 2 * kBlock);
    EXPECT_EQ(budget.Kept(), 3 * kBlock);
    EXPECT_EQ(budget.Outstanding(), 0U);
    EXPECT_EQ(budget.Allocate(kBlock), first);
    EXPECT_EQ(budget.Kept(), 2 * kBlock);
    EXPECT_EQ(budget.Outstanding(), kBlock);
    EXPECT_EQ(budget.Allocate(2 * kBlock), second);
    EXPECT_EQ(budget.Kept(), 0U);
    void* const third = budget.Allocate(kBlock);
    EXPECT_NE(third, first);
    EXPECT_NE(third, second);
    budget.Free(first, kBlock);
    budget.Free(second, 2 * kBlock);
    budget.Free(third, kBlock);
}

TEST(KeptMemory, ServesSizesThatTakeTheSameSteps) {
    CMemoryBudget budget(UINT64_MAX);
    const std::size_t step = kBlock / 8;
    void* const memory = budget.Allocate(kBlock + 1);
    budget.Free(memory, kBlock + 1);
    EXPECT_EQ(budget.Kept(), kBlock + step);
    void* const smaller = budget.Allocate(kBlock);
    void* const larger = budget.Allocate(kBlock + step + 1);
    EXPECT_NE(smaller, memory);
    EXPECT_NE(larger, memory);
    EXPECT_EQ(budget.Kept(), kBlock + step);
    EXPECT_EQ(budget.Allocate(kBlock + step), memory);
    EXPECT_EQ(budget.Kept(), 0U);
    EXPECT_EQ(budget.Outstanding(), 3 * kBlock + 2 * step + 1);
    budget.Free(memory, kBlock + step);
    budget.Free(smaller, kBlock);
    budget.Free(larger, kBlock + step + 1);
}

TEST(KeptMemory, GivesTheBlockThatWasFreedLast) {
    CMemoryBudget budget(UINT64_MAX);
    std::array<void*, 3> blocks{};
    for (void*& block : blocks)
        block = budget.Allocate(kBlock);
    for (void* const block : blocks)
        budget.Free(block, kBlock);
    EXPECT_EQ(budget.Allocate(kBlock), blocks[2]);
    budget.Free(blocks[2], kBlock);
    EXPECT_EQ(budget.Allocate(kBlock), blocks[2]);
    EXPECT_EQ(budget.Allocate(kBlock), blocks[1]);
    EXPECT_EQ(budget.Allocate(kBlock), blocks[0]);
    EXPECT_EQ(budget.Kept(), 0U);
    for (void* const block : blocks)
        budget.Free(block, kBlock);
}

TEST(KeptMemory, LeavesSmallBlocksToTheHeap) {
    CMemoryBudget budget(UINT64_MAX);
    constexpr std::size_t kSmallestKept = std::size_t{16} << 10;
    budget.Free(budget.Allocate(kSmallestKept - 1), kSmallestKept - 1);
    budget.Free(budget.Allocate(0), 0);
    EXPECT_EQ(budget.Kept(), 0U);
    budget.Free(budget.Allocate(kSmallestKept), kSmallestKept);
    EXPECT_EQ(budget.Kept(), kSmallestKept);
}

TEST(KeptMemory, IsRoomForWhatFollows) {
    CMemoryBudget budget(4 * kBlock);
    budget.Free(budget.Allocate(3 * kBlock), 3 * kBlock);
    EXPECT_EQ(budget.Kept(), 3 * kBlock);
    EXPECT_TRUE(budget.HasRoomFor(4 * kBlock));
    EXPECT_FALSE(budget.HasRoomFor(4 * kBlock + 1));
    void* const small = budget.Allocate(kBlock); // fits beside what is kept
    EXPECT_EQ(budget.Kept(), 3 * kBlock);
    void* const large = budget.Allocate(2 * kBlock); // does not
    EXPECT_NE(large, nullptr);
    EXPECT_EQ(budget.Kept(), 0U);
    EXPECT_EQ(budget.Outstanding(), 3 * kBlock);
    budget.Free(small, kBlock);
    budget.Free(large, 2 * kBlock);
}

TEST(KeptMemory, NeverPassesTheLimitWithWhatIsOutstanding) {
    CMemoryBudget budget(4 * kBlock);
    void* const first = budget.Allocate(kBlock + 1); // takes a step more
    void* const second = budget.Allocate(3 * kBlock - 1);
    budget.Free(first, kBlock + 1);
    EXPECT_EQ(budget.Kept(), 0U); // kept it would, with its step, pass the limit
    void* const third = budget.Allocate(kBlock);
    budget.Free(third, kBlock);
    EXPECT_EQ(budget.Kept(), kBlock);
    budget.Free(second, 3 * kBlock - 1);
    EXPECT_EQ(budget.Kept(), 4 * kBlock); // to the byte
    budget.Free(budget.Allocate(kBlock / 2), kBlock / 2);
    EXPECT_LE(budget.Kept(), 4 * kBlock);
}

TEST(KeptMemory, FallsWithTheLimit) {
    CMemoryBudget budget(4 * kBlock);
    std::array<void*, 4> blocks{};
    for (void*& block : blocks)
        block = budget.Allocate(kBlock);
    for (std::size_t i = 0; i < 3; ++i)
        budget.Free(blocks[i], kBlock);
    budget.SetLimit(4 * kBlock);
    EXPECT_EQ(budget.Kept(), 3 * kBlock);
    budget.SetLimit(3 * kBlock - 1);
    EXPECT_EQ(budget.Limit(), 3 * kBlock - 1);
    EXPECT_EQ(budget.Kept(), kBlock);
    budget.SetLimit(0);
    EXPECT_EQ(budget.Kept(), 0U);
    budget.Free(blocks[3], kBlock);
    EXPECT_EQ(budget.Kept(), 0U);
}

TEST(KeptMemory, HasABoundOfItsOwn) {
    CMemoryBudget budget(UINT64_MAX, 3 * kBlock);
    std::array<void*, 3> blocks{};
    for (void*& block : blocks)
        block = budget.Allocate(kBlock);
    void* const larger = budget.Allocate(2 * kBlock);
    void* const largest = budget.Allocate(4 * kBlock);
    for (void* const block : blocks)
        budget.Free(block, kBlock);
    EXPECT_EQ(budget.Kept(), 3 * kBlock);
    budget.Free(largest, 4 * kBlock); // alone above the bound: drives nothing out
    EXPECT_EQ(budget.Kept(), 3 * kBlock);
    budget.Free(larger, 2 * kBlock); // drives out the two that were kept longest
    EXPECT_EQ(budget.Kept(), 3 * kBlock);
    EXPECT_EQ(budget.Allocate(kBlock), blocks[2]);
    EXPECT_EQ(budget.Allocate(2 * kBlock), larger);
    EXPECT_EQ(budget.Kept(), 0U);
    budget.Free(blocks[2], kBlock);
    budget.Free(larger, 2 * kBlock);
}

TEST(KeptMemory, HoldsSoManyBlocksAtMost) {
    constexpr std::size_t kMost = 512;
    constexpr std::size_t kBytes = std::size_t{16} << 10;
    CMemoryBudget budget(UINT64_MAX);
    std::vector<void*> blocks(kMost + 1);
    for (void*& block : blocks)
        block = budget.Allocate(kBytes);
    for (void* const block : blocks)
        budget.Free(block, kBytes);
    EXPECT_EQ(budget.Kept(), kMost * kBytes);
    for (std::size_t i = kMost; i > 0; --i)
        EXPECT_EQ(budget.Allocate(kBytes), blocks[i]);
    EXPECT_EQ(budget.Kept(), 0U);
    for (std::size_t i = kMost; i > 0; --i)
        budget.Free(blocks[i], kBytes);
}

TEST(KeptMemory, GoesBackOnDemand) {
    CMemoryBudget budget(UINT64_MAX);
    void* const held = budget.Allocate(kBlock);
    void* const freed = budget.Allocate(kBlock);
    budget.Free(freed, kBlock);
    budget.GiveBackKept();
    EXPECT_EQ(budget.Kept(), 0U);
    EXPECT_EQ(budget.Outstanding(), kBlock);
    std::memset(held, 1, kBlock); // still there
    budget.Free(held, kBlock);
    EXPECT_EQ(budget.Kept(), kBlock);
    EXPECT_EQ(budget.Allocate(kBlock), held);
    budget.Free(held, kBlock);
}

TEST(KeptMemory, IsGivenBackBeforeTheSystemRefuses) {
    CMemoryBudget budget(UINT64_MAX);
    budget.Free(budget.Allocate(kBlock), kBlock);
    EXPECT_EQ(budget.Allocate(SIZE_MAX / 4 * 3), nullptr);
    EXPECT_EQ(budget.Kept(), 0U);
    EXPECT_EQ(budget.Outstanding(), 0U);
}

TEST(KeptMemory, IsOneThreadsAtATime) {
    constexpr std::uint64_t kKept = 8 * kBlock;
    CMemoryBudget budget(40 * kBlock, kKept);
    {
        std::vector<std::jthread> threads;
        for (std::size_t n = 0; n < 4; ++n)
            threads.emplace_back([&budget, kKept, n] {
                for (std::size_t i = 0; i < 500; ++i) {
                    const std::size_t bytes = kBlock + kBlock * (i % 3);
                    auto* const memory = static_cast<std::byte*>(budget.Allocate(bytes));
                    ASSERT_NE(memory, nullptr);
                    std::memset(memory, static_cast<int>(n), bytes);
                    std::this_thread::yield();
                    EXPECT_EQ(memory[0], std::byte(n));
                    EXPECT_EQ(std::memcmp(memory, memory + 1, bytes - 1), 0);
                    budget.Free(memory, bytes);
                    EXPECT_LE(budget.Kept(), kKept);
                }
            });
    }
    EXPECT_EQ(budget.Outstanding(), 0U);
    EXPECT_GT(budget.Kept(), 0U);
}

TEST(KeptMemory, OfTheProcessOutlivesItsFiles) {
    CMemoryBudget::Process().GiveBackKept();
    const CBudgetBlock held(kBlock);
    const std::byte* const first = CBudgetBlock(kBlock).Data();
    EXPECT_EQ(CMemoryBudget::Process().Kept(), kBlock);
    EXPECT_EQ(CBudgetBlock(kBlock).Data(), first);
    CMemoryBudget::Process().GiveBackKept();
    EXPECT_EQ(CMemoryBudget::Process().Kept(), 0U);
}

#ifdef TREVOLT_ADDRESS_SANITIZER
TEST(KeptMemory, MayNotBeTouched) {
    CMemoryBudget budget(UINT64_MAX);
    auto* const memory = static_cast<std::byte*>(budget.Allocate(kBlock + 1));
    EXPECT_EQ(__asan_region_is_poisoned(memory, kBlock + 1), nullptr);
    EXPECT_NE(__asan_address_is_poisoned(memory + kBlock + 8), 0); // the rest of its last step
    budget.Free(memory, kBlock + 1);
    EXPECT_NE(__asan_address_is_poisoned(memory), 0);
    EXPECT_NE(__asan_address_is_poisoned(memory + kBlock), 0);
    ASSERT_EQ(budget.Allocate(kBlock + 2), memory);
    EXPECT_EQ(__asan_region_is_poisoned(memory, kBlock + 2), nullptr);
    EXPECT_NE(__asan_address_is_poisoned(memory + kBlock + 8), 0);
    budget.Free(memory, kBlock + 2);
}
#endif

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

} // namespace
} // namespace trevolt
