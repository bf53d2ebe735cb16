#include "calibuf/WordElementKind.h"
#include "tests/calibuf/StoreSupport.h"
#include "tests/support/BudgetLimit.h"

namespace trevolt {
namespace {

using namespace test;

template <class T>
class ChunkWriterOf : public ::testing::Test {
  protected:
    static constexpr std::uint32_t kPlanes = kWordElementKind<T>.planeCount;
    static constexpr std::uint32_t kWords = sizeof(T) / 2;

    CCaliOperation<T> m_owner;
    CCaliBuf& m_store = m_owner.Buffer();
};
TYPED_TEST_SUITE(ChunkWriterOf, AllElements);

void Append(Bytes& to, const Bytes& bytes) { to.insert(to.end(), bytes.begin(), bytes.end()); }

Bytes LittleU32(std::uint32_t value) {
    Bytes bytes(4);
    StoreLittle<std::uint32_t>(bytes.data(), value);
    return bytes;
}

// Planes of eight bytes are too short for matches: a token and eight literals.
TYPED_TEST(ChunkWriterOf, SmallRectangleByteForByte) {
    ASSERT_EQ(this->m_store.Allocate(10, 10), S_OK);
    FillPattern(this->m_owner);
    std::stringstream stream = StreamBehind({});
    ASSERT_EQ(this->m_store.WriteRectChunks(stream, {3, 5, 5, 7}), S_OK);

    Bytes expected(kChunkHeaderBytes);
    StoreLittle<std::uint32_t>(&expected[16], 1);
    Append(expected, LittleU32(0));                // index
    Append(expected, LittleU32(3));                // x
    Append(expected, LittleU32(5));                // y
    Append(expected, MakeBytes({2, 0, 2, 0}));     // width, height
    Append(expected, LittleU32(9 * this->kWords)); // total
    for (std::uint32_t k = 0; k < this->kPlanes; ++k)
        Append(expected, LittleU32(k < this->kWords ? 9 : 0));
    for (std::uint32_t k = 0; k < this->kWords; ++k) {
        Append(expected, MakeBytes({0x80}));
        for (const auto& [x, y] :
             std::vector<std::pair<std::uint32_t, std::uint32_t>>{{3, 5}, {4, 5}, {3, 6}, {4, 6}}) {
            Bytes word(2);
            StoreLittle<std::uint16_t>(word.data(), PatternWord(x, y, k));
            Append(expected, word);
        }
    }
    EXPECT_EQ(BytesOf(stream), expected);
}

TYPED_TEST(ChunkWriterOf, MemoryImageOfASmallStore) {
    ASSERT_EQ(this->m_store.Allocate(2, 1), S_OK);
    EXPECT_EQ(this->m_store.MaxMemoryImageBytes(),
              168 + 20 + 4 * this->kPlanes + 65536 * sizeof(TypeParam));
    Bytes image(static_cast<std::size_t>(this->m_store.MaxMemoryImageBytes()), std::byte{0x77});
    std::uint64_t size = 0;
    ASSERT_EQ(this->m_store.SaveToMemory(image.data(), 1000, 777, &size), S_OK);

    Bytes header(168);
    const Bytes id = MakeBytes({0x8F, 0xB0, 0x2E, 0x6F, 0x95, 0xC3, 0x16, 0x40, 0x84, 0x20, 0xFB,
                                0xC1, 0x66, 0x14, 0xB3, 0x0A});
    std::copy(id.begin(), id.end(), header.begin());
    StoreLittle<std::uint32_t>(&header[16], 1);
    StoreLittle<std::uint32_t>(&header[20], 1000);
    StoreLittle<std::uint32_t>(&header[24], 777);
    StoreLittle<std::uint32_t>(&header[28], 2);
    StoreLittle<std::uint32_t>(&header[32], 1);
    StoreLittle<std::uint32_t>(&header[36], 1);
    EXPECT_EQ(Bytes(image.begin(), image.begin() + 168), header);

    const SChunkRecord record = RecordAt(image, this->kPlanes, 0);
    EXPECT_EQ(record.index, 0U);
    EXPECT_EQ(record.x, 0U);
    EXPECT_EQ(record.y, 0U);
    EXPECT_EQ(record.width, 256U);
    EXPECT_EQ(record.height, 128U);
    std::uint32_t sum = 0;
    for (std::size_t k = 0; k < kMaxWords; ++k) {
        EXPECT_EQ(record.planeSizes[k] != 0, k < this->kWords);
        sum += record.planeSizes[k];
    }
    EXPECT_EQ(record.totalSize, sum);
    EXPECT_EQ(size, 168 + 20 + 4 * this->kPlanes + sum);
    EXPECT_EQ(image[static_cast<std::size_t>(size)], std::byte{0x77});
}

TEST(ChunkWriter, WholeBlocksInOrderOfAllocation) {
    CCaliOperation<S9WordCoef> owner;
    ASSERT_EQ(owner.Buffer().Allocate(300, 200), S_OK);
    std::stringstream stream = StreamBehind({});
    ASSERT_EQ(owner.Buffer().WriteAllChunks(stream), S_OK);
    const Bytes file = BytesOf(stream);
    std::size_t dataAt = 168 + 224;
    const std::array<std::array<std::uint32_t, 3>, 4> expected{
        {{0, 0, 0}, {1, 256, 0}, {512, 0, 128}, {513, 256, 128}}};
    for (std::size_t i = 0; i < 4; ++i) {
        const SChunkRecord record = RecordAt(file, 9, i);
        EXPECT_EQ((std::array{record.index, record.x, record.y}), expected[i]);
        EXPECT_EQ(record.width, 256U);
        EXPECT_EQ(record.height, 128U);
        dataAt += record.totalSize;
    }
    EXPECT_EQ(file.size(), dataAt);
    // The stream is left behind the directory, where the first data byte lies.
    EXPECT_EQ(stream.tellp(), std::streamoff{168 + 224});
    const SChunkRecord first = RecordAt(file, 9, 0);
    Bytes elements(18 * 32768);
    std::uint32_t total = 0;
    EXPECT_EQ(owner.Buffer().DecompressPlanes(first, &file[168 + 224], elements.data(), total),
              S_OK);
    EXPECT_EQ(std::memcmp(elements.data(), owner.Buffer().Block(0)->pData, elements.size()), 0);
}

TEST(ChunkWriter, DirectoryMayStartAnywhere) {
    CCaliOperation<S3WordCoef> owner;
    ASSERT_EQ(owner.Buffer().Allocate(10, 10), S_OK);
    std::stringstream behind = StreamBehind({});
    ASSERT_EQ(owner.Buffer().WriteAllChunks(behind), S_OK);
    std::stringstream shifted = StreamOf(Bytes(7, std::byte{0x55}));
    shifted.seekp(7);
    ASSERT_EQ(owner.Buffer().WriteAllChunks(shifted), S_OK);
    EXPECT_EQ(behind.str().substr(168), shifted.str().substr(7));
}

TEST(ChunkWriter, AnEmptyStoreWritesNothing) {
    CCaliOperation<S3WordCoef> owner;
    std::stringstream stream = StreamBehind({});
    EXPECT_EQ(owner.Buffer().WriteAllChunks(stream), S_OK);
    EXPECT_EQ(stream.str().size(), 168U);
    Bytes image(168);
    EXPECT_EQ(owner.Buffer().MaxMemoryImageBytes(), 168U);
    EXPECT_EQ(owner.Buffer().SaveToMemory(image.data(), 0, 0), S_OK);
    EXPECT_EQ(DecodeChunkHeader(image.data()).recordCount, 0U);
    EXPECT_EQ(owner.Buffer().SaveToMemory(nullptr, 0, 0), E_FAIL);
}

TEST(ChunkWriter, RectangleListsPiecesColumnByColumn) {
    CCaliOperation<S9WordCoef> owner;
    ASSERT_EQ(owner.Buffer().Allocate(600, 300), S_OK);
    const Bytes wide = RectFile(owner.Buffer(), {0, 0, 300, 10});
    const auto place = [](const SChunkRecord& r) {
        return std::array<std::uint32_t, 5>{r.index, r.x, r.y, r.width, r.height};
    };
    using Place = std::array<std::uint32_t, 5>;
    EXPECT_EQ(place(RecordAt(wide, 9, 0)), (Place{0, 0, 0, 256, 10}));
    EXPECT_EQ(place(RecordAt(wide, 9, 1)), (Place{1, 256, 0, 44, 10}));
    const Bytes square = RectFile(owner.Buffer(), {250, 120, 522, 258});
    const std::array<Place, 9> expected{{{0, 250, 120, 6, 8},
                                         {512, 250, 128, 6, 128},
                                         {1024, 250, 256, 6, 2},
                                         {1, 256, 120, 256, 8},
                                         {513, 256, 128, 256, 128},
                                         {1025, 256, 256, 256, 2},
                                         {2, 512, 120, 10, 8},
                                         {514, 512, 128, 10, 128},
                                         {1026, 512, 256, 10, 2}}};
    for (std::size_t i = 0; i < expected.size(); ++i)
        EXPECT_EQ(place(RecordAt(square, 9, i)), expected[i]);
}

TEST(ChunkWriter, ReservesSpaceForBlocksThatAreNotThere) {
    CCaliOperation<SWordCoef> owner;
    CCaliBuf& store = owner.Buffer();
    ASSERT_EQ(store.AllocateBlock(513, 256, 128), S_OK);
    ASSERT_EQ(store.FillBlockDefault(513), S_OK);
    const Bytes file = RectFile(store, {255, 127, 258, 130});
    EXPECT_EQ(RecordAt(file, 1, 0).index, 513U);
    EXPECT_EQ(RecordAt(file, 1, 0).width, 2U);
    const Bytes reserved(file.begin() + 168 + 24, file.begin() + 168 + 4 * 24);
    EXPECT_EQ(reserved, Bytes(3 * 24));
    EXPECT_EQ(file.size(), 168 + 4 * 24 + RecordAt(file, 1, 0).totalSize);
}

TEST(ChunkWriter, ExampleOfTheFormatPage) {
    CCaliOperation<S3WordCoef> owner;
    ASSERT_EQ(owner.Buffer().Allocate(260, 10), S_OK);
    owner.Find(255, 3)->w = {0xE000, 0xE001, 0xE002};
    owner.Find(256, 3)->w = {0xD000, 0xD001, 0xD002};
    const SPixelRect rect{255, 3, 258, 4};
    constexpr ChunkFormatId kBrightFormat{0x7F, 0x5D, 0x55, 0x81, 0x30, 0x5A, 0x58, 0x49,
                                          0xB7, 0x65, 0x9E, 0x3D, 0x63, 0xB7, 0x28, 0xE8};
    std::stringstream stream = StreamBehind({.formatId = kBrightFormat,
                                             .originX = 255,
                                             .originY = 3,
                                             .width = 3,
                                             .height = 1,
                                             .recordCount = 2});
    ASSERT_EQ(owner.Buffer().WriteRectChunks(stream, rect), S_OK);
    const Bytes file = BytesOf(stream);
    Bytes expected =
        MakeBytes({0x7F, 0x5D, 0x55, 0x81, 0x30, 0x5A, 0x58, 0x49,             // identifier
                   0xB7, 0x65, 0x9E, 0x3D, 0x63, 0xB7, 0x28, 0xE8, 1, 0, 0, 0, // version
                   0xFF, 0,    0,    0,    3,    0,    0,    0,                // origin
                   3,    0,    0,    0,    1,    0,    0,    0,                // size
                   2,    0,    0,    0});                                      // records
    expected.resize(168);
    Append(expected, MakeBytes({0, 0, 0, 0, 0xFF, 0, 0, 0, 3, 0, 0, 0, // block 0, at (255, 3)
                                1, 0, 1, 0, 9,    0, 0, 0,             // 1 × 1, 9 bytes
                                3, 0, 0, 0, 3,    0, 0, 0, 3, 0, 0, 0}));
    expected.resize(168 + 56);
    Append(expected, MakeBytes({1, 0, 0, 0, 0,  1, 0, 0, 3, 0, 0, 0, // block 1, at (256, 3)
                                2, 0, 1, 0, 15, 0, 0, 0,             // 2 × 1, 15 bytes
                                5, 0, 0, 0, 5,  0, 0, 0, 5, 0, 0, 0}));
    expected.resize(168 + 112);
    Append(expected, MakeBytes({0x20, 0x00, 0xE0, 0x20, 0x01, 0xE0, 0x20, 0x02, 0xE0}));
    Append(expected, MakeBytes({0x40, 0x00, 0xD0, 0xFF, 0xFF, 0x40, 0x01, 0xD0, 0xFF, 0xFF, 0x40,
                                0x02, 0xD0, 0xFF, 0xFF}));
    EXPECT_EQ(file, expected);
}

TEST(ChunkWriter, RectanglesThatCannotBe) {
    CCaliOperation<SWordCoef> owner;
    CCaliBuf& store = owner.Buffer();
    ASSERT_EQ(store.Allocate(300, 300), S_OK);
    const auto write = [&](const SPixelRect& rect, Status expected) {
        std::stringstream stream;
        EXPECT_EQ(store.WriteRectChunks(stream, rect), expected);
        EXPECT_EQ(stream.str().size(), 0U);
    };
    write({0, 7, 300, 7}, E_FAIL);
    write({0, 0, 0, 0}, E_FAIL);
    write({300, 0, 0, 10}, E_COEF_INVALIDARG);
    write({0, 10, 300, 0}, E_COEF_INVALIDARG);
    write({0, 0, 131073, 10}, E_COEF_INVALIDARG);
    write({0, 0, 300, 65537}, E_COEF_INVALIDARG);
    write({-2147483647 - 1, 0, 2147483647, 10}, E_COEF_INVALIDARG);
    write({256, 0, 256, 10}, S_OK); // only the height is tested; no block is touched
}

TEST(ChunkWriter, RectangleWithoutColumnsWritesRecordsWithoutData) {
    CCaliOperation<S3WordCoef> owner;
    ASSERT_EQ(owner.Buffer().Allocate(20, 20), S_OK);
    const Bytes file = RectFile(owner.Buffer(), {10, 4, 10, 9});
    EXPECT_EQ(file.size(), 168U + 56);
    EXPECT_EQ(RecordAt(file, 9, 0), (SChunkRecord{.x = 10, .y = 4, .width = 0, .height = 5}));
    CCaliOperation<S3WordCoef> back;
    ASSERT_EQ(back.Buffer().Allocate(20, 20), S_OK);
    EXPECT_EQ(ReadAt(back.Buffer(), file, 0, 0), S_OK);
    EXPECT_EQ(back.Buffer().LastRead(), SChunkCounts{});
}

// A column less than a block's is not the block's own run of elements.
TEST(ChunkWriter, RectanglesOfNearlyABlocksWidthHoldTheirRows) {
    CCaliOperation<S3WordCoef> owner;
    ASSERT_EQ(owner.Buffer().Allocate(256, 3), S_OK);
    FillPattern(owner);
    for (const std::uint32_t left : {0U, 1U}) {
        const Bytes file = RectFile(owner.Buffer(), {static_cast<std::int32_t>(left), 0,
                                                     static_cast<std::int32_t>(left) + 255, 3});
        CCaliOperation<S3WordCoef> back;
        ASSERT_EQ(back.Buffer().Allocate(256, 3), S_OK);
        EXPECT_EQ(ReadAt(back.Buffer(), file, left, 0), S_OK);
        EXPECT_EQ(CountUnlikePattern(back, left, 0, left + 255, 3), 0);
    }
}

TEST(ChunkWriter, BlocksAreWrittenWhereTheirRecordsSay) {
    CCaliOperation<S3WordCoef> owner;
    CCaliBuf& store = owner.Buffer();
    ASSERT_EQ(store.AllocateBlock(0, 100, 50), S_OK); // not the corner of block 0
    ASSERT_EQ(store.FillBlockDefault(0), S_OK);
    owner.Find(3, 2)->w = {1, 2, 3}; // column 3, row 2 of the block
    const Bytes file = RectFile(store, {103, 52, 104, 53});
    EXPECT_EQ(RecordAt(file, 9, 0).x, 103U);
    EXPECT_EQ(RecordAt(file, 9, 0).y, 52U);
    EXPECT_EQ(Bytes(file.begin() + 168 + 56, file.end()),
              MakeBytes({0x20, 1, 0, 0x20, 2, 0, 0x20, 3, 0}));
    // A rectangle that touches the index's area only has nothing of the block.
    EXPECT_EQ(RectFile(store, {0, 0, 50, 20}).size(), 168U + 56);
}

TEST(ChunkWriter, RectanglesMayReachPastTheGrid) {
    CCaliOperation<S3WordCoef> owner;
    ASSERT_EQ(owner.Buffer().Allocate(20, 20), S_OK);
    std::stringstream stream;
    EXPECT_EQ(owner.Buffer().WriteRectChunks(stream, {-300, -200, 5, 5}), S_OK);
    const Bytes bytes = BytesOf(stream);
    EXPECT_EQ(RecordAt(bytes, 9, 0, 0).width, 5U);
    EXPECT_EQ(RecordAt(bytes, 9, 0, 0).height, 5U);
    EXPECT_EQ(bytes.size(), 4 * 56 + RecordAt(bytes, 9, 0, 0).totalSize);
    std::stringstream far;
    EXPECT_EQ(owner.Buffer().WriteRectChunks(far, {131000, 65500, 131100, 65600}), S_OK);
    EXPECT_EQ(BytesOf(far), Bytes(4 * 56));
}

TEST(ChunkWriter, RefusedScratchMemoryWritesNothing) {
    CCaliOperation<S9WordCoef> owner;
    CCaliBuf& store = owner.Buffer();
    ASSERT_EQ(store.Allocate(10, 10), S_OK);
    Bytes image(static_cast<std::size_t>(store.MaxMemoryImageBytes()));
    std::stringstream stream;
    std::uint64_t directoryAt = 0;
    std::uint64_t dataAt = 0;
    const CBudgetLimit limit(CMemoryBudget::Process().Outstanding() + 100);
    EXPECT_EQ(store.WriteAllChunks(stream), E_COEF_NOBUFFER);
    EXPECT_EQ(store.WriteRectChunks(stream, {0, 0, 10, 10}), E_COEF_NOBUFFER);
    EXPECT_EQ(
        store.WriteBandChunks(stream, {0, 0, 10, 10}, {0, 0, 10, 10}, directoryAt, dataAt, 0, 0),
        E_COEF_NOBUFFER);
    EXPECT_EQ(store.SaveToMemory(image.data(), 0, 0), E_FAIL);
    EXPECT_EQ(stream.str().size(), 0U);
    EXPECT_EQ(directoryAt, 0U);
    EXPECT_EQ(dataAt, 0U);
}

TEST(ChunkWriter, AnImagesRecordsOfFailedChunksAreZero) {
    const auto store = CCaliBuf::Create();
    store->SetElement(10, 9);
    ASSERT_EQ(store->AllocateBlock(0, 0, 0), S_OK);
    Bytes image(static_cast<std::size_t>(store->MaxMemoryImageBytes()), std::byte{0x77});
    std::uint64_t size = 0;
    EXPECT_EQ(store->SaveToMemory(image.data(), 0, 0, &size), E_FAIL);
    EXPECT_EQ(size, 168U + 56);
    EXPECT_EQ(RecordAt(image, 9, 0), SChunkRecord{});
    EXPECT_EQ(image[168 + 56], std::byte{0x77});
}

TEST(ChunkWriter, ElementsOfNoKindAreNotWritten) {
    const auto store = CCaliBuf::Create();
    store->SetElement(10, 9);
    ASSERT_EQ(store->AllocateBlock(0, 0, 0), S_OK);
    std::stringstream stream;
    EXPECT_EQ(store->WriteAllChunks(stream), E_FAIL);
    EXPECT_EQ(BytesOf(stream), Bytes(56)); // the reserved space
}

} // namespace
} // namespace trevolt
