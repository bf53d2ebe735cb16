#include "calibuf/ChunkLayout.h"

#include "tests/calibuf/StoreSupport.h"

namespace trevolt {
namespace {

using namespace test;

SChunkHeader FullHeader() {
    SChunkHeader header{.formatId = kBrightChunkFormat2,
                        .originX = 0x04030201,
                        .originY = 0x14131211,
                        .width = 0x24232221,
                        .height = 0x34333231,
                        .recordCount = 0x44434241,
                        .fileKind = 0x51,
                        .ownerFlag = 0x71,
                        .directoryOffset = 0x84838281};
    for (std::uint8_t i = 0; i < 16; ++i)
        header.ownerData[i] = static_cast<std::uint8_t>(0x60 + i);
    return header;
}

TEST(ChunkLayout, HeaderFieldsHaveTheirPlaces) {
    Bytes expected(168);
    const auto put = [&](std::size_t at, const Bytes& bytes) {
        std::copy(bytes.begin(), bytes.end(), expected.begin() + static_cast<std::ptrdiff_t>(at));
    };
    put(0, MakeBytes({0xAE, 0x34, 0x30, 0xA2, 0x59, 0x23, 0x3B, 0x41, 0x96, 0xB9, 0x6F, 0x93, 0x73,
                      0x7C, 0xA3, 0x68}));
    put(16, MakeBytes({1, 0, 0, 0}));
    put(20, MakeBytes({0x01, 0x02, 0x03, 0x04, 0x11, 0x12, 0x13, 0x14}));
    put(28, MakeBytes({0x21, 0x22, 0x23, 0x24, 0x31, 0x32, 0x33, 0x34}));
    put(36, MakeBytes({0x41, 0x42, 0x43, 0x44}));
    put(67, MakeBytes({0x51}));
    put(69, MakeBytes({0x60, 0x61, 0x62, 0x63, 0x64, 0x65, 0x66, 0x67, 0x68, 0x69, 0x6A, 0x6B, 0x6C,
                       0x6D, 0x6E, 0x6F}));
    put(85, MakeBytes({0x71, 0x81, 0x82, 0x83, 0x84}));
    const ChunkHeaderBytes bytes = EncodeChunkHeader(FullHeader());
    EXPECT_EQ(Bytes(bytes.begin(), bytes.end()), expected);
    EXPECT_EQ(DecodeChunkHeader(expected.data()), FullHeader());
}

TEST(ChunkLayout, AHeaderIsReadAtTheStreamsPosition) {
    const ChunkHeaderBytes bytes = EncodeChunkHeader(FullHeader());
    const std::string header(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    std::istringstream stream("before" + header + "behind");
    stream.seekg(6);
    EXPECT_EQ(ReadChunkHeader(stream), FullHeader());
    EXPECT_TRUE(stream.good());
    EXPECT_EQ(stream.tellg(), std::streampos(6 + 168));
    std::istringstream last(header); // and not a byte more
    EXPECT_EQ(ReadChunkHeader(last), FullHeader());
    EXPECT_TRUE(last.good());
}

TEST(ChunkLayout, AStreamThatEndsInTheHeaderHasNone) {
    const ChunkHeaderBytes bytes = EncodeChunkHeader(FullHeader());
    const std::string header(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    for (std::size_t length = 0; length < header.size(); ++length) {
        std::istringstream stream(header.substr(0, length));
        EXPECT_EQ(ReadChunkHeader(stream), std::nullopt) << length;
        EXPECT_TRUE(stream.fail());
    }
    std::istringstream failed(header);
    failed.setstate(std::ios::failbit);
    EXPECT_EQ(ReadChunkHeader(failed), std::nullopt);
}

TEST(ChunkLayout, RecordsListAsManySizesAsTheKindHas) {
    EXPECT_EQ(ChunkRecordBytes(1), 24U);
    EXPECT_EQ(ChunkRecordBytes(9), 56U);
    EXPECT_EQ(ChunkRecordBytes(12), 68U);
    const SChunkRecord record{.index = 0x04030201,
                              .x = 0x14131211,
                              .y = 0x24232221,
                              .width = 0x3231,
                              .height = 0x4241,
                              .totalSize = 0x54535251,
                              .planeSizes = {0x64636261, 2, 3}};
    Bytes bytes(28);
    EncodeChunkRecord(record, 2, bytes.data());
    EXPECT_EQ(bytes, MakeBytes({0x01, 0x02, 0x03, 0x04, 0x11, 0x12, 0x13, 0x14, 0x21, 0x22,
                                0x23, 0x24, 0x31, 0x32, 0x41, 0x42, 0x51, 0x52, 0x53, 0x54,
                                0x61, 0x62, 0x63, 0x64, 2,    0,    0,    0}));
    SChunkRecord listed = record;
    listed.planeSizes[2] = 0; // past the list
    EXPECT_EQ(DecodeChunkRecord(bytes.data(), 2), listed);
}

TEST(ChunkLayout, FormatIdentifiersThatAreNotOneKindsAlone) {
    EXPECT_EQ(kChromaChunkFormat, (ChunkFormatId{0x8F, 0xB0, 0x2E, 0x6F, 0x95, 0xC3, 0x16, 0x40,
                                                 0x84, 0x20, 0xFB, 0xC1, 0x66, 0x14, 0xB3, 0x0A}));
    EXPECT_EQ(kBrightChunkFormat2, (ChunkFormatId{0xAE, 0x34, 0x30, 0xA2, 0x59, 0x23, 0x3B, 0x41,
                                                  0x96, 0xB9, 0x6F, 0x93, 0x73, 0x7C, 0xA3, 0x68}));
    EXPECT_EQ(kChromaChunkFormat2, (ChunkFormatId{0x0C, 0x14, 0xED, 0xF4, 0x3A, 0xFC, 0xD3, 0x4E,
                                                  0x97, 0xCB, 0x78, 0x6E, 0x63, 0xDE, 0xAF, 0x99}));
}

TEST(ChunkLayout, BlocksTouchedByARectangle) {
    EXPECT_EQ(BlocksTouchedBy({0, 0, 300, 10}).Count(), 2U);
    EXPECT_EQ(BlocksTouchedBy({0, 0, 256, 128}).Count(), 1U);
    EXPECT_EQ(BlocksTouchedBy({255, 127, 257, 129}).Count(), 4U);
    EXPECT_EQ(BlocksTouchedBy({256, 128, 257, 129}).Count(), 1U);
    EXPECT_EQ(BlocksTouchedBy({10, 0, 10, 10}).Count(), 1U);   // no columns, but inside a block
    EXPECT_EQ(BlocksTouchedBy({256, 0, 256, 10}).Count(), 0U); // no columns, at a block's edge
    EXPECT_EQ(BlocksTouchedBy({0, 0, 131072, 65536}).Count(), 262144U);
    EXPECT_EQ(BlocksTouchedBy({-300, 0, 10, 10}).Count(), 2U);
    EXPECT_EQ(BlocksTouchedBy({-10, 0, 10, 10}).Count(), 1U); // starts divide towards zero
    EXPECT_EQ(BlocksTouchedBy({300, 300, 0, 0}).Count(), 0U);
}

} // namespace
} // namespace trevolt
