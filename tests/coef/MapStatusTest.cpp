// What the operations through a coefficient map answer to scarce memory, to stores that no map can
// hold, and to strange rectangles and modes; and that they leave the store alone then.
#include <filesystem>
#include <functional>

#include <gtest/gtest.h>

#include "common/LittleEndian.h"
#include "tests/coef/CoefObjects.h"
#include "tests/support/BudgetLimit.h"
#include "tests/support/TestFiles.h"
#include "trevolt/BinaryCoefFile.h"
#include "trevolt/TextCoefFile.h"
#include "trevolt/TransferReport.h"
#include "trevolt/TurnedCoefFile.h"

namespace trevolt {
namespace {

using test::Bytes;
using test::CBudgetLimit;
using test::ReadFile;
using test::Sample;

constexpr std::int32_t kWidth = 200;
constexpr std::int32_t kHeight = 100;
constexpr std::uint64_t kMapBytes = std::uint64_t{kWidth} * kHeight * (48 + 4);

/// Files of one map in the kinds that go through a map.
struct SMapFiles {
    SMapFiles() {
        CChromaCorrectCoef map;
        map.Resize(kWidth, kHeight);
        map.FindElement(0, 0)->m[0] = 0.25F;
        EXPECT_EQ(Write9fCoefFile(map, k9f.c_str(), nullptr), S_OK);
        EXPECT_EQ(Write3fCoefFile(map, k3f.c_str(), nullptr), S_OK);
        EXPECT_EQ(Write9bCoefFile(map, k9b.c_str(), nullptr), S_OK);
        EXPECT_EQ(Write3bCoefFile(map, k3b.c_str(), nullptr), S_OK);
        EXPECT_EQ(WriteTextCoefFile(map, text.c_str(), nullptr), S_OK);
    }

    test::CTemporaryFolder folder;
    std::wstring k9f = folder.File(L"a.9fcoef");
    std::wstring k3f = folder.File(L"a.3fcoef");
    std::wstring k9b = folder.File(L"a.9bcoef");
    std::wstring k3b = folder.File(L"a.3bcoef");
    std::wstring text = folder.File(L"a.cccoef");
    std::wstring out = folder.File(L"out");
};

struct SMapCall {
    const char* name;
    std::function<Status(CColorCorrectCoef&, SMapFiles&)> run;
};

/// Every way into the store and out of it that needs a map of the store's size.
std::vector<SMapCall> MapCalls() {
    const auto rect = [] { return SPixelRect{0, 0, kWidth, kHeight}; };
    return {
        {"47",
         [](auto& o, auto& f) {
             std::uint32_t width = 3;
             std::uint32_t height = 4;
             const Status status = o.LoadFromTextA(f.text.c_str(), 0, 0, width, height);
             if (Failed(status)) {
                 EXPECT_EQ(width, 3U);
                 EXPECT_EQ(height, 4U);
             }
             return status;
         }},
        {"48",
         [](auto& o, auto& f) {
             std::uint32_t width = 3;
             std::uint32_t height = 4;
             const Status status = o.LoadFromTextB(f.text.c_str(), 0, 0, width, height);
             if (Failed(status)) {
                 EXPECT_EQ(width, 3U);
                 EXPECT_EQ(height, 4U);
             }
             return status;
         }},
        {"49",
         [=](auto& o, auto& f) {
             SPixelRect place = rect();
             return o.ImportTable49(f.k9f.c_str(), place, true, nullptr);
         }},
        {"52",
         [=](auto& o, auto& f) {
             SPixelRect place = rect();
             return o.ImportTable52(f.k3b.c_str(), place, true, nullptr);
         }},
        {"53", [](auto& o, auto& f) { return o.ImportTable53(f.k9f.c_str(), 0, 0); }},
        {"54", [](auto& o, auto& f) { return o.ImportTable54(f.k3f.c_str(), 0, 0); }},
        {"55", [](auto& o, auto& f) { return o.ImportTable55(f.k9b.c_str(), 0, 0); }},
        {"56", [](auto& o, auto& f) { return o.ImportTable56(f.k3b.c_str(), 0, 0); }},
        {"57", [](auto& o, auto& f) { return o.ImportTable57(f.k9f.c_str(), nullptr); }},
        {"58", [](auto& o, auto& f) { return o.ImportTable58(f.k9b.c_str()); }},
        {"68",
         [](auto& o, auto&) {
             const std::vector<std::uint16_t> words(std::size_t{kWidth} * kHeight * 9, 5);
             return o.ImportFromWords(0, 0, kWidth, kHeight, words.data());
         }},
        {"72", [=](auto& o, auto& f) { return o.SaveCoefKind72(f.out.c_str(), rect()); }},
        {"78",
         [=](auto& o, auto& f) {
             SPixelRect place{0, 0, 1, 2};
             const Status status = o.LoadLegacyEx(f.k9b.c_str(), place);
             if (Failed(status)) {
                 EXPECT_EQ(place, (SPixelRect{0, 0, 1, 2}));
             }
             return status;
         }},
        {"79", [](auto& o, auto& f) { return o.LoadLegacy(f.k3f.c_str()); }},
        {"80", [](auto& o, auto& f) { return o.LoadLegacy80(f.k9f.c_str()); }},
        {"81", [=](auto& o, auto& f) { return o.SaveLegacy81(f.out.c_str(), rect(), 1); }},
        {"85", [](auto& o, auto& f) { return o.SaveLegacy85(f.out.c_str()); }},
        {"86", [](auto& o, auto& f) { return o.SaveLegacy86(f.out.c_str()); }},
    };
}

template <class Object>
class MapStatuses : public ::testing::Test {
  protected:
    /// The file of the object's own float kind.
    const std::wstring& OwnFile() const {
        return std::is_same_v<Object, CCNewBrightCorrectCoef> ? files.k3f : files.k9f;
    }

    SMapFiles files;
    Object object;
};
TYPED_TEST_SUITE(MapStatuses, test::MapKinds);

TYPED_TEST(MapStatuses, WithoutMemoryForTheMapTheStoreStays) {
    test::CreateWithPattern(this->object, kWidth, kHeight);
    const std::wstring before = test::DigestOf(this->object);
    for (const SMapCall& call : MapCalls()) {
        const CBudgetLimit limit(CMemoryBudget::Process().Outstanding() + kMapBytes / 2);
        const CTransferReport report;
        EXPECT_EQ(call.run(this->object, this->files), E_FAIL) << call.name;
        EXPECT_TRUE(report.WasMemoryRefused()) << call.name;
        EXPECT_EQ(test::DigestOf(this->object), before) << call.name;
        EXPECT_FALSE(test::FileExists(this->files.out)) << call.name;
    }
    {
        const CBudgetLimit limit(CMemoryBudget::Process().Outstanding() + kMapBytes / 2);
        EXPECT_EQ(this->object.LoadCoef(this->OwnFile().c_str()), E_FAIL);
        EXPECT_EQ(test::DigestOf(this->object), before);
    }
    // With memory they all work.
    for (const SMapCall& call : MapCalls())
        EXPECT_EQ(call.run(this->object, this->files), S_OK) << call.name;
    EXPECT_EQ(this->object.LoadCoef(this->OwnFile().c_str()), S_OK);
    EXPECT_NE(test::DigestOf(this->object), before);
}

// What went through the map is gone from it: nothing of its size stays behind.
TYPED_TEST(MapStatuses, TheMapIsEmptyAfterEveryTransfer) {
    test::CreateWithPattern(this->object, kWidth, kHeight);
    const std::uint64_t before = CMemoryBudget::Process().Outstanding();
    for (const SMapCall& call : MapCalls()) {
        EXPECT_EQ(call.run(this->object, this->files), S_OK) << call.name;
        EXPECT_EQ(CMemoryBudget::Process().Outstanding(), before) << call.name;
    }
    EXPECT_EQ(this->object.LoadCoef(this->OwnFile().c_str()), S_OK);
    EXPECT_EQ(CMemoryBudget::Process().Outstanding(), before);
    // Also when the read fails, and the defaults that the store takes are the map's.
    Bytes cut = ReadFile(this->OwnFile());
    cut.pop_back();
    test::WriteFile(this->files.out, cut);
    EXPECT_EQ(this->object.LoadCoef(this->files.out.c_str()), S_OK);
    EXPECT_EQ(CMemoryBudget::Process().Outstanding(), before);
}

// The map has its memory, and the file's body gets none.
TYPED_TEST(MapStatuses, WithoutMemoryForTheBodyTheStoreStays) {
    test::CreateWithPattern(this->object, kWidth, kHeight);
    const std::wstring before = test::DigestOf(this->object);
    const CBudgetLimit limit(CMemoryBudget::Process().Outstanding() + kMapBytes + 1000);
    const CTransferReport report;
    EXPECT_EQ(this->object.LoadCoef(this->OwnFile().c_str()), E_FAIL);
    EXPECT_TRUE(report.WasMemoryRefused());
    EXPECT_EQ(report.FailedRead(), E_OUTOFMEMORY);
    EXPECT_EQ(this->object.ImportTable53(this->files.k9f.c_str(), 0, 0), E_OUTOFMEMORY);
    EXPECT_EQ(this->object.LoadLegacy(this->files.k3f.c_str()), E_OUTOFMEMORY);
    EXPECT_EQ(test::DigestOf(this->object), before);
}

/// Gives the store a size of its own and its first blocks only.
void AllocateSome(CCaliBuf& store, std::uint32_t width, std::uint32_t height) {
    store.SetSizeLimit(std::uint64_t{3} << 20);
    ASSERT_EQ(store.Allocate(width, height), E_COEF_SIZELIMIT);
    ASSERT_EQ(store.Width(), width);
    ASSERT_EQ(store.Height(), height);
}

TYPED_TEST(MapStatuses, AMapHasNoSideAbove65535) {
    for (const auto& [width, height] : {std::pair{4U, 65536U}, {65540U, 2U}}) {
        AllocateSome(*this->object.Store(), width, height);
        test::FillWithPattern(this->object);
        const std::wstring before = test::DigestOf(this->object);
        test::WriteText(this->files.text, "[T9COEF20]\nwidth=" + std::to_string(width) +
                                              "\nheight=" + std::to_string(height) +
                                              "\n0,0,0.5,0,0,0,0.5,0,0,0,0.5\n");
        std::uint32_t textWidth = 3;
        std::uint32_t textHeight = 4;
        const wchar_t* const text = this->files.text.c_str();
        EXPECT_EQ(this->object.LoadFromTextA(text, 0, 0, textWidth, textHeight), E_FAIL);
        EXPECT_EQ(this->object.LoadFromTextB(text, 0, 0, textWidth, textHeight), E_FAIL);
        EXPECT_EQ(textWidth, 3U);
        EXPECT_EQ(textHeight, 4U);
        const std::vector<std::uint16_t> words(std::size_t{width} * height * 9, 5);
        EXPECT_EQ(this->object.ImportFromWords(0, 0, width, height, words.data()), E_FAIL);
        EXPECT_EQ(this->object.SaveLegacy86(this->files.out.c_str()), E_FAIL);
        EXPECT_EQ(this->object.LoadLegacy80(this->files.k9f.c_str()), E_FAIL);
        EXPECT_EQ(test::DigestOf(this->object), before);
        EXPECT_FALSE(test::FileExists(this->files.out));
        // What a map can hold of such a store goes through.
        EXPECT_EQ(this->object.ImportFromWords(0, 0, std::min(width, 65535U),
                                               std::min(height, 65535U), words.data()),
                  S_OK);
        EXPECT_EQ(test::WordsAt(this->object, 0, 0)[0], 5);
        EXPECT_EQ(this->object.ImportTable54(this->files.k3f.c_str(), 0, 0), S_OK);
        EXPECT_EQ(test::WordsAt(this->object, 0, 0)[0], 16384);
    }
}

TYPED_TEST(MapStatuses, ATextPastTheStoreLeavesTheCallersSize) {
    ASSERT_EQ(this->object.Create(kWidth, kHeight), S_OK);
    std::uint32_t width = 3;
    std::uint32_t height = 4;
    const wchar_t* const text = this->files.text.c_str();
    EXPECT_EQ(this->object.LoadFromTextA(text, kWidth + 1, 0, width, height), E_FAIL);
    EXPECT_EQ(this->object.LoadFromTextB(text, 0, kHeight + 1, width, height), E_FAIL);
    EXPECT_EQ(width, 3U);
    EXPECT_EQ(height, 4U);
    EXPECT_EQ(this->object.LoadFromTextA(text, kWidth, 0, width, height), S_OK); // on the edge
    EXPECT_EQ(width, 200U);
    EXPECT_EQ(height, 100U);
    // The older dialects raise what the caller gives.
    test::WriteText(this->files.text, "[VU30]\n9,4,1,0,0,0,1,0,0,0,1");
    width = 50;
    height = 2;
    EXPECT_EQ(this->object.LoadFromTextA(text, 0, 0, width, height), S_OK);
    EXPECT_EQ(width, 50U);
    EXPECT_EQ(height, 5U);
}

TYPED_TEST(MapStatuses, AFileThatIsSizedAndNotLoadedLeavesTheRectangle) {
    ASSERT_EQ(this->object.Create(kWidth, kHeight), S_OK);
    constexpr bool kIsBright = std::is_same_v<TypeParam, CCNewBrightCorrectCoef>;
    const wchar_t* const other = (kIsBright ? this->files.k9f : this->files.k3f).c_str();
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    ASSERT_EQ((this->object.*test::KindOf<TypeParam>::kSize)(other, width, height), S_OK);
    SPixelRect rect{10, 20, 3, 4};
    EXPECT_EQ(this->object.LoadCoefEx(other, rect), E_COEF_BADFORMAT);
    EXPECT_EQ(rect, (SPixelRect{10, 20, 3, 4}));
    this->object.SetStoreOwner(nullptr);
    EXPECT_EQ(this->object.LoadCoefEx(this->OwnFile().c_str(), rect), E_POINTER);
    EXPECT_EQ(rect, (SPixelRect{10, 20, 0, 0})); // the edges of no store
}

std::pair<int, int> SizeInHeader(const Bytes& file) {
    EXPECT_GE(file.size(), 24U);
    return {LoadLittle<std::uint16_t>(&file[20]), LoadLittle<std::uint16_t>(&file[22])};
}

/// The turned writers of a kind, each with the map writer behind it.
template <class Object>
auto TurnedWriters() {
    struct SWriter {
        Status (CColorCorrectCoef::*save)(const wchar_t*, const SPixelRect&, std::uint32_t);
        Status (*write)(const CChromaCorrectCoef&, const wchar_t*, const SPixelRect&,
                        std::uint32_t);
    };
    constexpr bool kIsBright = std::is_same_v<Object, CCNewBrightCorrectCoef>;
    return std::vector<SWriter>{
        {&CColorCorrectCoef::SaveLegacy81, WriteTurned9fCoefFile},
        {&CColorCorrectCoef::SaveLegacy84, WriteTurned3fCoefFile},
        kIsBright ? SWriter{&CColorCorrectCoef::SaveLegacy83, WriteTurned3bCoefFile}
                  : SWriter{&CColorCorrectCoef::SaveLegacy82, WriteTurned9bCoefFile}};
}

TYPED_TEST(MapStatuses, TurnedWritersTakeAnyModeAndAnyRectangle) {
    ASSERT_EQ(this->object.Create(kWidth, kHeight), S_OK); // every pixel the map's default
    const std::wstring& out = this->files.out;
    const std::wstring expected = this->files.folder.File(L"expected");
    CChromaCorrectCoef map;
    map.Resize(kWidth, kHeight);
    for (const auto& [save, write] : TurnedWriters<TypeParam>()) {
        EXPECT_EQ((this->object.*save)(out.c_str(), {9, 5, 1, 8}, 1), E_FAIL); // turned over
        EXPECT_FALSE(test::FileExists(out));
        for (const std::uint32_t mode : {0U, 4U, 0xFFFFFFFFU}) {
            EXPECT_EQ((this->object.*save)(out.c_str(), {0, 0, kWidth, kHeight}, mode), S_OK);
            EXPECT_EQ(SizeInHeader(ReadFile(out)), (std::pair{0, 0}));
        }
        const SPixelRect larger{10, 20, kWidth + 40, kHeight + 30};
        ASSERT_EQ((this->object.*save)(out.c_str(), larger, 1), S_OK);
        EXPECT_EQ(SizeInHeader(ReadFile(out)), (std::pair{kHeight + 10, kWidth + 30}));
        ASSERT_EQ(write(map, expected.c_str(), larger, 1), S_OK);
        EXPECT_EQ(ReadFile(out), ReadFile(expected));
        EXPECT_EQ((this->object.*save)(nullptr, larger, 1), E_COEF_INVALIDARG);
        EXPECT_EQ((this->object.*save)((out + L"/a").c_str(), larger, 1), E_COEF_OPENFAILED);
        TypeParam empty;
        EXPECT_EQ((empty.*save)(out.c_str(), larger, 1), E_COEF_INVALIDARG);
        std::filesystem::remove(out);
    }
}

TYPED_TEST(MapStatuses, RegionWritersTakeWhatTheStoreIsAsLargeAs) {
    ASSERT_EQ(this->object.Create(kWidth, kHeight), S_OK);
    for (const auto save :
         {&CColorCorrectCoef::SaveCoefKind72, &CColorCorrectCoef::SaveCoefKind73,
          &CColorCorrectCoef::SaveCoefKind74, &CColorCorrectCoef::SaveCoefKind75}) {
        const wchar_t* const out = this->files.out.c_str();
        EXPECT_EQ((this->object.*save)(out, {0, 0, kWidth + 1, 1}), E_COEF_INVALIDARG);
        EXPECT_EQ((this->object.*save)(out, {0, 0, 1, kHeight + 1}), E_COEF_INVALIDARG);
        EXPECT_EQ((this->object.*save)(out, {9, 5, 1, 8}), E_FAIL);
        EXPECT_FALSE(test::FileExists(this->files.out));
    }
}

TYPED_TEST(MapStatuses, ATextOfAnEmptyStoreIsItsHeader) {
    const wchar_t* const out = this->files.out.c_str();
    constexpr bool kIsBright = std::is_same_v<TypeParam, CCNewBrightCorrectCoef>;
    EXPECT_EQ(kIsBright ? this->object.SaveCoefKind77(out) : this->object.SaveCoefKind76(out),
              S_OK);
    EXPECT_EQ(test::ReadText(this->files.out), "[T9COEF20]\nwidth=0\nheight=0\n");
}

template <class Object>
class MatrixFiles : public ::testing::Test {};
TYPED_TEST_SUITE(MatrixFiles, test::AllKinds);

TYPED_TEST(MatrixFiles, StatusesOfTheLegacyPair) {
    SMapFiles files;
    TypeParam object;
    test::CreateWithPattern(object, kWidth, kHeight);
    const std::wstring before = test::DigestOf(object);
    EXPECT_EQ(object.LoadLegacy80(nullptr), E_COEF_INVALIDARG);
    EXPECT_EQ(object.LoadLegacy80((files.out + L"x").c_str()), E_COEF_OPENFAILED);
    EXPECT_EQ(object.LoadLegacy80(files.folder.Path().c_str()), E_COEF_OPENFAILED);
    EXPECT_EQ(object.LoadLegacy80(files.k3f.c_str()), E_COEF_BADFORMAT);
    EXPECT_EQ(object.LoadLegacy80(Sample(L"awkward/version_2.9fcoef").c_str()), E_COEF_BADFORMAT);
    EXPECT_EQ(object.LoadLegacy80(Sample(L"awkward/cut_short.9fcoef").c_str()), E_FAIL);
    EXPECT_EQ(object.SaveLegacy86(nullptr), E_COEF_INVALIDARG);
    EXPECT_EQ(object.SaveLegacy86((files.out + L"/a").c_str()), E_COEF_OPENFAILED);
    {
        const CBudgetLimit limit(CMemoryBudget::Process().Outstanding() + kMapBytes / 2);
        EXPECT_EQ(object.LoadLegacy80(files.k9f.c_str()), E_FAIL);
        EXPECT_EQ(object.SaveLegacy86(files.out.c_str()), E_FAIL);
    }
    AllocateSome(*object.Store(), 4, 65536);
    EXPECT_EQ(object.LoadLegacy80(files.k9f.c_str()), E_FAIL);
    EXPECT_EQ(object.SaveLegacy86(files.out.c_str()), E_FAIL);
    EXPECT_FALSE(test::FileExists(files.out));
    TypeParam empty;
    EXPECT_EQ(empty.SaveLegacy86(files.out.c_str()), E_COEF_INVALIDARG);
    EXPECT_EQ(empty.LoadLegacy80(files.k9f.c_str()), E_FAIL); // a rectangle without pixels
}

} // namespace
} // namespace trevolt
