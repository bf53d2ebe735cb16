#include "cli/OptionValues.h"

#include <stdexcept>

#include <gtest/gtest.h>

#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

/// What the parser refuses a text with.
template <class Parse>
std::string Refusal(Parse parse, const std::string& text) {
    try {
        static_cast<void>(parse(text));
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
    return "nothing";
}

TEST(OptionValues, ReadAngles) {
    struct SCase {
        const char* text;
        std::uint32_t code;
    };
    for (const SCase& one : {SCase{"90", 1}, SCase{"180", 2}, SCase{"270", 3}, SCase{"-90", 3},
                             SCase{"-180", 2}, SCase{"90\u00B0", 1}, SCase{"-90\u00B0", 3}})
        EXPECT_EQ(ParseAngle(one.text), one.code) << one.text;
    for (const char* text : {"0x5A", "45", "+90", "090", " 90", "90 ", "90.0", "1e2", "-270", "360",
                             "\u00B0", "90\u00B0\u00B0", "", "x"})
        EXPECT_EQ(Refusal(ParseAngle, text),
                  std::string(text) + " is no angle: give 90, 180, 270, -90 or -180");
    EXPECT_EQ(Refusal(ParseAngle, "0"), "0 turns nothing: give 90, 180, 270, -90 or -180");
}

TEST(OptionValues, ReadSizes) {
    EXPECT_EQ(ParseSize("8x6"), (PixelSize{8, 6}));
    EXPECT_EQ(ParseSize("65535X1"), (PixelSize{65535, 1}));
    for (const char* text : {"65536x1", "1x65536", "18446744073709551616x1"})
        EXPECT_EQ(Refusal(ParseSize, text),
                  std::string(text) + " is above 65535 in one direction: give less");
    for (const char* text : {"0x5", "5x0", "0x0x5", "5", "x5", "5x", "", "-5x5", "5x5 ", "5x0x1F"})
        EXPECT_EQ(Refusal(ParseSize, text),
                  std::string(text) + " is not a size: give WIDTHxHEIGHT in pixels");
}

TEST(OptionValues, ReadJobs) {
    EXPECT_EQ(ParseJobs("1"), 1U);
    EXPECT_EQ(ParseJobs("256"), 256U);
    for (const char* text : {"0", "257", "0x2", "-1", "2.0", "", "99999999999999999999"})
        EXPECT_EQ(Refusal(ParseJobs, text),
                  std::string(text) + " is no number of threads: give 1 to 256");
}

TEST(OptionValues, ReadShards) {
    EXPECT_EQ(ParseShard("1/1").count, 1U);
    EXPECT_EQ(ParseShard("3/8").number, 3U);
    EXPECT_EQ(ParseShard("8/8").number, 8U);
    for (const char* text :
         {"0/8", "9/8", "3", "3/", "/8", "3/8/2", "3-8", "-1/8", "", "1/99999999999999999999"})
        EXPECT_EQ(Refusal(ParseShard, text),
                  std::string(text) + " is no part of a run: give I/N, with I from 1 to N");
}

TEST(OptionValues, ReadBytes) {
    EXPECT_EQ(ParseBytes("500"), 500U);
    EXPECT_EQ(ParseBytes("4k"), 4096U);
    EXPECT_EQ(ParseBytes("16777215T"), 16777215ULL << 40U);
    EXPECT_EQ(Refusal(ParseBytes, "16777216T"), "16777216T is too large: give less");
    EXPECT_EQ(Refusal(ParseBytes, "0x10"),
              "0x10 is no number of bytes: give one, or one with K, M, G or T");
}

TEST(OptionValues, ReadSuffixes) {
    EXPECT_EQ(ParseSuffix("cw_90 \u00B0"), L"cw_90 \u00B0");
    for (const char* text :
         {"", "a/b", "a\\b", "a.b", "c:", "*", "?", "\"", "<", ">", "|", "\n", "\x7F"})
        EXPECT_EQ(Refusal(ParseSuffix, text),
                  "\"" + std::string(text) +
                      "\" cannot stand in a name: give letters, digits, - or _");
    EXPECT_EQ(Refusal(ParseSuffix, "\xFF"), "it is not valid UTF-8: give a text that is");
}

TEST(OptionValues, ReadPaths) {
    EXPECT_EQ(ParsePath("a b"), L"a b");
    EXPECT_EQ(Refusal(ParsePath, ""), "it has no name: give one");
    EXPECT_EQ(Refusal(ParsePath, "\xFF"), "the name \xFF is not valid UTF-8: rename it");
}

TEST(OptionValues, RectanglesHaveFourSidesAndAPixel) {
    EXPECT_EQ(ParseRect("1,2,3,4"), (SPixelRect{1, 2, 3, 4}));
    EXPECT_EQ(ParseRect("-65535,-1,65535,0"), (SPixelRect{-65535, -1, 65535, 0}));
    for (const char* text : {"", "1", "1,2,3", "1,2,3,4,", "1,2,3,4,5", ",1,2,3", "a,2,3,4",
                             "1,2,3,4x", " 1,2,3,4", "0,0,65536,1", "0x1,2,3,4"})
        EXPECT_THROW(ParseRect(text), std::invalid_argument) << text;
    for (const char* text : {"1,2,1,4", "1,2,3,2", "3,2,1,4", "1,4,3,2"})
        EXPECT_THROW(ParseRect(text), std::invalid_argument) << text;
}

TEST(OptionValues, PlacedFilesEndWithTheirPlace) {
    const SPlacedFile plain = ParsePlacedFile("a@b.9fcoef@-3,4");
    EXPECT_EQ(plain.path, L"a@b.9fcoef");
    EXPECT_EQ(plain.name, L"a@b.9fcoef");
    EXPECT_EQ(plain.place, (PixelPosition{-3, 4}));
    EXPECT_EQ(plain.code, 0U);
    EXPECT_EQ(ParsePlacedFile("a,b@0,0,0").path, L"a,b");
    EXPECT_EQ(ParsePlacedFile("a@0,0,90\u00B0").code, 1U);
    EXPECT_EQ(ParsePlacedFile("a@0,0,-90").code, 3U);
    EXPECT_EQ(ParsePlacedFile("a@7,0,180").place, (PixelPosition{7, 0}));
    for (const char* text : {"", "a", "a@", "a@1", "a@1,", "a@,1", "a@1,2,", "a@1,2,3",
                             "a@1,2,90,0", "a@1,2@", "@1,2", "\xFF@1,2", "a@65536,0", "a@1 ,2"})
        EXPECT_THROW(ParsePlacedFile(text), std::invalid_argument) << text;
}

TEST(OptionValues, ReadPathsOfPages) {
    for (const char* text : {"run.html", "a b/run.HTM", ".html"})
        EXPECT_EQ(ParsePagePath(text), Utf8ToWide(text));
    for (const char* text : {"run", "run.html ", "run.xhtm.txt", "html"})
        EXPECT_EQ(Refusal(ParsePagePath, text),
                  std::string(text) + " is no name of a page: give one that ends in .html");
    EXPECT_EQ(Refusal(ParsePagePath, "\xFF.html"),
              "the name \xFF.html is not valid UTF-8: rename it");
    EXPECT_EQ(ParsePicturePath("a/b.PnG"), L"a/b.PnG");
    for (const char* text : {"a.9fcoef", "a.png ", "png"})
        EXPECT_EQ(Refusal(ParsePicturePath, text),
                  std::string(text) + " does not end in .png: give the picture's name");
}

} // namespace
} // namespace trevolt
