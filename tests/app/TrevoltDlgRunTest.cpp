// Start to finish of the rotation run, against the window in memory.
#include "app/TrevoltDlg.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "formats/BinaryCoefFile.h"
#include "platform/FileSystem.h"
#include "tests/app/MemoryView.h"
#include "tests/support/TestFiles.h"

namespace trevolt {
namespace {

using test::CMemoryView;
using test::CTemporaryFolder;

using Messages = std::vector<CMemoryView::Message>;
using Positions = std::vector<int>;

constexpr std::uint32_t kBothSet = CTrevoltDlg::kSourceSet | CTrevoltDlg::kTargetSet;

SMatrixCoef NumberedPixel(int x, int y) {
    SMatrixCoef pixel;
    for (std::size_t k = 0; k < 9; ++k)
        pixel.m[k] = static_cast<float>(100 * y + 10 * x) + static_cast<float>(k);
    return pixel;
}

void WriteNumbered9f(const std::wstring& path, int width, int height) {
    CChromaCorrectCoef map;
    map.Resize(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            map.SetElement(x, y, NumberedPixel(x, y));
    ASSERT_EQ(Write9fCoefFile(map, path.c_str(), nullptr), S_OK);
}

/// A dialog with both folders set, a cabinet size of 3 × 2 and 90° selected.
class TrevoltDlgRun : public ::testing::Test {
  protected:
    TrevoltDlgRun() : m_dialog(m_view, m_translate) {
        CTrevoltDlg::SFields& fields = m_dialog.Fields();
        fields.sourceFolder = m_source.Path();
        fields.targetFolder = m_target.Path();
        fields.pathsSet = kBothSet;
        fields.current = {3, 2};
        m_view.SelectAngle(1, L"90\u00B0");
    }

    std::wstring Text(const wchar_t* key) const { return m_translate.TranslateString(key); }

    CTemporaryFolder m_source;
    CTemporaryFolder m_target;
    CMemoryView m_view;
    CTranslate m_translate;
    CTrevoltDlg m_dialog;
};

TEST_F(TrevoltDlgRun, TurnsOneCabinetAndTellsEveryStepInOrder) {
    WriteNumbered9f(m_source.File(L"Cab_01.9fcoef"), 3, 2);
    m_dialog.OnStart();

    const std::vector<std::wstring> idle{
        L"enable 1001 1",
        L"text 1019 " + Text(L"Trevolt_Cabinet_Width"),
        L"text 1020 " + Text(L"Trevolt_Cabinet_Height"),
        L"show 1008 0",
        L"enable 1021 1",
        L"enable 1005 1",
        L"enable 1013 1",
        L"enable 1017 1",
        L"enable 1018 1",
        L"enable 1002 1",
        L"enable 1004 1",
    };
    std::vector<std::wstring> busy = idle;
    busy[3] = L"show 1008 1";
    for (std::size_t i = 4; i < busy.size(); ++i)
        busy[i].back() = L'0';

    std::vector<std::wstring> expected = idle;
    expected.insert(expected.end(), {L"show 1008 1", L"enable 1021 0", L"progress 1008 5"});
    expected.insert(expected.end(), busy.begin(), busy.end());
    expected.insert(expected.end(),
                    {L"progress 1008 10", L"progress 1008 80", L"progress 1008 95",
                     L"message 0 " + Text(L"Trevolt_Export_Finished"), L"progress 1008 100"});
    expected.insert(expected.end(), idle.begin(), idle.end());
    EXPECT_EQ(m_view.Calls(), expected);

    CChromaCorrectCoef turned;
    turned.Resize(2, 3);
    EXPECT_EQ(Read9fCoefFile(turned, m_target.File(L"Cab_01-90\u00B0.9fcoef").c_str()), 1);
    EXPECT_EQ(turned.FindElement(1, 0)->m[4], NumberedPixel(0, 0).m[4]);
    EXPECT_EQ(turned.FindElement(0, 2)->m[4], NumberedPixel(2, 1).m[4]);
}

TEST_F(TrevoltDlgRun, ThreeFilesMoveTheBarAsTheIntegerDivisionSays) {
    for (const wchar_t* name : {L"a.9fcoef", L"b.9fcoef", L"c.9fcoef"})
        WriteNumbered9f(m_source.File(name), 3, 2);
    m_dialog.OnStart();
    EXPECT_EQ(m_view.Positions(), (Positions{5, 10, 0, 0, 80, 95, 100}));
    EXPECT_EQ(m_target.Names(),
              (std::vector<std::wstring>{L"a-90\u00B0.9fcoef", L"b-90\u00B0.9fcoef",
                                         L"c-90\u00B0.9fcoef"}));
}

TEST_F(TrevoltDlgRun, CabinetModeNeedsTheCurrentSize) {
    const Messages refusal{{Text(L"Trevolt_Please_Input_Correct_Cabinet_Size"), 0x30}};
    for (const SMapSize size : {SMapSize{0, 2}, SMapSize{3, 0}}) {
        m_view.Forget();
        m_dialog.Fields().current = size;
        m_dialog.InputMap()[L"kept"] = nullptr;
        m_dialog.OnStart();
        EXPECT_EQ(m_view.Messages(), refusal);
        EXPECT_TRUE(m_view.Positions().empty());
        EXPECT_EQ(m_dialog.InputMap().size(), 1U);
    }
}

TEST_F(TrevoltDlgRun, ScreenModeNeedsTheScreenSizeOnly) {
    m_dialog.Fields().wholeScreen = 1;
    for (const SMapSize size : {SMapSize{0, 2}, SMapSize{3, 0}}) {
        m_view.Forget();
        m_dialog.Fields().screen = size;
        m_dialog.OnStart();
        EXPECT_EQ(m_view.Messages(),
                  (Messages{{Text(L"Trevolt_Please_Input_Correct_Screen_Size"), 0x30}}));
    }
    // A cabinet width of 0 does not block the run: only the screen pair is tested.
    WriteNumbered9f(m_source.File(L"wall.9fcoef"), 3, 2);
    m_view.Forget();
    m_dialog.Fields().screen = {3, 2};
    m_dialog.Fields().cabinet = {0, 0};
    m_dialog.OnStart();
    EXPECT_EQ(m_view.Messages(), (Messages{{Text(L"Trevolt_Export_Finished"), 0}}));
    EXPECT_EQ(m_view.At(kIdWidthLabel).text, Text(L"Trevolt_Screen_Width"));
    EXPECT_EQ(m_view.At(kIdHeightLabel).text, Text(L"Trevolt_Screen_Height"));
}

TEST_F(TrevoltDlgRun, NothingKnownInTheFolder) {
    const Messages notFound{{Text(L"Trevolt_Coef_File_Not_Found"), 0x30}};
    m_dialog.OnStart();
    EXPECT_EQ(m_view.Messages(), notFound);

    test::WriteText(m_source.File(L"readme.txt"), "x");
    m_dialog.InputMap()[L"old"] = std::make_unique<CChromaCorrectCoef>();
    m_dialog.OutputMap()[L"old"] = std::make_unique<CChromaCorrectCoef>();
    m_view.Forget();
    m_dialog.OnStart();
    EXPECT_EQ(m_view.Messages(), notFound);
    EXPECT_TRUE(m_dialog.InputMap().empty());
    EXPECT_TRUE(m_dialog.OutputMap().empty());

    m_view.Forget();
    m_dialog.Fields().sourceFolder = WithSeparator(m_source.File(L"missing"));
    m_dialog.OnStart();
    EXPECT_EQ(m_view.Messages(), notFound);
}

TEST_F(TrevoltDlgRun, WholeScreenTakesExactlyOneFile) {
    m_dialog.Fields().wholeScreen = 1;
    m_dialog.Fields().screen = {3, 2};
    WriteNumbered9f(m_source.File(L"a.9fcoef"), 3, 2);
    WriteNumbered9f(m_source.File(L"b.9fcoef"), 3, 2);
    m_dialog.OnStart();
    EXPECT_EQ(m_view.Messages(), (Messages{{Text(L"Trevolt_Make_Sure_File_Is_Only_One"), 0x30}}));
    EXPECT_TRUE(m_view.Positions().empty());
    EXPECT_EQ(m_dialog.InputMap().size(), 2U);
    EXPECT_TRUE(m_dialog.OutputMap().empty());
    EXPECT_TRUE(m_target.Names().empty());
}

TEST_F(TrevoltDlgRun, NoAngleExportsNothing) {
    WriteNumbered9f(m_source.File(L"a.9fcoef"), 3, 2);
    m_view.SelectAngle(-1, L"");
    m_dialog.OnStart();
    EXPECT_EQ(m_view.Messages(), (Messages{{Text(L"Trevolt_Export_Failed"), 0}}));
    EXPECT_EQ(m_view.Positions(), (Positions{5, 10, 80, 95, 100}));
    EXPECT_TRUE(m_target.Names().empty());
}

TEST_F(TrevoltDlgRun, MissingTargetFolder) {
    WriteNumbered9f(m_source.File(L"a.9fcoef"), 3, 2);
    m_dialog.Fields().targetFolder = WithSeparator(m_target.File(L"missing"));
    m_dialog.OnStart();
    EXPECT_EQ(m_view.Messages(), (Messages{{Text(L"Trevolt_Export_Path_Not_Exist"), 0x20}}));
    EXPECT_EQ(m_dialog.OutputMap().size(), 1U);
    EXPECT_EQ(m_dialog.Fields().busy, 0);
}

TEST_F(TrevoltDlgRun, AFileThatFailsToLoadStillGivesAnOutput) {
    test::WriteText(m_source.File(L"broken.9fcoef"), "not a coefficient file");
    m_dialog.OnStart();
    EXPECT_EQ(m_view.Messages(), (Messages{{Text(L"Trevolt_Export_Finished"), 0}}));
    CChromaCorrectCoef turned;
    turned.Resize(2, 3);
    ASSERT_EQ(Read9fCoefFile(turned, m_target.File(L"broken-90\u00B0.9fcoef").c_str()), 1);
    EXPECT_EQ(turned.FindElement(1, 2)->m[0], 1.0F);
    EXPECT_EQ(turned.FindElement(1, 2)->m[1], 0.0F);
}

TEST_F(TrevoltDlgRun, NamesKeepTheirCaseAndSplitAtTheFirstDot) {
    WriteNumbered9f(m_source.File(L"A.9FCOEF"), 3, 2);
    WriteNumbered9f(m_source.File(L"b.9fcoef.bak"), 3, 2);
    m_view.SelectAngle(2, L"180\u00B0");
    m_dialog.OnStart();
    EXPECT_EQ(m_target.Names(),
              (std::vector<std::wstring>{L"A-180\u00B0.9FCOEF", L"b-180\u00B0.9fcoef.bak"}));
}

TEST_F(TrevoltDlgRun, AFolderNamedLikeAKindMakesEveryFileThatKind) {
    const std::wstring folder = WithSeparator(m_source.File(L"wall.9fcoef"));
    ASSERT_TRUE(CreateFolders(folder));
    WriteNumbered9f(folder + L"plain", 3, 2);
    m_dialog.Fields().sourceFolder = folder;
    m_dialog.OnStart();
    // Loaded as its folder's kind; the export looks at the name alone and finds none.
    EXPECT_EQ(m_dialog.InputMap().size(), 1U);
    EXPECT_EQ(m_dialog.OutputMap().size(), 1U);
    EXPECT_EQ(m_view.Messages(), (Messages{{Text(L"Trevolt_Export_Finished"), 0}}));
    EXPECT_TRUE(m_target.Names().empty());
}

TEST_F(TrevoltDlgRun, FoldersAreNotDescendedIntoNorTakenForFiles) {
    ASSERT_TRUE(CreateFolders(m_source.File(L"x.9fcoef")));
    m_dialog.OnStart();
    EXPECT_EQ(m_view.Messages(), (Messages{{Text(L"Trevolt_Coef_File_Not_Found"), 0x30}}));
}

TEST_F(TrevoltDlgRun, SmallMapsNullsAndUnknownCodesAreSkippedButCounted) {
    auto small = std::make_unique<CChromaCorrectCoef>();
    small->Resize(4, 4);
    m_dialog.InputMap()[L"small.9fcoef"] = std::move(small);
    m_dialog.InputMap()[L"null.9fcoef"] = nullptr;
    m_dialog.Fields().current = {8, 4};
    EXPECT_EQ(m_dialog.RotateAll(), 1);
    EXPECT_TRUE(m_dialog.OutputMap().empty());
    EXPECT_EQ(m_view.Positions(), (Positions{10, 95}));
}

TEST_F(TrevoltDlgRun, LargerMapsAreCut) {
    auto large = std::make_unique<CChromaCorrectCoef>();
    large->Resize(10, 10);
    large->SetElement(7, 5, NumberedPixel(7, 5));
    m_dialog.InputMap()[L"large.9fcoef"] = std::move(large);
    m_dialog.Fields().current = {8, 6};
    EXPECT_EQ(m_dialog.RotateAll(), 1);
    const CChromaCorrectCoef& turned = *m_dialog.OutputMap().at(L"large.9fcoef");
    EXPECT_EQ(turned.Width(), 6);
    EXPECT_EQ(turned.Height(), 8);
    EXPECT_EQ(turned.FindElement(0, 7)->m, NumberedPixel(7, 5).m);
}

TEST_F(TrevoltDlgRun, NegativeSizesLeaveMapsEmptyAndWriteNothing) {
    WriteNumbered9f(m_source.File(L"a.9fcoef"), 3, 2);
    m_dialog.Fields().current = {-3, -2};
    m_dialog.OnStart();
    EXPECT_EQ(m_view.Messages(), (Messages{{Text(L"Trevolt_Export_Finished"), 0}}));
    EXPECT_TRUE(m_target.Names().empty());
}

TEST_F(TrevoltDlgRun, StartNeedsBothFolders) {
    for (const std::uint32_t set : {0U, CTrevoltDlg::kSourceSet, CTrevoltDlg::kTargetSet}) {
        m_dialog.Fields().pathsSet = set;
        m_dialog.UpdateControls();
        EXPECT_FALSE(m_view.At(kIdStart).enabled);
    }
    m_dialog.Fields().pathsSet = kBothSet;
    m_dialog.UpdateControls();
    EXPECT_TRUE(m_view.At(kIdStart).enabled);
}

TEST_F(TrevoltDlgRun, MapsStayUntilTheNextStart) {
    WriteNumbered9f(m_source.File(L"a.9fcoef"), 3, 2);
    m_dialog.OnStart();
    EXPECT_EQ(m_dialog.InputMap().size(), 1U);
    EXPECT_EQ(m_dialog.OutputMap().size(), 1U);
    m_dialog.ClearMaps();
    EXPECT_TRUE(m_dialog.InputMap().empty());
    EXPECT_TRUE(m_dialog.OutputMap().empty());
}

TEST(CoefMapTable, IsMadeWithSeventeenBuckets) {
    EXPECT_GE(CCoefMapTable().bucket_count(), 17U);
    EXPECT_LT(CCoefMapTable().bucket_count(), 29U); // the next size after 17
}

} // namespace
} // namespace trevolt
