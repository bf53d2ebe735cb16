#include "app/inspection/CoefConversion.h"

#include <algorithm>
#include <atomic>

#include <gtest/gtest.h>

#include "app/inspection/ConversionRun.h"
#include "app/inspection/NpyFile.h"
#include "app/rotation/Cropping.h"
#include "app/rotation/DemoWall.h"
#include "platform/FileSystem.h"
#include "tests/support/CoefMaps.h"
#include "tests/support/ExtremeNumbers.h"

namespace trevolt {
namespace {

using namespace test;

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

TEST(CoefConversion, AScreenAndAPieceLoseTheSameAsAConvertedFile) {
    const CTemporaryFolder folder;
    CChromaCorrectCoef map;
    map.Resize(3, 2);
    PaintMap(map, BytePixel);
    map.FindElement(1, 0)->m = {1.5F, -0.5F, kNaN, 0.3333F, 1, 0, 0, 0, 1, 0.25F, 0, 0};
    const std::atomic<bool> goesOn = false;
    for (const wchar_t* name : {L"a.9fcoef", L"a.12wcoef"})
        for (const SFileKind& kind : FileKinds()) {
            SCOPED_TRACE(testing::PrintToString(name + std::wstring(kind.extension)));
            const std::wstring source = folder.File(name);
            const std::wstring output = L"b" + std::wstring(kind.extension);
            ASSERT_GE(FindLoadKind(source)->save(map, source.c_str()), 0);
            const SConversion converted = ConvertInto(source, folder.File(output));
            ASSERT_TRUE(converted.problems.empty());
            const SComposition screen =
                ComposeScreen({.files = {{source, name, {2, 1}, 1}},
                               .output = {folder.File(output), true, false}},
                              goesOn);
            ASSERT_TRUE(screen.isWritten);
            EXPECT_EQ(screen.losses, converted.losses);
            SCropRequest crop;
            crop.input = source;
            crop.targetFolder = folder.Path();
            crop.pieces = {{output, {0, 0, 3, 2}, 3}};
            crop.replaces = true;
            crop.sync = false;
            const SCropping cut = CropFile(crop, goesOn);
            ASSERT_TRUE(cut.pieces[0].isWritten);
            EXPECT_EQ(cut.pieces[0].losses, converted.losses);
        }
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
