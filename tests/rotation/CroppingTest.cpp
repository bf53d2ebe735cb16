#include "app/rotation/Cropping.h"

#include <gtest/gtest.h>

#include <fmt/xchar.h>

#include "app/rotation/CoefFile.h"
#include "platform/FileSystem.h"
#include "platform/Process.h"
#include "tests/rotation/ScreenFiles.h"
#include "trevolt/Utf8.h"

#ifndef _WIN32
#include "tests/support/LeftoverFolder.h"
#endif

namespace trevolt {
namespace {

using namespace test;
using CropTexts = std::vector<std::string>;

constexpr std::int32_t kMapWidth = 7;
constexpr std::int32_t kMapHeight = 6;

class Cropping : public testing::Test {
  protected:
    void WriteInput(const std::wstring& name) const {
        WriteCabinet(m_folder.File(name), kMapWidth, kMapHeight, 1);
    }

    SCropRequest Request(const std::wstring& input, std::vector<SCropPiece> pieces) const {
        SCropRequest request;
        request.input = m_folder.File(input);
        request.targetFolder = m_target.Path();
        request.pieces = std::move(pieces);
        request.replaces = true;
        request.sync = false;
        return request;
    }

    static SCropping Crop(const SCropRequest& request) {
        return CropFile(request, kNotInterrupted);
    }

    CTemporaryFolder m_folder;
    CTemporaryFolder m_target;
};

TEST_F(Cropping, CutsEveryKindByEveryTurnIntoEveryKind) {
    const SPixelRect rect{1, 2, 6, 5}; // 5 x 3
    for (const SFileKind& in : FileKinds()) {
        const std::wstring input = L"in" + std::wstring(in.extension);
        WriteInput(input);
        std::vector<SCropPiece> pieces;
        for (const SFileKind& out : FileKinds())
            for (std::uint32_t code = 0; code <= 3; ++code)
                pieces.push_back({std::to_wstring(code) + std::wstring(out.extension), rect, code});
        const SCropping result = Crop(Request(input, pieces));
        ASSERT_EQ(result.end, ECompositionEnd::Done);
        EXPECT_EQ(result.size, (PixelSize{kMapWidth, kMapHeight}));
        for (std::size_t i = 0; i < pieces.size(); ++i) {
            SCOPED_TRACE(testing::PrintToString(input + L" to " + pieces[i].name));
            const std::int32_t width = pieces[i].code % 2 == 0 ? 5 : 3;
            const std::int32_t height = 8 - width;
            EXPECT_TRUE(result.pieces[i].isWritten);
            EXPECT_EQ(result.pieces[i].size, (PixelSize{width, height}));
            ExpectFile(m_target.File(pieces[i].name), width, height,
                       [&](std::int32_t x, std::int32_t y) {
                           const auto [fromX, fromY] = CabinetPixel(pieces[i].code, 5, 3, x, y);
                           return HeldPixel(pieces[i].name,
                                            HeldPixel(input, LowPixel(fromX + 1, fromY + 2, 1)));
                       });
        }
    }
}

TEST_F(Cropping, TheWholeMapAndEveryCornerCanBeCut) {
    WriteInput(L"in.9fcoef");
    for (const SPixelRect& rect :
         {SPixelRect{0, 0, 7, 6}, {0, 0, 1, 1}, {6, 0, 7, 1}, {0, 5, 1, 6}, {6, 5, 7, 6}}) {
        ASSERT_EQ(Crop(Request(L"in.9fcoef", {{L"a.9fcoef", rect, 0}})).end, ECompositionEnd::Done);
        ExpectFile(m_target.File(L"a.9fcoef"), static_cast<std::int32_t>(rect.Width()),
                   static_cast<std::int32_t>(rect.Height()), [&](std::int32_t x, std::int32_t y) {
                       return LowPixel(rect.left + x, rect.top + y, 1);
                   });
    }
}

TEST_F(Cropping, TellsWhatThePiecesKindDoesNotHold) {
    WriteInput(L"in.9fcoef");
    const SCropping result = Crop(
        Request(L"in.9fcoef", {{L"a.3fcoef", {1, 2, 4, 4}, 1}, {L"b.9fcoef", {1, 2, 4, 4}, 1}}));
    EXPECT_EQ(result.pieces[0].losses,
              CropTexts{"6 pixels have entries off the diagonal, which .3fcoef does not hold"});
    EXPECT_EQ(result.pieces[1].losses, CropTexts{});
}

TEST_F(Cropping, TellsOnceWhatTheSourceLacksOfAKind) {
    WriteInput(L"in.9fcoef");
    WriteInput(L"in.4wcoef");
    const SPixelRect rect{0, 0, 1, 1};
    const std::vector<SCropPiece> pieces{
        {L"a.12wcoef", rect, 0}, {L"b.12wcoef", rect, 0}, {L"c.9wcoef", rect, 0}};
    EXPECT_EQ(Crop(Request(L"in.9fcoef", pieces)).notes,
              CropTexts{"it holds no values beside the matrix: those of .12wcoef are the default "
                        "0, 1, 0"});
    EXPECT_EQ(Crop(Request(L"in.4wcoef", pieces)).notes, CropTexts{});
}

TEST_F(Cropping, OnePixelOutsideTheMapIsRefused) {
    WriteInput(L"in.9fcoef");
    for (const auto& [rect, shown] : {std::pair{SPixelRect{-1, 0, 2, 2}, "-1,0,2,2"},
                                      {SPixelRect{0, -1, 2, 2}, "0,-1,2,2"},
                                      {SPixelRect{0, 0, 8, 2}, "0,0,8,2"},
                                      {SPixelRect{0, 0, 2, 7}, "0,0,2,7"},
                                      {SPixelRect{2, 2, 2, 4}, "2,2,2,4"},
                                      {SPixelRect{2, 4, 4, 4}, "2,4,4,4"}}) {
        const SCropping result = Crop(
            Request(L"in.9fcoef", {{L"whole.9fcoef", {0, 0, 1, 1}, 0}, {L"a.9fcoef", rect, 0}}));
        EXPECT_EQ(result.end, ECompositionEnd::Refused);
        EXPECT_EQ(result.errors,
                  CropTexts{"the rectangle " + std::string(shown) +
                            " of a.9fcoef is not in the map of 7 x 6: choose another "
                            "rectangle"});
    }
    EXPECT_TRUE(m_target.Names().empty());
}

TEST_F(Cropping, ADamagedSourceIsCutOnlyLeniently) {
    WriteInput(L"in.9wcoef");
    const std::string whole = ReadText(m_folder.File(L"in.9wcoef"));
    WriteText(m_folder.File(L"in.9wcoef"), whole.substr(0, whole.size() - 3));
    auto request = Request(L"in.9wcoef", {{L"a.9fcoef", {0, 0, 2, 2}, 0}});
    SCropping result = Crop(request);
    EXPECT_EQ(result.end, ECompositionEnd::SomeFailed);
    EXPECT_FALSE(result.problems.empty());
    EXPECT_TRUE(m_target.Names().empty());
    request.lenient = true;
    result = Crop(request);
    EXPECT_EQ(result.end, ECompositionEnd::SomeFailed);
    EXPECT_TRUE(result.pieces[0].isWritten);
    ExpectFile(m_target.File(L"a.9fcoef"), 2, 2,
               [](std::int32_t, std::int32_t) { return SMatrixCoef{}; });
    WriteText(m_folder.File(L"in.9wcoef"), "none");
    EXPECT_EQ(Crop(request).end, ECompositionEnd::SomeFailed);
}

TEST_F(Cropping, ASourceWithoutPixelsFailsAlsoLeniently) {
    WriteText(m_folder.File(L"in.cccoef"), "[T9COEF20]\nwidth=0\nheight=0\n");
    auto request = Request(L"in.cccoef", {{L"a.9fcoef", {0, 0, 1, 1}, 0}});
    for (const bool isLenient : {false, true}) {
        request.lenient = isLenient;
        const SCropping result = Crop(request);
        EXPECT_EQ(result.end, ECompositionEnd::SomeFailed);
        EXPECT_EQ(result.problems, CropTexts{kNoPixels});
        EXPECT_EQ(result.errors, CropTexts{});
    }
    EXPECT_TRUE(m_target.Names().empty());
}

TEST_F(Cropping, NamesThatCannotBeAreRefused) {
    WriteInput(L"in.9fcoef");
    SCropping result = Crop(Request(L"in.9fcoef", {{L"a.txt", {0, 0, 1, 1}, 0}}));
    EXPECT_EQ(result.end, ECompositionEnd::Refused);
    EXPECT_EQ(result.errors, CropTexts{"the output a.txt is no coefficient file by its name: give "
                                       "one of the nine extensions"});
    result = Crop(Request(L"gone.9fcoef", {}));
    EXPECT_EQ(result.end, ECompositionEnd::Refused);
    EXPECT_EQ(result.errors,
              CropTexts{"the source " + WideToShownUtf8(m_folder.File(L"gone.9fcoef")) +
                        " does not exist: check its path"});
    result = Crop(Request(L"x.txt", {}));
    EXPECT_EQ(result.errors, CropTexts{WideToShownUtf8(m_folder.File(L"x.txt")) +
                                       " is no coefficient file by its name: give one with one of "
                                       "the nine extensions"});
}

TEST_F(Cropping, ANameThatIsTakenFailsAndTheOthersAreWritten) {
    WriteInput(L"in.9fcoef");
    WriteText(m_target.File(L"a.9fcoef"), "mine");
    auto request =
        Request(L"in.9fcoef", {{L"a.9fcoef", {0, 0, 1, 1}, 0}, {L"b.9fcoef", {0, 0, 1, 1}, 0}});
    request.replaces = false;
    const SCropping result = Crop(request);
    EXPECT_EQ(result.end, ECompositionEnd::SomeFailed);
    EXPECT_FALSE(result.pieces[0].isWritten);
    EXPECT_NE(result.pieces[0].problem, "");
    EXPECT_TRUE(result.pieces[1].isWritten);
    EXPECT_EQ(ReadText(m_target.File(L"a.9fcoef")), "mine");
}

TEST_F(Cropping, TheSourceStaysAsItIs) {
    WriteInput(L"in.9fcoef");
    auto request = Request(L"in.9fcoef", {{L"in.9fcoef", {0, 0, 1, 1}, 0}});
    request.targetFolder = m_folder.Path();
    const Bytes whole = ReadFile(request.input);
    EXPECT_EQ(Crop(request).end, ECompositionEnd::SomeFailed);
    EXPECT_EQ(ReadFile(request.input), whole);
}

TEST_F(Cropping, FilesThatAreToBeKeptStay) {
    WriteInput(L"in.9fcoef");
    WriteInput(L"asked.9fcoef");
    auto request = Request(L"in.9fcoef", {{L"asked.9fcoef", {0, 0, 1, 1}, 0}});
    request.targetFolder = m_folder.Path();
    request.kept = {m_folder.File(L"asked.9fcoef")};
    const Bytes whole = ReadFile(request.kept.front());
    EXPECT_EQ(Crop(request).end, ECompositionEnd::SomeFailed);
    EXPECT_EQ(ReadFile(request.kept.front()), whole);
    request.kept.clear();
    EXPECT_EQ(Crop(request).end, ECompositionEnd::Done);
}

TEST_F(Cropping, WhatEndedRunsLeftInTheFoldersOfPiecesIsRemoved) {
    constexpr std::uint32_t kNoProcess = 0x7FFFFFF0;
    WriteInput(L"in.9fcoef");
    ASSERT_TRUE(CreateFolders(m_target.File(L"row")));
    const std::wstring left =
        fmt::format(L".trevolt-{:x}-{:x}-1f-a.tmp", ProcessRealm(), kNoProcess);
    const std::wstring below = m_target.File(L"row/") + left;
    for (const std::wstring& path : {m_target.File(left), below})
        WriteText(path, "x");
    auto request = Request(L"in.9fcoef", {{L"row/a.9fcoef", {0, 0, 1, 1}, 0}});
    request.makesFolders = true;
    EXPECT_EQ(Crop(request).end, ECompositionEnd::Done);
    EXPECT_FALSE(PathExists(m_target.File(left)));
    EXPECT_FALSE(PathExists(below));
}

TEST_F(Cropping, NoPieceLeavesTheTargetFolder) {
    WriteInput(L"in.9fcoef");
    for (const wchar_t* name : {L"../a.9fcoef", L"row/../../a.9fcoef"}) {
        auto request = Request(L"in.9fcoef", {{name, {0, 0, 1, 1}, 0}});
        request.makesFolders = true;
        const SCropping result = Crop(request);
        EXPECT_EQ(result.end, ECompositionEnd::Refused);
        EXPECT_EQ(result.errors, CropTexts{"the output " + WideToShownUtf8(name) +
                                           " is not below the target folder: name it without .."});
    }
    for (const wchar_t* name : {L"/a.9fcoef", L"/row/a.9fcoef", L"\\\\server\\a.9fcoef",
                                L"\\a.9fcoef", L"C:\\row\\a.9fcoef", L"c:/a.9fcoef"}) {
        auto request = Request(L"in.9fcoef", {{name, {0, 0, 1, 1}, 0}});
        request.makesFolders = true;
        const SCropping result = Crop(request);
        EXPECT_EQ(result.end, ECompositionEnd::Refused);
        EXPECT_EQ(result.errors,
                  CropTexts{"the output " + WideToShownUtf8(name) +
                            " is not below the target folder: name it relative to that"});
    }
    EXPECT_TRUE(m_target.Names().empty());
}

TEST_F(Cropping, ADriveWithoutARootLeadsOutWhereThereAreDrives) {
    WriteInput(L"in.9fcoef");
    const SCropping result = Crop(Request(L"in.9fcoef", {{L"C:a.9fcoef", {0, 0, 1, 1}, 0}}));
    EXPECT_EQ(result.end == ECompositionEnd::Refused, kPathSeparator == L'\\');
}

TEST_F(Cropping, APieceThatWouldBeReadAsAnotherKindIsRefused) {
    WriteInput(L"in.9fcoef");
    const SCropping result = Crop(Request(L"in.9fcoef", {{L"a.3wcoef.12wcoef", {0, 0, 1, 1}, 0}}));
    EXPECT_EQ(result.end, ECompositionEnd::Refused);
    EXPECT_EQ(result.errors,
              CropTexts{"the output a.3wcoef.12wcoef would be read as another kind than it is "
                        "written: give one of the nine extensions"});
}

TEST_F(Cropping, FoldersAreMadeOnlyWhereTheyAreWanted) {
    WriteInput(L"in.9fcoef");
    auto request = Request(L"in.9fcoef", {{L"row/a.9fcoef", {0, 0, 1, 1}, 0}});
    EXPECT_EQ(Crop(request).end, ECompositionEnd::SomeFailed);
    EXPECT_TRUE(m_target.Names().empty());
    request.makesFolders = true;
    request.targetFolder = m_target.File(L"new");
    EXPECT_EQ(Crop(request).end, ECompositionEnd::Done);
    EXPECT_TRUE(FileExists(m_target.File(L"new/row/a.9fcoef")));
}

#ifndef _WIN32
TEST_F(Cropping, WhatAKilledRunLeftIsRemovedWhereNothingElseFits) {
    const CLeftoverFolder target;
    WriteInput(L"in.9fcoef");
    SCropRequest request = Request(L"in.9fcoef", {{L"a.9fcoef", {0, 0, 1, 1}, 0}});
    request.targetFolder = target.Path();
    request.makesFolders = true;
    EXPECT_EQ(
        Crop(request).errors,
        CropTexts{"the folder " + WideToShownUtf8(target.Path()) +
                  " cannot be made, written to or synced: File name too long: choose another"});
    EXPECT_FALSE(PathExists(target.Left()));
}
#endif

TEST_F(Cropping, AnInterruptedOneWritesNoMore) {
    WriteInput(L"in.9fcoef");
    const SCropping result =
        CropFile(Request(L"in.9fcoef", {{L"a.9fcoef", {0, 0, 1, 1}, 0}}), kIsInterrupted);
    EXPECT_EQ(result.end, ECompositionEnd::Interrupted);
    EXPECT_TRUE(m_target.Names().empty());
}

TEST_F(Cropping, PiecesThatGetNoMemoryAreNamed) {
    WriteInput(L"in.9fcoef");
    const CChromaCorrectCoef map = [] {
        CChromaCorrectCoef made;
        made.Resize(64, 64);
        return made;
    }();
    const CBudgetLimit limit(CMemoryBudget::Process().Outstanding());
    for (std::uint32_t code = 0; code <= 1; ++code)
        EXPECT_EQ(WriteMapPiece(map, {0, 0, 64, 64}, code, *FindExportKind(L".9fcoef"),
                                m_target.File(L"a.9fcoef")),
                  "not enough memory to write it whole");
}

TEST_F(Cropping, ComposedCabinetsComeBackOfTheirScreen) {
    std::vector<SPlacedFile> files;
    std::int64_t x = 0;
    for (const SFileKind& kind : FileKinds()) {
        const auto number = static_cast<std::int32_t>(files.size());
        const std::wstring name = L"cab" + std::wstring(kind.extension);
        const std::int32_t width = 3 + number % 4;
        WriteCabinet(m_folder.File(name), width, 4, number);
        const std::uint32_t code = static_cast<std::uint32_t>(number) % 4;
        files.push_back({m_folder.File(name), name, {x, number % 2}, code});
        x += code % 2 == 0 ? width : 4;
    }
    const SCompositionRequest composition{.files = files,
                                          .output = {m_folder.File(L"wall.12wcoef"), false, false}};
    ASSERT_EQ(ComposeScreen(composition, kNotInterrupted).end, ECompositionEnd::Done);
    const SScreenPieces screen = PiecesOfScreen(files, std::nullopt);
    ASSERT_EQ(screen.problems, CropTexts{});
    ASSERT_EQ(Crop(Request(L"wall.12wcoef", screen.pieces)).end, ECompositionEnd::Done);
    for (std::size_t i = 0; i < files.size(); ++i) {
        const auto number = static_cast<std::int32_t>(i);
        ExpectFile(m_target.File(files[i].name), 3 + number % 4, 4,
                   [&](std::int32_t column, std::int32_t row) {
                       return HeldPixel(files[i].name, LowPixel(column, row, number));
                   });
    }
}

TEST_F(Cropping, SizesOfCabinetsAreGivenOrAskedOfTheirFiles) {
    WriteCabinet(m_folder.File(L"a.9fcoef"), 5, 3, 1);
    const std::vector<SPlacedFile> files{{m_folder.File(L"a.9fcoef"), L"a.9fcoef", {10, 20}, 1},
                                         {m_folder.File(L"b.9fcoef"), L"b.9fcoef", {0, 0}, 3},
                                         {L"c.txt", L"c.txt", {0, 0}, 2}};
    SScreenPieces screen = PiecesOfScreen(files, std::nullopt);
    ASSERT_EQ(screen.problems.size(), 2U);
    EXPECT_EQ(screen.problems[0].substr(0, 25), "b.9fcoef: cannot be read:");
    EXPECT_EQ(screen.problems[1], "c.txt: is no coefficient file by its name");
    EXPECT_EQ(screen.pieces[0].rect, (SPixelRect{10, 20, 13, 25}));
    EXPECT_EQ(screen.pieces[0].code, 3U);
    screen = PiecesOfScreen(files, PixelSize{8, 2});
    EXPECT_EQ(screen.problems, CropTexts{});
    EXPECT_EQ(screen.pieces[0].rect, (SPixelRect{10, 20, 12, 28}));
    EXPECT_EQ(screen.pieces[1].rect, (SPixelRect{0, 0, 2, 8}));
    EXPECT_EQ(screen.pieces[1].code, 1U);
    EXPECT_EQ(screen.pieces[2].rect, (SPixelRect{0, 0, 8, 2}));
    EXPECT_EQ(screen.pieces[2].code, 2U);
}

} // namespace
} // namespace trevolt
