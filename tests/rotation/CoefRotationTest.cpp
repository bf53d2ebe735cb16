#include "trevolt/CoefRotation.h"

#include <gtest/gtest.h>

#include "tests/support/CoefMaps.h"
#include "trevolt/FileKinds.h"

namespace trevolt {
namespace {

using namespace test;

CChromaCorrectCoef PatternMap(std::int32_t width, std::int32_t height) {
    CChromaCorrectCoef map;
    map.Resize(width, height);
    PaintMap(map, PatternPixel);
    return map;
}

/// Where target pixel (x, y) comes from, written out for a w × h source.
std::pair<std::int32_t, std::int32_t> SourceOf(std::uint32_t code, std::int32_t w, std::int32_t h,
                                               std::int32_t x, std::int32_t y) {
    if (code == 1)
        return {y, h - 1 - x};
    if (code == 2)
        return {w - 1 - x, h - 1 - y};
    return {w - 1 - y, x};
}

void ExpectTurned(std::uint32_t code, std::int32_t width, std::int32_t height) {
    SCOPED_TRACE(testing::Message() << width << " x " << height << " by " << code);
    const CChromaCorrectCoef source = PatternMap(width, height);
    CChromaCorrectCoef target;
    TurnMap(source, width, height, code, target);
    EXPECT_EQ(target.Width(), code == 2 ? width : height);
    EXPECT_EQ(target.Height(), code == 2 ? height : width);
    ExpectPixels(target, [&](std::int32_t x, std::int32_t y) {
        const auto [fromX, fromY] = SourceOf(code, width, height, x, y);
        return PatternPixel(fromX, fromY);
    });
}

TEST(CoefRotation, OffersThreeAngles) {
    ASSERT_EQ(kAngles.size(), 3U);
    EXPECT_EQ(kAngles[0].text, L"90\u00B0");
    EXPECT_EQ(kAngles[1].text, L"180\u00B0");
    EXPECT_EQ(kAngles[2].text, L"270\u00B0");
    for (std::uint32_t i = 0; i < 3; ++i)
        EXPECT_EQ(kAngles[i].code, i + 1);
}

TEST(CoefRotation, MovesTheCornersOfATwoByThreeMap) {
    const CChromaCorrectCoef source = PatternMap(2, 3);
    CChromaCorrectCoef target;
    TurnMap(source, 2, 3, 1, target);
    EXPECT_EQ(target.Width(), 3);
    EXPECT_EQ(target.Height(), 2);
    EXPECT_TRUE(SamePixel(*target.FindElement(2, 0), PatternPixel(0, 0)));
    EXPECT_TRUE(SamePixel(*target.FindElement(0, 1), PatternPixel(1, 2)));
    TurnMap(source, 2, 3, 3, target);
    EXPECT_EQ(target.Width(), 3);
    EXPECT_EQ(target.Height(), 2);
    EXPECT_TRUE(SamePixel(*target.FindElement(0, 1), PatternPixel(0, 0)));
    EXPECT_TRUE(SamePixel(*target.FindElement(0, 0), PatternPixel(1, 0)));
    TurnMap(source, 2, 3, 2, target);
    EXPECT_EQ(target.Width(), 2);
    EXPECT_EQ(target.Height(), 3);
    EXPECT_TRUE(SamePixel(*target.FindElement(1, 2), PatternPixel(0, 0)));
}

TEST(CoefRotation, TurnsEveryPixelAtEverySize) {
    for (std::uint32_t code = 1; code <= 3; ++code) {
        for (std::int32_t width = 1; width <= 35; width += 3)
            for (std::int32_t height = 1; height <= 35; height += 5)
                ExpectTurned(code, width, height);
        ExpectTurned(code, 1, 1);
        ExpectTurned(code, 1, 1000);
        ExpectTurned(code, 1000, 1);
        ExpectTurned(code, 16, 48);
        ExpectTurned(code, 512, 512); // exactly one block
        ExpectTurned(code, 27, 9709); // one pixel less
        ExpectTurned(code, 5, 52429); // one more
        ExpectTurned(code, 65535, 5);
        ExpectTurned(code, 521, 517); // runs of eight that go on in the next block, on both sides
    }
}

TEST(CoefRotation, FourQuarterTurnsGiveTheMapBack) {
    for (const std::uint32_t code : {1U, 3U}) {
        CChromaCorrectCoef map = PatternMap(37, 20);
        for (int n = 0; n < 4; ++n) {
            CChromaCorrectCoef turned;
            TurnMap(map, map.Width(), map.Height(), code, turned);
            ExpectGainsOne(turned);
            map = std::move(turned);
        }
        EXPECT_EQ(map.Width(), 37);
        ExpectPixels(map, PatternPixel);
    }
}

TEST(CoefRotation, LeavesTheGainsBehind) {
    CChromaCorrectCoef source = PatternMap(9, 4);
    const float gain = 0.5F;
    source.GainGrid().FillWith(&gain, sizeof gain);
    CChromaCorrectCoef target;
    for (std::uint32_t code = 1; code <= 3; ++code) {
        TurnMap(source, 9, 4, code, target);
        ExpectGainsOne(target);
    }
}

TEST(CoefRotation, CutsALargerMapToTheSize) {
    const CChromaCorrectCoef source = PatternMap(10, 10);
    CChromaCorrectCoef target;
    TurnMap(source, 8, 6, 1, target);
    EXPECT_EQ(target.Width(), 6);
    EXPECT_EQ(target.Height(), 8);
    ExpectPixels(target, [](std::int32_t x, std::int32_t y) { return PatternPixel(y, 5 - x); });
}

TEST(CoefRotation, PixelsThatTheSourceDoesNotHoldAreItsDefaults) {
    const CChromaCorrectCoef source = PatternMap(2, 2);
    CChromaCorrectCoef target;
    TurnMap(source, 3, 3, 2, target);
    ExpectPixels(target, [](std::int32_t x, std::int32_t y) {
        return x > 0 && y > 0 ? PatternPixel(2 - x, 2 - y) : SMatrixCoef{};
    });

    CChromaCorrectCoef withoutStorage;
    {
        const CBudgetLimit limit(0);
        withoutStorage.Resize(3, 3);
    }
    TurnMap(withoutStorage, 3, 3, 1, target);
    ExpectPixels(target, [](std::int32_t, std::int32_t) { return SMatrixCoef{}; });
}

TEST(CoefRotation, RowsThatEndInsideTheSizeGoOnWithDefaults) {
    const CChromaCorrectCoef source = PatternMap(40, 20);
    struct SSize {
        std::int32_t width;
        std::int32_t height;
    };
    for (const SSize& size : {SSize{70, 33}, {40, 33}, {41, 20}, {70, 20}, {20, 21}, {200, 3}}) {
        for (std::uint32_t code = 1; code <= 3; ++code) {
            SCOPED_TRACE(testing::Message()
                         << size.width << " x " << size.height << " by " << code);
            CChromaCorrectCoef target;
            TurnMap(source, size.width, size.height, code, target);
            ExpectPixels(target, [&](std::int32_t x, std::int32_t y) {
                const auto [fromX, fromY] = SourceOf(code, size.width, size.height, x, y);
                return fromX < 40 && fromY < 20 ? PatternPixel(fromX, fromY) : SMatrixCoef{};
            });
        }
    }
}

TEST(CoefRotation, ReplacesWhatTheTargetHeld) {
    const CChromaCorrectCoef source = PatternMap(2, 3);
    CChromaCorrectCoef target = PatternMap(50, 50);
    TurnMap(source, 2, 3, 2, target);
    EXPECT_EQ(target.Width(), 2);
    EXPECT_EQ(target.Height(), 3);
    EXPECT_EQ(target.ColourGrid().ElementCount(), 6U);
}

TEST(CoefRotation, EmptySizesAndRefusedMemoryEndWithoutPixels) {
    const CChromaCorrectCoef source = PatternMap(4, 4);
    for (const auto& [width, height] : {std::pair{0, 4}, std::pair{4, 0}, std::pair{-4, 4}}) {
        CChromaCorrectCoef target = PatternMap(2, 2);
        TurnMap(source, width, height, 1, target);
        EXPECT_TRUE(target.IsEmpty());
        EXPECT_FALSE(target.HasStorage());
    }
    const CBudgetLimit limit(0);
    CChromaCorrectCoef target;
    TurnMap(source, 4, 3, 1, target);
    EXPECT_EQ(target.Width(), 3);
    EXPECT_EQ(target.Height(), 4);
    EXPECT_FALSE(target.HasStorage());
}

TEST(CoefRotation, SamplesTurnToTheGivenOnes) {
    for (const std::wstring name :
         {L"Cab_01.9fcoef", L"Cab_02.3fcoef", L"Cab_03.9bcoef", L"Cab_04.3bcoef"}) {
        const SFileKind* kind = FindLoadKind(name);
        ASSERT_NE(kind, nullptr);
        CChromaCorrectCoef source;
        source.Resize(40, 24);
        ASSERT_GE(kind->load(source, Sample(L"cabinet/" + name).c_str()), 0);
        for (const SAngle& angle : kAngles) {
            CChromaCorrectCoef turned;
            TurnMap(source, 40, 24, angle.code, turned);
            // Written and read again, so that the trailing values follow the turned neighbours.
            const CTemporaryFolder folder;
            const std::wstring path = folder.File(L"turned");
            ASSERT_EQ(kind->save(turned, path.c_str()), S_OK);
            CChromaCorrectCoef written;
            written.Resize(turned.Width(), turned.Height());
            ASSERT_GE(kind->load(written, path.c_str()), 0);

            CChromaCorrectCoef expected;
            expected.Resize(turned.Width(), turned.Height());
            const std::wstring turnedFolder =
                L"turned-" + std::wstring(angle.text.substr(0, angle.text.size() - 1)) + L"/";
            ASSERT_GE(
                kind->load(expected, Sample(turnedFolder + ExportName(name, angle.text)).c_str()),
                0);
            ExpectPixels(written, [&](std::int32_t x, std::int32_t y) {
                return *expected.FindElement(x, y);
            });
        }
    }
}

} // namespace
} // namespace trevolt
