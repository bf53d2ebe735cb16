#include "app/inspection/HtmlText.h"

#include <gtest/gtest.h>

namespace trevolt {
namespace {

TEST(HtmlText, LeavesWhatIsNoMarkup) {
    for (const char* text : {"", "Cab_01.9fcoef", "\u7BB1\u4F53 90\u00B0", "a/b\\c;=`{}"})
        EXPECT_EQ(Html(text), text);
}

TEST(HtmlText, EscapesMarkupInContentAndAttributes) {
    EXPECT_EQ(Html("<a href=\"x\">'&'</a>"),
              "&lt;a href=&quot;x&quot;&gt;&#39;&amp;&#39;&lt;/a&gt;");
    EXPECT_EQ(Html("&amp;"), "&amp;amp;");
}

TEST(HtmlText, ShowsWhatCannotBeSeen) {
    EXPECT_EQ(Html(std::string_view("a\0\n\x1B<\x7F", 6)), "a\\x00\\x0A\\x1B&lt;\\x7F");
    EXPECT_EQ(Html("\u202E\u2066\xFF"), "\\u202E\\u2066\\xFF");
}

TEST(Base64, FillsTheLastGroup) {
    EXPECT_EQ(Base64(""), "");
    EXPECT_EQ(Base64("f"), "Zg==");
    EXPECT_EQ(Base64("fo"), "Zm8=");
    EXPECT_EQ(Base64("foo"), "Zm9v");
    EXPECT_EQ(Base64("foob"), "Zm9vYg==");
    EXPECT_EQ(Base64("fooba"), "Zm9vYmE=");
    EXPECT_EQ(Base64("foobar"), "Zm9vYmFy");
    EXPECT_EQ(Base64(std::string_view("\xFB\xFF\x00", 3)), "+/8A");
}

} // namespace
} // namespace trevolt
