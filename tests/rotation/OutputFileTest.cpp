#include "app/rotation/OutputFile.h"
#include "app/rotation/CoefFile.h"

#include <gtest/gtest.h>

#ifndef _WIN32
#include <unistd.h>
#endif

#include "platform/FileSystem.h"
#include "tests/support/CoefMaps.h"
#include "trevolt/FileKinds.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

using namespace test;

std::string WriteOne(const SOutputFile& output, std::string_view text) {
    return WriteOutputFile(output, [&](const std::wstring& path) {
        WriteText(path, text);
        return std::string();
    });
}

TEST(OutputFile, StandsUnderItsNameAlone) {
    const CTemporaryFolder folder;
    EXPECT_EQ(WriteOne({folder.File(L"a.png")}, "one"), "");
    EXPECT_EQ(folder.Names(), std::vector<std::wstring>{L"a.png"});
    EXPECT_EQ(ReadText(folder.File(L"a.png")), "one");
}

TEST(OutputFile, IsReplacedOnlyWhenAskedFor) {
    const CTemporaryFolder folder;
    const std::wstring path = folder.File(L"a.png");
    ASSERT_EQ(WriteOne({path}, "one"), "");
    EXPECT_EQ(WriteOne({path}, "two"), kExistingOutput);
    EXPECT_EQ(ReadText(path), "one");
    EXPECT_EQ(WriteOne({path, true}, "three"), "");
    EXPECT_EQ(ReadText(path), "three");
    EXPECT_EQ(folder.Names().size(), 1U);
}

TEST(OutputFile, AWriterThatFailsLeavesNothing) {
    const CTemporaryFolder folder;
    const std::string problem = WriteOutputFile({folder.File(L"a.png")}, [](const auto& path) {
        WriteText(path, "half");
        return std::string("the disk is full");
    });
    EXPECT_EQ(problem, "the disk is full");
    EXPECT_TRUE(folder.Names().empty());
}

TEST(OutputFile, WhatComesToStandThereMeanwhileStays) {
    const CTemporaryFolder folder;
    const std::wstring path = folder.File(L"a.png");
    const auto write = [&](const std::wstring& made) {
        WriteText(made, "mine");
        WriteText(path, "another's");
        return std::string();
    };
    EXPECT_EQ(WriteOutputFile({path}, write),
              "exists already: overwrite it, or choose another target");
    EXPECT_EQ(WriteOutputFile({path}, write, "told of its source"), "told of its source");
    EXPECT_EQ(ReadText(path), "another's");
}

TEST(OutputFile, WhatForbidsItIsSeenBefore) {
    const CTemporaryFolder folder;
    const std::wstring path = folder.File(L"a.png");
    EXPECT_EQ(DescribeOutputObstacle({path}, {}), "");
    ASSERT_EQ(WriteOne({path}, "one"), "");
    EXPECT_EQ(DescribeOutputObstacle({path}, {}),
              "exists already: overwrite it, or choose another target");
    EXPECT_EQ(DescribeOutputObstacle({path, true}, {}), "");
    EXPECT_EQ(DescribeOutputObstacle({path, true}, {folder.File(L"b"), path}),
              "is one of the inputs, which stay as they are: choose another name");
    EXPECT_EQ(DescribeOutputObstacle({folder.Path(), true}, {}),
              "is a folder: give the name of a file");
    const std::wstring none = folder.File(L"none") + kPathSeparator;
    EXPECT_EQ(DescribeOutputObstacle({none + L"a.png"}, {}),
              "lies in the folder " + WideToShownUtf8(none) +
                  ", which does not exist: make it, or choose another");
    EXPECT_EQ(DescribeOutputObstacle({path + kPathSeparator + L"a.png"}, {}),
              "lies in " + WideToShownUtf8(path + kPathSeparator) +
                  ", which is no folder: choose another");
}

#ifndef _WIN32
TEST(OutputFile, WhatTheSystemDoesNotTakeIsSeenBefore) {
    const CTemporaryFolder folder;
    const std::wstring link = folder.File(L"link.png");
    ASSERT_EQ(symlink("gone", ToNativePath(link)->c_str()), 0);
    EXPECT_TRUE(IsNameTaken(link));
    EXPECT_FALSE(IsNameTaken(folder.File(L"gone")));
    EXPECT_EQ(DescribeOutputObstacle({link}, {}), kExistingOutput);
    EXPECT_EQ(DescribeOutputObstacle({link, true}, {}), "");
    EXPECT_EQ(DescribeOutputObstacle({folder.File(std::wstring(256, L'n'))}, {}),
              "is no name that the system takes: File name too long: choose another");
    EXPECT_EQ(DescribeOutputObstacle({L"/dev/null", true}, {}),
              "is neither a file nor a folder: choose another name");
}
#else
TEST(OutputFile, ANameThatTheSystemDoesNotTakeIsSeenBefore) {
    const CTemporaryFolder folder;
    EXPECT_EQ(DescribeOutputObstacle({folder.File(L"a?.png")}, {}),
              "is no name that the system takes: Invalid argument: choose another");
    EXPECT_EQ(DescribeNameObstacle(folder.File(L"a?.png")),
              "is no name that the system takes: Invalid argument: choose another");
    EXPECT_EQ(DescribeInputObstacle(folder.File(L"a?.9fcoef")),
              "the source " + WideToShownUtf8(folder.File(L"a?.9fcoef")) +
                  " does not exist: check its path");
}
#endif

TEST(OutputFile, AMapIsWrittenAsTheKindOfTheName) {
    const CTemporaryFolder folder;
    CChromaCorrectCoef map;
    map.Resize(3, 2);
    ASSERT_EQ(SaveCoefFile(map, {folder.File(L"a.3wcoef")}), "");
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    ASSERT_EQ(FindLoadKind(L"a.3wcoef")->readSize(folder.File(L"a.3wcoef").c_str(), width, height),
              S_OK);
    EXPECT_EQ(width, 3U);
    EXPECT_EQ(height, 2U);
    EXPECT_EQ(SaveCoefFile(map, {folder.File(L"a.txt")}), "is no coefficient file by its name");
}

TEST(OutputFile, AnEmptyMapIsNoWordFile) {
    const CTemporaryFolder folder;
    EXPECT_NE(SaveCoefFile(CChromaCorrectCoef(), {folder.File(L"a.9wcoef")}), "");
    EXPECT_TRUE(folder.Names().empty());
}

} // namespace
} // namespace trevolt
