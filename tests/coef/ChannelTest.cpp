// Single channels and pixels: which word a channel number means in each kind, wrapping beside
// clamping, and the transfer table.
#include <algorithm>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "tests/coef/CoefObjects.h"

namespace trevolt {
namespace {

template <class Object>
class Channels : public ::testing::Test {};
TYPED_TEST_SUITE(Channels, test::AllKinds);

TYPED_TEST(Channels, AFreshObjectHasDefaults) {
    TypeParam object;
    EXPECT_EQ(object.GetWidth(), 0U);
    EXPECT_EQ(object.GetHeight(), 0U);
    EXPECT_EQ(object.GetBlockListSize(), 0U);
    EXPECT_EQ(object.GetPixel3Word(0, 0).w, S3WordCoef{}.w);
    EXPECT_EQ(object.GetPixel9Word(7, 7).w, S9WordCoef{}.w);
    EXPECT_EQ(object.GetPixel4Word(7, 7).w, S4WordCoef{}.w);
    EXPECT_EQ(object.GetPixel12Word(7, 7).w, S12WordCoef{}.w);
    ASSERT_EQ(object.Create(257, 129), S_OK);
    EXPECT_EQ(object.GetWidth(), 257U);
    EXPECT_EQ(object.GetHeight(), 129U);
    EXPECT_EQ(object.GetBlockListSize(), 4U);
    EXPECT_EQ(object.GetPixel9Word(256, 128).w,
              (std::array<std::uint16_t, 9>{65535, 0, 0, 0, 65535, 0, 0, 0, 65535}));
    EXPECT_EQ(object.GetPixel3Word(256, 128).w,
              (std::array<std::uint16_t, 3>{65535, 65535, 65535}));
}

TYPED_TEST(Channels, RectBlockCount) {
    TypeParam object;
    EXPECT_EQ(object.GetRectBlockCount({0, 0, 256, 128}), 1U);
    EXPECT_EQ(object.GetRectBlockCount({0, 0, 257, 128}), 2U);
    EXPECT_EQ(object.GetRectBlockCount({255, 127, 257, 129}), 4U);
    EXPECT_EQ(object.GetRectBlockCount({0, 0, 0, 0}), 0U);
    // Without columns or rows it is the block that counts, but on an edge none.
    EXPECT_EQ(object.GetRectBlockCount({10, 0, 10, 128}), 1U);
    EXPECT_EQ(object.GetRectBlockCount({10, 0, 10, 129}), 2U);
    EXPECT_EQ(object.GetRectBlockCount({256, 0, 256, 128}), 0U);
    EXPECT_EQ(object.GetRectBlockCount({0, 5, 257, 5}), 2U);
    EXPECT_EQ(object.GetRectBlockCount({0, 128, 257, 128}), 0U);
    EXPECT_EQ(object.GetRectBlockCount({10, 5, 10, 5}), 1U);
    // Turned over: inside one block that block, else none.
    EXPECT_EQ(object.GetRectBlockCount({20, 0, 10, 128}), 1U);
    EXPECT_EQ(object.GetRectBlockCount({600, 0, 10, 128}), 0U);
    EXPECT_EQ(object.GetRectBlockCount({600, 300, 10, 12}), 0U);
}

TYPED_TEST(Channels, BufferModeSetsTheSizeLimit) {
    TypeParam object;
    EXPECT_EQ(object.SetBufferMode(true), S_OK);
    EXPECT_EQ(object.Store()->SizeLimit(), 0xFFFFFFFFFFFFFFFFU);
    EXPECT_EQ(object.SetBufferMode(false), S_OK);
    EXPECT_EQ(object.Store()->SizeLimit(), 0x7FFFFFFFFFFFFFFFU);
}

TYPED_TEST(Channels, CreateGivesTheAllocationsStatus) {
    TypeParam object;
    object.Store()->SetSizeLimit(1000);
    EXPECT_EQ(object.Create(10, 10), E_COEF_SIZELIMIT);
    EXPECT_EQ(object.GetBlockListSize(), 0U);
}

TYPED_TEST(Channels, SetPixelChannelWraps) {
    TypeParam object;
    ASSERT_EQ(object.Create(4, 4), S_OK);
    EXPECT_FALSE(object.SetPixelChannel(0, 1, 2, 1.0F, 0));
    EXPECT_EQ(test::WordsAt(object, 1, 2)[0], 65535);
    EXPECT_TRUE(object.SetPixelChannel(0, 1, 2, 1.00001F, 0)); // 65536
    EXPECT_EQ(test::WordsAt(object, 1, 2)[0], 0);
    EXPECT_TRUE(object.SetPixelChannel(0, 1, 2, 1.5F, 0)); // 98303
    EXPECT_EQ(test::WordsAt(object, 1, 2)[0], 32767);
    EXPECT_FALSE(object.SetPixelChannel(0, 1, 2, -0.5F, 0)); // −32768
    EXPECT_EQ(test::WordsAt(object, 1, 2)[0], 32768);
    EXPECT_FALSE(object.SetPixelChannel(0, 1, 2, 0.25F, 57)); // no table behind 56
    EXPECT_EQ(test::WordsAt(object, 1, 2)[0], 16384);
    EXPECT_FALSE(
        object.SetPixelChannel(0, 1, 2, std::numeric_limits<float>::quiet_NaN(), 0)); // no integer
    EXPECT_EQ(test::WordsAt(object, 1, 2)[0], 0);
    EXPECT_FALSE(object.SetPixelChannel(0, 1, 2, 1e30F, 0)); // nor here
    EXPECT_EQ(test::WordsAt(object, 1, 2)[0], 0);
    // Missing pixels, and pixels past the grid.
    EXPECT_FALSE(object.SetPixelChannel(0, 300, 2, 1.5F, 0));
    EXPECT_FALSE(object.SetPixelChannel(0, 131072, 0, 1.5F, 0));
    EXPECT_FALSE(object.SetPixelChannel(0, 0, 65536, 1.5F, 0));
    EXPECT_FALSE(object.SetPixelChannel(0, 0xFFFFFFFF, 0xFFFFFFFF, 1.5F, 0));
    EXPECT_FALSE(object.SetPixelChannel(-1, 1, 2, 1.5F, 0));
    EXPECT_EQ(test::WordsAt(object, 1, 2)[0], 0);
}

TYPED_TEST(Channels, FillRectChannelClamps) {
    TypeParam object;
    ASSERT_EQ(object.Create(4, 4), S_OK);
    const auto filled = [&](float value) {
        EXPECT_TRUE(object.FillRectChannel(0, 1, 1, 2, 2, value, 0));
        EXPECT_EQ(test::WordsAt(object, 1, 1)[0], test::WordsAt(object, 2, 2)[0]);
        return test::WordsAt(object, 1, 1)[0];
    };
    EXPECT_EQ(filled(1.5F), 65535);
    EXPECT_EQ(filled(-0.5F), 0);
    EXPECT_EQ(filled(0.5F), 32768); // 32767.5 goes up
    EXPECT_EQ(filled(std::numeric_limits<float>::infinity()), 65535);
    EXPECT_EQ(filled(-std::numeric_limits<float>::infinity()), 0);
    EXPECT_EQ(filled(1.0F), 65535);
    EXPECT_EQ(filled(std::numeric_limits<float>::quiet_NaN()), 0);
    EXPECT_EQ(test::WordsAt(object, 0, 0)[0], 65535);
    EXPECT_EQ(test::WordsAt(object, 3, 1)[0], 65535);
    EXPECT_FALSE(object.FillRectChannel(0, 0, 0, 0, 1, 0.5F, 0));
    EXPECT_FALSE(object.FillRectChannel(0, 0, 0, 1, 0, 0.5F, 0));
    EXPECT_FALSE(object.FillRectChannel(-1, 0, 0, 1, 1, 0.5F, 0));
    // Not cut to the store: the block's remainder is filled, what lies past the grid is skipped.
    EXPECT_TRUE(object.FillRectChannel(0, 0, 0, 0xFFFFFFFF, 0xFFFFFFFF, 0.25F, 0));
    EXPECT_EQ(test::WordsAt(object, 255, 127)[0], 16384);
}

// Index 1 to 56 without a table changes nothing.
TEST(Channels, WithoutATransferTable) {
    CCNewBrightCorrectCoef bright;
    CVirtualGreenBrightCorrectCoef greenBright;
    CVirtualGreenChromaCorrectCoef greenChroma;
    const auto expectNothing = [](auto& object) {
        test::CreateWithPattern(object, 4, 4);
        const std::wstring before = test::DigestOf(object);
        EXPECT_FALSE(object.SetPixelChannel(0, 0, 0, 0.5F, 1));
        EXPECT_FALSE(object.SetPixelChannel(0, 0, 0, 0.5F, 56));
        EXPECT_FALSE(object.FillRectChannel(0, 0, 0, 4, 4, 0.5F, 1));
        EXPECT_FALSE(object.FillRectChannel(0, 0, 0, 4, 4, 0.5F, 56));
        EXPECT_EQ(test::DigestOf(object), before);
    };
    expectNothing(bright);
    expectNothing(greenBright);
    expectNothing(greenChroma);
    // The virtual-green kinds take a caller's table.
    CCaliOperationData table;
    greenBright.SetTransferTable(&table);
    EXPECT_EQ(greenBright.SetPixel4Word(0, 0, {{10, 20, 30, 40}}), S_OK);
    EXPECT_FALSE(greenBright.SetPixelChannel(7, 0, 0, 0.0F, 31)); // channel 3, plus 1
    EXPECT_EQ(greenBright.GetPixel4Word(0, 0).w, (std::array<std::uint16_t, 4>{10, 20, 30, 41}));
}

// A negative number whose remainder is 0 means word 0.
TYPED_TEST(Channels, NegativeNumbersWithoutARemainder) {
    constexpr std::size_t kWords = test::kWordsOf<TypeParam>;
    constexpr std::int32_t kFill = kWords % 4 == 0 ? 4 : 3;
    TypeParam object;
    test::CreateWithPattern(object, 4, 4);
    auto expected = test::WordsAt(object, 1, 2);
    for (const std::int32_t times : {1, 2, 100}) {
        EXPECT_TRUE(object.FillRectChannel(-kFill * times, 1, 2, 1, 1, 0.5F, 0));
        expected[0] = 32768;
        EXPECT_EQ(test::WordsAt(object, 1, 2), expected) << times;
        EXPECT_FALSE(object.FillRectChannel(-kFill * times - 1, 1, 2, 1, 1, 0.25F, 0));
        EXPECT_EQ(test::WordsAt(object, 1, 2), expected) << times;
        // Virtual-green chroma takes the number itself here.
        EXPECT_EQ(object.SetPixelChannel(-kFill * times, 1, 2, 1.5F, 0), kWords != 12);
        if (kWords != 12)
            expected[0] = 32767; // the low 16 bits of 98303
        EXPECT_EQ(test::WordsAt(object, 1, 2), expected) << times;
    }
}

TEST(Channels, NumbersOfTheBrightnessKind) {
    CCNewBrightCorrectCoef object;
    ASSERT_EQ(object.Create(1, 1), S_OK);
    object.SetPixelChannel(4, 0, 0, 0.0F, 0); // channel 1
    EXPECT_EQ(object.GetPixel3Word(0, 0).w, (std::array<std::uint16_t, 3>{65535, 0, 65535}));
    EXPECT_TRUE(object.FillRectChannel(3, 0, 0, 1, 1, 0.0F, 0)); // channel 0
    EXPECT_EQ(object.GetPixel3Word(0, 0).w, (std::array<std::uint16_t, 3>{0, 0, 65535}));
    EXPECT_EQ(object.GetPixelChannelFloat(5, 0, 0), 1.0F);
    EXPECT_EQ(object.GetPixelChannelFloat(3, 0, 0), 0.0F);
    EXPECT_EQ(object.GetPixelChannelFloat(-1, 0, 0), 0.0F);
    EXPECT_EQ(object.GetPixelChannelFloat(-3, 0, 0), 0.0F);  // remainder 0: the red word
    EXPECT_EQ(object.GetPixelChannelFloat(2, 500, 0), 1.0F); // missing
}

TEST(Channels, NumbersOfTheChromaKind) {
    CCNewChromaCorrectCoef object;
    ASSERT_EQ(object.Create(1, 1), S_OK);
    EXPECT_EQ(object.SetPixel9Word(0, 0, {{0, 1, 2, 3, 4, 5, 6, 7, 65535}}), S_OK);
    EXPECT_EQ(object.GetPixelChannelFloat(8, 0, 0), 1.0F);
    EXPECT_EQ(object.GetPixelChannelFloat(4, 0, 0), 4.0F / 65535.0F);
    for (const std::int32_t absent : {9, 10, 11, 12, -1})
        EXPECT_EQ(object.GetPixelChannelFloat(absent, 0, 0), 0.0F) << absent;
    object.SetPixelChannel(5, 0, 0, 1.0F, 0); // channel 2: the third word
    EXPECT_EQ(object.GetPixel9Word(0, 0).w[2], 65535);
    EXPECT_TRUE(object.FillRectChannel(4, 0, 0, 1, 1, 0.5F, 0)); // channel 1
    EXPECT_EQ(object.GetPixel9Word(0, 0).w[1], 32768);
    float value = 0;
    EXPECT_EQ(object.GetRectChannelFloat(9, 0, 0, 1, 1, &value), E_FAIL);
    EXPECT_EQ(object.SetRectChannelFloat(9, 0, 0, 1, 1, &value), E_FAIL);
}

TEST(Channels, NumbersOfTheVirtualGreenKinds) {
    CVirtualGreenBrightCorrectCoef bright;
    ASSERT_EQ(bright.Create(1, 1), S_OK);
    EXPECT_EQ(bright.SetPixel4Word(0, 0, {{1, 2, 3, 4}}), S_OK);
    EXPECT_EQ(bright.GetPixelChannelFloat(5, 0, 0), 2.0F / 65535.0F);
    EXPECT_EQ(bright.GetPixelChannelFloat(-1, 0, 0), 0.0F);
    EXPECT_TRUE(bright.SetPixelChannel(7, 0, 0, 1.5F, 0));
    EXPECT_TRUE(bright.FillRectChannel(6, 0, 0, 1, 1, 1.5F, 0));
    EXPECT_EQ(bright.GetPixel4Word(0, 0).w, (std::array<std::uint16_t, 4>{1, 2, 65535, 32767}));

    CVirtualGreenChromaCorrectCoef chroma;
    EXPECT_EQ(chroma.GetPixelChannelFloat(5, 0, 0), 1.0F);
    EXPECT_EQ(chroma.GetPixelChannelFloat(12, 0, 0), 0.0F);
    ASSERT_EQ(chroma.Create(1, 1), S_OK);
    EXPECT_EQ(chroma.GetPixel9Word(0, 0).w,
              (std::array<std::uint16_t, 9>{65535, 0, 0, 0, 65535, 0, 0, 0, 65535}));
    EXPECT_TRUE(chroma.SetPixelChannel(11, 0, 0, 1.5F, 0));
    EXPECT_EQ(chroma.GetPixel12Word(0, 0).w[11], 32767);
    EXPECT_FALSE(chroma.SetPixelChannel(12, 0, 0, 1.5F, 0));
    EXPECT_FALSE(chroma.SetPixelChannel(-4, 0, 0, 1.5F, 0));
    EXPECT_EQ(chroma.SetPixel12Word(0, 0, {{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}}), S_OK);
    EXPECT_EQ(chroma.GetPixel9Word(0, 0).w,
              (std::array<std::uint16_t, 9>{1, 2, 4, 5, 6, 8, 9, 10, 12}));
    for (std::int32_t word = 0; word < 12; ++word)
        EXPECT_EQ(chroma.GetPixelChannelFloat(word, 0, 0), static_cast<float>(word + 1) / 65535.0F);
    EXPECT_TRUE(chroma.FillRectChannel(7, 0, 0, 1, 1, 0.0F, 0)); // modulo 4: word 3
    EXPECT_EQ(chroma.GetPixel12Word(0, 0).w[3], 0);
    EXPECT_EQ(chroma.GetPixel12Word(0, 0).w[7], 8);
}

TEST(Channels, ThroughTheChromaTable) {
    CCNewChromaCorrectCoef object;
    ASSERT_EQ(object.Create(2, 1), S_OK);
    const auto set = [&](std::uint16_t word) {
        ASSERT_EQ(object.SetPixel9Word(0, 0, {{word, 9, 9, 9, 9, 9, 9, 9, 9}}), S_OK);
    };
    set(65535);
    EXPECT_FALSE(object.SetPixelChannel(0, 0, 0, 0.0F, 31)); // 65536 clamps
    EXPECT_EQ(object.GetPixel9Word(0, 0).w[0], 65535);
    set(0);
    EXPECT_FALSE(object.SetPixelChannel(0, 0, 0, 0.0F, 32)); // −1 clamps
    EXPECT_EQ(object.GetPixel9Word(0, 0).w[0], 0);
    set(1000);
    EXPECT_FALSE(object.SetPixelChannel(3, 0, 0, 0.0F, 31));
    EXPECT_EQ(object.GetPixel9Word(0, 0).w[0], 1001);
    // A pixel write never sets the step: with step 0 the step rows leave the word.
    EXPECT_FALSE(object.SetPixelChannel(0, 0, 0, 0.5F, 41));
    EXPECT_EQ(object.GetPixel9Word(0, 0).w[0], 1001);
    EXPECT_EQ(object.TransferTable()->StepValue(), 0.0F);
    // A fill does, and from then on the pair has it.
    EXPECT_TRUE(object.FillRectChannel(0, 0, 0, 1, 1, 0.1F, 41));
    EXPECT_EQ(object.GetPixel9Word(0, 0).w[0], 1001 + 6554); // round(1001 + 6553.5)
    EXPECT_EQ(object.TransferTable()->StepValue(), 0.1F);
    EXPECT_FALSE(object.SetPixelChannel(0, 0, 0, 0.0F, 42));
    EXPECT_EQ(object.GetPixel9Word(0, 0).w[0], 7555 - 6553); // 1001.5 rounds up
    // Other pairs have not moved.
    EXPECT_FALSE(object.SetPixelChannel(0, 0, 0, 0.0F, 43));
    EXPECT_EQ(object.GetPixel9Word(0, 0).w[0], 1002);
    EXPECT_EQ(object.GetPixel9Word(0, 0).w[1], 9);
    // A fill that meets no block sets nothing.
    EXPECT_TRUE(object.FillRectChannel(0, 5000, 0, 1, 1, 0.7F, 41));
    EXPECT_EQ(object.TransferTable()->StepValue(), 0.1F);
}

// The virtual-green kinds through a caller's table, in every row.
template <class Object>
class GreenTables : public ::testing::Test {};
TYPED_TEST_SUITE(GreenTables, test::GreenKinds);

TYPED_TEST(GreenTables, FillsGoThroughTheCallersTable) {
    CCaliOperationData table;
    CCaliOperationData reference;
    TypeParam object;
    object.SetTransferTable(&table);
    test::CreateWithPattern(object, 300, 2);
    float stepOfTable = 0.0F;
    for (std::uint32_t row = 1; row <= 56; ++row) {
        const float step = 0.001F * static_cast<float>(row);
        if (row >= 41) {
            stepOfTable = step;
            reference.SetStep(row, step);
        }
        const auto channel = static_cast<std::int32_t>(row); // modulo 4
        const auto before = test::WordsAt(object, 299, 1);
        auto expected = before;
        const auto entry = static_cast<std::int32_t>(reference.Row(row)[before[row % 4]]);
        expected[row % 4] = static_cast<std::uint16_t>(std::clamp(entry, 0, 65535));
        const auto untouched = test::WordsAt(object, 9, 1);
        ASSERT_TRUE(object.FillRectChannel(channel, 10, 0, 290, 2, step, row));
        EXPECT_EQ(test::WordsAt(object, 299, 1), expected) << row;
        EXPECT_EQ(test::WordsAt(object, 9, 1), untouched) << row;
        EXPECT_EQ(table.StepValue(), stepOfTable) << row;
    }
    // Index 57 has no row: the value itself, clamped, and the table as it is.
    ASSERT_TRUE(object.FillRectChannel(1, 0, 0, 1, 1, 1.5F, 57));
    EXPECT_EQ(test::WordsAt(object, 0, 0)[1], 65535);
    EXPECT_TRUE(object.SetPixelChannel(1, 0, 0, 1.5F, 57));
    EXPECT_EQ(test::WordsAt(object, 0, 0)[1], 32767);
    EXPECT_EQ(table.StepValue(), stepOfTable);
}

TYPED_TEST(GreenTables, PixelsGoThroughTheCallersTable) {
    constexpr std::int32_t kLast = test::kWordsOf<TypeParam> == 12 ? 11 : 3;
    constexpr std::size_t kWord = static_cast<std::size_t>(kLast);
    CCaliOperationData table;
    TypeParam object;
    object.SetTransferTable(&table);
    test::CreateWithPattern(object, 4, 4);
    object.FindPixel(1, 2)->w[kWord] = 1000;
    auto expected = test::WordsAt(object, 1, 2);
    EXPECT_FALSE(object.SetPixelChannel(kLast, 1, 2, 0.0F, 35)); // plus 4369
    expected[kWord] = 5369;
    EXPECT_EQ(test::WordsAt(object, 1, 2), expected);
    EXPECT_FALSE(object.SetPixelChannel(kLast, 1, 2, 0.5F, 41)); // sets no step
    EXPECT_EQ(test::WordsAt(object, 1, 2), expected);
    EXPECT_EQ(table.StepValue(), 0.0F);
    object.FindPixel(1, 2)->w[kWord] = expected[kWord] = 65535;
    EXPECT_FALSE(object.SetPixelChannel(kLast, 1, 2, 0.0F, 31));
    EXPECT_EQ(test::WordsAt(object, 1, 2), expected);
    EXPECT_FALSE(object.SetPixelChannel(-1, 1, 2, 0.0F, 31));
    if (kLast == 11) {
        EXPECT_FALSE(object.SetPixelChannel(12, 1, 2, 0.0F, 32));
    }
    EXPECT_EQ(test::WordsAt(object, 1, 2), expected);
    object.SetTransferTable(nullptr);
    EXPECT_FALSE(object.SetPixelChannel(kLast, 1, 2, 0.0F, 32));
    EXPECT_EQ(test::WordsAt(object, 1, 2), expected);
}

TEST(ChromaCreate, LeavesTheExtraStoreWhenTheMatrixIsRefused) {
    CCNewChromaCorrectCoef object;
    object.Store()->SetSizeLimit(1000);
    EXPECT_EQ(object.Create(10, 10), E_COEF_SIZELIMIT);
    EXPECT_EQ(object.ExtraStore()->UsedBlocks().size(), 0U);
    EXPECT_EQ(object.ExtraStore()->Width(), 0U);
    EXPECT_EQ(object.SetBufferMode(false), S_OK);
    EXPECT_EQ(object.Create(10, 10), S_OK);
    EXPECT_EQ(object.ExtraStore()->UsedBlocks().size(), 1U);
    object.SetExtraStoreOwner(nullptr);
    EXPECT_EQ(object.Create(20, 5), E_FAIL);
    EXPECT_EQ(object.GetWidth(), 10U); // the matrix store stays as it was
    EXPECT_EQ(object.GetHeight(), 10U);
    EXPECT_EQ(object.GetBlockListSize(), 1U);
    EXPECT_EQ(object.SetPixel10Word(0, 0, {}, 1), E_FAIL);
    EXPECT_EQ(object.SetPixelExtraWord(0, 0, 1), E_FAIL);
}

TEST(ChromaCreate, GivesTheExtraStoresStatus) {
    CCNewChromaCorrectCoef object;
    object.ExtraStore()->SetSizeLimit(1000);
    EXPECT_EQ(object.Create(10, 10), E_COEF_SIZELIMIT);
    EXPECT_EQ(object.GetBlockListSize(), 1U); // the matrix store has its memory
    EXPECT_EQ(object.ExtraStore()->UsedBlocks().size(), 0U);
    EXPECT_EQ(object.SetPixel9Word(0, 0, {}), S_OK);
    EXPECT_EQ(object.SetPixel10Word(0, 0, {}, 1), E_FAIL);
}

TEST(ChromaStores, BufferModeIsOfBoth) {
    CCNewChromaCorrectCoef object;
    for (const auto& [isUnlimited, limit] :
         {std::pair{true, 0xFFFFFFFFFFFFFFFFU}, {false, 0x7FFFFFFFFFFFFFFFU}}) {
        EXPECT_EQ(object.SetBufferMode(isUnlimited), S_OK);
        EXPECT_EQ(object.Store()->SizeLimit(), limit);
        EXPECT_EQ(object.ExtraStore()->SizeLimit(), limit);
    }
    object.SetExtraStoreOwner(nullptr);
    EXPECT_EQ(object.SetBufferMode(true), S_OK);
    EXPECT_EQ(object.Store()->SizeLimit(), 0xFFFFFFFFFFFFFFFFU);
}

TEST(ChromaPixels, TenWordsGoToBothStoresOrNone) {
    CCNewChromaCorrectCoef object;
    ASSERT_EQ(object.Create(4, 4), S_OK);
    const S9WordCoef matrix{{1, 2, 3, 4, 5, 6, 7, 8, 9}};
    EXPECT_EQ(object.SetPixel10Word(3, 3, matrix, 10), S_OK);
    EXPECT_EQ(object.GetPixel9Word(3, 3).w, matrix.w);
    EXPECT_EQ(object.FindExtraWord(3, 3)->w[0], 10);
    object.ExtraStore()->Clear();
    EXPECT_EQ(object.SetPixel10Word(2, 2, matrix, 10), E_FAIL);
    EXPECT_EQ(object.GetPixel9Word(2, 2).w, S9WordCoef{}.w);
    EXPECT_EQ(object.SetPixel9Word(300, 0, matrix), E_FAIL);
}

} // namespace
} // namespace trevolt
