#include "trevolt/WordCoefFile.h"

#include <cstring>

#include <gtest/gtest.h>

#include "coef/CNewBrightCorrectCoef.h"
#include "coef/CNewChromaCorrectCoef.h"
#include "coef/VirtualGreenBrightCorrectCoef.h"
#include "coef/VirtualGreenChromaCorrectCoef.h"
#include "common/LittleEndian.h"
#include "tests/support/BudgetLimit.h"
#include "tests/support/TestFiles.h"
#include "trevolt/MemoryBudget.h"
#include "trevolt/TransferReport.h"

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

} // namespace
} // namespace trevolt
