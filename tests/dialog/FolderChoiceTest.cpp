// Which box a dropped path fills, which folder it stands for, and how it reads in a tooltip.
#include "app/dialog/FolderChoice.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "app/dialog/DialogView.h"
#include "platform/FileSystem.h"
#include "platform/SettingsProfile.h"
#include "tests/support/TestFiles.h"

namespace trevolt {
namespace {

TEST(DroppedFolderBox, IsTheOneUnderTheMouseWhateverIsSet) {
    for (const std::uint32_t set : {0U, kSourceSet, kTargetSet, kSourceSet | kTargetSet})
        for (const int box : {kIdSource, kIdTarget})
            EXPECT_EQ(DroppedFolderBox(box, set), box) << set;
}

TEST(DroppedFolderBox, IsElsewhereTheFirstEmptyOneAndTheSourceWhenNoneIs) {
    for (const int elsewhere : {0, -1, static_cast<int>(kIdStart), static_cast<int>(kIdWidth)}) {
        EXPECT_EQ(DroppedFolderBox(elsewhere, 0), kIdSource);
        EXPECT_EQ(DroppedFolderBox(elsewhere, kSourceSet), kIdTarget);
        EXPECT_EQ(DroppedFolderBox(elsewhere, kTargetSet), kIdSource);
        EXPECT_EQ(DroppedFolderBox(elsewhere, kSourceSet | kTargetSet), kIdSource);
    }
}

TEST(DroppedFolder, FileStandsForItsFolder) {
    const test::CTemporaryFolder folder;
    test::WriteText(folder.File(L"a.9fcoef"), "");
    EXPECT_EQ(DroppedFolder(folder.Path()), folder.Path());
    EXPECT_EQ(DroppedFolder(folder.File(L"a.9fcoef")), folder.Path());
    EXPECT_EQ(DroppedFolder(folder.File(L"missing")), L"");
    EXPECT_EQ(DroppedFolder(L""), L"");
}

TEST(DroppedFolder, IsNoneThatTheSettingsCannotHold) {
    const test::CTemporaryFolder folder;
    std::wstring deep = WithSeparator(folder.Path());
    while (deep.size() + 1 < CSettingsProfile::kLongestValue)
        deep += std::wstring(
                    std::min<std::size_t>(99, CSettingsProfile::kLongestValue - 1 - deep.size()),
                    L'd') +
                kPathSeparator;
    ASSERT_EQ(WithSeparator(deep).size(), CSettingsProfile::kLongestValue);
    ASSERT_TRUE(CreateFolders(deep));
    EXPECT_EQ(DroppedFolder(deep), deep);
    std::wstring deeper = deep;
    deeper.insert(deeper.size() - 1, L"d");
    ASSERT_TRUE(CreateFolders(deeper));
    EXPECT_EQ(DroppedFolder(deeper), L"");
}

/// "|" stands for the system's separator in both.
std::wstring Lines(std::wstring path, std::size_t longestLine) {
    std::replace(path.begin(), path.end(), L'|', kPathSeparator);
    std::wstring lines = PathInLines(path, longestLine);
    std::replace(lines.begin(), lines.end(), kPathSeparator, L'|');
    return lines;
}

TEST(PathInLines, BreaksBehindSeparatorsOnly) {
    EXPECT_EQ(Lines(L"", 8), L"");
    EXPECT_EQ(Lines(L"D:|walls|", 9), L"D:|walls|");
    EXPECT_EQ(Lines(L"D:|walls|", 8), L"D:|\r\nwalls|");
    EXPECT_EQ(Lines(L"D:|walls|a|b|c", 9), L"D:|walls|\r\na|b|c");
    EXPECT_EQ(Lines(L"D:|a name too long|b|", 5), L"D:|\r\na name too long|\r\nb|");
    EXPECT_EQ(Lines(L"name", 2), L"name");
    EXPECT_EQ(Lines(L"||server|share|", 10), L"||server|\r\nshare|");
}

} // namespace
} // namespace trevolt
