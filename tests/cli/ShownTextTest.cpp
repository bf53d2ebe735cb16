#include "cli/ShownText.h"

#include <gtest/gtest.h>

#include "tests/cli/PrintedText.h"

namespace trevolt {
namespace {

std::string LineOf(const std::string& text) {
    return test::Printed([&](std::FILE* stream) { PrintLine(stream, "{}: {}", text, 90); });
}

TEST(ShownText, PrintsALineWithNothingHiddenInIt) {
    EXPECT_EQ(LineOf("a\x1B[2J\u202E \u00B0"), "a\\x1B[2J\\u202E \u00B0: 90\n");
    EXPECT_EQ(test::Printed([](std::FILE* stream) { PrintText(stream, ""); }), "\n");
    EXPECT_EQ(test::Printed([](std::FILE* stream) { PrintText(stream, "a\nb\xFF"); }),
              "a\\x0Ab\\xFF\n");
}

// Whatever the places are where a line is cut into pieces.
TEST(ShownText, PrintsLinesOfAnyLength) {
    const std::string character = "\U0001F4A1"; // four bytes
    for (std::size_t before = 240; before < 264; ++before) {
        const std::string text =
            std::string(before, 'a') + character + std::string(300, 'b') + "\xE2\x80\n" + character;
        EXPECT_EQ(LineOf(text), std::string(before, 'a') + character + std::string(300, 'b') +
                                    "\\xE2\\x80\\x0A" + character + ": 90\n")
            << before;
    }
}

} // namespace
} // namespace trevolt
