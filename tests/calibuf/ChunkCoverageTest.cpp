#include <limits>
#include <vector>

#include "tests/calibuf/StoreSupport.h"
#include "tests/support/BudgetLimit.h"
#include "trevolt/TransferReport.h"

namespace trevolt {
namespace {

using namespace test;

constexpr std::uint32_t kLargest = std::numeric_limits<std::uint32_t>::max();

SChunkRecord Chunk(std::uint32_t x, std::uint32_t y, std::uint16_t width, std::uint16_t height) {
    return {.x = x, .y = y, .width = width, .height = height};
}

/// A file that is header and directory alone, of the 9-word kind where nothing else is said.
Bytes FileOf(SChunkHeader header, const std::vector<SChunkRecord>& records,
             std::uint32_t planeCount = 9) {
    header.recordCount = static_cast<std::uint32_t>(records.size());
    const ChunkHeaderBytes bytes = EncodeChunkHeader(header);
    Bytes file(bytes.begin(), bytes.end());
    for (const SChunkRecord& record : records) {
        file.resize(file.size() + ChunkRecordBytes(planeCount));
        EncodeChunkRecord(record, planeCount,
                          file.data() + file.size() - ChunkRecordBytes(planeCount));
    }
    return file;
}

/// What the report tells of a file that is read into a store without a block.
std::uint64_t MissingIn(const Bytes& file) {
    const CTransferReport report;
    CCaliOperation<S9WordCoef> owner;
    DropStatus(ReadAt(owner.Buffer(), file, 0, 0)); // chunks without data may fail
    return report.MissingPixels();
}

std::uint64_t MissingIn(const SChunkHeader& header, const std::vector<SChunkRecord>& records) {
    return MissingIn(FileOf(header, records));
}

constexpr SChunkHeader kSmall{.width = 300, .height = 200};

TEST(ChunkCoverage, WithoutAChunkAllPixelsAreMissing) {
    EXPECT_EQ(MissingIn(kSmall, {}), 300U * 200);
    EXPECT_EQ(MissingIn(kSmall, {SChunkRecord{}, SChunkRecord{}}), 300U * 200);
    EXPECT_EQ(MissingIn({.width = kLargest, .height = kLargest}, {}),
              std::uint64_t{kLargest} * kLargest);
}

TEST(ChunkCoverage, NothingIsMissingOfAnEmptyArea) {
    EXPECT_EQ(MissingIn({}, {}), 0U);
    EXPECT_EQ(MissingIn({.width = 300}, {}), 0U);
    EXPECT_EQ(MissingIn({.height = 200}, {Chunk(0, 0, 256, 128)}), 0U);
}

TEST(ChunkCoverage, WholeBlocksReachPastTheSize) {
    const std::vector<SChunkRecord> blocks{Chunk(0, 0, 256, 128), Chunk(256, 0, 256, 128),
                                           Chunk(0, 128, 256, 128), Chunk(256, 128, 256, 128)};
    EXPECT_EQ(MissingIn(kSmall, blocks), 0U);
    EXPECT_EQ(MissingIn({.width = 512, .height = 256}, blocks), 0U);
    EXPECT_EQ(MissingIn({.width = 513, .height = 257}, blocks), 513U * 257 - 512 * 256);
}

TEST(ChunkCoverage, EachLackingBlockCountsItsPartOfTheSize) {
    const std::vector<SChunkRecord> blocks{Chunk(0, 0, 256, 128), Chunk(256, 0, 256, 128),
                                           Chunk(0, 128, 256, 128), Chunk(256, 128, 256, 128)};
    const std::array<std::uint64_t, 4> parts{256 * 128, 44 * 128, 256 * 72, 44 * 72};
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        std::vector<SChunkRecord> rest = blocks;
        rest.erase(rest.begin() + static_cast<std::ptrdiff_t>(i));
        EXPECT_EQ(MissingIn(kSmall, rest), parts[i]) << i;
    }
}

TEST(ChunkCoverage, ChunksOffTheBlocksCountTheirPixelsInside) {
    EXPECT_EQ(MissingIn(kSmall, {Chunk(250, 100, 20, 50)}), 300U * 200 - 20 * 50);
    EXPECT_EQ(MissingIn(kSmall, {Chunk(299, 199, 256, 128)}), 300U * 200 - 1);
    EXPECT_EQ(MissingIn(kSmall, {Chunk(300, 0, 256, 128)}), 300U * 200);
    EXPECT_EQ(MissingIn(kSmall, {Chunk(0, 200, 256, 128)}), 300U * 200);
    EXPECT_EQ(MissingIn(kSmall, {Chunk(255, 127, 2, 2)}), 300U * 200 - 4);
    EXPECT_EQ(MissingIn(kSmall, {Chunk(kLargest, kLargest, 256, 128)}), 300U * 200);
}

TEST(ChunkCoverage, OverlappingChunksCountOnce) {
    const SChunkRecord block = Chunk(0, 0, 256, 128);
    EXPECT_EQ(MissingIn(kSmall, {block, block, block}), 300U * 200 - 256 * 128);
    EXPECT_EQ(MissingIn(kSmall, {Chunk(10, 10, 20, 20), Chunk(20, 20, 20, 20)}),
              300U * 200 - (400 + 400 - 100));
    EXPECT_EQ(MissingIn(kSmall, {Chunk(10, 10, 20, 20), Chunk(12, 12, 2, 2)}), 300U * 200 - 400);
    // Side by side, above each other, and over the corner of four blocks.
    EXPECT_EQ(MissingIn(kSmall, {Chunk(0, 0, 64, 1), Chunk(64, 0, 64, 1), Chunk(0, 1, 256, 1)}),
              300U * 200 - 128 - 256);
    EXPECT_EQ(MissingIn(kSmall, {Chunk(246, 118, 20, 20), Chunk(256, 128, 20, 20), block}),
              300U * 200 - (256 * 128 + 2 * 10 * 10 + 400));
    // Far from each other nothing overlaps, whatever the blocks' numbers have in common.
    EXPECT_EQ(MissingIn({.width = 16777217, .height = 129},
                        {Chunk(0, 128, 1, 1), Chunk(65536, 0, 1, 1), Chunk(131072, 0, 1, 1),
                         Chunk(16777216, 0, 1, 1)}),
              std::uint64_t{16777217} * 129 - 4);
    // The same blocks in another order, with others between them.
    EXPECT_EQ(MissingIn(kSmall, {block, Chunk(256, 128, 1, 1), block, Chunk(256, 0, 1, 1), block}),
              300U * 200 - 256 * 128 - 2);
}

TEST(ChunkCoverage, TheAreaBeginsAtTheOrigin) {
    const SChunkHeader header{.originX = 1000, .originY = 777, .width = 30, .height = 20};
    EXPECT_EQ(MissingIn(header, {}), 600U);
    EXPECT_EQ(MissingIn(header, {Chunk(1000, 777, 30, 20)}), 0U);
    EXPECT_EQ(MissingIn(header, {Chunk(0, 0, 30, 20)}), 600U);
    EXPECT_EQ(MissingIn(header, {Chunk(990, 770, 20, 10)}), 600U - 10 * 3);
    EXPECT_EQ(MissingIn(header, {Chunk(768, 768, 256, 128)}), 600U - 24 * 20);
    EXPECT_EQ(MissingIn(header, {Chunk(744, 768, 256, 128)}), 600U);
}

TEST(ChunkCoverage, AreasPastThirtyTwoBitsAreMeasured) {
    const SChunkHeader header{
        .originX = kLargest, .originY = kLargest, .width = kLargest, .height = kLargest};
    const std::uint64_t all = std::uint64_t{kLargest} * kLargest;
    EXPECT_EQ(MissingIn(header, {}), all);
    EXPECT_EQ(MissingIn(header, {Chunk(kLargest, kLargest, 2, 3)}), all - 6);
    EXPECT_EQ(MissingIn(header, {Chunk(kLargest - 1, kLargest, 2, 3)}), all - 3);
    EXPECT_EQ(MissingIn(header, {Chunk(kLargest - 2, kLargest, 2, 3)}), all);
}

TEST(ChunkCoverage, ManyOverlappingChunksTakeLittleTime) {
    std::vector<SChunkRecord> records(20000, Chunk(128, 64, 256, 128));
    for (std::size_t i = 0; i < records.size(); ++i)
        records[i].x += i % 2;
    EXPECT_EQ(MissingIn({.width = kLargest, .height = kLargest}, records),
              std::uint64_t{kLargest} * kLargest - 257 * 128);
}

TEST(ChunkCoverage, RecordsTooLargeCountAsABlock) {
    EXPECT_EQ(MissingIn({.width = 70000, .height = 70000}, {Chunk(0, 0, 0, 0xFFFF)}),
              std::uint64_t{70000} * 70000);
    EXPECT_EQ(MissingIn({.width = 70000, .height = 70000}, {Chunk(0, 0, 0xFFFF, 0xFFFF)}),
              std::uint64_t{70000} * 70000 - 256 * 128);
}

// ---- files with chunks ----

/// A file of what `rect` covers of a store of such a size.
Bytes StoredFile(std::uint32_t width, std::uint32_t height, const SPixelRect& rect) {
    CCaliOperation<S9WordCoef> source;
    EXPECT_EQ(source.Buffer().Allocate(width, height), S_OK);
    FillPattern(source);
    return RectFile(source.Buffer(), rect);
}

TEST(ChunkCoverage, WrittenFilesAreWhole) {
    EXPECT_EQ(MissingIn(StoredFile(300, 200, {0, 0, 300, 200})), 0U);
    EXPECT_EQ(MissingIn(StoredFile(500, 300, {101, 33, 401, 270})), 0U);
    EXPECT_EQ(MissingIn(StoredFile(300, 200, {0, 0, 600, 100})), (600U - 512) * 100);
}

TEST(ChunkCoverage, AFailedChunkIsNotMissing) {
    Bytes file = StoredFile(300, 200, {0, 0, 300, 200});
    SChunkRecord record = RecordAt(file, 9, 1);
    record.planeSizes[0] += 1;
    EncodeChunkRecord(record, 9, &file[168 + 56]);
    CCaliOperation<S9WordCoef> owner;
    ASSERT_EQ(owner.Buffer().Allocate(300, 200), S_OK);
    {
        const CTransferReport report;
        EXPECT_EQ(ReadAt(owner.Buffer(), file, 0, 0), S_OK);
        EXPECT_EQ(report.FailedChunks(), 1U);
        EXPECT_EQ(report.MissingPixels(), 0U);
    }
    // So has one whose data the stream does not hold.
    file.resize(file.size() - 1);
    const CTransferReport report;
    EXPECT_EQ(ReadAt(owner.Buffer(), file, 0, 0), E_FAIL);
    EXPECT_EQ(report.FailedChunks(), 2U);
    EXPECT_EQ(report.MissingPixels(), 0U);
}

TEST(ChunkCoverage, NeitherClipNorPositionNorStoreCount) {
    Bytes file = StoredFile(300, 200, {0, 0, 300, 200});
    EncodeChunkRecord(Chunk(0, 0, 0, 0), 9, &file[168]); // and all data behind it is damaged
    CCaliOperation<S9WordCoef> owner;
    ASSERT_EQ(owner.Buffer().Allocate(10, 10), S_OK);
    const CTransferReport report;
    DropStatus(ReadAt(owner.Buffer(), file, 700, 900, 5, 5)); // decides nothing here
    EXPECT_EQ(report.MissingPixels(), 256U * 128);
}

TEST(ChunkCoverage, ImagesAreMeasuredFromTheirCorner) {
    CCaliOperation<S9WordCoef> owner;
    ASSERT_EQ(owner.Buffer().Allocate(300, 200), S_OK);
    Bytes image(static_cast<std::size_t>(owner.Buffer().MaxMemoryImageBytes()));
    ASSERT_EQ(owner.Buffer().SaveToMemory(image.data(), 1000, 777), S_OK);
    {
        const CTransferReport report;
        EXPECT_EQ(owner.Buffer().LoadFromMemory(image.data()), S_OK);
        EXPECT_EQ(report.MissingPixels(), 0U);
    }
    StoreLittle<std::uint32_t>(&image[chunk_header::kWidth], 600);
    const CTransferReport report;
    EXPECT_EQ(owner.Buffer().LoadFromMemory(image.data()), S_OK);
    EXPECT_EQ(report.MissingPixels(), (600U - 512) * 200);
}

TEST(ChunkCoverage, SingleWordStoresNotePixelsWithoutAWordAlone) {
    const SChunkRecord outside = Chunk(290, 190, 20, 5);
    CCaliOperation<SWordCoef> extra;
    const CTransferReport report;
    std::stringstream stream = StreamOf(
        FileOf({.width = 300, .height = 200, .directoryOffset = 168}, {Chunk(0, 0, 256, 128)}, 1));
    EXPECT_EQ(extra.Buffer().ReadRectChunks(stream, 0, 0, 0, 0), S_OK);
    EXPECT_EQ(report.MissingExtraWords(), 300U * 200 - 256 * 128);
    stream = StreamOf(
        FileOf({.width = 300, .height = 200, .directoryOffset = 168}, {outside, outside}, 1));
    EXPECT_EQ(extra.Buffer().ReadRectChunks(stream, 0, 0, 0, 0), S_OK);
    EXPECT_EQ(report.MissingExtraWords(), 300U * 200 - 256 * 128 + 300U * 200 - 10 * 5);
    EXPECT_EQ(report.MissingPixels(), 0U);
    EXPECT_EQ(report.RepeatedPixels(), 0U);
    EXPECT_EQ(report.ChunksOutside(), 0U);
    EXPECT_EQ(report.ForeignIndices(), 0U);
}

TEST(ChunkCoverage, BandsNoteNothing) {
    CCaliOperation<S9WordCoef> owner;
    const CTransferReport report;
    std::stringstream stream = StreamOf(FileOf(kSmall, {}));
    EXPECT_EQ(owner.Buffer().ReadBandChunks(stream, 0, 0, 0, kGridBlocks), S_OK);
    EXPECT_EQ(report.MissingPixels(), 0U);
}

TEST(ChunkCoverage, WithoutMemoryForCountingTheFileIsRead) {
    // Small chunks need little scratch memory, the pieces of so many of them more.
    const std::vector<SChunkRecord> records(1000, Chunk(10, 10, 2, 2));
    std::stringstream stream = StreamOf(FileOf(kSmall, records));
    CCaliOperation<S9WordCoef> owner;
    const CBudgetLimit limit(CMemoryBudget::Process().Outstanding() + 1000 * 56 + 10000);
    const CTransferReport report;
    EXPECT_EQ(owner.Buffer().ReadRectChunks(stream, 0, 0, 0, 0), S_OK);
    EXPECT_EQ(owner.Buffer().LastRead(), (SChunkCounts{.skipped = 1000}));
    EXPECT_TRUE(report.WasMemoryRefused());
    EXPECT_EQ(report.MissingPixels(), 0U);
}

} // namespace
} // namespace trevolt
