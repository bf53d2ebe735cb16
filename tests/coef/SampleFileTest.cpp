// The word files of the samples: sized, loaded to the values beside them, and written again with
// the same header, directory and words.
#include <gtest/gtest.h>

#include "tests/coef/CoefObjects.h"
#include "tests/support/CoefMaps.h"
#include "tests/support/TestFiles.h"
#include "trevolt/FixedPoint.h"

namespace trevolt {
namespace {

using test::Bytes;
using test::ReadFile;
using test::Sample;

/// Sizes an object from the file's header, as a caller does, and loads the file.
template <class Object>
void LoadSized(Object& object, const std::wstring& path) {
    object.SetFileKind(2);
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    ASSERT_EQ((object.*test::KindOf<Object>::kSize)(path.c_str(), width, height), S_OK);
    ASSERT_EQ(object.Store()->Allocate(width, height), S_OK);
    ASSERT_EQ(object.LoadCoef(path.c_str()), S_OK);
}

/// Header without the number of records' worth of directory: both as bytes.
Bytes HeaderBytes(const Bytes& file) { return Bytes(file.begin(), file.begin() + 168); }

/// The directory's entries without their compressed sizes, which depend on the compressor.
std::vector<SChunkRecord> Directory(const Bytes& file, std::uint32_t planeCount) {
    const SChunkHeader header = DecodeChunkHeader(file.data());
    std::vector<SChunkRecord> records;
    for (std::uint32_t i = 0; i < header.recordCount; ++i) {
        SChunkRecord record =
            DecodeChunkRecord(&file[168 + i * ChunkRecordBytes(planeCount)], planeCount);
        record.totalSize = 0;
        record.planeSizes = {};
        records.push_back(record);
    }
    return records;
}

template <class Object>
class SampleFiles : public ::testing::Test {};
TYPED_TEST_SUITE(SampleFiles, test::AllKinds);

TYPED_TEST(SampleFiles, CabinetsAreWrittenAsTheyWere) {
    const test::CTemporaryFolder folder;
    for (const auto& [where, angle] : {std::pair{L"cabinet", L""},
                                       {L"turned-90", L"-90\u00B0"},
                                       {L"turned-180", L"-180\u00B0"},
                                       {L"turned-270", L"-270\u00B0"}}) {
        const std::wstring sample = test::CabinetSample<TypeParam>(where, angle);
        TypeParam object;
        ASSERT_NO_FATAL_FAILURE(LoadSized(object, sample));
        const bool isUpright = object.GetWidth() == 40;
        EXPECT_EQ(object.GetWidth() + object.GetHeight(), 64U);
        const SPixelRect whole = isUpright ? SPixelRect{0, 0, 40, 24} : SPixelRect{0, 0, 24, 40};
        const std::wstring out = folder.File(L"again.coef");
        ASSERT_EQ(object.ExportCoef(out.c_str(), whole, nullptr, nullptr), S_OK);
        const Bytes before = ReadFile(sample);
        const Bytes after = ReadFile(out);
        const std::uint32_t planes = object.Store()->PlaneCount();
        EXPECT_EQ(HeaderBytes(after), HeaderBytes(before));
        EXPECT_EQ(Directory(after, planes), Directory(before, planes));
        TypeParam again;
        ASSERT_NO_FATAL_FAILURE(LoadSized(again, out));
        EXPECT_EQ(test::DigestOf(again), test::DigestOf(object));
    }
}

TYPED_TEST(SampleFiles, TurnedCabinetsAreTheSamples) {
    const test::CTemporaryFolder folder;
    TypeParam cabinet;
    ASSERT_NO_FATAL_FAILURE(LoadSized(cabinet, test::CabinetSample<TypeParam>(L"cabinet", L"")));
    const std::wstring out = folder.File(L"turned.coef");
    const std::pair<std::uint32_t, std::wstring> turns[] = {
        {1, test::CabinetSample<TypeParam>(L"turned-90", L"-90\u00B0")},
        {2, test::CabinetSample<TypeParam>(L"turned-180", L"-180\u00B0")},
        {3, test::CabinetSample<TypeParam>(L"turned-270", L"-270\u00B0")}};
    for (const auto& [mode, sample] : turns) {
        ASSERT_EQ((cabinet.*test::KindOf<TypeParam>::kTurnedFile)(out.c_str(), {0, 0, 40, 24}, mode,
                                                                  nullptr, nullptr),
                  S_OK);
        TypeParam turned;
        TypeParam expected;
        ASSERT_NO_FATAL_FAILURE(LoadSized(turned, out));
        ASSERT_NO_FATAL_FAILURE(LoadSized(expected, sample));
        EXPECT_TRUE(test::SamePixels(turned, expected)) << mode;
    }
}

/// The element of a pixel as the matrix that it stands for.
std::array<std::uint16_t, 9> MatrixOf(const S3WordCoef& e) {
    return {e.w[0], 0, 0, 0, e.w[1], 0, 0, 0, e.w[2]};
}
std::array<std::uint16_t, 9> MatrixOf(const S4WordCoef& e) {
    return {e.w[0], 0, 0, 0, e.w[1], 0, 0, 0, e.w[3]};
}
std::array<std::uint16_t, 9> MatrixOf(const S9WordCoef& e) { return e.w; }
std::array<std::uint16_t, 9> MatrixOf(const S12WordCoef& e) {
    const auto& w = e.w;
    return {w[0], w[1], w[3], w[4], w[5], w[7], w[8], w[9], w[11]};
}

template <class Object>
void ExpectDecoded(const Object& object, const std::wstring& table) {
    for (const test::SSamplePixel& pixel : test::ReadSamplePixels(table)) {
        const auto* element = object.FindPixel(static_cast<std::uint32_t>(pixel.x),
                                               static_cast<std::uint32_t>(pixel.y));
        ASSERT_NE(element, nullptr);
        const auto words = MatrixOf(*element);
        for (std::size_t k = 0; k < 9; ++k)
            EXPECT_NEAR(WordToFloat(words[k]), pixel.m[k], 1e-6)
                << pixel.x << ", " << pixel.y << " value " << k;
    }
}

TYPED_TEST(SampleFiles, PixelsByValue) {
    const std::wstring sample = test::CabinetSample<TypeParam>(L"cabinet", L"");
    TypeParam object;
    ASSERT_NO_FATAL_FAILURE(LoadSized(object, sample));
    ExpectDecoded(object, sample + L".csv");
}

TEST(AwkwardSamples, AnOriginIsMovedToTheStoresCorner) {
    for (const wchar_t* name :
         {L"awkward/origin_1000_777.9wcoef", L"awkward/blocks_reversed.9wcoef"}) {
        const std::wstring sample = Sample(name);
        CCNewChromaCorrectCoef object;
        ASSERT_NO_FATAL_FAILURE(LoadSized(object, sample));
        EXPECT_EQ(object.GetWidth(), 300U);
        EXPECT_EQ(object.GetHeight(), 140U);
        ExpectDecoded(object, sample + L".csv");
    }
}

// Written again from where it was, a file with an origin has the same header and records.
TEST(AwkwardSamples, AnOriginIsWrittenAgain) {
    constexpr std::uint32_t kLeft = 1000;
    constexpr std::uint32_t kTop = 777;
    const std::wstring sample = Sample(L"awkward/origin_1000_777.9wcoef");
    const test::CTemporaryFolder folder;
    const std::wstring out = folder.File(L"again.9wcoef");
    CCNewChromaCorrectCoef object;
    ASSERT_EQ(object.Store()->Allocate(kLeft + 300, kTop + 140), S_OK);
    ASSERT_EQ(object.LoadCoefRect(sample.c_str(), kLeft, kTop), S_OK);
    ASSERT_EQ(object.ExportCoef(out.c_str(), {1000, 777, 1300, 917}, nullptr, nullptr), S_OK);
    const Bytes before = ReadFile(sample);
    const Bytes after = ReadFile(out);
    EXPECT_EQ(HeaderBytes(after), HeaderBytes(before));
    const auto records = Directory(after, 9);
    EXPECT_EQ(records, Directory(before, 9));
    std::vector<std::uint32_t> blocks;
    for (const SChunkRecord& record : records)
        blocks.push_back(record.index);
    EXPECT_EQ(blocks, (std::vector<std::uint32_t>{3075, 3587, 3076, 3588, 3077, 3589}));
    // The same words, each where the sample has it.
    CCNewChromaCorrectCoef upright;
    CCNewChromaCorrectCoef again;
    ASSERT_NO_FATAL_FAILURE(LoadSized(upright, sample));
    ASSERT_NO_FATAL_FAILURE(LoadSized(again, out));
    EXPECT_TRUE(test::SamePixels(again, upright));
    for (std::uint32_t y = 0; y < 140; ++y)
        for (std::uint32_t x = 0; x < 300; ++x)
            ASSERT_EQ(test::WordsAt(object, kLeft + x, kTop + y), test::WordsAt(upright, x, y));
    EXPECT_EQ(test::WordsAt(object, kLeft - 1, kTop), S9WordCoef{}.w);
}

} // namespace
} // namespace trevolt
