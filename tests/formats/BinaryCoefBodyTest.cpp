#include "formats/BinaryCoefBody.h"

#include <sstream>

#include <gtest/gtest.h>

#include "formats/BinaryCoefKind.h"
#include "tests/formats/BinaryKinds.h"
#include "tests/support/BufferContent.h"
#include "tests/support/CoefMaps.h"
#include "tests/support/ExtremeNumbers.h"
#include "tests/support/Streams.h"

namespace trevolt {
namespace {

using namespace test;

CChromaCorrectCoef BytePixelMap(std::int32_t width, std::int32_t height) {
    CChromaCorrectCoef map;
    map.Resize(width, height);
    PaintMap(map, BytePixel);
    return map;
}

TEST(BinaryCoefBody, FillsFromARegionOfTheMap) {
    const CChromaCorrectCoef map = BytePixelMap(5, 4);
    CMassiveGrid body(S3bCoefKind::kStoredBytes);
    ASSERT_EQ(FillBodyFromMap<S3bCoefKind>(map, {1, 2, 3, 4}, body), S_OK);
    EXPECT_EQ(body.Width(), 2U);
    EXPECT_EQ(body.Height(), 2U);
    Bytes expected;
    for (const int y : {2, 3})
        for (const int x : {1, 2})
            for (const int k : {0, 4, 8})
                expected.push_back(static_cast<std::byte>((x * 7 + y * 31 + k * 57) & 0xFF));
    EXPECT_EQ(Content(body), expected);
}

TEST(BinaryCoefBody, WritesTheIdentityWhereAPixelIsNotInTheMap) {
    const CChromaCorrectCoef map = BytePixelMap(2, 2);
    CMassiveGrid bytes9(S9bCoefKind::kStoredBytes);
    ASSERT_EQ(FillBodyFromMap<S9bCoefKind>(map, {2, 0, 3, 1}, bytes9), S_OK);
    EXPECT_EQ(Content(bytes9), MakeBytes({255, 0, 0, 0, 255, 0, 0, 0, 255}));
    CMassiveGrid bytes3(S3bCoefKind::kStoredBytes);
    ASSERT_EQ(FillBodyFromMap<S3bCoefKind>(map, {-1, -1, 0, 0}, bytes3), S_OK);
    EXPECT_EQ(Content(bytes3), MakeBytes({255, 255, 255}));
    CMassiveGrid floats9(S9fCoefKind::kStoredBytes);
    ASSERT_EQ(FillBodyFromMap<S9fCoefKind>(map, {0, 2, 1, 3}, floats9), S_OK);
    EXPECT_EQ(Content(floats9), FloatBytes({1, 0, 0, 0, 1, 0, 0, 0, 1}));
    CMassiveGrid floats3(S3fCoefKind::kStoredBytes);
    ASSERT_EQ(FillBodyFromMap<S3fCoefKind>(
                  map, {kInt32Max - 1, kInt32Max - 1, kInt32Max, kInt32Max}, floats3),
              S_OK);
    EXPECT_EQ(Content(floats3), FloatBytes({1, 1, 1}));
    ASSERT_EQ(FillBodyFromMap<S3fCoefKind>(
                  map, {kInt32Min, kInt32Min, kInt32Min + 1, kInt32Min + 1}, floats3),
              S_OK);
    EXPECT_EQ(Content(floats3), FloatBytes({1, 1, 1}));
}

TEST(BinaryCoefBody, RefusesARegionLargerThanTheMap) {
    const CChromaCorrectCoef map = BytePixelMap(3, 2);
    CMassiveGrid body(S3bCoefKind::kStoredBytes);
    EXPECT_EQ(FillBodyFromMap<S3bCoefKind>(map, {0, 0, 4, 1}, body), E_COEF_INVALIDARG);
    EXPECT_EQ(FillBodyFromMap<S3bCoefKind>(map, {0, 0, 1, 3}, body), E_COEF_INVALIDARG);
    EXPECT_FALSE(body.HasStorage());
    // No grid has as many columns, so it is the memory that fails.
    EXPECT_EQ(FillBodyFromMap<S3bCoefKind>(map, {kInt32Min, 0, kInt32Max, 1}, body), E_FAIL);
    EXPECT_FALSE(body.HasStorage());
}

TEST(BinaryCoefBody, ARegionWithoutColumnsOrRowsSucceedsAndHoldsNothing) {
    const CChromaCorrectCoef map = BytePixelMap(3, 2);
    CMassiveGrid body(S9bCoefKind::kStoredBytes);
    for (const SPixelRect& rect :
         {SPixelRect{1, 0, 1, 2}, SPixelRect{2, 0, 1, 2}, SPixelRect{0, 1, 2, 1},
          SPixelRect{kInt32Max, 0, kInt32Min, 1}}) {
        EXPECT_EQ(FillBodyFromMap<S9bCoefKind>(map, rect, body), S_OK);
        EXPECT_FALSE(body.HasStorage());
    }
}

TEST(BinaryCoefBody, ReadsTheStoredElementsInTheFilesShape) {
    const CTemporaryFolder folder;
    const std::wstring path = folder.File(L"file");
    const Bytes raw = MakeBytes({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18});
    WriteCoefFile(path, Header(kBinaryKinds[k3b], 1, 3, 2), raw);
    CMassiveGrid body(S3bCoefKind::kStoredBytes);
    ASSERT_EQ(ReadCoefBody(path.c_str(), S3bCoefKind::kMagic, body), S_OK);
    EXPECT_EQ(body.Width(), 3U);
    EXPECT_EQ(body.Height(), 2U);
    EXPECT_EQ(Content(body), raw);

    WriteCoefFile(path, Header(kBinaryKinds[k3b], 1, 2, 2), raw);
    EXPECT_EQ(ReadCoefBody(path.c_str(), S3bCoefKind::kMagic, body), E_FAIL);
    EXPECT_FALSE(body.HasStorage());
    EXPECT_EQ(body.Width(), 0U);
}

TEST(BinaryCoefBody, IsFoundBehindAHeaderOfNoMorePixelsThanItHas) {
    const auto find = [](std::uint32_t width, std::uint32_t height, SStoredBody& body) {
        Bytes file = Header(kBinaryKinds[k3b], 1, width, height);
        file.resize(file.size() + 5);
        std::istringstream stream = StreamOf(file);
        const Status status = FindCoefBody(stream, S3bCoefKind::kMagic, body);
        EXPECT_EQ(std::streamoff{stream.tellg()}, 24);
        return status;
    };
    SStoredBody body;
    EXPECT_EQ(find(65535, 32768, body), S_OK);
    EXPECT_EQ(body.width, 65535U);
    EXPECT_EQ(body.height, 32768U);
    EXPECT_EQ(body.bytes, 5U);
    EXPECT_EQ(find(46341, 46340, body), S_OK);
    for (const std::uint32_t height : {46341U, 65535U}) {
        EXPECT_EQ(find(46341, height, body), E_FAIL);
        EXPECT_EQ(body.height, 46340U);
    }
}

TEST(BinaryCoefBody, IsEmptyAfterAFailureWhateverItHeld) {
    const CTemporaryFolder folder;
    const std::wstring none = folder.File(L"none");
    std::istringstream otherMagic("no magic of any kind, but longer than a header");
    for (const CFileSource& source : {CFileSource(static_cast<const wchar_t*>(nullptr)),
                                      CFileSource(none.c_str()), CFileSource(otherMagic)}) {
        CMassiveGrid body(S3bCoefKind::kStoredBytes);
        ASSERT_TRUE(body.Resize(2, 2));
        EXPECT_TRUE(Failed(ReadCoefBody(source, S3bCoefKind::kMagic, body)));
        EXPECT_FALSE(body.HasStorage());
        EXPECT_EQ(body.Width(), 0U);
    }
}

TEST(BinaryCoefBody, SavesAndLoadsByTheEntriesOfTheKind) {
    const SMatrixCoef pixel = PatternPixel(1, 2);
    EXPECT_EQ(S3fCoefKind::Save(pixel), (S3fCoefKind::Stored{pixel.m[0], pixel.m[4], pixel.m[8]}));
    SMatrixCoef loaded;
    loaded.m.fill(7.0F);
    S3fCoefKind::LoadMasked({0.5F, 0.25F, 0.125F}, {true, false, true}, loaded);
    SMatrixCoef expected;
    expected.m = {0.5F, 0, 0, 0, 7, 0, 0, 0, 0.125F, 7, 7, 7};
    EXPECT_TRUE(SamePixel(loaded, expected));
}

} // namespace
} // namespace trevolt
