// Files that the brightness and the chroma kind load and save through a coefficient map. What is
// saved is compared with the map writers' own bytes, what is loaded with a naive conversion.
#include <algorithm>
#include <cstring>
#include <sstream>

#include <gtest/gtest.h>

#include "common/LittleEndian.h"
#include "formats/BinaryCoefKind.h"
#include "tests/coef/CoefObjects.h"
#include "tests/support/TestFiles.h"
#include "trevolt/BinaryCoefFile.h"
#include "trevolt/MemoryBudget.h"
#include "trevolt/PlacedCoefFile.h"
#include "trevolt/RawMapFile.h"
#include "trevolt/RegionCoefFile.h"
#include "trevolt/TextCoefFile.h"
#include "trevolt/TransferReport.h"
#include "trevolt/TurnedCoefFile.h"

namespace trevolt {
namespace {

using test::Bytes;
using test::ReadFile;
using test::Sample;
using test::WriteFile;

/// The map that an object's pixels make.
template <class Object>
void MakeMap(const Object& object, CChromaCorrectCoef& map) {
    map.Resize(static_cast<std::int32_t>(object.GetWidth()),
               static_cast<std::int32_t>(object.GetHeight()));
    for (std::int32_t y = 0; y < map.Height(); ++y)
        for (std::int32_t x = 0; x < map.Width(); ++x) {
            SMatrixCoef element;
            const auto words =
                test::WordsAt(object, static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y));
            for (std::size_t k = 0; k < words.size(); ++k)
                element.m[*test::MapValueOf<Object>(k)] = static_cast<float>(words[k]) / 65535.0F;
            map.SetElement(x, y, element);
        }
}

/// The words of one block that a conversion of a rectangle of the map leaves: columns outer, rows
/// inner, twelve words an element where an element has nine.
template <class Object>
class CBlockModel {
  public:
    static constexpr std::size_t kWords = test::kWordsOf<Object>;

    explicit CBlockModel(const Object& object) {
        const auto* data = object.FindPixel(0, 0);
        for (std::size_t i = 0; i < 256 * 128; ++i)
            m_words.insert(m_words.end(), data[i].w.begin(), data[i].w.end());
    }

    void Convert(const CChromaCorrectCoef& map, std::int32_t mapX, std::int32_t mapY,
                 const SPixelRect& rect) {
        for (std::int32_t x = rect.left; x < rect.right; ++x)
            for (std::int32_t y = rect.top; y < rect.bottom; ++y) {
                const auto& m = map.ElementOrDefault(mapX + x - rect.left, mapY + y - rect.top).m;
                std::size_t at = static_cast<std::size_t>(y * 256 + x) * kWords;
                for (std::size_t k = 0; k < (kWords == 9 ? 12 : kWords); ++k, ++at)
                    if (at < m_words.size())
                        m_words[at] = static_cast<std::uint16_t>(static_cast<std::int32_t>(
                            m[*test::MapValueOf<Object>(k)] * 65535.0F + 0.5F));
            }
    }

    ::testing::AssertionResult Agrees(const Object& object) const {
        const auto* data = object.FindPixel(0, 0);
        for (std::size_t i = 0; i < m_words.size(); ++i)
            if (data[i / kWords].w[i % kWords] != m_words[i])
                return ::testing::AssertionFailure() << "pixel " << i / kWords % 256 << ", "
                                                     << i / kWords / 256 << " word " << i % kWords;
        return ::testing::AssertionSuccess();
    }

  private:
    std::vector<std::uint16_t> m_words;
};

template <class Object>
class MapFiles : public ::testing::Test {
  protected:
    MapFiles() {
        test::CreateWithPattern(object, 60, 40);
        MakeMap(object, map);
    }

    /// Expects what `write` leaves at the other path to be what the object has written.
    template <class Write>
    void ExpectSame(Write write) {
        ASSERT_EQ(write(other.c_str()), S_OK);
        EXPECT_EQ(ReadFile(path), ReadFile(other));
    }

    test::CTemporaryFolder folder;
    std::wstring path = folder.File(L"a.coef");
    std::wstring other = folder.File(L"b.coef");
    Object object;
    CChromaCorrectCoef map;
};
TYPED_TEST_SUITE(MapFiles, test::MapKinds);

TYPED_TEST(MapFiles, SavedRegions) {
    const SPixelRect rect{5, 3, 45, 33};
    const wchar_t* const out = this->path.c_str();
    ASSERT_EQ(this->object.SaveCoefKind72(out, rect), S_OK);
    this->ExpectSame([&](auto* to) { return WriteRegion9fCoefFile(this->map, to, rect); });
    ASSERT_EQ(this->object.SaveCoefKind73(out, rect), S_OK);
    this->ExpectSame([&](auto* to) { return WriteRegion3fCoefFile(this->map, to, rect); });
    ASSERT_EQ(this->object.SaveCoefKind74(out, rect), S_OK);
    this->ExpectSame([&](auto* to) { return WriteRegion9bCoefFile(this->map, to, rect); });
    ASSERT_EQ(this->object.SaveCoefKind75(out, rect), S_OK);
    this->ExpectSame([&](auto* to) { return WriteRegion3bCoefFile(this->map, to, rect); });
    EXPECT_EQ(this->object.SaveCoefKind72(nullptr, rect), E_COEF_INVALIDARG);
    EXPECT_EQ(this->object.SaveCoefKind72(out, {0, 0, 61, 4}), E_COEF_INVALIDARG);
    EXPECT_EQ(this->object.SaveCoefKind72((this->folder.File(L"x") + L"/a").c_str(), rect),
              E_COEF_OPENFAILED);
    TypeParam empty;
    EXPECT_EQ(empty.SaveCoefKind72(out, rect), E_COEF_INVALIDARG);
}

TYPED_TEST(MapFiles, SavedTurnedRegions) {
    const SPixelRect rect{5, 3, 45, 33};
    const wchar_t* const out = this->path.c_str();
    for (const std::uint32_t mode : {1U, 2U, 3U}) {
        ASSERT_EQ(this->object.SaveLegacy81(out, rect, mode), S_OK);
        this->ExpectSame(
            [&](auto* to) { return WriteTurned9fCoefFile(this->map, to, rect, mode); });
        ASSERT_EQ(this->object.SaveLegacy84(out, rect, mode), S_OK);
        this->ExpectSame(
            [&](auto* to) { return WriteTurned3fCoefFile(this->map, to, rect, mode); });
        if constexpr (std::is_same_v<TypeParam, CCNewChromaCorrectCoef>) {
            ASSERT_EQ(this->object.SaveLegacy82(out, rect, mode), S_OK);
            this->ExpectSame(
                [&](auto* to) { return WriteTurned9bCoefFile(this->map, to, rect, mode); });
        } else {
            ASSERT_EQ(this->object.SaveLegacy83(out, rect, mode), S_OK);
            this->ExpectSame(
                [&](auto* to) { return WriteTurned3bCoefFile(this->map, to, rect, mode); });
        }
    }
}

TYPED_TEST(MapFiles, SavedWholeStores) {
    const wchar_t* const out = this->path.c_str();
    ASSERT_EQ(this->object.SaveLegacy85(out), S_OK);
    this->ExpectSame([&](auto* to) { return Write3fCoefFile(this->map, to, nullptr); });
    ASSERT_EQ(this->object.SaveLegacy86(out), S_OK);
    this->ExpectSame([&](auto* to) { return Write9fCoefFile(this->map, to, nullptr); });
    if constexpr (std::is_same_v<TypeParam, CCNewChromaCorrectCoef>) {
        ASSERT_EQ(this->object.SaveCoefKind76(out), S_OK);
    } else {
        ASSERT_EQ(this->object.SaveCoefKind77(out), S_OK);
    }
    this->ExpectSame([&](auto* to) { return WriteTextCoefFile(this->map, to, nullptr); });
}

// The file readers, each to a place in the store.
TYPED_TEST(MapFiles, LoadedFiles) {
    using Load = Status (CColorCorrectCoef::*)(const wchar_t*, std::uint32_t, std::uint32_t);
    struct SCase {
        Load load;
        Status (*read)(CChromaCorrectCoef&, const wchar_t*);
        const wchar_t* sample;
    };
    const SCase cases[] = {
        {&CColorCorrectCoef::ImportTable53, Read9fCoefFile, L"cabinet/Cab_01.9fcoef"},
        {&CColorCorrectCoef::ImportTable54, Read3fCoefFile, L"cabinet/Cab_02.3fcoef"},
        {&CColorCorrectCoef::ImportTable55, Read9bCoefFile, L"cabinet/Cab_03.9bcoef"},
        {&CColorCorrectCoef::ImportTable56, Read3bCoefFile, L"cabinet/Cab_04.3bcoef"},
    };
    for (const SCase& c : cases) {
        const std::wstring sample = Sample(c.sample);
        CChromaCorrectCoef expected;
        expected.Resize(40, 24);
        ASSERT_GE(c.read(expected, sample.c_str()), 0);
        test::FillWithPattern(this->object);
        CBlockModel<TypeParam> model(this->object);
        ASSERT_EQ((this->object.*c.load)(sample.c_str(), 10, 30), S_OK);
        model.Convert(expected, 0, 0, {10, 30, 50, 40}); // cut at the store's lower edge
        EXPECT_TRUE(model.Agrees(this->object)) << c.sample;
        // Refused: the store stays.
        EXPECT_EQ((this->object.*c.load)(nullptr, 0, 0), E_COEF_INVALIDARG);
        EXPECT_EQ((this->object.*c.load)((sample + L"x").c_str(), 0, 0), E_COEF_OPENFAILED);
        EXPECT_EQ((this->object.*c.load)(Sample(L"cabinet/Cab_06.9wcoef").c_str(), 0, 0),
                  E_COEF_BADFORMAT);
        EXPECT_EQ((this->object.*c.load)(sample.c_str(), 61, 0), E_FAIL);
        EXPECT_TRUE(model.Agrees(this->object)) << c.sample;
    }
    EXPECT_EQ(this->object.ImportTable53(Sample(L"awkward/cut_short.9fcoef").c_str(), 0, 0),
              E_FAIL);
    EXPECT_EQ(this->object.ImportTable53(Sample(L"awkward/version_2.9fcoef").c_str(), 0, 0),
              E_COEF_BADFORMAT);
}

TYPED_TEST(MapFiles, LegacyFilesAreRecognised) {
    for (const wchar_t* name : {L"cabinet/Cab_01.9fcoef", L"cabinet/Cab_02.3fcoef",
                                L"cabinet/Cab_03.9bcoef", L"cabinet/Cab_04.3bcoef"}) {
        const std::wstring sample = Sample(name);
        TypeParam direct;
        TypeParam legacy;
        ASSERT_EQ(direct.Create(60, 40), S_OK);
        ASSERT_EQ(legacy.Create(60, 40), S_OK);
        const auto load =
            name == std::wstring(L"cabinet/Cab_01.9fcoef")   ? &TypeParam::ImportTable53
            : name == std::wstring(L"cabinet/Cab_02.3fcoef") ? &TypeParam::ImportTable54
            : name == std::wstring(L"cabinet/Cab_03.9bcoef") ? &TypeParam::ImportTable55
                                                             : &TypeParam::ImportTable56;
        ASSERT_EQ((direct.*load)(sample.c_str(), 30, 20), S_OK);
        SPixelRect rect{30, 20, 0, 0};
        ASSERT_EQ(legacy.LoadLegacyEx(sample.c_str(), rect), S_OK);
        EXPECT_EQ(rect, (SPixelRect{30, 20, 60, 40}));
        EXPECT_EQ(test::DigestOf(legacy), test::DigestOf(direct));
        ASSERT_EQ((direct.*load)(sample.c_str(), 0, 0), S_OK);
        ASSERT_EQ(legacy.LoadLegacy(sample.c_str()), S_OK);
        EXPECT_EQ(test::DigestOf(legacy), test::DigestOf(direct));
    }
    SPixelRect rect{-1, 0, 5, 5};
    const std::wstring sample = Sample(L"cabinet/Cab_01.9fcoef");
    EXPECT_EQ(this->object.LoadLegacyEx(sample.c_str(), rect), E_COEF_INVALIDARG);
    EXPECT_EQ(this->object.LoadLegacy(nullptr), E_COEF_INVALIDARG);
    EXPECT_EQ(this->object.LoadLegacy((sample + L"x").c_str()), E_COEF_OPENFAILED);
    EXPECT_EQ(this->object.LoadLegacy(Sample(L"cabinet/Cab_05.cccoef").c_str()), E_COEF_BADFORMAT);
    EXPECT_EQ(this->object.LoadLegacy(Sample(L"awkward/version_2.9fcoef").c_str()),
              E_COEF_BADFORMAT);
}

TYPED_TEST(MapFiles, PlacedFiles) {
    using Import = Status (CColorCorrectCoef::*)(const wchar_t*, SPixelRect&, bool, const bool*);
    const auto check = [&]<class Kind>(Import import,
                                       Status (*place)(CChromaCorrectCoef&, const wchar_t*,
                                                       SPixelRect&, bool,
                                                       const typename Kind::EntryMask&),
                                       const wchar_t* name) {
        const std::wstring sample = Sample(name);
        typename Kind::EntryMask mask{};
        mask[0] = true;
        mask[mask.size() - 1] = true;
        test::FillWithPattern(this->object);
        CBlockModel<TypeParam> model(this->object);
        CChromaCorrectCoef expected;
        MakeMap(this->object, expected);
        SPixelRect wanted{20, 10, 45, 200};
        ASSERT_GE(place(expected, sample.c_str(), wanted, true, mask), 0);
        SPixelRect rect{20, 10, 45, 200};
        ASSERT_EQ((this->object.*import)(sample.c_str(), rect, true, mask.data()), S_OK);
        EXPECT_EQ(rect, wanted);
        EXPECT_EQ(rect, (SPixelRect{20, 10, 45, 34}));
        model.Convert(expected, rect.left, rect.top, rect);
        EXPECT_TRUE(model.Agrees(this->object)) << name;
        // All entries, not clipped.
        mask.fill(true);
        wanted = rect = {30, 0, 0, 0};
        MakeMap(this->object, expected);
        model = CBlockModel<TypeParam>(this->object);
        ASSERT_GE(place(expected, sample.c_str(), wanted, false, mask), 0);
        ASSERT_EQ((this->object.*import)(sample.c_str(), rect, false, nullptr), S_OK);
        EXPECT_EQ(rect, (SPixelRect{30, 0, 60, 24}));
        model.Convert(expected, rect.left, rect.top, rect);
        EXPECT_TRUE(model.Agrees(this->object)) << name;
        // Refusals leave rectangle and store.
        rect = {0, 0, 0, 5};
        EXPECT_EQ((this->object.*import)(sample.c_str(), rect, true, nullptr), E_COEF_INVALIDARG);
        rect = {-1, 0, 5, 5};
        EXPECT_EQ((this->object.*import)(sample.c_str(), rect, false, nullptr), E_COEF_INVALIDARG);
        rect = {1, 2, 3, 4};
        EXPECT_EQ((this->object.*import)(nullptr, rect, false, nullptr), E_COEF_INVALIDARG);
        EXPECT_EQ(rect, (SPixelRect{1, 2, 3, 4}));
        EXPECT_TRUE(model.Agrees(this->object)) << name;
    };
    check.template operator()<S9fCoefKind>(&CColorCorrectCoef::ImportTable49, Place9fCoefFile,
                                           L"cabinet/Cab_01.9fcoef");
    check.template operator()<S3fCoefKind>(&CColorCorrectCoef::ImportTable50, Place3fCoefFile,
                                           L"cabinet/Cab_02.3fcoef");
    check.template operator()<S9bCoefKind>(&CColorCorrectCoef::ImportTable51, Place9bCoefFile,
                                           L"cabinet/Cab_03.9bcoef");
    check.template operator()<S3bCoefKind>(&CColorCorrectCoef::ImportTable52, Place3bCoefFile,
                                           L"cabinet/Cab_04.3bcoef");
}

TYPED_TEST(MapFiles, MaskedLegacyFiles) {
    CBlockModel<TypeParam> model(this->object);
    SPixelRect rect{20, 10, 20, 10};
    if constexpr (std::is_same_v<TypeParam, CCNewChromaCorrectCoef>) {
        const std::array<bool, 9> mask{true, false, true};
        const std::wstring sample = Sample(L"cabinet/Cab_01.9fcoef");
        ASSERT_EQ(this->object.LoadLegacy97(sample.c_str(), 20, 10, mask.data()), S_OK);
        ASSERT_GE(Place9fCoefFile(this->map, sample.c_str(), rect, false, mask), 0);
        EXPECT_EQ(this->object.LoadLegacy97(sample.c_str(), -1, 0, nullptr), E_COEF_INVALIDARG);
    } else {
        const std::array<bool, 3> mask{true, false, true};
        const std::wstring sample = Sample(L"cabinet/Cab_02.3fcoef");
        ASSERT_EQ(this->object.LoadLegacy96(sample.c_str(), 20, 10, mask.data()), S_OK);
        ASSERT_GE(Place3fCoefFile(this->map, sample.c_str(), rect, false, mask), 0);
        EXPECT_EQ(this->object.LoadLegacy96(sample.c_str(), 0, -1, nullptr), E_COEF_INVALIDARG);
    }
    model.Convert(this->map, 20, 10, rect);
    EXPECT_TRUE(model.Agrees(this->object));
}

class CCountingSink final : public CProgressSink {
  public:
    explicit CCountingSink(int stopAfter) : m_stopAfter(stopAfter) {}
    void Begin(SOperationId id) override { EXPECT_EQ(id, (SOperationId{3, 4})); }
    void Report(SOperationId, double) override { ++reports; }
    void End(SOperationId, Status status) override { ended = status; }
    bool IsCancelled(SOperationId) override { return reports >= m_stopAfter; }

    int reports = 0;
    Status ended = E_HANDLE;

  private:
    int m_stopAfter;
};

TYPED_TEST(MapFiles, Diagonals) {
    const std::wstring floats = Sample(L"cabinet/Cab_01.9fcoef");
    CBlockModel<TypeParam> model(this->object);
    CCountingSink sink(1000);
    const SOperationRecord record{&sink, {3, 4}};
    ASSERT_EQ(this->object.ImportTable57(floats.c_str(), &record), S_OK);
    EXPECT_EQ(sink.reports, 40);
    EXPECT_EQ(sink.ended, S_OK);
    ASSERT_EQ(ReadDiagonal9fCoefFile(this->map, floats.c_str(), nullptr), S_OK);
    model.Convert(this->map, 0, 0, {0, 0, 40, 24});
    EXPECT_TRUE(model.Agrees(this->object));

    // Stopped: nothing of the file comes into the store.
    test::FillWithPattern(this->object);
    model = CBlockModel<TypeParam>(this->object);
    CCountingSink impatient(7);
    const SOperationRecord stopped{&impatient, {3, 4}};
    EXPECT_EQ(this->object.ImportTable57(floats.c_str(), &stopped), E_FAIL);
    EXPECT_EQ(impatient.reports, 7);
    EXPECT_EQ(impatient.ended, E_FAIL);
    EXPECT_TRUE(model.Agrees(this->object));

    const std::wstring bytes = Sample(L"cabinet/Cab_03.9bcoef");
    MakeMap(this->object, this->map);
    ASSERT_EQ(this->object.ImportTable58(bytes.c_str()), S_OK);
    ASSERT_EQ(ReadDiagonal9bCoefFile(this->map, bytes.c_str()), S_OK);
    model.Convert(this->map, 0, 0, {0, 0, 40, 24});
    EXPECT_TRUE(model.Agrees(this->object));
    EXPECT_EQ(this->object.ImportTable58(nullptr), E_COEF_INVALIDARG);
    EXPECT_EQ(this->object.ImportTable58(floats.c_str()), E_COEF_BADFORMAT);
}

TYPED_TEST(MapFiles, Texts) {
    const std::wstring sample = Sample(L"cabinet/Cab_05.cccoef");
    for (const bool diagonalOnly : {false, true}) {
        test::FillWithPattern(this->object);
        CBlockModel<TypeParam> model(this->object);
        const auto load = diagonalOnly ? &TypeParam::LoadFromTextB : &TypeParam::LoadFromTextA;
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        ASSERT_EQ((this->object.*load)(sample.c_str(), 12, 5, width, height), S_OK);
        EXPECT_EQ(width, 40U);
        EXPECT_EQ(height, 24U);
        CChromaCorrectCoef expected;
        expected.Resize(40, 24);
        ASSERT_EQ(ReadTextCoefFile(expected, sample.c_str(), 0, 0, width, height, diagonalOnly),
                  S_OK);
        model.Convert(expected, 0, 0, {12, 5, 52, 29});
        EXPECT_TRUE(model.Agrees(this->object));
        EXPECT_EQ((this->object.*load)(nullptr, 0, 0, width, height), E_COEF_INVALIDARG);
        EXPECT_EQ((this->object.*load)(sample.c_str(), -1, 0, width, height), E_COEF_INVALIDARG);
        EXPECT_EQ((this->object.*load)(sample.c_str(), 0, -1, width, height), E_COEF_INVALIDARG);
        EXPECT_EQ((this->object.*load)((sample + L"x").c_str(), 0, 0, width, height),
                  E_COEF_OPENFAILED);
        EXPECT_EQ(
            (this->object.*load)(Sample(L"cabinet/Cab_01.9fcoef").c_str(), 0, 0, width, height),
            E_COEF_BADTEXT);
    }
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    EXPECT_EQ(this->object.GetCoefSize91(sample.c_str(), width, height), S_OK);
    EXPECT_EQ(width, 40U);
    EXPECT_EQ(height, 24U);
    // A header that claims much costs nothing.
    test::WriteText(this->path, "[T9COEF20]\nwidth=2000000000\nheight=2000000000\n");
    EXPECT_EQ(this->object.LoadFromTextA(this->path.c_str(), 0, 0, width, height), S_OK);
    EXPECT_EQ(width, 2000000000U);
    EXPECT_EQ(test::WordsAt(this->object, 59, 39), test::ElementOf<TypeParam>{}.w);
}

// A negative side leaves a map without pixels, and so nothing to take.
TYPED_TEST(MapFiles, TextsWithoutPixelsLeaveTheStore) {
    const std::wstring before = test::DigestOf(this->object);
    for (const char* const sides : {"width=-5\nheight=-7\n", "width=-5\nheight=3\n",
                                    "width=5\nheight=-3\n", "width=0\nheight=0\n"}) {
        test::WriteText(this->path, std::string("[T9COEF20]\n") + sides);
        for (const auto load :
             {&CColorCorrectCoef::LoadFromTextA, &CColorCorrectCoef::LoadFromTextB}) {
            std::uint32_t width = 4711;
            std::uint32_t height = 4711;
            EXPECT_EQ((this->object.*load)(this->path.c_str(), 0, 0, width, height), E_FAIL);
            EXPECT_EQ(width, 4711U);
            EXPECT_EQ(height, 4711U);
            EXPECT_EQ(test::DigestOf(this->object), before);
        }
    }
}

TYPED_TEST(MapFiles, ViewsAndWords) {
    CBlockModel<TypeParam> model(this->object);
    CChromaCorrectCoef view;
    view.Resize(10, 10);
    for (std::int32_t y = 0; y < 10; ++y)
        for (std::int32_t x = 0; x < 10; ++x)
            view.FindElement(x, y)->m.fill(static_cast<float>(x + 10 * y) / 100.0F);
    ASSERT_EQ(this->object.ImportFromView(&view, {5, 6, 20, 16}), S_OK);
    model.Convert(view, 0, 0, {5, 6, 20, 16}); // columns 15 to 19 take the default
    EXPECT_TRUE(model.Agrees(this->object));
    EXPECT_EQ(this->object.ImportFromView(nullptr, {5, 6, 20, 16}), E_COEF_INVALIDARG);
    EXPECT_EQ(this->object.ImportFromView(&view, {-5, 6, 20, 16}), E_COEF_INVALIDARG);
    EXPECT_EQ(this->object.ImportFromView(&view, {5, 6, 5, 16}), E_FAIL);

    std::vector<std::uint16_t> words(10 * 10 * 9);
    for (std::size_t i = 0; i < words.size(); ++i)
        words[i] = static_cast<std::uint16_t>(i * 71);
    CChromaCorrectCoef expected;
    expected.Resize(10, 10);
    for (std::int32_t y = 0; y < 10; ++y)
        for (std::int32_t x = 0; x < 10; ++x)
            for (std::size_t k = 0; k < 9; ++k)
                expected.FindElement(x, y)->m[k] =
                    static_cast<float>(words[static_cast<std::size_t>(y * 10 + x) * 9 + k]) /
                    65535.0F;
    ASSERT_EQ(this->object.ImportFromWords(50, 20, 10, 10, words.data()), S_OK);
    model.Convert(expected, 0, 0, {50, 20, 60, 30});
    EXPECT_TRUE(model.Agrees(this->object));
    EXPECT_EQ(this->object.ImportFromWords(60, 20, 10, 10, words.data()), S_OK); // on the edge
    EXPECT_EQ(this->object.ImportFromWords(0, 0, 10, 10, nullptr), E_FAIL);
    EXPECT_EQ(this->object.ImportFromWords(61, 0, 10, 10, words.data()), E_FAIL);
    EXPECT_TRUE(model.Agrees(this->object));
}

// Words that become floats and words again are the same words: all 65536 of them.
TYPED_TEST(MapFiles, EveryWordSurvivesTheMap) {
    TypeParam source;
    ASSERT_EQ(source.Create(256, 256), S_OK);
    for (std::uint32_t y = 0; y < 256; ++y)
        for (std::uint32_t x = 0; x < 256; ++x)
            source.FindPixel(x, y)->w.fill(static_cast<std::uint16_t>(y * 256 + x));
    ASSERT_EQ(source.SaveLegacy86(this->path.c_str()), S_OK);
    TypeParam loaded;
    ASSERT_EQ(loaded.Create(256, 256), S_OK);
    ASSERT_EQ(loaded.LoadLegacy80(this->path.c_str()), S_OK);
    for (std::uint32_t y = 0; y < 256; ++y)
        for (std::uint32_t x = 0; x < 256; ++x)
            for (std::size_t k = test::kWordsOf<TypeParam> == 9 && x == 0 && y % 128 != 0 ? 3 : 0;
                 k < test::kWordsOf<TypeParam>; ++k)
                ASSERT_EQ(test::WordsAt(loaded, x, y)[k], y * 256 + x) << k;
}

// ---- LoadCoef through the map ----

/// A `.3fcoef` or `.9fcoef` file whose map is made by setValue(x, y, element).
template <class SetValue>
void WriteFloatFile(const std::wstring& path, std::int32_t width, std::int32_t height,
                    Status (*write)(const CChromaCorrectCoef&, const wchar_t*, const CMassiveGrid*),
                    SetValue setValue) {
    CChromaCorrectCoef map;
    map.Resize(width, height);
    for (std::int32_t y = 0; y < height; ++y)
        for (std::int32_t x = 0; x < width; ++x)
            setValue(x, y, map.FindElement(x, y)->m);
    ASSERT_EQ(write(map, path.c_str(), nullptr), S_OK);
}

class BrightLoad : public ::testing::Test {
  protected:
    test::CTemporaryFolder folder;
    std::wstring path = folder.File(L"a.3fcoef");
    CCNewBrightCorrectCoef object;
};

TEST_F(BrightLoad, ValuesAreTruncatedAndWrap) {
    WriteFloatFile(path, 4, 1, Write3fCoefFile, [](std::int32_t x, std::int32_t, auto& m) {
        constexpr float kValues[] = {1.0F, 0.5F, 1.00001F, -0.5F};
        m[0] = kValues[x];
    });
    ASSERT_EQ(object.Create(4, 1), S_OK);
    EXPECT_EQ(object.LoadCoef(path.c_str()), S_OK);
    EXPECT_EQ(object.GetPixel3Word(0, 0).w[0], 65535);
    EXPECT_EQ(object.GetPixel3Word(1, 0).w[0], 32768); // 32767.5 + 0.5
    EXPECT_EQ(object.GetPixel3Word(2, 0).w[0], 0);
    EXPECT_EQ(object.GetPixel3Word(3, 0).w[0], 65536 - 32767); // −32767 towards zero
}

TEST_F(BrightLoad, LargerAndSmallerFiles) {
    WriteFloatFile(path, 60, 50, Write3fCoefFile, [](std::int32_t x, std::int32_t y, auto& m) {
        m[0] = static_cast<float>(x) / 65535.0F;
        m[4] = static_cast<float>(y) / 65535.0F;
    });
    ASSERT_EQ(object.Create(40, 24), S_OK);
    EXPECT_EQ(object.LoadCoef(path.c_str()), S_OK);
    EXPECT_EQ(object.GetPixel3Word(39, 23).w, (std::array<std::uint16_t, 3>{39, 23, 65535}));
    EXPECT_EQ(object.FindPixel(40, 23)->w, S3WordCoef{}.w); // not past the store's size
    ASSERT_EQ(object.Create(100, 100), S_OK);
    EXPECT_EQ(object.LoadCoef(path.c_str()), S_OK);
    EXPECT_EQ(object.GetPixel3Word(59, 49).w, (std::array<std::uint16_t, 3>{59, 49, 65535}));
    EXPECT_EQ(object.GetPixel3Word(60, 49).w, S3WordCoef{}.w);
    SPixelRect rect{90, 10, 0, 0};
    EXPECT_EQ(object.LoadCoefEx(path.c_str(), rect), S_OK);
    EXPECT_EQ(rect, (SPixelRect{90, 10, 100, 60}));
    EXPECT_EQ(object.GetPixel3Word(90, 10).w[0], 0);
    EXPECT_EQ(object.GetPixel3Word(99, 59).w, (std::array<std::uint16_t, 3>{9, 49, 65535}));
}

TEST_F(BrightLoad, BeforeCreateNothingIsConverted) {
    const std::wstring sample = Sample(L"cabinet/Cab_02.3fcoef");
    EXPECT_EQ(object.LoadCoef(sample.c_str()), E_FAIL);
    EXPECT_EQ(object.GetBlockListSize(), 0U);
    object.SetStoreOwner(nullptr);
    EXPECT_EQ(object.LoadCoef(sample.c_str()), E_POINTER);
    EXPECT_EQ(object.LoadCoef(Sample(L"cabinet/Cab_07.3wcoef").c_str()), E_POINTER);
}

// The result is the conversion's: a damaged file gives defaults and S_OK. The report tells.
TEST_F(BrightLoad, AFailedReadIsNotReported) {
    Bytes file = ReadFile(Sample(L"cabinet/Cab_02.3fcoef"));
    file.resize(file.size() - 10);
    WriteFile(path, file);
    test::CreateWithPattern(object, 60, 40);
    const CTransferReport cut;
    EXPECT_EQ(object.LoadCoef(path.c_str()), S_OK);
    EXPECT_EQ(cut.FailedRead(), E_FAIL);
    EXPECT_FALSE(cut.WasMemoryRefused());
    EXPECT_EQ(object.GetPixel3Word(39, 23).w, S3WordCoef{}.w);
    EXPECT_EQ(object.GetPixel3Word(40, 23).w, test::PatternElement<S3WordCoef>(40, 23).w);
    // The size is what the header claims, not cut to the store; the iteration cuts it.
    StoreLittle<std::uint16_t>(&file[20], 65535);
    StoreLittle<std::uint16_t>(&file[22], 65535);
    WriteFile(path, file);
    EXPECT_EQ(object.LoadCoef(path.c_str()), S_OK);
    EXPECT_EQ(object.GetPixel3Word(59, 39).w, S3WordCoef{}.w);
    // Without a size one pixel is converted.
    file[16] = std::byte{2};
    WriteFile(path, file);
    test::FillWithPattern(object);
    const CTransferReport newer;
    EXPECT_EQ(object.LoadCoef(path.c_str()), S_OK);
    EXPECT_EQ(newer.FailedRead(), E_COEF_BADFORMAT);
    EXPECT_EQ(object.GetPixel3Word(0, 0).w, S3WordCoef{}.w);
    EXPECT_EQ(object.GetPixel3Word(1, 0).w, test::PatternElement<S3WordCoef>(1, 0).w);
    // On an empty store the unclamped size of a failed read is cut to nothing, and fine.
    CCNewBrightCorrectCoef empty;
    EXPECT_EQ(empty.LoadCoef(path.c_str()), S_OK);
}

TEST_F(BrightLoad, SizesOfRecognisedFiles) {
    struct SCase {
        const wchar_t* name;
        Status bright;
        Status chroma;
    };
    const SCase cases[] = {
        {L"cabinet/Cab_01.9fcoef", S_OK, S_OK},
        {L"cabinet/Cab_02.3fcoef", S_OK, E_COEF_BADFORMAT},
        {L"cabinet/Cab_03.9bcoef", E_COEF_BADFORMAT, E_COEF_BADFORMAT},
        {L"cabinet/Cab_06.9wcoef", E_COEF_BADFORMAT, E_COEF_BADFORMAT},
        {L"cabinet/Cab_07.3wcoef", S_OK, E_COEF_BADFORMAT},
        {L"awkward/version_2.9fcoef", E_COEF_BADFORMAT, E_COEF_BADFORMAT},
    };
    for (const SCase& c : cases) {
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        EXPECT_EQ(object.GetBrightCoefSize(Sample(c.name).c_str(), width, height), c.bright);
        EXPECT_EQ(width, c.bright == S_OK ? 40U : 0U);
        EXPECT_EQ(height, c.bright == S_OK ? 24U : 0U);
        EXPECT_EQ(object.GetChromaCoefSize(Sample(c.name).c_str(), width, height), c.chroma);
    }
    // A `.9fcoef` file has a size and no place here.
    ASSERT_EQ(object.Create(40, 24), S_OK);
    EXPECT_EQ(object.LoadCoef(Sample(L"cabinet/Cab_01.9fcoef").c_str()), E_COEF_BADFORMAT);
    // Only the low 16 bits of the outputs are replaced, except from word files.
    std::uint32_t width = 0xABCD1234;
    std::uint32_t height = 0x56781234;
    EXPECT_EQ(object.GetBrightCoefSize(Sample(L"cabinet/Cab_02.3fcoef").c_str(), width, height),
              S_OK);
    EXPECT_EQ(width, 0xABCD0028U);
    EXPECT_EQ(height, 0x56780018U);
    EXPECT_EQ(object.GetBrightCoefSize(Sample(L"cabinet/Cab_07.3wcoef").c_str(), width, height),
              S_OK);
    EXPECT_EQ(width, 40U);
    EXPECT_EQ(object.GetCoefSize89(Sample(L"cabinet/Cab_03.9bcoef").c_str(), width, height), S_OK);
    EXPECT_EQ(object.GetCoefSize90(Sample(L"cabinet/Cab_04.3bcoef").c_str(), width, height), S_OK);
    EXPECT_EQ(object.GetCoefSize89(Sample(L"cabinet/Cab_04.3bcoef").c_str(), width, height),
              E_COEF_BADFORMAT);
    EXPECT_EQ(object.GetCoefSize90(nullptr, width, height), E_COEF_INVALIDARG);
}

TEST_F(BrightLoad, AHeaderWithoutASize) {
    const Bytes file = ReadFile(Sample(L"cabinet/Cab_02.3fcoef"));
    for (const std::size_t length : {16U, 19U, 23U}) {
        WriteFile(path, Bytes(file.begin(), file.begin() + static_cast<long>(length)));
        std::uint32_t width = 9;
        std::uint32_t height = 9;
        EXPECT_EQ(object.GetBrightCoefSize(path.c_str(), width, height), E_COEF_BADFORMAT);
        EXPECT_EQ(width, 9U);
    }
}

// A map image leaves its map without a size, so nothing is converted: S_OK whatever it holds.
template <class Object>
class MapImages : public ::testing::Test {};
TYPED_TEST_SUITE(MapImages, test::MapKinds);

TYPED_TEST(MapImages, AndFloatFilesAreTakenFromAStreamAsFromAPath) {
    constexpr bool kIsBright = test::KindOf<TypeParam>::kKind == kBright;
    const std::wstring floats =
        test::Sample(kIsBright ? L"cabinet/Cab_02.3fcoef" : L"cabinet/Cab_01.9fcoef");
    const test::CTemporaryFolder folder;
    const std::wstring path = folder.File(L"file");
    const std::string whole = test::ReadText(floats);
    const std::string image(reinterpret_cast<const char*>(kRawMapMagic.data()), 16);
    for (const std::string& bytes : {whole, whole.substr(0, whole.size() - 1), whole.substr(0, 20),
                                     image, image + std::string(1000, '\0')}) {
        test::WriteText(path, bytes);
        TypeParam fromPath;
        test::CreateWithPattern(fromPath, 40, 24);
        const std::wstring before = test::DigestOf(fromPath);
        const CTransferReport pathReport;
        const Status expected = fromPath.LoadCoef(path.c_str());
        TypeParam fromStream;
        test::CreateWithPattern(fromStream, 40, 24);
        std::istringstream stream("what stands before" + bytes);
        stream.seekg(18);
        CWordFileSource file(stream);
        const CTransferReport report;
        EXPECT_EQ(fromStream.LoadFile(file, 0, 0), expected);
        EXPECT_EQ(test::DigestOf(fromStream), test::DigestOf(fromPath));
        EXPECT_EQ(report.FailedRead(), pathReport.FailedRead());
        EXPECT_EQ(test::DigestOf(fromStream) != before, bytes.front() != image.front());
    }
}

TYPED_TEST(MapImages, GiveSuccessAndChangeNothing) {
    const test::CTemporaryFolder folder;
    const std::wstring path = folder.File(L"image");
    Bytes file(16);
    std::memcpy(file.data(), kRawMapMagic.data(), 16);
    TypeParam object;
    test::CreateWithPattern(object, 40, 24);
    const std::wstring before = test::DigestOf(object);
    WriteFile(path, file);
    const CTransferReport report;
    EXPECT_EQ(object.LoadCoef(path.c_str()), S_OK);
    EXPECT_EQ(report.MissingPixels(), 40U * 24U); // none got data
    EXPECT_EQ(report.FailedRead(), E_FAIL);       // the grids are not there
    file.resize(24 + 8 + 48 + 8 + 4);
    StoreLittle<std::uint16_t>(&file[20], 1);
    StoreLittle<std::uint16_t>(&file[22], 1);
    StoreLittle<std::uint64_t>(&file[24], 48);
    StoreLittle<std::uint64_t>(&file[80], 4);
    WriteFile(path, file);
    const std::uint64_t memory = CMemoryBudget::Process().Outstanding();
    const CTransferReport ofWhole;
    EXPECT_EQ(object.LoadCoef(path.c_str()), S_OK);
    EXPECT_EQ(ofWhole.FailedRead(), S_OK);
    EXPECT_EQ(CMemoryBudget::Process().Outstanding(), memory); // what the map held is gone
    EXPECT_EQ(test::DigestOf(object), before);
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    EXPECT_EQ(object.GetBrightCoefSize(path.c_str(), width, height), E_COEF_BADFORMAT);
    object.SetStoreOwner(nullptr);
    const CTransferReport storeless;
    EXPECT_EQ(object.LoadCoef(path.c_str()), S_OK);
    EXPECT_EQ(storeless.MissingPixels(), 0U);
}

class ChromaLoad : public ::testing::Test {
  protected:
    test::CTemporaryFolder folder;
    std::wstring path = folder.File(L"a.9fcoef");
    CCNewChromaCorrectCoef object;
};

TEST_F(ChromaLoad, SizesOfRecognisedFiles) {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    for (const wchar_t* name :
         {L"cabinet/Cab_01.9fcoef", L"cabinet/Cab_02.3fcoef", L"cabinet/Cab_06.9wcoef"}) {
        width = height = 0;
        EXPECT_EQ(object.GetChromaCoefSize(Sample(name).c_str(), width, height), S_OK);
        EXPECT_EQ(width, 40U);
        EXPECT_EQ(height, 24U);
    }
    EXPECT_EQ(object.GetChromaCoefSize(Sample(L"cabinet/Cab_07.3wcoef").c_str(), width, height),
              E_COEF_BADFORMAT);
    // Slot 87 takes `.3fcoef` headers only.
    EXPECT_EQ(object.GetBrightCoefSize(Sample(L"cabinet/Cab_02.3fcoef").c_str(), width, height),
              S_OK);
    for (const wchar_t* name :
         {L"cabinet/Cab_01.9fcoef", L"cabinet/Cab_06.9wcoef", L"cabinet/Cab_07.3wcoef"})
        EXPECT_EQ(object.GetBrightCoefSize(Sample(name).c_str(), width, height), E_COEF_BADFORMAT);
    // A `.3fcoef` file has a size and no place here.
    ASSERT_EQ(object.Create(40, 24), S_OK);
    EXPECT_EQ(object.LoadCoef(Sample(L"cabinet/Cab_02.3fcoef").c_str()), E_COEF_BADFORMAT);
}

/// Element k of pixel (x, y) of the files below, as the word that it becomes.
std::uint16_t FileWord(std::int32_t x, std::int32_t y, std::size_t k) {
    return static_cast<std::uint16_t>(x * 37 + y * 11 + static_cast<std::int32_t>(k) * 1009 + 1);
}

void SetFileValues(std::int32_t x, std::int32_t y, std::array<float, 12>& m) {
    for (std::size_t k = 0; k < 9; ++k)
        m[k] = static_cast<float>(FileWord(x, y, k)) / 65535.0F;
}

// The trailing values of a loaded pixel are the next pixel's first three, and their words spill
// over the next element of the block's memory where that was converted before.
TEST_F(ChromaLoad, SpillOfTwelveWords) {
    constexpr std::int32_t kWidth = 300;
    WriteFloatFile(path, kWidth, 3, Write9fCoefFile, SetFileValues);
    ASSERT_EQ(object.Create(kWidth, 3), S_OK);
    ASSERT_EQ(object.LoadCoef(path.c_str()), S_OK);
    for (std::int32_t y = 0; y < 3; ++y)
        for (std::int32_t x = 0; x < kWidth; ++x)
            for (std::size_t k = 0; k < 9; ++k) {
                // Column 255 spills over column 0 of the next row of the same block: the words are
                // those of pixel (256, y − 1).
                const bool isSpilled = x == 0 && y > 0 && k < 3;
                ASSERT_EQ(
                    object.FindPixel(static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y))
                        ->w[k],
                    isSpilled ? FileWord(256, y - 1, k) : FileWord(x, y, k))
                    << x << ", " << y << " word " << k;
            }
    // Past the right edge the padding keeps the spill of the last column: the next row's first.
    const auto padding = object.FindPixel(300, 0)->w;
    EXPECT_EQ(padding[0], FileWord(0, 1, 0));
    EXPECT_EQ(padding[2], FileWord(0, 1, 2));
    EXPECT_EQ(padding[3], 0);
    // The last pixel of the file has none behind it: 0, 1, 0.
    EXPECT_EQ(object.FindPixel(300, 2)->w,
              (std::array<std::uint16_t, 9>{0, 65535, 0, 0, 65535, 0, 0, 0, 65535}));
}

TEST_F(ChromaLoad, TheSpillStopsAtTheBlocksEnd) {
    WriteFloatFile(path, 256, 256, Write9fCoefFile, SetFileValues);
    ASSERT_EQ(object.Create(256, 256), S_OK);
    ASSERT_EQ(object.LoadCoef(path.c_str()), S_OK);
    // Pixel (255, 127) is the last element of its block; (0, 128) opens the next one.
    EXPECT_EQ(object.GetPixel9Word(255, 127).w[8], FileWord(255, 127, 8));
    for (std::size_t k = 0; k < 9; ++k)
        EXPECT_EQ(object.GetPixel9Word(0, 128).w[k], FileWord(0, 128, k));
    EXPECT_EQ(object.GetPixel9Word(0, 127).w[0], FileWord(0, 127, 0)); // the file's next pixel too
}

TEST_F(ChromaLoad, BeforeCreateAndWithoutAStore) {
    const std::wstring sample = Sample(L"cabinet/Cab_01.9fcoef");
    EXPECT_EQ(object.LoadCoef(sample.c_str()), E_FAIL);
    object.SetStoreOwner(nullptr);
    EXPECT_EQ(object.LoadCoef(sample.c_str()), E_POINTER);
    EXPECT_EQ(object.LoadCoef(Sample(L"cabinet/Cab_06.9wcoef").c_str()), E_POINTER);
}

TEST_F(ChromaLoad, AFailedReadIsNotReported) {
    test::CreateWithPattern(object, 60, 40);
    const CTransferReport report;
    EXPECT_EQ(object.LoadCoef(Sample(L"cabinet/Cab_01.9fcoef").c_str()), S_OK);
    EXPECT_EQ(report.FailedRead(), S_OK);
    EXPECT_EQ(object.LoadCoef(Sample(L"awkward/cut_short.9fcoef").c_str()), S_OK);
    EXPECT_EQ(report.FailedRead(), E_FAIL);
    EXPECT_EQ(object.GetPixel9Word(0, 0).w, S9WordCoef{}.w);
    test::FillWithPattern(object);
    EXPECT_EQ(object.LoadCoef(Sample(L"awkward/version_2.9fcoef").c_str()), S_OK);
    EXPECT_EQ(object.GetPixel9Word(0, 0).w, S9WordCoef{}.w);
    EXPECT_EQ(object.GetPixel9Word(2, 0).w, test::PatternElement<S9WordCoef>(2, 0).w);
}

// ---- slots 80 and 86 of the virtual-green kinds ----

template <class Object>
class GreenLegacy : public ::testing::Test {};
TYPED_TEST_SUITE(GreenLegacy, test::GreenKinds);

TYPED_TEST(GreenLegacy, TheMatrixGoesOutAndInAndTheGreenWordsStay) {
    const test::CTemporaryFolder folder;
    const std::wstring path = folder.File(L"a.9fcoef");
    TypeParam source;
    test::CreateWithPattern(source, 300, 140);
    ASSERT_EQ(source.SaveLegacy86(path.c_str()), S_OK);
    CChromaCorrectCoef map;
    map.Resize(300, 140);
    ASSERT_GE(Read9fCoefFile(map, path.c_str()), 0);
    TypeParam target;
    ASSERT_EQ(target.Create(300, 140), S_OK);
    ASSERT_EQ(target.LoadLegacy80(path.c_str()), S_OK);
    const bool isBright = test::kWordsOf<TypeParam> == 4;
    const std::array<int, 12> mapValue =
        isBright ? std::array<int, 12>{0, 4, -1, 8}
                 : std::array<int, 12>{0, 1, -1, 2, 3, 4, -1, 5, 6, 7, -1, 8};
    for (std::uint32_t y = 0; y < 140; ++y)
        for (std::uint32_t x = 0; x < 300; ++x)
            for (std::size_t k = 0; k < test::kWordsOf<TypeParam>; ++k) {
                const std::uint16_t stored = test::WordsAt(target, x, y)[k];
                if (mapValue[k] < 0) {
                    ASSERT_EQ(stored, test::ElementOf<TypeParam>{}.w[k]);
                    continue;
                }
                ASSERT_EQ(stored, test::PatternWord(x, y, k));
                ASSERT_EQ(
                    map.FindElement(static_cast<std::int32_t>(x), static_cast<std::int32_t>(y))
                        ->m[static_cast<std::size_t>(mapValue[k])],
                    static_cast<float>(stored) / 65535.0F);
            }
    EXPECT_EQ(target.LoadLegacy80(nullptr), E_COEF_INVALIDARG);
    EXPECT_EQ(target.LoadLegacy80(Sample(L"cabinet/Cab_02.3fcoef").c_str()), E_COEF_BADFORMAT);
    EXPECT_EQ(target.SaveLegacy86(nullptr), E_COEF_INVALIDARG);
}

} // namespace
} // namespace trevolt
