#include "platform/SystemError.h"

#include <cerrno>
#include <clocale>
#include <cstring>

#include <gtest/gtest.h>

namespace trevolt {
namespace {

TEST(SystemError, TextsAreEnglish) {
    EXPECT_EQ(SystemErrorText(ENOSPC), "No space left on device");
    EXPECT_EQ(SystemErrorText(EFBIG), "File too large");
    EXPECT_EQ(SystemErrorText(EACCES), "Permission denied");
    EXPECT_EQ(SystemErrorText(ENOENT), "No such file or directory");
}

TEST(SystemError, NoErrorHasNoTextAndAnUnknownOneItsNumber) {
    EXPECT_EQ(SystemErrorText(0), "");
    EXPECT_EQ(SystemErrorText(30000), "system error 30000");
    EXPECT_EQ(SystemErrorText(-1), "system error -1");
}

TEST(SystemError, AReasonStandsBehindWhatItIsOf) {
    EXPECT_EQ(WithSystemReason("it is refused", EACCES), "it is refused: Permission denied");
    EXPECT_EQ(WithSystemReason("it is refused", 30000), "it is refused: system error 30000");
    EXPECT_EQ(WithSystemReason("it is refused", 0), "it is refused");
}

#ifdef __GLIBC__
TEST(SystemError, TextsAreThoseOfTheSystem) {
    ASSERT_STREQ(std::setlocale(LC_MESSAGES, nullptr), "C");
    int known = 0;
    for (int error = 1; error < 200; ++error) {
        const std::string text = SystemErrorText(error);
        if (text == "system error " + std::to_string(error))
            continue;
        EXPECT_EQ(text, std::strerror(error));
        ++known;
    }
    EXPECT_EQ(known, 23);
}
#endif

} // namespace
} // namespace trevolt
