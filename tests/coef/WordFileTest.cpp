// Word files of the four kinds: header by value, round trips, recognition, offsets, bands, and the
// status that each operation gives.
#include <cstring>
#include <filesystem>
#include <sstream>

#include <gtest/gtest.h>

#include "calibuf/ChunkLayout.h"
#include "common/LittleEndian.h"
#include "tests/coef/CoefObjects.h"
#include "tests/coef/VanishingFile.h"
#include "tests/support/BudgetLimit.h"
#include "tests/support/TestFiles.h"
#include "trevolt/TransferReport.h"

namespace trevolt {
namespace {

using test::Bytes;
using test::HeaderOf;
using test::ReadFile;
using test::Sample;
using test::Whole;
using test::WriteFile;

template <class Object>
constexpr bool kIsGreen = kWordKind<test::ElementOf<Object>>.hasFileKind;

template <class Object>
class WordFiles : public ::testing::Test {
  protected:
    using Facts = test::KindOf<Object>;

    WordFiles() { object.SetFileKind(2); }

    Status Size(const std::wstring& file, std::uint32_t& width, std::uint32_t& height) {
        return (object.*Facts::kSize)(file.c_str(), width, height);
    }
    Status Info(const wchar_t* file, std::byte* name, std::uint32_t capacity, std::uint8_t& flag) {
        return (object.*Facts::kInfo)(file, name, capacity, flag);
    }
    /// A second object of the kind with a default store of this size.
    std::unique_ptr<Object> Blank(std::uint16_t width, std::uint16_t height) {
        auto blank = std::make_unique<Object>();
        blank->SetFileKind(2);
        EXPECT_EQ(blank->Create(width, height), S_OK);
        return blank;
    }

    test::CTemporaryFolder folder;
    std::wstring path = folder.File(L"a.coef");
    std::wstring unopenable = folder.File(L"missing") + L"/a.coef";
    Object object;
};
TYPED_TEST_SUITE(WordFiles, test::AllKinds);

TYPED_TEST(WordFiles, HeaderByValue) {
    test::CreateWithPattern(this->object, 300, 200);
    std::array<std::byte, 16> name{};
    for (std::size_t i = 0; i < name.size(); ++i)
        name[i] = static_cast<std::byte>(0xA0 + i);
    const std::uint8_t flag = 0x5C;
    const SPixelRect rect{10, 20, 290, 140};
    ASSERT_EQ(this->object.ExportCoef(this->path.c_str(), rect, name.data(), &flag), S_OK);
    const Bytes file = ReadFile(this->path);
    Bytes expected(168);
    std::memcpy(expected.data(), TestFixture::Facts::kFormat.data(), 16);
    StoreLittle<std::uint32_t>(&expected[16], 1);
    StoreLittle<std::uint32_t>(&expected[20], 10);
    StoreLittle<std::uint32_t>(&expected[24], 20);
    StoreLittle<std::uint32_t>(&expected[28], 280);
    StoreLittle<std::uint32_t>(&expected[32], 120);
    StoreLittle<std::uint32_t>(&expected[36], 4);
    expected[67] = static_cast<std::byte>(kIsGreen<TypeParam> ? 2 : 0);
    std::memcpy(&expected[69], name.data(), 16);
    expected[85] = std::byte{0x5C};
    ASSERT_GE(file.size(), expected.size());
    EXPECT_EQ(Bytes(file.begin(), file.begin() + 168), expected);
    // The first record: block 0, cut to the rectangle.
    EXPECT_EQ(LoadLittle<std::uint32_t>(&file[168]), 0U);
    EXPECT_EQ(LoadLittle<std::uint32_t>(&file[172]), 10U);
    EXPECT_EQ(LoadLittle<std::uint32_t>(&file[176]), 20U);
    EXPECT_EQ(LoadLittle<std::uint16_t>(&file[180]), 246U);
    EXPECT_EQ(LoadLittle<std::uint16_t>(&file[182]), 108U);
    // The second: the block below, as blocks are listed by columns.
    EXPECT_EQ(LoadLittle<std::uint32_t>(&file[168 + TestFixture::Facts::kRecordBytes]), 512U);

    std::array<std::byte, 16> gotName{};
    std::uint8_t gotFlag = 0;
    EXPECT_EQ(this->Info(this->path.c_str(), gotName.data(), 16, gotFlag), S_OK);
    EXPECT_EQ(gotName, name);
    EXPECT_EQ(gotFlag, 0x5C);
    gotName = {};
    EXPECT_EQ(this->Info(this->path.c_str(), gotName.data(), 4, gotFlag), S_OK);
    EXPECT_EQ(gotName[3], name[3]);
    EXPECT_EQ(gotName[4], std::byte{0});
    EXPECT_EQ(this->Info(this->path.c_str(), gotName.data(), 400, gotFlag), S_OK);
    EXPECT_EQ(this->Info(nullptr, gotName.data(), 16, gotFlag), E_COEF_INVALIDARG);
    EXPECT_EQ(this->Info(this->unopenable.c_str(), gotName.data(), 16, gotFlag), E_COEF_OPENFAILED);
    EXPECT_EQ(this->Info(Sample(L"cabinet/Cab_01.9fcoef").c_str(), gotName.data(), 16, gotFlag),
              E_COEF_BADFORMAT);
}

TYPED_TEST(WordFiles, WithoutANameTheOwnerFieldsAreZero) {
    test::CreateWithPattern(this->object, 4, 4);
    const std::uint8_t flag = 9;
    ASSERT_EQ(this->object.ExportCoef(this->path.c_str(), {0, 0, 4, 4}, nullptr, &flag), S_OK);
    const Bytes file = ReadFile(this->path);
    for (std::size_t i = 68; i < 168; ++i)
        EXPECT_EQ(file[i], std::byte{0}) << i;
    const std::array<std::byte, 16> name{std::byte{1}};
    ASSERT_EQ(this->object.ExportCoef(this->path.c_str(), {0, 0, 4, 4}, name.data(), nullptr),
              S_OK);
    EXPECT_EQ(ReadFile(this->path)[85], std::byte{0});
}

TYPED_TEST(WordFiles, RoundTrip) {
    test::CreateWithPattern(this->object, 300, 140);
    ASSERT_EQ(this->object.ExportCoef(this->path.c_str(), Whole(this->object), nullptr, nullptr),
              S_OK);
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    EXPECT_EQ(this->Size(this->path, width, height), S_OK);
    EXPECT_EQ(width, 300U);
    EXPECT_EQ(height, 140U);
    auto loaded = this->Blank(300, 140);
    EXPECT_EQ(loaded->LoadCoef(this->path.c_str()), S_OK);
    EXPECT_TRUE(test::SamePixels(*loaded, this->object));
    // Written again: the same bytes.
    const Bytes first = ReadFile(this->path);
    EXPECT_EQ(loaded->ExportCoef(this->path.c_str(), Whole(*loaded), nullptr, nullptr), S_OK);
    EXPECT_EQ(ReadFile(this->path), first);
}

TYPED_TEST(WordFiles, WholeStoreRoundTrip) {
    test::CreateWithPattern(this->object, 300, 140);
    ASSERT_EQ(this->object.ExportCoefDefault(this->path.c_str()), S_OK);
    const SChunkHeader header = HeaderOf(ReadFile(this->path));
    EXPECT_EQ(header.formatId, TestFixture::Facts::kFormat);
    EXPECT_EQ(header.originX, 0U);
    EXPECT_EQ(header.width, 300U);
    EXPECT_EQ(header.height, 140U);
    EXPECT_EQ(header.recordCount, 4U);
    auto loaded = this->Blank(300, 140);
    EXPECT_EQ(loaded->LoadCoef(this->path.c_str()), S_OK);
    EXPECT_EQ(test::DigestOf(*loaded), test::DigestOf(this->object));
}

TYPED_TEST(WordFiles, LoadsIntoALargerAndASmallerStore) {
    test::CreateWithPattern(this->object, 300, 140);
    ASSERT_EQ(this->object.ExportCoef(this->path.c_str(), Whole(this->object), nullptr, nullptr),
              S_OK);
    auto smaller = this->Blank(40, 24);
    EXPECT_EQ(smaller->LoadCoef(this->path.c_str()), S_OK);
    EXPECT_EQ(smaller->GetBlockListSize(), 1U);
    EXPECT_EQ(test::WordsAt(*smaller, 39, 23), test::WordsAt(this->object, 39, 23));
    auto larger = this->Blank(400, 300);
    EXPECT_EQ(larger->LoadCoef(this->path.c_str()), S_OK);
    EXPECT_EQ(test::WordsAt(*larger, 299, 139), test::WordsAt(this->object, 299, 139));
    EXPECT_EQ(test::WordsAt(*larger, 300, 139), test::ElementOf<TypeParam>{}.w);
    EXPECT_EQ(test::WordsAt(*larger, 299, 140), test::ElementOf<TypeParam>{}.w);
    // Into no store at all: every chunk is skipped.
    TypeParam empty;
    empty.SetFileKind(2);
    EXPECT_EQ(empty.LoadCoef(this->path.c_str()), S_OK);
    EXPECT_EQ(empty.GetBlockListSize(), 0U);
}

TYPED_TEST(WordFiles, LoadsAtAPlace) {
    test::CreateWithPattern(this->object, 300, 140);
    // The file's origin is (10, 20): loading moves it to where the caller says.
    ASSERT_EQ(this->object.ExportCoef(this->path.c_str(), {10, 20, 110, 70}, nullptr, nullptr),
              S_OK);
    auto target = this->Blank(400, 300);
    EXPECT_EQ(target->LoadCoefRect(this->path.c_str(), 200, 100), S_OK);
    EXPECT_EQ(test::WordsAt(*target, 200, 100), test::WordsAt(this->object, 10, 20));
    EXPECT_EQ(test::WordsAt(*target, 299, 149), test::WordsAt(this->object, 109, 69));
    EXPECT_EQ(test::WordsAt(*target, 199, 100), test::ElementOf<TypeParam>{}.w);
    EXPECT_EQ(test::WordsAt(*target, 300, 149), test::ElementOf<TypeParam>{}.w);

    auto edged = this->Blank(400, 300);
    SPixelRect rect{350, 100, 0, 0};
    EXPECT_EQ(edged->LoadCoefEx(this->path.c_str(), rect), S_OK);
    EXPECT_EQ(rect, (SPixelRect{350, 100, 400, 150}));
    EXPECT_EQ(test::WordsAt(*edged, 399, 149), test::WordsAt(this->object, 59, 69));
    rect = {-1, 0, 7, 7};
    EXPECT_EQ(edged->LoadCoefEx(this->path.c_str(), rect), E_COEF_INVALIDARG);
    EXPECT_EQ(rect, (SPixelRect{-1, 0, 7, 7}));
    rect = {0, -1, 7, 7};
    EXPECT_EQ(edged->LoadCoefEx(this->path.c_str(), rect), E_COEF_INVALIDARG);
    EXPECT_EQ(rect, (SPixelRect{0, -1, 7, 7}));
    // A file that is refused leaves the rectangle; where only its reading fails, the rectangle has
    // been set.
    rect = {1, 2, 3, 4};
    EXPECT_EQ(edged->LoadCoefEx(nullptr, rect), E_COEF_INVALIDARG);
    EXPECT_EQ(edged->LoadCoefEx(this->unopenable.c_str(), rect), E_COEF_OPENFAILED);
    EXPECT_EQ(edged->LoadCoefEx(Sample(L"cabinet/Cab_05.cccoef").c_str(), rect), E_COEF_BADFORMAT);
    EXPECT_EQ(rect, (SPixelRect{1, 2, 3, 4}));
    TypeParam storeless;
    storeless.SetFileKind(2);
    storeless.SetStoreOwner(nullptr);
    EXPECT_EQ(storeless.LoadCoefEx(this->path.c_str(), rect), E_POINTER);
    EXPECT_EQ(rect, (SPixelRect{1, 2, 0, 0}));
    const Bytes file = ReadFile(this->path);
    WriteFile(this->path, Bytes(file.begin(), file.begin() + 200));
    EXPECT_EQ(edged->LoadCoefEx(this->path.c_str(), rect), E_FAIL);
    EXPECT_EQ(rect, (SPixelRect{1, 2, 101, 52}));
}

TYPED_TEST(WordFiles, Statuses) {
    ASSERT_EQ(this->object.Create(40, 24), S_OK);
    std::uint32_t width = 7;
    std::uint32_t height = 7;
    std::uint64_t directory = 0;
    std::uint64_t data = 0;
    SPixelRect rect{0, 0, 40, 24};
    auto& tested = this->object;
    const wchar_t* const closed = this->unopenable.c_str();
    EXPECT_EQ(tested.LoadCoef(nullptr), E_COEF_INVALIDARG);
    EXPECT_EQ(tested.LoadCoef(closed), E_COEF_OPENFAILED);
    EXPECT_EQ(tested.LoadCoef(this->folder.Path().c_str()), E_COEF_OPENFAILED);
    EXPECT_EQ(tested.LoadCoefRect(nullptr, 0, 0), E_COEF_INVALIDARG);
    EXPECT_EQ(tested.LoadCoefRect(closed, 0, 0), E_COEF_OPENFAILED);
    EXPECT_EQ(tested.LoadCoefEx(nullptr, rect), E_COEF_INVALIDARG);
    EXPECT_EQ(tested.LoadCoefEx(closed, rect), E_COEF_OPENFAILED);
    EXPECT_EQ((tested.*TestFixture::Facts::kSize)(nullptr, width, height), E_COEF_INVALIDARG);
    EXPECT_EQ(this->Size(this->unopenable, width, height), E_COEF_OPENFAILED);
    EXPECT_EQ(this->Size(Sample(L"cabinet/Cab_05.cccoef"), width, height), E_COEF_BADFORMAT);
    EXPECT_EQ(tested.LoadCoef(Sample(L"cabinet/Cab_05.cccoef").c_str()), E_COEF_BADFORMAT);
    EXPECT_EQ(width, 7U);
    EXPECT_EQ(tested.ExportCoef(nullptr, rect, nullptr, nullptr), E_POINTER);
    EXPECT_EQ(tested.ExportCoef(closed, rect, nullptr, nullptr),
              TestFixture::Facts::kOutputOpenFailed);
    EXPECT_EQ(tested.ExportCoefDefault(nullptr), E_POINTER);
    EXPECT_EQ(tested.ExportCoefDefault(closed), E_COEF_OPENFAILED);
    EXPECT_EQ(tested.ExportCoefEx(nullptr, rect, rect, directory, data, 0, nullptr, nullptr),
              E_POINTER);
    EXPECT_EQ(tested.ExportCoefEx(closed, rect, rect, directory, data, 0, nullptr, nullptr),
              TestFixture::Facts::kOutputOpenFailed);
    // A later band opens what an earlier one has made.
    EXPECT_EQ(
        tested.ExportCoefEx(this->path.c_str(), rect, rect, directory, data, 128, nullptr, nullptr),
        TestFixture::Facts::kOutputOpenFailed);
    EXPECT_EQ(tested.ExportCoefEx(this->path.c_str(), rect, rect, directory, data, 0x7FFFFFFFU,
                                  nullptr, nullptr),
              TestFixture::Facts::kOutputOpenFailed);
    EXPECT_EQ(tested.ExportCoefEx(this->path.c_str(), rect, rect, directory, data, 0x80000000U,
                                  nullptr, nullptr),
              E_COEF_INVALIDARG);
    EXPECT_FALSE(test::FileExists(this->path));
}

TYPED_TEST(WordFiles, ShortHeaders) {
    ASSERT_EQ(this->object.Create(40, 24), S_OK);
    test::CreateWithPattern(this->object, 40, 24);
    ASSERT_EQ(this->object.ExportCoef(this->path.c_str(), Whole(this->object), nullptr, nullptr),
              S_OK);
    const Bytes file = ReadFile(this->path);
    const std::wstring before = test::DigestOf(this->object);
    for (const std::size_t length : {0U, 15U, 16U, 40U, 167U}) {
        WriteFile(this->path, Bytes(file.begin(), file.begin() + static_cast<long>(length)));
        std::uint32_t width = 7;
        std::uint32_t height = 7;
        std::uint8_t flag = 7;
        EXPECT_EQ(this->Size(this->path, width, height), E_COEF_BADFORMAT) << length;
        EXPECT_EQ(this->Info(this->path.c_str(), nullptr, 0, flag), E_COEF_BADFORMAT) << length;
        // The virtual-green kinds look at the header first, the others hand over to the reader.
        const bool isRecognised = !kIsGreen<TypeParam> && length >= 16;
        EXPECT_EQ(this->object.LoadCoef(this->path.c_str()),
                  isRecognised ? E_FAIL : E_COEF_BADFORMAT)
            << length;
        EXPECT_EQ(width, 7U);
        EXPECT_EQ(flag, 7);
    }
    EXPECT_EQ(test::DigestOf(this->object), before);
}

// Every truncation and every damaged byte ends in a status; none reaches past anything.
TYPED_TEST(WordFiles, DamageIsSurvived) {
    test::CreateWithPattern(this->object, 30, 10);
    ASSERT_EQ(this->object.ExportCoef(this->path.c_str(), Whole(this->object), nullptr, nullptr),
              S_OK);
    const Bytes file = ReadFile(this->path);
    const std::size_t step = 1 + file.size() / 150;
    for (std::size_t length = 168; length < file.size(); length += step) {
        WriteFile(this->path, Bytes(file.begin(), file.begin() + static_cast<long>(length)));
        auto target = this->Blank(30, 10);
        CTransferReport report;
        EXPECT_EQ(target->LoadCoef(this->path.c_str()), E_FAIL) << length;
    }
    for (std::size_t at = 16; at < std::min<std::size_t>(file.size(), 260); ++at) {
        Bytes damaged = file;
        damaged[at] ^= std::byte{0xFF};
        WriteFile(this->path, damaged);
        auto target = this->Blank(30, 10);
        DropStatus(target->LoadCoef(this->path.c_str())); // any will do: the sanitizers look on
        EXPECT_EQ(target->GetWidth(), 30U);
    }
}

TYPED_TEST(WordFiles, BandsMakeTheSamePixelsAsOneFile) {
    test::CreateWithPattern(this->object, 300, 400);
    // Each band comes from a store of its own height, moved down to its place.
    const SPixelRect whole{0, 0, 300, 400};
    std::uint64_t directory = 0;
    std::uint64_t data = 0;
    std::array<std::byte, 16> name{std::byte{'n'}};
    const std::uint8_t flag = 3;
    for (std::uint32_t offset = 0; offset < 400; offset += 128) {
        const std::uint32_t rows = std::min(128U, 400 - offset);
        auto band = this->Blank(300, static_cast<std::uint16_t>(rows));
        for (std::uint32_t y = 0; y < rows; ++y)
            for (std::uint32_t x = 0; x < 300; ++x)
                *band->FindPixel(x, y) = *this->object.FindPixel(x, y + offset);
        ASSERT_EQ(band->ExportCoefEx(this->path.c_str(), Whole(*band), whole, directory, data,
                                     offset, name.data(), &flag),
                  S_OK);
    }
    const SChunkHeader header = HeaderOf(ReadFile(this->path));
    EXPECT_EQ(header.recordCount, 8U);
    EXPECT_EQ(header.height, 400U);
    EXPECT_EQ(header.ownerData[0], 'n');
    EXPECT_EQ(header.ownerFlag, 3);
    auto loaded = this->Blank(300, 400);
    EXPECT_EQ(loaded->LoadCoef(this->path.c_str()), S_OK);
    EXPECT_TRUE(test::SamePixels(*loaded, this->object));
    // A band without rows writes nothing and succeeds; one that does not fit is refused.
    const Bytes before = ReadFile(this->path);
    EXPECT_EQ(this->object.ExportCoefEx(this->path.c_str(), {0, 5, 300, 5}, whole, directory, data,
                                        128, nullptr, nullptr),
              S_OK);
    EXPECT_EQ(this->object.ExportCoefEx(this->path.c_str(), whole, whole, directory, data, 128,
                                        nullptr, nullptr),
              E_COEF_INVALIDARG);
    EXPECT_EQ(ReadFile(this->path), before);
    // Only the rows decide: a band without columns has a record of its block, and no data.
    std::uint64_t narrowDirectory = 0;
    std::uint64_t narrowData = 0;
    EXPECT_EQ(this->object.ExportCoefEx(this->path.c_str(), {10, 0, 10, 128}, whole,
                                        narrowDirectory, narrowData, 0, nullptr, nullptr),
              S_OK);
    EXPECT_EQ(narrowDirectory, 168 + TestFixture::Facts::kRecordBytes);
    EXPECT_EQ(narrowData, 168 + 8 * TestFixture::Facts::kRecordBytes);
    // A first band that is refused has made the file anew, with its header.
    std::uint64_t refused = 0;
    EXPECT_EQ(this->object.ExportCoefEx(this->path.c_str(), whole, {0, 0, 300, 128}, refused,
                                        refused, 0, nullptr, nullptr),
              E_COEF_INVALIDARG);
    EXPECT_EQ(ReadFile(this->path).size(), 168U);
}

TYPED_TEST(WordFiles, EmptyRectangles) {
    test::CreateWithPattern(this->object, 40, 24);
    ASSERT_EQ(this->object.ExportCoef(this->path.c_str(), {0, 0, 0, 24}, nullptr, nullptr), S_OK);
    Bytes file = ReadFile(this->path);
    EXPECT_EQ(file.size(), 168U);
    EXPECT_EQ(HeaderOf(file).width, 0U);
    EXPECT_EQ(HeaderOf(file).recordCount, 0U);
    ASSERT_EQ(this->object.ExportCoef(this->path.c_str(), {0, 24, 40, 24}, nullptr, nullptr), S_OK);
    file = ReadFile(this->path);
    EXPECT_EQ(file.size(), 168U);
    EXPECT_EQ(HeaderOf(file).height, 0U);
    // Without columns inside a block the formula counts that block. The virtual-green kinds look at
    // the rows only and reserve its record; the others write no directory.
    ASSERT_EQ(this->object.ExportCoef(this->path.c_str(), {10, 0, 10, 24}, nullptr, nullptr), S_OK);
    file = ReadFile(this->path);
    EXPECT_EQ(HeaderOf(file).recordCount, 1U);
    EXPECT_EQ(file.size(), kIsGreen<TypeParam> ? 168U + TestFixture::Facts::kRecordBytes : 168U);
}

TYPED_TEST(WordFiles, MemoryImages) {
    test::CreateWithPattern(this->object, 300, 140);
    ASSERT_EQ(this->object.MaxStoreImageBytes(),
              168 + 4 * (TestFixture::Facts::kRecordBytes +
                         std::uint64_t{sizeof(test::ElementOf<TypeParam>)} * 65536));
    std::vector<std::byte> image(this->object.MaxStoreImageBytes());
    EXPECT_EQ(this->object.SaveStoreImage(nullptr, 0, 0), E_FAIL);
    ASSERT_EQ(this->object.SaveStoreImage(image.data(), 10, 20), S_OK);
    EXPECT_EQ(LoadLittle<std::uint32_t>(&image[20]), 10U);
    EXPECT_EQ(LoadLittle<std::uint32_t>(&image[24]), 20U);
    ASSERT_EQ(this->object.SaveStoreImage(image.data(), 0, 0), S_OK);
    auto loaded = this->Blank(300, 140);
    EXPECT_EQ(loaded->LoadStoreImage(nullptr), E_FAIL);
    EXPECT_EQ(loaded->LoadStoreImage(image.data()), S_OK);
    EXPECT_EQ(test::DigestOf(*loaded), test::DigestOf(this->object));

    // With a length nothing past it is read.
    auto bounded = this->Blank(300, 140);
    EXPECT_EQ(bounded->LoadBoundedStoreImage(image.data(), image.size()), S_OK);
    EXPECT_EQ(test::DigestOf(*bounded), test::DigestOf(this->object));
    auto cut = this->Blank(300, 140);
    const std::wstring blank = test::DigestOf(*cut);
    EXPECT_EQ(cut->LoadBoundedStoreImage(nullptr, 0), E_FAIL);
    const Bytes header(image.begin(), image.begin() + 168);
    EXPECT_EQ(cut->LoadBoundedStoreImage(header.data(), header.size()), E_FAIL);
    EXPECT_EQ(test::DigestOf(*cut), blank);
}

TYPED_TEST(WordFiles, DigestIsThirtyTwoCharacters) {
    EXPECT_EQ(test::DigestOf(this->object), L"D41D8CD98F00B204E9800998ECF8427E"); // of nothing
    test::CreateWithPattern(this->object, 3, 3);
    const std::wstring digest = test::DigestOf(this->object);
    EXPECT_EQ(digest.size(), 32U);
    EXPECT_EQ(digest.find_first_not_of(L"0123456789ABCDEF"), std::wstring::npos);
}

// The status is fine whatever became of the chunks: the thread's report tells of lost ones.
TYPED_TEST(WordFiles, LostChunksAreNotedWhereTheStatusIsFine) {
    test::CreateWithPattern(this->object, 300, 140);
    for (const SPixelRect& bad : {SPixelRect{40, 0, 0, 24}, SPixelRect{0, 24, 40, 0},
                                  SPixelRect{0, 0, 200000, 24}, SPixelRect{0, 0, 40, 70000}}) {
        const CTransferReport report;
        EXPECT_EQ(this->object.ExportCoef(this->path.c_str(), bad, nullptr, nullptr), S_OK);
        EXPECT_TRUE(report.HasWriteFailed());
        EXPECT_EQ(ReadFile(this->path).size(), 168U);
    }
    {
        const test::CBudgetLimit limit(CMemoryBudget::Process().Outstanding());
        const CTransferReport report;
        EXPECT_EQ(
            this->object.ExportCoef(this->path.c_str(), Whole(this->object), nullptr, nullptr),
            S_OK);
        EXPECT_TRUE(report.HasWriteFailed());
        const CTransferReport second;
        EXPECT_EQ(this->object.ExportCoefDefault(this->path.c_str()), S_OK);
        EXPECT_TRUE(second.HasWriteFailed());
    }
    const CTransferReport report;
    EXPECT_EQ(this->object.ExportCoef(this->path.c_str(), Whole(this->object), nullptr, nullptr),
              S_OK);
    EXPECT_EQ(this->object.ExportCoefDefault(this->path.c_str()), S_OK);
    EXPECT_FALSE(report.HasWriteFailed());
}

#ifndef _WIN32
TYPED_TEST(WordFiles, AFullDiskIsNotedWhereTheStatusIsFine) {
    test::CreateWithPattern(this->object, 300, 140);
    CTransferReport report;
    EXPECT_EQ(this->object.ExportCoef(L"/dev/full", Whole(this->object), nullptr, nullptr), S_OK);
    EXPECT_TRUE(report.HasWriteFailed());
    CTransferReport second;
    EXPECT_EQ(this->object.ExportCoefDefault(L"/dev/full"), S_OK);
    EXPECT_TRUE(second.HasWriteFailed());
}

TYPED_TEST(WordFiles, AFileThatIsGoneWhenItIsOpenedAgain) {
    test::CreateWithPattern(this->object, 40, 24);
    const std::wstring before = test::DigestOf(this->object);
    const Bytes sample = ReadFile(test::CabinetSample<TypeParam>());
    {
        const test::CVanishingFile file(this->path, Bytes(sample.begin(), sample.begin() + 168));
        EXPECT_EQ(this->object.LoadCoef(this->path.c_str()), E_HANDLE);
    }
    EXPECT_FALSE(test::FileExists(this->path));
    // Gone after its size was asked: the rectangle has been set.
    {
        const test::CVanishingFile file(this->path, Bytes(sample.begin(), sample.begin() + 168));
        SPixelRect rect{1, 2, 3, 4};
        EXPECT_EQ(this->object.LoadCoefEx(this->path.c_str(), rect), E_COEF_OPENFAILED);
        // The kinds with several formats look at the first bytes before they read the size.
        EXPECT_EQ(rect,
                  kIsGreen<TypeParam> ? (SPixelRect{1, 2, 40, 24}) : (SPixelRect{1, 2, 3, 4}));
    }
    EXPECT_EQ(test::DigestOf(this->object), before);
}
#endif

// ---- the virtual-green kinds' file-kind value ----

template <class Object>
class GreenFiles : public WordFiles<Object> {};
TYPED_TEST_SUITE(GreenFiles, test::GreenKinds);

TYPED_TEST(GreenFiles, OnlyFilesOfTheSameFileKindAreTaken) {
    test::CreateWithPattern(this->object, 40, 24);
    ASSERT_EQ(this->object.ExportCoef(this->path.c_str(), Whole(this->object), nullptr, nullptr),
              S_OK);
    EXPECT_EQ(ReadFile(this->path)[67], std::byte{2});
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint8_t flag = 7;
    SPixelRect rect;
    const std::wstring before = test::DigestOf(this->object);
    for (const std::uint32_t other : {0U, 1U, 3U, 258U}) { // 258 has the same low byte
        this->object.SetFileKind(other);
        EXPECT_EQ(this->Size(this->path, width, height), E_COEF_BADFORMAT);
        EXPECT_EQ(this->object.LoadCoef(this->path.c_str()), E_COEF_BADFORMAT);
        EXPECT_EQ(this->object.LoadCoefEx(this->path.c_str(), rect), E_COEF_BADFORMAT);
        EXPECT_EQ(this->Info(this->path.c_str(), nullptr, 0, flag), S_OK);
        EXPECT_EQ(test::DigestOf(this->object), before);
    }
    this->object.SetFileKind(2);
    EXPECT_EQ(this->object.LoadCoef(this->path.c_str()), S_OK);
}

TYPED_TEST(GreenFiles, WithoutAStore) {
    test::CreateWithPattern(this->object, 40, 24);
    ASSERT_EQ(this->object.ExportCoef(this->path.c_str(), Whole(this->object), nullptr, nullptr),
              S_OK);
    this->object.SetStoreOwner(nullptr);
    EXPECT_EQ(this->object.LoadCoef(this->path.c_str()), E_POINTER);
    EXPECT_EQ(this->object.LoadCoefRect(this->path.c_str(), 0, 0), E_POINTER);
    // A path that is none is met first by loads and turned copies, and gives the same in writers.
    std::uint64_t position = 0;
    std::uint32_t width = 7;
    std::uint32_t height = 7;
    std::uint8_t flag = 7;
    SPixelRect rect{1, 2, 3, 4};
    EXPECT_EQ(this->object.LoadCoef(nullptr), E_COEF_INVALIDARG);
    EXPECT_EQ(this->object.LoadCoefRect(nullptr, 0, 0), E_COEF_INVALIDARG);
    EXPECT_EQ(this->object.LoadCoefEx(nullptr, rect), E_COEF_INVALIDARG);
    EXPECT_EQ(rect, (SPixelRect{1, 2, 3, 4}));
    EXPECT_EQ((this->object.*TestFixture::Facts::kSize)(nullptr, width, height), E_COEF_INVALIDARG);
    EXPECT_EQ(width, 7U);
    EXPECT_EQ(this->Info(nullptr, nullptr, 0, flag), E_COEF_INVALIDARG);
    EXPECT_EQ(flag, 7);
    EXPECT_EQ(this->object.ExportCoef(nullptr, rect, nullptr, nullptr), E_POINTER);
    EXPECT_EQ(this->object.ExportCoefDefault(nullptr), E_POINTER);
    EXPECT_EQ(
        this->object.ExportCoefEx(nullptr, rect, rect, position, position, 0, nullptr, nullptr),
        E_POINTER);
    EXPECT_EQ((this->object.*TestFixture::Facts::kTurnedFile)(nullptr, rect, 1, nullptr, nullptr),
              E_COEF_INVALIDARG);
    EXPECT_EQ((this->object.*TestFixture::Facts::kTurnedBand)(nullptr, rect, 1, rect, position,
                                                              position, 0, nullptr, nullptr),
              E_COEF_INVALIDARG);
    // Without a path, with a store.
    auto whole = this->Blank(4, 4);
    EXPECT_EQ(((*whole).*TestFixture::Facts::kTurnedFile)(nullptr, rect, 1, nullptr, nullptr),
              E_COEF_INVALIDARG);
}

TYPED_TEST(WordFiles, TheirFormatTellsTheirElement) {
    constexpr ChunkFormatId kFormat = TestFixture::Facts::kFormat;
    EXPECT_EQ(test::HeaderOf(ReadFile(test::CabinetSample<TypeParam>())).formatId, kFormat);
    const WordElementKind* const element = FindElementOfFormat(kFormat);
    ASSERT_NE(element, nullptr);
    EXPECT_EQ(element->elemSize, 2 * test::kWordsOf<TypeParam>);
}

TEST(WordFormats, OfNoKindOrOfTwoStoresTellNoElement) {
    EXPECT_EQ(FindElementOfFormat(kChromaChunkFormat2), nullptr);
    EXPECT_EQ(FindElementOfFormat(kBrightChunkFormat2), nullptr);
    EXPECT_EQ(FindElementOfFormat(ChunkFormatId{}), nullptr);
}

TEST(GreenFilesOfTheOtherKind, AreRefused) {
    CVirtualGreenChromaCorrectCoef object;
    object.SetFileKind(2);
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    EXPECT_EQ(object.GetVCCoefSize(Sample(L"cabinet/Cab_08.4wcoef").c_str(), width, height),
              E_COEF_BADFORMAT);
    EXPECT_EQ(object.GetVCCoefSize(Sample(L"cabinet/Cab_09.12wcoef").c_str(), width, height), S_OK);
    EXPECT_EQ(width, 40U);
    EXPECT_EQ(height, 24U);
}

// ---- bare chunk streams ----

template <class Object>
class ChunkStreams : public WordFiles<Object> {};
TYPED_TEST_SUITE(ChunkStreams, test::MapKinds);

TYPED_TEST(ChunkStreams, HoldWhatAFileHolds) {
    test::CreateWithPattern(this->object, 300, 140);
    std::stringstream whole;
    ASSERT_EQ(this->object.SaveBlocks105(whole), S_OK);
    ASSERT_EQ(this->object.ExportCoefDefault(this->path.c_str()), S_OK);
    EXPECT_EQ(whole.str(), test::ReadText(this->path));
    std::stringstream part;
    ASSERT_EQ(this->object.SaveBlocks106(part, {10, 20, 110, 70}), S_OK);
    ASSERT_EQ(this->object.ExportCoef(this->path.c_str(), {10, 20, 110, 70}, nullptr, nullptr),
              S_OK);
    EXPECT_EQ(part.str(), test::ReadText(this->path));
    std::stringstream bad;
    EXPECT_EQ(this->object.SaveBlocks106(bad, {10, 20, 110, 20}), E_FAIL);
    EXPECT_EQ(this->object.SaveBlocks106(bad, {110, 20, 10, 70}), E_COEF_INVALIDARG);
    EXPECT_EQ(bad.str(), "");
    bad.setstate(std::ios::failbit);
    EXPECT_EQ(this->object.SaveBlocks105(bad), E_FAIL);
    EXPECT_EQ(this->object.SaveBlocks106(bad, {10, 20, 110, 70}), E_FAIL);
}

TYPED_TEST(ChunkStreams, AreReadAtAPlaceClippedAndInBands) {
    test::CreateWithPattern(this->object, 300, 300);
    std::stringstream stream;
    ASSERT_EQ(this->object.SaveBlocks106(stream, {0, 0, 100, 50}), S_OK);
    const auto rewind = [&] {
        stream.clear();
        stream.seekg(0);
    };
    rewind();
    auto moved = this->Blank(300, 300);
    EXPECT_EQ(moved->LoadBlocks107(stream, 200, 250), S_OK);
    EXPECT_EQ(test::WordsAt(*moved, 299, 299), test::WordsAt(this->object, 99, 49));
    rewind();
    auto clipped = this->Blank(300, 300);
    EXPECT_EQ(clipped->LoadBlocks108(stream, 0, 0, 10, 5), S_OK);
    EXPECT_EQ(test::WordsAt(*clipped, 9, 4), test::WordsAt(this->object, 9, 4));
    EXPECT_EQ(test::WordsAt(*clipped, 10, 4), test::ElementOf<TypeParam>{}.w);
    EXPECT_EQ(test::WordsAt(*clipped, 9, 5), test::ElementOf<TypeParam>{}.w);

    std::stringstream whole;
    ASSERT_EQ(this->object.SaveBlocks105(whole), S_OK);
    auto band = this->Blank(300, 300);
    EXPECT_EQ(band->LoadBlocks109(whole, 0, 128, 512, 1024), S_OK); // the second row of blocks
    EXPECT_EQ(test::WordsAt(*band, 299, 128), test::WordsAt(this->object, 299, 128));
    EXPECT_EQ(test::WordsAt(*band, 299, 127), test::ElementOf<TypeParam>{}.w);
    EXPECT_EQ(test::WordsAt(*band, 299, 256), test::ElementOf<TypeParam>{}.w);
    whole.clear();
    whole.seekg(0);
    auto right = this->Blank(400, 300);
    EXPECT_EQ(right->LoadBlocks109(whole, 90, 128, 512, 1024), S_OK);
    EXPECT_EQ(test::WordsAt(*right, 389, 128), test::WordsAt(this->object, 299, 128));
    EXPECT_EQ(test::WordsAt(*right, 90, 255), test::WordsAt(this->object, 0, 255));
    EXPECT_EQ(test::WordsAt(*right, 89, 128), test::ElementOf<TypeParam>{}.w);
}

TYPED_TEST(ChunkStreams, StoreInfo) {
    test::CreateWithPattern(this->object, 300, 140);
    SStoreInfo info;
    ASSERT_EQ(this->object.GetStoreInfo(info), S_OK);
    const std::uint32_t elementBytes = test::kWordsOf<TypeParam> * 2;
    const SStoreInfo expected{.width = 300,
                              .height = 140,
                              .elementBytes = elementBytes,
                              .planeCount = 9,
                              .blockCount = 4,
                              .bytesInUse = 4 * (24 + elementBytes * 32768),
                              .sizeLimit = 0x7FFFFFFFFFFFFFFF,
                              .maxImageBytes = 168 + 4 * 56 + 4ULL * elementBytes * 65536};
    EXPECT_EQ(info, expected);
}

} // namespace
} // namespace trevolt
