#include "calibuf/PlaneCodec.h"

#include <algorithm>

#include <lz4.h>

#include "calibuf/WordElementKind.h"
#include "tests/calibuf/StoreSupport.h"

namespace trevolt {
namespace {

using namespace test;

template <class T>
class CaliPlanesOf : public ::testing::Test {
  protected:
    static constexpr std::size_t kWords = sizeof(T) / 2;

    /// Elements of the pattern, width by height, packed.
    static Bytes Elements(std::uint16_t width, std::uint16_t height) {
        Bytes bytes;
        for (std::uint32_t i = 0; i < std::uint32_t{width} * height; ++i) {
            const T element = PatternElement<T>(i % width, i / width);
            const auto* first = reinterpret_cast<const std::byte*>(&element);
            bytes.insert(bytes.end(), first, first + sizeof element);
        }
        return bytes;
    }

    CCaliOperation<T> m_owner;
    CCaliBuf& m_store = m_owner.Buffer();
};
TYPED_TEST_SUITE(CaliPlanesOf, AllElements);

TYPED_TEST(CaliPlanesOf, CompressesEveryWordPlaneAsARawBlock) {
    const Bytes elements = this->Elements(100, 60);
    Bytes compressed(this->m_store.CompressedBound());
    constexpr std::uint32_t kUntouched = 4711;
    std::array<std::uint32_t, kMaxWords> sizes;
    sizes.fill(kUntouched);
    std::uint32_t total = 0;
    ASSERT_EQ(this->m_store.CompressPlanes(compressed.data(), total, elements.data(), sizes.data(),
                                           100, 60),
              S_OK);
    std::size_t at = 0;
    for (std::size_t k = 0; k < this->kWords; ++k) {
        std::vector<std::uint16_t> plane;
        for (std::size_t e = 0; e < 6000; ++e)
            plane.push_back(LoadLittle<std::uint16_t>(&elements[e * sizeof(TypeParam) + 2 * k]));
        std::vector<char> expected(24000);
        const int size = LZ4_compress_fast(reinterpret_cast<const char*>(plane.data()),
                                           expected.data(), 12000, 24000, 1);
        ASSERT_EQ(sizes[k], static_cast<std::uint32_t>(size));
        EXPECT_EQ(std::memcmp(&compressed[at], expected.data(), sizes[k]), 0);
        at += sizes[k];
    }
    EXPECT_EQ(total, at);
    for (std::size_t k = this->kWords; k < kMaxWords; ++k)
        EXPECT_EQ(sizes[k], kUntouched);
}

// Planes that the caller fills become the bytes of the elements that they hold the words of.
TYPED_TEST(CaliPlanesOf, CompressesFilledPlanesAsItsElements) {
    constexpr std::size_t kCount = 1300;
    const Bytes elements = this->Elements(100, 13);
    Bytes expected(this->m_store.CompressedBound());
    std::array<std::uint32_t, kMaxWords> expectedSizes{};
    std::uint32_t expectedTotal = 0;
    ASSERT_EQ(this->m_store.CompressPlanes(expected.data(), expectedTotal, elements.data(),
                                           expectedSizes.data(), 100, 13),
              S_OK);
    CPlaneCodec codec(sizeof(TypeParam), kCount);
    ASSERT_TRUE(codec.IsReady());
    for (std::size_t k = 0; k < this->kWords; ++k)
        for (std::size_t e = 0; e < kCount; ++e)
            codec.Plane(k)[e] = LoadLittle<std::uint16_t>(&elements[e * sizeof(TypeParam) + 2 * k]);
    Bytes compressed(CPlaneCodec::MostCompressedBytes(this->kWords, kCount));
    std::array<std::uint32_t, kMaxWords> sizes{};
    ASSERT_EQ(codec.CompressFilled(compressed.data(), sizes.data(), kCount), expectedTotal);
    EXPECT_EQ(sizes, expectedSizes);
    EXPECT_EQ(std::memcmp(compressed.data(), expected.data(), expectedTotal), 0);
}

// Of noise in planes of any length the room told of holds all that LZ4 makes.
TYPED_TEST(CaliPlanesOf, TellsTheRoomForNoiseInPlanes) {
    std::uint32_t noise = 1;
    for (const std::size_t count : {1U, 6U, 7U, 8U, 20U, 300U, 32768U}) {
        CPlaneCodec codec(sizeof(TypeParam), count);
        ASSERT_TRUE(codec.IsReady());
        for (std::size_t k = 0; k < this->kWords; ++k)
            for (std::size_t e = 0; e < count; ++e)
                codec.Plane(k)[e] =
                    static_cast<std::uint16_t>((noise = noise * 1664525U + 1013904223U) >> 16);
        const std::size_t room = CPlaneCodec::MostCompressedBytes(this->kWords, count);
        constexpr std::byte kMark{0x5A};
        Bytes compressed(room + 64, kMark);
        std::array<std::uint32_t, kMaxWords> sizes{};
        EXPECT_LE(codec.CompressFilled(compressed.data(), sizes.data(), count), room) << count;
        EXPECT_TRUE(std::all_of(compressed.begin() + static_cast<std::ptrdiff_t>(room),
                                compressed.end(), [](std::byte b) { return b == kMark; }))
            << count;
    }
}

TYPED_TEST(CaliPlanesOf, RoundTripsAnySize) {
    for (const auto& [width, height] : std::vector<std::pair<std::uint16_t, std::uint16_t>>{
             {1, 1}, {256, 128}, {7, 3}, {1, 128}, {256, 1}}) {
        const Bytes elements = this->Elements(width, height);
        Bytes compressed(this->m_store.CompressedBound());
        SChunkRecord record{.width = width, .height = height};
        ASSERT_EQ(this->m_store.CompressPlanes(compressed.data(), record.totalSize, elements.data(),
                                               record.planeSizes.data(), width, height),
                  S_OK);
        Bytes back(elements.size());
        std::uint32_t total = 0;
        EXPECT_EQ(this->m_store.DecompressPlanes(record, compressed.data(), back.data(), total),
                  S_OK);
        EXPECT_EQ(total, elements.size());
        EXPECT_EQ(back, elements);
    }
}

TEST(CaliPlanes, PlanesOfNoElementsHaveSizeZeroAndNoFailure) {
    CCaliOperation<S3WordCoef> owner;
    Bytes bytes(64);
    std::array<std::uint32_t, kMaxWords> sizes{9, 9, 9, 9};
    std::uint32_t total = 9;
    EXPECT_EQ(owner.Buffer().CompressPlanes(bytes.data(), total, bytes.data(), sizes.data(), 0, 5),
              S_OK);
    EXPECT_EQ(total, 0U);
    EXPECT_EQ(sizes, (std::array<std::uint32_t, kMaxWords>{0, 0, 0, 9}));
}

TEST(CaliPlanes, CompressRefusesWhatItCannotTake) {
    CCaliOperation<S3WordCoef> owner;
    CCaliBuf& store = owner.Buffer();
    Bytes bytes(store.CompressedBound());
    std::array<std::uint32_t, kMaxWords> sizes{};
    std::uint32_t total = 9;
    const std::byte* source = bytes.data();
    EXPECT_EQ(store.CompressPlanes(nullptr, total, source, sizes.data(), 1, 1), E_COEF_NOBUFFER);
    EXPECT_EQ(total, 0U);
    EXPECT_EQ(store.CompressPlanes(bytes.data(), total, nullptr, sizes.data(), 1, 1),
              E_COEF_NOBUFFER);
    EXPECT_EQ(store.CompressPlanes(bytes.data(), total, source, nullptr, 1, 1), E_COEF_NOBUFFER);
    EXPECT_EQ(store.CompressPlanes(bytes.data(), total, source, sizes.data(), 257, 128),
              E_COEF_INVALIDARG);
    EXPECT_EQ(store.CompressPlanes(bytes.data(), total, source, sizes.data(), 65535, 65535),
              E_COEF_INVALIDARG);
    store.SetElement(10, 9);
    total = 9;
    EXPECT_EQ(store.CompressPlanes(bytes.data(), total, source, sizes.data(), 1, 1), E_FAIL);
    EXPECT_EQ(total, 0U);
}

/// Two elements of three words, 1 2 3 and 4 5 6, as literals.
const Bytes kTwoElements = MakeBytes({0x40, 1, 0, 4, 0, 0x40, 2, 0, 5, 0, 0x40, 3, 0, 6, 0});

SChunkRecord TwoElementsRecord() {
    return {.width = 2, .height = 1, .totalSize = 15, .planeSizes = {5, 5, 5}};
}

class CaliPlanesDamaged : public ::testing::Test {
  protected:
    Status Decode(const SChunkRecord& record, const Bytes& compressed) {
        m_elements.assign(2 * 32768 * 3, std::byte{0x77});
        return m_owner.Buffer().DecompressPlanes(record, compressed.data(), m_elements.data(),
                                                 m_total);
    }

    /// Decodes and expects a failure that keeps the first `kept` planes of `kTwoElements`, and
    /// leaves everything else of the destination alone.
    void ExpectFailure(const SChunkRecord& record, const Bytes& compressed, std::size_t kept) {
        EXPECT_EQ(Decode(record, compressed), E_FAIL);
        EXPECT_EQ(m_total, kept * 2 * sizeof(std::uint16_t));
        Bytes expected(m_elements.size(), std::byte{0x77});
        for (std::size_t i = 0; i < 2; ++i)
            for (std::size_t k = 0; k < kept; ++k)
                StoreLittle<std::uint16_t>(&expected[i * 6 + k * 2],
                                           static_cast<std::uint16_t>(i * 3 + k + 1));
        EXPECT_EQ(m_elements, expected);
    }

    CCaliOperation<S3WordCoef> m_owner;
    std::uint32_t m_total = 99;
    Bytes m_elements;
};

TEST_F(CaliPlanesDamaged, TheUndamagedChunkDecodes) {
    EXPECT_EQ(Decode(TwoElementsRecord(), kTwoElements), S_OK);
    EXPECT_EQ(m_total, 12U);
    m_elements.resize(m_total);
    EXPECT_EQ(m_elements, MakeBytes({1, 0, 2, 0, 3, 0, 4, 0, 5, 0, 6, 0}));
}

TEST_F(CaliPlanesDamaged, PlanesOfAnotherLengthFail) {
    SChunkRecord record = TwoElementsRecord();
    Bytes compressed = kTwoElements;
    compressed[0] = std::byte{0x30}; // three literals, and one byte too many
    ExpectFailure(record, compressed, 0);
    record.width = 1; // the planes hold one word more than that
    ExpectFailure(record, kTwoElements, 0);
    record.width = 3;
    ExpectFailure(record, kTwoElements, 0);
}

TEST_F(CaliPlanesDamaged, ThePlanesBeforeAFailedOneAreKept) {
    for (const std::size_t damaged : {0U, 1U, 2U}) {
        Bytes compressed = kTwoElements;
        compressed[damaged * 5] = std::byte{0x30};
        ExpectFailure(TwoElementsRecord(), compressed, damaged);
    }
    // A plane that decodes to twice its length, in scratch memory where the next one would go.
    const Bytes longer = MakeBytes({0x40, 1, 0, 4, 0, 0x80, 9, 9, 9, 9, 9, 9, 9, 9});
    SChunkRecord record = TwoElementsRecord();
    record.planeSizes = {5, 9, 0};
    record.totalSize = 14;
    ExpectFailure(record, longer, 1);
}

/// `count` bytes as one run of literals: the length starts in the first byte's upper half.
Bytes LiteralRun(std::size_t count) {
    Bytes block(1, static_cast<std::byte>(std::min<std::size_t>(count, 15) << 4));
    if (count >= 15) {
        block.insert(block.end(), (count - 15) / 255, std::byte{255});
        block.push_back(static_cast<std::byte>((count - 15) % 255));
    }
    for (std::size_t i = 0; i < count; ++i)
        block.push_back(static_cast<std::byte>(i * 7 + 1));
    return block;
}

/// In memory of exactly that size, so that the sanitizers see any byte behind it.
Bytes Resized(const Bytes& bytes, std::size_t size) {
    Bytes resized(size);
    std::copy_n(bytes.begin(), std::min(size, bytes.size()), resized.begin());
    return resized;
}

/// Decodes the one plane of a single-word chunk: it must be what LZ4 itself makes of the block, or a
/// failure where that is not as long as the plane.
void CheckAgainstLz4(const CCaliBuf& store, std::uint16_t width, std::uint16_t height,
                     const Bytes& block) {
    const std::size_t planeBytes = std::size_t{2} * width * height;
    Bytes expected(2 * planeBytes);
    const int made = LZ4_decompress_safe(
        reinterpret_cast<const char*>(block.data()), reinterpret_cast<char*>(expected.data()),
        static_cast<int>(block.size()), static_cast<int>(expected.size()));
    const bool isPlane = made == static_cast<int>(planeBytes);
    const auto stored = static_cast<std::uint32_t>(block.size());
    Bytes words(planeBytes, std::byte{0x77});
    std::uint32_t total = 0;
    ASSERT_EQ(store.DecompressPlanes(
                  {.width = width, .height = height, .totalSize = stored, .planeSizes = {stored}},
                  block.data(), words.data(), total),
              isPlane ? S_OK : E_FAIL)
        << planeBytes << " bytes in " << block.size();
    expected.resize(planeBytes);
    EXPECT_EQ(words, isPlane ? expected : Bytes(planeBytes, std::byte{0x77}));
}

/// Runs of every length up to a few length bytes, whole, and with one byte too few or too many
/// behind a length that is right: what is taken from the block is what LZ4 would make of it.
TEST(CaliPlanes, LiteralRunsAreTakenAsLz4Does) {
    CCaliOperation<SWordCoef> owner;
    for (std::uint16_t width = 1; width <= 256; ++width) {
        for (std::uint16_t height = 1; height <= 3; ++height) {
            const std::size_t planeBytes = std::size_t{2} * width * height;
            const Bytes run = LiteralRun(planeBytes);
            for (const std::size_t size : {run.size() - 1, run.size(), run.size() + 1})
                CheckAgainstLz4(owner.Buffer(), width, height, Resized(run, size));
            for (int low = 1; low < 16; ++low) { // what would be the length of a match
                Bytes block = run;
                block[0] |= static_cast<std::byte>(low);
                CheckAgainstLz4(owner.Buffer(), width, height, block);
            }
        }
    }
}

// A length that never ends within its block.
TEST(CaliPlanes, LengthBytesUpToTheBlocksEndFail) {
    CCaliOperation<SWordCoef> owner;
    Bytes words(2 * 32768);
    for (const std::uint32_t size : {1U, 2U, 3U, 258U, 70000U}) {
        Bytes block(size, std::byte{255});
        block[0] = std::byte{0xF0};
        std::uint32_t total = 0;
        EXPECT_EQ(owner.Buffer().DecompressPlanes(
                      {.width = 256, .height = 128, .totalSize = size, .planeSizes = {size}},
                      block.data(), words.data(), total),
                  E_FAIL);
    }
}

TEST(CaliPlanes, MatchesOfForeignBlocksDecode) {
    CCaliOperation<SWordCoef> owner;
    // One literal, a match of 26 bytes one byte back, five literals: 32 bytes of 1.
    const Bytes block = MakeBytes({0x1F, 1, 1, 0, 7, 0x50, 1, 1, 1, 1, 1});
    Bytes words(32);
    std::uint32_t total = 0;
    EXPECT_EQ(owner.Buffer().DecompressPlanes(
                  {.width = 4, .height = 4, .totalSize = 11, .planeSizes = {11}}, block.data(),
                  words.data(), total),
              S_OK);
    EXPECT_EQ(words, Bytes(32, std::byte{1}));
    EXPECT_EQ(total, 32U);
}

// The scratch memory of a plane takes twice its size, of the last plane of a whole block too; more
// is refused by LZ4 itself.
TEST(CaliPlanes, PlanesThatDecodeToTwiceTheirSizeOrMoreFail) {
    CCaliOperation<SWordCoef> owner;
    for (const int decoded : {65536, 65537, 131072, 131074}) {
        const std::vector<char> plain(static_cast<std::size_t>(decoded), 'x');
        Bytes block(static_cast<std::size_t>(LZ4_compressBound(decoded)));
        const int size = LZ4_compress_default(plain.data(), reinterpret_cast<char*>(block.data()),
                                              decoded, static_cast<int>(block.size()));
        CheckAgainstLz4(owner.Buffer(), 256, 128, Resized(block, static_cast<std::size_t>(size)));
    }
}

TEST_F(CaliPlanesDamaged, PlanesThatReachPastTheRecordsTotalFail) {
    SChunkRecord record = TwoElementsRecord();
    record.totalSize = 14;
    ExpectFailure(record, kTwoElements, 2);
    record.totalSize = 5;
    ExpectFailure(record, kTwoElements, 1);
    record = TwoElementsRecord();
    record.planeSizes[2] = 0xFFFFFFFF;
    ExpectFailure(record, kTwoElements, 2);
    record.planeSizes[2] = 0;
    ExpectFailure(record, kTwoElements, 2);
    record = TwoElementsRecord();
    record.totalSize = static_cast<std::uint32_t>(m_owner.Buffer().CompressedBound()) + 1;
    ExpectFailure(record, kTwoElements, 0);
}

TEST_F(CaliPlanesDamaged, ATotalLargerThanThePlanesIsNoFailure) {
    SChunkRecord record = TwoElementsRecord();
    record.totalSize = 16;
    EXPECT_EQ(Decode(record, kTwoElements), S_OK);
    EXPECT_EQ(m_total, 12U);
    record.totalSize = static_cast<std::uint32_t>(m_owner.Buffer().CompressedBound());
    EXPECT_EQ(Decode(record, kTwoElements), S_OK);
    EXPECT_EQ(m_total, 12U);
}

TEST_F(CaliPlanesDamaged, ImpossibleSizesFail) {
    for (const auto& [width, height] : std::vector<std::pair<std::uint16_t, std::uint16_t>>{
             {0, 1}, {2, 0}, {257, 1}, {2, 129}, {65535, 65535}}) {
        SChunkRecord record = TwoElementsRecord();
        record.width = width;
        record.height = height;
        SCOPED_TRACE(testing::Message() << width << " x " << height);
        ExpectFailure(record, kTwoElements, 0);
    }
}

TEST_F(CaliPlanesDamaged, MissingBuffersAreTold) {
    const SChunkRecord record = TwoElementsRecord();
    Bytes elements(12);
    CCaliBuf& store = m_owner.Buffer();
    EXPECT_EQ(store.DecompressPlanes(record, nullptr, elements.data(), m_total), E_COEF_NOBUFFER);
    EXPECT_EQ(store.DecompressPlanes(record, kTwoElements.data(), nullptr, m_total),
              E_COEF_NOBUFFER);
    EXPECT_EQ(m_total, 0U);
}

TEST_F(CaliPlanesDamaged, ElementsOfNoKindDecodeAsThreePlanes) {
    m_owner.Buffer().SetElement(7, 9);
    Bytes elements(14, std::byte{0x77});
    EXPECT_EQ(m_owner.Buffer().DecompressPlanes(TwoElementsRecord(), kTwoElements.data(),
                                                elements.data(), m_total),
              S_OK);
    EXPECT_EQ(m_total, 12U);
    EXPECT_EQ(elements, MakeBytes({1, 0, 2, 0, 3, 0, 0x77, 4, 0, 5, 0, 6, 0, 0x77}));
    m_owner.Buffer().SetElement(4, 9); // too small for three words
    ExpectFailure(TwoElementsRecord(), kTwoElements, 0);
}

} // namespace
} // namespace trevolt
