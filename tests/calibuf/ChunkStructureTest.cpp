#include <functional>
#include <vector>

#include "tests/calibuf/StoreSupport.h"
#include "trevolt/TransferReport.h"

namespace trevolt {
namespace {

using namespace test;

/// What the report tells of a directory but for missing pixels.
struct SStructure {
    std::uint64_t repeated = 0;
    std::uint32_t outside = 0;
    std::uint32_t foreign = 0;
    std::uint64_t stray = 0;

    friend bool operator==(const SStructure&, const SStructure&) = default;
};
void PrintTo(const SStructure& told, std::ostream* to) {
    *to << told.repeated << " repeated, " << told.outside << " outside, " << told.foreign
        << " foreign, " << told.stray << " stray";
}

SStructure StructureIn(const CTransferReport& report) {
    return {report.RepeatedPixels(), report.ChunksOutside(), report.ForeignIndices(),
            report.StrayBytes()};
}

SChunkRecord Placed(std::uint32_t x, std::uint32_t y, std::uint16_t width, std::uint16_t height) {
    return {.index = BlockIndexOfPixel(x, y), .x = x, .y = y, .width = width, .height = height};
}

/// A file of header, directory and so many bytes behind it.
Bytes StructureFile(SChunkHeader header, const std::vector<SChunkRecord>& records,
                    std::size_t dataBytes = 0, std::uint32_t planeCount = 9) {
    header.recordCount = static_cast<std::uint32_t>(records.size());
    const ChunkHeaderBytes bytes = EncodeChunkHeader(header);
    Bytes file(bytes.begin(), bytes.end());
    file.resize(kChunkHeaderBytes + records.size() * ChunkRecordBytes(planeCount) + dataBytes);
    for (std::size_t i = 0; i < records.size(); ++i)
        EncodeChunkRecord(records[i], planeCount,
                          file.data() + kChunkHeaderBytes + i * ChunkRecordBytes(planeCount));
    return file;
}

/// Of a read into a store without a block.
template <class Element = S9WordCoef>
SStructure StructureOf(const Bytes& file) {
    const CTransferReport report;
    CCaliOperation<Element> owner;
    DropStatus(ReadAt(owner.Buffer(), file, 0, 0)); // chunks without data may fail
    return StructureIn(report);
}

SStructure StructureOf(const SChunkHeader& header, const std::vector<SChunkRecord>& records) {
    return StructureOf(StructureFile(header, records));
}

constexpr SChunkHeader kArea{.width = 300, .height = 200};

TEST(ChunkStructure, PixelsInSeveralChunksCountOnce) {
    const SChunkRecord block = Placed(0, 0, 256, 128);
    EXPECT_EQ(StructureOf(kArea, {block}), SStructure{});
    EXPECT_EQ(StructureOf(kArea, {block, block}), SStructure{.repeated = 256 * 128});
    EXPECT_EQ(StructureOf(kArea, {block, block, block}), SStructure{.repeated = 256 * 128});
    EXPECT_EQ(StructureOf(kArea, {Placed(10, 10, 20, 20), Placed(20, 20, 20, 20)}),
              SStructure{.repeated = 100});
    EXPECT_EQ(StructureOf(kArea, {Placed(250, 120, 20, 20), Placed(255, 127, 2, 2)}),
              SStructure{.repeated = 4});
    // Past the area nothing is counted.
    const SChunkRecord corner = Placed(256, 128, 256, 128);
    EXPECT_EQ(StructureOf(kArea, {corner, corner}), SStructure{.repeated = 44 * 72});
}

TEST(ChunkStructure, WholeBlocksOfTheAreaMayReachOutOfIt) {
    for (const SChunkRecord& block : {Placed(0, 0, 256, 128), Placed(256, 0, 256, 128),
                                      Placed(0, 128, 256, 128), Placed(256, 128, 256, 128)})
        EXPECT_EQ(StructureOf(kArea, {block}), SStructure{}) << block.x << ", " << block.y;
    constexpr SStructure kOutside{.outside = 1};
    EXPECT_EQ(StructureOf(kArea, {Placed(512, 0, 256, 128)}), kOutside);
    EXPECT_EQ(StructureOf(kArea, {Placed(0, 256, 256, 128)}), kOutside);
    EXPECT_EQ(StructureOf({.width = 256, .height = 128}, {Placed(256, 0, 256, 128)}), kOutside);
    EXPECT_EQ(StructureOf({.width = 256, .height = 128}, {Placed(0, 128, 256, 128)}), kOutside);
    EXPECT_EQ(StructureOf({.width = 257, .height = 129}, {Placed(256, 128, 256, 128)}),
              SStructure{});
}

TEST(ChunkStructure, NoOtherChunkMayReachOutOfTheArea) {
    EXPECT_EQ(StructureOf(kArea, {Placed(256, 128, 44, 72)}), SStructure{});
    constexpr SStructure kOutside{.outside = 1};
    EXPECT_EQ(StructureOf(kArea, {Placed(256, 128, 45, 72)}), kOutside);
    EXPECT_EQ(StructureOf(kArea, {Placed(256, 128, 44, 73)}), kOutside);
    EXPECT_EQ(StructureOf(kArea, {Placed(256, 128, 255, 128)}), kOutside);
    EXPECT_EQ(StructureOf(kArea, {Placed(256, 128, 256, 127)}), kOutside);
    EXPECT_EQ(StructureOf(kArea, {Placed(255, 128, 256, 128)}), kOutside);
    EXPECT_EQ(StructureOf(kArea, {Placed(256, 127, 256, 128)}), kOutside);
    EXPECT_EQ(StructureOf(kArea, {Placed(300, 0, 1, 1), Placed(0, 200, 1, 1), Placed(5, 5, 1, 1)}),
              SStructure{.outside = 2});
    EXPECT_EQ(StructureOf(kArea, {Placed(0xFFFFFFFF, 0xFFFFFFFF, 256, 128)}), kOutside);
    EXPECT_EQ(StructureOf({}, {Placed(0, 0, 256, 128)}), kOutside);
}

TEST(ChunkStructure, TheAreaIsMeasuredFromTheOrigin) {
    const SChunkHeader header{.originX = 1000, .originY = 777, .width = 30, .height = 20};
    EXPECT_EQ(StructureOf(header, {Placed(1000, 777, 30, 20)}), SStructure{});
    EXPECT_EQ(StructureOf(header, {Placed(999, 777, 30, 20)}), SStructure{.outside = 1});
    EXPECT_EQ(StructureOf(header, {Placed(1000, 776, 30, 20)}), SStructure{.outside = 1});
    EXPECT_EQ(StructureOf(header, {Placed(1001, 777, 30, 20)}), SStructure{.outside = 1});
    EXPECT_EQ(StructureOf(header, {Placed(1000, 778, 30, 20)}), SStructure{.outside = 1});
    // The blocks that it touches; what begins before the origin is no chunk that can be placed.
    EXPECT_EQ(StructureOf(header, {Placed(768, 768, 256, 128)}), SStructure{});
    EXPECT_EQ(StructureOf(header, {Placed(1024, 768, 256, 128)}), SStructure{});
    EXPECT_EQ(StructureOf(header, {Placed(512, 768, 256, 128)}), SStructure{.outside = 1});
    EXPECT_EQ(StructureOf(header, {Placed(768, 640, 256, 128)}), SStructure{.outside = 1});
    const SChunkHeader largest{
        .originX = 0xFFFFFF00, .originY = 0xFFFFFF80, .width = 0xFFFFFFFF, .height = 0xFFFFFFFF};
    EXPECT_EQ(StructureOf(largest, {Placed(0xFFFFFF00, 0xFFFFFF80, 256, 128)}), SStructure{});
}

TEST(ChunkStructure, IndicesAreThoseOfThePlaces) {
    SChunkRecord record = Placed(256, 128, 44, 72);
    EXPECT_EQ(record.index, 513U);
    for (const std::uint32_t index : {0U, 512U, 514U, 0xFFFFFFFFU}) {
        record.index = index;
        EXPECT_EQ(StructureOf(kArea, {record, Placed(0, 0, 1, 1)}), SStructure{.foreign = 1});
    }
}

TEST(ChunkStructure, RecordsWithoutAChunkCountForNothing) {
    EXPECT_EQ(StructureOf(kArea, {SChunkRecord{}, {.index = 9, .x = 9999, .height = 4}}),
              SStructure{});
    SChunkRecord impossible = Placed(300, 0, 257, 1); // fails, and is told of by that
    impossible.index = 7;
    EXPECT_EQ(StructureOf(kArea, {impossible}), SStructure{});
}

TEST(ChunkStructure, BytesBehindTheLastChunkAreCounted) {
    SChunkRecord first = Placed(0, 0, 10, 10);
    SChunkRecord second = Placed(20, 0, 10, 10);
    first.totalSize = 30;
    second.totalSize = 12;
    const auto withData = [&](std::size_t bytes) {
        return StructureOf(StructureFile(kArea, {first, SChunkRecord{}, second}, bytes)).stray;
    };
    EXPECT_EQ(withData(0), 0U);
    EXPECT_EQ(withData(42), 0U);
    EXPECT_EQ(withData(43), 1U);
    EXPECT_EQ(withData(5042), 5000U);
    EXPECT_EQ(StructureOf(StructureFile(kArea, {}, 7)).stray, 7U);
    first.totalSize = second.totalSize = 0xFFFFFFFF;
    EXPECT_EQ(withData(5000), 0U);
}

TEST(ChunkStructure, ExtraWordsMayFollowTheMatrixPart) {
    SChunkHeader header = kArea;
    header.formatId = kChromaChunkFormat2;
    SChunkRecord record = Placed(0, 0, 10, 10);
    record.totalSize = 30;
    constexpr std::uint32_t kEnd = 168 + 56 + 30;
    const auto leadingTo = [&](std::uint32_t offset) {
        header.directoryOffset = offset;
        return StructureFile(header, {record}, 30 + 500);
    };
    EXPECT_EQ(StructureOf(leadingTo(kEnd)).stray, 0U);
    EXPECT_EQ(StructureOf(leadingTo(kEnd + 4)).stray, 4U);
    EXPECT_EQ(StructureOf(leadingTo(kEnd - 4)).stray, 0U);
    EXPECT_EQ(StructureOf(leadingTo(0)).stray, 0U);
    EXPECT_EQ(StructureOf(leadingTo(0xFFFFFFFF)).stray, 500U);
    header.formatId = kChromaChunkFormat;
    EXPECT_EQ(StructureOf(leadingTo(kEnd)).stray, 500U) << "another layout has no such part";
}

// The part for extra words is the last one, and its records are told of in nothing else.
TEST(ChunkStructure, NothingMayFollowTheExtraWords) {
    const SChunkHeader header{
        .formatId = kChromaChunkFormat2, .width = 300, .height = 200, .directoryOffset = 168};
    SChunkRecord record = Placed(400, 0, 10, 10);
    record.index = 7;
    record.totalSize = 30;
    for (const std::size_t stray : {0U, 9U})
        EXPECT_EQ(
            StructureOf<SWordCoef>(StructureFile(header, {record, record}, 2 * 30 + stray, 1)),
            SStructure{.stray = stray});
}

// The memory of an image may be larger than the image.
TEST(ChunkStructure, ImagesEndWhereTheyEnd) {
    CCaliOperation<S3WordCoef> owner;
    ASSERT_EQ(owner.Buffer().Allocate(300, 200), S_OK);
    FillPattern(owner);
    Bytes image(static_cast<std::size_t>(owner.Buffer().MaxMemoryImageBytes()));
    ASSERT_EQ(owner.Buffer().SaveToMemory(image.data(), 256, 128), S_OK);
    CCaliOperation<S3WordCoef> target;
    ASSERT_EQ(target.Buffer().Allocate(600, 400), S_OK);
    const CTransferReport report;
    EXPECT_EQ(target.Buffer().LoadFromMemory(image.data(), image.size()), S_OK);
    EXPECT_EQ(StructureIn(report), SStructure{});
    EXPECT_EQ(report.MissingPixels(), 0U);
    // Its first chunk once more, in the place of the second.
    std::copy_n(image.begin() + kChunkHeaderBytes, 12,
                image.begin() + kChunkHeaderBytes +
                    static_cast<std::ptrdiff_t>(ChunkRecordBytes(9)));
    EXPECT_EQ(target.Buffer().LoadFromMemory(image.data(), image.size()), S_OK);
    EXPECT_EQ(StructureIn(report), SStructure{.repeated = 256 * 128});
}

TEST(ChunkStructure, ABandReadTellsNothing) {
    const SChunkRecord record = Placed(300, 0, 10, 10);
    const Bytes file = StructureFile(kArea, {record, record}, 20);
    const CTransferReport report;
    CCaliOperation<S9WordCoef> owner;
    std::stringstream stream = StreamOf(file);
    DropStatus(owner.Buffer().ReadBandChunks(stream, 0, 0, 0, 1)); // its chunks fail
    EXPECT_EQ(StructureIn(report), SStructure{});
}

} // namespace
} // namespace trevolt
