#include "trevolt/WordCoefFile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sstream>

#include <gtest/gtest.h>

#include "coef/CNewBrightCorrectCoef.h"
#include "coef/CNewChromaCorrectCoef.h"
#include "coef/VirtualGreenBrightCorrectCoef.h"
#include "coef/VirtualGreenChromaCorrectCoef.h"
#include "common/LittleEndian.h"
#include "tests/support/BudgetLimit.h"
#include "tests/support/FailingFile.h"
#include "tests/support/TestFiles.h"
#include "trevolt/MemoryBudget.h"
#include "trevolt/TransferReport.h"

#ifdef __linux__
#include <sys/inotify.h>
#include <unistd.h>

#include "platform/FileSystem.h"
#endif

namespace trevolt {
namespace {

using test::CBudgetLimit;
using test::CTemporaryFolder;

/// One kind as the typed tests need it.
template <EWordKind Kind, class ObjectType, class ElementType>
struct SKindUnderTest {
    static constexpr EWordKind kKind = Kind;
    using Object = ObjectType;
    using Element = ElementType;

    static void Prepare(Object& object) {
        if (Kind == EWordKind::VirtualGreenBrightness || Kind == EWordKind::VirtualGreenChroma)
            object.SetFileKind(2);
    }
};
using ChromaKind = SKindUnderTest<EWordKind::Chroma, CCNewChromaCorrectCoef, S9WordCoef>;
using BrightKind = SKindUnderTest<EWordKind::Brightness, CCNewBrightCorrectCoef, S3WordCoef>;
using GreenBrightKind =
    SKindUnderTest<EWordKind::VirtualGreenBrightness, CVirtualGreenBrightCorrectCoef, S4WordCoef>;
using GreenChromaKind =
    SKindUnderTest<EWordKind::VirtualGreenChroma, CVirtualGreenChromaCorrectCoef, S12WordCoef>;

template <class Kind>
typename Kind::Element CountingWords(std::uint32_t pixel) {
    typename Kind::Element element;
    for (std::uint32_t k = 0; k < element.w.size(); ++k)
        element.w[k] = static_cast<std::uint16_t>(pixel + k * 7919U);
    return element;
}

/// Writes a word file of the size whose pixel i holds CountingWords(i).
template <class Kind>
void WriteCounting(const std::wstring& path, std::uint16_t width, std::uint16_t height) {
    typename Kind::Object object;
    Kind::Prepare(object);
    ASSERT_EQ(object.Create(width, height), S_OK);
    for (std::uint32_t y = 0; y < height; ++y)
        for (std::uint32_t x = 0; x < width; ++x)
            *object.FindPixel(x, y) = CountingWords<Kind>(y * width + x);
    ASSERT_EQ(object.ExportCoef(path.c_str(), {0, 0, width, height}, nullptr, nullptr), S_OK);
}

/// The object that `path` loads into.
template <class Kind>
void LoadObject(const std::wstring& path, std::uint16_t width, std::uint16_t height,
                typename Kind::Object& object) {
    Kind::Prepare(object);
    ASSERT_EQ(object.Create(width, height), S_OK);
    ASSERT_EQ(object.LoadCoef(path.c_str()), S_OK);
}

template <class Kind>
class WordCoefBridge : public ::testing::Test {
  protected:
    CTemporaryFolder m_folder;
    std::wstring m_file = m_folder.File(L"file.coef");
};

using AllKinds = ::testing::Types<ChromaKind, BrightKind, GreenBrightKind, GreenChromaKind>;
TYPED_TEST_SUITE(WordCoefBridge, AllKinds);

TYPED_TEST(WordCoefBridge, EveryWordValueComesBackFromTheMap) {
    WriteCounting<TypeParam>(this->m_file, 256, 256);
    CChromaCorrectCoef map;
    map.Resize(256, 256);
    ASSERT_EQ(LoadWordCoefFile(TypeParam::kKind, map, this->m_file.c_str()), S_OK);
    const std::wstring saved = this->m_folder.File(L"saved.coef");
    ASSERT_EQ(SaveWordCoefFile(TypeParam::kKind, map, saved.c_str()), S_OK);

    typename TypeParam::Object object;
    LoadObject<TypeParam>(saved, 256, 256, object);
    for (std::uint32_t y = 0; y < 256; ++y)
        for (std::uint32_t x = 0; x < 256; ++x)
            ASSERT_EQ(object.FindPixel(x, y)->w, CountingWords<TypeParam>(y * 256 + x).w)
                << x << ", " << y;
}

TYPED_TEST(WordCoefBridge, ALargerFileIsCutAndASmallerOneLeavesTheRest) {
    WriteCounting<TypeParam>(this->m_file, 100, 50);
    CChromaCorrectCoef large;
    large.Resize(100, 50);
    ASSERT_EQ(LoadWordCoefFile(TypeParam::kKind, large, this->m_file.c_str()), S_OK);
    CChromaCorrectCoef mixed;
    mixed.Resize(64, 60);
    ASSERT_EQ(LoadWordCoefFile(TypeParam::kKind, mixed, this->m_file.c_str()), S_OK);
    EXPECT_EQ(mixed.Width(), 64);
    EXPECT_EQ(mixed.Height(), 60);
    for (int y = 0; y < 60; ++y)
        for (int x = 0; x < 64; ++x)
            ASSERT_EQ(mixed.FindElement(x, y)->m,
                      y < 50 ? large.FindElement(x, y)->m : SMatrixCoef{}.m)
                << x << ", " << y;
}

TYPED_TEST(WordCoefBridge, TheRegionMovesTheFile) {
    WriteCounting<TypeParam>(this->m_file, 4, 3);
    CChromaCorrectCoef plain;
    plain.Resize(4, 3);
    ASSERT_EQ(LoadWordCoefFile(TypeParam::kKind, plain, this->m_file.c_str()), S_OK);
    CChromaCorrectCoef moved;
    moved.Resize(4, 3);
    ASSERT_EQ(LoadWordCoefFile(TypeParam::kKind, moved, this->m_file.c_str(), {2, 1, 4, 3}), S_OK);
    EXPECT_EQ(moved.FindElement(2, 1)->m, plain.FindElement(0, 0)->m);
    EXPECT_EQ(moved.FindElement(3, 2)->m, plain.FindElement(1, 1)->m);
    EXPECT_EQ(moved.FindElement(1, 2)->m, SMatrixCoef{}.m);
    EXPECT_EQ(moved.FindElement(3, 0)->m, SMatrixCoef{}.m);

    CChromaCorrectCoef untouched;
    untouched.Resize(4, 3);
    for (const SMapRegion far :
         {SMapRegion{4, 0, 8, 3}, SMapRegion{0, 3, 4, 6}, SMapRegion{0xFFFFFFFF, 0xFFFFFFFF, 0, 0}})
        EXPECT_EQ(LoadWordCoefFile(TypeParam::kKind, untouched, this->m_file.c_str(), far), S_OK);
    EXPECT_EQ(untouched.FindElement(0, 0)->m, SMatrixCoef{}.m);
    EXPECT_EQ(untouched.FindElement(3, 2)->m, SMatrixCoef{}.m);
}

TYPED_TEST(WordCoefBridge, SavingChecksPathMapAndStorage) {
    CChromaCorrectCoef map;
    EXPECT_EQ(SaveWordCoefFile(TypeParam::kKind, map, this->m_file.c_str()), E_COEF_INVALIDARG);
    map.Resize(2, 2);
    EXPECT_EQ(SaveWordCoefFile(TypeParam::kKind, map, nullptr), E_COEF_INVALIDARG);
    map.ColourGrid().Release();
    EXPECT_EQ(SaveWordCoefFile(TypeParam::kKind, map, this->m_file.c_str()), E_FAIL);
    EXPECT_FALSE(test::FileExists(this->m_file));
}

// The colour grid is in the caller's hands and may hold less than the map's size.
TYPED_TEST(WordCoefBridge, SavingWritesTheDefaultWhereTheColourGridEnds) {
    CChromaCorrectCoef map;
    map.Resize(3, 2);
    ASSERT_TRUE(map.ColourGrid().Resize(2, 2));
    map.FillDefaults();
    ASSERT_EQ(SaveWordCoefFile(TypeParam::kKind, map, this->m_file.c_str()), S_OK);
    const test::Bytes cut = test::ReadFile(this->m_file);
    map.Resize(3, 2);
    ASSERT_EQ(SaveWordCoefFile(TypeParam::kKind, map, this->m_file.c_str()), S_OK);
    EXPECT_EQ(cut, test::ReadFile(this->m_file));
}

TYPED_TEST(WordCoefBridge, LoadingTellsWhyItCannot) {
    CChromaCorrectCoef map;
    map.Resize(2, 2);
    EXPECT_EQ(LoadWordCoefFile(TypeParam::kKind, map, nullptr), E_COEF_INVALIDARG);
    EXPECT_EQ(LoadWordCoefFile(TypeParam::kKind, map, this->m_file.c_str()), E_COEF_OPENFAILED);
    test::WriteText(this->m_file, std::string(400, 'x'));
    EXPECT_EQ(LoadWordCoefFile(TypeParam::kKind, map, this->m_file.c_str()), E_COEF_BADFORMAT);
    std::uint32_t width = 7;
    std::uint32_t height = 7;
    EXPECT_EQ(ReadWordCoefSize(TypeParam::kKind, this->m_file.c_str(), width, height),
              E_COEF_BADFORMAT);
}

TYPED_TEST(WordCoefBridge, ARefusedStoreIsNotedThoughTheStatusSaysNothing) {
    WriteCounting<TypeParam>(this->m_file, 40, 20);
    CChromaCorrectCoef map;
    map.Resize(40, 20);
    const CBudgetLimit none(CMemoryBudget::Process().Outstanding());
    const CTransferReport report;
    EXPECT_EQ(LoadWordCoefFile(TypeParam::kKind, map, this->m_file.c_str()), E_COEF_NOBUFFER);
    EXPECT_TRUE(report.WasMemoryRefused());
    EXPECT_EQ(map.FindElement(0, 0)->m, SMatrixCoef{}.m);
}

// The file's own memory is there, the store's is not.
TYPED_TEST(WordCoefBridge, ARefusedStoreLeavesTheLoadsStatus) {
    WriteCounting<TypeParam>(this->m_file, 40, 20);
    CChromaCorrectCoef map;
    map.Resize(40, 20);
    const std::uint64_t block = 256 * 128 * sizeof(typename TypeParam::Element);
    const CBudgetLimit limit(CMemoryBudget::Process().Outstanding() + block - 1);
    const CTransferReport report;
    EXPECT_EQ(LoadWordCoefFile(TypeParam::kKind, map, this->m_file.c_str()), S_OK);
    EXPECT_TRUE(report.WasMemoryRefused());
    EXPECT_EQ(map.FindElement(0, 0)->m, SMatrixCoef{}.m);
}

TYPED_TEST(WordCoefBridge, SavingWithoutMemoryGivesTheStoresStatusAndNoFile) {
    CChromaCorrectCoef map;
    map.Resize(40, 20);
    const std::uint64_t block = 256 * 128 * sizeof(typename TypeParam::Element);
    const CBudgetLimit limit(CMemoryBudget::Process().Outstanding() + block - 1);
    const CTransferReport report;
    EXPECT_EQ(SaveWordCoefFile(TypeParam::kKind, map, this->m_file.c_str()), E_FAIL);
    EXPECT_TRUE(report.WasMemoryRefused());
    EXPECT_FALSE(test::FileExists(this->m_file));
}

TYPED_TEST(WordCoefBridge, AHeaderThatLiesAboutItsSizeIsNotedAndTakesNoMemory) {
    WriteCounting<TypeParam>(this->m_file, 40, 20);
    test::Bytes bytes = test::ReadFile(this->m_file);
    CChromaCorrectCoef map;
    map.Resize(40, 20);
    constexpr std::uint64_t kManyBlocks = std::uint64_t{1} << 26;
    const CBudgetLimit limit(CMemoryBudget::Process().Outstanding() + kManyBlocks);
    for (const std::uint32_t width : {131072U, 200000U}) { // the grid's whole width, and past it
        StoreLittle<std::uint32_t>(&bytes[28], width);
        StoreLittle<std::uint32_t>(&bytes[32], 65536);
        test::WriteFile(this->m_file, bytes);
        const CTransferReport report;
        EXPECT_EQ(LoadWordCoefFile(TypeParam::kKind, map, this->m_file.c_str()), S_OK);
        EXPECT_TRUE(report.WasMemoryRefused());
        EXPECT_EQ(map.FindElement(0, 0)->m, SMatrixCoef{}.m); // no block was there to load into
    }
}

TYPED_TEST(WordCoefBridge, AFailedChunkIsNotedThoughALaterOneIsGood) {
    WriteCounting<TypeParam>(this->m_file, 300, 20); // two chunks
    test::Bytes bytes = test::ReadFile(this->m_file);
    constexpr std::size_t kFirstPlaneSize = 168 + 20;
    StoreLittle<std::uint32_t>(&bytes[kFirstPlaneSize],
                               LoadLittle<std::uint32_t>(&bytes[kFirstPlaneSize]) - 1);
    test::WriteFile(this->m_file, bytes);
    CChromaCorrectCoef map;
    map.Resize(300, 20);
    const CTransferReport report;
    EXPECT_EQ(LoadWordCoefFile(TypeParam::kKind, map, this->m_file.c_str()), S_OK);
    EXPECT_EQ(report.FailedChunks(), 1U);
}

TEST(WordCoefExtraWords, TheirMemoryIsNotNeededForTheMatrix) {
    const CTemporaryFolder folder;
    const std::wstring file = folder.File(L"a.9wcoef");
    WriteCounting<ChromaKind>(file, 2, 1);
    CChromaCorrectCoef map;
    map.Resize(2, 1);
    const std::uint64_t blocks = 256 * 128 * (sizeof(S9WordCoef) + sizeof(SWordCoef));
    const CBudgetLimit limit(CMemoryBudget::Process().Outstanding() + blocks - 1);
    const CTransferReport report;
    EXPECT_EQ(LoadWordCoefFile(EWordKind::Chroma, map, file.c_str()), S_OK);
    EXPECT_TRUE(report.WasMemoryRefused());
    EXPECT_EQ(map.FindElement(1, 0)->m[0], 1.0F / 65535.0F);
    EXPECT_EQ(SaveWordCoefFile(EWordKind::Chroma, map, file.c_str()), E_FAIL);
}

TEST(WordCoefMapping, BrightnessTakesTheDiagonal) {
    const CTemporaryFolder folder;
    const std::wstring file = folder.File(L"a.3wcoef");
    CChromaCorrectCoef map;
    map.Resize(2, 1);
    SMatrixCoef pixel;
    pixel.m = {1.0F, 0.1F, 0.2F, 0.3F, 1.00001F, 0.4F, 0.5F, 0.6F, -0.1F, 0.7F, 0.8F, 0.9F};
    map.SetElement(0, 0, pixel);
    ASSERT_EQ(SaveWordCoefFile(EWordKind::Brightness, map, file.c_str()), S_OK);

    CChromaCorrectCoef back;
    back.Resize(2, 1);
    SMatrixCoef before;
    before.m.fill(0.25F);
    back.SetElement(0, 0, before);
    ASSERT_EQ(LoadWordCoefFile(EWordKind::Brightness, back, file.c_str()), S_OK);
    // 1.00001 wraps to 0, −0.1 to 65536 − 6554; what no word holds is 0, the trailing values stay.
    const std::array<float, 12> expected{1.0F,  0,     0,    0, 0, 0, 0, 0, 58982.0F / 65535.0F,
                                         0.25F, 0.25F, 0.25F};
    EXPECT_EQ(back.FindElement(0, 0)->m, expected);
}

TEST(WordCoefMapping, MatrixLeavesTheTrailingValues) {
    const CTemporaryFolder folder;
    const std::wstring file = folder.File(L"a.9wcoef");
    WriteCounting<ChromaKind>(file, 1, 1);
    CChromaCorrectCoef map;
    map.Resize(1, 1);
    SMatrixCoef before;
    before.m.fill(0.25F);
    map.SetElement(0, 0, before);
    ASSERT_EQ(LoadWordCoefFile(EWordKind::Chroma, map, file.c_str()), S_OK);
    const std::array<float, 12>& m = map.FindElement(0, 0)->m;
    for (std::size_t k = 0; k < 9; ++k)
        EXPECT_EQ(m[k], static_cast<float>(k * 7919 % 65536) / 65535.0F);
    EXPECT_EQ(m[9], 0.25F);
    EXPECT_EQ(m[11], 0.25F);
}

TEST(WordCoefMapping, VirtualGreenBrightnessPutsItsThirdWordBehindTheMatrix) {
    const CTemporaryFolder folder;
    const std::wstring file = folder.File(L"a.4wcoef");
    WriteCounting<GreenBrightKind>(file, 1, 1);
    CChromaCorrectCoef map;
    map.Resize(1, 1);
    SMatrixCoef before;
    before.m.fill(0.25F);
    map.SetElement(0, 0, before);
    ASSERT_EQ(LoadWordCoefFile(EWordKind::VirtualGreenBrightness, map, file.c_str()), S_OK);
    const std::array<float, 12> expected{
        0, 0, 0, 0, 7919.0F / 65535.0F, 0, 0, 0, 23757.0F / 65535.0F, 0, 15838.0F / 65535.0F, 0};
    EXPECT_EQ(map.FindElement(0, 0)->m, expected);
}

TEST(WordCoefMapping, VirtualGreenChromaKeepsEachRowsThirdWordBehindTheMatrix) {
    const CTemporaryFolder folder;
    const std::wstring file = folder.File(L"a.12wcoef");
    CVirtualGreenChromaCorrectCoef object;
    object.SetFileKind(2);
    ASSERT_EQ(object.Create(1, 1), S_OK);
    *object.FindPixel(0, 0) = {{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}};
    ASSERT_EQ(object.ExportCoef(file.c_str(), {0, 0, 1, 1}, nullptr, nullptr), S_OK);

    CChromaCorrectCoef map;
    map.Resize(1, 1);
    ASSERT_EQ(LoadWordCoefFile(EWordKind::VirtualGreenChroma, map, file.c_str()), S_OK);
    std::array<float, 12> expected{1, 2, 4, 5, 6, 8, 9, 10, 12, 3, 7, 11};
    for (float& value : expected)
        value /= 65535.0F;
    EXPECT_EQ(map.FindElement(0, 0)->m, expected);

    const std::wstring saved = folder.File(L"b.12wcoef");
    ASSERT_EQ(SaveWordCoefFile(EWordKind::VirtualGreenChroma, map, saved.c_str()), S_OK);
    CVirtualGreenChromaCorrectCoef again;
    LoadObject<GreenChromaKind>(saved, 1, 1, again);
    EXPECT_EQ(again.FindPixel(0, 0)->w, (S12WordCoef{{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}}.w));
}

TEST(WordCoefMapping, VirtualGreenFilesCarryFileKindTwo) {
    const CTemporaryFolder folder;
    CChromaCorrectCoef map;
    map.Resize(1, 1);
    for (const EWordKind kind :
         {EWordKind::VirtualGreenBrightness, EWordKind::VirtualGreenChroma}) {
        const std::wstring file = folder.File(L"a");
        ASSERT_EQ(SaveWordCoefFile(kind, map, file.c_str()), S_OK);
        test::Bytes bytes = test::ReadFile(file);
        EXPECT_EQ(bytes[67], std::byte{2});
        bytes[67] = std::byte{1};
        test::WriteFile(file, bytes);
        EXPECT_EQ(LoadWordCoefFile(kind, map, file.c_str()), E_COEF_BADFORMAT);
    }
}

TEST(WordFileLosses, NamesWhatAMapCannotHold) {
    const CTemporaryFolder folder;
    EXPECT_TRUE(DescribeWordFileLosses(test::Sample(L"cabinet/Cab_06.9wcoef").c_str()).empty());
    EXPECT_TRUE(DescribeWordFileLosses(folder.File(L"missing").c_str()).empty());
    EXPECT_TRUE(DescribeWordFileLosses(test::Sample(L"cabinet/Cab_01.9fcoef").c_str()).empty());
    EXPECT_EQ(DescribeWordFileLosses(test::Sample(L"awkward/origin_1000_777.9wcoef").c_str()),
              (std::vector<std::string>{"its origin (1000, 777)"}));

    const std::wstring moved = folder.File(L"moved");
    test::Bytes bytes = test::ReadFile(test::Sample(L"cabinet/Cab_06.9wcoef"));
    StoreLittle<std::uint32_t>(&bytes[24], 777);
    test::WriteFile(moved, bytes);
    EXPECT_EQ(DescribeWordFileLosses(moved.c_str()),
              (std::vector<std::string>{"its origin (0, 777)"}));

    const std::wstring file = folder.File(L"a.9wPCoef");
    CCNewChromaCorrectCoef object;
    ASSERT_EQ(object.Create(2, 1), S_OK);
    const std::array<std::byte, 16> name{std::byte{'x'}};
    const std::uint8_t flag = 3;
    ASSERT_EQ(object.ExportCoef(file.c_str(), {0, 0, 2, 1}, name.data(), &flag), S_OK);
    EXPECT_EQ(DescribeWordFileLosses(file.c_str()),
              (std::vector<std::string>{"its extra words", "its owner name and flag"}));
    const std::array<std::byte, 16> noName{};
    ASSERT_EQ(object.ExportCoef(file.c_str(), {0, 0, 2, 1}, noName.data(), &flag), S_OK);
    EXPECT_EQ(DescribeWordFileLosses(file.c_str()),
              (std::vector<std::string>{"its extra words", "its owner name and flag"}));
}

// ---- on streams ----

/// A map in which every value of every pixel differs from what a load gives.
CChromaCorrectCoef MarkedMap(std::int32_t width, std::int32_t height) {
    CChromaCorrectCoef map;
    map.Resize(width, height);
    SMatrixCoef mark;
    mark.m.fill(0.3F);
    for (std::int32_t y = 0; y < height; ++y)
        for (std::int32_t x = 0; x < width; ++x)
            map.SetElement(x, y, mark);
    return map;
}

::testing::AssertionResult SameMaps(const CChromaCorrectCoef& a, const CChromaCorrectCoef& b) {
    if (a.Width() != b.Width() || a.Height() != b.Height())
        return ::testing::AssertionFailure() << "sizes differ";
    for (std::int32_t y = 0; y < a.Height(); ++y)
        for (std::int32_t x = 0; x < a.Width(); ++x)
            if (a.ElementOrDefault(x, y).m != b.ElementOrDefault(x, y).m)
                return ::testing::AssertionFailure() << "pixel " << x << ", " << y << " differs";
    return ::testing::AssertionSuccess();
}

/// What a load tells beside its map.
struct SLoadAccount {
    Status status = S_OK;
    std::uint32_t failedChunks = 0;
    std::uint64_t missingPixels = 0;
    bool wasMemoryRefused = false;

    friend bool operator==(const SLoadAccount&, const SLoadAccount&) = default;
};

template <class Source>
SLoadAccount LoadAndTell(EWordKind kind, CChromaCorrectCoef& map, Source& source,
                         const SMapRegion& region) {
    const CTransferReport report;
    const Status status = LoadWordCoefFile(kind, map, source, region);
    return {status, report.FailedChunks(), report.MissingPixels(), report.WasMemoryRefused()};
}

/// Size, losses and load of a file are the same from a path and from a stream.
template <class Kind>
void ExpectSameFromAStream(const test::Bytes& bytes, const std::wstring& path,
                           const std::string& before = {}) {
    test::WriteFile(path, bytes);
    std::istringstream stream(
        before + std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    const auto start = static_cast<std::streamoff>(before.size());
    stream.seekg(start);

    std::array<std::uint32_t, 4> size{7, 7, 7, 7};
    const Status sized = ReadWordCoefSize(Kind::kKind, path.c_str(), size[0], size[1]);
    EXPECT_EQ(ReadWordCoefSize(Kind::kKind, stream, size[2], size[3]), sized);
    EXPECT_EQ(size[2], size[0]);
    EXPECT_EQ(size[3], size[1]);
    EXPECT_TRUE(stream.good());
    EXPECT_EQ(stream.tellg(), std::streampos(start));

    EXPECT_EQ(DescribeWordFileLosses(stream), DescribeWordFileLosses(path.c_str()));
    EXPECT_TRUE(stream.good());
    EXPECT_EQ(stream.tellg(), std::streampos(start));

    CChromaCorrectCoef fromPath = MarkedMap(40, 24);
    CChromaCorrectCoef fromStream = MarkedMap(40, 24);
    const SMapRegion region{3, 2, 0, 0};
    const wchar_t* const file = path.c_str();
    const SLoadAccount expected = LoadAndTell(Kind::kKind, fromPath, file, region);
    EXPECT_EQ(LoadAndTell(Kind::kKind, fromStream, stream, region), expected);
    EXPECT_TRUE(SameMaps(fromPath, fromStream));
}

TYPED_TEST(WordCoefBridge, AStreamIsReadAsAFileIs) {
    WriteCounting<TypeParam>(this->m_file, 300, 20); // two chunks
    const test::Bytes whole = test::ReadFile(this->m_file);
    ExpectSameFromAStream<TypeParam>(whole, this->m_file);
    ExpectSameFromAStream<TypeParam>(whole, this->m_file, "what stands before");
    ExpectSameFromAStream<TypeParam>({}, this->m_file);
    test::Bytes damaged = whole;
    damaged[168 + 20] ^= std::byte{1}; // the first chunk's first plane
    ExpectSameFromAStream<TypeParam>(damaged, this->m_file);
    for (const std::ptrdiff_t length : {1, 15, 16, 167, 168, 200})
        ExpectSameFromAStream<TypeParam>(test::Bytes(whole.begin(), whole.begin() + length),
                                         this->m_file);
    ExpectSameFromAStream<TypeParam>(test::Bytes(whole.begin(), whole.end() - 1), this->m_file);
    ExpectSameFromAStream<TypeParam>(test::Bytes(400, std::byte{'x'}), this->m_file);
}

TYPED_TEST(WordCoefBridge, AStreamStandsBehindTheFileThatWasLoaded) {
    WriteCounting<TypeParam>(this->m_file, 300, 20);
    const std::string file = test::ReadText(this->m_file);
    std::istringstream stream("before" + file + "behind");
    stream.seekg(6);
    CChromaCorrectCoef map;
    map.Resize(300, 20);
    ASSERT_EQ(LoadWordCoefFile(TypeParam::kKind, map, stream), S_OK);
    EXPECT_TRUE(stream.good());
    EXPECT_EQ(stream.tellg(), std::streampos(static_cast<std::streamoff>(6 + file.size())));
}

TYPED_TEST(WordCoefBridge, AStreamIsWrittenAsAFileIs) {
    CChromaCorrectCoef map;
    map.Resize(300, 140);
    for (std::int32_t y = 0; y < 140; ++y)
        for (std::int32_t x = 0; x < 300; ++x)
            for (std::size_t k = 0; k < 12; ++k)
                map.FindElement(x, y)->m[k] =
                    static_cast<float>((x * 31 + y * 17 + static_cast<int>(k) * 5) % 997) / 996.0F;
    ASSERT_EQ(SaveWordCoefFile(TypeParam::kKind, map, this->m_file.c_str()), S_OK);
    const std::string file = test::ReadText(this->m_file);
    std::stringstream stream;
    stream << "before";
    ASSERT_EQ(SaveWordCoefFile(TypeParam::kKind, map, stream), S_OK);
    EXPECT_TRUE(stream.good());
    EXPECT_EQ(stream.tellp(), std::streampos(static_cast<std::streamoff>(6 + file.size())));
    EXPECT_EQ(stream.str(), "before" + file);
}

TYPED_TEST(WordCoefBridge, SavingToAStreamTellsWhyItCannot) {
    std::stringstream stream;
    CChromaCorrectCoef map;
    EXPECT_EQ(SaveWordCoefFile(TypeParam::kKind, map, stream), E_COEF_INVALIDARG);
    map.Resize(2, 2);
    map.ColourGrid().Release();
    EXPECT_EQ(SaveWordCoefFile(TypeParam::kKind, map, stream), E_FAIL);
    map.Resize(2, 2);
    {
        const CBudgetLimit none(CMemoryBudget::Process().Outstanding());
        EXPECT_EQ(SaveWordCoefFile(TypeParam::kKind, map, stream), E_FAIL);
    }
    EXPECT_TRUE(stream.str().empty());
    stream.setstate(std::ios::failbit);
    EXPECT_EQ(SaveWordCoefFile(TypeParam::kKind, map, stream), E_FAIL);
}

TYPED_TEST(WordCoefBridge, AStreamThatHadFailedHasNoBytes) {
    WriteCounting<TypeParam>(this->m_file, 2, 1);
    std::istringstream stream(test::ReadText(this->m_file));
    stream.setstate(std::ios::failbit);
    CChromaCorrectCoef map;
    map.Resize(2, 1);
    std::uint32_t width = 7;
    std::uint32_t height = 7;
    EXPECT_EQ(ReadWordCoefSize(TypeParam::kKind, stream, width, height), E_COEF_BADFORMAT);
    EXPECT_EQ(width, 0U);
    EXPECT_EQ(height, 0U);
    EXPECT_EQ(LoadWordCoefFile(TypeParam::kKind, map, stream), E_COEF_BADFORMAT);
    EXPECT_TRUE(DescribeWordFileLosses(stream).empty());
    EXPECT_TRUE(stream.fail());
}

TEST(WordCoefStreams, HoldExtraWordsAndOwner) {
    const CTemporaryFolder folder;
    const std::wstring path = folder.File(L"a.9wPCoef");
    CCNewChromaCorrectCoef object;
    ASSERT_EQ(object.Create(300, 20), S_OK);
    for (std::uint32_t x = 0; x < 300; ++x)
        *object.FindPixel(x, 19) = CountingWords<ChromaKind>(x);
    const std::array<std::byte, 16> name{std::byte{'x'}};
    const std::uint8_t flag = 3;
    ASSERT_EQ(object.ExportCoef(path.c_str(), {0, 0, 300, 20}, name.data(), &flag), S_OK);
    const test::Bytes whole = test::ReadFile(path);
    ExpectSameFromAStream<ChromaKind>(whole, path);
    std::istringstream stream(test::ReadText(path));
    EXPECT_EQ(DescribeWordFileLosses(stream),
              (std::vector<std::string>{"its extra words", "its owner name and flag"}));
    CChromaCorrectCoef map;
    map.Resize(300, 20);
    ASSERT_EQ(LoadWordCoefFile(EWordKind::Chroma, map, stream), S_OK);
    EXPECT_EQ(map.FindElement(299, 19)->m[0], 299.0F / 65535.0F);
    EXPECT_TRUE(stream.good());
    EXPECT_EQ(stream.tellg(), std::streampos(static_cast<std::streamoff>(whole.size())));

    test::Bytes damaged = whole;
    StoreLittle<std::uint32_t>(&damaged[86], 167); // leads into the header
    ExpectSameFromAStream<ChromaKind>(damaged, path);
    for (const std::size_t end :
         {whole.size() - 1, std::size_t{LoadLittle<std::uint32_t>(&whole[86])}})
        ExpectSameFromAStream<ChromaKind>(
            test::Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(end)), path);
}

// The samples of all word kinds, each as every kind.
TYPED_TEST(WordCoefBridge, TheSamplesAreTheSameFromAStream) {
    for (const wchar_t* name :
         {L"cabinet/Cab_06.9wcoef", L"cabinet/Cab_07.3wcoef", L"cabinet/Cab_08.4wcoef",
          L"cabinet/Cab_09.12wcoef", L"awkward/blocks_reversed.9wcoef",
          L"awkward/origin_1000_777.9wcoef"})
        ExpectSameFromAStream<TypeParam>(test::ReadFile(test::Sample(name)), this->m_file);
}

TEST(WordCoefStreams, FloatFilesAreTakenAsFromAPath) {
    const test::CTemporaryFolder folder;
    const std::wstring path = folder.File(L"file");
    const test::Bytes matrix = test::ReadFile(test::Sample(L"cabinet/Cab_01.9fcoef"));
    ExpectSameFromAStream<ChromaKind>(matrix, path);
    ExpectSameFromAStream<ChromaKind>(matrix, path, "what stands before");
    ExpectSameFromAStream<ChromaKind>(test::Bytes(matrix.begin(), matrix.end() - 1), path);
    std::istringstream stream(test::ReadText(test::Sample(L"cabinet/Cab_01.9fcoef")));
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    EXPECT_EQ(ReadWordCoefSize(EWordKind::Chroma, stream, width, height), S_OK);
    EXPECT_EQ(width, 40U);
    EXPECT_EQ(height, 24U);
    CChromaCorrectCoef map;
    map.Resize(40, 24);
    EXPECT_EQ(LoadWordCoefFile(EWordKind::Chroma, map, stream), S_OK);
    CChromaCorrectCoef defaults;
    defaults.Resize(40, 24);
    EXPECT_NE(map.FindElement(7, 5)->m, defaults.FindElement(7, 5)->m);
}

TEST(WordCoefKinds, AValueThatIsNoKind) {
    const auto none = static_cast<EWordKind>(99);
    const std::wstring sample = test::Sample(L"cabinet/Cab_06.9wcoef");
    CChromaCorrectCoef map;
    map.Resize(2, 2);
    std::stringstream stream;
    std::uint32_t width = 7;
    std::uint32_t height = 7;
    EXPECT_EQ(LoadWordCoefFile(none, map, sample.c_str()), E_COEF_INVALIDARG);
    EXPECT_EQ(ReadWordCoefSize(none, sample.c_str(), width, height), E_COEF_INVALIDARG);
    EXPECT_EQ(SaveWordCoefFile(none, map, stream), E_COEF_INVALIDARG);
    EXPECT_TRUE(stream.str().empty());
}

#ifdef __linux__
/// Counts how often a file is opened while it lives.
class COpenCount {
  public:
    explicit COpenCount(const std::wstring& path) : m_events(inotify_init1(IN_NONBLOCK)) {
        EXPECT_GE(inotify_add_watch(m_events, ToNativePath(path)->c_str(), IN_OPEN | IN_CLOSE), 0);
    }
    ~COpenCount() { close(m_events); }
    COpenCount(const COpenCount&) = delete;
    COpenCount& operator=(const COpenCount&) = delete;

    /// The opens since the last call. An event of a file that is watched itself has no name; the
    /// closes keep two opens from being told as one.
    std::ptrdiff_t Take() const {
        std::array<inotify_event, 64> events{};
        const ssize_t bytes = read(m_events, events.data(), sizeof events);
        const ssize_t count = bytes / static_cast<ssize_t>(sizeof(inotify_event));
        return std::count_if(events.begin(), events.begin() + std::max<ssize_t>(count, 0),
                             [](const inotify_event& event) { return event.mask == IN_OPEN; });
    }

  private:
    int m_events;
};

TYPED_TEST(WordCoefBridge, EachQuestionAndEachLoadOpensTheFileOnce) {
    WriteCounting<TypeParam>(this->m_file, 2, 1);
    CChromaCorrectCoef map;
    map.Resize(2, 1);
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    const COpenCount opens(this->m_file);
    test::ReadFile(this->m_file);
    EXPECT_EQ(ReadWordCoefSize(TypeParam::kKind, this->m_file.c_str(), width, height), S_OK);
    EXPECT_EQ(opens.Take(), 2); // the count counts
    EXPECT_EQ(LoadWordCoefFile(TypeParam::kKind, map, this->m_file.c_str()), S_OK);
    EXPECT_EQ(opens.Take(), 1);
    EXPECT_TRUE(DescribeWordFileLosses(this->m_file.c_str()).empty());
    EXPECT_EQ(opens.Take(), 1);
}
#endif

/// A file of 4 × 3 pixels of a kind, in memory.
test::Bytes SmallWordFile(EWordKind kind) {
    CChromaCorrectCoef map;
    map.Resize(4, 3);
    std::ostringstream written(std::ios::binary);
    EXPECT_EQ(SaveWordCoefFile(kind, map, written), S_OK);
    const std::string text = written.str();
    test::Bytes bytes(text.size());
    std::memcpy(bytes.data(), text.data(), text.size());
    return bytes;
}

// A file is looked at more than once, and each look clears the stream's state.
TEST(BrokenWordFile, IsToldWhereverItBreaks) {
    for (const EWordKind kind :
         {EWordKind::Chroma, EWordKind::Brightness, EWordKind::VirtualGreenBrightness,
          EWordKind::VirtualGreenChroma}) {
        const test::Bytes file = SmallWordFile(kind);
        for (std::size_t readable = 0; readable <= file.size(); ++readable) {
            SCOPED_TRACE(readable);
            CChromaCorrectCoef map;
            map.Resize(4, 3);
            test::CFailingFile stream(file, readable);
            const CTransferReport report;
            const Status status = LoadWordCoefFile(kind, map, stream);
            EXPECT_EQ(report.HasReadFailed(), readable < file.size());
            EXPECT_TRUE(!Failed(status) || readable < file.size());

            test::CFailingFile asked(file, readable);
            const CTransferReport ofSize;
            std::uint32_t width = 0;
            std::uint32_t height = 0;
            EXPECT_EQ(Failed(ReadWordCoefSize(kind, asked, width, height)),
                      readable < kChunkHeaderBytes);
            EXPECT_EQ(ofSize.HasReadFailed(), readable < kChunkHeaderBytes);

            test::CFailingFile described(file, readable);
            const CTransferReport ofLosses;
            EXPECT_TRUE(DescribeWordFileLosses(described).empty());
            EXPECT_EQ(ofLosses.HasReadFailed(), readable < kChunkHeaderBytes);

            test::CFailingFile shrunk(file, readable, true);
            const CTransferReport ofShrunk;
            EXPECT_TRUE(DescribeWordFileLosses(shrunk).empty());
            EXPECT_EQ(ofShrunk.HasReadFailed(), readable < kChunkHeaderBytes);
        }
    }
}

#ifdef __linux__
// The first page of a process is nobody's: its memory opens, and the first read fails.
TEST(BrokenWordFile, TellsWhyAPathCannotBeRead) {
    CChromaCorrectCoef map;
    map.Resize(4, 3);
    const CTransferReport report;
    EXPECT_TRUE(Failed(LoadWordCoefFile(EWordKind::Chroma, map, L"/proc/self/mem")));
    EXPECT_TRUE(report.HasReadFailed());
    EXPECT_EQ(report.SystemError(), EIO);
}
#endif

} // namespace
} // namespace trevolt
