// Many objects one after the other: the tables are computed once, and memory does not grow.
#include <gtest/gtest.h>

#include "tests/coef/CoefObjects.h"
#include "tests/support/TestFiles.h"
#include "trevolt/MemoryBudget.h"

#ifndef _WIN32
#include <fstream>
#include <unistd.h>
#endif

#if defined(__SANITIZE_ADDRESS__)
#define TREVOLT_KEEPS_FREED_MEMORY 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TREVOLT_KEEPS_FREED_MEMORY 1
#endif
#endif

namespace trevolt {
namespace {

template <class Object>
class Lifetimes : public ::testing::Test {};
TYPED_TEST_SUITE(Lifetimes, test::AllKinds);

TYPED_TEST(Lifetimes, GiveBackWhatTheyTook) {
    const std::uint64_t before = CMemoryBudget::Process().Outstanding();
    {
        TypeParam object;
        test::CreateWithPattern(object, 300, 140);
        EXPECT_GT(CMemoryBudget::Process().Outstanding(), before);
    }
    EXPECT_EQ(CMemoryBudget::Process().Outstanding(), before);
}

#if !defined(_WIN32) && !defined(TREVOLT_KEEPS_FREED_MEMORY)
std::size_t ResidentBytes() {
    std::ifstream statm("/proc/self/statm");
    std::size_t total = 0;
    std::size_t resident = 0;
    statm >> total >> resident;
    return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

// Ten thousand objects of each kind, and one in four loads a file.
TYPED_TEST(Lifetimes, TenThousandObjectsDoNotGrowMemory) {
    constexpr int kObjects = 10000;
    constexpr bool kIsChroma = test::KindOf<TypeParam>::kKind == kChroma;
    const std::wstring sample = test::CabinetSample<TypeParam>();
    const auto use = [&](int round) {
        TypeParam object;
        if (round % 4 != 0)
            return;
        object.SetFileKind(2);
        EXPECT_EQ(object.Create(40, 24), S_OK);
        EXPECT_EQ(object.LoadCoef(sample.c_str()), S_OK);
        if (kIsChroma && round % 100 == 0) {
            EXPECT_TRUE(object.FillRectChannel(0, 0, 0, 1, 1, 0.1F, 41)); // a pair of its own
        }
    };
    for (int i = 0; i < 100; ++i)
        use(i);
    const std::size_t before = ResidentBytes();
    for (int i = 0; i < kObjects; ++i)
        use(i);
    EXPECT_LT(ResidentBytes(), before + 1024 * 1024);
}
#endif

// The rows are the process's: objects made one after the other look at the same ones, and one that
// has changed a pair of its own leaves the others' as they were.
TEST(Lifetimes, TransferTablesAreShared) {
    std::array<const std::uint32_t*, CCaliOperationData::kRowCount> rows{};
    {
        const CCNewChromaCorrectCoef first;
        for (std::uint32_t row = 0; row < rows.size(); ++row)
            rows[row] = first.TransferTable()->Row(row).data();
    }
    CCNewChromaCorrectCoef changed;
    ASSERT_EQ(changed.Create(1, 1), S_OK);
    ASSERT_TRUE(changed.FillRectChannel(0, 0, 0, 1, 1, 0.1F, 41));
    const CCNewChromaCorrectCoef second;
    for (std::uint32_t row = 0; row < rows.size(); ++row) {
        EXPECT_EQ(second.TransferTable()->Row(row).data(), rows[row]) << row;
        const bool isOwn = row == 41 || row == 42;
        EXPECT_EQ(changed.TransferTable()->Row(row).data() != rows[row], isOwn) << row;
    }
}

} // namespace
} // namespace trevolt
