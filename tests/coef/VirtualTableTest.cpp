// The order of the virtual operations, read from the compiled code. Under the Itanium C++ ABI, which
// g++ follows on both systems, a pointer to a virtual member function holds the byte offset of its
// entry, with a lowest bit that marks it as virtual there or, on ARM, in the adjustment behind it; and
// the destructor takes two entries: slot n is entry n + 1.
#include <cstring>
#include <type_traits>

#include <gtest/gtest.h>

#include "coef/CNewBrightCorrectCoef.h"
#include "coef/CNewChromaCorrectCoef.h"
#include "coef/ColorCorrectCoefSlots.h"
#include "coef/VirtualGreenBrightCorrectCoef.h"
#include "coef/VirtualGreenChromaCorrectCoef.h"

namespace trevolt {
namespace {

template <class Member>
std::size_t EntryOf(Member member) {
    struct {
        std::ptrdiff_t pointer;
        std::ptrdiff_t adjustment;
    } parts{};
    static_assert(sizeof parts == sizeof member);
    std::memcpy(&parts, &member, sizeof parts);
    constexpr std::ptrdiff_t kMark = 1;
    EXPECT_EQ((parts.pointer & kMark) + (parts.adjustment & kMark), 1) << "not virtual";
    EXPECT_EQ(parts.adjustment & ~kMark, 0);
    return static_cast<std::size_t>(parts.pointer & ~kMark) / sizeof(void*);
}

void* const* TableOf(const CColorCorrectCoef& object) {
    void* const* table = nullptr;
    std::memcpy(&table, static_cast<const void*>(&object), sizeof table);
    return table;
}

TEST(VirtualTable, EveryOperationStandsAtItsSlot) {
#define EXPECT_SLOT(slot, name, kinds)                                                             \
    EXPECT_EQ(EntryOf(&CColorCorrectCoef::name), std::size_t{slot} + 1) << #name;
    TREVOLT_COEF_SLOTS(EXPECT_SLOT)
#undef EXPECT_SLOT
}

TEST(VirtualTable, TheChromaKindHasTwoMore) {
#define EXPECT_SLOT(slot, name, kinds)                                                             \
    EXPECT_EQ(EntryOf(&CCNewChromaCorrectCoef::name), std::size_t{slot} + 1) << #name;
    TREVOLT_CHROMA_SLOTS(EXPECT_SLOT)
#undef EXPECT_SLOT
}

TEST(VirtualTable, SlotsAreListedOnceInOrder) {
    std::vector<int> slots;
#define TAKE_SLOT(slot, name, kinds) slots.push_back(slot);
    TREVOLT_COEF_SLOTS(TAKE_SLOT)
    TREVOLT_CHROMA_SLOTS(TAKE_SLOT)
#undef TAKE_SLOT
    ASSERT_EQ(slots.size(), 126U);
    for (std::size_t i = 0; i < slots.size(); ++i)
        EXPECT_EQ(slots[i], static_cast<int>(i) + 1);
}

// Callers take an entry from the object's own table and call it with the object as first argument.
TEST(VirtualTable, EntriesAnswerWhenCalledByNumber) {
    CCNewBrightCorrectCoef bright;
    CCNewChromaCorrectCoef chroma;
    CVirtualGreenBrightCorrectCoef greenBright;
    CVirtualGreenChromaCorrectCoef greenChroma;
    for (CColorCorrectCoef* object :
         std::initializer_list<CColorCorrectCoef*>{&bright, &chroma, &greenBright, &greenChroma}) {
        using Create = Status (*)(CColorCorrectCoef*, std::uint16_t, std::uint16_t);
        using GetExtent = std::uint32_t (*)(const CColorCorrectCoef*);
        using Convert = Status (*)(CColorCorrectCoef*);
        void* const* const table = TableOf(*object);
        EXPECT_EQ(reinterpret_cast<Create>(table[1 + 1])(object, 300, 140), S_OK);
        EXPECT_EQ(reinterpret_cast<GetExtent>(table[2 + 1])(object), 300U);
        EXPECT_EQ(reinterpret_cast<GetExtent>(table[3 + 1])(object), 140U);
        EXPECT_EQ(reinterpret_cast<GetExtent>(table[5 + 1])(object), 4U);
        EXPECT_EQ(reinterpret_cast<Convert>(table[42 + 1])(object), E_FAIL);
    }
    using SetMode = void (*)(CColorCorrectCoef*, std::uint32_t);
    reinterpret_cast<SetMode>(TableOf(chroma)[126 + 1])(&chroma, 7);
    EXPECT_EQ(chroma.ChromaMode(), 7U);
}

// A caller by number hands over just these: what more an operation took would be read from wherever
// the caller left something else.
static_assert(std::is_same_v<decltype(&CColorCorrectCoef::LoadStoreImage),
                             Status (CColorCorrectCoef::*)(const std::byte*)>);
static_assert(
    std::is_same_v<decltype(&CColorCorrectCoef::SaveStoreImage),
                   Status (CColorCorrectCoef::*)(std::byte*, std::uint32_t, std::uint32_t) const>);

TEST(VirtualTable, ImagesGoThroughTheirEntries) {
    using Load = Status (*)(CColorCorrectCoef*, const std::byte*);
    using Save = Status (*)(const CColorCorrectCoef*, std::byte*, std::uint32_t, std::uint32_t);
    CVirtualGreenBrightCorrectCoef object;
    ASSERT_EQ(object.Create(3, 2), S_OK);
    ASSERT_EQ(object.SetPixel4Word(2, 1, {{1, 2, 3, 4}}), S_OK);
    std::vector<std::byte> image(object.MaxStoreImageBytes());
    EXPECT_EQ(reinterpret_cast<Save>(TableOf(object)[122 + 1])(&object, image.data(), 0, 0), S_OK);
    CVirtualGreenBrightCorrectCoef loaded;
    ASSERT_EQ(loaded.Create(3, 2), S_OK);
    EXPECT_EQ(reinterpret_cast<Load>(TableOf(loaded)[117 + 1])(&loaded, image.data()), S_OK);
    EXPECT_EQ(loaded.GetPixel4Word(2, 1).w, (std::array<std::uint16_t, 4>{1, 2, 3, 4}));
}

// Slot 0, the destructor, is the deleting form behind the complete one.
TEST(VirtualTable, TheDestructorIsSlotZero) {
    auto* object = new CCNewBrightCorrectCoef;
    using Destroy = void (*)(CColorCorrectCoef*);
    reinterpret_cast<Destroy>(TableOf(*object)[0 + 1])(object); // a leak or a double free shows
}

} // namespace
} // namespace trevolt
