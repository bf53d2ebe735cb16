#include "cli/Wildcards.h"

#include <gtest/gtest.h>

#include "platform/FileSystem.h"
#include "tests/support/TestFiles.h"

namespace trevolt {
namespace {

TEST(Wildcards, StandForLetters) {
    for (const wchar_t* pattern : {L"Cab_01.3bcoef", L"*", L"*.3bcoef", L"Cab*", L"*01*", L"**",
                                   L"?ab_0?.3bcoef", L"cAB*.3BCOEF", L"C*b*1*f", L"Cab_01.3bcoef*"})
        EXPECT_TRUE(MatchesWildcards(pattern, L"Cab_01.3bcoef"));
    for (const wchar_t* pattern :
         {L"", L"Cab", L"*.3bcoe", L"?Cab*", L"Cab_01.3bcoef?", L"*02*", L"Cab_01?3bcoefx"})
        EXPECT_FALSE(MatchesWildcards(pattern, L"Cab_01.3bcoef"));
    EXPECT_TRUE(MatchesWildcards(L"", L""));
    EXPECT_TRUE(MatchesWildcards(L"*", L""));
    EXPECT_FALSE(MatchesWildcards(L"?", L""));
    EXPECT_TRUE(MatchesWildcards(L"*ab", L"aab"));
}

TEST(Wildcards, TakeEndlessPatternsInTheirTime) {
    std::wstring pattern;
    for (int i = 0; i < 60; ++i)
        pattern += L"*a";
    EXPECT_FALSE(MatchesWildcards(pattern + L"b", std::wstring(5000, L'a')));
}

TEST(Wildcards, GiveTheEntriesOfAFolderInOrder) {
    const test::CTemporaryFolder folder;
    for (const wchar_t* name : {L"b.3bcoef", L"a.3bcoef", L"a.9bcoef"})
        test::WriteText(folder.File(name), "");
    using Paths = std::vector<std::wstring>;
    EXPECT_EQ(ExpandWildcards(folder.File(L"*.3bcoef")),
              (Paths{folder.File(L"a.3bcoef"), folder.File(L"b.3bcoef")}));
    EXPECT_EQ(ExpandWildcards(folder.File(L"*")).size(), 3U);
    EXPECT_EQ(ExpandWildcards(folder.File(L"c*")), Paths{});
    EXPECT_EQ(ExpandWildcards(folder.File(L"missing")), Paths{folder.File(L"missing")});
}

} // namespace
} // namespace trevolt
