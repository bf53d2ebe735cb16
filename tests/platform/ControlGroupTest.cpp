// Control groups are a subject of POSIX systems.
#ifndef _WIN32

#include "platform/ControlGroup.h"

#include <sstream>

#include <gtest/gtest.h>

#include "platform/FileSystem.h"
#include "tests/support/TestFiles.h"

namespace trevolt {
namespace {

constexpr std::uint64_t kUnlimited = UINT64_MAX;

class ControlGroup : public testing::Test {
  protected:
    void SetLimit(const std::wstring& group, const std::wstring& file, const char* text) {
        ASSERT_TRUE(CreateFolders(m_root.File(group)));
        test::WriteText(m_root.File(group + L'/' + file), text);
    }
    std::uint64_t Limit(const std::string& membership) const {
        std::istringstream lines(membership);
        std::string root = *ToNativePath(m_root.Path());
        root.pop_back();
        return ControlGroupLimit(lines, root);
    }

    test::CTemporaryFolder m_root;
};

TEST_F(ControlGroup, TakesTheProgramsOwnGroup) {
    SetLimit(L"user/app", L"memory.max", "1000000\n");
    SetLimit(L"user/other", L"memory.max", "10\n");
    EXPECT_EQ(Limit("0::/user/app\n"), 1000000U);
}

TEST_F(ControlGroup, TakesTheSmallestOfTheGroupsAbove) {
    SetLimit(L"user/app", L"memory.max", "max\n");
    SetLimit(L"user", L"memory.max", "5000\n");
    EXPECT_EQ(Limit("0::/user/app\n"), 5000U);
    SetLimit(L"", L"memory.max", "400\n");
    EXPECT_EQ(Limit("0::/user/app\n"), 400U);
}

TEST_F(ControlGroup, AContainersRootStandsForAGroupThatIsNotToBeSeen) {
    SetLimit(L"", L"memory.max", "7000\n");
    EXPECT_EQ(Limit("0::/system/container-1\n"), 7000U);
    EXPECT_EQ(Limit("0::/\n"), 7000U);
}

TEST_F(ControlGroup, TakesTheMemoryGroupOfVersionOne) {
    SetLimit(L"memory/box", L"memory.limit_in_bytes", "3000\n");
    SetLimit(L"memory", L"memory.limit_in_bytes", "9223372036854771712\n");
    SetLimit(L"memory/cpus", L"memory.limit_in_bytes", "1\n");
    EXPECT_EQ(Limit("5:cpu,cpuacct:/cpus\n4:hugetlb,memory:/box\n0::/\n"), 3000U);
    EXPECT_EQ(Limit("4:memory:/elsewhere\n"), 9223372036854771712U);
}

TEST_F(ControlGroup, IsUnlimitedWithoutALimit) {
    EXPECT_EQ(Limit(""), kUnlimited);
    EXPECT_EQ(Limit("0::/user\n"), kUnlimited);
    SetLimit(L"user", L"memory.max", "max\n");
    EXPECT_EQ(Limit("0::/user\n"), kUnlimited);
}

TEST_F(ControlGroup, PassesOverLinesOfAnotherForm) {
    SetLimit(L"", L"memory.max", "7000\n");
    EXPECT_EQ(Limit("\nx\n0:\n0::\n0::user\n"), kUnlimited);
}

} // namespace
} // namespace trevolt

#endif
