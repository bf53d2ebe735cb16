// What every slot answers in every kind, from one table: a kind that offers a slot does its work on
// fitting arguments; any other gives exactly its default and changes nothing.
#include <algorithm>
#include <functional>
#include <map>
#include <sstream>
#include <string_view>

#include <gtest/gtest.h>

#include "calibuf/ChunkLayout.h"
#include "tests/coef/CoefObjects.h"
#include "tests/support/TestFiles.h"
#include "trevolt/ChromaCorrectCoef.h"

namespace trevolt {
namespace {

using test::Sample;

std::string Text(Status status) { return StatusName(status); }
template <std::size_t N>
std::string Text(const std::array<std::uint16_t, N>& words) {
    std::ostringstream text;
    for (const std::uint16_t word : words)
        text << word << ' ';
    return text.str();
}

/// What a slot works on: an object of 40 × 24 pixels, files that fit, and room for what it gives.
struct SScene {
    explicit SScene(CColorCorrectCoef& coef) : object(coef) {}

    CColorCorrectCoef& object;
    test::CTemporaryFolder folder;
    std::wstring out = folder.File(L"out");
    std::vector<std::uint16_t> words = std::vector<std::uint16_t>(40 * 24 * 12, 4711);
    std::vector<float> floats = std::vector<float>(40 * 24 * 12, 0.5F);
    std::vector<std::uint8_t> bytes = std::vector<std::uint8_t>(40 * 24 * 12, 128);
    SPixelRect rect{0, 0, 40, 24};
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint64_t directory = 0;
    std::uint64_t data = 0;
    std::uint8_t flag = 0;
    std::array<std::byte, 16> name{};
    std::stringstream stream;

    /// Whether everything that a call may write to is as it was made.
    ::testing::AssertionResult IsUntouched() const {
        const auto all = [](const auto& values, auto value) {
            return std::all_of(values.begin(), values.end(), [&](auto v) { return v == value; });
        };
        if (!all(words, 4711) || !all(floats, 0.5F) || !all(bytes, 128))
            return ::testing::AssertionFailure() << "a buffer has changed";
        if (rect != SPixelRect{0, 0, 40, 24} || width != 0 || height != 0)
            return ::testing::AssertionFailure() << "a size has changed";
        if (directory != 0 || data != 0 || flag != 0 || !all(name, std::byte{0}))
            return ::testing::AssertionFailure() << "a position or owner data have changed";
        if (!folder.Names().empty())
            return ::testing::AssertionFailure() << "there is a file";
        return ::testing::AssertionSuccess();
    }
};

using Call = std::function<std::string(SScene&)>;

const std::wstring k9f = Sample(L"cabinet/Cab_01.9fcoef");
const std::wstring k3f = Sample(L"cabinet/Cab_02.3fcoef");
const std::wstring k9b = Sample(L"cabinet/Cab_03.9bcoef");
const std::wstring k3b = Sample(L"cabinet/Cab_04.3bcoef");
const std::wstring kText = Sample(L"cabinet/Cab_05.cccoef");
const std::wstring k9w = Sample(L"cabinet/Cab_06.9wcoef");
const std::wstring k3w = Sample(L"cabinet/Cab_07.3wcoef");
const std::wstring k4w = Sample(L"cabinet/Cab_08.4wcoef");
const std::wstring k12w = Sample(L"cabinet/Cab_09.12wcoef");

#define CALL(expression) [](SScene& s) { return Text(s.object.expression); }

/// A call for every slot that not all kinds offer.
std::map<int, Call> Calls() {
    std::map<int, Call> calls{
        {9, CALL(SetPixel12Word(1, 2, {}))},
        {10, CALL(SetRect4WordU16(0, 0, 40, 24, s.words.data()))},
        {11, CALL(SetRect12WordEx(0, 0, 40, 24, s.words.data(), 40))},
        {12, CALL(SetPixel4Word(1, 2, {}))},
        {13, CALL(GetRect4Word(0, 0, 40, 24, s.words.data()))},
        {14, CALL(SetRect4WordRaw(s.rect, s.words.data()))},
        {16, CALL(SetPixel10Word(1, 2, {}, 3))},
        {17, CALL(SetPixelExtraWord(1, 2, 3))},
        {18, CALL(SetRect9WordU16(0, 0, 40, 24, s.words.data()))},
        {19, CALL(GetRect10Word(0, 0, 40, 24, s.words.data()))},
        {20, CALL(SetRectFromBytes(0, 0, 40, 24, s.bytes.data(), 255))},
        {21, CALL(SetPixel9Word(1, 2, {}))},
        {22, CALL(SetRectFromMatrixFloat(0, 0, 40, 24, s.floats.data()))},
        {23, CALL(GetRect9Word(0, 0, 40, 24, s.words.data()))},
        {24, CALL(SetRect9WordEx(0, 0, 40, 24, s.words.data(), 40))},
        {25, CALL(SetPixel3Word(1, 2, {}))},
        {26, CALL(SetRectFromFloat3(0, 0, 40, 24, s.floats.data()))},
        {27, CALL(GetRect3Word(0, 0, 40, 24, s.words.data()))},
        {28, CALL(SetRect3WordEx(0, 0, 40, 24, s.words.data(), 40))},
        {30, CALL(TransferRect9WordEx(0, 0, 40, 24, s.words.data(), 40, true))},
        {31, CALL(SetRectExtraWord(0, 0, 40, 24, s.words.data()))},
        {32, CALL(SetRect9Word(0, 0, 40, 24, s.words.data()))},
        {33, CALL(GetPixel9Word(3, 4).w)},
        {34, CALL(SetRect3Word(0, 0, 40, 24, s.words.data()))},
        {35, CALL(GetPixel3Word(3, 4).w)},
        {38, CALL(ConvertRect38(s.rect))},
        {39, CALL(ConvertRect39(s.rect))},
        {40, CALL(ConvertRect40(s.rect))},
        {41, CALL(ConvertRect41(s.rect))},
        {42, CALL(ApplyToStore42())},
        {43, CALL(ApplyToStore43())},
        {47, CALL(LoadFromTextA(kText.c_str(), 0, 0, s.width, s.height))},
        {48, CALL(LoadFromTextB(kText.c_str(), 0, 0, s.width, s.height))},
        {49, CALL(ImportTable49(k9f.c_str(), s.rect, true, nullptr))},
        {50, CALL(ImportTable50(k3f.c_str(), s.rect, true, nullptr))},
        {51, CALL(ImportTable51(k9b.c_str(), s.rect, true, nullptr))},
        {52, CALL(ImportTable52(k3b.c_str(), s.rect, true, nullptr))},
        {53, CALL(ImportTable53(k9f.c_str(), 0, 0))},
        {54, CALL(ImportTable54(k3f.c_str(), 0, 0))},
        {55, CALL(ImportTable55(k9b.c_str(), 0, 0))},
        {56, CALL(ImportTable56(k3b.c_str(), 0, 0))},
        {57, CALL(ImportTable57(k9f.c_str(), nullptr))},
        {58, CALL(ImportTable58(k9b.c_str()))},
        {67, [](SScene& s) {
             CChromaCorrectCoef map;
             map.Resize(40, 24);
             return Text(s.object.ImportFromView(&map, s.rect));
         }},
        {68, CALL(ImportFromWords(0, 0, 40, 24, s.words.data()))},
        {72, CALL(SaveCoefKind72(s.out.c_str(), s.rect))},
        {73, CALL(SaveCoefKind73(s.out.c_str(), s.rect))},
        {74, CALL(SaveCoefKind74(s.out.c_str(), s.rect))},
        {75, CALL(SaveCoefKind75(s.out.c_str(), s.rect))},
        {76, CALL(SaveCoefKind76(s.out.c_str()))},
        {77, CALL(SaveCoefKind77(s.out.c_str()))},
        {78, CALL(LoadLegacyEx(k9b.c_str(), s.rect))},
        {79, CALL(LoadLegacy(k3f.c_str()))},
        {81, CALL(SaveLegacy81(s.out.c_str(), s.rect, 1))},
        {82, CALL(SaveLegacy82(s.out.c_str(), s.rect, 1))},
        {83, CALL(SaveLegacy83(s.out.c_str(), s.rect, 1))},
        {84, CALL(SaveLegacy84(s.out.c_str(), s.rect, 1))},
        {85, CALL(SaveLegacy85(s.out.c_str()))},
        {87, CALL(GetBrightCoefSize(k3f.c_str(), s.width, s.height))},
        {88, CALL(GetChromaCoefSize(k9f.c_str(), s.width, s.height))},
        {89, CALL(GetCoefSize89(k9b.c_str(), s.width, s.height))},
        {90, CALL(GetCoefSize90(k3b.c_str(), s.width, s.height))},
        {91, CALL(GetCoefSize91(kText.c_str(), s.width, s.height))},
        {92, CALL(GetBrightCoefInfo(k3w.c_str(), s.name.data(), 16, s.flag))},
        {93, CALL(GetChromaCoefInfo(k9w.c_str(), s.name.data(), 16, s.flag))},
        {94, CALL(GetVBCoefInfo(k4w.c_str(), s.name.data(), 16, s.flag))},
        {95, CALL(GetVCCoefInfo(k12w.c_str(), s.name.data(), 16, s.flag))},
        {96, CALL(LoadLegacy96(k3f.c_str(), 0, 0, nullptr))},
        {97, CALL(LoadLegacy97(k9f.c_str(), 0, 0, nullptr))},
        {99, CALL(Process99(s.rect))},
        {100, CALL(Process100(s.rect))},
        {101, CALL(Process101(s.rect))},
        {102, CALL(Process102(s.rect))},
        {103, CALL(Process103(s.rect))},
        {104, CALL(Process104(s.rect))},
        {105, CALL(SaveBlocks105(s.stream))},
        {106, CALL(SaveBlocks106(s.stream, s.rect))},
        {110, CALL(SetRect4WordVB(0, 0, 40, 24, s.words.data(), 40))},
        {111, CALL(GetPixel4Word(3, 4).w)},
        {112, CALL(SetRect12WordVC(s.rect, s.words.data()))},
        {113, CALL(GetPixel12Word(3, 4).w)},
        {114, CALL(GetVBCoefSize(k4w.c_str(), s.width, s.height))},
        {115, CALL(GetVCCoefSize(k12w.c_str(), s.width, s.height))},
        {118, [](SScene& s) {
             const SChunkHeader header{.formatId = kChromaChunkFormat2};
             const ChunkHeaderBytes bytes = EncodeChunkHeader(header);
             s.stream.write(reinterpret_cast<const char*>(bytes.data()), bytes.size());
             SChunkHeader got{.width = 7};
             const Status status = s.object.ReadChunkHeader2(s.stream, got);
             EXPECT_EQ(got.width, Failed(status) ? 7U : 0U);
             return Text(status);
         }},
        {119, CALL(CopyRectFrom119({s.words.data(), 40, 24, 40}, 0, 0))},
        {120, CALL(CopyRectFrom120({s.words.data(), 40, 24, 40}, 0, 0))},
        {121, [](SScene& s) {
             SStoreInfo info;
             const Status status = s.object.GetStoreInfo(info);
             EXPECT_EQ(info == SStoreInfo{}, Failed(status));
             return Text(status);
         }},
        {123, CALL(CopyRectOut123(0, 0, {s.words.data(), 40, 24, 40}))},
        {124, CALL(WriteChunks2(s.stream, s.rect, nullptr, nullptr))},
    };
    // The readers of a bare chunk stream read what the kind itself has written.
    const auto written = [](SScene& s) {
        DropStatus(s.object.SaveBlocks105(s.stream)); // without a store there is nothing to read
        s.stream.seekg(0);
    };
    calls[107] = [written](SScene& s) {
        written(s);
        return Text(s.object.LoadBlocks107(s.stream, 0, 0));
    };
    calls[108] = [written](SScene& s) {
        written(s);
        return Text(s.object.LoadBlocks108(s.stream, 0, 0, 10, 10));
    };
    calls[109] = [written](SScene& s) {
        written(s);
        return Text(s.object.LoadBlocks109(s.stream, 0, 0, 0, 1));
    };
    // The turned writers, a pair a kind.
    calls[59] = CALL(SaveTurnedBandB(s.out.c_str(), s.rect, 2, s.rect, s.directory, s.data, 0,
                                     nullptr, nullptr));
    calls[60] = CALL(SaveTurnedFileB(s.out.c_str(), s.rect, 1, nullptr, nullptr));
    calls[61] = CALL(SaveTurnedBandC(s.out.c_str(), s.rect, 2, s.rect, s.directory, s.data, 0,
                                     nullptr, nullptr));
    calls[62] = CALL(SaveTurnedFileC(s.out.c_str(), s.rect, 1, nullptr, nullptr));
    calls[63] = CALL(SaveTurnedBandVB(s.out.c_str(), s.rect, 2, s.rect, s.directory, s.data, 0,
                                      nullptr, nullptr));
    calls[64] = CALL(SaveTurnedFileVB(s.out.c_str(), s.rect, 1, nullptr, nullptr));
    calls[65] = CALL(SaveTurnedBandVC(s.out.c_str(), s.rect, 2, s.rect, s.directory, s.data, 0,
                                      nullptr, nullptr));
    calls[66] = CALL(SaveTurnedFileVC(s.out.c_str(), s.rect, 1, nullptr, nullptr));
    return calls;
}

/// The answers of kinds that do not offer a slot, in figures of their own.
std::string DefaultAnswer(int slot) {
    switch (slot) {
    case 33:
        return "65535 0 0 0 65535 0 0 0 65535 ";
    case 35:
        return "65535 65535 65535 ";
    case 111:
        return "65535 65535 65535 65535 ";
    case 113:
        return "65535 0 0 0 0 65535 65535 0 0 0 0 65535 ";
    default:
        return slot >= 118 && slot <= 124 ? "E_COEF_NOTIMPL" : "E_FAIL";
    }
}

struct SRangeAnswer {
    int first;
    int last;
    const char* answer;
};

/// The answers of kinds that do offer a slot, to an object without a (matrix) store.
std::string AnswerWithoutStore(int slot) {
    constexpr SRangeAnswer kAnswers[] = {
        {31, 31, "S_OK"}, // the extra-word store is there, and empty
        {32, 32, "E_COEF_NOBUFFER"},
        {34, 34, "E_COEF_NOBUFFER"},
        {59, 66, "E_COEF_INVALIDARG"},
        {87, 95, "S_OK"}, // these read a file and not the store
        {105, 109, "E_POINTER"},
        {114, 115, "S_OK"},
        {118, 118, "S_OK"},
        {119, 123, "E_FAIL"},
        {124, 124, "E_POINTER"},
    };
    for (const SRangeAnswer& range : kAnswers)
        if (slot >= range.first && slot <= range.last)
            return range.answer;
    return DefaultAnswer(slot);
}

/// Which kinds offer which slots: B brightness, C chroma, V virtual-green brightness, W virtual-green
/// chroma.
struct SOffer {
    int first;
    int last;
    const char* kinds;
};

constexpr SOffer kOffers[] = {
    {1, 8, "BCVW"},     {9, 9, "W"},      {10, 10, "VW"},   {11, 11, "W"},    {12, 14, "V"},
    {15, 15, "BCVW"},   {16, 19, "C"},    {20, 20, "BC"},   {21, 21, "C"},    {22, 22, "BC"},
    {23, 24, "C"},      {25, 28, "B"},    {29, 29, "BCVW"}, {30, 32, "C"},    {33, 33, "CW"},
    {34, 35, "B"},      {36, 37, "BCVW"}, {38, 43, ""},     {44, 46, "BCVW"}, {47, 58, "BC"},
    {59, 60, "B"},      {61, 62, "C"},    {63, 64, "V"},    {65, 66, "W"},    {67, 68, "BC"},
    {69, 71, "BCVW"},   {72, 75, "BC"},   {76, 76, "C"},    {77, 77, "B"},    {78, 79, "BC"},
    {80, 80, "BCVW"},   {81, 81, "BC"},   {82, 82, "C"},    {83, 83, "B"},    {84, 85, "BC"},
    {86, 86, "BCVW"},   {87, 91, "BC"},   {92, 92, "B"},    {93, 93, "C"},    {94, 94, "V"},
    {95, 95, "W"},      {96, 96, "B"},    {97, 97, "C"},    {98, 98, "BCVW"}, {99, 104, ""},
    {105, 109, "BC"},   {110, 111, "V"},  {112, 113, "W"},  {114, 114, "V"},  {115, 115, "W"},
    {116, 117, "BCVW"}, {118, 119, "C"},  {120, 120, "B"},  {121, 121, "BC"}, {122, 122, "BCVW"},
    {123, 123, "BCW"},  {124, 124, "C"},
};

/// The kinds as the list of slots has them.
unsigned OfferedBy(int slot) {
    unsigned kinds = 0;
    for (const SOffer& offer : kOffers)
        if (slot >= offer.first && slot <= offer.last)
            for (const char kind : std::string_view(offer.kinds))
                kinds |= 1U << std::string_view("BCVW").find(kind);
    return kinds;
}

struct SSlot {
    int number;
    const char* name;
    unsigned kinds;
};

constexpr SSlot kListedSlots[] = {
#define TAKE_SLOT(slot, name, kinds) {slot, #name, kinds},
    TREVOLT_COEF_SLOTS(TAKE_SLOT)
#undef TAKE_SLOT
};

/// The listed slots with the kinds that should offer them.
const std::vector<SSlot> kSlots = [] {
    std::vector<SSlot> slots(std::begin(kListedSlots), std::end(kListedSlots));
    for (SSlot& slot : slots)
        slot.kinds = OfferedBy(slot.number);
    return slots;
}();

// The list is what the virtual table's test and the slots' page go by.
TEST(SlotList, NamesTheKindsThatOfferASlot) {
    int number = 0;
    for (const SSlot& slot : kListedSlots) {
        EXPECT_EQ(slot.number, ++number);
        EXPECT_EQ(slot.kinds, OfferedBy(slot.number)) << slot.name;
    }
    EXPECT_EQ(number, 124);
}

template <class Object>
class SlotAnswers : public ::testing::Test {};
TYPED_TEST_SUITE(SlotAnswers, test::AllKinds);

TYPED_TEST(SlotAnswers, OfferedSlotsWorkAndOthersGiveTheirDefault) {
    const auto calls = Calls();
    for (const SSlot& slot : kSlots) {
        const auto call = calls.find(slot.number);
        if (slot.kinds == kAllKinds) {
            EXPECT_EQ(call, calls.end()) << slot.name;
            continue;
        }
        ASSERT_NE(call, calls.end()) << slot.name;
        TypeParam object;
        object.SetFileKind(2);
        test::CreateWithPattern(object, 40, 24);
        const std::wstring before = test::DigestOf(object);
        SScene scene(object);
        const std::string answer = call->second(scene);
        if ((slot.kinds & test::KindOf<TypeParam>::kKind) != 0) {
            EXPECT_NE(answer, DefaultAnswer(slot.number)) << slot.name;
            if (slot.number != 33 && slot.number != 35 && slot.number != 111 &&
                slot.number != 113) {
                EXPECT_EQ(answer, "S_OK") << slot.name;
            }
            continue;
        }
        EXPECT_EQ(answer, DefaultAnswer(slot.number)) << slot.name;
        EXPECT_EQ(test::DigestOf(object), before) << slot.name;
        EXPECT_TRUE(scene.IsUntouched()) << slot.name;
        if (slot.number != 118) { // that one's call makes what is to be read
            EXPECT_TRUE(scene.stream.str().empty()) << slot.name;
        }
    }
}

// Without a store every slot that needs one says so and changes nothing.
TYPED_TEST(SlotAnswers, SlotsWithoutAStoreFail) {
    TypeParam object;
    object.SetStoreOwner(nullptr);
    SScene s(object);
    std::wstring text = L"as it was";
    EXPECT_EQ(object.Create(4, 4), E_FAIL);
    EXPECT_EQ(object.GetWidth(), 0U);
    EXPECT_EQ(object.GetHeight(), 0U);
    EXPECT_EQ(object.GetRectBlockCount({0, 0, 256, 128}), 0U);
    EXPECT_EQ(object.GetBlockListSize(), 0U);
    EXPECT_EQ(object.SetBufferMode(true), E_FAIL);
    EXPECT_FALSE(object.FillRectChannel(0, 0, 0, 1, 1, 1.0F, 0));
    EXPECT_FALSE(object.SetPixelChannel(0, 0, 0, 2.0F, 0));
    EXPECT_EQ(object.GetRectFloatEx(0, s.rect, s.floats.data()), E_FAIL);
    EXPECT_EQ(object.SetRectChannelFloat(0, 0, 0, 1, 1, s.floats.data()), E_FAIL);
    EXPECT_EQ(object.GetRectChannelFloat(0, 0, 0, 1, 1, s.floats.data()), E_FAIL);
    EXPECT_EQ(object.GetRectChannelFloat98(0, 0, 0, 1, 1, s.floats.data(), 1), E_FAIL);
    EXPECT_EQ(object.GetPixelChannelFloat(0, 0, 0), 1.0F);
    EXPECT_EQ(object.ExportCoefEx(s.out.c_str(), s.rect, s.rect, s.directory, s.data, 0, nullptr,
                                  nullptr),
              E_POINTER);
    EXPECT_EQ(object.ExportCoef(s.out.c_str(), s.rect, nullptr, nullptr), E_POINTER);
    EXPECT_EQ(object.ExportCoef((s.out + L".9wPCoef").c_str(), s.rect, nullptr, nullptr),
              E_POINTER);
    EXPECT_EQ(object.ExportCoefDefault(s.out.c_str()), E_POINTER);
    EXPECT_EQ(object.LoadLegacy80(k9f.c_str()), E_FAIL);
    EXPECT_EQ(object.SaveLegacy86(s.out.c_str()), E_FAIL);
    EXPECT_EQ(object.GetStoreDigest(text), E_FAIL);
    EXPECT_EQ(text, L"as it was");
    EXPECT_EQ(object.LoadStoreImage(s.name.data()), E_FAIL);
    EXPECT_EQ(object.LoadBoundedStoreImage(s.name.data(), s.name.size()), E_FAIL);
    EXPECT_EQ(object.SaveStoreImage(s.name.data(), 0, 0), E_FAIL);
    EXPECT_EQ(object.MaxStoreImageBytes(), 0U);
    EXPECT_TRUE(s.folder.Names().empty());

    const auto calls = Calls();
    for (const SSlot& slot : kSlots)
        if (slot.kinds != kAllKinds && (slot.kinds & test::KindOf<TypeParam>::kKind) != 0) {
            TypeParam storeless;
            storeless.SetFileKind(2);
            storeless.SetStoreOwner(nullptr);
            SScene scene(storeless);
            const std::string expected =
                slot.number == 33 && std::is_same_v<TypeParam, CVirtualGreenChromaCorrectCoef>
                    ? DefaultAnswer(33)
                    : AnswerWithoutStore(slot.number);
            EXPECT_EQ(calls.at(slot.number)(scene), expected) << slot.name;
            EXPECT_TRUE(scene.folder.Names().empty()) << slot.name;
        }
}

} // namespace
} // namespace trevolt
