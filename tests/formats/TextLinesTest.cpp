#include "formats/TextLines.h"

#include <sstream>

#include <gtest/gtest.h>

#include "platform/FileStream.h"
#include "tests/support/TestFiles.h"

namespace trevolt {
namespace {

using test::CTemporaryFolder;

std::vector<std::string> LinesOf(std::string_view text) {
    const CTemporaryFolder folder;
    const std::wstring path = folder.File(L"lines.txt");
    test::WriteText(path, text);
    std::fstream stream;
    EXPECT_TRUE(OpenFileStream(stream, path.c_str(), std::ios::in));
    CTextLines lines(stream);
    std::vector<std::string> taken;
    while (lines.HasMore()) {
        const std::string_view line = lines.Next();
        EXPECT_EQ(line.data()[line.size()], '\0');
        taken.emplace_back(line);
    }
    return taken;
}

using Lines = std::vector<std::string>;

TEST(TextLines, TheLastLineCountsWithoutAFeed) { EXPECT_EQ(LinesOf("a\nb"), (Lines{"a", "b"})); }

TEST(TextLines, AFinalFeedIsFollowedByTheEmptyReadAtTheEnd) {
    EXPECT_EQ(LinesOf("a\nb\n"), (Lines{"a", "b", ""}));
    EXPECT_EQ(LinesOf(""), Lines{""});
    EXPECT_EQ(LinesOf("\n"), (Lines{"", ""}));
}

TEST(TextLines, CrLfIsAFeedAndALoneCrIsACharacter) {
    EXPECT_EQ(LinesOf("a\r\nb\r\r\nc\rd\n\re\r"), (Lines{"a", "b\r", "c\rd", "\re\r"}));
}

TEST(TextLines, KeepsNulsAndEveryOtherByte) {
    using namespace std::string_literals;
    EXPECT_EQ(LinesOf("a\0b\x1A\xFF\n\0"s), (Lines{"a\0b\x1A\xFF"s, "\0"s}));
}

TEST(TextLines, TakesLinesUpToTheLongest) {
    const std::string longest(CTextLines::kLongestLine, 'x');
    EXPECT_EQ(LinesOf(longest + "\nb"), (Lines{longest, "b"}));
    EXPECT_EQ(LinesOf(longest + "\r\nb"), (Lines{longest, "b"}));
    EXPECT_EQ(LinesOf(longest), Lines{longest});
    EXPECT_EQ(LinesOf("a\n" + longest + "\n"), (Lines{"a", longest, ""}));
}

TEST(TextLines, ALongerLineIsCutAndTheLast) {
    const std::string longest(CTextLines::kLongestLine, 'x');
    EXPECT_EQ(LinesOf(longest + "y\nb"), Lines{longest});
    EXPECT_EQ(LinesOf(longest + "y"), Lines{longest});
    EXPECT_EQ(LinesOf(longest + "\r"), Lines{longest});
    EXPECT_EQ(LinesOf(longest + "\rb\n"), Lines{longest});
    EXPECT_EQ(LinesOf(longest + "y\r\nb"), Lines{longest});
    EXPECT_EQ(LinesOf("a\n" + std::string(10000000, 'x')), (Lines{"a", longest}));
}

// The longest line with CR LF, begun so that a read of 2^18 bytes ends at each of its last bytes.
TEST(TextLines, TheLongestLineIsWholeWhereverAReadEndsInIt) {
    constexpr std::size_t kReadEnd = std::size_t{1} << 18;
    const std::string longest(CTextLines::kLongestLine, 'x');
    for (std::size_t before = 2040; before <= 2055; ++before) {
        std::string text(kReadEnd - before, 'f');
        for (std::size_t at = 999; at < text.size(); at += 1000)
            text[at] = '\n';
        text.back() = '\n';
        const Lines lines = LinesOf(text + longest + "\r\nb");
        ASSERT_GE(lines.size(), 2U) << before;
        EXPECT_EQ(lines[lines.size() - 2], longest) << before;
        EXPECT_EQ(lines.back(), "b") << before;
    }
}

TEST(TextLines, IsTheSameWhereverItsReadsEnd) {
    // Lines of every length around the buffer's end, so that a read ends at each of their bytes.
    std::string text;
    Lines expected;
    for (std::size_t k = 0; text.size() < 3000000; ++k) {
        expected.push_back(std::string(k % 2048, static_cast<char>('a' + k % 26)));
        text += expected.back() + (k % 3 == 0 ? "\r\n" : "\n");
    }
    expected.emplace_back();
    EXPECT_EQ(LinesOf(text), expected);
}

TEST(TextLines, AreNumberedAndToldWhenTheyAreTooLong) {
    const std::string longest(CTextLines::kLongestLine, 'x');
    std::istringstream stream("a\n" + longest + "\n" + longest + "y\nb");
    CTextLines lines(stream);
    EXPECT_EQ(lines.Number(), 0U);
    for (std::uint64_t number = 1; number <= 3; ++number) {
        ASSERT_TRUE(lines.HasMore());
        lines.Next();
        EXPECT_EQ(lines.Number(), number);
        EXPECT_EQ(lines.IsOverlong(), number == 3);
    }
    EXPECT_FALSE(lines.HasMore());
}

} // namespace
} // namespace trevolt
