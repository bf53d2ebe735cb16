#include "app/inspection/CoefConversion.h"

#include <algorithm>
#include <atomic>
#include <limits>

#include <gtest/gtest.h>

#include "app/inspection/ConversionRun.h"
#include "app/inspection/NpyFile.h"
#include "app/rotation/DemoWall.h"
#include "platform/FileSystem.h"
#include "tests/support/CoefMaps.h"
#include "trevolt/FixedPoint.h"

namespace trevolt {
namespace {

using namespace test;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();

CChromaCorrectCoef OnePixel(const SMatrixCoef& pixel) {
    CChromaCorrectCoef map;
    map.Resize(1, 1);
    map.SetElement(0, 0, pixel);
    return map;
}

SConversionLosses LossesOf(const SMatrixCoef& pixel, std::wstring_view kind) {
    return CountLosses(OnePixel(pixel), FormOfKind(*FindLoadKind(kind)));
}

/// The default with one value changed.
SMatrixCoef With(std::size_t place, float value) {
    SMatrixCoef pixel;
    pixel.m[place] = value;
    return pixel;
}

TEST(ConversionLosses, TheDefaultIsHeldByEveryKind) {
    for (const SFileKind& kind : FileKinds()) {
        SConversionLosses losses = LossesOf({}, kind.extension);
        EXPECT_EQ(losses.defaultPixels, kind.extension == L".cccoef" ? 1U : 0U);
        losses.defaultPixels = 0;
        EXPECT_EQ(losses, SConversionLosses{});
    }
    EXPECT_EQ(CountLosses(OnePixel(PatternPixel(3, 4)), kMapForm), SConversionLosses{});
}

TEST(ConversionLosses, WhatAFormDoesNotHoldIsCountedAPixelOnce) {
    SMatrixCoef pixel = With(1, 0.5F);
    pixel.m[7] = kNaN;
    EXPECT_EQ(LossesOf(pixel, L".3fcoef"), SConversionLosses{.offDiagonalPixels = 1});
    EXPECT_EQ(LossesOf(pixel, L".4wcoef"), SConversionLosses{.offDiagonalPixels = 1});
    EXPECT_EQ(LossesOf(pixel, L".9fcoef"), SConversionLosses{});
    for (const std::size_t place : {9U, 10U, 11U}) {
        const SMatrixCoef beside = With(place, 0.2F); // a whole 65535th
        EXPECT_EQ(LossesOf(beside, L".9fcoef"), SConversionLosses{.besideMatrixPixels = 1});
        EXPECT_EQ(LossesOf(beside, L".12wcoef"), SConversionLosses{});
        EXPECT_EQ(LossesOf(beside, L".4wcoef"),
                  SConversionLosses{.besideMatrixPixels = place == 10U ? 0U : 1U});
    }
}

TEST(ConversionLosses, ValuesAreHeldRoundedWrappedOrZero) {
    const auto isOf = [](float value, const SConversionLosses& words,
                         const SConversionLosses& bytes) {
        EXPECT_EQ(LossesOf(With(4, value), L".9wcoef"), words) << value;
        EXPECT_EQ(LossesOf(With(4, value), L".3bcoef"), bytes) << value;
    };
    const SConversionLosses held;
    const SConversionLosses rounded{.roundedValues = 1};
    const SConversionLosses wrapped{.wrappedValues = 1};
    const SConversionLosses zeroed{.zeroedValues = 1};
    isOf(0.0F, held, held);
    isOf(-0.0F, held, held);
    isOf(1.0F, held, held);
    isOf(ByteToFloat(51), held, held);
    isOf(WordToFloat(1), held, rounded);
    isOf(0.3333F, rounded, rounded);
    isOf(-1e-9F, rounded, rounded);
    isOf(1.000001F, rounded, rounded);
    isOf(1.00001F, wrapped, rounded);  // 65535.66
    isOf(-0.00001F, wrapped, rounded); // -0.66
    isOf(1.002F, wrapped, wrapped);    // 255.51
    isOf(-0.002F, wrapped, wrapped);   // -0.51
    isOf(1e13F, wrapped, wrapped);
    isOf(1e15F, zeroed, wrapped); // 6.5e19 is past 64 bits, 2.55e17 is not
    isOf(-1e15F, zeroed, wrapped);
    isOf(kNaN, zeroed, zeroed);
    isOf(kInf, zeroed, zeroed);
    isOf(-kInf, zeroed, zeroed);
}

TEST(ConversionLosses, TextRoundsAndItsReaderCleans) {
    const auto losses = [](std::size_t place, float value) {
        return LossesOf(With(place, value), L".cccoef");
    };
    const SConversionLosses rounded{.roundedValues = 1};
    const SConversionLosses cleaned{.cleanedValues = 1};
    EXPECT_EQ(losses(4, 0.12345F), SConversionLosses{});
    EXPECT_EQ(losses(4, 0.123456F), rounded);
    EXPECT_EQ(losses(4, 0.000004F), rounded); // to 0
    EXPECT_EQ(losses(4, 0.00001F), SConversionLosses{});
    EXPECT_EQ(losses(4, -0.5F), cleaned);
    EXPECT_EQ(losses(4, 1.5F), cleaned);
    EXPECT_EQ(losses(4, kInf), cleaned);
    EXPECT_EQ(losses(4, kNaN), SConversionLosses{});                      // stays
    EXPECT_EQ(losses(3, 0.25F), (SConversionLosses{.cleanedValues = 2})); // a column of 1.25
    EXPECT_EQ(losses(9, 0.25F), SConversionLosses{.besideMatrixPixels = 1});
}

TEST(ConversionLosses, AreToldInPlainWords) {
    const SElementForm& words = FormOfKind(*FindLoadKind(L".3wcoef"));
    EXPECT_TRUE(DescribeLosses({}, words, "x").empty());
    EXPECT_EQ(DescribeLosses({.offDiagonalPixels = 1,
                              .besideMatrixPixels = 2,
                              .wrappedValues = 1,
                              .zeroedValues = 2,
                              .roundedValues = 3},
                             words, ".3wcoef"),
              (std::vector<std::string>{
                  "1 pixel has entries off the diagonal, which .3wcoef does not hold",
                  "2 pixels have values beside the matrix that .3wcoef does not hold",
                  "2 values are no numbers or beyond all integers and became 0",
                  "1 value is out of the range 0 to 1 and wrapped: the low 16 bits of value x "
                  "65535 stand there",
                  "3 values are rounded to whole 65535ths"}));
    EXPECT_EQ(DescribeLosses({.cleanedValues = 1, .roundedValues = 1},
                             FormOfKind(*FindLoadKind(L".cccoef")), ".cccoef"),
              (std::vector<std::string>{
                  "1 value is changed when the text is read, which takes values from 0 to 1 and "
                  "columns whose sum is 1 at most",
                  "1 value is rounded to five decimals"}));
}

/// What a conversion into a file of the folder gives.
SConversion ConvertInto(const std::wstring& source, const std::wstring& output,
                        bool ownElements = false) {
    const SConversionTarget target{IsNpyName(output) ? nullptr : FindExportKind(output),
                                   ownElements};
    return ConvertFile(source, target, [&](const OutputWriter& write) { return write(output); });
}

TEST(CoefConversion, ThePixelBehindIsNoPartOfAFloatMatrix) {
    const CTemporaryFolder folder;
    CChromaCorrectCoef map;
    map.Resize(3, 2);
    PaintMap(map, BytePixel);
    const std::wstring source = folder.File(L"a.9fcoef");
    ASSERT_EQ(FindLoadKind(source)->save(map, source.c_str()), S_OK);
    CChromaCorrectCoef loaded;
    loaded.Resize(3, 2);
    ASSERT_GE(FindLoadKind(source)->load(loaded, source.c_str()), 0);
    ASSERT_EQ(loaded.FindElement(0, 0)->m[10], loaded.FindElement(1, 0)->m[1]);

    const SConversion conversion = ConvertInto(source, folder.File(L"a.npy"));
    EXPECT_TRUE(conversion.problems.empty() && conversion.losses.empty());
    EXPECT_EQ(conversion.form, kMapForm);
    ExpectPixels(*LoadNpyFile(folder.File(L"a.npy")).map, [](std::int32_t x, std::int32_t y) {
        SMatrixCoef pixel = BytePixel(x, y);
        std::copy_n(SMatrixCoef{}.m.begin() + 9, 3, pixel.m.begin() + 9);
        return pixel;
    });
    const SConversion words = ConvertInto(source, folder.File(L"a.12wcoef"));
    EXPECT_TRUE(words.problems.empty() && words.losses.empty());
    EXPECT_EQ(words.notes, std::vector<std::string>{"it holds no values beside the matrix: those "
                                                    "of .12wcoef are the default 0, 1, 0"});
}

TEST(CoefConversion, ADamagedFileIsNotWritten) {
    const CTemporaryFolder folder;
    const SConversion cut = ConvertInto(Sample(L"awkward/cut_short.9fcoef"), folder.File(L"a.npy"));
    EXPECT_FALSE(cut.problems.empty());
    WriteText(folder.File(L"empty.cccoef"), "[T9COEF20]\nwidth=0\nheight=0\n");
    const SConversion empty = ConvertInto(folder.File(L"empty.cccoef"), folder.File(L"a.npy"));
    EXPECT_EQ(empty.problems, std::vector<std::string>{"has no pixels"});
    const SConversion none = ConvertInto(folder.File(L"none.npy"), folder.File(L"a.9fcoef"));
    EXPECT_EQ(none.problems.size(), 1U);
    EXPECT_EQ(none.size, PixelSize{});
    EXPECT_EQ(folder.Names(), std::vector<std::wstring>{L"empty.cccoef"});
}

TEST(CoefConversion, WhatTheFileHoldsBesideIsTold) {
    const CTemporaryFolder folder;
    const SConversion conversion =
        ConvertInto(Sample(L"awkward/origin_1000_777.9wcoef"), folder.File(L"a.9wcoef"));
    EXPECT_TRUE(conversion.problems.empty());
    EXPECT_EQ(conversion.losses,
              std::vector<std::string>{"the converted file lacks its origin (1000, 777)"});
}

TEST(CoefConversion, AWriterThatFailsIsAProblem) {
    const CTemporaryFolder folder;
    const std::wstring none = folder.File(L"none") + L"/";
    const std::wstring source = Sample(L"cabinet/Cab_04.3bcoef");
    EXPECT_EQ(ConvertInto(source, none + L"a.npy").problems.size(), 1U);
    EXPECT_EQ(ConvertInto(source, none + L"a.9wcoef").problems.size(), 1U);
}

class CConversionRecorder : public CConversionListener {
  public:
    explicit CConversionRecorder(std::atomic<bool>* interrupts = nullptr)
        : m_interrupts(interrupts) {}
    void OnFile(const SConvertedFile& file) override {
        m_names.push_back(file.outputName);
        if (m_interrupts != nullptr)
            *m_interrupts = true;
    }

    std::vector<std::string> m_names;

  private:
    std::atomic<bool>* m_interrupts;
};

TEST(ConversionRun, AFolderIsConvertedInOrder) {
    const CTemporaryFolder source;
    const CTemporaryFolder target;
    ASSERT_EQ(WriteDemoWall(source.Path(), false, false), "");
    const std::atomic<bool> goesOn = false;
    CConversionRecorder listener;
    const SConversionOutcome outcome = RunConversion(
        {{source.Path()}, target.Path(), FindFormName(L"npy"), true, false, false, false}, goesOn,
        listener);
    EXPECT_EQ(outcome.end, ERotationEnd::AllDone);
    EXPECT_EQ(outcome.written, 9U);
    EXPECT_EQ(listener.m_names.front(), "Cab_01.npy");
    EXPECT_EQ(listener.m_names.back(), "Cab_09.npy");
    EXPECT_EQ(target.Names().size(), 9U);
}

TEST(ConversionRun, AnInterruptedOneBeginsNoOtherFile) {
    const CTemporaryFolder source;
    const CTemporaryFolder target;
    ASSERT_EQ(WriteDemoWall(source.Path(), false, false), "");
    std::atomic<bool> interrupted = false;
    CConversionRecorder listener(&interrupted);
    const SConversionOutcome outcome = RunConversion(
        {{source.Path()}, target.Path(), FindFormName(L"npy"), false, false, false, false},
        interrupted, listener);
    EXPECT_EQ(outcome.end, ERotationEnd::Interrupted);
    EXPECT_EQ(outcome.written, 1U);
    EXPECT_EQ(target.Names(), std::vector<std::wstring>{L"Cab_01.npy"});
}

TEST(ConversionRun, AnEmptyFolderIsNothingToDo) {
    const CTemporaryFolder source;
    const CTemporaryFolder target;
    const std::atomic<bool> goesOn = false;
    CConversionRecorder listener;
    const SConversionOutcome outcome = RunConversion(
        {{source.Path()}, target.File(L"new"), FindFormName(L".9FCOEF")}, goesOn, listener);
    EXPECT_EQ(outcome.end, ERotationEnd::NothingToDo);
    EXPECT_EQ(outcome.errors,
              std::vector<std::string>{"there is no file to convert in the sources"});
    EXPECT_TRUE(target.Names().empty());
}

TEST(ConversionRun, FormsHaveNames) {
    for (const SFileKind& kind : FileKinds()) {
        const auto form = FindFormName(kind.extension);
        ASSERT_TRUE(form.has_value());
        EXPECT_EQ(form->kind, &kind);
        EXPECT_EQ(FindFormName(kind.extension.substr(1))->kind, &kind);
    }
    ASSERT_TRUE(FindFormName(L".NPY").has_value());
    EXPECT_EQ(FindFormName(L"npy")->kind, nullptr);
    for (const wchar_t* word : {L"", L".", L"..npy", L"9xcoef", L"9fcoef.", L"npy "})
        EXPECT_FALSE(FindFormName(word).has_value());
}

} // namespace
} // namespace trevolt
