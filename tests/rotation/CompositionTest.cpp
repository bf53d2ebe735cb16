#include "app/rotation/Composition.h"

#include <gtest/gtest.h>

#include "platform/FileSystem.h"
#include "tests/rotation/ScreenFiles.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

using namespace test;
using Texts = std::vector<std::string>;

constexpr std::int32_t kW = 5; ///< of the cabinets
constexpr std::int32_t kH = 3;

class Composition : public testing::Test {
  protected:
    SPlacedFile Placed(const std::wstring& name, std::int64_t x, std::int64_t y,
                       std::uint32_t code = 0) const {
        return {m_folder.File(name), name, {x, y}, code};
    }

    /// Adds a cabinet; the values of its pixels depend on `number`.
    SPlacedFile Cabinet(const std::wstring& name, std::int32_t number, std::int64_t x,
                        std::int64_t y, std::uint32_t code = 0) const {
        WriteCabinet(m_folder.File(name), kW, kH, number);
        return Placed(name, x, y, code);
    }

    SCompositionRequest Request(std::vector<SPlacedFile> files,
                                const std::wstring& output = L"screen.9fcoef") const {
        return {.files = std::move(files), .output = {m_folder.File(output), false, false}};
    }

    static SComposition Compose(const SCompositionRequest& request) {
        return ComposeScreen(request, kNotInterrupted);
    }

    void ExpectRefused(const SCompositionRequest& request, const Texts& errors) const {
        const SComposition result = Compose(request);
        EXPECT_EQ(result.end, ECompositionEnd::Refused);
        EXPECT_EQ(result.errors, errors);
        EXPECT_FALSE(result.isWritten);
        EXPECT_FALSE(FileExists(request.output.path));
    }

    CTemporaryFolder m_folder;
};

/// A screen's pixel that is a cabinet's, or none.
SMatrixCoef PixelOf(const std::wstring& name, std::int32_t number, std::uint32_t code,
                    std::int32_t x, std::int32_t y) {
    const auto [fromX, fromY] = CabinetPixel(code, kW, kH, x, y);
    return HeldPixel(name, LowPixel(fromX, fromY, number));
}

TEST_F(Composition, PutsEveryKindByEveryTurnIntoEveryKind) {
    for (const SFileKind& in : FileKinds())
        for (std::uint32_t code = 0; code <= 3; ++code) {
            const std::wstring name = L"cab" + std::wstring(in.extension);
            SCOPED_TRACE(testing::PrintToString(name) + " by " + std::to_string(code));
            auto request = Request({Cabinet(name, 1, 2, 1, code)});
            request.output.replaces = true;
            const std::int32_t width = 2 + (code % 2 == 0 ? kW : kH);
            const std::int32_t height = 1 + (code % 2 == 0 ? kH : kW);
            const SComposition result = Compose(request);
            EXPECT_EQ(result.end, ECompositionEnd::Done);
            EXPECT_EQ(result.size, (PixelSize{width, height}));
            EXPECT_EQ(result.files[0].rect, (SPixelRect{2, 1, width, height}));
            EXPECT_EQ(result.files[0].ownSize, (PixelSize{kW, kH}));
            ExpectFile(request.output.path, width, height, [&](std::int32_t x, std::int32_t y) {
                return x < 2 || y < 1 ? SMatrixCoef{} : PixelOf(name, 1, code, x - 2, y - 1);
            });
        }
    for (const SFileKind& out : FileKinds()) {
        const std::wstring output = L"screen" + std::wstring(out.extension);
        SCOPED_TRACE(testing::PrintToString(output));
        auto request =
            Request({Cabinet(L"a.9wcoef", 1, 0, 0), Cabinet(L"b.cccoef", 2, kW, 0, 2)}, output);
        request.output.replaces = true;
        EXPECT_EQ(Compose(request).end, ECompositionEnd::Done);
        ExpectFile(request.output.path, 2 * kW, kH, [&](std::int32_t x, std::int32_t y) {
            return HeldPixel(output,
                             x < kW ? PixelOf(L"", 1, 0, x, y) : PixelOf(L"", 2, 2, x - kW, y));
        });
    }
}

TEST_F(Composition, TrailingValuesAreTheDefaultOnesWhereNoneAreStored) {
    for (const wchar_t* name : {L"a.9fcoef", L"a.9bcoef"})
        for (std::uint32_t code = 0; code <= 3; ++code) {
            auto request = Request({Cabinet(name, 1, 0, 0, code)}, L"screen.12wcoef");
            request.output.replaces = true;
            ASSERT_EQ(Compose(request).end, ECompositionEnd::Done);
            const SCoefLoad load = LoadCoefFile(request.output.path);
            for (std::int32_t y = 0; y < load.size.height; ++y)
                for (std::int32_t x = 0; x < load.size.width; ++x) {
                    const SMatrixCoef& pixel = *load.map->FindElement(x, y);
                    ASSERT_EQ(pixel.m[9], 0.0F);
                    ASSERT_EQ(pixel.m[10], 1.0F);
                    ASSERT_EQ(pixel.m[11], 0.0F);
                }
        }
}

TEST_F(Composition, FilesThatTouchDoNotOverlapAndEveryPixelIsCovered) {
    const auto request = Request({Cabinet(L"a.9fcoef", 1, 0, 0), Cabinet(L"b.9fcoef", 2, kW, 0),
                                  Cabinet(L"c.9fcoef", 3, 0, kH), Cabinet(L"d.9fcoef", 4, kW, kH)});
    const SComposition result = Compose(request);
    EXPECT_EQ(result.errors, Texts{});
    EXPECT_EQ(result.size, (PixelSize{2 * kW, 2 * kH}));
    EXPECT_EQ(result.uncovered, 0U);
    EXPECT_TRUE(result.isWritten);
    ExpectFile(request.output.path, 2 * kW, 2 * kH, [&](std::int32_t x, std::int32_t y) {
        return LowPixel(x % kW, y % kH, 1 + x / kW + 2 * (y / kH));
    });
}

TEST_F(Composition, AnOverlapOfOnePixelIsRefusedAndBothAreNamed) {
    const SPlacedFile a = Cabinet(L"a.9fcoef", 1, 0, 0);
    const std::string advice = ": move one of them, or allow overlaps";
    ExpectRefused(Request({a, Cabinet(L"b.3wcoef", 2, kW - 1, kH - 1)}),
                  {"a.9fcoef and b.3wcoef overlap in 4,2,5,3" + advice});
    ExpectRefused(Request({Cabinet(L"b.3wcoef", 2, 2, 0), a}),
                  {"b.3wcoef and a.9fcoef overlap in 2,0,5,3" + advice});
    ExpectRefused(Request({a, Cabinet(L"b.3wcoef", 2, 4, 0, 1)}),
                  {"a.9fcoef and b.3wcoef overlap in 4,0,5,3" + advice});
    EXPECT_EQ(Compose(Request({a, Placed(L"b.3wcoef", 5, 0, 1)})).end, ECompositionEnd::Done);
}

TEST_F(Composition, OfFilesThatMayOverlapTheLastOneStays) {
    auto request = Request({Cabinet(L"a.9fcoef", 1, 2, 1), Cabinet(L"b.9fcoef", 2, 0, 0)});
    request.allowOverlap = true;
    const SComposition result = Compose(request);
    EXPECT_EQ(result.end, ECompositionEnd::Done);
    EXPECT_EQ(result.uncovered, 7U * 4 - (15 + 15 - 3 * 2));
    ExpectFile(request.output.path, 7, 4, [](std::int32_t x, std::int32_t y) {
        if (x < kW && y < kH)
            return LowPixel(x, y, 2);
        return x >= 2 && y >= 1 ? LowPixel(x - 2, y - 1, 1) : SMatrixCoef{};
    });
}

TEST_F(Composition, OnePixelOutsideIsRefusedOnEverySide) {
    const std::string advice = ": move it, or allow what is outside to be cut";
    const auto request = [&](std::int64_t x, std::int64_t y, PixelSize size) {
        auto made = Request({Placed(L"a.9fcoef", x, y)});
        made.size = size;
        return made;
    };
    Cabinet(L"a.9fcoef", 1, 0, 0);
    ExpectRefused(request(-1, 0, {9, 9}),
                  {"a.9fcoef takes -1,0,4,3, which is not all in the screen of 9 x 9" + advice});
    ExpectRefused(request(0, -1, {9, 9}),
                  {"a.9fcoef takes 0,-1,5,2, which is not all in the screen of 9 x 9" + advice});
    ExpectRefused(request(5, 0, {9, 9}),
                  {"a.9fcoef takes 5,0,10,3, which is not all in the screen of 9 x 9" + advice});
    ExpectRefused(request(0, 7, {9, 9}),
                  {"a.9fcoef takes 0,7,5,10, which is not all in the screen of 9 x 9" + advice});
    EXPECT_EQ(Compose(request(4, 6, {9, 9})).uncovered, 81U - 15);
}

TEST_F(Composition, WhatMayBeOutsideIsCutOnEverySide) {
    for (const wchar_t* name : {L"a.9fcoef", L"a.3bcoef", L"a.9wcoef"})
        for (std::uint32_t code = 0; code <= 3; ++code) {
            Cabinet(name, 1, 0, 0);
            for (const auto& [left, top] : {std::pair{-1, 0},
                                            {0, -1},
                                            {2, 0},
                                            {0, 2},
                                            {-2, -1},
                                            {2, 1},
                                            {-5, -5},
                                            {4, 4},
                                            {9, 9},
                                            {-9, 0}}) {
                SCOPED_TRACE(testing::Message() << left << ", " << top << " by " << code);
                auto request = Request({Placed(name, left, top, code)});
                request.size = PixelSize{4, 4};
                request.allowOutside = true;
                request.output.replaces = true;
                const std::int32_t x0 = left;
                const std::int32_t y0 = top;
                const std::int32_t width = code % 2 == 0 ? kW : kH;
                const std::int32_t height = code % 2 == 0 ? kH : kW;
                std::uint64_t covered = 0;
                const SComposition result = Compose(request);
                ASSERT_EQ(result.end, ECompositionEnd::Done);
                ASSERT_EQ(result.files[0].problems, Texts{});
                const auto isIn = [&](std::int32_t x, std::int32_t y) {
                    return x >= x0 && y >= y0 && x < x0 + width && y < y0 + height;
                };
                ExpectFile(request.output.path, 4, 4, [&](std::int32_t x, std::int32_t y) {
                    return isIn(x, y) ? PixelOf(name, 1, code, x - x0, y - y0) : SMatrixCoef{};
                });
                for (std::int32_t i = 0; i < 16; ++i)
                    covered += isIn(i % 4, i / 4) ? 1U : 0U;
                EXPECT_EQ(result.uncovered, 16 - covered);
            }
        }
}

TEST_F(Composition, AFileWhollyOutsideIsNotedAndCounted) {
    Cabinet(L"a.9fcoef", 1, 0, 0);
    for (const auto& [left, top] : {std::pair{4, 0}, {0, 4}, {-5, 0}, {0, -3}, {9, -9}}) {
        SCOPED_TRACE(testing::Message() << left << ", " << top);
        auto request = Request(
            {Placed(L"a.9fcoef", 0, 0), Placed(L"a.9fcoef", left, top), Placed(L"a.9fcoef", 3, 3)});
        request.size = PixelSize{4, 4};
        request.allowOutside = true;
        request.output.replaces = true;
        const SComposition result = Compose(request);
        EXPECT_EQ(result.end, ECompositionEnd::Done);
        EXPECT_EQ((std::array{result.files[0].isOutside, result.files[1].isOutside,
                              result.files[2].isOutside}),
                  (std::array{false, true, false}));
        EXPECT_EQ(result.files[0].notes, Texts{});
        EXPECT_EQ(result.files[1].notes,
                  Texts{"lies wholly outside the screen of 4 x 4: none of its pixels is there"});
        EXPECT_EQ(result.files[2].notes, Texts{});
    }
    // What is unusual of the file itself is told as before.
    WriteText(m_folder.File(L"h.cccoef"), "[T9COEF20]\nwidth=1\nheight=1\n0,0,1,0,0,0,1,1,0,0,1\n");
    auto request = Request({Placed(L"h.cccoef", 9, 9)}, L"h.9fcoef");
    request.size = PixelSize{4, 4};
    request.allowOutside = true;
    EXPECT_EQ(Compose(request).files[0].notes.size(), 2U);
}

TEST_F(Composition, OverlapsOutsideAreNone) {
    auto request = Request({Cabinet(L"a.9fcoef", 1, 4, 0), Cabinet(L"b.9fcoef", 2, 6, 0)});
    request.size = PixelSize{6, 3};
    request.allowOutside = true;
    EXPECT_EQ(Compose(request).end, ECompositionEnd::Done);
}

TEST_F(Composition, ADamagedFileIsNamedAndNothingWrittenUnlessLenient) {
    Cabinet(L"a.9wcoef", 1, 0, 0);
    Cabinet(L"b.3bcoef", 2, 0, 0);
    for (const wchar_t* name : {L"a.9wcoef", L"b.3bcoef"}) {
        const std::string whole = ReadText(m_folder.File(name));
        WriteText(m_folder.File(name), whole.substr(0, whole.size() - 3));
    }
    auto request = Request(
        {Placed(L"a.9wcoef", 0, 0), Placed(L"b.3bcoef", 5, 0), Cabinet(L"c.9fcoef", 3, 10, 0)});
    SComposition result = Compose(request);
    EXPECT_EQ(result.end, ECompositionEnd::SomeFailed);
    EXPECT_FALSE(result.isWritten);
    EXPECT_FALSE(result.files[0].problems.empty());
    EXPECT_FALSE(result.files[1].problems.empty());
    EXPECT_TRUE(result.files[2].problems.empty());
    EXPECT_FALSE(FileExists(request.output.path));
    request.lenient = true;
    result = Compose(request);
    EXPECT_EQ(result.end, ECompositionEnd::SomeFailed);
    EXPECT_TRUE(result.isWritten);
    ExpectFile(request.output.path, 15, 3, [](std::int32_t x, std::int32_t y) {
        return x < 10 ? SMatrixCoef{} : LowPixel(x - 10, y, 3);
    });
}

TEST_F(Composition, CountsWhatIsCutAndWhatIsOverwritten) {
    auto request = Request({Cabinet(L"a.9fcoef", 1, -1, 0), Cabinet(L"b.9wcoef", 2, 2, 1),
                            Cabinet(L"c.3bcoef", 3, 3, 0, 1), Cabinet(L"d.9fcoef", 4, 9, 9)});
    request.size = PixelSize{6, 4};
    request.allowOutside = true;
    request.allowOverlap = true;
    request.output.replaces = true;
    const auto countsOf = [](const SComposition& result) {
        std::vector<std::pair<std::uint64_t, std::uint64_t>> counts;
        for (const SPlacedOutcome& file : result.files)
            counts.emplace_back(file.cut, file.overwritten);
        return counts;
    };
    using Counts = std::vector<std::pair<std::uint64_t, std::uint64_t>>;
    // Columns 0 to 3 of rows 0 to 2; 2 to 5 of rows 1 to 3; 3 to 5 of rows 0 to 3.
    EXPECT_EQ(countsOf(Compose(request)), (Counts{{3, 5}, {3, 9}, {3, 0}, {15, 0}}));
    // What cannot be read lies on nothing.
    const std::string whole = ReadText(m_folder.File(L"c.3bcoef"));
    WriteText(m_folder.File(L"c.3bcoef"), whole.substr(0, whole.size() - 3));
    request.lenient = true;
    const SComposition damaged = Compose(request);
    EXPECT_TRUE(damaged.isWritten);
    ExpectFile(request.output.path, 6, 4, [&](std::int32_t x, std::int32_t y) {
        if (x >= 2 && y >= 1)
            return PixelOf(L"b.9wcoef", 2, 0, x - 2, y - 1);
        return x < 4 && y < 3 ? PixelOf(L"a.9fcoef", 1, 0, x + 1, y) : SMatrixCoef{};
    });
    EXPECT_EQ(countsOf(damaged), (Counts{{3, 4}, {3, 0}, {3, 0}, {15, 0}}));
}

TEST_F(Composition, WithoutAFilesSizeNothingIsDone) {
    WriteText(m_folder.File(L"a.9fcoef"), "none");
    auto request = Request({Placed(L"a.9fcoef", 0, 0)});
    request.lenient = true;
    const SComposition result = Compose(request);
    EXPECT_EQ(result.end, ECompositionEnd::SomeFailed);
    EXPECT_EQ(result.files[0].problems.size(), 1U);
    EXPECT_EQ(result.size, PixelSize{});
    WriteText(m_folder.File(L"b.cccoef"), "[T9COEF20]\nwidth=0\nheight=0\n");
    EXPECT_EQ(Compose(Request({Placed(L"b.cccoef", 0, 0)})).files[0].problems,
              Texts{"has no pixels"});
}

TEST_F(Composition, NamesThatCannotBeAreRefused) {
    const SPlacedFile a = Cabinet(L"a.9fcoef", 1, 0, 0);
    const std::wstring path = m_folder.File(L"notes.txt");
    ExpectRefused(
        {.files = {a, Placed(L"x.txt", 0, 0), Placed(L"gone.9fcoef", 0, 0)},
         .output = {path, false, false}},
        {"the output " + WideToShownUtf8(path) +
             " is no coefficient file by its name: give one of the nine extensions",
         WideToShownUtf8(m_folder.File(L"x.txt")) +
             " is no coefficient file by its name: give one with one of the nine extensions",
         "the source " + WideToShownUtf8(m_folder.File(L"gone.9fcoef")) +
             " does not exist: check its path"});
    ExpectRefused(Request({}), {"there is no file to put into a screen"});
}

TEST_F(Composition, TheOutputIsNeitherReplacedNorAnInput) {
    auto request = Request({Cabinet(L"a.9fcoef", 1, 0, 0)}, L"a.9fcoef");
    request.output.replaces = true;
    const Bytes whole = ReadFile(request.output.path);
    SComposition result = Compose(request);
    EXPECT_EQ(result.end, ECompositionEnd::SomeFailed);
    ASSERT_EQ(result.errors.size(), 1U);
    EXPECT_NE(result.errors[0].find(": is one of the inputs"), std::string::npos);
    request = Request({Placed(L"a.9fcoef", 0, 0)}, L"b.9fcoef");
    WriteText(request.output.path, "mine");
    result = Compose(request);
    EXPECT_EQ(result.end, ECompositionEnd::SomeFailed);
    EXPECT_EQ(ReadText(request.output.path), "mine");
    EXPECT_EQ(ReadFile(m_folder.File(L"a.9fcoef")), whole);
    request.output.replaces = true;
    EXPECT_EQ(Compose(request).end, ECompositionEnd::Done);
    EXPECT_EQ(ReadFile(request.output.path), whole);
}

TEST_F(Composition, ScreensThatNoMapHoldsAreRefused) {
    Cabinet(L"a.9fcoef", 1, 0, 0);
    ExpectRefused(Request({Placed(L"a.9fcoef", 65531, 0)}),
                  {"the files reach to 65536 x 3, and a screen has at most 65535 in one "
                   "direction"});
    ExpectRefused(Request({Placed(L"a.9fcoef", 0, 65533)}),
                  {"the files reach to 5 x 65536, and a screen has at most 65535 in one "
                   "direction"});
    auto request = Request({Placed(L"a.9fcoef", 0, 0)});
    request.size = PixelSize{65535, 32769};
    ExpectRefused(request, {"a screen of 65535 x 32769 has more than 2147483647 pixels"});
    request = Request({Placed(L"a.9fcoef", -5, 0)});
    request.allowOutside = true;
    ExpectRefused(request, {"no pixel of any file lies in the screen"});
}

TEST_F(Composition, AScreenWithoutMemoryIsNamedBeforeAnythingIsRead) {
    struct SCase {
        const wchar_t* output;
        std::uint64_t bytes; ///< a pixel of the map and of what is written
    };
    for (const SCase& one : {SCase{L"s.9fcoef", 52 + 36},
                             {L"s.3bcoef", 52 + 3},
                             {L"s.cccoef", 52},
                             {L"s.9wcoef", 52 + 26}}) {
        auto request = Request({Cabinet(L"a.9fcoef", 1, 0, 0)}, one.output);
        request.size = PixelSize{2048, 1024};
        const std::uint64_t bytes = one.bytes << 21;
        const CBudgetLimit limit(CMemoryBudget::Process().Outstanding() + bytes - 1);
        const SComposition result = Compose(request);
        EXPECT_EQ(result.end, ECompositionEnd::SomeFailed);
        EXPECT_EQ(result.errors, Texts{"not enough memory for a screen of 2048 x 1024: it takes " +
                                       std::to_string(2 * one.bytes) + " MiB"});
    }
}

TEST_F(Composition, AnInterruptedOneWritesNothing) {
    const auto request = Request({Cabinet(L"a.9fcoef", 1, 0, 0)});
    const SComposition result = ComposeScreen(request, kIsInterrupted);
    EXPECT_EQ(result.end, ECompositionEnd::Interrupted);
    EXPECT_FALSE(result.isWritten);
    EXPECT_EQ(m_folder.Names(), std::vector<std::wstring>{L"a.9fcoef"});
}

TEST_F(Composition, TellsWhatTheScreenLacksOfAFile) {
    auto request = Request({});
    request.files.push_back({Sample(L"awkward/origin_1000_777.9wcoef"), L"origin", {0, 0}, 0});
    EXPECT_EQ(Compose(request).files[0].losses, Texts{"its origin (1000, 777)"});
}

TEST_F(Composition, TellsWhatTheScreensKindDoesNotHold) {
    const SPlacedFile diagonal = Cabinet(L"a.3wcoef", 1, kW, 0);
    EXPECT_EQ(Compose(Request({diagonal, Cabinet(L"b.9fcoef", 2, 0, 0)}, L"screen.3fcoef")).losses,
              Texts{"15 pixels have entries off the diagonal, which .3fcoef does not hold"});
    EXPECT_EQ(Compose(Request({diagonal}, L"screen.9fcoef")).losses, Texts{});
}

TEST_F(Composition, TellsWhatAFileLacksOfTheScreensKind) {
    const std::vector files{Cabinet(L"a.9fcoef", 1, 0, 0), Cabinet(L"b.12wcoef", 2, kW, 0),
                            Placed(L"a.9fcoef", 99, 0)};
    auto request = Request(files, L"screen.4wcoef");
    request.size = PixelSize{2 * kW, kH};
    request.allowOutside = true;
    const SComposition result = Compose(request);
    EXPECT_EQ(result.files[0].notes, Texts{"it holds no values beside the matrix: those of .4wcoef "
                                           "are the default 0, 1, 0"});
    EXPECT_EQ(result.files[1].notes, Texts{});
    EXPECT_EQ(result.files[2].notes.size(), 1U); // it is outside
    request.output.path = m_folder.File(L"screen.9wcoef");
    EXPECT_EQ(Compose(request).files[0].notes, Texts{});
}

TEST_F(Composition, NamesOfALayoutAreBelowItsFolderOrAnother) {
    WriteText(m_folder.File(L"wall.csv"), "a.9fcoef,1,2,90\nrow/b.9fcoef,-3,4\n");
    SLayoutFiles layout = ReadLayoutFiles(m_folder.File(L"wall.csv"), L"");
    ASSERT_EQ(layout.problems, Texts{});
    ASSERT_EQ(layout.files.size(), 2U);
    EXPECT_EQ(layout.files[0].path, m_folder.File(L"a.9fcoef"));
    EXPECT_EQ(layout.files[0].name, L"a.9fcoef");
    EXPECT_EQ(layout.files[0].place, (PixelPosition{1, 2}));
    EXPECT_EQ(layout.files[0].code, 1U);
    EXPECT_EQ(layout.files[1].path, m_folder.File(L"row/b.9fcoef"));
    EXPECT_EQ(layout.files[1].place, (PixelPosition{-3, 4}));
    EXPECT_EQ(layout.files[1].code, 0U);
    layout = ReadLayoutFiles(m_folder.File(L"wall.csv"), WithSeparator(L"else"));
    EXPECT_EQ(layout.files[0].path, WithSeparator(L"else") + L"a.9fcoef");
    EXPECT_EQ(ReadLayoutFiles(m_folder.File(L"wall.csv"), L"else").files[0].path,
              WithSeparator(L"else") + L"a.9fcoef");
}

} // namespace
} // namespace trevolt
