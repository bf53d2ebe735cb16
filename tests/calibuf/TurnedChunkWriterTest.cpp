#include "calibuf/TurnedChunkWriter.h"

#include "tests/calibuf/StoreSupport.h"
#include "tests/support/BudgetLimit.h"
#include "tests/support/Streams.h"
#include "trevolt/QuarterTurn.h"

namespace trevolt {
namespace {

using namespace test;

constexpr std::uint32_t kWidth = 300;
constexpr std::uint32_t kHeight = 140;

/// Planes of the pattern in one piece, or in the left blocks alone.
CWordPlanes PatternPlanes(bool isWhole) {
    CWordPlanes planes(kWordElementKind<S3WordCoef>, kWidth, kHeight);
    EXPECT_TRUE(!isWhole || planes.HoldAll());
    for (std::uint32_t y = 0; y < kHeight; ++y) {
        for (std::uint32_t x = 0; x < (isWhole ? kWidth : kBlockWidth); ++x) {
            EXPECT_TRUE(isWhole || planes.HoldBlock(x, y));
            for (std::uint32_t k = 0; k < 3; ++k)
                *planes.At(k, x, y) = PatternWord(x, y, k);
        }
    }
    return planes;
}

/// What a store of the turned pixels writes.
Bytes StoredTurn(const SPlaneTurn& turn, std::uint32_t heldWidth) {
    const CQuarterTurn forth(turn.code, turn.size.width, turn.size.height);
    const PixelSize turned = forth.TurnedSize();
    CCaliOperation<S3WordCoef> owner;
    EXPECT_EQ(owner.Buffer().Allocate(static_cast<std::uint32_t>(turned.width),
                                      static_cast<std::uint32_t>(turned.height)),
              S_OK);
    for (std::uint32_t y = 0; y < turn.size.height; ++y) {
        for (std::uint32_t x = 0; x < turn.size.width; ++x) {
            const PixelPosition at = forth.Turned(x, y);
            S3WordCoef& element =
                *owner.Find(static_cast<std::uint32_t>(at.x), static_cast<std::uint32_t>(at.y));
            if (x >= kWidth || y >= kHeight)
                std::copy_n(turn.beyond.begin(), element.w.size(), element.w.begin());
            else if (x < heldWidth)
                element = PatternElement<S3WordCoef>(x, y);
        }
    }
    std::stringstream stream;
    EXPECT_EQ(owner.Buffer().WriteRectChunks(stream, turn.Rect()), S_OK);
    return BytesOf(stream);
}

TEST(TurnedChunkWriter, WritesWhatAStoreOfTheTurnedPixelsWrites) {
    for (const bool isWhole : {true, false}) {
        const CWordPlanes planes = PatternPlanes(isWhole);
        for (const std::uint32_t code : {1U, 2U, 3U}) {
            const SPlaneTurn turn{{310, 141}, code, {7, 8, 9}}; // no default words
            const Bytes expected = StoredTurn(turn, isWhole ? kWidth : kBlockWidth);
            for (const std::size_t threads : {0U, 1U, 3U}) {
                std::stringstream stream;
                EXPECT_EQ(WriteTurnedChunks(stream, planes, turn, threads), S_OK);
                EXPECT_TRUE(BytesOf(stream) == expected) << code << ", " << threads << " threads";
            }
        }
    }
}

TEST(TurnedChunkWriter, RefusedScratchMemoryWritesNothing) {
    const CWordPlanes planes = PatternPlanes(true);
    for (const std::size_t threads : {1U, 3U}) {
        const CBudgetLimit limit(CMemoryBudget::Process().Outstanding() + 100);
        std::stringstream stream;
        EXPECT_EQ(WriteTurnedChunks(stream, planes, {{kWidth, kHeight}, 2, {}}, threads),
                  E_COEF_NOBUFFER);
        EXPECT_EQ(stream.str().size(), 0U);
    }
}

// However many threads there are for it.
TEST(TurnedChunkWriter, APieceTakesTheMemoryOfOne) {
    const CWordPlanes planes = PatternPlanes(true);
    const CBudgetLimit limit(CMemoryBudget::Process().Outstanding() + 4000);
    for (const std::size_t threads : {1U, 8U}) {
        std::stringstream stream;
        EXPECT_EQ(WriteTurnedChunks(stream, planes, {{10, 10}, 2, {}}, threads), S_OK);
    }
}

TEST(TurnedChunkWriter, AStreamThrowsOnTheCallingThreadWhatItIsSetTo) {
    const CWordPlanes planes = PatternPlanes(true);
    for (const std::size_t threads : {1U, 3U}) {
        CFullDisk full(1000);
        full.exceptions(std::ios::badbit);
        EXPECT_THROW(
            DropStatus(WriteTurnedChunks(full, planes, {{kWidth, kHeight}, 2, {}}, threads)),
            std::ios::failure);
        EXPECT_EQ(full.exceptions(), std::ios::badbit);
    }
}

} // namespace
} // namespace trevolt
