#include "app/inspection/CoefPixels.h"

#include <gtest/gtest.h>

#include "app/rotation/CoefFile.h"
#include "tests/support/TestFiles.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

using namespace test;

/// Both ways of loading a file tell the same and hold the same pixels.
void ExpectAsInMap(const std::wstring& path, bool isStored) {
    SCOPED_TRACE(WideToShownUtf8(path));
    const SCoefLoad map = LoadCoefFile(path);
    const SCoefPixelLoad load = LoadCoefPixels(path, 2);
    EXPECT_EQ(load.kind, map.kind);
    EXPECT_EQ(load.size, map.size);
    EXPECT_EQ(load.problems, map.problems);
    EXPECT_EQ(load.notes, map.notes);
    EXPECT_EQ(load.stored != nullptr, isStored);
    EXPECT_EQ(load.HasPixels(), map.problems.empty() && !map.map->IsEmpty());
    if (!load.HasPixels())
        return;
    const CCoefPixels pixels = load.Pixels();
    ASSERT_EQ(pixels.Size(), map.size);
    const auto width = static_cast<std::uint32_t>(map.size.width);
    std::vector<SMatrixCoef> scratch(width);
    for (std::uint32_t y = 0; y < map.size.height; ++y) {
        const SMatrixCoef* const row = pixels.Run(0, y, width, scratch.data());
        for (std::uint32_t x = 0; x < width; ++x)
            ASSERT_EQ(row[x].m, map.map->FindElement(x, y)->m) << x << ", " << y;
    }
}

TEST(CoefPixels, AreThoseOfAMapInEveryKind) {
    for (const wchar_t* name :
         {L"Cab_01.9fcoef", L"Cab_02.3fcoef", L"Cab_03.9bcoef", L"Cab_04.3bcoef", L"Cab_06.9wcoef",
          L"Cab_07.3wcoef", L"Cab_08.4wcoef", L"Cab_09.12wcoef"})
        ExpectAsInMap(Sample(std::wstring(L"cabinet/") + name), true);
    ExpectAsInMap(Sample(L"cabinet/Cab_05.cccoef"), false);
}

TEST(CoefPixels, OfFilesThatCannotBeReadTellWhatAMapTells) {
    const CTemporaryFolder folder;
    Bytes cut = ReadFile(Sample(L"cabinet/Cab_06.9wcoef"));
    cut.pop_back();
    WriteFile(folder.File(L"cut.9wcoef"), cut);
    ExpectAsInMap(folder.File(L"cut.9wcoef"), false);
    cut = ReadFile(Sample(L"cabinet/Cab_01.9fcoef"));
    cut.pop_back();
    WriteFile(folder.File(L"cut.9fcoef"), cut);
    ExpectAsInMap(folder.File(L"cut.9fcoef"), false);
    WriteFile(folder.File(L"empty.3bcoef"), {});
    ExpectAsInMap(folder.File(L"empty.3bcoef"), false);
    ExpectAsInMap(folder.File(L"missing.4wcoef"), false);
    WriteFile(folder.File(L"float.9wcoef"), ReadFile(Sample(L"cabinet/Cab_01.9fcoef")));
    ExpectAsInMap(folder.File(L"float.9wcoef"), false);
}

} // namespace
} // namespace trevolt
