#include "trevolt/RegionCoefFile.h"

#include <random>

#include <gtest/gtest.h>

#include "formats/BinaryCoefKind.h"
#include "tests/formats/BinaryKinds.h"
#include "tests/support/CoefMaps.h"
#include "tests/support/ExtremeNumbers.h"
#include "tests/support/Streams.h"
#include "trevolt/PlacedCoefFile.h"
#include "trevolt/TransferReport.h"

namespace trevolt {
namespace {

using namespace test;

using WriteRegion = Status (*)(const CChromaCorrectCoef&, const wchar_t*, const SPixelRect&);
constexpr std::array<WriteRegion, 4> kWriteRegion{WriteRegion9fCoefFile, WriteRegion3fCoefFile,
                                                  WriteRegion9bCoefFile, WriteRegion3bCoefFile};
using WriteStream = Status (*)(const CChromaCorrectCoef&, std::ostream&, const SPixelRect&);
constexpr std::array<WriteStream, 4> kWriteStream{WriteRegion9fCoefFile, WriteRegion3fCoefFile,
                                                  WriteRegion9bCoefFile, WriteRegion3bCoefFile};

template <class Kind, Status (*Place)(CChromaCorrectCoef&, const wchar_t*, SPixelRect&, bool,
                                      const typename Kind::EntryMask&)>
Status PlaceAll(CChromaCorrectCoef& map, const wchar_t* path, SPixelRect& rect) {
    return Place(map, path, rect, false, Kind::AllEntries());
}
constexpr std::array kPlaceAll{
    PlaceAll<S9fCoefKind, Place9fCoefFile>, PlaceAll<S3fCoefKind, Place3fCoefFile>,
    PlaceAll<S9bCoefKind, Place9bCoefFile>, PlaceAll<S3bCoefKind, Place3bCoefFile>};

class RegionCoefFile : public ::testing::Test {
  protected:
    RegionCoefFile() {
        m_map.Resize(40, 30);
        PaintMap(m_map, BytePixel);
    }

    std::wstring Path() const { return m_folder.File(L"region"); }

    /// Places the file of a kind into `target`, at its first pixel, all entries of it.
    void PlaceBack(std::size_t kind, CChromaCorrectCoef& target) {
        SPixelRect rect;
        EXPECT_EQ(kPlaceAll[kind](target, Path().c_str(), rect), S_OK);
        EXPECT_EQ(rect.right, target.Width());
        EXPECT_EQ(rect.bottom, target.Height());
    }

    CTemporaryFolder m_folder;
    CChromaCorrectCoef m_map;
};

TEST_F(RegionCoefFile, TheHeaderDescribesTheRegion) {
    for (std::size_t kind = 0; kind < kBinaryKinds.size(); ++kind) {
        EXPECT_EQ(kWriteRegion[kind](m_map, Path().c_str(), {10, 10, 30, 20}), S_OK);
        Bytes file = ReadFile(Path());
        file.resize(kFileHeaderBytes);
        EXPECT_EQ(file, Header(kBinaryKinds[kind], 1, 20, 10));
    }
}

TEST_F(RegionCoefFile, TheBodyHoldsTheRegionRowByRow) {
    EXPECT_EQ(WriteRegion3bCoefFile(m_map, Path().c_str(), {1, 2, 3, 4}), S_OK);
    Bytes expected;
    for (const int y : {2, 3})
        for (const int x : {1, 2})
            for (const int k : {0, 4, 8})
                expected.push_back(static_cast<std::byte>((x * 7 + y * 31 + k * 57) & 0xFF));
    EXPECT_EQ(RawBody(Path()), expected);
}

TEST_F(RegionCoefFile, TheWholeMapAsARegionIsThePlainFile) {
    for (std::size_t kind = 0; kind < kBinaryKinds.size(); ++kind) {
        EXPECT_EQ(kWriteRegion[kind](m_map, Path().c_str(), {0, 0, 40, 30}), S_OK);
        const Bytes region = ReadFile(Path());
        EXPECT_EQ(kBinaryKinds[kind].write(m_map, Path().c_str(), nullptr), S_OK);
        EXPECT_EQ(ReadFile(Path()), region);
    }
}

TEST_F(RegionCoefFile, WrittenAndPlacedAgainItGivesTheRegion) {
    std::mt19937 random(9);
    const auto below = [&random](std::uint32_t n) {
        return static_cast<std::int32_t>(random() % n);
    };
    for (int round = 0; round < 100; ++round) {
        const std::size_t kind = random() % kBinaryKinds.size();
        const std::int32_t left = below(40);
        const std::int32_t top = below(30);
        const SPixelRect rect{left, top, left + 1 + below(static_cast<std::uint32_t>(40 - left)),
                              top + 1 + below(static_cast<std::uint32_t>(30 - top))};
        ASSERT_EQ(kWriteRegion[kind](m_map, Path().c_str(), rect), S_OK);
        CChromaCorrectCoef placed;
        placed.Resize(static_cast<std::int32_t>(rect.Width()),
                      static_cast<std::int32_t>(rect.Height()));
        PlaceBack(kind, placed);
        ExpectPixels(placed, [&](std::int32_t x, std::int32_t y) {
            SMatrixCoef pixel = BytePixel(x + left, y + top);
            for (std::size_t k = 0; k < 9; ++k)
                if (kBinaryKinds[kind].isDiagonal && k % 4 != 0)
                    pixel.m[k] = 0.0F;
            return pixel;
        });
    }
}

TEST_F(RegionCoefFile, BeyondTheMapItHoldsTheIdentity) {
    EXPECT_EQ(WriteRegion9bCoefFile(m_map, Path().c_str(), {39, 29, 41, 30}), S_OK);
    Bytes expected;
    for (int k = 0; k < 9; ++k)
        expected.push_back(static_cast<std::byte>((39 * 7 + 29 * 31 + k * 57) & 0xFF));
    const Bytes identity = MakeBytes({255, 0, 0, 0, 255, 0, 0, 0, 255});
    expected.insert(expected.end(), identity.begin(), identity.end());
    EXPECT_EQ(RawBody(Path()), expected);

    for (const SPixelRect& far : {SPixelRect{kInt32Max - 1, kInt32Max - 1, kInt32Max, kInt32Max},
                                  SPixelRect{kInt32Min, kInt32Min, kInt32Min + 1, kInt32Min + 1}}) {
        EXPECT_EQ(WriteRegion3fCoefFile(m_map, Path().c_str(), far), S_OK);
        EXPECT_EQ(RawBody(Path()), FloatBytes({1, 1, 1}));
    }
}

TEST_F(RegionCoefFile, RefusesWhatHasNoRegionBeforeTheFileIsTouched) {
    const CChromaCorrectCoef empty;
    for (const auto& write : kWriteRegion) {
        EXPECT_EQ(write(m_map, nullptr, {0, 0, 1, 1}), E_COEF_INVALIDARG);
        EXPECT_EQ(write(empty, Path().c_str(), {0, 0, 1, 1}), E_COEF_INVALIDARG);
        EXPECT_EQ(write(m_map, Path().c_str(), {0, 0, 41, 1}), E_COEF_INVALIDARG);
        EXPECT_EQ(write(m_map, Path().c_str(), {0, 0, 1, 31}), E_COEF_INVALIDARG);
        EXPECT_EQ(write(m_map, Path().c_str(), {5, 0, 4, 1}), E_FAIL);
        EXPECT_EQ(write(m_map, Path().c_str(), {5, 5, 4, 4}), E_FAIL);
        EXPECT_EQ(write(m_map, Path().c_str(), {0, kInt32Max, 1, kInt32Min}), E_FAIL);
        // The body is asked for before the region is compared with the map.
        EXPECT_EQ(write(m_map, Path().c_str(), {kInt32Min, 0, kInt32Max, 1}), E_FAIL);
        EXPECT_EQ(write(m_map, Path().c_str(), {0, 0, 65536, 32768}), E_FAIL);
        const CBudgetLimit none(0);
        EXPECT_EQ(write(m_map, Path().c_str(), {0, 0, 1, 1}), E_FAIL);
        EXPECT_EQ(write(m_map, Path().c_str(), {0, 0, 41, 1}), E_FAIL);
    }
    EXPECT_FALSE(FileExists(Path()));
}

TEST_F(RegionCoefFile, NeedsAPathThatOpens) {
    for (const auto& write : kWriteRegion)
        EXPECT_EQ(write(m_map, m_folder.Path().c_str(), {0, 0, 1, 1}), E_COEF_OPENFAILED);
}

TEST_F(RegionCoefFile, WithoutColumnsItIsAFileOfThatSizeWithoutContent) {
    for (std::size_t kind = 0; kind < kBinaryKinds.size(); ++kind) {
        EXPECT_EQ(kWriteRegion[kind](m_map, Path().c_str(), {7, 3, 7, 8}), S_OK);
        Bytes file = ReadFile(Path());
        file.resize(kFileHeaderBytes);
        EXPECT_EQ(file, Header(kBinaryKinds[kind], 1, 0, 5));
        EXPECT_TRUE(RawBody(Path()).empty());
    }
}

TEST_F(RegionCoefFile, AStreamGetsTheFilesBytesWhereItStands) {
    for (std::size_t kind = 0; kind < kBinaryKinds.size(); ++kind) {
        const SPixelRect rect{30, 20, 45, 33};
        ASSERT_EQ(kWriteRegion[kind](m_map, Path().c_str(), rect), S_OK);
        std::ostringstream stream;
        stream << kPrefix;
        EXPECT_EQ(kWriteStream[kind](m_map, stream, rect), S_OK);
        EXPECT_EQ(stream.str(), std::string(kPrefix) + ReadText(Path()));
    }
}

TEST_F(RegionCoefFile, AStreamTellsThatItRanFullAndIsNotTouchedWhereNoFileIs) {
    for (const auto& write : kWriteStream) {
        CFullDisk full(30);
        const CTransferReport report;
        EXPECT_EQ(write(m_map, full, {0, 0, 9, 9}), E_FAIL);
        EXPECT_TRUE(full.bad());
        EXPECT_FALSE(report.HasWriteFailed());
        std::ostringstream untouched;
        EXPECT_EQ(write(CChromaCorrectCoef(), untouched, {0, 0, 1, 1}), E_COEF_INVALIDARG);
        EXPECT_EQ(write(m_map, untouched, {0, 0, 41, 1}), E_COEF_INVALIDARG);
        EXPECT_EQ(write(m_map, untouched, {5, 0, 4, 1}), E_FAIL);
        EXPECT_TRUE(untouched.good());
        EXPECT_TRUE(untouched.str().empty());
    }
}

} // namespace
} // namespace trevolt
