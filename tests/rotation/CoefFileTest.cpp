#include "app/rotation/CoefFile.h"

#include <algorithm>
#include <cerrno>

#include <gtest/gtest.h>

#include "app/rotation/DemoWall.h"
#include "app/rotation/ElementForms.h"
#include "platform/FileSystem.h"
#include "platform/SystemError.h"
#include "tests/support/CoefMaps.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

using namespace test;

TEST(CoefFile, AFileOfEveryKindComesInItsOwnSize) {
    const CTemporaryFolder folder;
    ASSERT_EQ(WriteDemoWall(folder.Path(), false, false), "");
    for (const std::wstring& name : folder.Names()) {
        SCOPED_TRACE(testing::PrintToString(name));
        const SCoefLoad load = LoadCoefFile(folder.File(name));
        EXPECT_EQ(load.kind, FindLoadKind(name));
        EXPECT_EQ(load.size, (PixelSize{160, 90}));
        EXPECT_TRUE(load.problems.empty());
        ASSERT_NE(load.map, nullptr);
        CChromaCorrectCoef expected;
        expected.Resize(160, 90);
        ASSERT_GE(load.kind->load(expected, folder.File(name).c_str()), 0);
        EXPECT_TRUE(SamePixel(*load.map->FindElement(159, 89), *expected.FindElement(159, 89)));
    }
}

TEST(CoefFile, AMapThatTheMemoryDoesNotFillIsNone) {
    const CTemporaryFolder folder;
    CChromaCorrectCoef map;
    map.Resize(160, 90);
    const std::wstring path = folder.File(L"floats.3wcoef"); // goes through memory of its own
    ASSERT_EQ(FindLoadKind(L"a.3fcoef")->save(map, path.c_str()), S_OK);
    constexpr std::uint64_t kMapBytes = 160 * 90 * 52;
    for (const std::uint64_t more : {std::uint64_t{0}, std::uint64_t{160 * 90 * 12 - 1}}) {
        const CBudgetLimit limit(CMemoryBudget::Process().Outstanding() + kMapBytes + more);
        const SCoefLoad load = LoadCoefFile(path);
        EXPECT_EQ(load.problems, std::vector<std::string>{"not enough memory to read it whole"});
        EXPECT_EQ(load.map, nullptr);
        EXPECT_FALSE(load.isRead);
    }
    EXPECT_TRUE(LoadCoefFile(path).isRead);
}

// Of the words, all chunks but the first and largest fit.
TEST(CoefFile, AMapThatTheMemoryFillsInPartIsNone) {
    const CTemporaryFolder folder;
    CChromaCorrectCoef map;
    map.Resize(600, 600);
    for (const std::wstring name : {L"a.9wcoef", L"a.9fcoef"}) {
        ASSERT_EQ(FindLoadKind(name)->save(map, folder.File(name).c_str()), S_OK);
        const CBudgetLimit limit(CMemoryBudget::Process().Outstanding() + 600 * 600 * 52 + 4000000);
        const SCoefLoad load = LoadCoefFile(folder.File(name));
        EXPECT_EQ(load.problems, std::vector<std::string>{"not enough memory to read it whole"});
        EXPECT_EQ(load.map, nullptr);
        EXPECT_FALSE(load.isRead);
    }
}

TEST(CoefFile, WhatAFileDoesNotHoldOfAPixelIsDefault) {
    const CTemporaryFolder folder;
    CChromaCorrectCoef map;
    map.Resize(3, 2);
    PaintMap(map, [](std::int32_t x, std::int32_t y) {
        SMatrixCoef pixel = BytePixel(x, y);
        std::fill(pixel.m.begin() + 9, pixel.m.end(), 0.2F);
        return pixel;
    });
    for (const SFileKind& kind : FileKinds()) {
        SCOPED_TRACE(testing::PrintToString(std::wstring(kind.extension)));
        const std::wstring path = folder.File(L"a" + std::wstring(kind.extension));
        ASSERT_GE(kind.save(map, path.c_str()), 0);
        const SCoefLoad load = LoadCoefFile(path);
        const MapValues held = FormOfKind(kind).Values();
        ExpectPixels(*load.map, [&](std::int32_t x, std::int32_t y) {
            SMatrixCoef pixel = *load.map->FindElement(x, y);
            for (std::size_t k = 0; k < pixel.m.size(); ++k)
                if (!held.test(k))
                    pixel.m[k] = SMatrixCoef{}.m[k];
            return pixel;
        });
        EXPECT_EQ(load.map->FindElement(1, 1)->m[10], held.test(10) ? 0.2F : 1.0F);
    }
}

TEST(CoefFile, OfACutFileWhatCameIsThereAndWhatDidNotIsTold) {
    const CTemporaryFolder folder;
    ASSERT_EQ(WriteDemoWall(folder.Path(), false, false), "");
    const std::string whole = ReadText(folder.File(L"Cab_03.9wcoef"));
    WriteText(folder.File(L"cut.9wcoef"), whole.substr(0, whole.size() - 10));
    const SCoefLoad load = LoadCoefFile(folder.File(L"cut.9wcoef"));
    EXPECT_EQ(load.size, (PixelSize{160, 90}));
    EXPECT_NE(load.map, nullptr);
    EXPECT_FALSE(load.problems.empty());
    EXPECT_FALSE(load.isRead); // its directory tells another size
    EXPECT_TRUE(LoadCoefFile(folder.File(L"Cab_03.9wcoef")).isRead);
    EXPECT_TRUE(LoadCoefFile(folder.File(L"Cab_07.cccoef")).isRead);
}

TEST(CoefFile, OneIsReadWhereAnyChunkIs) {
    const CTemporaryFolder folder;
    Bytes file = ReadFile(Sample(L"awkward/blocks_reversed.9wcoef"));
    std::fill_n(file.begin() + 168 + 20, 4, std::byte{0}); // the first chunk's first plane
    WriteFile(folder.File(L"one.9wcoef"), file);
    const SCoefLoad load = LoadCoefFile(folder.File(L"one.9wcoef"));
    EXPECT_EQ(load.problems.size(), 1U);
    EXPECT_TRUE(load.isRead);
}

TEST(CoefFile, WhatHasNoSizeHasNoMap) {
    const CTemporaryFolder folder;
    WriteText(folder.File(L"empty.9fcoef"), "");
    const SCoefLoad load = LoadCoefFile(folder.File(L"empty.9fcoef"));
    EXPECT_NE(load.kind, nullptr);
    EXPECT_EQ(load.map, nullptr);
    EXPECT_EQ(load.size, PixelSize{});
    EXPECT_EQ(load.problems.size(), 1U);
}

TEST(CoefFile, SizesOfTextAreSigned) {
    const CTemporaryFolder folder;
    WriteText(folder.File(L"below.cccoef"), "[T9COEF20]\nwidth=-5\nheight=70000\n");
    const SCoefLoad load = LoadCoefFile(folder.File(L"below.cccoef"));
    EXPECT_EQ(load.size, (PixelSize{-5, 70000}));
    EXPECT_EQ(load.problems,
              std::vector<std::string>{"its size -5 x 70000 is below 0 in one direction"});
    const SFileKind& words = *FindLoadKind(L"a.9wcoef");
    EXPECT_EQ(SizeToldBy(words, 0xFFFFFFFB, 3), (PixelSize{4294967291, 3}));
    EXPECT_EQ(DescribeMapSize(words, {4294967291, 3}),
              "its size 4294967291 x 3 is above 65535 in one direction");
    EXPECT_EQ(DescribeMapSize(words, {65535, 0}), "");
}

TEST(CoefFile, ABinaryFileHasNoMorePixelsThanABody) {
    for (const wchar_t* const name : {L"a.9fcoef", L"a.3fcoef", L"a.9bcoef", L"a.3bcoef"}) {
        const SFileKind& kind = *FindLoadKind(name);
        EXPECT_EQ(DescribeMapSize(kind, {65535, 32768}), "");
        EXPECT_EQ(DescribeMapSize(kind, {65535, 32769}),
                  "its size 65535 x 32769 has more than 2147483647 pixels");
    }
    // Of these the bytes are asked first.
    for (const wchar_t* const name : {L"a.9wcoef", L"a.cccoef"})
        EXPECT_EQ(DescribeMapSize(*FindLoadKind(name), {65535, 65535}), "");
}

TEST(CoefFile, OneWithoutPixelsIsAProblemWhereThereIsNoOther) {
    const CTemporaryFolder folder;
    WriteText(folder.File(L"none.cccoef"), "[T9COEF20]\nwidth=0\nheight=0\n");
    EXPECT_EQ(LoadCoefFile(folder.File(L"none.cccoef")).problems,
              std::vector<std::string>{"has no pixels"});
    WriteText(folder.File(L"cut.cccoef"), "[T9COEF20]\nwidth=0\nheight=");
    const SCoefLoad cut = LoadCoefFile(folder.File(L"cut.cccoef"));
    ASSERT_EQ(cut.problems.size(), 1U);
    EXPECT_NE(cut.problems[0], "has no pixels");
}

TEST(CoefFile, AMissingFileIsToldByTheSystemsReason) {
    const CTemporaryFolder folder;
    const SCoefLoad load = LoadCoefFile(folder.File(L"missing.3wcoef"));
    EXPECT_EQ(load.map, nullptr);
    EXPECT_EQ(load.problems, std::vector{WithSystemReason(
                                 "cannot be read: E_COEF_OPENFAILED (0xE0830011): the file "
                                 "could not be opened",
                                 ENOENT)});
}

TEST(CoefFile, ANameWithoutAKindIsNoCoefficientFile) {
    // The folder's name does not count.
    const SCoefLoad load = LoadCoefFile(L"wall.9fcoef/notes.txt");
    EXPECT_EQ(load.kind, nullptr);
    EXPECT_EQ(load.problems, std::vector<std::string>{"is no coefficient file by its name"});
}

TEST(CoefFile, AKindIsOwnWhereItIsReadAndWritten) {
    EXPECT_EQ(FindOwnKind(L"a.3bcoef"), FindLoadKind(L"a.3bcoef"));
    EXPECT_EQ(FindOwnKind(L"a.3wcoef.12wcoef"), nullptr);
    EXPECT_EQ(FindOwnKind(L"a.txt"), nullptr);
}

TEST(CoefFile, WhatIsNoFileIsToldBeforeItIsOpened) {
    const CTemporaryFolder folder;
    ASSERT_TRUE(CreateFolders(folder.File(L"row.9fcoef")));
    const std::string shown = WideToShownUtf8(folder.File(L"row.9fcoef"));
    EXPECT_EQ(DescribeInputObstacle(folder.File(L"row.9fcoef")),
              shown + " is a folder: give a file");
    WriteText(folder.File(L"a.9fcoef"), "");
    EXPECT_EQ(DescribeInputObstacle(folder.File(L"a.9fcoef")), "");
}

TEST(CoefFile, WhatAMapCannotHoldIsTold) {
    const SCoefLoad load = LoadCoefFile(Sample(L"awkward/origin_1000_777.9wcoef"));
    EXPECT_FALSE(load.losses.empty());
}

} // namespace
} // namespace trevolt
