#include "platform/ProgramFolder.h"

#include <gtest/gtest.h>

#include "platform/FileSystem.h"

namespace trevolt {
namespace {

TEST(ProgramFolder, HoldsTheProgramAndEndsWithTheSeparator) {
    const std::wstring folder = GetModuleFolder();
    ASSERT_FALSE(folder.empty());
    EXPECT_EQ(folder.back(), kPathSeparator);
    EXPECT_TRUE(PathExists(folder + L"platform-tests") ||
                PathExists(folder + L"platform-tests.exe"));
}

#ifdef _WIN32
TEST(ProgramFolder, CodePageRoundTripKeepsWhatThePageKnows) {
    EXPECT_EQ(ThroughCodePage(L""), L"");
    EXPECT_EQ(ThroughCodePage(L"C:\\Tools (1)\\"), L"C:\\Tools (1)\\");
}
#endif

} // namespace
} // namespace trevolt
