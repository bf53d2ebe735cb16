#include "trevolt/RawMapFile.h"

#include <gtest/gtest.h>

#include "tests/support/BufferContent.h"
#include "tests/support/CoefMaps.h"
#include "tests/support/Streams.h"

namespace trevolt {
namespace {

using namespace test;

const Bytes kMagic = MakeBytes({0x20, 0xba, 0xca, 0x2d, 0xed, 0x0b, 0xb9, 0x44, 0xa4, 0xc1, 0xc9,
                                0xd0, 0x19, 0x16, 0x81, 0x2c});
/// An unchecked field, width 2, height 1.
const Bytes kFields = MakeBytes({0xFF, 0xFF, 0xFF, 0xFF, 2, 0, 1, 0});

Bytes operator+(Bytes a, const Bytes& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

/// A uint64 byte count, then the bytes.
Bytes RawImage(const Bytes& content) {
    Bytes image;
    for (unsigned shift = 0; shift < 64; shift += 8)
        image.push_back(static_cast<std::byte>(std::uint64_t{content.size()} >> shift));
    return image + content;
}

template <class T>
Bytes BytesOf(const std::vector<T>& values) {
    Bytes bytes(values.size() * sizeof(T));
    std::memcpy(bytes.data(), values.data(), bytes.size());
    return bytes;
}

class RawMapFile : public ::testing::Test {
  protected:
    RawMapFile() { m_map.Resize(5, 4); }

    Status Read(const Bytes& file) {
        WriteFile(Path(), file);
        return ReadRawMapFile(m_map, Path().c_str());
    }
    std::wstring Path() const { return m_folder.File(L"raw"); }

    CTemporaryFolder m_folder;
    CChromaCorrectCoef m_map;
    const Bytes m_colours = BytesOf(std::vector{PatternPixel(0, 0), PatternPixel(1, 0)});
    const Bytes m_gains = BytesOf(std::vector{0.5F, 0.25F});
};

TEST_F(RawMapFile, TheGridsTakeTheImagesAndTheSizeIsZero) {
    EXPECT_EQ(Read(kMagic + kFields + RawImage(m_colours) + RawImage(m_gains)), S_OK);
    EXPECT_EQ(m_map.Width(), 0);
    EXPECT_EQ(m_map.Height(), 0);
    EXPECT_EQ(m_map.ColourGrid().Width(), 0U);
    EXPECT_EQ(m_map.GainGrid().Height(), 0U);
    EXPECT_EQ(Content(m_map.ColourGrid()), m_colours);
    EXPECT_EQ(Content(m_map.GainGrid()), m_gains);
    EXPECT_EQ(m_map.FindElement(0, 0), nullptr);
}

TEST_F(RawMapFile, TheMapIsUsableAfterwards) {
    ASSERT_EQ(Read(kMagic + kFields + RawImage(m_colours) + RawImage(m_gains)), S_OK);
    m_map.FillDefaults();
    EXPECT_EQ(Content(m_map.ColourGrid()), m_colours);
    m_map.Resize(3, 2);
    ExpectPixels(m_map, [](std::int32_t, std::int32_t) { return SMatrixCoef{}; });
}

TEST_F(RawMapFile, TruncatedAnywhereBehindTheMagicItStillSucceeds) {
    const Bytes whole = kMagic + kFields + RawImage(m_colours) + RawImage(m_gains);
    const std::size_t coloursEnd = 24 + 8 + m_colours.size();
    for (std::size_t size = 0; size < whole.size(); ++size) {
        m_map.Resize(5, 4);
        const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        if (size < kMagic.size()) {
            ASSERT_EQ(Read(cut), E_COEF_BADFORMAT) << size;
            ASSERT_EQ(m_map.Width(), 5) << size;
            continue;
        }
        ASSERT_EQ(Read(cut), S_OK) << size;
        ASSERT_EQ(m_map.Width(), 0) << size;
        ASSERT_EQ(m_map.Height(), 0) << size;
        ASSERT_EQ(m_map.ColourGrid().HasStorage(), size >= coloursEnd) << size;
        ASSERT_FALSE(m_map.GainGrid().HasStorage()) << size;
    }
}

TEST_F(RawMapFile, ALyingCountGivesAnEmptyGrid) {
    Bytes image = RawImage(m_colours);
    image[7] = std::byte{0x7F};
    EXPECT_EQ(Read(kMagic + kFields + image), S_OK);
    EXPECT_FALSE(m_map.ColourGrid().HasStorage());
}

// Where the gain grid's image begins is told by the colour grid's alone: what lies inside that one
// must not be taken for gains.
TEST_F(RawMapFile, AnUnreadColourGridLeavesTheGainGridEmpty) {
    // The colours' own bytes are a raw image: a count of 4 and four bytes.
    const Bytes trap = RawImage(Bytes(4, std::byte{7})) + Bytes(84);
    Bytes lying = RawImage(trap);
    lying[7] = std::byte{0x7F};
    EXPECT_EQ(Read(kMagic + kFields + lying + RawImage(m_gains)), S_OK);
    EXPECT_FALSE(m_map.ColourGrid().HasStorage());
    EXPECT_FALSE(m_map.GainGrid().HasStorage());

    m_map.Resize(5, 4);
    WriteFile(Path(), kMagic + kFields + RawImage(trap) + RawImage(m_gains));
    const CBudgetLimit few(50); // too few for the colours
    EXPECT_EQ(ReadRawMapFile(m_map, Path().c_str()), S_OK);
    EXPECT_FALSE(m_map.ColourGrid().HasStorage());
    EXPECT_FALSE(m_map.GainGrid().HasStorage());
    EXPECT_EQ(m_map.GainGrid().ByteCount(), 0U);
}

TEST_F(RawMapFile, AnEmptyColourImageIsReadAndTheGainsBehindIt) {
    EXPECT_EQ(Read(kMagic + kFields + RawImage({}) + RawImage(m_gains)), S_OK);
    EXPECT_FALSE(m_map.ColourGrid().HasStorage());
    EXPECT_EQ(Content(m_map.GainGrid()), m_gains);
}

TEST_F(RawMapFile, AnOddCountOfBytesIsHeldAndHarmless) {
    const Bytes odd(101, std::byte{9});
    EXPECT_EQ(Read(kMagic + kFields + RawImage(odd) + RawImage(odd)), S_OK);
    EXPECT_EQ(Content(m_map.ColourGrid()), odd);
    EXPECT_EQ(Content(m_map.GainGrid()), odd);
}

TEST_F(RawMapFile, AnotherMagicIsRefusedAndTheMapKept) {
    for (std::size_t k = 0; k < kMagic.size(); ++k) {
        Bytes other = kMagic;
        other[k] ^= std::byte{1};
        EXPECT_EQ(Read(other + kFields), E_COEF_BADFORMAT);
    }
    EXPECT_EQ(m_map.Width(), 5);
    EXPECT_EQ(m_map.Height(), 4);
    EXPECT_TRUE(m_map.HasStorage());
}

TEST_F(RawMapFile, NeedsAPathThatOpens) {
    EXPECT_EQ(ReadRawMapFile(m_map, nullptr), E_COEF_INVALIDARG);
    EXPECT_EQ(ReadRawMapFile(m_map, Path().c_str()), E_COEF_OPENFAILED);
    EXPECT_EQ(ReadRawMapFile(m_map, m_folder.Path().c_str()), E_COEF_OPENFAILED);
    EXPECT_EQ(m_map.Width(), 5);
}

TEST_F(RawMapFile, AStreamIsReadFromWhereItStandsAndStandsBehindTheGrids) {
    const Bytes whole = kMagic + kFields + RawImage(m_colours) + RawImage(m_gains);
    std::istringstream stream = StreamBehindPrefix(whole + MakeBytes({1, 2, 3}));
    EXPECT_EQ(ReadRawMapFile(m_map, stream), S_OK);
    EXPECT_EQ(m_map.Width(), 0);
    EXPECT_EQ(Content(m_map.ColourGrid()), m_colours);
    EXPECT_EQ(Content(m_map.GainGrid()), m_gains);
    EXPECT_TRUE(stream.good());
    EXPECT_EQ(stream.tellg(), static_cast<std::streamoff>(kPrefix.size() + whole.size()));
}

TEST_F(RawMapFile, AStreamReadsAsItsFileWhereverItEnds) {
    const Bytes whole = kMagic + kFields + RawImage(m_colours) + RawImage(m_gains);
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        m_map.Resize(5, 4);
        const Status ofFile = Read(cut);
        CChromaCorrectCoef map;
        map.Resize(5, 4);
        std::istringstream stream = StreamBehindPrefix(cut);
        ASSERT_EQ(ReadRawMapFile(map, stream), ofFile) << size;
        ASSERT_EQ(map.Width(), m_map.Width()) << size;
        ASSERT_EQ(Content(map.ColourGrid()), Content(m_map.ColourGrid())) << size;
        ASSERT_EQ(Content(map.GainGrid()), Content(m_map.GainGrid())) << size;
    }
}

TEST_F(RawMapFile, AStreamThatCannotBeSoughtGivesEmptyGrids) {
    CPipe pipe(kMagic + kFields + RawImage(m_colours) + RawImage(m_gains));
    EXPECT_EQ(ReadRawMapFile(m_map, pipe), S_OK);
    EXPECT_EQ(m_map.Width(), 0);
    EXPECT_FALSE(m_map.ColourGrid().HasStorage());
    EXPECT_FALSE(m_map.GainGrid().HasStorage());
}

} // namespace
} // namespace trevolt
