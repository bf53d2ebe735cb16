#include "app/rotation/DemoWall.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "platform/FileSystem.h"
#include "tests/support/CoefMaps.h"
#include "trevolt/FileKinds.h"

#ifndef _WIN32
#include "tests/support/FileSizeLimit.h"
#include "tests/support/LeftoverFolder.h"
#endif

namespace trevolt {
namespace {

using namespace test;

std::size_t KindsThatAreOffered() {
    return static_cast<std::size_t>(
        std::count_if(FileKinds().begin(), FileKinds().end(), [](const SFileKind& kind) {
            return kind.save(CChromaCorrectCoef{}, nullptr) != E_COEF_NOTIMPL;
        }));
}

TEST(DemoWall, WritesACabinetOfEveryKindThatLoads) {
    const CTemporaryFolder folder;
    ASSERT_EQ(WriteDemoWall(folder.Path(), false, true), "");
    const std::vector<std::wstring> names = folder.Names();
    ASSERT_EQ(names.size(), KindsThatAreOffered());
    EXPECT_EQ(names.front(), L"Cab_01.9fcoef");
    EXPECT_EQ(names.back(), L"Cab_09.12wcoef");
    for (const std::wstring& name : names) {
        SCOPED_TRACE(testing::PrintToString(name));
        const SFileKind* kind = FindLoadKind(name);
        ASSERT_NE(kind, nullptr);
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        ASSERT_EQ(kind->readSize(folder.File(name).c_str(), width, height), S_OK);
        EXPECT_EQ(width, 160U);
        EXPECT_EQ(height, 90U);
        CChromaCorrectCoef map;
        map.Resize(160, 90);
        ASSERT_GE(kind->load(map, folder.File(name).c_str()), 0);
        const SMatrixCoef& first = *map.FindElement(0, 0);
        EXPECT_GT(first.m[0], 0.79F);
        EXPECT_LT(first.m[0], 0.96F);
        EXPECT_FALSE(SamePixel(first, *map.FindElement(159, 89)));
    }
}

TEST(DemoWall, IsTheSameAtEveryCall) {
    const CTemporaryFolder folder;
    const CTemporaryFolder again;
    ASSERT_EQ(WriteDemoWall(folder.Path(), false, false), "");
    ASSERT_EQ(WriteDemoWall(again.Path(), false, false), "");
    for (const std::wstring& name : folder.Names())
        EXPECT_EQ(ReadFile(folder.File(name)), ReadFile(again.File(name)));
}

TEST(DemoWall, MakesTheFolderOrTellsWhyItCannot) {
    const CTemporaryFolder folder;
    const std::wstring made = folder.File(L"some") + kPathSeparator + L"where";
    ASSERT_EQ(WriteDemoWall(made, false, true), "");
    EXPECT_EQ(ListEntries(made + kPathSeparator + L"Cab_").entries.size(), 9U);
    WriteText(folder.File(L"file"), "x");
    const std::string told = WriteDemoWall(folder.File(L"file"), false, true);
    EXPECT_EQ(told,
              "the folder cannot be made, written to or synced: Not a directory: choose another");
}

TEST(DemoWall, ReplacesOnlyWhenTold) {
    const CTemporaryFolder folder;
    WriteText(folder.File(L"Cab_01.9fcoef"), "mine");
    EXPECT_EQ(WriteDemoWall(folder.Path(), false, false),
              "its output Cab_01.9fcoef exists already: overwrite it, or choose another target");
    EXPECT_EQ(ReadText(folder.File(L"Cab_01.9fcoef")), "mine");
    EXPECT_EQ(WriteDemoWall(folder.Path(), true, false), "");
    EXPECT_NE(ReadText(folder.File(L"Cab_01.9fcoef")), "mine");
}

TEST(DemoWall, AFolderInACabinetsPlaceIsSeenBeforeAnythingIsWritten) {
    for (const bool replaces : {false, true}) {
        const CTemporaryFolder folder;
        ASSERT_TRUE(CreateFolders(folder.File(L"Cab_05.3fcoef")));
        EXPECT_EQ(WriteDemoWall(folder.Path(), replaces, false),
                  "its output Cab_05.3fcoef is a folder: choose another target");
        EXPECT_EQ(folder.Names(), std::vector<std::wstring>{L"Cab_05.3fcoef"});
    }
}

#ifndef _WIN32
TEST(DemoWall, TheCabinetThatFailsIsNamedWithHowManyAreWritten) {
    constexpr rlim_t kLessThanTheText = 600000; // and more than each cabinet before it
    const CTemporaryFolder folder;
    const CFileSizeLimit limit(kLessThanTheText);
    EXPECT_EQ(WriteDemoWall(folder.Path(), false, false),
              "its output Cab_07.cccoef cannot be written: File too large: 6 of 9 cabinets are "
              "written");
    EXPECT_EQ(folder.Names().size(), 6U);
}

TEST(DemoWall, WhatAKilledRunLeftIsRemovedWhereNothingElseFits) {
    const CLeftoverFolder folder;
    EXPECT_EQ(
        WriteDemoWall(folder.Path(), false, false),
        "the folder cannot be made, written to or synced: File name too long: choose another");
    EXPECT_FALSE(PathExists(folder.Left()));
}
#endif

} // namespace
} // namespace trevolt
