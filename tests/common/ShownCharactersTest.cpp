#include "common/ShownCharacters.h"

#include <gtest/gtest.h>

namespace trevolt {
namespace {

TEST(ShownCharacters, LeavesWhatCanBeSeen) {
    for (const char* text : {"", "a b.3bcoef", "C:\\wall\\a", "\u7BB1\u4F53 90\u00B0", "~ \u00A0"})
        EXPECT_EQ(Shown(text), text);
}

TEST(ShownCharacters, EscapesWhatATerminalObeys) {
    EXPECT_EQ(Shown("a\nb\rc\td\x1B[2Je\x7F"), "a\\x0Ab\\x0Dc\\x09d\\x1B[2Je\\x7F");
    EXPECT_EQ(Shown(std::string_view("\0\x1F", 2)), "\\x00\\x1F");
    EXPECT_EQ(Shown("\u0080\u009B\u009F"), "\\u0080\\u009B\\u009F");
}

TEST(ShownCharacters, EscapesWhatTurnsLettersRound) {
    EXPECT_EQ(Shown("\u061C\u200E\u200F"), "\\u061C\\u200E\\u200F");
    EXPECT_EQ(Shown("\u2028\u202A\u202E\u2066\u2069"), "\\u2028\\u202A\\u202E\\u2066\\u2069");
    EXPECT_EQ(Shown("\u200D\u2010\u2027\u202F\u2065\u206A\u061B\u061D"),
              "\u200D\u2010\u2027\u202F\u2065\u206A\u061B\u061D");
}

TEST(ShownCharacters, EscapesBytesThatAreNoText) {
    EXPECT_EQ(Shown("a\xFF\xE9\n\u00B0\xC0\x80\xED\xA0\x80\xE2\x80"),
              "a\\xFF\\xE9\\x0A\u00B0\\xC0\\x80\\xED\\xA0\\x80\\xE2\\x80");
}

} // namespace
} // namespace trevolt
