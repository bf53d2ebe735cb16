#include "app/rotation/CoefFileSearch.h"

#include <gtest/gtest.h>

#include "platform/FileSystem.h"
#include "tests/support/TestFiles.h"

namespace trevolt {
namespace {

using namespace test;

std::vector<std::wstring> NamesOf(const SCoefFiles& found) {
    std::vector<std::wstring> names;
    for (const SCoefFileName& file : found.files)
        names.push_back(file.name);
    return names;
}

TEST(CoefFileSearch, SourceBySourceInSortedOrder) {
    const CTemporaryFolder folder;
    for (const wchar_t* name : {L"b.9fcoef", L"a.3wcoef", L"notes.txt", L"Z.cccoef"})
        WriteText(folder.File(name), "");
    const SCoefFiles found = FindCoefFiles({{folder.File(L"b.9fcoef"), folder.Path()}});
    EXPECT_EQ(NamesOf(found),
              (std::vector<std::wstring>{L"b.9fcoef", L"Z.cccoef", L"a.3wcoef", L"b.9fcoef"}));
    EXPECT_EQ(found.files[0].Path(), found.files[3].Path());
    ASSERT_EQ(found.passedOver.size(), 1U);
    EXPECT_EQ(found.passedOver[0].name, "notes.txt");
    EXPECT_TRUE(found.obstacles.empty());
}

TEST(CoefFileSearch, FoldersInFoldersAreTakenWhenAskedFor) {
    const CTemporaryFolder folder;
    ASSERT_TRUE(CreateFolders(folder.File(L"row")));
    WriteText(folder.File(L"row") + L"/a.9fcoef", "");
    EXPECT_TRUE(FindCoefFiles({{folder.Path()}}).files.empty());
    EXPECT_EQ(NamesOf(FindCoefFiles({{folder.Path()}, true})),
              std::vector<std::wstring>{L"row/a.9fcoef"});
    EXPECT_TRUE(FindCoefFiles({{folder.Path()}, true, folder.File(L"row")}).files.empty());
}

TEST(CoefFileSearch, WhatIsNoSourceIsAnObstacle) {
    const CTemporaryFolder folder;
    WriteText(folder.File(L"notes.txt"), "");
    const SCoefFiles found = FindCoefFiles({{folder.File(L"notes.txt"), folder.File(L"none")}});
    ASSERT_EQ(found.obstacles.size(), 2U);
    EXPECT_NE(found.obstacles[0].find("is no coefficient file by its name"), std::string::npos);
    EXPECT_NE(found.obstacles[1].find("does not exist"), std::string::npos);
    EXPECT_FALSE(found.isListingBroken);
}

} // namespace
} // namespace trevolt
