// Damaged binary files: each ends in the status that it should, and leaves the map as it was.
#include <random>

#include <gtest/gtest.h>

#include "tests/formats/BinaryKinds.h"
#include "tests/support/CoefMaps.h"
#include "trevolt/BinaryCoefFile.h"

namespace trevolt {
namespace {

using namespace test;

constexpr std::int32_t kIntactWidth = 5;
constexpr std::int32_t kIntactHeight = 4;
constexpr std::size_t kFrameHeaderBytes = 15; // magic, FLG, BD, content size, checksum

class BinaryCoefDamage : public testing::TestWithParam<BinaryKind> {
  protected:
    void SetUp() override {
        CChromaCorrectCoef map;
        map.Resize(kIntactWidth, kIntactHeight);
        // Few values, so that the body holds LZ4 matches beside literals.
        PaintMap(map, [](int x, int y) { return BytePixel(x % 2, y % 2); });
        ASSERT_EQ(Kind().write(map, m_path.c_str(), nullptr), S_OK);
        m_whole = ReadFile(m_path);
        m_intact.Resize(kIntactWidth, kIntactHeight);
        ASSERT_EQ(Kind().read(m_intact, m_path.c_str()), Kind().wholeMap);
        m_held = CMemoryBudget::Process().Outstanding();
    }

    const BinaryKind& Kind() const { return GetParam(); }

    /// Reads `bytes` as a file into a painted map; after a failure the map must be as it was, and
    /// no memory may be kept.
    Status Read(const Bytes& bytes, CChromaCorrectCoef& map) const {
        WriteFile(m_path, bytes);
        map.Resize(kIntactWidth, kIntactHeight);
        PaintMap(map, PatternPixel);
        const std::uint64_t held = CMemoryBudget::Process().Outstanding();
        const Status status = Kind().read(map, m_path.c_str());
        EXPECT_EQ(CMemoryBudget::Process().Outstanding(), held);
        if (Failed(status))
            ExpectPixels(map, PatternPixel);
        return status;
    }

    Status Read(const Bytes& bytes) const {
        CChromaCorrectCoef map;
        return Read(bytes, map);
    }

    enum class Fate { Refused, Intact, Wrong };

    /// Whether a read of `bytes` failed as damage must, gave the intact pixels, or neither.
    Fate FateOf(const Bytes& bytes) const {
        CChromaCorrectCoef map;
        const Status status = Read(bytes, map);
        if (status == E_FAIL)
            return Fate::Refused;
        return status == Kind().wholeMap && IsIntact(map) ? Fate::Intact : Fate::Wrong;
    }

    bool IsIntact(const CChromaCorrectCoef& map) const {
        for (std::int32_t y = 0; y < kIntactHeight; ++y)
            for (std::int32_t x = 0; x < kIntactWidth; ++x)
                for (std::size_t k = 0; k < 9; ++k)
                    if (map.FindElement(x, y)->m[k] != m_intact.FindElement(x, y)->m[k])
                        return false;
        return true;
    }

    static Bytes WithFlippedBit(Bytes bytes, std::size_t bit) {
        bytes[bit / 8] ^= static_cast<std::byte>(1U << (bit % 8));
        return bytes;
    }

    CTemporaryFolder m_folder;
    std::wstring m_path = m_folder.File(L"file");
    Bytes m_whole;
    CChromaCorrectCoef m_intact;
    std::uint64_t m_held = 0;
};

INSTANTIATE_TEST_SUITE_P(Kinds, BinaryCoefDamage, testing::ValuesIn(kBinaryKinds), KindName);

TEST_P(BinaryCoefDamage, EveryTruncationIsRefused) {
    for (std::size_t size = 0; size < m_whole.size(); ++size) {
        const Bytes cut(m_whole.begin(), m_whole.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_EQ(Read(cut), size < kFileHeaderBytes ? E_COEF_BADFORMAT : E_FAIL) << size;
    }
}

TEST_P(BinaryCoefDamage, BytesBehindTheFrameAreRefused) {
    Bytes longer = m_whole;
    longer.push_back(std::byte{0});
    EXPECT_EQ(Read(longer), E_FAIL);
}

TEST_P(BinaryCoefDamage, EveryBitOfTheMagicCounts) {
    for (std::size_t bit = 0; bit < 16 * 8; ++bit)
        EXPECT_EQ(Read(WithFlippedBit(m_whole, bit)), E_COEF_BADFORMAT) << bit;
}

TEST_P(BinaryCoefDamage, OneBitOfTheVersionLeavesAValidFile) {
    constexpr std::size_t kLowestBit = 16 * 8; // version 1 becomes 0
    for (std::size_t bit = kLowestBit; bit < 20 * 8; ++bit)
        EXPECT_EQ(Read(WithFlippedBit(m_whole, bit)),
                  bit == kLowestBit ? Kind().wholeMap : E_COEF_BADFORMAT)
            << bit;
}

TEST_P(BinaryCoefDamage, EveryBitOfTheSizesCounts) {
    for (std::size_t bit = 20 * 8; bit < kFileHeaderBytes * 8; ++bit)
        EXPECT_EQ(Read(WithFlippedBit(m_whole, bit)), E_FAIL) << bit;
}

TEST_P(BinaryCoefDamage, EveryBitOfTheFrameHeaderCounts) {
    for (std::size_t bit = kFileHeaderBytes * 8; bit < (kFileHeaderBytes + kFrameHeaderBytes) * 8;
         ++bit)
        EXPECT_EQ(Read(WithFlippedBit(m_whole, bit)), E_FAIL) << bit;
}

TEST_P(BinaryCoefDamage, EveryBitOfTheBodyIsRefusedOrHarmless) {
    std::size_t refused = 0;
    const std::size_t first = (kFileHeaderBytes + kFrameHeaderBytes) * 8;
    for (std::size_t bit = first; bit < m_whole.size() * 8; ++bit) {
        const Fate fate = FateOf(WithFlippedBit(m_whole, bit));
        ASSERT_NE(fate, Fate::Wrong) << bit;
        refused += fate == Fate::Refused ? 1 : 0;
    }
    // A match may be named by another distance that finds the same bytes; little else is harmless.
    EXPECT_GT(refused, (m_whole.size() * 8 - first) * 9 / 10);
}

TEST_P(BinaryCoefDamage, ThousandsOfMutationsOfTheBodyAreRefusedOrHarmless) {
    constexpr std::size_t kMutations = 10000 / kBinaryKinds.size();
    std::mt19937 random(20240601);
    const auto below = [&](std::size_t limit) { return random() % limit; };
    for (std::size_t n = 0; n < kMutations; ++n) {
        Bytes mutated = m_whole;
        for (std::size_t changes = 1 + below(8); changes > 0; --changes) {
            const std::size_t at = kFileHeaderBytes + below(mutated.size() - kFileHeaderBytes);
            const auto position = mutated.begin() + static_cast<std::ptrdiff_t>(at);
            switch (below(4)) {
            case 0:
                mutated.erase(position);
                break;
            case 1:
                mutated.insert(position, static_cast<std::byte>(random()));
                break;
            default:
                *position = static_cast<std::byte>(random());
                break;
            }
        }
        ASSERT_NE(FateOf(mutated), Fate::Wrong) << "mutation " << n;
    }
}

TEST_P(BinaryCoefDamage, DeclaredContentSizesMustBeTrue) {
    struct Row {
        std::array<int, 8> size;
        int checksum; ///< of FLG 6C, BD and the size, so that only the size is wrong
    };
    for (const Row& row : {Row{{0, 0, 0, 0, 0, 0, 0, 0}, 0x03}, Row{{1, 0, 0, 0, 0, 0, 0, 0}, 0x74},
                           Row{{0, 0, 1, 0, 0, 0, 0, 0}, 0x48},
                           Row{{255, 255, 255, 255, 255, 255, 255, 255}, 0x98}}) {
        Bytes lying = m_whole;
        ASSERT_EQ(lying[28], std::byte{0x6C});
        ASSERT_EQ(lying[29], std::byte{0x70});
        for (std::size_t i = 0; i < row.size.size(); ++i)
            lying[30 + i] = static_cast<std::byte>(row.size[i]);
        lying[38] = static_cast<std::byte>(row.checksum);
        EXPECT_EQ(Read(lying), E_FAIL) << "checksum " << row.checksum;
    }
}

TEST_P(BinaryCoefDamage, HeaderSizesMustBeTrue) {
    for (const std::uint32_t side : {0U, 1U, 65535U}) {
        Bytes lying = Header(Kind(), 1, side, side);
        lying.insert(lying.end(), m_whole.begin() + kFileHeaderBytes, m_whole.end());
        EXPECT_EQ(Read(lying), E_FAIL) << side;
    }
}

TEST_P(BinaryCoefDamage, NotEvenAFrame) {
    Bytes file = Header(Kind(), 1, kIntactWidth, kIntactHeight);
    file.resize(file.size() + kIntactWidth * kIntactHeight * Kind().storedBytes); // raw zeros
    EXPECT_EQ(Read(file), E_FAIL);
}

} // namespace
} // namespace trevolt
