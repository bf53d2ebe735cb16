#include <cmath>
#include <functional>

#include "platform/FileStream.h"
#include "tests/calibuf/StoreSupport.h"
#include "tests/support/BudgetLimit.h"
#include "trevolt/TransferReport.h"

namespace trevolt {
namespace {

using namespace test;

template <class T>
class ChunkReaderOf : public ::testing::Test {
  protected:
    /// A chunk file of `rect` of a store of such a size that holds the pattern.
    static Bytes PatternFile(std::uint32_t width, std::uint32_t height, const SPixelRect& rect) {
        CCaliOperation<T> source;
        EXPECT_EQ(source.Buffer().Allocate(width, height), S_OK);
        FillPattern(source);
        return RectFile(source.Buffer(), rect);
    }

    CCaliOperation<T> m_owner;
    CCaliBuf& m_store = m_owner.Buffer();
};
TYPED_TEST_SUITE(ChunkReaderOf, AllElements);

TYPED_TEST(ChunkReaderOf, WholeBlocksRoundTripThroughAStream) {
    CCaliOperation<TypeParam> source;
    ASSERT_EQ(source.Buffer().Allocate(300, 200), S_OK);
    FillPattern(source);
    std::stringstream stream =
        StreamBehind({.width = 300, .height = 200, .recordCount = 4, .directoryOffset = 168});
    ASSERT_EQ(source.Buffer().WriteAllChunks(stream), S_OK);
    ASSERT_EQ(this->m_store.Allocate(300, 200), S_OK);
    EXPECT_EQ(ReadAt(this->m_store, BytesOf(stream), 0, 0), S_OK);
    EXPECT_TRUE(HoldSame(this->m_store, source.Buffer()));
    EXPECT_EQ(this->m_store.LastRead(), (SChunkCounts{.read = 4}));
}

TYPED_TEST(ChunkReaderOf, MemoryImageRoundTrips) {
    CCaliOperation<TypeParam> source;
    ASSERT_EQ(source.Buffer().Allocate(300, 200), S_OK);
    FillPattern(source);
    Bytes image(static_cast<std::size_t>(source.Buffer().MaxMemoryImageBytes()));
    std::uint64_t size = 0;
    ASSERT_EQ(source.Buffer().SaveToMemory(image.data(), 0, 0, &size), S_OK);
    image.resize(static_cast<std::size_t>(size));
    ASSERT_EQ(this->m_store.Allocate(300, 200), S_OK);
    EXPECT_EQ(this->m_store.LoadFromMemory(image.data(), image.size()), S_OK);
    EXPECT_TRUE(HoldSame(this->m_store, source.Buffer()));
    ASSERT_EQ(this->m_store.Allocate(300, 200), S_OK);
    EXPECT_EQ(this->m_store.LoadFromMemory(image.data()), S_OK);
    EXPECT_TRUE(HoldSame(this->m_store, source.Buffer()));
}

TYPED_TEST(ChunkReaderOf, MemoryImageIsMovedByItsOrigin) {
    CCaliOperation<TypeParam> source;
    ASSERT_EQ(source.Buffer().Allocate(256, 128), S_OK);
    FillPattern(source);
    Bytes image(static_cast<std::size_t>(source.Buffer().MaxMemoryImageBytes()));
    ASSERT_EQ(source.Buffer().SaveToMemory(image.data(), 100, 50), S_OK);
    ASSERT_EQ(this->m_store.Allocate(356, 178), S_OK);
    EXPECT_EQ(this->m_store.LoadFromMemory(image.data(), image.size()), S_OK);
    EXPECT_EQ(CountUnlikePattern(this->m_owner, 100, 50, 356, 178, 100, 50), 0);
    EXPECT_EQ(this->m_owner.Find(99, 50)->w, TypeParam{}.w);
    EXPECT_EQ(this->m_owner.Find(100, 49)->w, TypeParam{}.w);
}

TYPED_TEST(ChunkReaderOf, RectanglesOffTheBlocksAreMovedToTheCaller) {
    const SPixelRect rect{101, 33, 401, 270};
    const Bytes file = this->PatternFile(500, 300, rect);
    ASSERT_EQ(this->m_store.Allocate(620, 400), S_OK);
    EXPECT_EQ(ReadAt(this->m_store, file, 0, 0), S_OK); // to the left and up
    EXPECT_EQ(CountUnlikePattern(this->m_owner, 0, 0, 300, 237, 0U - 101, 0U - 33), 0);
    EXPECT_EQ(this->m_owner.Find(300, 0)->w, TypeParam{}.w);
    EXPECT_EQ(this->m_owner.Find(0, 237)->w, TypeParam{}.w);
    ASSERT_EQ(this->m_store.Allocate(620, 400), S_OK);
    EXPECT_EQ(ReadAt(this->m_store, file, 310, 150), S_OK); // to the right and down
    EXPECT_EQ(CountUnlikePattern(this->m_owner, 310, 150, 610, 387, 310 - 101, 150 - 33), 0);
    EXPECT_EQ(this->m_owner.Find(309, 150)->w, TypeParam{}.w);
    EXPECT_EQ(this->m_store.LastRead().failed, 0U);
}

TYPED_TEST(ChunkReaderOf, OnePixelWideAndHigh) {
    for (const SPixelRect rect : {SPixelRect{255, 0, 256, 300}, SPixelRect{0, 127, 500, 128},
                                  SPixelRect{256, 128, 257, 129}}) {
        const Bytes file = this->PatternFile(500, 300, rect);
        ASSERT_EQ(this->m_store.Allocate(500, 300), S_OK);
        const auto x0 = static_cast<std::uint32_t>(rect.left);
        const auto y0 = static_cast<std::uint32_t>(rect.top);
        EXPECT_EQ(ReadAt(this->m_store, file, x0, y0), S_OK);
        EXPECT_EQ(CountUnlikePattern(this->m_owner, x0, y0, static_cast<std::uint32_t>(rect.right),
                                     static_cast<std::uint32_t>(rect.bottom)),
                  0);
        // The pattern is nowhere the default, so that nothing else was written.
        EXPECT_EQ(CountUnlikeDefault(this->m_owner), rect.Width() * rect.Height());
    }
}

/// Two stores that hold nothing but the last block of the grid: one with the pattern, one fresh.
template <class T>
class LastBlockOf : public ::testing::Test {
  protected:
    static constexpr std::uint32_t kLeft = 511 * 256;
    static constexpr std::uint32_t kTop = 511 * 128;

    LastBlockOf() {
        for (CCaliBuf* store : {&m_source.Buffer(), &m_target.Buffer()}) {
            EXPECT_EQ(store->AllocateBlock(262143, kLeft, kTop), S_OK);
            EXPECT_EQ(store->FillBlockDefault(262143), S_OK);
        }
        for (std::uint32_t y = kTop; y < 65536; ++y)
            for (std::uint32_t x = kLeft; x < 131072; ++x)
                *m_source.Find(x, y) = PatternElement<T>(x, y);
    }

    CCaliOperation<T> m_source;
    CCaliOperation<T> m_target;
    CCaliBuf& m_store = m_target.Buffer();
};
TYPED_TEST_SUITE(LastBlockOf, AllElements);

TYPED_TEST(LastBlockOf, RectanglesThatEndWithTheGridRoundTrip) {
    for (const SPixelRect rect :
         {SPixelRect{131000, 65500, 131072, 65536}, SPixelRect{131071, 65500, 131072, 65536},
          SPixelRect{131000, 65535, 131072, 65536}, SPixelRect{131071, 65535, 131072, 65536}}) {
        const auto x0 = static_cast<std::uint32_t>(rect.left);
        const auto y0 = static_cast<std::uint32_t>(rect.top);
        ASSERT_EQ(this->m_store.FillBlockDefault(262143), S_OK);
        EXPECT_EQ(ReadAt(this->m_store, RectFile(this->m_source.Buffer(), rect), x0, y0), S_OK);
        EXPECT_EQ(this->m_store.LastRead(), (SChunkCounts{.read = 1}));
        EXPECT_EQ(CountUnlikePattern(this->m_target, x0, y0, 131072, 65536), 0);
        EXPECT_EQ(CountUnlikeDefault(this->m_target), rect.Width() * rect.Height());
    }
}

TYPED_TEST(LastBlockOf, WhatIsShiftedOffTheGridIsSkipped) {
    const Bytes file = RectFile(this->m_source.Buffer(), {131000, 65500, 131072, 65536});
    // Half of it: the rest still comes.
    EXPECT_EQ(ReadAt(this->m_store, file, 131036, 65518), S_OK);
    EXPECT_EQ(CountUnlikePattern(this->m_target, 131036, 65518, 131072, 65536, 36, 18), 0);
    EXPECT_EQ(CountUnlikeDefault(this->m_target), 36 * 18);
    // All of it: a missing block, not the first block of another row.
    EXPECT_EQ(ReadAt(this->m_store, file, 131072, 65500), S_OK);
    EXPECT_EQ(this->m_store.LastRead(), (SChunkCounts{.skipped = 1}));
    EXPECT_EQ(ReadAt(this->m_store, file, 0xFFFFFFFF, 0xFFFFFFFF), S_OK);
    EXPECT_EQ(this->m_store.LastRead(), (SChunkCounts{.skipped = 1}));
}

TEST(ChunkReader, ChunkOverTwoBlocksIsSplit) {
    CCaliOperation<S3WordCoef> source;
    ASSERT_EQ(source.Buffer().Allocate(20, 10), S_OK);
    FillPattern(source);
    const Bytes file = RectFile(source.Buffer(), {0, 0, 20, 10});
    CCaliOperation<S3WordCoef> target;
    ASSERT_EQ(target.Buffer().Allocate(300, 10), S_OK);
    EXPECT_EQ(ReadAt(target.Buffer(), file, 250, 0), S_OK);
    EXPECT_EQ(CountUnlikePattern(target, 250, 0, 270, 10, 250, 0), 0);
    EXPECT_EQ(CountUnlikeDefault(target), 200);
    EXPECT_EQ(target.Buffer().LastRead(), (SChunkCounts{.read = 1}));
    // Only one of the two blocks is there.
    target.Buffer().Clear();
    ASSERT_EQ(target.Buffer().AllocateBlock(1, 256, 0), S_OK);
    ASSERT_EQ(target.Buffer().FillBlockDefault(1), S_OK);
    EXPECT_EQ(ReadAt(target.Buffer(), file, 250, 0), S_OK);
    EXPECT_EQ(CountUnlikePattern(target, 256, 0, 270, 10, 250, 0), 0);
    EXPECT_EQ(CountUnlikeDefault(target), 140);
    EXPECT_EQ(target.Buffer().LastRead(), (SChunkCounts{.read = 1}));
}

TEST(ChunkReader, ARecordOverTwoBlocksIsSplitWhereItStands) {
    CCaliOperation<S3WordCoef> source;
    ASSERT_EQ(source.Buffer().Allocate(20, 3), S_OK);
    FillPattern(source);
    Bytes file = RectFile(source.Buffer(), {0, 0, 20, 3});
    StoreLittle<std::uint32_t>(&file[chunk_header::kOriginX], 250);
    StoreLittle<std::uint32_t>(&file[168 + chunk_record::kX], 250);
    CCaliOperation<S3WordCoef> target;
    ASSERT_EQ(target.Buffer().Allocate(300, 3), S_OK);
    EXPECT_EQ(ReadAt(target.Buffer(), file, 250, 0), S_OK);
    EXPECT_EQ(CountUnlikePattern(target, 250, 0, 270, 3, 250, 0), 0);
    EXPECT_EQ(CountUnlikeDefault(target), 20 * 3);
    const auto* const left = reinterpret_cast<const S3WordCoef*>(target.Buffer().Block(0)->pData);
    const auto* const right = reinterpret_cast<const S3WordCoef*>(target.Buffer().Block(1)->pData);
    EXPECT_EQ(left[249].w, S3WordCoef{}.w);
    EXPECT_EQ(left[255].w, PatternElement<S3WordCoef>(5, 0).w); // the last of six columns
    EXPECT_EQ(right[0].w, PatternElement<S3WordCoef>(6, 0).w);
    EXPECT_EQ(right[13].w, PatternElement<S3WordCoef>(19, 0).w); // the last of fourteen
    EXPECT_EQ(right[14].w, S3WordCoef{}.w);
}

// A block that does not stand at its index's corner takes nothing that its pixels are not.
TEST(ChunkReader, BlocksThatStandElsewhereTakeNoChunkOfTheirIndex) {
    CCaliOperation<S3WordCoef> source;
    ASSERT_EQ(source.Buffer().Allocate(256, 128), S_OK);
    FillPattern(source);
    const Bytes file = RectFile(source.Buffer(), {0, 0, 256, 128});
    for (const auto& [x, y] : {std::pair{100U, 50U}, std::pair{256U, 0U}, std::pair{0U, 1U}}) {
        CCaliOperation<S3WordCoef> target;
        ASSERT_EQ(target.Buffer().AllocateBlock(0, x, y), S_OK);
        ASSERT_EQ(target.Buffer().FillBlockDefault(0), S_OK);
        EXPECT_EQ(ReadAt(target.Buffer(), file, 0, 0), E_FAIL);
        EXPECT_EQ(target.Buffer().LastRead(), (SChunkCounts{.failed = 1}));
        EXPECT_EQ(CountUnlikeDefault(target), 0);
    }
}

TEST(ChunkReader, AChunkThatLosesAPieceHasFailed) {
    CCaliOperation<S3WordCoef> source;
    ASSERT_EQ(source.Buffer().Allocate(20, 10), S_OK);
    FillPattern(source);
    const Bytes file = RectFile(source.Buffer(), {0, 0, 20, 10});
    // The block of the first piece stands elsewhere, then that of the second piece.
    for (const std::uint32_t moved : {0U, 1U}) {
        CCaliOperation<S3WordCoef> target;
        for (const std::uint32_t index : {0U, 1U}) {
            const std::uint32_t top = index == moved ? 50 : 0;
            ASSERT_EQ(target.Buffer().AllocateBlock(index, index * 256, top), S_OK);
            ASSERT_EQ(target.Buffer().FillBlockDefault(index), S_OK);
        }
        EXPECT_EQ(ReadAt(target.Buffer(), file, 250, 0), E_FAIL);
        EXPECT_EQ(target.Buffer().LastRead(), (SChunkCounts{.failed = 1}));
    }
}

TEST(ChunkReader, AFileOfSeveralBlocksSkipsThoseThatAreNotThere) {
    CCaliOperation<S3WordCoef> source;
    ASSERT_EQ(source.Buffer().Allocate(600, 300), S_OK);
    FillPattern(source);
    const Bytes file = RectFile(source.Buffer(), {0, 0, 600, 300});
    CCaliOperation<S3WordCoef> target;
    ASSERT_EQ(target.Buffer().Allocate(256, 128), S_OK);
    EXPECT_EQ(ReadAt(target.Buffer(), file, 0, 0), S_OK);
    EXPECT_EQ(CountUnlikePattern(target, 0, 0, 256, 128), 0);
    EXPECT_EQ(target.Buffer().LastRead(), (SChunkCounts{.read = 1, .skipped = 8}));
}

/// How many columns and rows of the pattern a clipped read of a chunk at (x, y) brings.
std::array<int, 2> ClippedExtent(const SPixelRect& rect, std::uint32_t x, std::uint32_t y,
                                 std::uint32_t clipWidth, std::uint32_t clipHeight) {
    CCaliOperation<S3WordCoef> source;
    EXPECT_EQ(source.Buffer().Allocate(100, 100), S_OK);
    FillPattern(source);
    CCaliOperation<S3WordCoef> target;
    EXPECT_EQ(target.Buffer().Allocate(400, 300), S_OK);
    EXPECT_EQ(ReadAt(target.Buffer(), RectFile(source.Buffer(), rect), x, y, clipWidth, clipHeight),
              S_OK);
    int columns = 0;
    int rows = 0;
    while (target.Find(x + static_cast<std::uint32_t>(columns), y)->w != S3WordCoef{}.w)
        ++columns;
    while (target.Find(x, y + static_cast<std::uint32_t>(rows))->w != S3WordCoef{}.w)
        ++rows;
    EXPECT_EQ(CountUnlikeDefault(target), columns * rows);
    EXPECT_EQ(CountUnlikePattern(target, x, y, x + static_cast<std::uint32_t>(columns),
                                 y + static_cast<std::uint32_t>(rows), x, y),
              0);
    return {columns, rows};
}

TEST(ChunkReader, ClippingTakesTheChunksCorner) {
    using Extent = std::array<int, 2>;
    const SPixelRect rect{0, 0, 60, 40};
    EXPECT_EQ(ClippedExtent(rect, 0, 0, 7, 3), (Extent{7, 3}));
    EXPECT_EQ(ClippedExtent(rect, 0, 0, 7, 300), (Extent{7, 40}));
    EXPECT_EQ(ClippedExtent(rect, 0, 0, 0xFFFFFFFF, 0xFFFFFFFF), (Extent{60, 40}));
    EXPECT_EQ(ClippedExtent(rect, 0, 0, 7, 0), (Extent{60, 40})); // both must be non-zero
    EXPECT_EQ(ClippedExtent(rect, 0, 0, 0, 3), (Extent{60, 40}));
    // Over four blocks: the clip counts from the chunk's corner, not from each piece's.
    EXPECT_EQ(ClippedExtent(rect, 240, 120, 50, 30), (Extent{50, 30}));
    EXPECT_EQ(ClippedExtent(rect, 240, 120, 16, 30), (Extent{16, 30})); // right pieces outside
    EXPECT_EQ(ClippedExtent(rect, 240, 120, 5, 30), (Extent{5, 30}));
    EXPECT_EQ(ClippedExtent(rect, 240, 120, 5, 2), (Extent{5, 2}));
}

TEST(ChunkReader, ClippingAWholeBlockLeavesTheRest) {
    CCaliOperation<S9WordCoef> source;
    ASSERT_EQ(source.Buffer().Allocate(256, 128), S_OK);
    FillPattern(source);
    CCaliOperation<S9WordCoef> target;
    ASSERT_EQ(target.Buffer().Allocate(256, 128), S_OK);
    EXPECT_EQ(ReadAt(target.Buffer(), RectFile(source.Buffer(), {0, 0, 256, 128}), 0, 0, 256, 5),
              S_OK);
    EXPECT_EQ(CountUnlikePattern(target, 0, 0, 256, 5), 0);
    EXPECT_EQ(CountUnlikeDefault(target), 256 * 5);
}

// ---- damage ----

/// Three chunks of the 3-word kind, of one row each, in three blocks of one column: their records
/// can be spoiled one by one.
class ChunkReaderDamaged : public ::testing::Test {
  protected:
    ChunkReaderDamaged() {
        CCaliOperation<S3WordCoef> source;
        EXPECT_EQ(source.Buffer().Allocate(5, 300), S_OK);
        FillPattern(source);
        m_file = RectFile(source.Buffer(), {0, 127, 5, 257});
        EXPECT_EQ(m_owner.Buffer().Allocate(5, 300), S_OK);
    }

    static std::size_t RecordPlace(std::size_t i) { return 168 + i * 56; }
    SChunkRecord Record(std::size_t i) const { return RecordAt(m_file, 9, i); }
    void Spoil(std::size_t i, const std::function<void(SChunkRecord&)>& change) {
        SChunkRecord record = Record(i);
        change(record);
        EncodeChunkRecord(record, 9, &m_file[RecordPlace(i)]);
    }
    Status Read() { return ReadAt(m_owner.Buffer(), m_file, 0, 127); }

    /// Reads the same bytes as a memory image, to where its own origin says when that is (0, 0).
    /// Just so many bytes: the sanitizers see any byte past them.
    Status ReadImage() {
        Bytes image(m_file.begin(), m_file.end());
        StoreLittle<std::uint32_t>(&image[chunk_header::kOriginX], 0);
        StoreLittle<std::uint32_t>(&image[chunk_header::kOriginY], 0);
        return m_owner.Buffer().LoadFromMemory(image.data(), image.size());
    }
    const SChunkCounts& Counts() const { return m_owner.Buffer().LastRead(); }

    Bytes m_file;
    CCaliOperation<S3WordCoef> m_owner;
};

TEST_F(ChunkReaderDamaged, UndamagedFileIsRead) {
    EXPECT_EQ(Read(), S_OK);
    EXPECT_EQ(Counts(), (SChunkCounts{.read = 3}));
    EXPECT_EQ(CountUnlikePattern(m_owner, 0, 127, 5, 257), 0);
    EXPECT_EQ(CountUnlikeDefault(m_owner), 5 * 130);
}

TEST_F(ChunkReaderDamaged, LaterChunksAreStillReadAndHideTheFailure) {
    const CTransferReport report;
    Spoil(1, [](SChunkRecord& record) { ++record.height; });
    EXPECT_EQ(Read(), S_OK);
    EXPECT_EQ(Counts(), (SChunkCounts{.read = 2, .failed = 1}));
    EXPECT_EQ(report.FailedChunks(), 1U);
    EXPECT_EQ(CountUnlikePattern(m_owner, 0, 127, 5, 128), 0);
    EXPECT_EQ(CountUnlikePattern(m_owner, 0, 256, 5, 257), 0);
    EXPECT_EQ(CountUnlikeDefault(m_owner), 5 * 2);
}

TEST_F(ChunkReaderDamaged, TheLastChunksFailureIsTheResult) {
    Spoil(2, [](SChunkRecord& record) { record.planeSizes[0] += 1; });
    EXPECT_EQ(Read(), E_FAIL);
    EXPECT_EQ(Counts(), (SChunkCounts{.read = 2, .failed = 1}));
}

TEST_F(ChunkReaderDamaged, ASkippedLastChunkKeepsTheResult) {
    m_owner.Buffer().Clear();
    for (const std::uint32_t index : {0U, 512U})
        ASSERT_EQ(m_owner.Buffer().AllocateBlock(index, 0, index / 512 * 128), S_OK);
    Spoil(1, [](SChunkRecord& record) { record.width = 0; });
    EXPECT_EQ(Read(), E_FAIL);
    EXPECT_EQ(Counts(), (SChunkCounts{.read = 1, .skipped = 1, .failed = 1}));
}

// Over several blocks a chunk is decoded before they are looked for.
TEST_F(ChunkReaderDamaged, ALastChunkThatWasDecodedForMissingBlocksIsTheResult) {
    Spoil(1, [](SChunkRecord& record) { ++record.height; });
    Spoil(2, [](SChunkRecord& record) { record.x = 1022; });
    EXPECT_EQ(Read(), S_OK);
    EXPECT_EQ(Counts(), (SChunkCounts{.read = 1, .skipped = 1, .failed = 1}));
}

TEST_F(ChunkReaderDamaged, ImpossibleRecordsFailAndTheNextAreRead) {
    const std::vector<std::function<void(SChunkRecord&)>> damages{
        [](SChunkRecord& record) { record.width = 0; },
        [](SChunkRecord& record) { record.width = 257; },
        [](SChunkRecord& record) { record.width = 0xFFFF; },
        [](SChunkRecord& record) { record.height = 0; },
        [](SChunkRecord& record) { record.height = 129; },
        [](SChunkRecord& record) { record.height = 0xFFFF; },
        [](SChunkRecord& record) {
            record.y = 126;
            record.x = 0;
            record.width = 4;
        },
        [](SChunkRecord& record) { record.planeSizes[1] = 0; },
        [](SChunkRecord& record) { record.planeSizes[1] = 0xFFFFFFFF; },
        [](SChunkRecord& record) { std::swap(record.planeSizes[0], record.planeSizes[8]); },
    };
    const Bytes whole = m_file;
    for (const auto& damage : damages) {
        m_file = whole;
        ASSERT_EQ(m_owner.Buffer().Allocate(5, 300), S_OK);
        Spoil(0, damage);
        EXPECT_EQ(Read(), S_OK);
        EXPECT_EQ(Counts(), (SChunkCounts{.read = 2, .failed = 1})) << &damage - damages.data();
        EXPECT_EQ(CountUnlikePattern(m_owner, 0, 128, 5, 257), 0);
        EXPECT_EQ(CountUnlikeDefault(m_owner), 5 * 129);
    }
}

TEST_F(ChunkReaderDamaged, ImagesAreReadAroundDamageLikeStreams) {
    EXPECT_EQ(ReadImage(), S_OK);
    EXPECT_EQ(Counts(), (SChunkCounts{.read = 3}));
    EXPECT_EQ(CountUnlikePattern(m_owner, 0, 127, 5, 257), 0);
    const Bytes whole = m_file;
    const std::vector<std::function<void(SChunkRecord&)>> damages{
        [](SChunkRecord& record) { record.width = 0; },
        [](SChunkRecord& record) { record.height = 129; },
        [](SChunkRecord& record) { record.planeSizes[1] = 0xFFFFFFFF; },
    };
    for (const auto& damage : damages) {
        m_file = whole;
        ASSERT_EQ(m_owner.Buffer().Allocate(5, 300), S_OK);
        Spoil(0, damage);
        EXPECT_EQ(ReadImage(), S_OK); // the last chunk is sound
        EXPECT_EQ(Counts(), (SChunkCounts{.read = 2, .failed = 1}));
        EXPECT_EQ(CountUnlikePattern(m_owner, 0, 128, 5, 257), 0);
        EXPECT_EQ(CountUnlikeDefault(m_owner), 5 * 129);
    }
    m_file = whole;
    Spoil(1, [](SChunkRecord& record) { record.totalSize = 0xFFFFFFFF; });
    const CTransferReport report;
    EXPECT_EQ(ReadImage(), E_FAIL);
    EXPECT_EQ(Counts(), (SChunkCounts{.read = 1, .failed = 2}));
    EXPECT_EQ(report.FailedChunks(), 2U);
}

TEST_F(ChunkReaderDamaged, ARefusedReadHasNoCounts) {
    CCaliBuf& store = m_owner.Buffer();
    const Bytes oneByte{std::byte{1}};
    const std::vector<std::function<Status()>> refusedReads{
        [&] { return ReadAt(store, oneByte, 0, 127); },
        [&] {
            std::stringstream stream = StreamOf(oneByte);
            return store.ReadBandChunks(stream, 0, 0, 0, kGridBlocks);
        },
        [&] { return store.LoadFromMemory(oneByte.data(), oneByte.size()); },
    };
    for (const auto& refusedRead : refusedReads) {
        EXPECT_EQ(Read(), S_OK);
        EXPECT_EQ(Counts(), (SChunkCounts{.read = 3}));
        EXPECT_EQ(refusedRead(), E_FAIL);
        EXPECT_EQ(Counts(), SChunkCounts{});
    }
}

TEST_F(ChunkReaderDamaged, ChunksShiftedAboveOrLeftOfTheGridFail) {
    // The origin says (0, 127), so that a chunk at row 126 comes to row -1 of a caller at (0, 0).
    Spoil(0, [](SChunkRecord& record) { record.y = 126; });
    EXPECT_EQ(ReadAt(m_owner.Buffer(), m_file, 0, 0), S_OK);
    EXPECT_EQ(Counts(), (SChunkCounts{.read = 2, .failed = 1}));
    StoreLittle<std::uint32_t>(&m_file[chunk_header::kOriginX], 0xFFFFFFFF);
    EXPECT_EQ(ReadAt(m_owner.Buffer(), m_file, 0, 0), E_FAIL);
    EXPECT_EQ(Counts(), (SChunkCounts{.failed = 3}));
}

TEST_F(ChunkReaderDamaged, ChunksFarOutsideAreSkipped) {
    Spoil(0, [](SChunkRecord& record) { record.x = 0xFFFFFFFF; });
    Spoil(1, [](SChunkRecord& record) { record.y = 0xFFFFFFFF; });
    Spoil(2, [](SChunkRecord& record) { record.x = 131072; });
    EXPECT_EQ(ReadAt(m_owner.Buffer(), m_file, 0xFFFFFFFF, 0xFFFFFFFF), S_OK);
    EXPECT_EQ(Counts(), (SChunkCounts{.skipped = 3}));
}

TEST_F(ChunkReaderDamaged, TooLargeAChunkIsPassedOver) {
    // As many compressed bytes as no chunk of this kind has, with the bytes really there.
    const std::size_t large = m_owner.Buffer().CompressedBound() + 1;
    const std::size_t dataAt = RecordPlace(3);
    const auto surplus = large - Record(0).totalSize;
    m_file.insert(m_file.begin() + static_cast<std::ptrdiff_t>(dataAt + Record(0).totalSize),
                  surplus, std::byte{0});
    Spoil(0, [&](SChunkRecord& r) { r.totalSize = static_cast<std::uint32_t>(large); });
    EXPECT_EQ(Read(), S_OK);
    EXPECT_EQ(Counts(), (SChunkCounts{.read = 2, .failed = 1}));
    EXPECT_EQ(CountUnlikePattern(m_owner, 0, 128, 5, 257), 0);
    EXPECT_EQ(ReadImage(), S_OK);
    EXPECT_EQ(Counts(), (SChunkCounts{.read = 2, .failed = 1}));
}

TEST_F(ChunkReaderDamaged, AChunkPastTheStreamsEndFailsWithAllThatFollow) {
    Spoil(1, [](SChunkRecord& record) { record.totalSize = 0xFFFFFFFF; });
    EXPECT_EQ(Read(), E_FAIL);
    EXPECT_EQ(Counts(), (SChunkCounts{.read = 1, .failed = 2}));
}

TEST_F(ChunkReaderDamaged, AChunkThatIsPassedOverBeyondTheStreamsEndFailsTheStream) {
    Spoil(2, [](SChunkRecord& record) {
        record.width = 0; // never decoded
        record.totalSize = 0xFFFFFFFF;
    });
    std::stringstream stream = StreamOf(m_file);
    EXPECT_EQ(m_owner.Buffer().ReadRectChunks(stream, 0, 127, 0, 0), E_FAIL);
    EXPECT_EQ(Counts(), (SChunkCounts{.read = 2, .failed = 1}));
    EXPECT_TRUE(stream.fail());
}

// The stream and the counts tell of it, the status does not: nothing was to be taken from there.
TEST_F(ChunkReaderDamaged, MissingDataOfAChunkOnNoBlockLeavesTheStatusAlone) {
    m_file.resize(m_file.size() - 1);
    // In one missing block, then over two.
    for (const std::uint32_t x : {1024U, 1022U}) {
        Spoil(2, [&](SChunkRecord& record) { record.x = x; });
        const CTransferReport report;
        std::stringstream stream = StreamOf(m_file);
        EXPECT_EQ(m_owner.Buffer().ReadRectChunks(stream, 0, 127, 0, 0), S_OK);
        EXPECT_TRUE(stream.fail());
        EXPECT_EQ(Counts(), (SChunkCounts{.read = 2, .failed = 1}));
        EXPECT_EQ(report.FailedChunks(), 1U);
        EXPECT_EQ(ReadImage(), S_OK);
        EXPECT_EQ(Counts(), (SChunkCounts{.read = 2, .failed = 1}));
    }
    // A failure before it stays the result.
    Spoil(1, [](SChunkRecord& record) { ++record.height; });
    EXPECT_EQ(Read(), E_FAIL);
    EXPECT_EQ(Counts(), (SChunkCounts{.read = 1, .failed = 2}));
}

TEST_F(ChunkReaderDamaged, MissingDataOfAChunkOnABlockFails) {
    m_file.resize(m_file.size() - 1);
    // The block is there for a part of the chunk, or the chunk is shifted above it.
    Spoil(2, [](SChunkRecord& record) { record.x = 254; });
    EXPECT_EQ(Read(), E_FAIL);
    EXPECT_EQ(Counts(), (SChunkCounts{.read = 2, .failed = 1}));
    Spoil(2, [](SChunkRecord& record) {
        record.x = 1024;
        record.y = 126;
    });
    EXPECT_EQ(ReadAt(m_owner.Buffer(), m_file, 0, 0), E_FAIL);
    EXPECT_EQ(Counts(), (SChunkCounts{.read = 2, .failed = 1}));
}

TEST_F(ChunkReaderDamaged, BytesBehindAChunksPlanesArePassedOver) {
    const auto dataEnd = [&](std::size_t i) {
        std::size_t at = RecordPlace(3);
        for (std::size_t k = 0; k <= i; ++k)
            at += Record(k).totalSize;
        return m_file.begin() + static_cast<std::ptrdiff_t>(at);
    };
    for (const std::size_t i : {2U, 1U, 0U})
        m_file.insert(dataEnd(i), 3, std::byte{0xEE});
    for (const std::size_t i : {0U, 1U, 2U})
        Spoil(i, [](SChunkRecord& record) { record.totalSize += 3; });
    EXPECT_EQ(Read(), S_OK);
    EXPECT_EQ(Counts(), (SChunkCounts{.read = 3}));
    EXPECT_EQ(CountUnlikePattern(m_owner, 0, 127, 5, 257), 0);
}

// Also of a chunk that is decoded straight into its block.
TEST(ChunkReader, AFailedChunkLeavesItsBlockAsItWas) {
    CCaliOperation<S9WordCoef> source;
    ASSERT_EQ(source.Buffer().Allocate(256, 128), S_OK);
    FillPattern(source);
    Bytes file = RectFile(source.Buffer(), {0, 0, 256, 128});
    SChunkRecord record = RecordAt(file, 9, 0);
    record.planeSizes[8] = 0;
    EncodeChunkRecord(record, 9, &file[168]);
    CCaliOperation<S9WordCoef> target;
    ASSERT_EQ(target.Buffer().Allocate(256, 128), S_OK);
    EXPECT_EQ(ReadAt(target.Buffer(), file, 0, 0), E_FAIL);
    EXPECT_EQ(CountUnlikeDefault(target), 0);
}

TEST_F(ChunkReaderDamaged, UnusedRecordsAreSeenOver) {
    Spoil(2, [](SChunkRecord& record) { record = {}; });
    Spoil(1, [](SChunkRecord& record) { ++record.height; });
    EXPECT_EQ(Read(), E_FAIL); // the unused record is not the last chunk
    EXPECT_EQ(Counts(), (SChunkCounts{.read = 1, .failed = 1}));
}

TEST_F(ChunkReaderDamaged, EveryShorterFileFailsWithinItsBytes) {
    const std::size_t directoryEnd = RecordPlace(3);
    for (std::size_t length = 0; length < m_file.size(); ++length) {
        const Bytes cut(m_file.begin(), m_file.begin() + static_cast<std::ptrdiff_t>(length));
        std::stringstream stream = StreamOf(cut);
        ASSERT_EQ(m_owner.Buffer().ReadRectChunks(stream, 0, 127, 0, 0), E_FAIL) << length;
        const SChunkCounts streamCounts = Counts();
        EXPECT_EQ(streamCounts.failed > 0, length >= directoryEnd);
        EXPECT_TRUE(stream.fail()) << length;
        // An image of just so many bytes: the sanitizers see any byte past it.
        EXPECT_EQ(m_owner.Buffer().LoadFromMemory(cut.data(), cut.size()), E_FAIL);
        EXPECT_EQ(Counts(), streamCounts);
    }
}

TEST_F(ChunkReaderDamaged, RecordCountsBeyondTheFileAreRefused) {
    for (const std::uint32_t count : {0xFFFFFFFFU, 0x80000000U, 100U}) {
        StoreLittle<std::uint32_t>(&m_file[chunk_header::kRecordCount], count);
        std::stringstream stream = StreamOf(m_file);
        EXPECT_EQ(m_owner.Buffer().ReadRectChunks(stream, 0, 127, 0, 0), E_FAIL);
        EXPECT_TRUE(stream.fail());
        EXPECT_EQ(Counts(), SChunkCounts{});
        stream = StreamOf(m_file);
        EXPECT_EQ(m_owner.Buffer().ReadBandChunks(stream, 0, 127, 0, kGridBlocks), E_FAIL);
        EXPECT_TRUE(stream.fail());
        EXPECT_EQ(Counts(), SChunkCounts{});
        EXPECT_EQ(m_owner.Buffer().LoadFromMemory(m_file.data(), m_file.size()), E_FAIL);
        EXPECT_EQ(Counts(), SChunkCounts{});
    }
    StoreLittle<std::uint32_t>(&m_file[chunk_header::kRecordCount], 0);
    EXPECT_EQ(Read(), S_OK);
    EXPECT_EQ(Counts(), SChunkCounts{});
    EXPECT_EQ(CountUnlikeDefault(m_owner), 0);
}

TEST_F(ChunkReaderDamaged, RefusedScratchMemoryIsTold) {
    std::stringstream stream = StreamOf(m_file);
    const std::uint64_t held = CMemoryBudget::Process().Outstanding();
    {
        const CBudgetLimit directoryOnly(held + 3 * 56);
        EXPECT_EQ(m_owner.Buffer().ReadRectChunks(stream, 0, 0, 0, 0), E_COEF_NOBUFFER);
    }
    const CBudgetLimit none(held);
    stream.seekg(0);
    EXPECT_EQ(m_owner.Buffer().ReadRectChunks(stream, 0, 0, 0, 0), E_COEF_NOBUFFER);
    EXPECT_EQ(m_owner.Buffer().LoadFromMemory(m_file.data(), m_file.size()), E_FAIL);
}

TEST(ChunkReader, NullImagesFail) {
    CCaliOperation<S3WordCoef> owner;
    EXPECT_EQ(owner.Buffer().LoadFromMemory(nullptr), E_FAIL);
    EXPECT_EQ(owner.Buffer().LoadFromMemory(nullptr, 0), E_FAIL);
}

// ---- single-word stores ----

/// A file of a matrix store and behind it the directory and data of a single-word store, whose
/// position stands in the header.
Bytes FileWithExtraWords(std::uint32_t& extraAt) {
    CCaliOperation<S9WordCoef> matrices;
    CCaliOperation<SWordCoef> extra;
    EXPECT_EQ(matrices.Buffer().Allocate(300, 10), S_OK);
    EXPECT_EQ(extra.Buffer().Allocate(300, 10), S_OK);
    FillPattern(matrices);
    FillPattern(extra);
    std::stringstream stream = StreamBehind({});
    const SPixelRect rect{0, 0, 300, 10};
    EXPECT_EQ(matrices.Buffer().WriteRectChunks(stream, rect), S_OK);
    stream.seekp(0, std::ios::end);
    extraAt = static_cast<std::uint32_t>(stream.tellp());
    EXPECT_EQ(extra.Buffer().WriteRectChunks(stream, rect), S_OK);
    stream.seekp(0);
    const ChunkHeaderBytes header = EncodeChunkHeader(
        {.width = 300, .height = 10, .recordCount = 2, .directoryOffset = extraAt});
    stream.write(reinterpret_cast<const char*>(header.data()), header.size());
    return BytesOf(stream);
}

TEST(ChunkReader, TheRectangleReaderSeeksTheExtraWordsByPosition) {
    std::uint32_t extraAt = 0;
    const Bytes file = FileWithExtraWords(extraAt);
    CCaliOperation<S9WordCoef> matrices;
    CCaliOperation<SWordCoef> extra;
    ASSERT_EQ(matrices.Buffer().Allocate(300, 10), S_OK);
    ASSERT_EQ(extra.Buffer().Allocate(300, 10), S_OK);
    std::stringstream stream = StreamOf(file);
    EXPECT_EQ(matrices.Buffer().ReadRectChunks(stream, 0, 0, 0, 0), S_OK);
    stream.clear();
    stream.seekg(0);
    EXPECT_EQ(extra.Buffer().ReadRectChunks(stream, 0, 0, 0, 0), S_OK);
    EXPECT_EQ(CountUnlikePattern(matrices, 0, 0, 300, 10), 0);
    EXPECT_EQ(CountUnlikePattern(extra, 0, 0, 300, 10), 0);
}

TEST(ChunkReader, TheBandReaderCountsTheExtraWordsFromTheHeadersEnd) {
    std::uint32_t extraAt = 0;
    Bytes file = FileWithExtraWords(extraAt);
    CCaliOperation<SWordCoef> extra;
    ASSERT_EQ(extra.Buffer().Allocate(300, 10), S_OK);
    StoreLittle<std::uint32_t>(&file[chunk_header::kDirectoryOffset], extraAt - 168);
    std::stringstream stream = StreamOf(file);
    EXPECT_EQ(extra.Buffer().ReadBandChunks(stream, 0, 0, 0, 2), S_OK);
    EXPECT_EQ(extra.Buffer().LastRead(), (SChunkCounts{.read = 2}));
    EXPECT_EQ(CountUnlikePattern(extra, 0, 0, 300, 10), 0);
}

/// `bytes` as a file on disk, and a stream on it.
class CFileOf {
  public:
    explicit CFileOf(const Bytes& bytes) {
        const std::wstring path = m_folder.File(L"file.9wcoef");
        WriteFile(path, bytes);
        EXPECT_TRUE(OpenFileStream(m_stream, path.c_str(), std::ios::in));
    }
    std::fstream& Stream() { return m_stream; }

  private:
    CTemporaryFolder m_folder;
    std::fstream m_stream;
};

// A file on disk can be sought past its end without failing, unlike a stream in memory.
TEST(ChunkReader, DirectoryOffsetsPastTheEndOfAFileOnDiskAreRefused) {
    std::uint32_t extraAt = 0;
    Bytes file = FileWithExtraWords(extraAt);
    CCaliOperation<SWordCoef> extra;
    ASSERT_EQ(extra.Buffer().Allocate(300, 10), S_OK);
    for (const std::uint32_t past : {0U, 1U, 100000U}) {
        StoreLittle<std::uint32_t>(&file[chunk_header::kDirectoryOffset],
                                   static_cast<std::uint32_t>(file.size()) + past);
        CFileOf rect(file);
        EXPECT_EQ(extra.Buffer().ReadRectChunks(rect.Stream(), 0, 0, 0, 0), E_FAIL) << past;
        EXPECT_TRUE(rect.Stream().fail());
        CFileOf band(file);
        EXPECT_EQ(extra.Buffer().ReadBandChunks(band.Stream(), 0, 0, 0, 262144), E_FAIL) << past;
        EXPECT_TRUE(band.Stream().fail());
        EXPECT_EQ(extra.Buffer().LastRead(), SChunkCounts{});
    }
}

TEST(ChunkReader, DirectoryOffsetsInsideTheHeaderOrPastTheEndAreRefused) {
    std::uint32_t extraAt = 0;
    Bytes file = FileWithExtraWords(extraAt);
    CCaliOperation<SWordCoef> extra;
    ASSERT_EQ(extra.Buffer().Allocate(300, 10), S_OK);
    for (const std::uint32_t offset : {0U, 1U, 167U, static_cast<std::uint32_t>(file.size()),
                                       static_cast<std::uint32_t>(file.size()) + 1, 0xFFFFFFFFU}) {
        StoreLittle<std::uint32_t>(&file[chunk_header::kDirectoryOffset], offset);
        EXPECT_EQ(ReadAt(extra.Buffer(), file, 0, 0), E_FAIL) << offset;
        EXPECT_EQ(extra.Buffer().LastRead(), SChunkCounts{});
    }
    // The band reader counts from the header's end: what it may be given ends 168 bytes sooner.
    const auto size = static_cast<std::uint32_t>(file.size());
    for (const std::uint32_t offset : {size - 168, size - 167, size, 0xFFFFFFFFU}) {
        StoreLittle<std::uint32_t>(&file[chunk_header::kDirectoryOffset], offset);
        std::stringstream stream = StreamOf(file);
        EXPECT_EQ(extra.Buffer().ReadBandChunks(stream, 0, 0, 0, 262144), E_FAIL) << offset;
        EXPECT_EQ(extra.Buffer().LastRead(), SChunkCounts{});
    }
    // A file of nothing but a single-word store has its directory right behind the header.
    CCaliOperation<SWordCoef> source;
    ASSERT_EQ(source.Buffer().Allocate(300, 10), S_OK);
    FillPattern(source);
    file = RectFile(source.Buffer(), {0, 0, 300, 10});
    EXPECT_EQ(LoadLittle<std::uint32_t>(&file[86]), 168U);
    EXPECT_EQ(ReadAt(extra.Buffer(), file, 0, 0), S_OK);
    EXPECT_EQ(CountUnlikePattern(extra, 0, 0, 300, 10), 0);
}

// ---- sample files, written by another program ----

/// The words of a pixel from the matrix values of a .csv line: the place of word k in the line's
/// nine values, or -1 where the line does not tell.
using WordPlaces = std::vector<int>;

/// Compares a store with the lines of a .csv: x, y and nine matrix values, word ÷ 65535.
template <class T>
void CheckAgainstCsv(const CCaliOperation<T>& owner, const std::wstring& path,
                     const WordPlaces& places) {
    std::istringstream lines(ReadText(path));
    lines.imbue(std::locale::classic());
    std::string line;
    std::getline(lines, line);
    int checked = 0;
    while (std::getline(lines, line)) {
        std::replace(line.begin(), line.end(), ',', ' ');
        std::istringstream fields(line);
        fields.imbue(std::locale::classic());
        std::uint32_t x = 0;
        std::uint32_t y = 0;
        std::array<double, 9> values{};
        fields >> x >> y;
        for (double& value : values)
            fields >> value;
        ASSERT_FALSE(fields.fail()) << line;
        const T* element = owner.Find(x, y);
        ASSERT_NE(element, nullptr);
        for (std::size_t k = 0; k < places.size(); ++k) {
            if (places[k] < 0)
                continue;
            const double value = values[static_cast<std::size_t>(places[k])];
            EXPECT_EQ(element->w[k], std::lround(value * 65535)) << line << " word " << k;
        }
        ++checked;
    }
    EXPECT_GT(checked, 60);
}

template <class T>
void LoadSample(CCaliOperation<T>& owner, std::wstring_view name) {
    std::fstream stream;
    ASSERT_TRUE(OpenFileStream(stream, Sample(name).c_str(), std::ios::in));
    ChunkHeaderBytes bytes;
    stream.read(reinterpret_cast<char*>(bytes.data()), bytes.size());
    const SChunkHeader header = DecodeChunkHeader(bytes.data());
    ASSERT_EQ(owner.Buffer().Allocate(header.width, header.height), S_OK);
    stream.seekg(0);
    const CTransferReport report;
    EXPECT_EQ(owner.Buffer().ReadRectChunks(stream, 0, 0, 0, 0), S_OK);
    EXPECT_EQ(owner.Buffer().LastRead(), (SChunkCounts{.read = header.recordCount}));
    EXPECT_EQ(report.MissingPixels(), 0U);
}

const WordPlaces kPlacesOf9{0, 1, 2, 3, 4, 5, 6, 7, 8};
const WordPlaces kPlacesOf3{0, 4, 8};
const WordPlaces kPlacesOf4{0, 4, -1, 8};
const WordPlaces kPlacesOf12{0, 1, -1, 2, 3, 4, -1, 5, 6, 7, -1, 8};

template <class T>
void CheckSample(const std::wstring& name, const WordPlaces& places) {
    CCaliOperation<T> owner;
    LoadSample(owner, name);
    CheckAgainstCsv(owner, Sample(name + L".csv"), places);
}

TEST(ChunkSamples, CabinetsHoldTheirWords) {
    CheckSample<S9WordCoef>(L"cabinet/Cab_06.9wcoef", kPlacesOf9);
    CheckSample<S3WordCoef>(L"cabinet/Cab_07.3wcoef", kPlacesOf3);
    CheckSample<S4WordCoef>(L"cabinet/Cab_08.4wcoef", kPlacesOf4);
    CheckSample<S12WordCoef>(L"cabinet/Cab_09.12wcoef", kPlacesOf12);
}

TEST(ChunkSamples, OriginsAndOrderOfChunksDoNotMatter) {
    CheckSample<S9WordCoef>(L"awkward/origin_1000_777.9wcoef", kPlacesOf9);
    CheckSample<S9WordCoef>(L"awkward/blocks_reversed.9wcoef", kPlacesOf9);
    CCaliOperation<S9WordCoef> ordered;
    CCaliOperation<S9WordCoef> reversed;
    LoadSample(ordered, L"awkward/origin_1000_777.9wcoef");
    LoadSample(reversed, L"awkward/blocks_reversed.9wcoef");
    EXPECT_TRUE(HoldSame(ordered.Buffer(), reversed.Buffer()));
}

/// Loads a cabinet and the same cabinet turned by `quarters`, and compares pixel by pixel.
template <class T>
void CheckTurned(const std::wstring& cabinet, const std::wstring& turnedName, int quarters) {
    CCaliOperation<T> plain;
    CCaliOperation<T> turned;
    LoadSample(plain, cabinet);
    LoadSample(turned, turnedName);
    const std::uint32_t width = plain.Buffer().Width();
    const std::uint32_t height = plain.Buffer().Height();
    ASSERT_EQ(turned.Buffer().Width(), quarters == 2 ? width : height);
    for (std::uint32_t y = 0; y < height; ++y)
        for (std::uint32_t x = 0; x < width; ++x) {
            const T* to = quarters == 1   ? turned.Find(height - 1 - y, x)
                          : quarters == 2 ? turned.Find(width - 1 - x, height - 1 - y)
                                          : turned.Find(y, width - 1 - x);
            ASSERT_EQ(to->w, plain.Find(x, y)->w) << x << ", " << y;
        }
}

TEST(ChunkSamples, TurnedCabinetsHoldTheSameWordsTurned) {
    const std::array<std::wstring, 3> angles{L"90", L"180", L"270"};
    for (int i = 0; i < 3; ++i) {
        const std::wstring& angle = angles[static_cast<std::size_t>(i)];
        const auto turned = [&](const std::wstring& base, const std::wstring& extension) {
            return L"turned-" + angle + L"/" + base + L"-" + angle + L"\u00B0" + extension;
        };
        CheckTurned<S9WordCoef>(L"cabinet/Cab_06.9wcoef", turned(L"Cab_06", L".9wcoef"), i + 1);
        CheckTurned<S3WordCoef>(L"cabinet/Cab_07.3wcoef", turned(L"Cab_07", L".3wcoef"), i + 1);
        CheckTurned<S4WordCoef>(L"cabinet/Cab_08.4wcoef", turned(L"Cab_08", L".4wcoef"), i + 1);
        CheckTurned<S12WordCoef>(L"cabinet/Cab_09.12wcoef", turned(L"Cab_09", L".12wcoef"), i + 1);
    }
}

} // namespace
} // namespace trevolt
