#include "trevolt/MassiveGrid.h"

#include <cstring>
#include <utility>

#include <gtest/gtest.h>

#include "platform/FileStream.h"
#include "tests/support/CoefMaps.h"
#include "tests/support/ExtremeNumbers.h"

namespace trevolt {
namespace {

using test::Bytes;
using test::CBudgetLimit;
using test::CTemporaryFolder;
using test::kInt32Max;

void Number(CMassiveGrid& grid, std::uint32_t first) {
    for (std::uint32_t i = 0; i < grid.ElementCount(); ++i) {
        const std::uint32_t value = first + i;
        std::memcpy(grid.Element(i), &value, sizeof value);
    }
}

std::uint32_t ValueAt(const CMassiveGrid& grid, std::uint32_t index) {
    std::uint32_t value = 0;
    std::memcpy(&value, grid.Element(index), sizeof value);
    return value;
}

CMassiveGrid NumberedGrid(std::int32_t width, std::int32_t height, std::uint32_t first) {
    CMassiveGrid grid(4);
    EXPECT_TRUE(grid.Resize(width, height));
    Number(grid, first);
    return grid;
}

TEST(MassiveGrid, HoldsBlocksOfTwoToThe18Elements) {
    CMassiveGrid grid(48);
    EXPECT_EQ(grid.BlockBytes(), 0xC00000U);
    EXPECT_EQ(CMassiveGrid(4).BlockBytes(), 0x100000U);
    EXPECT_EQ(CMassiveGrid(36).BlockBytes(), 0x900000U);
    EXPECT_EQ(CMassiveGrid(12).BlockBytes(), 0x300000U);
    EXPECT_EQ(CMassiveGrid(9).BlockBytes(), 0x240000U);
    EXPECT_EQ(CMassiveGrid(3).BlockBytes(), 0xC0000U);
    EXPECT_FALSE(grid.HasStorage());
    EXPECT_EQ(grid.Width(), 0U);
    EXPECT_EQ(grid.BlockCursor(), -1);
    EXPECT_EQ(grid.OffsetCursor(), -1);
}

TEST(MassiveGrid, FindsElementsByBlockAndOffset) {
    CMassiveGrid grid(4);
    ASSERT_TRUE(grid.Resize(65535, 5));
    EXPECT_EQ(grid.ByteCount(), 65535U * 5U * 4U);
    ASSERT_EQ(grid.BlockCount(), 2U);
    EXPECT_EQ(grid.Element(0), grid.Block(0));
    EXPECT_EQ(grid.Element(262143), grid.Block(0) + std::size_t{262143} * 4);
    EXPECT_EQ(grid.Element(262144), grid.Block(1));
    EXPECT_EQ(grid.Element(262145), grid.Block(1) + 4);
    EXPECT_EQ(grid.RunLength(0), 262144U);
    EXPECT_EQ(grid.RunLength(262143), 1U);
    EXPECT_EQ(grid.RunLength(262144), 65535U * 5U - 262144U);
    EXPECT_EQ(grid.RunLength(65535U * 5U - 1), 1U);
}

TEST(MassiveGrid, ResizesToNothingAndRefusesNegativeSizes) {
    CMassiveGrid grid = NumberedGrid(3, 2, 0);
    EXPECT_TRUE(grid.Resize(0, 7));
    EXPECT_EQ(grid.ByteCount(), 0U);
    EXPECT_EQ(grid.Height(), 7U);
    EXPECT_FALSE(grid.Resize(-1, 7));
    EXPECT_EQ(grid.Height(), 0U);
    EXPECT_FALSE(grid.Resize(7, -1));
    EXPECT_FALSE(grid.Resize(-3, -3));
    EXPECT_FALSE(grid.HasStorage());
}

TEST(MassiveGrid, RefusesMoreElementsThanAnInt32Counts) {
    CMassiveGrid grid(1);
    EXPECT_FALSE(grid.Resize(65536, 32768)); // 2^31
    EXPECT_FALSE(grid.Resize(65535, 65535));
    EXPECT_FALSE(grid.Resize(kInt32Max, kInt32Max));
    EXPECT_EQ(grid.Width(), 0U);
}

TEST(MassiveGrid, IsEmptyWhenMemoryIsRefused) {
    CMassiveGrid grid = NumberedGrid(3, 2, 0);
    const CBudgetLimit limit(100);
    EXPECT_FALSE(grid.Resize(26, 1));
    EXPECT_EQ(grid.Width(), 0U);
    EXPECT_EQ(grid.Height(), 0U);
    EXPECT_FALSE(grid.HasStorage());
    EXPECT_TRUE(grid.Resize(25, 1)); // exactly the limit
}

TEST(MassiveGrid, TakesAShapeThatFitsItsStorage) {
    CMassiveGrid grid = NumberedGrid(6, 4, 0);
    EXPECT_TRUE(grid.SetShape(8, 3));
    EXPECT_EQ(grid.Width(), 8U);
    EXPECT_FALSE(grid.SetShape(8, 4));
    EXPECT_FALSE(grid.SetShape(0, 0));
    EXPECT_FALSE(grid.SetShape(65536, 65536)); // 2^32 elements are not 0
    EXPECT_EQ(grid.Width(), 8U);
    EXPECT_EQ(grid.Height(), 3U);
}

TEST(MassiveGrid, CopiesTheWholeStorageOfTheSameShape) {
    const CMassiveGrid source = NumberedGrid(700, 400, 5);
    CMassiveGrid grid(4);
    ASSERT_TRUE(grid.Resize(700, 400));
    ASSERT_TRUE(grid.CopyRegionFrom(&source, 700, 400));
    for (std::uint32_t i = 0; i < 700 * 400; ++i)
        ASSERT_EQ(ValueAt(grid, i), 5 + i);
}

TEST(MassiveGrid, CopiesTheOverlapOfOtherShapes) {
    const CMassiveGrid source = NumberedGrid(3, 4, 100);
    CMassiveGrid grid = NumberedGrid(5, 2, 0);
    ASSERT_TRUE(grid.CopyRegionFrom(&source, 3, 4));
    const std::array<std::uint32_t, 10> expected{100, 101, 102, 3, 4, 103, 104, 105, 8, 9};
    for (std::uint32_t i = 0; i < expected.size(); ++i)
        EXPECT_EQ(ValueAt(grid, i), expected[i]) << i;
    EXPECT_EQ(grid.BlockCursor(), -1);
    EXPECT_EQ(grid.OffsetCursor(), -1);
}

// The source's rows are as long as the caller says, whatever its own shape is.
TEST(MassiveGrid, CopyTakesTheSourcesPitchFromTheCaller) {
    const CMassiveGrid source = NumberedGrid(6, 2, 100);
    CMassiveGrid grid = NumberedGrid(2, 3, 0);
    ASSERT_TRUE(grid.CopyRegionFrom(&source, 3, 4));
    const std::array<std::uint32_t, 6> expected{100, 101, 103, 104, 106, 107};
    for (std::uint32_t i = 0; i < expected.size(); ++i)
        EXPECT_EQ(ValueAt(grid, i), expected[i]) << i;
}

TEST(MassiveGrid, KeepsItsShapeWhenTheWholeStorageIsCopied) {
    const CMassiveGrid source = NumberedGrid(2, 6, 100);
    CMassiveGrid grid = NumberedGrid(3, 4, 0);
    ASSERT_TRUE(grid.CopyRegionFrom(&source, 3, 4));
    EXPECT_EQ(grid.Width(), 3U);
    EXPECT_EQ(grid.Height(), 4U);
    EXPECT_EQ(ValueAt(grid, 11), 111U);
    ASSERT_TRUE(grid.CopyRegionFrom(&grid, 3, 4));
    EXPECT_EQ(grid.Height(), 4U);
    EXPECT_EQ(ValueAt(grid, 11), 111U);
}

void ExpectNothing(const CMassiveGrid& grid) {
    EXPECT_EQ(grid.Width(), 0U);
    EXPECT_EQ(grid.Height(), 0U);
    EXPECT_EQ(grid.ByteCount(), 0U);
    EXPECT_EQ(grid.BlockCount(), 0U);
    EXPECT_FALSE(grid.HasStorage());
}

TEST(MassiveGrid, HasNoShapeWhenACopyIsRefused) {
    const CMassiveGrid source = NumberedGrid(3, 2, 100);
    CMassiveGrid grid = NumberedGrid(3, 2, 0);
    const CBudgetLimit none(0);
    EXPECT_FALSE(grid.CopyRegionFrom(&source, 3, 2));
    ExpectNothing(grid);
}

TEST(MassiveGrid, HasNoShapeWhenItsBufferIsReplacedOrFreed) {
    const CMassiveGrid source = NumberedGrid(2, 2, 100);
    CMassiveGrid grid = NumberedGrid(3, 2, 0);
    CMassiveBuf& buffer = grid;
    ASSERT_TRUE(buffer.CopyFrom(source));
    EXPECT_EQ(grid.Width(), 0U);
    EXPECT_EQ(grid.ElementCount(), 4U);
    ASSERT_TRUE(grid.SetShape(4, 1));
    ASSERT_TRUE(buffer.Allocate(24));
    EXPECT_EQ(grid.Width(), 0U);
    ASSERT_TRUE(grid.SetShape(3, 2));
    buffer.Release();
    ExpectNothing(grid);
}

TEST(MassiveGrid, HasNoShapeBehindADecompressionOrARawImage) {
    const CTemporaryFolder folder;
    const std::wstring path = folder.File(L"grid");
    std::fstream stream;
    ASSERT_TRUE(OpenFileStream(stream, path.c_str(), std::ios::out | std::ios::trunc));
    ASSERT_EQ(NumberedGrid(3, 2, 7).CompressToFile(stream), S_OK);
    stream.close();

    CMassiveGrid grid = NumberedGrid(5, 5, 0);
    ASSERT_TRUE(OpenFileStream(stream, path.c_str(), std::ios::in));
    const std::uint64_t whole = BytesToEnd(stream).value();
    ASSERT_EQ(grid.UncompressFromFile(stream, whole), S_OK);
    EXPECT_EQ(grid.Width(), 0U);
    EXPECT_EQ(grid.Height(), 0U);
    ASSERT_TRUE(grid.SetShape(3, 2));
    EXPECT_EQ(ValueAt(grid, 5), 12U);

    stream.seekg(0);
    EXPECT_EQ(grid.UncompressFromFile(stream, whole - 1), E_FAIL);
    ExpectNothing(grid);

    ASSERT_TRUE(grid.Resize(3, 2));
    stream.seekg(0); // the frame's first bytes are no byte count
    EXPECT_EQ(grid.ReadFromFile(stream), E_FAIL);
    ExpectNothing(grid);
}

TEST(MassiveGrid, IsEmptyWhenMovedFrom) {
    CMassiveGrid grid = NumberedGrid(3, 2, 100);
    CMassiveGrid moved(std::move(grid));
    ExpectNothing(grid); // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(moved.Width(), 3U);
    EXPECT_EQ(moved.Height(), 2U);
    EXPECT_EQ(ValueAt(moved, 5), 105U);

    CMassiveGrid other = NumberedGrid(1, 1, 0);
    other = std::move(moved);
    ExpectNothing(moved); // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(other.Width(), 3U);
    EXPECT_EQ(other.Height(), 2U);
    EXPECT_EQ(ValueAt(other, 5), 105U);
    EXPECT_FALSE(moved.CopyRegionFrom(&other, 0, 0));
    EXPECT_TRUE(moved.Resize(2, 2)); // and of use
    EXPECT_EQ(moved.ElementBytes(), 4U);

    CMassiveGrid wide(48);
    wide = std::move(other);
    EXPECT_EQ(wide.ElementBytes(), 4U);
    EXPECT_EQ(wide.BlockBytes(), 0x100000U);
    CMassiveGrid& same = wide;
    wide = std::move(same);
    EXPECT_EQ(wide.Width(), 3U);
    EXPECT_EQ(ValueAt(wide, 5), 105U);
}

TEST(MassiveGrid, CopyStopsWhereTheSourceEnds) {
    const CMassiveGrid source = NumberedGrid(3, 1, 100);
    CMassiveGrid grid = NumberedGrid(2, 3, 0);
    EXPECT_FALSE(grid.CopyRegionFrom(&source, 3, 3));
    EXPECT_EQ(ValueAt(grid, 1), 101U);
    EXPECT_EQ(ValueAt(grid, 2), 2U);

    // Of the same shape too: nothing is copied that leaves the grid smaller than it says.
    CMassiveGrid same = NumberedGrid(3, 3, 0);
    EXPECT_FALSE(same.CopyRegionFrom(&source, 3, 3));
    EXPECT_EQ(same.ElementCount(), 9U);
}

TEST(MassiveGrid, CopyRefusesNullAndEmptyRegionsAndOtherElements) {
    const CMassiveGrid source = NumberedGrid(2, 2, 0);
    CMassiveGrid grid = NumberedGrid(2, 2, 50);
    EXPECT_FALSE(grid.CopyRegionFrom(nullptr, 2, 2));
    EXPECT_FALSE(grid.CopyRegionFrom(&source, 0, 2));
    EXPECT_FALSE(grid.CopyRegionFrom(&source, 2, -1));
    CMassiveGrid bytes(1);
    ASSERT_TRUE(bytes.Resize(2, 2));
    EXPECT_FALSE(grid.CopyRegionFrom(&bytes, 2, 2));
    EXPECT_FALSE(grid.CopyRegionFrom(&bytes, 1, 2)); // of another shape too
    EXPECT_EQ(ValueAt(grid, 0), 50U);
}

} // namespace
} // namespace trevolt
