#include "app/rotation/MapRegion.h"

#include <gtest/gtest.h>

#include "tests/rotation/ScreenFiles.h"

namespace trevolt {
namespace {

using namespace test;
using RegionTexts = std::vector<std::string>;

TEST(MapRegion, RectanglesAreShownHeldAndCut) {
    const PixelSize size{4, 3};
    EXPECT_EQ(ShownRect({-1, 2, 3, 4}), "-1,2,3,4");
    EXPECT_TRUE(IsWithin({0, 0, 4, 3}, size));
    for (const SPixelRect& rect :
         {SPixelRect{-1, 0, 4, 3}, {0, -1, 4, 3}, {0, 0, 5, 3}, {0, 0, 4, 4}})
        EXPECT_FALSE(IsWithin(rect, size)) << ShownRect(rect);
    EXPECT_EQ(CutTo({-2, -1, 9, 8}, size), (SPixelRect{0, 0, 4, 3}));
    EXPECT_EQ(CutTo({1, 1, 3, 2}, size), (SPixelRect{1, 1, 3, 2}));
    EXPECT_EQ(CutTo({5, 1, 9, 2}, size).Width(), 0);
    EXPECT_EQ(CutTo({1, -5, 2, -1}, size).Height(), 0);
    EXPECT_EQ(TurnedBy(0, size), size);
    EXPECT_EQ(TurnedBy(1, size), (PixelSize{3, 4}));
    EXPECT_EQ(TurnedBy(2, size), size);
    EXPECT_EQ(TurnedBy(3, size), (PixelSize{3, 4}));
}

TEST(MapRegion, AFileOfAnotherSizeThanItsPlaceIsAProblem) {
    const CTemporaryFolder folder;
    for (const wchar_t* name : {L"a.9fcoef", L"a.9wcoef"}) {
        WriteCabinet(folder.File(name), 5, 3, 1);
        for (std::uint32_t code = 0; code <= 1; ++code) {
            CChromaCorrectCoef map;
            map.Resize(9, 9);
            const SPixelRect rect = code == 0 ? SPixelRect{1, 1, 6, 4} : SPixelRect{1, 1, 4, 6};
            const auto problems = [&](std::int32_t right, std::int32_t bottom) {
                return PlaceCoefFile(folder.File(name), code, {rect.left, rect.top, right, bottom},
                                     map)
                    .problems;
            };
            EXPECT_EQ(problems(rect.right, rect.bottom), RegionTexts{});
            for (const std::int32_t more : {-1, 1}) {
                EXPECT_EQ(problems(rect.right + more, rect.bottom),
                          RegionTexts{"its size changed while it was read"});
                EXPECT_EQ(problems(rect.right, rect.bottom + more),
                          RegionTexts{"its size changed while it was read"});
            }
        }
    }
}

TEST(MapRegion, WithoutMemoryForItsTurnAFileStaysOut) {
    CChromaCorrectCoef map;
    map.Resize(64, 64);
    {
        const CBudgetLimit limit(CMemoryBudget::Process().Outstanding());
        EXPECT_TRUE(TurnWhole(map, 0));
        EXPECT_FALSE(map.IsEmpty());
        EXPECT_FALSE(TurnWhole(map, 1));
    }
    EXPECT_TRUE(map.IsEmpty());
    EXPECT_TRUE(TurnWhole(map, 1));
}

} // namespace
} // namespace trevolt
