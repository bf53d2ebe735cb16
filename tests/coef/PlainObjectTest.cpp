// The objects by kind, and the plain one that a kind without a class of its own has.
#include <sstream>
#include <type_traits>

#include <gtest/gtest.h>

#include "coef/FileSize.h"
#include "coef/WordObjects.h"
#include "tests/coef/CoefObjects.h"
#include "trevolt/CoefObjects.h"

namespace trevolt {
namespace {

using test::CTemporaryFolder;

template <class Object>
bool Makes(EWordKind kind) {
    const std::unique_ptr<CColorCorrectCoef> object = CreateCoefObject(kind);
    return dynamic_cast<const Object*>(object.get()) != nullptr;
}

TEST(CoefObjects, AreMadeByKind) {
    EXPECT_TRUE(Makes<CCNewBrightCorrectCoef>(EWordKind::Brightness));
    EXPECT_TRUE(Makes<CCNewChromaCorrectCoef>(EWordKind::Chroma));
    EXPECT_TRUE(Makes<CVirtualGreenBrightCorrectCoef>(EWordKind::VirtualGreenBrightness));
    EXPECT_TRUE(Makes<CVirtualGreenChromaCorrectCoef>(EWordKind::VirtualGreenChroma));
    EXPECT_EQ(CreateCoefObject(static_cast<EWordKind>(99)), nullptr);
}

// Row 31 of a table adds 1.
TEST(CoefObjects, OfVirtualGreenTakeACallersTable) {
    CCaliOperationData table;
    const auto four = CreateCoefObject(EWordKind::VirtualGreenBrightness);
    ASSERT_EQ(four->Create(1, 1), S_OK);
    ASSERT_EQ(four->SetPixel4Word(0, 0, {{10, 20, 30, 40}}), S_OK);
    EXPECT_TRUE(SetTransferTable(*four, &table));
    EXPECT_FALSE(four->SetPixelChannel(1, 0, 0, 0.0F, 31));
    EXPECT_TRUE(SetTransferTable(*four, nullptr));
    EXPECT_FALSE(four->SetPixelChannel(1, 0, 0, 0.0F, 31));
    EXPECT_EQ(four->GetPixel4Word(0, 0).w, (std::array<std::uint16_t, 4>{10, 21, 30, 40}));

    const auto twelve = CreateCoefObject(EWordKind::VirtualGreenChroma);
    ASSERT_EQ(twelve->Create(1, 1), S_OK);
    ASSERT_EQ(twelve->SetPixel12Word(0, 0, {{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}}), S_OK);
    EXPECT_TRUE(SetTransferTable(*twelve, &table));
    EXPECT_FALSE(twelve->SetPixelChannel(11, 0, 0, 0.0F, 31));
    EXPECT_EQ(twelve->GetPixel12Word(0, 0).w,
              (std::array<std::uint16_t, 12>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 13}));

    for (const EWordKind other : {EWordKind::Brightness, EWordKind::Chroma})
        EXPECT_FALSE(SetTransferTable(*CreateCoefObject(other), &table));
}

TEST(CoefObjects, OfTheChromaKindCarryAMode) {
    CCNewChromaCorrectCoef chroma;
    EXPECT_TRUE(SetChromaMode(chroma, 7));
    EXPECT_EQ(chroma.ChromaMode(), 7U);
    for (const EWordKind other :
         {EWordKind::Brightness, EWordKind::VirtualGreenBrightness, EWordKind::VirtualGreenChroma})
        EXPECT_FALSE(SetChromaMode(*CreateCoefObject(other), 7));
}

TEST(CoefObjects, TellTheirMostImageBytesWhateverTheirKind) {
    for (const EWordKind kind :
         {EWordKind::Brightness, EWordKind::Chroma, EWordKind::VirtualGreenBrightness,
          EWordKind::VirtualGreenChroma}) {
        const auto object = CreateCoefObject(kind);
        EXPECT_EQ(MaxStoreImageBytes(*object), 168U);
        ASSERT_EQ(object->Create(1, 1), S_OK);
        EXPECT_GT(MaxStoreImageBytes(*object), 168U + 32768U);
        EXPECT_EQ(LoadBoundedStoreImage(*object, nullptr, 0), E_FAIL);
    }
}

/// Every kind's element in the plain object.
template <class Object>
class PlainObjects : public ::testing::Test {
  public:
    using Plain = CWordCorrectCoef<test::ElementOf<Object>>;

    PlainObjects() { plain.SetFileKind(2); }

    CTemporaryFolder folder;
    std::wstring path = folder.File(L"file");
    std::wstring sample = test::CabinetSample<Object>();
    Plain plain;
};
TYPED_TEST_SUITE(PlainObjects, test::AllKinds);

TYPED_TEST(PlainObjects, LoadAndWriteWordFilesAsTheKindsOwnDo) {
    TypeParam own;
    own.SetFileKind(2);
    ASSERT_EQ(own.Create(40, 24), S_OK);
    ASSERT_EQ(own.LoadCoef(this->sample.c_str()), S_OK);
    ASSERT_EQ(this->plain.Create(40, 24), S_OK);
    SPixelRect rect;
    ASSERT_EQ(this->plain.LoadCoefEx(this->sample.c_str(), rect), S_OK);
    EXPECT_EQ(rect, (SPixelRect{0, 0, 40, 24}));
    EXPECT_EQ(test::DigestOf(this->plain), test::DigestOf(own));

    ASSERT_EQ(this->plain.ExportCoef(this->path.c_str(), rect, nullptr, nullptr), S_OK);
    const test::Bytes written = test::ReadFile(this->path);
    ASSERT_EQ(own.ExportCoef(this->path.c_str(), rect, nullptr, nullptr), S_OK);
    EXPECT_EQ(written, test::ReadFile(this->path));

    std::stringstream stream;
    ASSERT_EQ(this->plain.WriteChunkStream(stream, rect), S_OK);
    EXPECT_EQ(stream.str(), test::ReadText(this->path));
}

TYPED_TEST(PlainObjects, RefuseFilesOfOtherKinds) {
    ASSERT_EQ(this->plain.Create(40, 24), S_OK);
    const std::wstring before = test::DigestOf(this->plain);
    test::Bytes other = test::ReadFile(this->sample);
    other[0] ^= std::byte{1};
    test::WriteFile(this->path, other);
    EXPECT_EQ(this->plain.LoadCoef(this->path.c_str()), E_COEF_BADFORMAT);
    other.resize(100);
    test::WriteFile(this->path, other);
    EXPECT_EQ(this->plain.LoadCoef(this->path.c_str()), E_COEF_BADFORMAT);
    EXPECT_EQ(this->plain.LoadCoef(nullptr), E_COEF_INVALIDARG);
    EXPECT_EQ(this->plain.LoadCoef(this->folder.File(L"missing").c_str()), E_COEF_OPENFAILED);
    EXPECT_EQ(test::DigestOf(this->plain), before);
}

TYPED_TEST(PlainObjects, HaveNoTransferTable) {
    ASSERT_EQ(this->plain.Create(2, 1), S_OK);
    EXPECT_TRUE(this->plain.FillRectChannel(1, 0, 0, 2, 1, 0.5F, 0));
    EXPECT_EQ(this->plain.FindPixel(1, 0)->w[1], 32768);
    EXPECT_FALSE(this->plain.FillRectChannel(1, 0, 0, 2, 1, 0.25F, 1));
    EXPECT_FALSE(this->plain.SetPixelChannel(1, 0, 0, 0.25F, 1));
    EXPECT_EQ(this->plain.FindPixel(0, 0)->w[1], 32768);
    EXPECT_FALSE(this->plain.SetPixelChannel(1, 0, 0, 0.25F, 0)); // not above 1
    EXPECT_EQ(this->plain.FindPixel(0, 0)->w[1], 16384);
}

// ---- sizes without an object ----

TYPED_TEST(PlainObjects, FileKindValuesCountWhereTheKindCarriesThem) {
    constexpr const SWordKind& kKind = kWordKind<test::ElementOf<TypeParam>>;
    for (const std::uint32_t value : {0U, 1U, 2U, 258U}) {
        CWordFileSource file(this->sample.c_str());
        std::uint32_t width = 7;
        std::uint32_t height = 7;
        const bool isTaken = !kKind.hasFileKind || value == 2;
        EXPECT_EQ(QueryWordFileSize(kKind, value, file, width, height),
                  isTaken ? S_OK : E_COEF_BADFORMAT);
        EXPECT_EQ(width, isTaken ? 40U : 7U);
        EXPECT_EQ(height, isTaken ? 24U : 7U);
    }
}

TYPED_TEST(PlainObjects, FloatFilesAreSizedUnderTheNamesOfTheOlderKinds) {
    constexpr bool kSizesThem =
        test::KindOf<TypeParam>::kKind == kBright || test::KindOf<TypeParam>::kKind == kChroma;
    for (const wchar_t* name : {L"cabinet/Cab_01.9fcoef", L"cabinet/Cab_02.3fcoef"}) {
        const std::wstring floats = test::Sample(name);
        CWordFileSource file(floats.c_str());
        std::uint32_t width = 0x30000;
        std::uint32_t height = 0x40000;
        EXPECT_EQ(QueryWordFileSize(kWordKind<test::ElementOf<TypeParam>>, 2, file, width, height),
                  kSizesThem ? S_OK : E_COEF_BADFORMAT);
        EXPECT_EQ(width, kSizesThem ? 0x30000U + 40 : 0x30000U); // the low words alone
        EXPECT_EQ(height, kSizesThem ? 0x40000U + 24 : 0x40000U);
    }
}

} // namespace
} // namespace trevolt
