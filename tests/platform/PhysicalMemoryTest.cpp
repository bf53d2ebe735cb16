#include "platform/PhysicalMemory.h"

#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#ifdef __linux__
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>
#endif

namespace trevolt {
namespace {

constexpr std::size_t kMiB = std::size_t{1} << 20;

struct SBlock {
    explicit SBlock(std::size_t size)
        : bytes(size), data(static_cast<std::byte*>(AllocateLarge(size))) {}

    void Fill(unsigned value) const { std::memset(data, static_cast<int>(value), bytes); }
    bool Holds(unsigned value) const {
        return data[0] == std::byte(value) && std::memcmp(data, data + 1, bytes - 1) == 0;
    }

    std::size_t bytes;
    std::byte* data;
};

TEST(PhysicalMemory, BlocksStandBesideEachOther) {
    std::vector<SBlock> blocks;
    for (const std::size_t bytes :
         {std::size_t{1}, std::size_t{16383}, std::size_t{16384}, std::size_t{16385}, kMiB,
          2 * kMiB - 1, 2 * kMiB, 5 * kMiB + 3, 32 * kMiB, 32 * kMiB + 1, std::size_t{70000}})
        blocks.emplace_back(bytes);
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        ASSERT_NE(blocks[i].data, nullptr);
        blocks[i].Fill(static_cast<unsigned>(i));
    }
    for (std::size_t i = 0; i < blocks.size(); ++i)
        EXPECT_TRUE(blocks[i].Holds(static_cast<unsigned>(i))) << i;
    for (std::size_t i = 0; i < blocks.size(); i += 2)
        FreeLarge(blocks[i].data, blocks[i].bytes);
    for (std::size_t i = 1; i < blocks.size(); i += 2) {
        EXPECT_TRUE(blocks[i].Holds(static_cast<unsigned>(i))) << i;
        FreeLarge(blocks[i].data, blocks[i].bytes);
    }
    FreeLarge(nullptr, 1);
    FreeLarge(nullptr, kMiB);
    FreeLarge(nullptr, 64 * kMiB);
}

TEST(PhysicalMemory, RefusesWhatNoSystemHas) {
    EXPECT_EQ(AllocateLarge(SIZE_MAX), nullptr);
    EXPECT_EQ(AllocateLarge(SIZE_MAX / 2 + 1), nullptr);
}

#ifdef __linux__
#ifndef TREVOLT_ADDRESS_SANITIZER // it has blocks of its own

/// The process's address space, and what of it is in memory.
struct SProcessBytes {
    std::size_t all = 0;
    std::size_t resident = 0;
};

SProcessBytes MeasureProcess() {
    std::ifstream statm("/proc/self/statm");
    SProcessBytes pages;
    statm >> pages.all >> pages.resident;
    const auto pageBytes = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return {pages.all * pageBytes, pages.resident * pageBytes};
}

/// What the system notes of the mapping that begins at that address.
std::string FlagsOfMapping(const void* memory) {
    std::ostringstream start;
    start << std::hex << reinterpret_cast<std::uintptr_t>(memory) << '-';
    std::ifstream maps("/proc/self/smaps");
    std::string line;
    while (std::getline(maps, line) && line.rfind(start.str(), 0) != 0) {
    }
    while (std::getline(maps, line) && line.rfind("VmFlags:", 0) != 0) {
    }
    return line;
}

/// Whether there is memory of the process at that address.
bool IsMapped(const void* memory) {
    const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    const auto address = reinterpret_cast<std::uintptr_t>(memory) / page * page;
    unsigned char inCore = 0;
    return mincore(reinterpret_cast<void*>(address), 1, &inCore) == 0;
}

TEST(PhysicalMemory, FreedPagesGoBackToTheSystem) {
    const SBlock stays(kMiB);
    stays.Fill(7);
    const std::size_t before = MeasureProcess().resident;
    std::vector<SBlock> blocks;
    for (int i = 0; i < 8; ++i)
        blocks.emplace_back(16 * kMiB + 4096).Fill(1);
    EXPECT_GE(MeasureProcess().resident, before + 120 * kMiB);
    for (const SBlock& block : blocks)
        FreeLarge(block.data, block.bytes);
    EXPECT_LE(MeasureProcess().resident, before + 8 * kMiB);
    EXPECT_TRUE(stays.Holds(7));
    FreeLarge(stays.data, stays.bytes);
}

TEST(PhysicalMemory, AddressSpaceGoesBackWithTheLastBlock) {
    std::vector<SBlock> blocks;
    for (int i = 0; i < 17; ++i) // of 32 MiB, seven in a region
        blocks.emplace_back(32 * kMiB);
    for (const SBlock& block : blocks)
        block.data[block.bytes - 1] = std::byte{1};
    for (std::size_t i = 0; i < blocks.size(); ++i)
        if (i != 7)
            FreeLarge(blocks[i].data, blocks[i].bytes);
    EXPECT_FALSE(IsMapped(blocks[0].data));
    EXPECT_TRUE(IsMapped(blocks[7].data));
    EXPECT_TRUE(IsMapped(blocks[8].data)); // of the same region
    EXPECT_FALSE(IsMapped(blocks[16].data));
    EXPECT_EQ(blocks[7].data[32 * kMiB - 1], std::byte{1});
    FreeLarge(blocks[7].data, 32 * kMiB);
    EXPECT_FALSE(IsMapped(blocks[7].data));
    const SBlock alone(40 * kMiB);
    alone.data[alone.bytes - 1] = std::byte{1};
    FreeLarge(alone.data, alone.bytes);
    EXPECT_FALSE(IsMapped(alone.data));
    EXPECT_FALSE(IsMapped(alone.data + alone.bytes - 1));
}

TEST(PhysicalMemory, BlocksNeedNoMoreAddressSpaceThanThereIs) {
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_AS, &before), 0);
    rlimit little = before;
    little.rlim_cur = MeasureProcess().all + 16 * kMiB;
    ASSERT_EQ(setrlimit(RLIMIT_AS, &little), 0);
    std::vector<SBlock> blocks;
    for (const std::size_t bytes : {std::size_t{20000}, kMiB, 5 * kMiB, 32 * kMiB})
        blocks.emplace_back(bytes);
    ASSERT_EQ(setrlimit(RLIMIT_AS, &before), 0);
    const SBlock later(kMiB);
    for (std::size_t i = 0; i < 3; ++i) {
        ASSERT_NE(blocks[i].data, nullptr) << i;
        blocks[i].Fill(static_cast<unsigned>(i + 1));
    }
    EXPECT_EQ(blocks[3].data, nullptr);
    later.Fill(9);
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_TRUE(blocks[i].Holds(static_cast<unsigned>(i + 1))) << i;
    for (const SBlock& block : blocks)
        FreeLarge(block.data, block.bytes);
    EXPECT_TRUE(later.Holds(9));
    FreeLarge(later.data, later.bytes);
}

TEST(PhysicalMemory, NoAddressSpaceIsLeftBehind) {
    FreeLarge(AllocateLarge(64 * kMiB), 64 * kMiB);
    const std::size_t before = MeasureProcess().all;
    for (std::size_t bytes = 33 * kMiB; bytes < 38 * kMiB; bytes += kMiB / 2 + 1) {
        const SBlock block(bytes);
        EXPECT_LT(MeasureProcess().all, before + bytes + 8192);
        FreeLarge(block.data, block.bytes);
        EXPECT_EQ(MeasureProcess().all, before);
    }
}

TEST(PhysicalMemory, LargeBlocksAskForHugePages) {
    const bool hasHugePages =
        std::ifstream("/sys/kernel/mm/transparent_hugepage/enabled").is_open();
    const SBlock block(64 * kMiB);
    const std::string flags = FlagsOfMapping(block.data) + ' ';
    EXPECT_EQ(flags.find(" hg ") != std::string::npos, hasHugePages) << flags;
    FreeLarge(block.data, block.bytes);
}

TEST(PhysicalMemory, BlocksBeginOnPagesAndLargeOnesOnHugePages) {
    const SBlock first(20000);
    const SBlock second(20000);
    EXPECT_EQ(second.data - first.data, 20480);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(first.data) % 4096, 0U);
    const SBlock large(33 * kMiB);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(large.data) % (2 * kMiB), 0U);
    for (const SBlock& block : {first, second, large})
        FreeLarge(block.data, block.bytes);
}

#endif
#endif

} // namespace
} // namespace trevolt
