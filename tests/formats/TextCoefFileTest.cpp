#include "trevolt/TextCoefFile.h"

#include <bit>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <locale>
#include <optional>
#include <random>

#include <gtest/gtest.h>

#include "tests/support/CoefMaps.h"
#include "tests/support/ExtremeNumbers.h"
#include "tests/support/Streams.h"
#include "trevolt/QuarterTurn.h"
#include "trevolt/TransferReport.h"

namespace trevolt {
namespace {

using namespace std::string_literals;
using test::CTemporaryFolder;
using test::kInfinity;
using test::kInt32Max;
using Matrix = std::array<float, 9>;

constexpr Matrix kIdentity{1, 0, 0, 0, 1, 0, 0, 0, 1};

SMatrixCoef ElementOf(const Matrix& matrix) {
    SMatrixCoef element;
    std::copy(matrix.begin(), matrix.end(), element.m.begin());
    return element;
}

Matrix MatrixAt(const CChromaCorrectCoef& map, std::int32_t x, std::int32_t y) {
    const SMatrixCoef* element = map.FindElement(x, y);
    if (element == nullptr) {
        ADD_FAILURE() << "no pixel " << x << ", " << y;
        return {};
    }
    Matrix matrix{};
    std::copy_n(element->m.begin(), matrix.size(), matrix.begin());
    return matrix;
}

bool IsDefault(const SMatrixCoef& element) {
    const SMatrixCoef byDefault;
    return std::memcmp(&element, &byDefault, sizeof element) == 0;
}

/// The pixels that are not default, counted.
int ChangedPixels(const CChromaCorrectCoef& map) {
    int changed = 0;
    for (std::int32_t y = 0; y < map.Height(); ++y)
        for (std::int32_t x = 0; x < map.Width(); ++x)
            changed += IsDefault(*map.FindElement(x, y)) ? 0 : 1;
    return changed;
}

bool HaveSameElements(const CChromaCorrectCoef& a, const CChromaCorrectCoef& b) {
    if (a.Width() != b.Width() || a.Height() != b.Height())
        return false;
    for (std::int32_t y = 0; y < a.Height(); ++y)
        for (std::int32_t x = 0; x < a.Width(); ++x)
            if (std::memcmp(a.FindElement(x, y), b.FindElement(x, y), sizeof(SMatrixCoef)) != 0)
                return false;
    return true;
}

/// `text` filled up to `size` characters. Kept out of line: GCC 12 knows the length of an inlined
/// one, and then takes an appended text for an overflow.
[[gnu::noinline]] std::string FilledUp(std::string text, std::size_t size, char with) {
    text.resize(size, with);
    return text;
}

/// A map of a size, read from a file of a text.
struct ReadMap {
    CChromaCorrectCoef map;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    Status status = E_FAIL;

    ReadMap(std::int32_t mapWidth, std::int32_t mapHeight, std::string_view text,
            std::int32_t xOffset = 0, std::int32_t yOffset = 0, bool diagonalOnly = false) {
        const CTemporaryFolder folder;
        const std::wstring path = folder.File(L"map.cccoef");
        test::WriteText(path, text);
        map.Resize(mapWidth, mapHeight);
        status = ReadTextCoefFile(map, path.c_str(), xOffset, yOffset, width, height, diagonalOnly);
    }
};

class TextCoefFile : public ::testing::Test {
  protected:
    std::wstring Path() const { return m_folder.File(L"map.cccoef"); }

    std::string Written(const CChromaCorrectCoef& map, const CMassiveGrid* prepared = nullptr) {
        EXPECT_EQ(WriteTextCoefFile(map, Path().c_str(), prepared), S_OK);
        return test::ReadText(Path());
    }

    CTemporaryFolder m_folder;
};

// Writing

TEST_F(TextCoefFile, AMapOfDefaultsIsWrittenAsTheHeaderLinesAlone) {
    CChromaCorrectCoef map;
    map.Resize(40, 24);
    EXPECT_EQ(Written(map), "[T9COEF20]\nwidth=40\nheight=24\n");
}

TEST_F(TextCoefFile, AnEmptyMapIsWrittenAsTheHeaderLinesAlone) {
    EXPECT_EQ(Written(CChromaCorrectCoef()), "[T9COEF20]\nwidth=0\nheight=0\n");
}

TEST_F(TextCoefFile, AMapWithoutStorageIsWrittenAsDefaults) {
    const test::CBudgetLimit none(0);
    CChromaCorrectCoef map;
    map.Resize(4, 2);
    ASSERT_FALSE(map.HasStorage());
    EXPECT_EQ(Written(map), "[T9COEF20]\nwidth=4\nheight=2\n");
}

TEST_F(TextCoefFile, PixelsAreWrittenRowByRow) {
    CChromaCorrectCoef map;
    map.Resize(3, 2);
    map.SetElement(2, 0, ElementOf({0.8163F, 0.02152F, 0, 0, 0.85675F, 0, 0, 0, 0.85198F}));
    map.SetElement(0, 1, ElementOf({-0.0F, 123.5F, 0.015625F, 0.046875F, -2.5F, 1, 1, 1, 1}));
    map.SetElement(1, 0, ElementOf({0.5F, 0, 0, 0, 0.5F, 0, 0, 0, 0.5F}));
    EXPECT_EQ(Written(map),
              "[T9COEF20]\nwidth=3\nheight=2\n"
              "    1,     0, 0.50000, 0.00000, 0.00000, 0.00000, 0.50000, 0.00000, 0.00000, "
              "0.00000, 0.50000\n"
              "    2,     0, 0.81630, 0.02152, 0.00000, 0.00000, 0.85675, 0.00000, 0.00000, "
              "0.00000, 0.85198\n"
              "    0,     1, -0.00000, 123.50000, 0.01562, 0.04688, -2.50000, 1.00000, 1.00000, "
              "1.00000, 1.00000\n");
}

TEST_F(TextCoefFile, TheTrailingValuesDecideWhetherAnIdentityIsWritten) {
    CChromaCorrectCoef map;
    map.Resize(2, 1);
    SMatrixCoef element;
    element.m[10] = 0.5F;
    map.SetElement(1, 0, element);
    EXPECT_EQ(Written(map), "[T9COEF20]\nwidth=2\nheight=1\n"
                            "    1,     0, 1.00000, 0.00000, 0.00000, 0.00000, 1.00000, 0.00000, "
                            "0.00000, 0.00000, 1.00000\n");
}

TEST_F(TextCoefFile, ValuesThatAreNotFiniteAndHugeOnesHaveTheirRoom) {
    constexpr float kMax = std::numeric_limits<float>::max();
    CChromaCorrectCoef map;
    map.Resize(1, 1);
    map.SetElement(0, 0,
                   ElementOf({-kMax, -kMax, -kMax, -kMax, -kMax, -kMax, kInfinity, -kInfinity,
                              std::nanf("")}));
    const std::string huge = "-340282346638528859811704183484516925440.00000, ";
    EXPECT_EQ(Written(map), "[T9COEF20]\nwidth=1\nheight=1\n    0,     0, " + huge + huge + huge +
                                huge + huge + huge + "inf, -inf, nan\n");
}

// Lines of all lengths up to the longest, in more than one piece of output.
TEST_F(TextCoefFile, TheLongestLinesAreWrittenWhole) {
    constexpr float kMax = std::numeric_limits<float>::max();
    CChromaCorrectCoef map;
    map.Resize(400, 1);
    std::string expected = "[T9COEF20]\nwidth=400\nheight=1\n";
    for (std::int32_t x = 0; x < map.Width(); ++x) {
        Matrix matrix{};
        std::string line = std::to_string(x);
        line = std::string(5 - line.size(), ' ') + line + ",     0";
        for (std::size_t k = 0; k < matrix.size(); ++k) {
            const bool isLong = x % 10 != static_cast<std::int32_t>(k);
            matrix[k] = isLong ? -kMax : 0.0F;
            line += isLong ? ", -340282346638528859811704183484516925440.00000" : ", 0.00000";
        }
        map.SetElement(x, 0, ElementOf(matrix));
        expected += line + "\n";
    }
    EXPECT_EQ(Written(map), expected);
}

TEST_F(TextCoefFile, PixelsComeFromAPreparedGridAndSizesFromTheMap) {
    CChromaCorrectCoef map;
    map.Resize(2, 1);
    map.SetElement(0, 0, ElementOf({0.5F, 0, 0, 0, 0.5F, 0, 0, 0, 0.5F}));
    CChromaCorrectCoef other;
    other.Resize(2, 1);
    other.SetElement(1, 0, ElementOf({0.25F, 0, 0, 0, 0.25F, 0, 0, 0, 0.25F}));
    EXPECT_EQ(Written(map, &other.ColourGrid()),
              "[T9COEF20]\nwidth=2\nheight=1\n"
              "    1,     0, 0.25000, 0.00000, 0.00000, 0.00000, 0.25000, 0.00000, 0.00000, "
              "0.00000, 0.25000\n");
}

TEST_F(TextCoefFile, APreparedGridOfAnotherShapeIsRefusedBeforeTheFileIsTouched) {
    CChromaCorrectCoef map;
    map.Resize(2, 3);
    CMassiveGrid turned(sizeof(SMatrixCoef));
    turned.Resize(3, 2);
    CMassiveGrid narrow(36);
    narrow.Resize(2, 3);
    CMassiveGrid higher(sizeof(SMatrixCoef));
    higher.Resize(2, 4);
    EXPECT_EQ(WriteTextCoefFile(map, Path().c_str(), &turned), E_COEF_INVALIDARG);
    EXPECT_EQ(WriteTextCoefFile(map, Path().c_str(), &higher), E_COEF_INVALIDARG);
    EXPECT_EQ(WriteTextCoefFile(map, Path().c_str(), &narrow), E_COEF_INVALIDARG);
    EXPECT_FALSE(test::FileExists(Path()));
}

TEST_F(TextCoefFile, WritingNeedsAPathThatOpens) {
    CChromaCorrectCoef map;
    map.Resize(1, 1);
    EXPECT_EQ(WriteTextCoefFile(map, nullptr, nullptr), E_COEF_INVALIDARG);
    EXPECT_EQ(WriteTextCoefFile(map, m_folder.Path().c_str(), nullptr), E_COEF_OPENFAILED);
    EXPECT_EQ(WriteTextCoefFile(map, m_folder.File(L"none/map.cccoef").c_str(), nullptr),
              E_COEF_OPENFAILED);
}

TEST_F(TextCoefFile, WritingTruncatesWhatStoodThere) {
    test::WriteText(Path(), std::string(1000, 'x'));
    CChromaCorrectCoef map;
    map.Resize(1, 1);
    EXPECT_EQ(Written(map), "[T9COEF20]\nwidth=1\nheight=1\n");
}

#ifndef _WIN32
TEST_F(TextCoefFile, AFullDiskIsNotedThoughTheStatusIsFixed) {
    CChromaCorrectCoef map;
    map.Resize(1, 1);
    const CTransferReport report;
    EXPECT_EQ(WriteTextCoefFile(map, L"/dev/full", nullptr), S_OK);
    EXPECT_TRUE(report.HasWriteFailed());
}
#endif

// Reading: tags and sizes

TEST_F(TextCoefFile, ReadingNeedsAPathThatOpensAndOffsetsOfAtLeastZero) {
    CChromaCorrectCoef map;
    map.Resize(2, 2);
    std::uint32_t width = 7;
    std::uint32_t height = 8;
    const std::wstring path = Path();
    EXPECT_EQ(ReadTextCoefFile(map, nullptr, 0, 0, width, height, false), E_COEF_INVALIDARG);
    EXPECT_EQ(ReadTextCoefFile(map, path.c_str(), -1, 0, width, height, false), E_COEF_INVALIDARG);
    EXPECT_EQ(ReadTextCoefFile(map, path.c_str(), 0, -1, width, height, false), E_COEF_INVALIDARG);
    EXPECT_EQ(ReadTextCoefFile(map, path.c_str(), 0, 0, width, height, false), E_COEF_OPENFAILED);
    EXPECT_EQ(ReadTextCoefFile(map, m_folder.Path().c_str(), 0, 0, width, height, false),
              E_COEF_OPENFAILED);
    EXPECT_EQ(ProbeTextCoefFileSize(nullptr, width, height), E_COEF_INVALIDARG);
    EXPECT_EQ(ProbeTextCoefFileSize(path.c_str(), width, height), E_COEF_OPENFAILED);
    EXPECT_EQ(width, 7U);
    EXPECT_EQ(height, 8U);
}

TEST_F(TextCoefFile, AnyTagButTheThreeIsRefusedAndNothingChanges) {
    const std::string rest = "\nwidth=9\nheight=9\n0,0,0.5,0,0,0,0.5,0,0,0,0.5\n";
    for (const std::string& tag :
         {""s, "[T9COEF20] "s, " [T9COEF20]"s, "[t9coef20]"s, "[T9COEF2]"s, "[T9COEF200]"s,
          "[T9COEF30]"s, "[VU30]\0"s, "\0"s, "\xEF\xBB\xBF[T9COEF20]"s, "[T9COEF20]\r\r"s,
          "\xFF\xFE[\0V\0U\0003\0000\0]\0"s, std::string(10000000, '[')}) {
        test::WriteText(Path(), tag + rest);
        CChromaCorrectCoef map;
        map.Resize(2, 2);
        map.SetElement(1, 1, ElementOf({0.5F, 0, 0, 0, 0.5F, 0, 0, 0, 0.5F}));
        std::uint32_t width = 7;
        std::uint32_t height = 8;
        EXPECT_EQ(ReadTextCoefFile(map, Path().c_str(), 0, 0, width, height, false),
                  E_COEF_BADTEXT);
        EXPECT_EQ(ProbeTextCoefFileSize(Path().c_str(), width, height), E_COEF_BADTEXT);
        EXPECT_EQ(ChangedPixels(map), 1) << tag.substr(0, 20);
        EXPECT_EQ(width, 7U);
        EXPECT_EQ(height, 8U);
    }
    test::WriteText(Path(), "");
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    EXPECT_EQ(ProbeTextCoefFileSize(Path().c_str(), width, height), E_COEF_BADTEXT);
}

TEST_F(TextCoefFile, ATagLineAloneGivesDefaults) {
    for (const char* text : {"[T9COEF20]", "[T9COEF20]\n", "[T9COEF10]", "[VU30]", "[VU30]\r\n",
                             "[T9COEF20]\nwidth=2\nheight=2\n"}) {
        test::WriteText(Path(), text);
        CChromaCorrectCoef map;
        map.Resize(2, 2);
        map.SetElement(1, 1, ElementOf({0.5F, 0, 0, 0, 0.5F, 0, 0, 0, 0.5F}));
        constexpr float kGain = 0.5F;
        std::memcpy(map.GainGrid().Element(3), &kGain, sizeof kGain);
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        EXPECT_EQ(ReadTextCoefFile(map, Path().c_str(), 0, 0, width, height, false), S_OK) << text;
        EXPECT_EQ(ChangedPixels(map), 0) << text;
        float gain = 0.0F;
        std::memcpy(&gain, map.GainGrid().Element(3), sizeof gain);
        EXPECT_EQ(gain, 1.0F) << text;
    }
}

TEST(TextCoefFileSizes, ComeFromTheSizeLinesOfTheNewestDialect) {
    const ReadMap read(2, 2, "[T9COEF20]\nwidth=40\nheight= +24 x\n9,9,1,0,0,0,1,0,0,0,1\n");
    EXPECT_EQ(read.status, S_OK);
    EXPECT_EQ(read.width, 40U);
    EXPECT_EQ(read.height, 24U);
}

TEST(TextCoefFileSizes, AreTakenByPositionAlone) {
    const ReadMap swapped(2, 2, "[T9COEF20]\nheight=40\nwidth=24\n");
    EXPECT_EQ(swapped.width, 0U);
    EXPECT_EQ(swapped.height, 0U);

    const ReadMap lost(4, 4,
                       "[T9COEF20]\n1,1,0.5,0,0,0,0.5,0,0,0,0.5\nheight=4\n"
                       "2,2,0.5,0,0,0,0.5,0,0,0,0.5\n");
    EXPECT_EQ(lost.width, 0U);
    EXPECT_EQ(lost.height, 4U);
    EXPECT_EQ(ChangedPixels(lost.map), 1);
    EXPECT_EQ(MatrixAt(lost.map, 2, 2), (Matrix{0.5F, 0, 0, 0, 0.5F, 0, 0, 0, 0.5F}));
}

TEST(TextCoefFileSizes, LeaveTheOutputWhereTheyDoNotConvert) {
    for (const char* line : {"", " width=40", "Width=40", "width =40", "width=x", "width="}) {
        const CTemporaryFolder folder;
        const std::wstring path = folder.File(L"map.cccoef");
        test::WriteText(path, "[T9COEF20]\n"s + line + "\nheight=24\n");
        std::uint32_t width = 7;
        std::uint32_t height = 8;
        EXPECT_EQ(ProbeTextCoefFileSize(path.c_str(), width, height), S_OK);
        EXPECT_EQ(width, 7U) << line;
        EXPECT_EQ(height, 24U) << line;
    }
}

TEST(TextCoefFileSizes, SaturateAndWrapAsTheIntegersDo) {
    const ReadMap read(1, 1, "[T9COEF20]\nwidth=99999999999\nheight=-1\n");
    EXPECT_EQ(read.width, 2147483647U);
    EXPECT_EQ(read.height, 0xFFFFFFFFU);
}

TEST(TextCoefFileSizes, AreRaisedToHoldThePixelsOfTheOlderDialects) {
    for (const char* tag : {"[VU30]", "[T9COEF10]"}) {
        const ReadMap read(2, 2, tag + "\n0,0,1,0,0,0,1,0,0,0,1\n9,4,1,0,0,0,1,0,0,0,1\n3,2\n"s);
        EXPECT_EQ(read.width, 10U) << tag;
        EXPECT_EQ(read.height, 5U) << tag;
    }
}

TEST(TextCoefFileSizes, AreRaisedWithoutTheOffsetsAndNeverLowered) {
    const CTemporaryFolder folder;
    const std::wstring path = folder.File(L"map.cccoef");
    test::WriteText(path, "[VU30]\n9,4,1,0,0,0,1,0,0,0,1");
    CChromaCorrectCoef map;
    std::uint32_t width = 20;
    std::uint32_t height = 0;
    EXPECT_EQ(ReadTextCoefFile(map, path.c_str(), 100, 100, width, height, false), S_OK);
    EXPECT_EQ(width, 20U);
    EXPECT_EQ(height, 5U);
}

TEST(TextCoefFileSizes, AreNotRaisedByNegativeCoordinatesAndHoldTheLargestOnes) {
    const ReadMap negative(1, 1, "[VU30]\n-5,-1\n");
    EXPECT_EQ(negative.width, 0U);
    EXPECT_EQ(negative.height, 0U);
    const ReadMap largest(1, 1, "[VU30]\n99999999999,2147483646\n");
    EXPECT_EQ(largest.width, 2147483648U);
    EXPECT_EQ(largest.height, 2147483647U);
}

TEST(TextCoefFileSizes, OfAnEmptyOlderFileStayZero) {
    const ReadMap read(1, 1, "[VU30]\n");
    EXPECT_EQ(read.width, 0U);
    EXPECT_EQ(read.height, 0U);
}

// Reading: data lines

TEST(TextCoefFileData, IsCleanedAndStoredAtItsPixel) {
    const ReadMap clamped(8, 8, "[VU30]\n3,4,2,0,0,0,2,0,0,0,2\n");
    EXPECT_EQ(MatrixAt(clamped.map, 3, 4), kIdentity);

    const ReadMap divided(8, 8, "[VU30]\n0,0,0.6,0,0,0.6,1,0,0.4,0,1\n");
    EXPECT_EQ(MatrixAt(divided.map, 0, 0), (Matrix{0.375F, 0, 0, 0.375F, 1, 0, 0.25F, 0, 1}));
    EXPECT_EQ(ChangedPixels(divided.map), 1);
}

TEST(TextCoefFileData, KeepsTheTrailingDefaults) {
    const ReadMap read(1, 1, "[VU30]\n0,0,.5,.25,.125,0,.5,0,0,0,.5");
    const SMatrixCoef expected{{0.5F, 0.25F, 0.125F, 0, 0.5F, 0, 0, 0, 0.5F, 0, 1, 0}};
    EXPECT_EQ(read.map.FindElement(0, 0)->m, expected.m);
}

TEST(TextCoefFileData, FieldsThatDoNotConvertKeepThePreviousLinesValues) {
    const ReadMap read(8, 1,
                       "[VU30]\n0,0,.5,.1,.1,.1,.5,.1,.1,.1,.5\n"
                       "1\n"            // y as before
                       "2,0\n"          // all nine as before
                       "3,0,.25\n"      // eight as before
                       "4,0,.75,x,.3\n" // what stands behind does not count
                       "5 ,0,.9\n"      // no blank before a comma
                       "\n"             // and this repeats pixel 5
                       "6,0,.25;.25,.25\n");
    const float m1 = 0.1F;
    EXPECT_EQ(MatrixAt(read.map, 1, 0), MatrixAt(read.map, 0, 0));
    EXPECT_EQ(MatrixAt(read.map, 2, 0), MatrixAt(read.map, 0, 0));
    EXPECT_EQ(MatrixAt(read.map, 3, 0), (Matrix{.25F, m1, m1, m1, .5F, m1, m1, m1, .5F}));
    EXPECT_EQ(MatrixAt(read.map, 4, 0), (Matrix{.75F, m1, m1, m1, .5F, m1, m1, m1, .5F}));
    EXPECT_EQ(MatrixAt(read.map, 5, 0), MatrixAt(read.map, 4, 0));
    EXPECT_EQ(MatrixAt(read.map, 6, 0), (Matrix{.25F, m1, m1, m1, .5F, m1, m1, m1, .5F}));
    EXPECT_EQ(MatrixAt(read.map, 7, 0), kIdentity);
}

TEST(TextCoefFileData, TheCleanedValuesAreWhatTheNextLineKeeps) {
    // 2 is cleaned to 1; the next line's column sums with that 1, not with the 2.
    const ReadMap read(2, 1, "[VU30]\n0,0,2,0,0,0,0,0,0,0,0\n1,0\n");
    EXPECT_EQ(MatrixAt(read.map, 1, 0), (Matrix{1, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(TextCoefFileData, AColumnThatTheNextLineKeepsIsTheDividedOne) {
    // 1 and 1 are divided to a half each; with 0.25 in the first the column needs no division.
    const ReadMap read(2, 1, "[VU30]\n0,0,1,0,0,1,0,0,0,0,0\n1,0,0.25\n");
    EXPECT_EQ(MatrixAt(read.map, 0, 0), (Matrix{0.5F, 0, 0, 0.5F, 0, 0, 0, 0, 0}));
    EXPECT_EQ(MatrixAt(read.map, 1, 0), (Matrix{0.25F, 0, 0, 0.5F, 0, 0, 0, 0, 0}));
}

TEST(TextCoefFileData, ABlankBeforeACommaEndsTheLine) {
    const std::string first = "[VU30]\n0,0,.5,.1,.1,.1,.5,.1,.1,.1,.5\n";
    const float m1 = 0.1F;
    for (const std::string blank : {" ", "\t", "\r"}) {
        const ReadMap reals(2, 1, first + "1,0,.25" + blank + ",.3,.3\n");
        EXPECT_EQ(MatrixAt(reals.map, 1, 0), (Matrix{.25F, m1, m1, m1, .5F, m1, m1, m1, .5F}));
        const ReadMap last(2, 1, first + "1,0,.25,.1,.1,.1,.5,.1,.1,.1" + blank + ",.75\n");
        EXPECT_EQ(MatrixAt(last.map, 1, 0), (Matrix{.25F, m1, m1, m1, .5F, m1, m1, m1, .5F}));
        const ReadMap coordinates(2, 1, first + "1,0" + blank + ",.3\n");
        EXPECT_EQ(MatrixAt(coordinates.map, 1, 0), MatrixAt(coordinates.map, 0, 0));
        EXPECT_EQ(MatrixAt(coordinates.map, 0, 0)[0], 0.5F);
    }
}

TEST(TextCoefFileData, TheReadAtTheEndCleansTheRepeatedPixelAgain) {
    // The division takes the smallest coefficient below itself, the next cleaning makes it 0.
    const std::string line = "[VU30]\n0,0,0.00001,0,0,1,0,0,1,0,0";
    EXPECT_GT(MatrixAt(ReadMap(1, 1, line).map, 0, 0)[0], 0.0F);
    EXPECT_EQ(MatrixAt(ReadMap(1, 1, line + "\n").map, 0, 0)[0], 0.0F);
}

TEST(TextCoefFileData, TheLastLineCountsWithoutAFeed) {
    const ReadMap read(4, 4, "[VU30]\n3,3,.5,0,0,0,.5,0,0,0,.5");
    EXPECT_EQ(MatrixAt(read.map, 3, 3), (Matrix{.5F, 0, 0, 0, .5F, 0, 0, 0, .5F}));
    EXPECT_EQ(read.width, 4U);
}

TEST(TextCoefFileData, NothingIsStoredBeforeALineGaveCoordinates) {
    const ReadMap read(4, 4, "[VU30]\n\nx\n,5,.5\n", 2, 2);
    EXPECT_EQ(ChangedPixels(read.map), 0);
    EXPECT_EQ(read.width, 0U);
}

TEST(TextCoefFileData, AnOverlongLineIsProcessedAsFarAsReadAndStopsTheLoop) {
    const std::string line = "1,0,.5,0,0,0,.5,0,0,0,.5 ";
    const std::string nextLine = "\n2,0,.5,0,0,0,.5,0,0,0,.5\n";
    const ReadMap read(4, 1, "[VU30]\n" + FilledUp(line, 2048, 'x') + nextLine);
    EXPECT_EQ(read.status, S_OK);
    EXPECT_EQ(ChangedPixels(read.map), 1);
    EXPECT_EQ(MatrixAt(read.map, 1, 0), (Matrix{.5F, 0, 0, 0, .5F, 0, 0, 0, .5F}));

    const ReadMap whole(4, 1, "[VU30]\n" + FilledUp(line, 2047, 'x') + nextLine);
    EXPECT_EQ(ChangedPixels(whole.map), 2);
}

TEST(TextCoefFileData, AnOverlongSizeLineStopsTheLoopToo) {
    const ReadMap read(4, 1,
                       FilledUp("[T9COEF20]\nwidth=40", 3000, ' ') +
                           "\nheight=24\n0,0,.5,0,0,0,.5,0,0,0,.5\n");
    EXPECT_EQ(read.width, 40U);
    EXPECT_EQ(read.height, 0U);
    EXPECT_EQ(ChangedPixels(read.map), 0);
}

TEST(TextCoefFileData, IsCutWithinANumberByAnOverlongLine) {
    // 2048 characters: the 5 is cut off.
    const ReadMap read(1, 1, "[VU30]\n" + FilledUp("0,0,", 2046, '0') + ".5");
    EXPECT_EQ(MatrixAt(read.map, 0, 0)[0], 0.0F);
    const ReadMap whole(1, 1, "[VU30]\n" + FilledUp("0,0,", 2045, '0') + ".5");
    EXPECT_EQ(MatrixAt(whole.map, 0, 0)[0], 0.5F);
}

TEST(TextCoefFileData, OffsetsMoveThePixels) {
    const ReadMap read(4, 4, "[VU30]\n0,0,.5,0,0,0,.5,0,0,0,.5\n-1,1\n", 2, 1);
    EXPECT_EQ(ChangedPixels(read.map), 2);
    EXPECT_NE(MatrixAt(read.map, 2, 1), kIdentity);
    EXPECT_NE(MatrixAt(read.map, 1, 2), kIdentity);
}

TEST(TextCoefFileData, PixelsOutsideTheMapAreIgnored) {
    const std::string values = ",.5,0,0,0,.5,0,0,0,.5\n";
    std::string text = "[VU30]\n";
    for (const char* at : {"4,0", "0,4", "-1,0", "0,-1", "2147483647,0", "0,2147483647",
                           "-2147483648,0", "65536,0", "99999999999,99999999999"})
        text += at + values;
    EXPECT_EQ(ChangedPixels(ReadMap(4, 4, text).map), 0);
    EXPECT_EQ(ReadMap(4, 4, text, kInt32Max, kInt32Max).status, S_OK);
    EXPECT_EQ(ChangedPixels(ReadMap(4, 4, text, kInt32Max, kInt32Max).map), 0);
    EXPECT_EQ(ReadMap(0, 0, text).status, S_OK);
}

TEST(TextCoefFileData, LargeOffsetsBringNegativeCoordinatesInside) {
    const std::string text = "[VU30]\n-2147483647,-2147483646,.5,0,0,0,.5,0,0,0,.5\n";
    const ReadMap read(4, 4, text, kInt32Max, kInt32Max);
    EXPECT_EQ(ChangedPixels(read.map), 1);
    EXPECT_NE(MatrixAt(read.map, 0, 1), kIdentity);
}

TEST(TextCoefFileData, OnlyTheDiagonalIsTakenOnRequest) {
    const ReadMap read(2, 1, "[VU30]\n0,0,.5,.1,.1,.1,.4,.1,.1,.1,.3\n1,0\n", 0, 0, true);
    EXPECT_EQ(MatrixAt(read.map, 0, 0), (Matrix{.5F, 0, 0, 0, .4F, 0, 0, 0, .3F}));
    EXPECT_EQ(MatrixAt(read.map, 1, 0), MatrixAt(read.map, 0, 0));
}

TEST(TextCoefFileData, TheDiagonalIsCleanedWithTheWholeColumns) {
    const ReadMap read(1, 1, "[VU30]\n0,0,.6,0,0,.6,1,0,.4,0,1\n", 0, 0, true);
    EXPECT_EQ(MatrixAt(read.map, 0, 0), (Matrix{.375F, 0, 0, 0, 1, 0, 0, 0, 1}));
}

TEST(TextCoefFileData, TakesExponentsSignsBlanksAndNames) {
    const ReadMap read(1, 1,
                       "[VU30]\n +0,\t0,  5e-1,+.25, -1,inf,0x.8p0,nan,1e-999,1e999,-infinity\n");
    const Matrix m = MatrixAt(read.map, 0, 0);
    EXPECT_EQ(m[0], 0.5F / 1.5F); // the column holds 0.5, 1 and 0
    EXPECT_EQ(m[1], 0.25F / 1.75F);
    EXPECT_EQ(m[2], 0.0F);
    EXPECT_EQ(m[3], 1.0F / 1.5F);
    EXPECT_EQ(m[4], 0.5F / 1.75F);
    EXPECT_TRUE(std::isnan(m[5]));
    EXPECT_EQ(m[6], 0.0F);
    EXPECT_EQ(m[7], 1.0F / 1.75F);
    EXPECT_EQ(m[8], 0.0F);
}

TEST(TextCoefFileData, ADecimalCommaSeparatesFields) {
    const ReadMap read(1, 1, "[VU30]\n0,0,0,5,0,25,0,75,0,1,0\n");
    EXPECT_EQ(MatrixAt(read.map, 0, 0), (Matrix{0, 0.5F, 0, 1, 0, 1, 0, 0.5F, 0}));
    const ReadMap cut(1, 1, "[VU30]\n0,0,0,5,0,25\n");
    EXPECT_EQ(MatrixAt(cut.map, 0, 0), (Matrix{0, 0.5F, 0, 1, 0.5F, 0, 0, 0, 1}));
}

TEST(TextCoefFileData, SurvivesOverflowInEveryField) {
    const std::string huge(150, '9');
    std::string line = huge + "," + huge;
    for (int k = 0; k < 9; ++k)
        line += "," + huge;
    const ReadMap read(2, 2, "[VU30]\n0,0,1,0,0,0,1,0,0,0,1\n" + line + "\n1,1\n");
    EXPECT_EQ(read.width, 2147483648U);
    EXPECT_EQ(read.height, 2147483648U);
    const float third = 1.0F / 3.0F;
    EXPECT_EQ(MatrixAt(read.map, 1, 1),
              (Matrix{third, third, third, third, third, third, third, third, third}));
    EXPECT_EQ(MatrixAt(read.map, 0, 0), kIdentity);
}

TEST(TextCoefFileData, OfOneTenMegabyteLineGivesWhatItsBeginningSays) {
    std::string text = "[VU30]\n0,0,.5,0,0,0,.5,0,0,0,.5,";
    text.append(10000000, '7');
    const ReadMap read(2, 1, text);
    EXPECT_EQ(read.status, S_OK);
    EXPECT_EQ(MatrixAt(read.map, 0, 0), (Matrix{.5F, 0, 0, 0, .5F, 0, 0, 0, .5F}));
    EXPECT_EQ(read.width, 1U);
}

TEST(TextCoefFileData, OfNulsRepeatsWhatWas) {
    const ReadMap read(2, 1,
                       "[VU30]\n0,0,.5,0,0,0,.5,0,0,0,.5\n"s + std::string(1500, '\0') +
                           "\n1,0\0,.9,0,0\n"s);
    EXPECT_EQ(MatrixAt(read.map, 1, 0), MatrixAt(read.map, 0, 0)); // a NUL ends the line's text
    EXPECT_EQ(read.width, 2U);
}

TEST(TextCoefFileData, InUtf16BehindATagIsNoData) {
    std::string text = "[VU30]\n";
    for (const char c : "0,0,.5,0,0,0,.5,0,0,0,.5\n"s)
        text += std::string{c, '\0'};
    const ReadMap read(2, 1, text);
    EXPECT_EQ(read.status, S_OK);
    EXPECT_EQ(ChangedPixels(read.map), 0); // "0" and then a NUL: a column, and nothing else
    EXPECT_EQ(read.width, 1U);
    EXPECT_EQ(read.height, 0U);
}

TEST(TextCoefFileData, LoneCrsAreBlanks) {
    const ReadMap read(2, 1, "[VU30]\n0,\r0,\r.5,0,0,0,.5,0,0,0,.5\r\n1,0\n");
    EXPECT_EQ(ChangedPixels(read.map), 2);
}

// Probes

TEST(TextCoefFileProbe, GivesWhatTheReaderGives) {
    for (const char* text : {"[T9COEF20]\nwidth=40\nheight=24\n99,99\n", "[T9COEF20]\nwidth=40",
                             "[T9COEF20]", "[VU30]\n0,0\n9,4,x\nfoo\n3\n", "[T9COEF10]\n-3,7\n",
                             "[VU30]\n99999999999,5", "[VU30]"}) {
        const CTemporaryFolder folder;
        const std::wstring path = folder.File(L"map.cccoef");
        test::WriteText(path, text);
        const ReadMap read(1, 1, text);
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        EXPECT_EQ(ProbeTextCoefFileSize(path.c_str(), width, height), read.status) << text;
        EXPECT_EQ(width, read.width) << text;
        EXPECT_EQ(height, read.height) << text;
    }
}

struct Extent {
    Status status = E_FAIL;
    std::uint32_t first = 77;
    std::uint32_t second = 77;
    bool operator==(const Extent&) const = default;
};

Extent ExtentOf(std::string_view text) {
    const CTemporaryFolder folder;
    const std::wstring path = folder.File(L"data.txt");
    test::WriteText(path, text);
    Extent extent;
    extent.status = ProbeCoefDataExtent(path.c_str(), extent.first, extent.second);
    return extent;
}

TEST(TextCoefFileProbe, TheDataExtentIsCrossedAndWithoutTheOne) {
    EXPECT_EQ(ExtentOf("0,0,1\n9,4,1\n3,2,1\n"), (Extent{S_OK, 4, 9}));
    EXPECT_EQ(ExtentOf("9,4,1"), (Extent{S_OK, 4, 9}));
    EXPECT_EQ(ExtentOf("9,4\r\n"), (Extent{S_OK, 4, 9}));
}

TEST(TextCoefFileProbe, TheDataExtentEndsAtTheFirstEmptyLine) {
    EXPECT_EQ(ExtentOf("1,2\n\n9,9\n"), (Extent{S_OK, 2, 1}));
    EXPECT_EQ(ExtentOf("1,2\r\n\r\n9,9\n"), (Extent{S_OK, 2, 1}));
    EXPECT_EQ(ExtentOf("1,2\n\0x\n9,9\n"s), (Extent{S_OK, 2, 1}));
    EXPECT_EQ(ExtentOf("1,2\n \n9,9\n"), (Extent{S_OK, 9, 9}));
    EXPECT_EQ(ExtentOf(""), (Extent{S_OK, 0, 0}));
}

TEST(TextCoefFileProbe, TheDataExtentPassesOverWhatDoesNotConvert) {
    EXPECT_EQ(ExtentOf("[VU30]\n5,x\n"), (Extent{S_OK, 0, 5}));
    EXPECT_EQ(ExtentOf("1,2\nfoo\n7\n"), (Extent{S_OK, 2, 7}));
    EXPECT_EQ(ExtentOf("-1,-2\n"), (Extent{S_OK, 0, 0}));
    EXPECT_EQ(ExtentOf("99999999999,99999999999\n"), (Extent{S_OK, 2147483647U, 2147483647U}));
    EXPECT_EQ(ExtentOf(FilledUp("1,2", 3000, ' ') + "\n9,9\n"), (Extent{S_OK, 2, 1}));
}

TEST(TextCoefFileProbe, TheDataExtentNeedsAFile) {
    const CTemporaryFolder folder;
    std::uint32_t first = 7;
    std::uint32_t second = 8;
    EXPECT_EQ(ProbeCoefDataExtent(nullptr, first, second), E_COEF_INVALIDARG);
    EXPECT_EQ(ProbeCoefDataExtent(folder.File(L"none").c_str(), first, second), E_COEF_OPENFAILED);
    EXPECT_EQ(first, 7U);
    EXPECT_EQ(second, 8U);
}

// Samples and properties

CChromaCorrectCoef& ReadSample(CChromaCorrectCoef& map, std::wstring_view name) {
    map.Resize(40, 24);
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    EXPECT_EQ(ReadTextCoefFile(map, test::Sample(name).c_str(), 0, 0, width, height, false), S_OK);
    EXPECT_EQ(width, 40U);
    EXPECT_EQ(height, 24U);
    return map;
}

void TurnInto(CChromaCorrectCoef& turned, const CChromaCorrectCoef& map, std::uint32_t code) {
    const CQuarterTurn turn(code, map.Width(), map.Height());
    turned.Resize(static_cast<std::int32_t>(turn.TurnedSize().width),
                  static_cast<std::int32_t>(turn.TurnedSize().height));
    for (std::int32_t y = 0; y < map.Height(); ++y) {
        for (std::int32_t x = 0; x < map.Width(); ++x) {
            const PixelPosition to = turn.Turned(x, y);
            turned.SetElement(static_cast<std::int32_t>(to.x), static_cast<std::int32_t>(to.y),
                              *map.FindElement(x, y));
        }
    }
}

TEST_F(TextCoefFile, TheCabinetHoldsTheDecodedPixels) {
    CChromaCorrectCoef map;
    ReadSample(map, L"cabinet/Cab_05.cccoef");
    test::ExpectSamplePixels(map, L"cabinet/Cab_05.cccoef.csv");
}

TEST_F(TextCoefFile, TheCabinetIsWrittenBackByteForByte) {
    CChromaCorrectCoef map;
    EXPECT_EQ(Written(ReadSample(map, L"cabinet/Cab_05.cccoef")),
              test::ReadText(test::Sample(L"cabinet/Cab_05.cccoef")));
}

TEST_F(TextCoefFile, TheTurnedCabinetIsWrittenByteForByte) {
    CChromaCorrectCoef map;
    ReadSample(map, L"cabinet/Cab_05.cccoef");
    constexpr std::array<const wchar_t*, 3> kSamples{L"turned-90/Cab_05-90\u00B0.cccoef",
                                                     L"turned-180/Cab_05-180\u00B0.cccoef",
                                                     L"turned-270/Cab_05-270\u00B0.cccoef"};
    for (std::uint32_t code = 1; code <= 3; ++code) {
        CChromaCorrectCoef turned;
        TurnInto(turned, map, code);
        EXPECT_EQ(Written(turned), test::ReadText(test::Sample(kSamples[code - 1]))) << code;
    }
}

TEST_F(TextCoefFile, TheTurnedColourGridMayBeThePreparedOne) {
    CChromaCorrectCoef map;
    ReadSample(map, L"cabinet/Cab_05.cccoef");
    CChromaCorrectCoef turned;
    TurnInto(turned, map, 2);
    EXPECT_EQ(Written(map, &turned.ColourGrid()),
              test::ReadText(test::Sample(L"turned-180/Cab_05-180\u00B0.cccoef")));
}

TEST_F(TextCoefFile, TheCrLfFileReadsAsItsTwin) {
    CChromaCorrectCoef map;
    CChromaCorrectCoef twin;
    EXPECT_TRUE(HaveSameElements(ReadSample(map, L"awkward/crlf.cccoef"),
                                 ReadSample(twin, L"cabinet/Cab_05.cccoef")));
    EXPECT_GT(ChangedPixels(map), 0);
}

/// A map of matrices that the cleaning leaves alone, some of them default.
void FillWithGains(CChromaCorrectCoef& map, std::uint32_t seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> gain(0.00002F, 0.33F);
    for (std::int32_t y = 0; y < map.Height(); ++y) {
        for (std::int32_t x = 0; x < map.Width(); ++x) {
            if (random() % 8 == 0)
                continue;
            SMatrixCoef element;
            for (std::size_t k = 0; k < 9; ++k)
                element.m[k] = gain(random);
            map.SetElement(x, y, element);
        }
    }
}

TEST_F(TextCoefFile, WhatIsWrittenReadsBackWithinTheFiveDecimals) {
    CChromaCorrectCoef map;
    map.Resize(137, 90);
    FillWithGains(map, 1);
    const std::string text = Written(map);
    const ReadMap read(137, 90, text);
    ASSERT_EQ(read.status, S_OK);
    EXPECT_EQ(read.width, 137U);
    EXPECT_EQ(read.height, 90U);
    for (std::int32_t y = 0; y < 90; ++y)
        for (std::int32_t x = 0; x < 137; ++x)
            for (std::size_t k = 0; k < 12; ++k)
                ASSERT_NEAR(map.FindElement(x, y)->m[k], read.map.FindElement(x, y)->m[k],
                            k < 9 ? 5.1e-6 : 0.0);
    EXPECT_EQ(Written(read.map), text);
}

TEST_F(TextCoefFile, AMapOfSeveralBlocksReadsBack) {
    CChromaCorrectCoef map;
    map.Resize(700, 400); // more than 2^18 pixels
    map.SetElement(0, 0, ElementOf({.5F, 0, 0, 0, .5F, 0, 0, 0, .5F}));
    map.SetElement(343, 374, ElementOf({.25F, 0, 0, 0, .25F, 0, 0, 0, .25F})); // index 2^18 − 1
    map.SetElement(344, 374, ElementOf({.75F, 0, 0, 0, .75F, 0, 0, 0, .75F}));
    map.SetElement(699, 399, ElementOf({.125F, 0, 0, 0, .125F, 0, 0, 0, .125F}));
    const ReadMap read(700, 400, Written(map));
    EXPECT_TRUE(HaveSameElements(read.map, map));
}

/// Decimal commas and grouped digits, as many users' machines have them.
struct CommaNumbers : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

#ifdef TREVOLT_LOCALES_FOLDER
/// Makes such a locale the C library's own, from the folder that the build has put it into; fails
/// when it cannot be set.
class CCommaLibrary {
  public:
    CCommaLibrary() : m_before(std::setlocale(LC_ALL, nullptr)) {
        if (const char* path = std::getenv("LOCPATH"))
            m_pathBefore = path;
        setenv("LOCPATH", TREVOLT_LOCALES_FOLDER, 1);
        EXPECT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr);
        EXPECT_STREQ(std::localeconv()->decimal_point, ",");
        EXPECT_FLOAT_EQ(std::strtof("0,5", nullptr), 0.5F);
    }
    ~CCommaLibrary() {
        std::setlocale(LC_ALL, m_before.c_str());
        if (m_pathBefore)
            setenv("LOCPATH", m_pathBefore->c_str(), 1);
        else
            unsetenv("LOCPATH");
    }
    CCommaLibrary(const CCommaLibrary&) = delete;
    CCommaLibrary& operator=(const CCommaLibrary&) = delete;

  private:
    std::string m_before;
    std::optional<std::string> m_pathBefore;
};
#endif

class CommaLocale : public ::testing::Test {
  protected:
    CommaLocale() : m_before(std::locale::global(std::locale(std::locale(), new CommaNumbers))) {}
    ~CommaLocale() override { std::locale::global(m_before); }

  private:
    std::locale m_before;
#ifdef TREVOLT_LOCALES_FOLDER
    CCommaLibrary m_library;
#endif
};

TEST_F(CommaLocale, ChangesNeitherWhatIsReadNorWhatIsWritten) {
    const CTemporaryFolder folder;
    const std::wstring path = folder.File(L"map.cccoef");
    const std::string text = "[T9COEF20]\nwidth=1234\nheight=1\n"
                             " 1000,     0, 0.81630, 0.02152, 0.00000, 0.00000, 0.85675, 0.00000, "
                             "0.00000, 0.00000, 0.85198\n";
    const ReadMap read(1234, 1, text);
    EXPECT_EQ(read.width, 1234U);
    EXPECT_EQ(MatrixAt(read.map, 1000, 0)[0], 0.8163F);
    EXPECT_EQ(WriteTextCoefFile(read.map, path.c_str(), nullptr), S_OK);
    EXPECT_EQ(test::ReadText(path), text);
}

TEST_F(CommaLocale, ChangesNoLongOrLargeNumberEither) {
    // More digits than a float32 holds, an exponent, a hexadecimal one: none is a short decimal.
    const ReadMap read(1, 1, "[VU30]\n0,0,0.5000000000000000000001,0,0,0,2.5e-1,0,0,0,0x.8p0\n");
    EXPECT_EQ(MatrixAt(read.map, 0, 0), (Matrix{0.5F, 0, 0, 0, 0.25F, 0, 0, 0, 0.5F}));

    const CTemporaryFolder folder;
    const std::wstring path = folder.File(L"map.cccoef");
    CChromaCorrectCoef map;
    map.Resize(1, 1);
    map.SetElement(0, 0, ElementOf({12345.5F, -1234567.5F, 0, 0, 0, 0, 0, 0, 1e20F}));
    EXPECT_EQ(WriteTextCoefFile(map, path.c_str(), nullptr), S_OK);
    EXPECT_EQ(test::ReadText(path),
              "[T9COEF20]\nwidth=1\nheight=1\n    0,     0, 12345.50000, -1234567.50000, 0.00000, "
              "0.00000, 0.00000, 0.00000, 0.00000, 0.00000, 100000002004087734272.00000\n");
}

// Streams

/// Texts of every dialect and sort: whole, damaged, empty, and of line ends that differ.
const std::array kTexts{
    ""s,
    "\n"s,
    "[T9COEF20]"s,
    "[T9COEF30]\n0,0,0.5,0,0,0,0.5,0,0,0,0.5\n"s,
    "[T9COEF20]\nwidth=4\nheight=3\n1,2,0.5,0,0,0,0.25,0,0,0,0.125\n3,0,0.1,0,0,0,1,0,0,0,1"s,
    "[T9COEF20]\r\nwidth=4\r\nheight=3\r\n1,2,0.5,0,0,0,0.25,0,0,0,0.125\r\n"s,
    "[T9COEF20]\nwidth=99999999999\nheight=-1\nno data\n\n"s,
    "[T9COEF10]\n1,2,0.5,0.1,0.2,0.3,0.25,0,0,0,0.125\n2,\n,\n9,9\n"s,
    "[VU30]\n2147483647,-2147483648,0.5,0,0,0,0.25,0,0,0,0.125\n0,0,nan"s,
    "1,2,3\n4,5\n\n9,9\n"s,
};

TEST_F(TextCoefFile, AStreamReadsAsItsFileWhateverItHolds) {
    for (const std::string& text : kTexts) {
        SCOPED_TRACE(text);
        test::WriteText(Path(), text);
        for (const bool diagonalOnly : {false, true}) {
            std::uint32_t fileWidth = 2;
            std::uint32_t fileHeight = 1;
            CChromaCorrectCoef ofFile;
            ofFile.Resize(5, 4);
            test::PaintMap(ofFile, test::PatternPixel);
            const Status status =
                ReadTextCoefFile(ofFile, Path().c_str(), 1, 0, fileWidth, fileHeight, diagonalOnly);
            std::uint32_t width = 2;
            std::uint32_t height = 1;
            CChromaCorrectCoef ofStream;
            ofStream.Resize(5, 4);
            test::PaintMap(ofStream, test::PatternPixel);
            std::istringstream stream = test::StreamBehindPrefix(test::AsBytes(text));
            EXPECT_EQ(ReadTextCoefFile(ofStream, stream, 1, 0, width, height, diagonalOnly),
                      status);
            EXPECT_EQ(width, fileWidth);
            EXPECT_EQ(height, fileHeight);
            EXPECT_TRUE(HaveSameElements(ofStream, ofFile));
            EXPECT_FALSE(stream.bad());
        }
    }
}

TEST_F(TextCoefFile, AStreamIsProbedAsItsFileWhateverItHolds) {
    for (const std::string& text : kTexts) {
        SCOPED_TRACE(text);
        test::WriteText(Path(), text);
        for (const auto& [ofPath, ofStream] :
             {std::pair<Status (*)(const wchar_t*, std::uint32_t&, std::uint32_t&),
                        Status (*)(std::istream&, std::uint32_t&, std::uint32_t&)>(
                  ProbeTextCoefFileSize, ProbeTextCoefFileSize),
              {ProbeCoefDataExtent, ProbeCoefDataExtent}}) {
            std::uint32_t fileFirst = 2;
            std::uint32_t fileSecond = 1;
            const Status status = ofPath(Path().c_str(), fileFirst, fileSecond);
            std::uint32_t first = 2;
            std::uint32_t second = 1;
            test::CPipe pipe(test::AsBytes(text)); // nothing is sought
            EXPECT_EQ(ofStream(pipe, first, second), status);
            EXPECT_EQ(first, fileFirst);
            EXPECT_EQ(second, fileSecond);
        }
    }
}

TEST_F(TextCoefFile, AStreamIsNotReadForANegativeOffset) {
    std::istringstream stream("[VU30]\n1,1,0.5\n");
    CChromaCorrectCoef map;
    map.Resize(2, 2);
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    EXPECT_EQ(ReadTextCoefFile(map, stream, -1, 0, width, height, false), E_COEF_INVALIDARG);
    EXPECT_EQ(ReadTextCoefFile(map, stream, 0, -1, width, height, false), E_COEF_INVALIDARG);
    EXPECT_EQ(stream.tellg(), 0);
    EXPECT_EQ(ReadTextCoefFile(map, stream, 0, 0, width, height, false), S_OK);
    EXPECT_EQ(width, 2U);
}

TEST_F(TextCoefFile, AStreamThatBreaksEndsTheFileAndTells) {
    const std::string text = "[VU30]\n1,0,0.5,0,0,0,0.5,0,0,0,0.5\n"s;
    CChromaCorrectCoef map;
    map.Resize(2, 2);
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    test::CPipe broken(test::AsBytes(text), true);
    EXPECT_EQ(ReadTextCoefFile(map, broken, 0, 0, width, height, false), E_COEF_BADTEXT);
    EXPECT_TRUE(broken.bad());

    // What was read before stays.
    test::CPipe later(test::AsBytes(FilledUp(text, 1 << 18, '\n') + "7,7\n"), true);
    EXPECT_EQ(ReadTextCoefFile(map, later, 0, 0, width, height, false), S_OK);
    EXPECT_TRUE(later.bad());
    EXPECT_EQ(width, 2U);
    EXPECT_EQ(height, 1U);
    EXPECT_EQ(ChangedPixels(map), 1);
}

TEST_F(TextCoefFile, AStreamGetsTheFilesBytesWhereItStands) {
    CChromaCorrectCoef map;
    map.Resize(3, 2);
    test::PaintMap(map, test::BytePixel);
    CChromaCorrectCoef other;
    other.Resize(3, 2);
    other.SetElement(1, 1, ElementOf({0.5F, 0, 0, 0, 0.5F, 0, 0, 0, 0.5F}));
    for (const CMassiveGrid* prepared :
         std::array<const CMassiveGrid*, 2>{nullptr, &other.ColourGrid()}) {
        std::ostringstream stream;
        stream << test::kPrefix;
        EXPECT_EQ(WriteTextCoefFile(map, stream, prepared), S_OK);
        EXPECT_TRUE(stream.good());
        EXPECT_EQ(stream.str(), std::string(test::kPrefix) + Written(map, prepared));
    }
}

TEST_F(TextCoefFile, AStreamThatRunsFullTellsAndStatusAndReportDoNot) {
    CChromaCorrectCoef map;
    map.Resize(3, 2);
    test::PaintMap(map, test::BytePixel);
    const std::string file = Written(map);
    for (std::size_t room = 0; room < file.size(); ++room) {
        test::CFullDisk full(room);
        const CTransferReport report;
        EXPECT_EQ(WriteTextCoefFile(map, full, nullptr), S_OK);
        EXPECT_TRUE(full.bad());
        EXPECT_EQ(full.Taken(), file.substr(0, full.Taken().size()));
        EXPECT_FALSE(report.HasWriteFailed());
    }
    test::CFullDisk enough(file.size());
    EXPECT_EQ(WriteTextCoefFile(map, enough, nullptr), S_OK);
    EXPECT_TRUE(enough.good());
    EXPECT_EQ(enough.Taken(), file);
}

TEST_F(TextCoefFile, AStreamIsNotTouchedForAPreparedGridOfAnotherShape) {
    CChromaCorrectCoef map;
    map.Resize(2, 3);
    CMassiveGrid turned(sizeof(SMatrixCoef));
    ASSERT_TRUE(turned.Resize(3, 2));
    std::ostringstream stream;
    EXPECT_EQ(WriteTextCoefFile(map, stream, &turned), E_COEF_INVALIDARG);
    EXPECT_TRUE(stream.str().empty());
}

} // namespace
} // namespace trevolt
