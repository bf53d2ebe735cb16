// Word files turned in their own words, held against the way through the map.
#include "coef/StoredWordCoef.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <random>
#include <sstream>

#include <gtest/gtest.h>

#include "calibuf/CaliOperation.h"
#include "calibuf/ChunkLayout.h"
#include "coef/WordKind.h"
#include "tests/support/BudgetLimit.h"
#include "tests/support/Streams.h"
#include "tests/support/TestFiles.h"
#include "trevolt/ChromaCorrectCoef.h"
#include "trevolt/CoefRotation.h"
#include "trevolt/MemoryBudget.h"
#include "trevolt/TransferReport.h"
#include "trevolt/WordCoefFile.h"

namespace trevolt {
namespace {

using namespace test;

constexpr std::uint32_t kCodes[]{1, 2, 3};

/// A chunk of a made file: its place, counted from the area's left top.
struct SMadePiece {
    std::int32_t x;
    std::int32_t y;
    std::uint16_t width;
    std::uint16_t height;
};

/// A word file that is made chunk by chunk, whatever its chunks.
template <class Element>
struct SMadeFile {
    SChunkHeader header;
    std::vector<SChunkRecord> records;
    Bytes data;

    SMadeFile(std::uint32_t width, std::uint32_t height, std::uint32_t originX = 0,
              std::uint32_t originY = 0) {
        header = {.formatId = kWordKind<Element>.formatId,
                  .originX = originX,
                  .originY = originY,
                  .width = width,
                  .height = height,
                  .fileKind = kWordKind<Element>.hasFileKind ? std::uint8_t{2} : std::uint8_t{0}};
    }

    /// Adds a chunk whose element at (x, y) of the area is pixel(x, y).
    template <class Pixel>
    void Add(const SMadePiece& piece, const Pixel& pixel) {
        std::vector<Element> elements;
        for (std::int32_t y = piece.y; y < piece.y + piece.height; ++y)
            for (std::int32_t x = piece.x; x < piece.x + piece.width; ++x)
                elements.push_back(pixel(x, y));
        const CCaliOperation<Element> store;
        SChunkRecord record{.x = header.originX + static_cast<std::uint32_t>(piece.x),
                            .y = header.originY + static_cast<std::uint32_t>(piece.y),
                            .width = piece.width,
                            .height = piece.height};
        record.index = BlockIndexOfPixel(record.x, record.y);
        Bytes compressed(store.Buffer().CompressedBound());
        ASSERT_EQ(store.Buffer().CompressPlanes(compressed.data(), record.totalSize,
                                                reinterpret_cast<const std::byte*>(elements.data()),
                                                record.planeSizes.data(), piece.width,
                                                piece.height),
                  S_OK);
        records.push_back(record);
        data.insert(data.end(), compressed.begin(), compressed.begin() + record.totalSize);
    }

    /// Adds chunks of this size side by side over the area, the last ones cut to it.
    template <class Pixel>
    void Cover(std::uint16_t chunkWidth, std::uint16_t chunkHeight, const Pixel& pixel) {
        for (std::uint32_t y = 0; y < header.height; y += chunkHeight)
            for (std::uint32_t x = 0; x < header.width; x += chunkWidth)
                Add({static_cast<std::int32_t>(x), static_cast<std::int32_t>(y),
                     static_cast<std::uint16_t>(
                         std::min<std::uint32_t>(chunkWidth, header.width - x)),
                     static_cast<std::uint16_t>(
                         std::min<std::uint32_t>(chunkHeight, header.height - y))},
                    pixel);
    }

    Bytes AsFile() const {
        constexpr std::uint32_t kPlanes = kWordElementKind<Element>.planeCount;
        SChunkHeader whole = header;
        whole.recordCount = static_cast<std::uint32_t>(records.size());
        const ChunkHeaderBytes bytes = EncodeChunkHeader(whole);
        Bytes file(bytes.begin(), bytes.end());
        for (const SChunkRecord& record : records) {
            file.resize(file.size() + ChunkRecordBytes(kPlanes));
            EncodeChunkRecord(record, kPlanes,
                              file.data() + file.size() - ChunkRecordBytes(kPlanes));
        }
        file.insert(file.end(), data.begin(), data.end());
        return file;
    }
};

/// A pixel of planes that LZ4 finds nothing in, of one value, and of runs.
template <class Element>
Element MixedPixel(std::int32_t x, std::int32_t y) {
    Element element;
    for (std::uint32_t k = 0; k < element.w.size(); ++k) {
        const auto place = static_cast<std::uint32_t>(y) * 70001U + static_cast<std::uint32_t>(x);
        const std::uint32_t noise = (place + k * 977U) * 2654435761U;
        const std::uint32_t words[]{noise >> 16, 40000U + k, (place / 37U) & 0xFF00U};
        element.w[k] = static_cast<std::uint16_t>(words[k % 3]);
    }
    return element;
}

/// A file of mixed pixels in the chunks of the kind's own writer.
template <class Element>
Bytes MixedFile(std::uint32_t width, std::uint32_t height, std::uint32_t originX = 0,
                std::uint32_t originY = 0) {
    SMadeFile<Element> file(width, height, originX, originY);
    file.Cover(256, 128, MixedPixel<Element>);
    return file.AsFile();
}

struct SLoaded {
    Status status{};
    std::uint32_t failedChunks = 0;
    std::uint64_t missingPixels = 0;
    std::uint64_t repeatedPixels = 0;
    std::uint32_t chunksOutside = 0;
    std::uint64_t strayBytes = 0;
    std::uint32_t foreignIndices = 0;
    Status failedRead{};

    static SLoaded From(Status status, const CTransferReport& report) {
        return {status,
                report.FailedChunks(),
                report.MissingPixels(),
                report.RepeatedPixels(),
                report.ChunksOutside(),
                report.StrayBytes(),
                report.ForeignIndices(),
                report.FailedRead()};
    }
    static SLoaded Whole() { return {}; }
    friend bool operator==(const SLoaded&, const SLoaded&) = default;
};
void PrintTo(const SLoaded& loaded, std::ostream* to) {
    *to << "status " << static_cast<std::int32_t>(loaded.status) << ", " << loaded.failedChunks
        << " failed chunks, " << loaded.missingPixels << " missing pixels, "
        << loaded.repeatedPixels << " repeated, " << loaded.chunksOutside << " chunks outside, "
        << loaded.strayBytes << " stray bytes, " << loaded.foreignIndices
        << " foreign indices, failed read " << static_cast<std::int32_t>(loaded.failedRead);
}

SLoaded LoadMap(EWordKind kind, const Bytes& file, CChromaCorrectCoef& map) {
    const CTransferReport report;
    std::istringstream stream = StreamOf(file);
    const Status status = LoadWordCoefFile(kind, map, stream);
    return SLoaded::From(status, report);
}

/// What the way through the map writes.
Bytes TurnedThroughMap(EWordKind kind, const Bytes& file, const PixelSize& size, std::uint32_t code,
                       const SLoaded& told = SLoaded::Whole()) {
    CChromaCorrectCoef map;
    const auto width = static_cast<std::int32_t>(size.width);
    const auto height = static_cast<std::int32_t>(size.height);
    map.Resize(width, height);
    EXPECT_EQ(LoadMap(kind, file, map), told);
    CChromaCorrectCoef turned;
    TurnMap(map, width, height, code, turned);
    std::stringstream stream;
    EXPECT_EQ(SaveWordCoefFile(kind, turned, stream), S_OK);
    return AsBytes(stream.str());
}

/// The file as the direct way holds it, and what that way tells.
struct SStored {
    SLoaded told;
    bool wasMemoryRefused = false;
    std::unique_ptr<CStoredCoef> coef;
};

SStored LoadStoredFrom(EWordKind kind, std::istream& stream, std::size_t threads) {
    const CTransferReport report;
    SStoredLoad load = LoadStoredWordCoef(kind, stream, threads);
    return {SLoaded::From(load.status, report), report.WasMemoryRefused(), std::move(load.coef)};
}

SStored LoadStored(EWordKind kind, const Bytes& file, std::size_t threads = 1) {
    std::istringstream stream = StreamOf(file);
    return LoadStoredFrom(kind, stream, threads);
}

/// Null when anything is wrong with the file.
std::unique_ptr<CStoredCoef> LoadWhole(EWordKind kind, const Bytes& file, std::size_t threads = 1) {
    SStored stored = LoadStored(kind, file, threads);
    return stored.told == SLoaded::Whole() && !stored.wasMemoryRefused ? std::move(stored.coef)
                                                                       : nullptr;
}

Bytes TurnedStored(const CStoredCoef& stored, const PixelSize& size, std::uint32_t code,
                   std::size_t threads = 1) {
    std::stringstream stream;
    EXPECT_EQ(stored.WriteTurned(stream, size, code, threads), S_OK);
    EXPECT_EQ(stream.tellp(), static_cast<std::streamoff>(stream.str().size()));
    return AsBytes(stream.str());
}

/// Both ways write the same of the file, turned by each code.
void ExpectSameBothWays(EWordKind kind, const Bytes& file, const PixelSize& size,
                        std::size_t threads = 1) {
    SCOPED_TRACE(::testing::Message()
                 << size.width << " x " << size.height << ", " << threads << " threads");
    const auto stored = LoadWhole(kind, file, threads);
    ASSERT_NE(stored, nullptr);
    for (const std::uint32_t code : kCodes)
        ASSERT_TRUE(TurnedStored(*stored, size, code, threads) ==
                    TurnedThroughMap(kind, file, size, code))
            << "code " << code;
}

template <EWordKind Kind, class ElementType>
struct SKind {
    static constexpr EWordKind kKind = Kind;
    using Element = ElementType;
};

template <class Kind>
class StoredWordCoef : public ::testing::Test {
  protected:
    static constexpr EWordKind kKind = Kind::kKind;
    static constexpr auto kPixel = MixedPixel<typename Kind::Element>;

    /// Both ways tell the same of the file, and write the same of what can be read of it.
    static void ExpectTold(const Bytes& file, const SLoaded& told) {
        for (const std::size_t threads : {1U, 3U}) {
            const SStored stored = LoadStored(kKind, file, threads);
            EXPECT_EQ(stored.told, told);
            EXPECT_FALSE(stored.wasMemoryRefused);
            ASSERT_NE(stored.coef, nullptr);
            for (const PixelSize& size : {PixelSize{8, 8}, PixelSize{310, 210}})
                EXPECT_TRUE(TurnedStored(*stored.coef, size, 1) ==
                            TurnedThroughMap(kKind, file, size, 1, told))
                    << size.width;
        }
    }

    /// The file is none of the kind's own.
    static void ExpectLeft(const Bytes& file) {
        const SStored stored = LoadStored(kKind, file, 2);
        EXPECT_EQ(stored.coef, nullptr);
        EXPECT_EQ(stored.told, SLoaded::Whole());
    }
};
using EveryKind = ::testing::Types<
    SKind<EWordKind::Brightness, S3WordCoef>, SKind<EWordKind::VirtualGreenBrightness, S4WordCoef>,
    SKind<EWordKind::Chroma, S9WordCoef>, SKind<EWordKind::VirtualGreenChroma, S12WordCoef>>;
TYPED_TEST_SUITE(StoredWordCoef, EveryKind);

TYPED_TEST(StoredWordCoef, TurnsSizesAroundBlockEdges) {
    using Element = typename TypeParam::Element;
    for (const std::uint32_t width : {1U, 255U, 256U, 257U})
        for (const std::uint32_t height : {1U, 127U, 128U, 129U})
            ExpectSameBothWays(TypeParam::kKind, MixedFile<Element>(width, height),
                               {width, height});
}

TYPED_TEST(StoredWordCoef, TurnsSeveralBlocksOnAnyNumberOfThreads) {
    using Element = typename TypeParam::Element;
    const Bytes file = MixedFile<Element>(530, 300);
    for (const std::size_t threads : {1U, 2U, 5U})
        ExpectSameBothWays(TypeParam::kKind, file, {530, 300}, threads);
    ExpectSameBothWays(TypeParam::kKind, MixedFile<Element>(300, 20), {300, 20}, 0);
    ExpectSameBothWays(TypeParam::kKind, MixedFile<Element>(300, 20), {300, 20}, 40);
}

TYPED_TEST(StoredWordCoef, TellsTheSizeOfTheFile) {
    const auto stored = LoadWhole(TypeParam::kKind, MixedFile<typename TypeParam::Element>(30, 7));
    ASSERT_NE(stored, nullptr);
    EXPECT_EQ(stored->Size(), (PixelSize{30, 7}));
}

TYPED_TEST(StoredWordCoef, CutsAndFillsToTheSizeAskedFor) {
    using Element = typename TypeParam::Element;
    const Bytes file = MixedFile<Element>(270, 140);
    for (const PixelSize& size : {PixelSize{1, 1}, PixelSize{269, 139}, PixelSize{271, 141},
                                  PixelSize{200, 300}, PixelSize{600, 100}, PixelSize{290, 150}})
        ExpectSameBothWays(TypeParam::kKind, file, size, 2);
}

TYPED_TEST(StoredWordCoef, LeavesTheOriginBehind) {
    using Element = typename TypeParam::Element;
    for (const PixelPosition& origin : {PixelPosition{5, 3}, PixelPosition{256, 128},
                                        PixelPosition{100000, 60000}, PixelPosition{0xFFFFFF00, 0}})
        ExpectSameBothWays(TypeParam::kKind,
                           MixedFile<Element>(100, 60, static_cast<std::uint32_t>(origin.x),
                                              static_cast<std::uint32_t>(origin.y)),
                           {100, 60});
}

TYPED_TEST(StoredWordCoef, KeepsEveryWordValue) {
    using Element = typename TypeParam::Element;
    SMadeFile<Element> file(256, 256);
    file.Cover(256, 128, [](std::int32_t x, std::int32_t y) {
        Element element;
        for (std::int32_t k = 0; k < static_cast<std::int32_t>(element.w.size()); ++k)
            element.w[static_cast<std::size_t>(k)] =
                static_cast<std::uint16_t>(y * 256 + x + k * 7919);
        return element;
    });
    ExpectSameBothWays(TypeParam::kKind, file.AsFile(), {256, 256});
}

TYPED_TEST(StoredWordCoef, TakesChunksOfAnyLayout) {
    using Element = typename TypeParam::Element;
    for (const auto& [width, height] : {std::pair{256, 1}, std::pair{1, 128}, std::pair{7, 5},
                                        std::pair{200, 100}, std::pair{255, 127}}) {
        SCOPED_TRACE(::testing::Message() << "chunks of " << width << " x " << height);
        SMadeFile<Element> file(280, 135, 40, 50);
        file.Cover(static_cast<std::uint16_t>(width), static_cast<std::uint16_t>(height),
                   TestFixture::kPixel);
        ExpectSameBothWays(TypeParam::kKind, file.AsFile(), {280, 135}, 2);
    }
}

TYPED_TEST(StoredWordCoef, CutsWholeBlocksToTheArea) {
    using Element = typename TypeParam::Element;
    SMadeFile<Element> file(300, 130);
    for (const SMadePiece& block : {SMadePiece{0, 0, 256, 128}, SMadePiece{256, 0, 256, 128},
                                    SMadePiece{0, 128, 256, 128}, SMadePiece{256, 128, 256, 128}})
        file.Add(block, TestFixture::kPixel);
    ExpectSameBothWays(TypeParam::kKind, file.AsFile(), {300, 130}, 2);
    ExpectSameBothWays(TypeParam::kKind, file.AsFile(), {320, 140}, 2);
}

TYPED_TEST(StoredWordCoef, PassesOverUnusedRecords) {
    using Element = typename TypeParam::Element;
    SMadeFile<Element> file(300, 100);
    file.records.push_back({.index = 9, .x = 9999, .y = 7, .width = 40});
    file.Add({0, 0, 256, 100}, TestFixture::kPixel);
    file.records.push_back({});
    file.records.push_back({.height = 128});
    file.Add({256, 0, 44, 100}, TestFixture::kPixel);
    file.records.push_back({});
    ExpectSameBothWays(TypeParam::kKind, file.AsFile(), {300, 100}, 2);
}

TYPED_TEST(StoredWordCoef, TakesBytesOfAChunkBehindItsPlanes) {
    using Element = typename TypeParam::Element;
    SMadeFile<Element> file(200, 100);
    file.Add({0, 0, 200, 60}, TestFixture::kPixel);
    ++file.records[0].totalSize;
    file.data.push_back(std::byte{0x55});
    file.Add({0, 60, 200, 40}, TestFixture::kPixel);
    ExpectSameBothWays(TypeParam::kKind, file.AsFile(), {200, 100});
}

TYPED_TEST(StoredWordCoef, IgnoresVersionOwnerAndDirectoryOffset) {
    using Element = typename TypeParam::Element;
    SMadeFile<Element> file(20, 10);
    file.header.version = 77;
    file.header.ownerData.fill(0x41);
    file.header.ownerFlag = 1;
    file.header.directoryOffset = 3;
    file.Cover(256, 128, TestFixture::kPixel);
    ExpectSameBothWays(TypeParam::kKind, file.AsFile(), {20, 10});
}

TYPED_TEST(StoredWordCoef, ReadsAndWritesAtTheStreamsPosition) {
    using Element = typename TypeParam::Element;
    const Bytes file = MixedFile<Element>(50, 20);
    std::istringstream source = StreamBehindPrefix(file);
    const auto stored = LoadStoredWordCoef(TypeParam::kKind, source, 1).coef;
    ASSERT_NE(stored, nullptr);
    std::stringstream target;
    target << kPrefix;
    EXPECT_EQ(stored->WriteTurned(target, {50, 20}, 1, 1), S_OK);
    EXPECT_TRUE(AsBytes(target.str().substr(kPrefix.size())) ==
                TurnedThroughMap(TypeParam::kKind, file, {50, 20}, 1));
    EXPECT_EQ(target.str().substr(0, kPrefix.size()), kPrefix);
}

// ---- what is not plain ----

TYPED_TEST(StoredWordCoef, LeavesAHeaderOfAnotherKind) {
    using Element = typename TypeParam::Element;
    SMadeFile<Element> file(20, 10);
    file.Cover(256, 128, TestFixture::kPixel);
    ASSERT_NE(LoadWhole(TypeParam::kKind, file.AsFile()), nullptr);
    const ChunkFormatId own = file.header.formatId;
    ++file.header.formatId[15];
    this->ExpectLeft(file.AsFile());
    file.header.formatId = kBrightChunkFormat2;
    this->ExpectLeft(file.AsFile());
    this->ExpectLeft({});
    this->ExpectLeft(Bytes(reinterpret_cast<const std::byte*>(own.data()),
                           reinterpret_cast<const std::byte*>(own.data()) + own.size() - 1));
}

TYPED_TEST(StoredWordCoef, TellsOfAHeaderCutShort) {
    const Bytes whole = MixedFile<typename TypeParam::Element>(20, 10);
    for (const std::size_t count : {std::size_t{16}, kChunkHeaderBytes - 1})
        this->ExpectTold(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(count)),
                         {.status = E_COEF_BADFORMAT});
}

TYPED_TEST(StoredWordCoef, TakesTheFileKindOfVirtualGreenAlone) {
    using Element = typename TypeParam::Element;
    SMadeFile<Element> file(20, 10);
    file.Cover(256, 128, TestFixture::kPixel);
    for (const int fileKind : {0, 1, 3, 255}) {
        file.header.fileKind = static_cast<std::uint8_t>(fileKind);
        if (kWordKind<Element>.hasFileKind)
            this->ExpectTold(file.AsFile(), {.status = E_COEF_BADFORMAT});
        else
            ExpectSameBothWays(TypeParam::kKind, file.AsFile(), {20, 10});
    }
}

TEST(StoredWordCoefOfNoKind, IsLeft) {
    EXPECT_EQ(LoadStored(static_cast<EWordKind>(4), MixedFile<S9WordCoef>(2, 2)).coef, nullptr);
    EXPECT_EQ(LoadStored(static_cast<EWordKind>(-1), MixedFile<S9WordCoef>(2, 2)).coef, nullptr);
}

TEST(StoredWordCoefOfAFloatFile, IsLeft) {
    for (const wchar_t* sample : {L"cabinet/Cab_01.9fcoef", L"cabinet/Cab_02.3fcoef"}) {
        const Bytes file = ReadFile(Sample(sample));
        ASSERT_GT(file.size(), kChunkHeaderBytes);
        EXPECT_EQ(LoadStored(EWordKind::Chroma, file).coef, nullptr);
        EXPECT_EQ(LoadStored(EWordKind::Brightness, file).coef, nullptr);
    }
}

TYPED_TEST(StoredWordCoef, TakesAFileWithoutPixels) {
    using Element = typename TypeParam::Element;
    SMadeFile<Element> file(20, 10);
    file.Cover(256, 128, TestFixture::kPixel);
    file.header.width = 0;
    this->ExpectTold(file.AsFile(), {.chunksOutside = 1});
    file.header = SMadeFile<Element>(20, 0).header;
    this->ExpectTold(file.AsFile(), {.chunksOutside = 1});
    this->ExpectTold(SMadeFile<Element>(20, 0).AsFile(), SLoaded::Whole());
    this->ExpectTold(SMadeFile<Element>(0, 10).AsFile(), SLoaded::Whole());
}

// Not beside the map's way: its stores of such sides take hundreds of megabytes.
TYPED_TEST(StoredWordCoef, TakesSidesUpToThoseOfAMap) {
    using Element = typename TypeParam::Element;
    const auto isTaken = [](std::uint32_t width, std::uint32_t height) {
        SMadeFile<Element> file(width, height);
        file.Cover(256, 128, TestFixture::kPixel);
        return LoadWhole(TypeParam::kKind, file.AsFile(), 2) != nullptr;
    };
    EXPECT_TRUE(isTaken(65535, 1));
    EXPECT_TRUE(isTaken(1, 65535));
    EXPECT_FALSE(isTaken(65536, 1));
    EXPECT_FALSE(isTaken(1, 65536));
}

TYPED_TEST(StoredWordCoef, TellsOfAFileCutShort) {
    using Element = typename TypeParam::Element;
    SMadeFile<Element> file(300, 10);
    file.Cover(256, 128, TestFixture::kPixel);
    const Bytes whole = file.AsFile();
    const auto first = [&](std::size_t count) {
        return Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(count));
    };
    const std::size_t dataAt = whole.size() - file.data.size();
    this->ExpectTold(first(dataAt - 1), {.status = E_FAIL});
    this->ExpectTold(first(kChunkHeaderBytes), {.status = E_FAIL});
    this->ExpectTold(first(dataAt), {.status = E_FAIL, .failedChunks = 2});
    this->ExpectTold(first(whole.size() - 1), {.status = E_FAIL, .failedChunks = 1});
}

TYPED_TEST(StoredWordCoef, TellsOfADamagedChunkWhereverItIs) {
    using Element = typename TypeParam::Element;
    for (const std::size_t damaged : {0U, 3U, 8U}) {
        SMadeFile<Element> file(24, 9);
        file.Cover(8, 3, TestFixture::kPixel);
        ASSERT_EQ(file.records.size(), 9U);
        --file.records[damaged].planeSizes[1];
        ++file.records[damaged].planeSizes[2];
        const bool isLast = damaged == 8;
        this->ExpectTold(file.AsFile(), {.status = isLast ? E_FAIL : S_OK, .failedChunks = 1});
    }
}

TYPED_TEST(StoredWordCoef, TellsOfPlanesPastTheChunksBytes) {
    using Element = typename TypeParam::Element;
    SMadeFile<Element> file(24, 9);
    file.Cover(256, 128, TestFixture::kPixel);
    --file.records[0].totalSize;
    this->ExpectTold(file.AsFile(), {.status = E_FAIL, .failedChunks = 1, .strayBytes = 1});
}

TYPED_TEST(StoredWordCoef, TellsOfPixelsInNoChunkOrInTwo) {
    using Element = typename TypeParam::Element;
    SMadeFile<Element> missing(24, 9);
    missing.Add({0, 0, 24, 8}, TestFixture::kPixel);
    missing.Add({0, 8, 23, 1}, TestFixture::kPixel);
    this->ExpectTold(missing.AsFile(), {.missingPixels = 1});

    SMadeFile<Element> one(24, 9);
    one.Add({0, 0, 24, 8}, TestFixture::kPixel);
    this->ExpectTold(one.AsFile(), {.missingPixels = 24});

    SMadeFile<Element> none(24, 9);
    this->ExpectTold(none.AsFile(), {.missingPixels = 216});

    SMadeFile<Element> twice(24, 9);
    twice.Add({0, 0, 24, 9}, TestFixture::kPixel);
    twice.Add({23, 8, 1, 1}, TestFixture::kPixel);
    this->ExpectTold(twice.AsFile(), {.repeatedPixels = 1});

    SMadeFile<Element> moved(24, 9); // as many pixels as the area, one of them elsewhere
    moved.Add({0, 0, 24, 8}, TestFixture::kPixel);
    moved.Add({0, 7, 24, 1}, TestFixture::kPixel);
    this->ExpectTold(moved.AsFile(), {.missingPixels = 24, .repeatedPixels = 24});
}

TYPED_TEST(StoredWordCoef, TellsOfBytesBehindTheLastChunk) {
    using Element = typename TypeParam::Element;
    SMadeFile<Element> file(24, 9);
    file.Cover(8, 3, TestFixture::kPixel);
    file.data.resize(file.data.size() + 3);
    this->ExpectTold(file.AsFile(), {.strayBytes = 3});
    const std::uint64_t lastChunk = file.records.back().totalSize;
    file.records.pop_back();
    this->ExpectTold(file.AsFile(), {.missingPixels = 24, .strayBytes = 3 + lastChunk});
}

TYPED_TEST(StoredWordCoef, TakesNoIndexForThePlace) {
    using Element = typename TypeParam::Element;
    SMadeFile<Element> file(300, 140);
    file.Cover(256, 128, TestFixture::kPixel);
    file.records[0].index = 4711;
    file.records[3].index = 1;
    this->ExpectTold(file.AsFile(), {.foreignIndices = 2});
}

TYPED_TEST(StoredWordCoef, TellsOfChunksThatBeginOutsideTheArea) {
    using Element = typename TypeParam::Element;
    const auto withPieceAt = [&](std::int32_t x, std::int32_t y) {
        SMadeFile<Element> file(24, 9, 100, 50);
        file.Cover(256, 128, TestFixture::kPixel);
        file.Add({x, y, 4, 4}, TestFixture::kPixel);
        return file.AsFile();
    };
    this->ExpectTold(withPieceAt(-4, 0), {.status = E_FAIL, .failedChunks = 1, .chunksOutside = 1});
    this->ExpectTold(
        withPieceAt(0, -1),
        {.status = E_FAIL, .failedChunks = 1, .repeatedPixels = 4 * 3, .chunksOutside = 1});
    this->ExpectTold(withPieceAt(24, 0), {.chunksOutside = 1});
    this->ExpectTold(withPieceAt(0, 9), {.chunksOutside = 1});
    this->ExpectTold(withPieceAt(5000, 0), {.chunksOutside = 1});
}

// An origin near the largest: what lies 2^32 behind it is before it, not in the area.
TYPED_TEST(StoredWordCoef, TellsOfChunksWhosePlacePassesTheLargest) {
    using Element = typename TypeParam::Element;
    SMadeFile<Element> wide(24, 9, 0xFFFFFFF8, 0);
    wide.Cover(8, 9, TestFixture::kPixel);
    this->ExpectTold(
        wide.AsFile(),
        {.status = E_FAIL, .failedChunks = 2, .missingPixels = 16 * 9, .chunksOutside = 2});
    SMadeFile<Element> high(9, 24, 0, 0xFFFFFFF8);
    high.Cover(9, 8, TestFixture::kPixel);
    this->ExpectTold(
        high.AsFile(),
        {.status = E_FAIL, .failedChunks = 2, .missingPixels = 16 * 9, .chunksOutside = 2});
}

TYPED_TEST(StoredWordCoef, TellsOfRecordsThatNoChunkCanHave) {
    using Element = typename TypeParam::Element;
    const auto withRecord = [](const std::function<void(SChunkRecord&)>& change) {
        SMadeFile<Element> file(300, 200);
        file.Cover(256, 128, TestFixture::kPixel);
        change(file.records.back());
        return file.AsFile();
    };
    const SLoaded failed{.status = E_FAIL, .failedChunks = 1};
    this->ExpectTold(withRecord([](SChunkRecord& r) { r.width = 257; }), failed);
    this->ExpectTold(withRecord([](SChunkRecord& r) { r.height = 129; }), failed);
    this->ExpectTold(withRecord([](SChunkRecord& r) {
                         r.totalSize = static_cast<std::uint32_t>(sizeof(Element)) * 65536 + 1;
                     }),
                     failed);
    SMadeFile<Element> large(20, 10); // and its bytes are there
    large.Cover(256, 128, TestFixture::kPixel);
    large.records[0].totalSize = static_cast<std::uint32_t>(sizeof(Element)) * 65536 + 1;
    large.data.resize(large.records[0].totalSize);
    this->ExpectTold(large.AsFile(), failed);
    SLoaded missing = failed;
    missing.missingPixels = 44U * 72U;
    this->ExpectTold(withRecord([](SChunkRecord& r) { r.width = 0; }), missing);
    SMadeFile<Element> empty(300, 200);
    empty.Cover(256, 128, TestFixture::kPixel);
    SLoaded stray = failed;
    stray.strayBytes = empty.records.back().totalSize;
    empty.records.back().totalSize = 0;
    this->ExpectTold(empty.AsFile(), stray);
}

/// A file of a few chunks of any place and size; some are damaged, and it may be cut short.
template <class Element>
Bytes RandomFile(std::minstd_rand& random) {
    const auto below = [&](std::uint32_t count) {
        return static_cast<std::uint32_t>(random() % count);
    };
    SMadeFile<Element> file(1 + below(400), 1 + below(200), below(2) * below(300),
                            below(2) * below(200));
    const auto moved = [](Element element, std::uint32_t by) {
        for (std::uint16_t& word : element.w)
            word = static_cast<std::uint16_t>(word + by);
        return element;
    };
    const std::uint32_t count = below(9);
    for (std::uint32_t i = 0; i < count; ++i) {
        const auto x = static_cast<std::int32_t>(below(600)) - 100;
        const auto y = static_cast<std::int32_t>(below(300)) - 50;
        file.Add({below(3) == 0 ? x : std::max(x, 0), below(3) == 0 ? y : std::max(y, 0),
                  static_cast<std::uint16_t>(1 + below(256)),
                  static_cast<std::uint16_t>(1 + below(128))},
                 [&](std::int32_t column, std::int32_t row) {
                     return moved(MixedPixel<Element>(column, row), i * 3001);
                 });
        if (below(6) == 0)
            file.records.back().planeSizes[below(3)] += below(3);
        if (below(12) == 0)
            file.records.back().width = static_cast<std::uint16_t>(below(300));
    }
    Bytes bytes = file.AsFile();
    if (below(4) == 0)
        bytes.resize(kChunkHeaderBytes +
                     below(static_cast<std::uint32_t>(bytes.size() - kChunkHeaderBytes) + 1));
    return bytes;
}

TYPED_TEST(StoredWordCoef, TellsAndWritesAnyChunksAsTheMapDoes) {
    std::minstd_rand random(20);
    for (int i = 0; i < 6; ++i) {
        SCOPED_TRACE(i);
        const Bytes file = RandomFile<typename TypeParam::Element>(random);
        CChromaCorrectCoef map;
        map.Resize(1, 1);
        this->ExpectTold(file, LoadMap(TypeParam::kKind, file, map));
    }
}

// ---- memory ----

/// What a turn may ask for beside its planes, per thread: a chunk's planes, and its bytes.
template <class Element>
constexpr std::uint64_t kExtraBytes = 3 * sizeof(Element) * std::uint64_t{32768};

TYPED_TEST(StoredWordCoef, NeedsItsPlanesAndSomeChunksOfMemory) {
    using Element = typename TypeParam::Element;
    const Bytes file = MixedFile<Element>(1030, 700);
    const std::uint64_t before = CMemoryBudget::Process().Outstanding();
    const std::uint64_t planes = std::uint64_t{1030} * 700 * sizeof(Element);
    const CTransferReport report;
    {
        const CBudgetLimit limit(before + planes + kExtraBytes<Element>);
        const auto stored = LoadWhole(TypeParam::kKind, file, 1);
        ASSERT_NE(stored, nullptr);
        EXPECT_EQ(CMemoryBudget::Process().Outstanding(), before + planes);
        std::stringstream target;
        EXPECT_EQ(stored->WriteTurned(target, {1030, 700}, 1, 1), S_OK);
    }
    {
        const CBudgetLimit limit(before + planes + 5 * kExtraBytes<Element>);
        const auto stored = LoadWhole(TypeParam::kKind, file, 2);
        ASSERT_NE(stored, nullptr);
        std::stringstream target;
        EXPECT_EQ(stored->WriteTurned(target, {1030, 700}, 1, 2), S_OK);
    }
    EXPECT_FALSE(report.WasMemoryRefused());
    EXPECT_EQ(CMemoryBudget::Process().Outstanding(), before);
}

// However many threads are there: one chunk keeps one of them busy.
TYPED_TEST(StoredWordCoef, NeedsNoMemoryForThreadsWithoutWork) {
    using Element = typename TypeParam::Element;
    const Bytes file = MixedFile<Element>(256, 128);
    const CTransferReport report;
    const CBudgetLimit limit(CMemoryBudget::Process().Outstanding() + 2 * kExtraBytes<Element>);
    const auto stored = LoadWhole(TypeParam::kKind, file, 1000);
    ASSERT_NE(stored, nullptr);
    std::stringstream target;
    EXPECT_EQ(stored->WriteTurned(target, {256, 128}, 2, 1000), S_OK);
    EXPECT_FALSE(report.WasMemoryRefused());
}

TYPED_TEST(StoredWordCoef, NeedsLittleMemoryForASmallCabinet) {
    const Bytes file = MixedFile<typename TypeParam::Element>(20, 10);
    const CTransferReport report;
    const CBudgetLimit limit(CMemoryBudget::Process().Outstanding() + 40000);
    const auto stored = LoadWhole(TypeParam::kKind, file, 2);
    ASSERT_NE(stored, nullptr);
    std::stringstream target;
    EXPECT_EQ(stored->WriteTurned(target, {20, 10}, 3, 2), S_OK);
    EXPECT_FALSE(report.WasMemoryRefused());
}

TYPED_TEST(StoredWordCoef, NotesRefusedMemory) {
    using Element = typename TypeParam::Element;
    const Bytes file = MixedFile<Element>(1000, 300);
    const std::uint64_t before = CMemoryBudget::Process().Outstanding();
    const std::uint64_t planes = std::uint64_t{1000} * 300 * sizeof(Element);
    const std::uint64_t records = 12 * ChunkRecordBytes(kWordElementKind<Element>.planeCount);
    for (const std::uint64_t room :
         {std::uint64_t{0}, records, planes - 1, planes + records, planes + records + 100000}) {
        const CBudgetLimit limit(before + room);
        const SStored refused = LoadStored(TypeParam::kKind, file, 2);
        EXPECT_TRUE(refused.wasMemoryRefused) << room;
        EXPECT_EQ(refused.told, (SLoaded{.status = E_COEF_NOBUFFER})) << room;
    }
    EXPECT_EQ(CMemoryBudget::Process().Outstanding(), before);
    const auto stored = LoadWhole(TypeParam::kKind, file);
    ASSERT_NE(stored, nullptr);
    const CTransferReport report;
    const CBudgetLimit limit(before + planes + 1000);
    std::stringstream target;
    EXPECT_EQ(stored->WriteTurned(target, {1000, 300}, 1, 2), E_FAIL);
    EXPECT_TRUE(report.WasMemoryRefused());
}

// A header and a directory may say anything; memory is asked for what the file's bytes can fill.
TYPED_TEST(StoredWordCoef, AsksForNoMemoryThatTheFileCannotFill) {
    using Element = typename TypeParam::Element;
    constexpr auto kMost = static_cast<std::uint32_t>(sizeof(Element)) * 65536;
    SMadeFile<Element> file(8192, 8192);
    constexpr std::uint64_t kAll = 8192 * 8192;
    const CBudgetLimit limit(CMemoryBudget::Process().Outstanding() + (std::uint64_t{64} << 20));
    const SStored empty = LoadStored(TypeParam::kKind, file.AsFile());
    EXPECT_EQ(empty.told, (SLoaded{.missingPixels = kAll}));
    EXPECT_FALSE(empty.wasMemoryRefused);
    for (const std::uint32_t totalSize : {1U, kMost}) {
        file.records.clear();
        for (std::uint32_t y = 0; y < 8192; y += 128)
            for (std::uint32_t x = 0; x < 8192; x += 256)
                file.records.push_back({.index = BlockIndexOfPixel(x, y),
                                        .x = x,
                                        .y = y,
                                        .width = 256,
                                        .height = 128,
                                        .totalSize = totalSize});
        file.data.resize(file.records.size());
        const SStored lying = LoadStored(TypeParam::kKind, file.AsFile());
        EXPECT_EQ(lying.told, (SLoaded{.status = E_FAIL, .failedChunks = 64 * 32})) << totalSize;
        EXPECT_FALSE(lying.wasMemoryRefused) << totalSize;
    }
}

// The blocks that no chunk falls on take none either, and read as defaults.
TYPED_TEST(StoredWordCoef, TakesMemoryForTheBlocksThatAreThere) {
    using Element = typename TypeParam::Element;
    SMadeFile<Element> file(4010, 2010); // whose last block is one of 170 x 90
    file.Add({300, 200, 40, 30}, TestFixture::kPixel);
    file.Add({4000, 2000, 10, 10}, TestFixture::kPixel);
    const std::uint64_t before = CMemoryBudget::Process().Outstanding();
    constexpr std::uint64_t kTwoBlocks = (256 * 128 + 170 * 90) * sizeof(Element);
    const SStored stored = LoadStored(TypeParam::kKind, file.AsFile());
    EXPECT_EQ(CMemoryBudget::Process().Outstanding(), before + kTwoBlocks);
    EXPECT_EQ(stored.told, (SLoaded{.missingPixels = 4010 * 2010 - 40 * 30 - 10 * 10}));
}

TYPED_TEST(StoredWordCoef, NotesTheRefusedMemoryOfABlock) {
    using Element = typename TypeParam::Element;
    SMadeFile<Element> file(600, 10);
    file.Add({0, 0, 4, 4}, TestFixture::kPixel);
    file.Add({256, 0, 4, 4}, TestFixture::kPixel);
    const std::uint64_t block = 256 * 10 * sizeof(Element);
    const std::uint64_t before = CMemoryBudget::Process().Outstanding();
    const CBudgetLimit limit(before + 2 * block - 1);
    const SStored stored = LoadStored(TypeParam::kKind, file.AsFile());
    EXPECT_TRUE(stored.wasMemoryRefused);
    EXPECT_EQ(stored.told.status, E_COEF_NOBUFFER);
    EXPECT_EQ(stored.coef->Size(), PixelSize{});
    EXPECT_EQ(CMemoryBudget::Process().Outstanding(), before);
}

// Which of two chunks stays is decided by their order: however many threads there are, one reads.
TYPED_TEST(StoredWordCoef, ReadsChunksThatOverlapOnOneThread) {
    using Element = typename TypeParam::Element;
    SMadeFile<Element> file(256, 600);
    file.Cover(256, 128, TestFixture::kPixel);
    file.Add({0, 0, 256, 128},
             [](std::int32_t x, std::int32_t y) { return MixedPixel<Element>(x + 1, y); });
    const std::uint64_t planes = std::uint64_t{256} * 600 * sizeof(Element);
    const CBudgetLimit limit(CMemoryBudget::Process().Outstanding() + planes +
                             kExtraBytes<Element>);
    const SStored stored = LoadStored(TypeParam::kKind, file.AsFile(), 1000);
    EXPECT_FALSE(stored.wasMemoryRefused);
    EXPECT_EQ(stored.told, (SLoaded{.repeatedPixels = 256 * 128}));
}

// ---- streams that fail ----

TYPED_TEST(StoredWordCoef, TellsOfAStreamThatTakesNotAll) {
    using Element = typename TypeParam::Element;
    const auto stored = LoadWhole(TypeParam::kKind, MixedFile<Element>(300, 200));
    ASSERT_NE(stored, nullptr);
    for (const std::size_t room : {0U, 100U, 500U, 5000U}) {
        CFullDisk disk(room);
        EXPECT_EQ(stored->WriteTurned(disk, {300, 200}, 3, 2), E_FAIL) << room;
    }
}

/// A file whose bytes from `limit` on cannot be read, though they are counted.
class CBrokenFile : public std::istream {
  public:
    CBrokenFile(const Bytes& bytes, std::size_t limit)
        : std::istream(nullptr), m_buffer(AsText(bytes), limit) {
        rdbuf(&m_buffer);
    }

  private:
    class CBuffer : public std::stringbuf {
      public:
        CBuffer(const std::string& text, std::size_t limit)
            : std::stringbuf(text, std::ios::in), m_limit(static_cast<std::streamoff>(limit)) {}

      protected:
        std::streamsize xsgetn(char* to, std::streamsize count) override {
            return (gptr() - eback()) + count > m_limit ? 0 : std::stringbuf::xsgetn(to, count);
        }

      private:
        std::streamoff m_limit;
    };

    CBuffer m_buffer;
};

// What was read before is not taken once more in place of what cannot be read.
TYPED_TEST(StoredWordCoef, TellsOfAFileThatBreaksOffWhileItIsRead) {
    using Element = typename TypeParam::Element;
    SMadeFile<Element> file(512, 128);
    file.Cover(256, 128, [](std::int32_t x, std::int32_t y) {
        Element element;
        for (std::uint32_t k = 0; k < element.w.size(); ++k)
            element.w[k] =
                MixedPixel<Element>(x % 256, y + static_cast<std::int32_t>(k) * 128).w[0];
        return element;
    });
    ASSERT_EQ(file.records[0].planeSizes, file.records[1].planeSizes);
    const Bytes bytes = file.AsFile();
    CBrokenFile whole(bytes, bytes.size());
    EXPECT_EQ(LoadStoredFrom(TypeParam::kKind, whole, 1).told, SLoaded::Whole());
    CBrokenFile broken(bytes, bytes.size() - 1);
    EXPECT_EQ(LoadStoredFrom(TypeParam::kKind, broken, 1).told,
              (SLoaded{.status = E_FAIL, .failedChunks = 1}));
}

TYPED_TEST(StoredWordCoef, LeavesAStreamThatHasFailedOrCannotBeSought) {
    using Element = typename TypeParam::Element;
    const Bytes file = MixedFile<Element>(30, 20);
    std::istringstream failed = StreamOf(file);
    failed.setstate(std::ios::failbit);
    EXPECT_EQ(LoadStoredWordCoef(TypeParam::kKind, failed, 1).coef, nullptr);
    CPipe pipe(file);
    EXPECT_EQ(LoadStoredWordCoef(TypeParam::kKind, pipe, 1).coef, nullptr);
}

} // namespace
} // namespace trevolt
