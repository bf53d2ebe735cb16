#include <map>

#include "calibuf/WordElementKind.h"
#include "platform/FileStream.h"
#include "tests/calibuf/StoreSupport.h"

namespace trevolt {
namespace {

using namespace test;

constexpr SPixelRect kWhole{0, 0, 600, 500};

/// Where the next record and the next data byte of a banded file go.
struct BandPositions {
    std::uint64_t directory = 0;
    std::uint64_t data = 0;
};

template <class T>
class ChunkBandsOf : public ::testing::Test {
  protected:
    static constexpr std::uint32_t kPlanes = kWordElementKind<T>.planeCount;

    ChunkBandsOf() {
        EXPECT_EQ(m_source.Buffer().Allocate(600, 500), S_OK);
        FillPattern(m_source);
    }

    /// The area in bands of one, two and one block rows.
    Bytes BandedFile() {
        std::stringstream stream =
            StreamBehind({.width = 600, .height = 500, .recordCount = 12, .directoryOffset = 168});
        BandPositions at;
        for (const auto& [top, bottom] :
             std::vector<std::pair<int, int>>{{0, 128}, {128, 384}, {384, 500}})
            EXPECT_EQ(m_source.Buffer().WriteBandChunks(stream, {0, top, 600, bottom}, kWhole,
                                                        at.directory, at.data, 0, 0),
                      S_OK);
        EXPECT_EQ(at.directory, 168 + 12 * ChunkRecordBytes(kPlanes));
        const Bytes file = BytesOf(stream);
        EXPECT_EQ(at.data, file.size());
        return file;
    }

    /// Record and compressed bytes of every chunk, by block index.
    static std::map<std::uint32_t, std::pair<Bytes, Bytes>> ChunksOf(const Bytes& file) {
        std::map<std::uint32_t, std::pair<Bytes, Bytes>> chunks;
        const std::size_t recordBytes = ChunkRecordBytes(kPlanes);
        auto data = file.begin() + static_cast<std::ptrdiff_t>(168 + 12 * recordBytes);
        for (std::size_t i = 0; i < 12; ++i) {
            const SChunkRecord record = RecordAt(file, kPlanes, i);
            const auto at = file.begin() + static_cast<std::ptrdiff_t>(168 + i * recordBytes);
            chunks[record.index] = {Bytes(at, at + static_cast<std::ptrdiff_t>(recordBytes)),
                                    Bytes(data, data + record.totalSize)};
            data += record.totalSize;
        }
        EXPECT_EQ(data, file.end());
        return chunks;
    }

    CCaliOperation<T> m_source;
};
TYPED_TEST_SUITE(ChunkBandsOf, AllElements);

TYPED_TEST(ChunkBandsOf, EqualTheRectangleInAllButOrder) {
    const Bytes banded = this->BandedFile();
    Bytes whole = RectFile(this->m_source.Buffer(), kWhole);
    EXPECT_EQ(banded.size(), whole.size());
    StoreLittle<std::uint32_t>(&whole[chunk_header::kDirectoryOffset], 168);
    EXPECT_TRUE(std::equal(banded.begin(), banded.begin() + 168, whole.begin()));
    const auto chunks = this->ChunksOf(banded);
    EXPECT_EQ(chunks.size(), 12U);
    EXPECT_EQ(chunks, this->ChunksOf(whole));
    // Records follow each other band by band, in each column by column.
    std::vector<std::uint32_t> order;
    for (std::size_t i = 0; i < 12; ++i)
        order.push_back(RecordAt(banded, this->kPlanes, i).index);
    EXPECT_EQ(order, (std::vector<std::uint32_t>{0, 1, 2, 512, 1024, 513, 1025, 514, 1026, 1536,
                                                 1537, 1538}));
}

TYPED_TEST(ChunkBandsOf, ReadBackWhole) {
    CCaliOperation<TypeParam> target;
    ASSERT_EQ(target.Buffer().Allocate(600, 500), S_OK);
    EXPECT_EQ(ReadAt(target.Buffer(), this->BandedFile(), 0, 0), S_OK);
    EXPECT_TRUE(HoldSame(target.Buffer(), this->m_source.Buffer()));
}

TYPED_TEST(ChunkBandsOf, ReadBackBandByBand) {
    Bytes file = this->BandedFile();
    StoreLittle<std::uint32_t>(&file[chunk_header::kDirectoryOffset], 0); // from the header's end
    StoreLittle<std::uint32_t>(&file[chunk_header::kOriginX], 12345);     // counts for nothing here
    for (const auto& [row, rows] :
         std::vector<std::pair<std::uint32_t, std::uint32_t>>{{0, 1}, {1, 2}, {3, 1}}) {
        CCaliOperation<TypeParam> target;
        ASSERT_EQ(target.Buffer().Allocate(600, 600), S_OK);
        std::stringstream stream = StreamOf(file);
        EXPECT_EQ(target.Buffer().ReadBandChunks(stream, 0, 100, row * 512, (row + rows) * 512),
                  S_OK);
        EXPECT_EQ(target.Buffer().LastRead(), (SChunkCounts{.read = rows * 3}));
        const std::uint32_t bottom = std::min(500U, (row + rows) * 128);
        const std::uint32_t height = bottom - row * 128;
        EXPECT_EQ(CountUnlikePattern(target, 0, 100, 600, 100 + height, 0, 100U - row * 128), 0);
        EXPECT_EQ(CountUnlikeDefault(target), static_cast<int>(600 * height));
    }
}

TEST(ChunkBands, ShiftsAreAddedToTheRecords) {
    CCaliOperation<S3WordCoef> source;
    ASSERT_EQ(source.Buffer().Allocate(300, 130), S_OK);
    FillPattern(source);
    // A store that holds the band at (512, 256) of a larger area.
    const SPixelRect whole{0, 0, 1000, 600};
    std::stringstream stream = StreamBehind({.width = 1000, .height = 600, .recordCount = 20});
    BandPositions at;
    ASSERT_EQ(source.Buffer().WriteBandChunks(stream, {0, 0, 300, 130}, whole, at.directory,
                                              at.data, 512, 256),
              S_OK);
    const Bytes file = BytesOf(stream);
    using Place = std::array<std::uint32_t, 5>;
    const std::array<Place, 4> expected{{{2 + 2 * 512, 512, 256, 256, 128},
                                         {2 + 3 * 512, 512, 384, 256, 2},
                                         {3 + 2 * 512, 768, 256, 44, 128},
                                         {3 + 3 * 512, 768, 384, 44, 2}}};
    for (std::size_t i = 0; i < 4; ++i) {
        const SChunkRecord r = RecordAt(file, 9, i);
        EXPECT_EQ((Place{r.index, r.x, r.y, r.width, r.height}), expected[i]);
    }
    // Behind the four records the space of the other blocks of the area stays zero.
    const std::size_t blocks = 4 * 5;
    EXPECT_EQ(Bytes(file.begin() + 168 + 4 * 56, file.begin() + 168 + blocks * 56),
              Bytes((blocks - 4) * 56));
    EXPECT_EQ(at.directory, 168U + 4 * 56);
    CCaliOperation<S3WordCoef> target;
    ASSERT_EQ(target.Buffer().Allocate(1000, 600), S_OK);
    // The other way round: the base is the top of the chunk with the first index.
    std::stringstream back = StreamOf(file);
    EXPECT_EQ(target.Buffer().ReadBandChunks(back, 0, 7, 2 + 2 * 512, 262144), S_OK);
    EXPECT_EQ(CountUnlikePattern(target, 512, 7, 812, 137, 512, 7), 0);
    EXPECT_EQ(CountUnlikeDefault(target), 300 * 130);
}

// The index moves by whole blocks, towards zero; the position exactly.
TEST(ChunkBands, ShiftsOffTheBlocksMoveIndexAndPositionApart) {
    CCaliOperation<S3WordCoef> source;
    ASSERT_EQ(source.Buffer().Allocate(600, 300), S_OK);
    struct Row {
        std::int32_t shiftX;
        std::int32_t shiftY;
        std::uint32_t index; ///< of block (1, 1), which starts at (256, 128)
        std::uint32_t x;
        std::uint32_t y;
    };
    for (const Row& row :
         {Row{100, 50, 513, 356, 178}, Row{300, 130, 513 + 1 + 512, 556, 258},
          Row{255, 127, 513, 511, 255}, Row{-100, -50, 513, 156, 78}, Row{-256, -128, 0, 0, 0}}) {
        std::stringstream stream = StreamBehind({});
        BandPositions at;
        ASSERT_EQ(source.Buffer().WriteBandChunks(stream, {256, 128, 300, 150}, {0, 0, 100, 100},
                                                  at.directory, at.data, row.shiftX, row.shiftY),
                  S_OK);
        const SChunkRecord record = RecordAt(BytesOf(stream), 9, 0);
        EXPECT_EQ(record.index, row.index) << row.shiftX;
        EXPECT_EQ(record.x, row.x);
        EXPECT_EQ(record.y, row.y);
    }
}

TEST(ChunkBands, ShiftsMayGoBack) {
    CCaliOperation<S3WordCoef> source;
    ASSERT_EQ(source.Buffer().Allocate(600, 300), S_OK);
    std::stringstream stream = StreamBehind({});
    BandPositions at;
    ASSERT_EQ(source.Buffer().WriteBandChunks(stream, {512, 256, 600, 300}, {0, 0, 100, 100},
                                              at.directory, at.data, -512, -256),
              S_OK);
    const SChunkRecord record = RecordAt(BytesOf(stream), 9, 0);
    EXPECT_EQ(record.index, 0U);
    EXPECT_EQ(record.x, 0U);
    EXPECT_EQ(record.y, 0U);
}

/// Writes a band and expects a refusal that leaves the stream and both positions as they were.
void ExpectRefused(const CCaliBuf& store, const SPixelRect& band, const SPixelRect& whole,
                   BandPositions at, std::int32_t shiftX, std::int32_t shiftY, Status expected) {
    std::stringstream stream = StreamOf(Bytes(4000, std::byte{0x77}));
    const BandPositions before = at;
    EXPECT_EQ(store.WriteBandChunks(stream, band, whole, at.directory, at.data, shiftX, shiftY),
              expected);
    EXPECT_EQ(BytesOf(stream), Bytes(4000, std::byte{0x77}));
    EXPECT_EQ(at.directory, before.directory);
    EXPECT_EQ(at.data, before.data);
}

TEST(ChunkBands, RefusedBeforeAnythingIsWritten) {
    CCaliOperation<S3WordCoef> source;
    const CCaliBuf& store = source.Buffer();
    ASSERT_EQ(source.Buffer().Allocate(600, 500), S_OK);
    const SPixelRect band{0, 0, 600, 128};
    ExpectRefused(store, {0, 7, 600, 7}, kWhole, {}, 0, 0, E_FAIL);
    ExpectRefused(store, {600, 0, 0, 128}, kWhole, {}, 0, 0, E_COEF_INVALIDARG);
    ExpectRefused(store, {0, 0, 600, 65537}, kWhole, {}, 0, 0, E_COEF_INVALIDARG);
    ExpectRefused(store, band, {0, 0, 600, -1}, {}, 0, 0, E_COEF_INVALIDARG);
    ExpectRefused(store, band, {0, 0, 131073, 500}, {}, 0, 0, E_COEF_INVALIDARG);
    // More records than the whole area has blocks, at once or with those before.
    ExpectRefused(store, {0, 0, 600, 500}, {0, 0, 600, 300}, {}, 0, 0, E_COEF_INVALIDARG);
    const std::uint64_t end = 168 + 12 * 56;
    ExpectRefused(store, band, kWhole, {end - 2 * 56, end}, 0, 0, E_COEF_INVALIDARG);
    ExpectRefused(store, band, kWhole, {end + 56, end}, 0, 0, E_COEF_INVALIDARG);
    ExpectRefused(store, band, kWhole, {~0ULL, end}, 0, 0, E_COEF_INVALIDARG);
    // Positions inside the header or the directory.
    ExpectRefused(store, band, kWhole, {167, end}, 0, 0, E_COEF_INVALIDARG);
    ExpectRefused(store, band, kWhole, {168, end - 1}, 0, 0, E_COEF_INVALIDARG);
    // Shifts off the grid.
    ExpectRefused(store, band, kWhole, {}, -1, 0, E_COEF_INVALIDARG);
    ExpectRefused(store, band, kWhole, {}, 0, -1, E_COEF_INVALIDARG);
    ExpectRefused(store, band, kWhole, {}, 131072 - 599, 0, E_COEF_INVALIDARG);
    ExpectRefused(store, band, kWhole, {}, 0, 65536 - 127, E_COEF_INVALIDARG);
    ExpectRefused(store, band, kWhole, {}, 2147483647, 2147483647, E_COEF_INVALIDARG);
}

// Data position 0 says that no data is there yet; the directory position says where records go.
TEST(ChunkBands, TheFirstDataStartsBehindTheDirectoryWhereverItsRecordGoes) {
    CCaliOperation<S3WordCoef> source;
    ASSERT_EQ(source.Buffer().Allocate(600, 500), S_OK);
    FillPattern(source);
    std::stringstream stream = StreamBehind({.width = 600, .height = 500, .recordCount = 12});
    const SChunkRecord before{.index = 4711, .width = 1};
    Bytes record(56);
    EncodeChunkRecord(before, 9, record.data());
    stream.write(reinterpret_cast<const char*>(record.data()), 56);
    BandPositions at{.directory = 168 + 56};
    ASSERT_EQ(source.Buffer().WriteBandChunks(stream, {0, 0, 256, 128}, kWhole, at.directory,
                                              at.data, 0, 0),
              S_OK);
    const Bytes file = BytesOf(stream);
    EXPECT_EQ(RecordAt(file, 9, 0), before);
    EXPECT_EQ(RecordAt(file, 9, 1).index, 0U);
    EXPECT_EQ(RecordAt(file, 9, 1).width, 256U);
    EXPECT_EQ(at.directory, 168U + 2 * 56);
    EXPECT_EQ(at.data, 168U + 12 * 56 + RecordAt(file, 9, 1).totalSize);
    EXPECT_EQ(at.data, file.size());
}

// A band of missing blocks leaves the data position right behind the directory, where the next goes.
TEST(ChunkBands, ABandWithoutBlocksIsFollowedByOthers) {
    CCaliOperation<S3WordCoef> source;
    ASSERT_EQ(source.Buffer().AllocateBlock(512, 0, 128), S_OK);
    ASSERT_EQ(source.Buffer().FillBlockDefault(512), S_OK);
    const SPixelRect whole{0, 0, 10, 138};
    std::stringstream stream = StreamBehind({.width = 10, .height = 138, .recordCount = 2});
    BandPositions at;
    ASSERT_EQ(source.Buffer().WriteBandChunks(stream, {0, 0, 10, 128}, whole, at.directory, at.data,
                                              0, 0),
              S_OK);
    EXPECT_EQ(at.directory, 168U);
    EXPECT_EQ(at.data, 168U + 2 * 56);
    ASSERT_EQ(source.Buffer().WriteBandChunks(stream, {0, 128, 10, 138}, whole, at.directory,
                                              at.data, 0, 0),
              S_OK);
    const Bytes file = BytesOf(stream);
    EXPECT_EQ(RecordAt(file, 9, 0).index, 512U);
    EXPECT_EQ(RecordAt(file, 9, 0).y, 128U);
    EXPECT_EQ(RecordAt(file, 9, 1), SChunkRecord{});
    EXPECT_EQ(file.size(), 168U + 2 * 56 + RecordAt(file, 9, 0).totalSize);
}

TEST(ChunkBands, FillAFileOverSeveralOpenings) {
    const CTemporaryFolder folder;
    const std::wstring path = folder.File(L"bands.9wcoef");
    CCaliOperation<S9WordCoef> source;
    ASSERT_EQ(source.Buffer().Allocate(600, 500), S_OK);
    FillPattern(source);
    BandPositions at;
    for (int row = 0; row < 4; ++row) {
        std::fstream stream;
        ASSERT_TRUE(OpenFileStream(stream, path.c_str(),
                                   row == 0 ? std::ios::out | std::ios::trunc
                                            : std::ios::in | std::ios::out));
        if (row == 0) {
            const ChunkHeaderBytes header =
                EncodeChunkHeader({.width = 600, .height = 500, .recordCount = 12});
            stream.write(reinterpret_cast<const char*>(header.data()), header.size());
        }
        EXPECT_EQ(source.Buffer().WriteBandChunks(
                      stream, {0, row * 128, 600, std::min(500, row * 128 + 128)}, kWhole,
                      at.directory, at.data, 0, 0),
                  S_OK);
        stream.close();
        EXPECT_TRUE(stream.good());
    }
    std::fstream stream;
    ASSERT_TRUE(OpenFileStream(stream, path.c_str(), std::ios::in));
    CCaliOperation<S9WordCoef> target;
    ASSERT_EQ(target.Buffer().Allocate(600, 500), S_OK);
    EXPECT_EQ(target.Buffer().ReadRectChunks(stream, 0, 0, 0, 0), S_OK);
    EXPECT_TRUE(HoldSame(target.Buffer(), source.Buffer()));
}

TEST(ChunkBands, TheBaseIsThatOfTheLastChunkWithTheFirstIndex) {
    CCaliOperation<S3WordCoef> source;
    ASSERT_EQ(source.Buffer().Allocate(5, 300), S_OK);
    FillPattern(source);
    Bytes file = RectFile(source.Buffer(), {0, 127, 5, 257}); // rows 127, 128 to 255, 256
    CCaliOperation<S3WordCoef> target;
    const auto readBand = [&](std::uint32_t first, std::uint32_t end) {
        EXPECT_EQ(target.Buffer().Allocate(5, 700), S_OK);
        std::stringstream stream = StreamOf(file);
        return target.Buffer().ReadBandChunks(stream, 0, 0, first, end);
    };
    // No chunk has index 1: the base is 0.
    EXPECT_EQ(readBand(1, 1000), S_OK);
    EXPECT_EQ(target.Buffer().LastRead(), (SChunkCounts{.read = 1}));
    EXPECT_EQ(CountUnlikePattern(target, 0, 128, 5, 256), 0);
    EXPECT_EQ(readBand(5, 5), S_OK);
    EXPECT_EQ(target.Buffer().LastRead(), SChunkCounts{});
    // Two chunks with index 512: the second one's top row counts, and the first one lies above.
    StoreLittle<std::uint32_t>(&file[168 + 2 * 56 + chunk_record::kIndex], 512);
    EXPECT_EQ(readBand(512, 513), S_OK);
    EXPECT_EQ(target.Buffer().LastRead(), (SChunkCounts{.read = 1, .failed = 1}));
    EXPECT_EQ(CountUnlikePattern(target, 0, 0, 5, 1, 0, 0U - 256), 0);
    EXPECT_EQ(CountUnlikeDefault(target), 5);
}

// Directory space that stayed empty reads as records of index 0.
TEST(ChunkBands, UnusedDirectorySpaceIsTheFirstBlocksBase) {
    CCaliOperation<S3WordCoef> source;
    ASSERT_EQ(source.Buffer().Allocate(5, 20), S_OK); // one block, of four that are touched
    FillPattern(source);
    const Bytes file = RectFile(source.Buffer(), {0, 9, 300, 130});
    CCaliOperation<S3WordCoef> target;
    ASSERT_EQ(target.Buffer().Allocate(5, 300), S_OK);
    std::stringstream stream = StreamOf(file);
    EXPECT_EQ(target.Buffer().ReadBandChunks(stream, 0, 0, 0, 1), S_OK);
    EXPECT_EQ(target.Buffer().LastRead(), (SChunkCounts{.read = 1}));
    EXPECT_EQ(CountUnlikePattern(target, 0, 9, 5, 20, 0, 0), 0); // the base is 0, not its row 9
    EXPECT_EQ(CountUnlikeDefault(target), 5 * 11);
}

TEST(ChunkBands, AreMovedRightByTheCaller) {
    CCaliOperation<S3WordCoef> source;
    ASSERT_EQ(source.Buffer().Allocate(20, 3), S_OK);
    FillPattern(source);
    const Bytes file = RectFile(source.Buffer(), {0, 0, 20, 3});
    CCaliOperation<S3WordCoef> target;
    ASSERT_EQ(target.Buffer().Allocate(300, 10), S_OK);
    const auto readAt = [&](std::uint32_t x) {
        std::stringstream stream = StreamOf(file);
        return target.Buffer().ReadBandChunks(stream, x, 5, 0, 1);
    };
    EXPECT_EQ(readAt(250), S_OK); // over two blocks
    EXPECT_EQ(CountUnlikePattern(target, 250, 5, 270, 8, 250, 5), 0);
    EXPECT_EQ(CountUnlikeDefault(target), 20 * 3);
    EXPECT_EQ(readAt(131072), S_OK); // past the grid
    EXPECT_EQ(target.Buffer().LastRead(), (SChunkCounts{.skipped = 1}));
}

TEST(ChunkBands, DamageOutsideTheBandIsNotLookedAt) {
    CCaliOperation<S3WordCoef> source;
    ASSERT_EQ(source.Buffer().Allocate(5, 300), S_OK);
    FillPattern(source);
    Bytes file = RectFile(source.Buffer(), {0, 0, 5, 300});
    StoreLittle<std::uint16_t>(&file[168 + chunk_record::kWidth], 999);
    CCaliOperation<S3WordCoef> target;
    ASSERT_EQ(target.Buffer().Allocate(5, 300), S_OK);
    std::stringstream stream = StreamOf(file);
    EXPECT_EQ(target.Buffer().ReadBandChunks(stream, 0, 128, 512, 1536), S_OK);
    EXPECT_EQ(target.Buffer().LastRead(), (SChunkCounts{.read = 2}));
    EXPECT_EQ(CountUnlikePattern(target, 0, 128, 5, 300), 0);
}

TEST(ChunkBands, TheStreamIsLeftBehindTheDataOfEveryRecord) {
    CCaliOperation<S3WordCoef> source;
    ASSERT_EQ(source.Buffer().Allocate(5, 300), S_OK);
    FillPattern(source);
    Bytes file = RectFile(source.Buffer(), {0, 0, 5, 300});
    const auto dataEnd = static_cast<std::streamoff>(file.size());
    file.resize(file.size() + 7);
    CCaliOperation<S3WordCoef> target;
    ASSERT_EQ(target.Buffer().Allocate(5, 300), S_OK);
    // Bands with the first, the second, the last, every and no chunk.
    for (const auto& [first, end] : std::vector<std::pair<std::uint32_t, std::uint32_t>>{
             {0, 1}, {512, 513}, {1024, 1025}, {0, kGridBlocks}, {5, 6}}) {
        std::stringstream stream = StreamOf(file);
        EXPECT_EQ(target.Buffer().ReadBandChunks(stream, 0, 0, first, end), S_OK);
        EXPECT_TRUE(stream.good());
        EXPECT_EQ(std::streamoff{stream.tellg()}, dataEnd) << first;
    }
    // The last chunk is one that nothing is decoded of.
    StoreLittle<std::uint16_t>(&file[168 + 2 * 56 + chunk_record::kWidth], 999);
    std::stringstream stream = StreamOf(file);
    EXPECT_EQ(target.Buffer().ReadRectChunks(stream, 0, 0, 0, 0), E_FAIL);
    EXPECT_TRUE(stream.good());
    EXPECT_EQ(std::streamoff{stream.tellg()}, dataEnd);
    // Records without data to the very end of the stream.
    file.resize(static_cast<std::size_t>(dataEnd));
    stream = StreamOf(file);
    EXPECT_EQ(target.Buffer().ReadBandChunks(stream, 0, 0, 0, 1), S_OK);
    EXPECT_FALSE(stream.fail());
    EXPECT_EQ(std::streamoff{stream.tellg()}, dataEnd);
}

TEST(ChunkBands, ShortFilesFail) {
    CCaliOperation<S3WordCoef> store;
    for (const std::size_t length : {0U, 100U, 167U}) {
        std::stringstream stream = StreamOf(Bytes(length));
        EXPECT_EQ(store.Buffer().ReadBandChunks(stream, 0, 0, 0, 262144), E_FAIL);
    }
    std::stringstream empty = StreamOf(Bytes(168));
    EXPECT_EQ(store.Buffer().ReadBandChunks(empty, 0, 0, 0, 262144), S_OK);
}

} // namespace
} // namespace trevolt
