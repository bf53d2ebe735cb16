#include "trevolt/BinaryCoefFile.h"

#include <bit>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "platform/FileSystem.h"
#include "tests/formats/BinaryKinds.h"
#include "tests/support/CoefMaps.h"
#include "tests/support/ExtremeNumbers.h"
#include "trevolt/TransferReport.h"

namespace trevolt {
namespace {

using namespace test;

class BinaryCoefFile : public testing::TestWithParam<BinaryKind> {
  protected:
    const BinaryKind& Kind() const { return GetParam(); }
    std::wstring File() const { return m_folder.File(L"file"); }
    const wchar_t* Path() const { return m_path.c_str(); }

    /// What a stored pixel leaves of `written` in a map pixel that held `before`. Trailing values
    /// are those of `before`.
    SMatrixCoef Loaded(const SMatrixCoef& written, const SMatrixCoef& before) const {
        SMatrixCoef loaded = before;
        for (std::size_t k = 0; k < 9; ++k)
            loaded.m[k] = Kind().isDiagonal && k % 4 != 0 ? 0.0F : written.m[k];
        return loaded;
    }

    CTemporaryFolder m_folder;
    std::wstring m_path = m_folder.File(L"file");
};

INSTANTIATE_TEST_SUITE_P(Kinds, BinaryCoefFile, testing::ValuesIn(kBinaryKinds), KindName);

// Sets the trailing values to the defaults, for comparisons of the matrix alone.
SMatrixCoef MatrixOnly(SMatrixCoef pixel) {
    const SMatrixCoef defaults;
    std::copy(defaults.m.begin() + 9, defaults.m.end(), pixel.m.begin() + 9);
    return pixel;
}

TEST_P(BinaryCoefFile, WritesTheHeaderAndRowByRowElements) {
    CChromaCorrectCoef map;
    map.Resize(3, 2);
    PaintMap(map, [](int x, int y) { return BytePixel(x, y); });
    ASSERT_EQ(Kind().write(map, Path(), nullptr), S_OK);

    const Bytes file = ReadFile(File());
    const Bytes header(file.begin(), file.begin() + kFileHeaderBytes);
    EXPECT_EQ(header, Header(Kind(), 1, 3, 2));

    Bytes expected;
    for (std::int32_t y = 0; y < 2; ++y)
        for (std::int32_t x = 0; x < 3; ++x)
            for (std::size_t k = 0; k < 9; ++k) {
                if (Kind().isDiagonal && k % 4 != 0)
                    continue;
                const float value = BytePixel(x, y).m[k];
                const Bytes stored =
                    Kind().isFloat ? FloatBytes({value})
                                   : Bytes{static_cast<std::byte>(std::lround(value * 255.0F))};
                expected.insert(expected.end(), stored.begin(), stored.end());
            }
    EXPECT_EQ(RawBody(File()), expected);
}

TEST_P(BinaryCoefFile, RefusesNullPathsAndMissingFilesAndFolders) {
    CChromaCorrectCoef map;
    map.Resize(2, 2);
    PaintMap(map, PatternPixel);
    std::uint32_t width = 7;
    std::uint32_t height = 9;
    EXPECT_EQ(Kind().read(map, nullptr), E_COEF_INVALIDARG);
    EXPECT_EQ(Kind().read(map, Path()), E_COEF_OPENFAILED);
    EXPECT_EQ(Kind().read(map, m_folder.Path().c_str()), E_COEF_OPENFAILED);
    EXPECT_EQ(Kind().write(map, nullptr, nullptr), E_COEF_INVALIDARG);
    EXPECT_EQ(Kind().write(map, m_folder.Path().c_str(), nullptr), E_COEF_OPENFAILED);
    EXPECT_EQ(Kind().write(map, m_folder.File(L"missing/file").c_str(), nullptr),
              E_COEF_OPENFAILED);
    EXPECT_EQ(Kind().readSize(nullptr, width, height), E_COEF_INVALIDARG);
    EXPECT_EQ(Kind().readSize(Path(), width, height), E_COEF_OPENFAILED);
    EXPECT_EQ(width, 7U);
    EXPECT_EQ(height, 9U);
    ExpectPixels(map, PatternPixel);
    EXPECT_TRUE(m_folder.Names().empty());
}

TEST_P(BinaryCoefFile, AnEmptyMapIsNotWrittenAndNoFileIsMade) {
    const CChromaCorrectCoef empty;
    EXPECT_EQ(Kind().write(empty, Path(), nullptr), E_COEF_INVALIDARG);
    CMassiveGrid prepared(36);
    ASSERT_TRUE(prepared.Resize(2, 2));
    EXPECT_EQ(Kind().write(empty, Path(), &prepared), E_COEF_INVALIDARG);
    EXPECT_FALSE(FileExists(File()));
}

TEST_P(BinaryCoefFile, AnEmptyMapReadsNothing) {
    CChromaCorrectCoef map;
    map.Resize(2, 2);
    ASSERT_EQ(Kind().write(map, Path(), nullptr), S_OK);
    map.Reset();
    EXPECT_EQ(Kind().read(map, Path()), S_OK);
    EXPECT_TRUE(map.IsEmpty());
}

TEST_P(BinaryCoefFile, AFileWithoutPixelsReadsAsNothing) {
    WriteCoefFile(File(), Header(Kind(), 1, 0, 0), {});
    CChromaCorrectCoef empty;
    EXPECT_EQ(Kind().read(empty, Path()), S_OK);
    CChromaCorrectCoef map;
    map.Resize(2, 2);
    PaintMap(map, PatternPixel);
    EXPECT_EQ(Kind().read(map, Path()), S_OK);
    ExpectPixels(map, PatternPixel);
}

TEST_P(BinaryCoefFile, AcceptsVersionZeroAndOneOnly) {
    const Bytes raw(Kind().storedBytes);
    CChromaCorrectCoef map;
    map.Resize(1, 1);
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    for (const std::uint32_t version : {0U, 1U}) {
        WriteCoefFile(File(), Header(Kind(), version, 1, 1), raw);
        EXPECT_EQ(Kind().read(map, Path()), Kind().wholeMap) << version;
        EXPECT_EQ(Kind().readSize(Path(), width, height), S_OK) << version;
    }
    for (const std::uint32_t version : {2U, 256U, 0x80000000U, 0xFFFFFFFFU}) {
        WriteCoefFile(File(), Header(Kind(), version, 1, 1), raw);
        EXPECT_EQ(Kind().read(map, Path()), E_COEF_BADFORMAT) << version;
        EXPECT_EQ(Kind().readSize(Path(), width, height), E_COEF_BADFORMAT) << version;
    }
}

TEST_P(BinaryCoefFile, RefusesTheFilesOfTheOtherKinds) {
    CChromaCorrectCoef map;
    map.Resize(2, 1);
    PaintMap(map, PatternPixel);
    for (const BinaryKind& other : kBinaryKinds) {
        ASSERT_EQ(other.write(map, Path(), nullptr), S_OK);
        CChromaCorrectCoef read;
        read.Resize(2, 1);
        const bool isSame = std::string_view(other.name) == Kind().name;
        EXPECT_EQ(Kind().read(read, Path()), isSame ? Kind().wholeMap : E_COEF_BADFORMAT);
        if (!isSame)
            ExpectPixels(read, [](int, int) { return SMatrixCoef{}; });
    }
}

TEST_P(BinaryCoefFile, RefusesABodyOfAnotherSize) {
    CChromaCorrectCoef map;
    map.Resize(3, 3);
    PaintMap(map, PatternPixel);
    const std::size_t whole = 9 * Kind().storedBytes;
    for (const std::size_t bytes : {std::size_t{0}, whole - Kind().storedBytes, whole - 1,
                                    whole + 1, whole + Kind().storedBytes}) {
        WriteCoefFile(File(), Header(Kind(), 1, 3, 3), Bytes(bytes));
        EXPECT_EQ(Kind().read(map, Path()), E_FAIL) << bytes << " bytes";
        ExpectPixels(map, PatternPixel);
    }
    // 65535 × 65535 pixels are negative as an int32; no body has as many.
    WriteCoefFile(File(), Header(Kind(), 1, 65535, 65535), Bytes(whole));
    EXPECT_EQ(Kind().read(map, Path()), E_FAIL);
    WriteCoefFile(File(), Header(Kind(), 1, 0, 3), Bytes(whole));
    EXPECT_EQ(Kind().read(map, Path()), E_FAIL);
    ExpectPixels(map, PatternPixel);
}

TEST_P(BinaryCoefFile, ReadsTheOverlapOfFileAndMap) {
    struct Sizes {
        std::int32_t fileWidth, fileHeight, mapWidth, mapHeight;
    };
    for (const Sizes& sizes : {Sizes{3, 2, 3, 2}, Sizes{3, 2, 5, 4}, Sizes{5, 4, 3, 2},
                               Sizes{5, 2, 3, 4}, Sizes{3, 4, 5, 2}, Sizes{1, 1, 4, 4},
                               Sizes{4, 4, 1, 1}, Sizes{1, 9, 9, 1}, Sizes{9, 1, 1, 9}}) {
        CChromaCorrectCoef file;
        file.Resize(sizes.fileWidth, sizes.fileHeight);
        PaintMap(file, BytePixel);
        ASSERT_EQ(Kind().write(file, Path(), nullptr), S_OK);

        CChromaCorrectCoef map;
        map.Resize(sizes.mapWidth, sizes.mapHeight);
        PaintMap(map, PatternPixel);
        const bool same = sizes.fileWidth == sizes.mapWidth && sizes.fileHeight == sizes.mapHeight;
        EXPECT_EQ(Kind().read(map, Path()), same ? Kind().wholeMap : S_OK);
        for (std::int32_t y = 0; y < sizes.mapHeight; ++y)
            for (std::int32_t x = 0; x < sizes.mapWidth; ++x) {
                SMatrixCoef expected = PatternPixel(x, y);
                SMatrixCoef actual = *map.FindElement(x, y);
                if (x < sizes.fileWidth && y < sizes.fileHeight) {
                    expected = Loaded(BytePixel(x, y), expected);
                    if (Kind().storedBytes == 36) { // its trailing values have tests of their own
                        expected = MatrixOnly(expected);
                        actual = MatrixOnly(actual);
                    }
                }
                ASSERT_TRUE(SamePixel(actual, expected)) << x << ", " << y;
            }
        ExpectGainsOne(map);
    }
}

TEST_P(BinaryCoefFile, RoundTripsThinMaps) {
    struct Size {
        std::int32_t width, height;
    };
    for (const Size& size :
         {Size{1, 1}, Size{1, 700}, Size{700, 1}, Size{65535, 1}, Size{1, 65535}}) {
        CChromaCorrectCoef map;
        map.Resize(size.width, size.height);
        PaintMap(map, BytePixel);
        ASSERT_EQ(Kind().write(map, Path(), nullptr), S_OK);
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        EXPECT_EQ(Kind().readSize(Path(), width, height), S_OK);
        EXPECT_EQ(width, static_cast<std::uint32_t>(size.width));
        EXPECT_EQ(height, static_cast<std::uint32_t>(size.height));
        CChromaCorrectCoef back;
        back.Resize(size.width, size.height);
        EXPECT_EQ(Kind().read(back, Path()), Kind().wholeMap);
        for (std::int32_t y = 0; y < size.height; ++y)
            for (std::int32_t x = 0; x < size.width; ++x)
                ASSERT_TRUE(SamePixel(MatrixOnly(*back.FindElement(x, y)),
                                      Loaded(BytePixel(x, y), SMatrixCoef{})));
    }
}

// Blocks hold 2^18 elements: one less, exactly as many, one more, and rows that cross the edge.
TEST_P(BinaryCoefFile, RoundTripsAcrossBlockEdges) {
    struct Size {
        std::int32_t width, height;
    };
    for (const Size& size : {Size{27, 9709}, Size{512, 512}, Size{5, 52429}, Size{65535, 5}}) {
        CChromaCorrectCoef map;
        map.Resize(size.width, size.height);
        PaintMap(map, BytePixel);
        ASSERT_EQ(Kind().write(map, Path(), nullptr), S_OK);
        CChromaCorrectCoef back;
        back.Resize(map.Width(), map.Height());
        EXPECT_EQ(Kind().read(back, Path()), Kind().wholeMap);
        for (std::int32_t y = 0; y < map.Height(); ++y)
            for (std::int32_t x = 0; x < map.Width(); ++x)
                ASSERT_TRUE(SamePixel(MatrixOnly(*back.FindElement(x, y)),
                                      Loaded(BytePixel(x, y), SMatrixCoef{})));
    }
}

TEST_P(BinaryCoefFile, OverwritesAnExistingLongerFile) {
    WriteFile(File(), Bytes(5000, std::byte{0x55}));
    CChromaCorrectCoef map;
    map.Resize(1, 1);
    ASSERT_EQ(Kind().write(map, Path(), nullptr), S_OK);
    EXPECT_LT(ReadFile(File()).size(), 100U);
    EXPECT_EQ(Kind().read(map, Path()), Kind().wholeMap);
}

TEST_P(BinaryCoefFile, TakesTheBodyFromAPreparedGrid) {
    CChromaCorrectCoef map;
    map.Resize(3, 2);
    PaintMap(map, PatternPixel);
    CMassiveGrid prepared(36);
    ASSERT_TRUE(prepared.Resize(3, 2));
    for (std::uint32_t i = 0; i < 6; ++i) {
        const SMatrixCoef pixel = BytePixel(static_cast<int>(i), 40);
        std::memcpy(prepared.Element(i), pixel.m.data(), 36);
    }
    ASSERT_EQ(Kind().write(map, Path(), &prepared), S_OK);
    CChromaCorrectCoef back;
    back.Resize(3, 2);
    EXPECT_EQ(Kind().read(back, Path()), Kind().wholeMap);
    for (std::int32_t y = 0; y < 2; ++y)
        for (std::int32_t x = 0; x < 3; ++x)
            EXPECT_TRUE(SamePixel(MatrixOnly(*back.FindElement(x, y)),
                                  Loaded(BytePixel(y * 3 + x, 40), SMatrixCoef{})));
}

TEST_P(BinaryCoefFile, TakesTheHeaderFromTheMapAndNotFromThePreparedGrid) {
    CChromaCorrectCoef map;
    map.Resize(2, 3);
    CMassiveGrid prepared(36);
    ASSERT_TRUE(prepared.Resize(3, 2));
    std::memset(prepared.Block(0), 0, prepared.BlockSize(0));
    ASSERT_EQ(Kind().write(map, Path(), &prepared), S_OK);
    const Bytes file = ReadFile(File());
    EXPECT_EQ(Bytes(file.begin(), file.begin() + kFileHeaderBytes), Header(Kind(), 1, 2, 3));
}

TEST_P(BinaryCoefFile, ReportsWhenTheBodyGetsNoMemory) {
    CChromaCorrectCoef map;
    map.Resize(8, 8);
    PaintMap(map, BytePixel);
    ASSERT_EQ(Kind().write(map, Path(), nullptr), S_OK);
    PaintMap(map, PatternPixel);

    const std::wstring other = m_folder.File(L"other");
    const CBudgetLimit limit(0);
    const CTransferReport report;
    EXPECT_EQ(Kind().read(map, Path()), E_OUTOFMEMORY);
    EXPECT_EQ(Kind().write(map, other.c_str(), nullptr), E_FAIL);
    EXPECT_TRUE(report.WasMemoryRefused());
    EXPECT_FALSE(FileExists(other));
    ExpectPixels(map, PatternPixel);
}

// The body grid of the map's own size is asked for even where a prepared one is written.
TEST_P(BinaryCoefFile, ReportsWhenTheBodyGetsNoMemoryBesideAPreparedGrid) {
    CChromaCorrectCoef map;
    map.Resize(8, 8);
    CMassiveGrid prepared(36);
    ASSERT_TRUE(prepared.Resize(8, 8));
    std::memset(prepared.Block(0), 0, prepared.BlockSize(0));
    const std::uint64_t outstanding = CMemoryBudget::Process().Outstanding();
    const std::uint64_t bodyBytes = 64 * Kind().storedBytes;
    {
        const CBudgetLimit oneShort(outstanding + bodyBytes - 1);
        const CTransferReport report;
        EXPECT_EQ(Kind().write(map, Path(), &prepared), E_FAIL);
        EXPECT_TRUE(report.WasMemoryRefused());
        EXPECT_FALSE(FileExists(File()));
    }
    {
        const CBudgetLimit enough(outstanding + 2 * bodyBytes); // and what the body is packed into
        const CTransferReport report;
        EXPECT_EQ(Kind().write(map, Path(), &prepared), S_OK);
        EXPECT_FALSE(report.WasMemoryRefused());
    }
    EXPECT_EQ(RawBody(File()), Bytes(bodyBytes));
    EXPECT_EQ(CMemoryBudget::Process().Outstanding(), outstanding);
}

TEST_P(BinaryCoefFile, GivesAllMemoryBack) {
    const std::uint64_t before = CMemoryBudget::Process().Outstanding();
    {
        CChromaCorrectCoef map;
        map.Resize(30, 20);
        EXPECT_EQ(Kind().write(map, Path(), nullptr), S_OK);
        EXPECT_EQ(Kind().read(map, Path()), Kind().wholeMap);
    }
    EXPECT_EQ(CMemoryBudget::Process().Outstanding(), before);
}

TEST_P(BinaryCoefFile, AMapWithoutStorageIsWrittenAsIdentityExceptByNineBytes) {
    CChromaCorrectCoef map;
    {
        const CBudgetLimit limit(0);
        map.Resize(2, 2);
    }
    ASSERT_EQ(map.Width(), 2);
    ASSERT_FALSE(map.ColourGrid().HasStorage());
    if (Kind().storedBytes == 9) {
        EXPECT_EQ(Kind().write(map, Path(), nullptr), E_FAIL);
        EXPECT_FALSE(FileExists(File()));
        return;
    }
    ASSERT_EQ(Kind().write(map, Path(), nullptr), S_OK);
    Bytes element = MakeBytes({255, 255, 255});
    if (Kind().isFloat)
        element =
            Kind().isDiagonal ? FloatBytes({1, 1, 1}) : FloatBytes({1, 0, 0, 0, 1, 0, 0, 0, 1});
    Bytes expected;
    for (int i = 0; i < 4; ++i)
        expected.insert(expected.end(), element.begin(), element.end());
    EXPECT_EQ(RawBody(File()), expected);
}

TEST_P(BinaryCoefFile, ReadsIntoAMapWithoutStorageWithoutTouchingIt) {
    CChromaCorrectCoef file;
    file.Resize(2, 2);
    ASSERT_EQ(Kind().write(file, Path(), nullptr), S_OK);
    CChromaCorrectCoef map;
    {
        const CBudgetLimit limit(0);
        map.Resize(2, 2);
    }
    EXPECT_GE(Kind().read(map, Path()), 0);
    EXPECT_FALSE(map.ColourGrid().HasStorage());
    EXPECT_EQ(map.FindElement(0, 0), nullptr);
}

#ifdef __linux__
TEST_P(BinaryCoefFile, NoticesAFullDiskAtClose) {
    CChromaCorrectCoef map;
    map.Resize(2, 2);
    const CTransferReport report;
    // Header and body lie in the stream's buffer until it is closed.
    EXPECT_EQ(Kind().write(map, L"/dev/full", nullptr), S_OK);
    EXPECT_TRUE(report.HasWriteFailed());
}

TEST_P(BinaryCoefFile, ReportsAFullDiskDuringTheBody) {
    CChromaCorrectCoef map;
    map.Resize(500, 500);
    std::uint32_t state = 1; // noise, so that the body stays larger than the stream's buffer
    PaintMap(map, [&](int, int) {
        SMatrixCoef pixel;
        for (float& value : pixel.m)
            value = static_cast<float>((state = state * 1664525U + 1013904223U) >> 8) / 16777216.0F;
        return pixel;
    });
    EXPECT_EQ(Kind().write(map, L"/dev/full", nullptr), E_FAIL);
}
#endif

TEST(BinaryCoefFile9f, DiscardsTheCompressionStatusOfAPreparedGrid) {
#ifdef __linux__
    CChromaCorrectCoef map;
    map.Resize(100, 100);
    CMassiveGrid prepared(36);
    ASSERT_TRUE(prepared.Resize(100, 100));
    std::uint32_t state = 1;
    for (std::size_t i = 0; i < prepared.BlockSize(0); ++i)
        prepared.Block(0)[i] = static_cast<std::byte>((state = state * 1664525U + 12345U) >> 24);
    const CTransferReport report;
    EXPECT_EQ(Write9fCoefFile(map, L"/dev/full", &prepared), S_OK);
    EXPECT_TRUE(report.HasWriteFailed());
    EXPECT_EQ(Write3fCoefFile(map, L"/dev/full", &prepared), E_FAIL);
#endif
    const CTemporaryFolder folder;
    CChromaCorrectCoef small;
    small.Resize(1, 1);
    const CMassiveGrid empty(36);
    EXPECT_EQ(Write9fCoefFile(small, folder.File(L"no/file").c_str(), &empty), E_COEF_OPENFAILED);
    EXPECT_EQ(Write9fCoefFile(small, folder.File(L"file").c_str(), &empty), S_OK);
    EXPECT_TRUE(RawBody(folder.File(L"file")).empty());
}

TEST(BinaryCoefFile9f, RoundTripsEveryBitOfTheMatrix) {
    const CTemporaryFolder folder;
    const std::wstring path = folder.File(L"file.9fcoef");
    CChromaCorrectCoef map;
    map.Resize(2, 1);
    SMatrixCoef odd;
    odd.m = {std::bit_cast<float>(0x7FA12345U), // a signalling NaN with a payload
             -0.0F,
             kInfinity,
             -kInfinity,
             std::numeric_limits<float>::denorm_min(),
             -1.5F,
             std::numeric_limits<float>::max(),
             kNaN,
             1.00001F,
             5,
             6,
             7};
    map.SetElement(0, 0, odd);
    map.SetElement(1, 0, PatternPixel(3, 4));
    ASSERT_EQ(Write9fCoefFile(map, path.c_str(), nullptr), S_OK);
    CChromaCorrectCoef back;
    back.Resize(2, 1);
    ASSERT_EQ(Read9fCoefFile(back, path.c_str()), 1);
    EXPECT_EQ(std::memcmp(back.FindElement(0, 0)->m.data(), odd.m.data(), 36), 0);
    EXPECT_EQ(std::memcmp(back.FindElement(1, 0)->m.data(), PatternPixel(3, 4).m.data(), 36), 0);

    // Load and save gives the same file.
    const std::wstring again = folder.File(L"again.9fcoef");
    ASSERT_EQ(Write9fCoefFile(back, again.c_str(), nullptr), S_OK);
    EXPECT_EQ(ReadFile(again), ReadFile(path));
}

/// The trailing values that pixel `index` of a file of `count` pixels gets, pixels being painted
/// by their index.
SMatrixCoef WithTrailing(std::uint32_t index, std::uint32_t count,
                         SMatrixCoef (*pixelAt)(std::uint32_t)) {
    SMatrixCoef pixel = MatrixOnly(pixelAt(index));
    if ((index + 1) % 262144 != 0 && index + 1 < count)
        for (std::size_t k = 0; k < 3; ++k)
            pixel.m[9 + k] = pixelAt(index + 1).m[k];
    return pixel;
}

SMatrixCoef IndexPixel(std::uint32_t index) {
    return PatternPixel(static_cast<std::int32_t>(index % 1000),
                        static_cast<std::int32_t>(index / 1000));
}

TEST(BinaryCoefFile9f, TrailingValuesAreTheNextStoredPixelsFirstThree) {
    const CTemporaryFolder folder;
    const std::wstring path = folder.File(L"file");
    struct Sizes {
        std::int32_t width, height, mapWidth, mapHeight;
        Status status;
    };
    constexpr Status kGridCopied = MakeStatus(1);
    // The block of 2^18 pixels ends inside the last three; maps differ from the file in the others.
    for (const Sizes& sizes :
         {Sizes{1, 1, 1, 1, kGridCopied}, Sizes{3, 2, 3, 2, kGridCopied}, Sizes{3, 2, 4, 4, S_OK},
          Sizes{3, 2, 2, 1, S_OK}, Sizes{3, 2, 2, 4, S_OK}, Sizes{512, 512, 512, 512, kGridCopied},
          Sizes{5, 52429, 5, 52429, kGridCopied}, Sizes{700, 400, 640, 480, S_OK},
          Sizes{65535, 5, 65535, 5, kGridCopied}}) {
        CChromaCorrectCoef file;
        file.Resize(sizes.width, sizes.height);
        PaintMap(file, [&](std::int32_t x, std::int32_t y) {
            return IndexPixel(static_cast<std::uint32_t>(y * sizes.width + x));
        });
        ASSERT_EQ(Write9fCoefFile(file, path.c_str(), nullptr), S_OK);
        CChromaCorrectCoef map;
        map.Resize(sizes.mapWidth, sizes.mapHeight);
        EXPECT_EQ(Read9fCoefFile(map, path.c_str()), sizes.status);
        ExpectPixels(map, [&](std::int32_t x, std::int32_t y) {
            if (x >= sizes.width || y >= sizes.height)
                return SMatrixCoef{};
            return WithTrailing(static_cast<std::uint32_t>(y * sizes.width + x),
                                static_cast<std::uint32_t>(sizes.width * sizes.height), IndexPixel);
        });
    }
}

TEST(BinaryCoefFile9f, LastPixelOfABlockGetsTheDefaultTrailingValues) {
    const CTemporaryFolder folder;
    const std::wstring path = folder.File(L"file");
    CChromaCorrectCoef map;
    map.Resize(512, 513);
    SMatrixCoef pixel;
    pixel.m.fill(0.25F);
    PaintMap(map, [&](int, int) { return pixel; });
    ASSERT_EQ(Write9fCoefFile(map, path.c_str(), nullptr), S_OK);
    ASSERT_EQ(Read9fCoefFile(map, path.c_str()), 1);
    const auto trailing = [&](std::int32_t x, std::int32_t y) {
        const SMatrixCoef& read = *map.FindElement(x, y);
        return std::array{read.m[9], read.m[10], read.m[11]};
    };
    constexpr std::array kNext{0.25F, 0.25F, 0.25F};
    constexpr std::array kDefault{0.0F, 1.0F, 0.0F};
    EXPECT_EQ(trailing(510, 511), kNext);
    EXPECT_EQ(trailing(511, 511), kDefault); // index 2^18 − 1
    EXPECT_EQ(trailing(0, 512), kNext);
    EXPECT_EQ(trailing(511, 512), kDefault); // the body's last
}

TEST(BinaryCoefFile9b, RoundsHalfAwayFromZeroAndWraps) {
    const CTemporaryFolder folder;
    const std::wstring path = folder.File(L"file");
    struct Row {
        float value;
        int stored;
    };
    for (const Row& row : {Row{1.0F, 255}, Row{0.998F, 254},            // 254.49
                           Row{1.002F, 0},                              // 255.51 rounds to 256
                           Row{0.0F, 0}, Row{-0.0F, 0}, Row{0.5F, 128}, // 127.5
                           Row{-0.5F, 128},                             // −127.5 rounds to −128
                           Row{-1.0F / 255.0F, 255}, Row{3.0F, 253},    // 765 − 2 · 256
                           Row{-2.0F, 2},                               // −510 + 2 · 256
                           Row{1000.0F, 24},                            // 255000 = 996 · 256 + 24
                           Row{kNaN, 0}, Row{kInfinity, 0}, Row{-kInfinity, 0}, Row{1e30F, 0}}) {
        CChromaCorrectCoef map;
        map.Resize(1, 1);
        SMatrixCoef pixel;
        pixel.m.fill(row.value);
        map.SetElement(0, 0, pixel);
        ASSERT_EQ(Write9bCoefFile(map, path.c_str(), nullptr), S_OK);
        EXPECT_EQ(RawBody(path), Bytes(9, static_cast<std::byte>(row.stored))) << row.value;
        ASSERT_EQ(Write3bCoefFile(map, path.c_str(), nullptr), S_OK);
        EXPECT_EQ(RawBody(path), Bytes(3, static_cast<std::byte>(row.stored))) << row.value;
    }
}

TEST(BinaryCoefFile9b, LoadsEveryByteAsA255th) {
    const CTemporaryFolder folder;
    const std::wstring path = folder.File(L"file");
    Bytes raw;
    for (int byte = 0; byte < 256; ++byte)
        for (int k = 0; k < 9; ++k)
            raw.push_back(static_cast<std::byte>(byte));
    WriteCoefFile(path, Header(kBinaryKinds[k9b], 1, 16, 16), raw);
    CChromaCorrectCoef map;
    map.Resize(16, 16);
    ASSERT_EQ(Read9bCoefFile(map, path.c_str()), S_OK);
    ExpectPixels(map, [](std::int32_t x, std::int32_t y) {
        SMatrixCoef pixel;
        for (std::size_t k = 0; k < 9; ++k)
            pixel.m[k] = static_cast<float>(y * 16 + x) / 255.0F;
        return pixel;
    });
}

TEST(BinaryCoefFile3b, FillsOnlyTheTopLeftOfALargerMap) {
    const CTemporaryFolder folder;
    const std::wstring path = folder.File(L"file");
    WriteCoefFile(path, Header(kBinaryKinds[k3b], 1, 2, 1), MakeBytes({255, 0, 51, 102, 153, 204}));
    CChromaCorrectCoef map;
    map.Resize(3, 2);
    ASSERT_EQ(Read3bCoefFile(map, path.c_str()), S_OK);
    SMatrixCoef first;
    first.m = {1, 0, 0, 0, 0, 0, 0, 0, 0.2F, 0, 1, 0};
    SMatrixCoef second;
    second.m = {0.4F, 0, 0, 0, 0.6F, 0, 0, 0, 0.8F, 0, 1, 0};
    ExpectPixels(map, [&](std::int32_t x, std::int32_t y) {
        if (y > 0 || x > 1)
            return SMatrixCoef{};
        return x == 0 ? first : second;
    });
}

TEST(BinaryCoefFile3f, SetsTheOffDiagonalToZeroAndKeepsTheTrailingValues) {
    const CTemporaryFolder folder;
    const std::wstring path = folder.File(L"file");
    WriteCoefFile(path, Header(kBinaryKinds[k3f], 1, 1, 1), FloatBytes({0.5F, 0.25F, -3.0F}));
    CChromaCorrectCoef map;
    map.Resize(1, 1);
    SMatrixCoef before;
    before.m.fill(9.0F);
    map.SetElement(0, 0, before);
    ASSERT_EQ(Read3fCoefFile(map, path.c_str()), S_OK);
    SMatrixCoef expected;
    expected.m = {0.5F, 0, 0, 0, 0.25F, 0, 0, 0, -3.0F, 9, 9, 9};
    EXPECT_TRUE(SamePixel(*map.FindElement(0, 0), expected));
}

TEST(BinaryCoefFile9f, TruncatesAPreparedGridsConversionToIdentityWhereItHoldsNothing) {
    const CTemporaryFolder folder;
    const std::wstring path = folder.File(L"file");
    CChromaCorrectCoef map;
    map.Resize(2, 1);
    PaintMap(map, PatternPixel);
    CMassiveGrid shorter(36);
    ASSERT_TRUE(shorter.Resize(1, 1));
    std::memset(shorter.Element(0), 0, 36);
    ASSERT_EQ(Write9bCoefFile(map, path.c_str(), &shorter), S_OK);
    EXPECT_EQ(RawBody(path),
              MakeBytes({0, 0, 0, 0, 0, 0, 0, 0, 0, 255, 0, 0, 0, 255, 0, 0, 0, 255}));
    ASSERT_EQ(Write3bCoefFile(map, path.c_str(), &shorter), S_OK);
    EXPECT_EQ(RawBody(path), MakeBytes({0, 0, 0, 255, 255, 255}));
    ASSERT_EQ(Write3fCoefFile(map, path.c_str(), &shorter), S_OK);
    EXPECT_EQ(RawBody(path), FloatBytes({0, 0, 0, 1, 1, 1}));

    // Elements of another size are none that can be converted.
    CMassiveGrid bytes(9);
    ASSERT_TRUE(bytes.Resize(2, 1));
    std::memset(bytes.Element(0), 0, 18);
    ASSERT_EQ(Write3bCoefFile(map, path.c_str(), &bytes), S_OK);
    EXPECT_EQ(RawBody(path), Bytes(6, std::byte{255}));
}

TEST(BinaryCoefFileSamples, ReadToTheirDecodedPixels) {
    struct Row {
        std::wstring name;
        std::size_t kind;
    };
    for (const Row& row :
         {Row{L"cabinet/Cab_01.9fcoef", k9f}, Row{L"cabinet/Cab_02.3fcoef", k3f},
          Row{L"cabinet/Cab_03.9bcoef", k9b}, Row{L"cabinet/Cab_04.3bcoef", k3b}}) {
        const BinaryKind& kind = kBinaryKinds[row.kind];
        SCOPED_TRACE(kind.name);
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        ASSERT_EQ(kind.readSize(Sample(row.name).c_str(), width, height), S_OK);
        EXPECT_EQ(width, 40U);
        EXPECT_EQ(height, 24U);
        CChromaCorrectCoef map;
        map.Resize(40, 24);
        ASSERT_EQ(kind.read(map, Sample(row.name).c_str()), kind.wholeMap);
        ExpectSamplePixels(map, row.name + L".csv");
    }
}

TEST(BinaryCoefFileSamples, AwkwardOnesAreRefusedAndLeaveTheMap) {
    CChromaCorrectCoef map;
    map.Resize(40, 24);
    PaintMap(map, PatternPixel);
    EXPECT_EQ(Read9fCoefFile(map, Sample(L"awkward/version_2.9fcoef").c_str()), E_COEF_BADFORMAT);
    EXPECT_EQ(Read9fCoefFile(map, Sample(L"awkward/cut_short.9fcoef").c_str()), E_FAIL);
    ExpectPixels(map, PatternPixel);
}

} // namespace
} // namespace trevolt
