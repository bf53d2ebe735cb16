// What the reader of text files passes over, and tells.
#include "trevolt/TextFlaws.h"

#include <cmath>
#include <limits>
#include <random>
#include <sstream>

#include <gtest/gtest.h>

#include "tests/support/CoefMaps.h"
#include "tests/support/ExtremeNumbers.h"
#include "tests/support/Streams.h"
#include "trevolt/PixelRect.h"
#include "trevolt/TextCoefFile.h"
#include "trevolt/TransferReport.h"

namespace trevolt {

void PrintTo(const SFlawedLines& lines, std::ostream* stream) {
    *stream << lines.count << " from line " << lines.first;
}

bool operator==(const SFlawedLines& a, const SFlawedLines& b) {
    return a.count == b.count && a.first == b.first;
}

namespace {

using namespace std::string_literals;

constexpr std::array kAllFlaws{ETextFlaw::LongLine, ETextFlaw::NoEnd,   ETextFlaw::SizeLine,
                               ETextFlaw::DataLine, ETextFlaw::Outside, ETextFlaw::Repeated};
static_assert(kAllFlaws.size() == CTextFlaws::kKinds);

struct STextTold {
    CTextFlaws flaws;
    std::uint64_t cleaned = 0;
    bool hasReadFailed = false;
    bool wasMemoryRefused = false;
};

/// What a read into a map of a size tells.
STextTold TellOfText(const std::string& text, std::int32_t width = 40, std::int32_t height = 24,
                     std::int32_t xOffset = 0, std::int32_t yOffset = 0) {
    CChromaCorrectCoef map;
    map.Resize(width, height);
    std::istringstream stream(text, std::ios::binary);
    std::uint32_t fileWidth = 0;
    std::uint32_t fileHeight = 0;
    const CTransferReport report;
    EXPECT_EQ(ReadTextCoefFile(map, stream, xOffset, yOffset, fileWidth, fileHeight, false), S_OK)
        << text;
    return {report.TextFlaws(), report.CleanedPixels(), report.HasReadFailed(),
            report.WasMemoryRefused()};
}

struct SFlawCase {
    ETextFlaw flaw;
    SFlawedLines lines;
};

/// The read tells these flaws and no others.
void ExpectFlaws(const CTextFlaws& flaws, const std::vector<SFlawCase>& expected,
                 const std::string& text) {
    for (const ETextFlaw flaw : kAllFlaws) {
        SFlawedLines lines;
        for (const SFlawCase& one : expected)
            if (one.flaw == flaw)
                lines = one.lines;
        EXPECT_EQ(flaws[flaw], lines) << "flaw " << static_cast<int>(flaw) << " of\n" << text;
    }
}

void ExpectFlaws(const std::string& text, const std::vector<SFlawCase>& expected) {
    ExpectFlaws(TellOfText(text).flaws, expected, text);
}

constexpr std::string_view kRest = ",0.5,0,0,0,0.5,0,0,0,0.5";

/// A whole data line.
std::string Line(const std::string& x, const std::string& y) {
    return x + "," + y + std::string(kRest) + "\n";
}

const std::string kSized = "[T9COEF20]\nwidth=40\nheight=24\n";

TEST(CTextFlaws, CountsTheLinesAndKeepsTheFirst) {
    CTextFlaws flaws;
    for (const ETextFlaw flaw : kAllFlaws)
        EXPECT_EQ(flaws[flaw], SFlawedLines{});
    flaws.Note(ETextFlaw::Outside, 7);
    flaws.Note(ETextFlaw::Outside, 9);
    EXPECT_EQ(flaws[ETextFlaw::Outside], (SFlawedLines{2, 7}));
    CTextFlaws later;
    later.Note(ETextFlaw::Outside, 4);
    later.Note(ETextFlaw::Repeated, 5);
    flaws.Add(later);
    flaws.Add({});
    ExpectFlaws(flaws, {{ETextFlaw::Outside, {3, 7}}, {ETextFlaw::Repeated, {1, 5}}}, "");
}

TEST(TextFlaws, AWholeFileOfAnyDialectHasNone) {
    for (const std::string& text :
         {kSized, kSized + Line("0", "0") + Line("39", "23"), "[T9COEF20]\nwidth=0\nheight=0\n"s,
          "[VU30]\n"s, "[T9COEF10]\n" + Line("7", "9") + Line("100", "200"),
          "[T9COEF20]\r\nwidth= 40 \r\nheight=\t24\r\n 1,\t0,1,0,0,0,1,0,0,0,1 \t\r\n"s,
          kSized + "1,2,1e0,0x0,-0,.5,5.E-1,0,inf,-INF,nan\n"})
        ExpectFlaws(text, {});
}

TEST(TextFlaws, LinesThatAreNotWholeAreCounted) {
    const std::string whole = Line("1", "1");
    for (const std::string& line :
         {"\n"s, " \n"s, "x\n"s, "2,2\n"s, "2,2,0.5,0,0,0,0.5,0,0,0\n"s,
          "2,2,0.5,0,0,0,0.5,0,0,0,\n"s, "2,2,0.5,0,0,0,0.5,0,0,0,0.5,\n"s,
          "2,2,0.5,0,0,0,0.5,0,0,0,0.5 0\n"s, "2,2,0.5,0,0,0,0.5,0,0,0,0.5.\n"s,
          "2,2,0.5,0,0,0,0.5,0,0,0,0.5\0\n"s, "2,2,0.5,0,0\0,0,0.5,0,0,0,0.5\n"s,
          "2;2,0.5,0,0,0,0.5,0,0,0,0.5\n"s, "2,2,0.5,0,,0,0.5,0,0,0,0.5\n"s,
          "2.0,2,0.5,0,0,0,0.5,0,0,0,0.5\n"s, "2 ,2,0.5,0,0,0,0.5,0,0,0,0.5\n"s, "\x1A\n"s,
          "[VU30]\n"s, "width=40\n"s}) {
        ExpectFlaws(kSized + whole + line, {{ETextFlaw::DataLine, {1, 5}}});
        ExpectFlaws("[VU30]\n" + line + whole + line, {{ETextFlaw::DataLine, {2, 2}}});
    }
}

TEST(TextFlaws, ALastLineWithoutEndIsToldWhateverItHolds) {
    for (const std::string& line :
         {"1,1,0.5,0,0,0,0.5,0,0,0,0.5"s, "1,1,0.5,0"s, "x"s, " "s, "\r"s, "\0"s,
          "99,1,0.5,0,0,0,0.5,0,0,0,0.5"s, "0,0,0.5,0,0,0,0.5,0,0,0,0.5"s}) {
        ExpectFlaws(kSized + Line("0", "0") + line, {{ETextFlaw::NoEnd, {1, 5}}});
        ExpectFlaws("[T9COEF10]\n" + line, {{ETextFlaw::NoEnd, {1, 2}}});
    }
    for (const std::string& tag : {"[T9COEF20]"s, "[T9COEF10]"s, "[VU30]"s})
        ExpectFlaws(tag, {{ETextFlaw::NoEnd, {1, 1}}});
    ExpectFlaws("[T9COEF20]\nwidth=40", {{ETextFlaw::NoEnd, {1, 2}}});
    ExpectFlaws("[T9COEF20]\nwidth", {{ETextFlaw::NoEnd, {1, 2}}});
    ExpectFlaws("[T9COEF20]\nwidth=40\nheight=2", {{ETextFlaw::NoEnd, {1, 3}}});
}

TEST(TextFlaws, SizeLinesThatAreMissingOrNotWholeAreTold) {
    ExpectFlaws("[T9COEF20]\n", {{ETextFlaw::SizeLine, {1, 2}}});
    ExpectFlaws("[T9COEF20]\nwidth=40\n", {{ETextFlaw::SizeLine, {1, 3}}});
    for (const std::string& line :
         {"\n"s, "width=\n"s, "width=x\n"s, "Width=40\n"s, "width=-1\n"s, "width=40x\n"s,
          "width=40,\n"s, "width=40\0\n"s, "height=24\n"s, "width =40\n"s, "1,1,0.5\n"s})
        ExpectFlaws("[T9COEF20]\n" + line + "height=24\n", {{ETextFlaw::SizeLine, {1, 2}}});
    ExpectFlaws("[T9COEF20]\nheight=24\nwidth=40\n", {{ETextFlaw::SizeLine, {2, 2}}});
    ExpectFlaws("[T9COEF20]\nwidth=40\nheight=24.5\n", {{ETextFlaw::SizeLine, {1, 3}}});
}

TEST(TextFlaws, PixelsOutsideTheStatedSizeAreCounted) {
    for (const auto& [x, y] : {std::pair("40"s, "0"s),
                               {"0"s, "24"s},
                               {"-1"s, "0"s},
                               {"0"s, "-1"s},
                               {"2147483647"s, "0"s},
                               {"0"s, "99999999999"s}})
        ExpectFlaws(kSized + Line("1", "1") + Line(x, y), {{ETextFlaw::Outside, {1, 5}}});
    ExpectFlaws("[T9COEF20]\nwidth=0\nheight=0\n" + Line("0", "0") + Line("0", "0"),
                {{ETextFlaw::Outside, {2, 4}}});
    // The older dialects state none: only what lies left of or above the first pixel is outside.
    ExpectFlaws("[VU30]\n" + Line("4000", "3000") + Line("-1", "0") + Line("0", "-1"),
                {{ETextFlaw::Outside, {2, 3}}});
    // Nor is a size known of which one half is damaged.
    ExpectFlaws("[T9COEF20]\nwidth=4\nheight?\n" + Line("9", "9"), {{ETextFlaw::SizeLine, {1, 3}}});
    ExpectFlaws("[T9COEF20]\nwidth?\nheight=4\n" + Line("9", "9"), {{ETextFlaw::SizeLine, {1, 2}}});
}

// A map smaller than the file, or moved, cuts what it has not room for; what is told of the file stays.
TEST(TextFlaws, TheMapsSizeAndTheOffsetsAreNoPartOfTheFile) {
    const std::string whole = kSized + Line("39", "23") + Line("0", "0");
    const std::string twice = whole + Line("39", "23");
    for (const SPixelRect& map : {SPixelRect{0, 0, 2, 2}, SPixelRect{1, 0, 40, 24},
                                  SPixelRect{0, 0, 0, 0}, SPixelRect{3, 2, 43, 26}}) {
        const auto tell = [&](const std::string& text) {
            return TellOfText(text, map.right, map.bottom, map.left, map.top).flaws;
        };
        ExpectFlaws(tell(whole), {}, whole);
        ExpectFlaws(tell(twice), {{ETextFlaw::Repeated, {1, 6}}}, twice);
    }
}

TEST(TextFlaws, PixelsThatAreNamedAgainAreCounted) {
    ExpectFlaws("[VU30]\n" + Line("0", "0") + Line("7", "0") + Line("8", "0") + Line("7", "1") +
                    Line("0", "7") + Line("7", "0") + Line("7", "0") + Line("39", "23") +
                    Line("39", "23"),
                {{ETextFlaw::Repeated, {3, 7}}});
    // A line that has another flaw names nothing.
    ExpectFlaws(kSized + "5,5,0.5\n" + Line("5", "5") + "5,5,0.5\n",
                {{ETextFlaw::DataLine, {2, 4}}});
    ExpectFlaws(kSized + Line("5", "5") + "5,5" + std::string(kRest), {{ETextFlaw::NoEnd, {1, 5}}});
}

TEST(TextFlaws, EveryPixelOfAMapMayBeNamedOnce) {
    std::string once = "[T9COEF20]\nwidth=13\nheight=11\n";
    std::string again;
    for (int x = 12; x >= 0; --x)
        for (int y = 0; y < 11; ++y)
            again += Line(std::to_string(x), std::to_string(y));
    EXPECT_EQ(TellOfText(once + again, 13, 11).flaws[ETextFlaw::Repeated], SFlawedLines{});
    EXPECT_EQ(TellOfText(once + again + again, 13, 11).flaws[ETextFlaw::Repeated],
              (SFlawedLines{143, 147}));
}

TEST(TextFlaws, ALineThatIsTooLongEndsTheFile) {
    const std::string blanks(2047, ' ');
    ExpectFlaws(kSized + blanks + "1\n" + Line("99", "99"), {{ETextFlaw::LongLine, {1, 4}}});
    ExpectFlaws("[VU30]\n" + blanks + "1", {{ETextFlaw::LongLine, {1, 2}}});
    ExpectFlaws("[T9COEF20]\n" + blanks + "1\nheight=24\n", {{ETextFlaw::LongLine, {1, 2}}});
    const std::string longest =
        std::string(2047 - 3 - kRest.size(), ' ') + "1,1" + std::string(kRest) + "\n";
    ExpectFlaws(kSized + longest + Line("99", "99"), {{ETextFlaw::Outside, {1, 5}}});
}

TEST(TextFlaws, EveryCutOfAFileIsToldButThoseBetweenItsLines) {
    const std::string text = kSized + Line("0", "0") + Line("17", "23");
    const std::size_t data = kSized.size();
    for (std::size_t size = std::string("[T9COEF20]").size(); size < text.size(); ++size) {
        const CTextFlaws flaws = TellOfText(text.substr(0, size)).flaws;
        const bool isBetween = text[size - 1] == '\n' && size >= data;
        int told = 0;
        for (const ETextFlaw flaw : kAllFlaws)
            told += flaws[flaw].count == 0 ? 0 : 1;
        EXPECT_EQ(told, isBetween ? 0 : 1) << text.substr(0, size);
    }
}

TEST(TextFlaws, ARefusedFileAndTheProbesTellNothing) {
    const CTransferReport report;
    CChromaCorrectCoef map;
    map.Resize(2, 2);
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::istringstream refused("[T9COEF21]\nx");
    EXPECT_EQ(ReadTextCoefFile(map, refused, 0, 0, width, height, false), E_COEF_BADTEXT);
    std::istringstream probed("[VU30]\nx\n9,9\n-1");
    EXPECT_EQ(ProbeTextCoefFileSize(probed, width, height), S_OK);
    std::istringstream measured("9,9\n5,5\nx");
    EXPECT_EQ(ProbeCoefDataExtent(measured, width, height), S_OK);
    ExpectFlaws(report.TextFlaws(), {}, "");
    EXPECT_FALSE(report.HasReadFailed());
}

TEST(TextFlaws, OneReportTellsOfSeveralFiles) {
    const CTransferReport report;
    TellOfText(kSized + "x\n" + Line("3", "0.5"));
    TellOfText("[VU30]\n\n");
    ExpectFlaws(report.TextFlaws(), {{ETextFlaw::DataLine, {3, 4}}}, "");
}

// The bits of the named pixels are a small part of the map; without them nothing is known of
// repetitions, and the report says so.
TEST(TextFlaws, RefusedMemoryIsTold) {
    CChromaCorrectCoef map;
    map.Resize(2000, 1000);
    ASSERT_TRUE(map.HasStorage());
    const test::CBudgetLimit none(0);
    const std::string text = "[VU30]\n" + Line("1", "1") + Line("1", "1");
    std::istringstream stream(text);
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    const CTransferReport report;
    EXPECT_EQ(ReadTextCoefFile(map, stream, 0, 0, width, height, false), S_OK);
    EXPECT_TRUE(report.WasMemoryRefused());
    ExpectFlaws(report.TextFlaws(), {}, text);
    EXPECT_EQ(map.FindElement(1, 1)->m[0], 0.5F);
}

TEST(CleanedPixels, AreThoseOfWhichAValueChanged) {
    const auto cleaned = [](const std::string& values) {
        return TellOfText("[VU30]\n1,1," + values + "\n").cleaned;
    };
    EXPECT_EQ(cleaned("0.5,0,0,0,0.5,0,0,0,0.5"), 0U);
    EXPECT_EQ(cleaned("1,0,0,0,1,0,0,0,1"), 0U);
    EXPECT_EQ(cleaned("1.00001,0,0,0,1,0,0,0,1"), 0U); // the largest that is let be
    EXPECT_EQ(cleaned("0.5,-0.0,0,0,0.5,0,0,0,nan"), 0U);
    EXPECT_EQ(cleaned("1.00002,0,0,0,1,0,0,0,1"), 1U);
    EXPECT_EQ(cleaned("1,0,0,0,1,0,0,0,inf"), 1U);
    EXPECT_EQ(cleaned("1,-0.00001,0,0,1,0,0,0,1"), 1U);
    EXPECT_EQ(cleaned("1,0.000009,0,0,1,0,0,0,1"), 1U);
    EXPECT_EQ(cleaned("0.5,0,0.4,0.4,0.5,0.4,0.4,0,0.4"), 1U); // two columns of one pixel
}

TEST(CleanedPixels, AreCountedLineByLine) {
    const std::string bright = "2,0,0,0,1,0,0,0,1";
    const STextTold told = TellOfText("[VU30]\n0,0," + bright + "\n" + Line("1", "0") + "2,0," +
                                      bright + "\n3,0," + bright + " x\n4,0," + bright);
    EXPECT_EQ(told.cleaned, 3U);                                           // not the partial line
    EXPECT_EQ(TellOfText("[VU30]\n0,0," + bright + "\n\n\n").cleaned, 1U); // not the repetitions
}

/// What a writer makes passes, whatever the map holds.
TEST(TextFlaws, AFileThatIsWrittenHasNone) {
    std::mt19937 random(5);
    std::uniform_int_distribution<std::uint32_t> bits;
    std::uniform_real_distribution<float> gain(-0.5F, 1.5F);
    for (int round = 0; round < 20; ++round) {
        CChromaCorrectCoef map;
        map.Resize(1 + round, 1 + round % 4);
        test::PaintMap(map, [&](std::int32_t, std::int32_t) {
            SMatrixCoef element;
            for (float& value : element.m)
                value = round % 2 == 0 ? gain(random) : std::bit_cast<float>(bits(random));
            return element;
        });
        std::ostringstream written(std::ios::binary);
        ASSERT_EQ(WriteTextCoefFile(map, written, nullptr), S_OK);
        ExpectFlaws(TellOfText(written.str(), map.Width(), map.Height()).flaws, {}, written.str());
    }
}

TEST(TextFlaws, TheSamplesHaveNone) {
    for (const wchar_t* name :
         {L"cabinet/Cab_05.cccoef", L"awkward/crlf.cccoef", L"turned-90/Cab_05-90\u00B0.cccoef",
          L"turned-180/Cab_05-180\u00B0.cccoef", L"turned-270/Cab_05-270\u00B0.cccoef"}) {
        const STextTold told = TellOfText(test::ReadText(test::Sample(name)));
        ExpectFlaws(told.flaws, {}, "a sample");
        EXPECT_EQ(told.cleaned, 0U);
    }
}

} // namespace
} // namespace trevolt
