#include "cli/ProgressBar.h"

#include <gtest/gtest.h>

namespace trevolt {
namespace {

using std::chrono::milliseconds;

TEST(ProgressBar, TellsAllThatFits) {
    const SProgress progress{2, 4, 3'000'000, milliseconds(2000)};
    EXPECT_EQ(ProgressText(progress, 80),
              "[################-----------------]   50 %  2 of 4 files  1.5 Mpixel/s  2 s left");
    EXPECT_EQ(ProgressText(progress, 79).size(), 79U);
}

TEST(ProgressBar, LeavesOutWhatDoesNotFit) {
    const SProgress progress{2, 4, 3'000'000, milliseconds(2000)};
    const std::string whole = " 50 %  2 of 4 files  1.5 Mpixel/s  2 s left";
    ASSERT_EQ(whole.size(), 43U);
    EXPECT_EQ(ProgressText(progress, 57), "[#####-----]  " + whole);
    EXPECT_EQ(ProgressText(progress, 56), whole);
    EXPECT_EQ(ProgressText(progress, 43), whole);
    EXPECT_EQ(ProgressText(progress, 42), " 50 %  2 of 4 files  2 s left");
    EXPECT_EQ(ProgressText(progress, 29), " 50 %  2 of 4 files  2 s left");
    EXPECT_EQ(ProgressText(progress, 28), " 50 %  2 of 4 files");
    EXPECT_EQ(ProgressText(progress, 18), "2 of 4 files");
    EXPECT_EQ(ProgressText(progress, 11), "2 of 4 file");
    EXPECT_EQ(ProgressText(progress, 0), "");
}

TEST(ProgressBar, NeverIsLongerThanItsLine) {
    for (std::size_t columns = 0; columns < 200; ++columns)
        for (const std::size_t done : {0U, 1U, 99'999U, 100'000U})
            EXPECT_LE(ProgressText({done, 100'000, done * 40'000, milliseconds(5'000'000)}, columns)
                          .size(),
                      columns);
}

TEST(ProgressBar, HasABarOfFortyAtMost) {
    EXPECT_EQ(ProgressText({3, 4, 0, milliseconds(0)}, 200),
              "[" + std::string(30, '#') + std::string(10, '-') + "]   75 %  3 of 4 files");
}

TEST(ProgressBar, EstimatesNothingInTheFirstSecond) {
    EXPECT_EQ(ProgressText({1, 4, 100, milliseconds(999)}, 25), " 25 %  1 of 4 files");
    EXPECT_EQ(ProgressText({0, 4, 0, milliseconds(5000)}, 25), "  0 %  0 of 4 files");
    EXPECT_EQ(ProgressText({1, 4, 100, milliseconds(1000)}, 30), " 25 %  1 of 4 files  3 s left");
}

TEST(ProgressBar, CountsFilesWhereNoPixelsAreKnown) {
    EXPECT_EQ(ProgressText({3, 4, 0, milliseconds(2000)}, 45),
              " 75 %  3 of 4 files  1.5 files/s  1 s left");
}

TEST(ProgressBar, ScalesRatesAndTimes) {
    const auto text = [](std::size_t done, std::uint64_t pixels, int time) {
        return ProgressText({done, 1000, pixels, milliseconds(time)}, 56);
    };
    EXPECT_EQ(text(500, 999, 1000), " 50 %  500 of 1000 files  999.0 pixel/s  1 s left");
    EXPECT_EQ(text(500, 1000, 1000), " 50 %  500 of 1000 files  1.0 kpixel/s  1 s left");
    EXPECT_EQ(text(500, 2'500'000'000, 1000), " 50 %  500 of 1000 files  2.5 Gpixel/s  1 s left");
    EXPECT_EQ(text(500, 59'000, 59'000), " 50 %  500 of 1000 files  1.0 kpixel/s  59 s left");
    EXPECT_EQ(text(500, 60'000, 60'000), " 50 %  500 of 1000 files  1.0 kpixel/s  1 min 00 s left");
    EXPECT_EQ(text(500, 3'660'000, 3'660'000),
              " 50 %  500 of 1000 files  1.0 kpixel/s  1 h 01 min left");
}

TEST(ProgressBar, IsEmptyWithoutFiles) { EXPECT_EQ(ProgressText({}, 80), ""); }

} // namespace
} // namespace trevolt
