#include "trevolt/ChromaCorrectCoef.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "tests/support/BudgetLimit.h"
#include "tests/support/CoefMaps.h"

namespace trevolt {
namespace {

using namespace test;

TEST(MatrixCoef, DefaultsToTheIdentityAndZeroOneZero) {
    const SMatrixCoef element;
    const std::array<float, 12> expected{1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 0};
    EXPECT_EQ(element.m, expected);
    EXPECT_EQ(sizeof element, 48U);
}

TEST(ChromaCorrectCoef, IsEmptyWhenMade) {
    const CChromaCorrectCoef map;
    EXPECT_EQ(map.Width(), 0);
    EXPECT_EQ(map.Height(), 0);
    EXPECT_TRUE(map.IsEmpty());
    EXPECT_FALSE(map.HasStorage());
    EXPECT_EQ(map.KindWord(), 1U);
    EXPECT_EQ(map.Attachment(), nullptr);
    EXPECT_EQ(map.FindElement(0, 0), nullptr);
    EXPECT_EQ(map.ColourGrid().BlockBytes(), 0xC00000U);
    EXPECT_EQ(map.GainGrid().BlockBytes(), 0x100000U);
    EXPECT_TRUE(SamePixel(map.DefaultElement(), SMatrixCoef{}));
}

TEST(ChromaCorrectCoef, ResizesToDefaults) {
    CChromaCorrectCoef map;
    map.Resize(700, 400); // past one block
    EXPECT_EQ(map.Width(), 700);
    EXPECT_EQ(map.Height(), 400);
    EXPECT_TRUE(map.HasStorage());
    ExpectPixels(map, [](int, int) { return SMatrixCoef{}; });
    ExpectGainsOne(map);
    EXPECT_EQ(map.ColourGrid().Width(), 700U);
    EXPECT_EQ(map.GainGrid().Height(), 400U);
}

TEST(ChromaCorrectCoef, StaysEmptyAtZeroAndNegativeSizes) {
    CChromaCorrectCoef map;
    for (const auto& [width, height] : {std::pair{0, 5}, std::pair{5, 0}, std::pair{-1, 5},
                                        std::pair{5, -1}, std::pair{-3, -3}}) {
        map.Resize(4, 4);
        map.Resize(width, height);
        EXPECT_EQ(map.Width(), 0);
        EXPECT_EQ(map.Height(), 0);
        EXPECT_FALSE(map.HasStorage());
    }
}

TEST(ChromaCorrectCoef, StoresItsSizeInSixteenBits) {
    CChromaCorrectCoef map;
    map.Resize(65537, 2);
    EXPECT_EQ(map.Width(), 1);
    EXPECT_EQ(map.Height(), 2);
    EXPECT_EQ(map.ColourGrid().Width(), 65537U);
    map.SetElement(0, 1, PatternPixel(1, 1));
    EXPECT_TRUE(SamePixel(*map.FindElement(0, 1), PatternPixel(1, 1)));
    EXPECT_EQ(map.FindElement(1, 1), nullptr);
}

TEST(ChromaCorrectCoef, SetsElementsInsideOnly) {
    CChromaCorrectCoef map;
    map.Resize(3, 2);
    map.SetElement(2, 1, PatternPixel(2, 1));
    for (const auto& [x, y] : {std::pair{-1, 0}, std::pair{0, -1}, std::pair{3, 0}, std::pair{0, 2},
                               std::pair{INT32_MAX, INT32_MAX}, std::pair{INT32_MIN, INT32_MIN}}) {
        map.SetElement(x, y, PatternPixel(5, 5));
        EXPECT_EQ(map.FindElement(x, y), nullptr);
        EXPECT_TRUE(SamePixel(map.ElementOrDefault(x, y), SMatrixCoef{}));
    }
    ExpectPixels(
        map, [](int x, int y) { return x == 2 && y == 1 ? PatternPixel(2, 1) : SMatrixCoef{}; });
}

TEST(ChromaCorrectCoef, ResetReleasesEverything) {
    const std::uint64_t before = CMemoryBudget::Process().Outstanding();
    CChromaCorrectCoef map;
    map.Resize(30, 20);
    EXPECT_EQ(CMemoryBudget::Process().Outstanding(), before + 30 * 20 * (48 + 4));
    map.Reset();
    EXPECT_EQ(CMemoryBudget::Process().Outstanding(), before);
    EXPECT_TRUE(map.IsEmpty());
    map.FillDefaults(); // does nothing
    map.SetElement(0, 0, SMatrixCoef{});
}

TEST(ChromaCorrectCoef, FillDefaultsPaintsOver) {
    CChromaCorrectCoef map;
    map.Resize(3, 3);
    PaintMap(map, PatternPixel);
    const float gain = 7;
    map.GainGrid().FillWith(&gain, sizeof gain);
    map.FillDefaults();
    ExpectPixels(map, [](int, int) { return SMatrixCoef{}; });
    ExpectGainsOne(map);
}

TEST(ChromaCorrectCoef, HasItsSizeAndNoStorageWhenMemoryIsRefused) {
    CChromaCorrectCoef map;
    {
        const CBudgetLimit limit(std::uint64_t{1} << 30);
        map.Resize(65535, 32768);
    }
    EXPECT_EQ(map.Width(), 65535);
    EXPECT_EQ(map.Height(), 32768);
    EXPECT_FALSE(map.HasStorage());
    EXPECT_FALSE(map.ColourGrid().HasStorage());
    EXPECT_EQ(map.FindElement(0, 0), nullptr);
    map.SetElement(0, 0, SMatrixCoef{});
    EXPECT_TRUE(SamePixel(map.ElementOrDefault(0, 0), SMatrixCoef{}));
}

TEST(ChromaCorrectCoef, HasNoColoursEitherWhenTheGainsAreRefused) {
    CChromaCorrectCoef map;
    {
        const CBudgetLimit colourOnly(CMemoryBudget::Process().Outstanding() + 4 * 48);
        map.Resize(2, 2);
    }
    EXPECT_EQ(map.Width(), 2);
    EXPECT_FALSE(map.HasStorage());
    EXPECT_FALSE(map.ColourGrid().HasStorage());
    EXPECT_EQ(map.ColourGrid().Width(), 0U);
    EXPECT_FALSE(map.GainGrid().HasStorage());
    EXPECT_EQ(map.FindElement(0, 0), nullptr);
}

// The colour grid is in the caller's hands, so a lookup asks it and not the map's size alone.
TEST(ChromaCorrectCoef, FindsNothingThatItsColourGridDoesNotHold) {
    CChromaCorrectCoef map;
    map.Resize(4, 3);
    ASSERT_TRUE(map.ColourGrid().Resize(2, 2));
    map.FillDefaults();
    map.SetElement(1, 1, PatternPixel(1, 1));
    EXPECT_TRUE(SamePixel(*map.FindElement(1, 1), PatternPixel(1, 1)));
    for (const auto& [x, y] : {std::pair{2, 0}, std::pair{0, 2}, std::pair{3, 2}}) {
        map.SetElement(x, y, PatternPixel(9, 9));
        EXPECT_EQ(map.FindElement(x, y), nullptr);
        EXPECT_TRUE(SamePixel(map.ElementOrDefault(x, y), SMatrixCoef{}));
    }
    EXPECT_TRUE(SamePixel(*map.FindElement(0, 1), SMatrixCoef{}));
    map.ColourGrid().Release();
    map.SetElement(0, 0, PatternPixel(9, 9));
    EXPECT_EQ(map.FindElement(0, 0), nullptr);
}

TEST(ChromaCorrectCoef, FindsNothingBehindARefusedCopyOverItsColours) {
    CMassiveGrid other(sizeof(SMatrixCoef));
    ASSERT_TRUE(other.Resize(4, 3));
    CChromaCorrectCoef map;
    map.Resize(4, 3);
    const CBudgetLimit none(0);
    ASSERT_FALSE(map.ColourGrid().CopyRegionFrom(&other, 4, 3));
    map.SetElement(3, 2, PatternPixel(9, 9));
    EXPECT_EQ(map.FindElement(3, 2), nullptr);
    EXPECT_FALSE(map.HasStorage());
}

TEST(ChromaCorrectCoef, IsEmptyWhenMovedFrom) {
    CChromaCorrectCoef map;
    map.Resize(4, 3);
    map.SetElement(3, 2, PatternPixel(3, 2));
    map.Attach(std::make_unique<CMapAttachment>());
    const CMapAttachment* attachment = map.Attachment();
    const auto expectNothing = [](CChromaCorrectCoef& from) {
        EXPECT_TRUE(from.IsEmpty());
        EXPECT_EQ(from.Width(), 0);
        EXPECT_EQ(from.Height(), 0);
        EXPECT_FALSE(from.HasStorage());
        EXPECT_EQ(from.Attachment(), nullptr);
        from.FillDefaults();
        from.SetElement(0, 0, PatternPixel(9, 9));
        EXPECT_EQ(from.FindElement(0, 0), nullptr);
    };
    const auto expectWhole = [&](const CChromaCorrectCoef& to) {
        EXPECT_EQ(to.Width(), 4);
        EXPECT_EQ(to.Height(), 3);
        EXPECT_TRUE(SamePixel(to.ElementOrDefault(3, 2), PatternPixel(3, 2)));
        ExpectGainsOne(to);
        EXPECT_EQ(to.Attachment(), attachment);
        EXPECT_EQ(to.KindWord(), 1U);
    };
    CChromaCorrectCoef moved(std::move(map));
    expectNothing(map); // NOLINT(bugprone-use-after-move)
    expectWhole(moved);
    CChromaCorrectCoef assigned;
    assigned.Resize(9, 9);
    assigned = std::move(moved);
    expectNothing(moved); // NOLINT(bugprone-use-after-move)
    expectWhole(assigned);
    CChromaCorrectCoef& same = assigned;
    assigned = std::move(same);
    expectWhole(assigned);
    moved.Resize(2, 2); // and of use
    ExpectPixels(moved, [](int, int) { return SMatrixCoef{}; });
}

TEST(ChromaCorrectCoef, TheProcessesOwnBudgetRefusesTheLargestScreen) {
    constexpr std::uint64_t kBytes = std::uint64_t{65535} * 32768 * 48;
    const std::uint64_t own = CMemoryBudget::Process().Limit();
    const CBudgetLimit limit(std::min(own, kBytes - 1)); // of a machine that has the memory
    CChromaCorrectCoef map;
    map.Resize(65535, 32768);
    EXPECT_EQ(map.Width(), 65535);
    EXPECT_EQ(map.Height(), 32768);
    EXPECT_FALSE(map.ColourGrid().HasStorage());
}

TEST(ChromaCorrectCoef, DeletesItsAttachment) {
    struct Attachment : CMapAttachment {
        explicit Attachment(bool& deletedFlag) : deleted(deletedFlag) {}
        ~Attachment() override { deleted = true; }
        bool& deleted;
    };
    bool deleted = false;
    {
        CChromaCorrectCoef map;
        map.Attach(std::make_unique<Attachment>(deleted));
        EXPECT_NE(map.Attachment(), nullptr);
        map.Resize(2, 2);
        EXPECT_FALSE(deleted);
    }
    EXPECT_TRUE(deleted);
}

} // namespace
} // namespace trevolt
