// Start to finish of the rotation run, against the window in memory.
#include "app/dialog/TrevoltDlg.h"

#include <algorithm>
#include <new>
#include <optional>

#include <gtest/gtest.h>

#include "common/LittleEndian.h"
#include "platform/FileSystem.h"
#include "tests/dialog/MemoryView.h"
#include "tests/support/BudgetLimit.h"
#include "tests/support/TestFiles.h"
#include "trevolt/BinaryCoefFile.h"
#include "trevolt/FileKinds.h"
#include "trevolt/TransferReport.h"
#include "trevolt/WordCoefFile.h"

namespace trevolt {
namespace {

using test::CMemoryView;
using test::CTemporaryFolder;

using Messages = std::vector<CMemoryView::Message>;
using Positions = std::vector<int>;

constexpr std::uint32_t kBothSet = kSourceSet | kTargetSet;

SMatrixCoef NumberedPixel(int x, int y) {
    SMatrixCoef pixel;
    for (std::size_t k = 0; k < 9; ++k)
        pixel.m[k] = static_cast<float>(100 * y + 10 * x) + static_cast<float>(k);
    return pixel;
}

std::unique_ptr<CChromaCorrectCoef> NumberedMap(int width, int height) {
    auto map = std::make_unique<CChromaCorrectCoef>();
    map->Resize(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            map->SetElement(x, y, NumberedPixel(x, y));
    return map;
}

void WriteNumbered9f(const std::wstring& path, int width, int height) {
    ASSERT_EQ(Write9fCoefFile(*NumberedMap(width, height), path.c_str(), nullptr), S_OK);
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

    /// Fails unless the run ended for want of memory and the dialog can be used again.
    void ExpectEndWithoutMemory() {
        EXPECT_EQ(m_view.Messages(), (Messages{{Text(L"Trevolt_Not_Enough_Memory"), 0x30}}));
        EXPECT_EQ(m_dialog.Fields().busy, 0);
        EXPECT_FALSE(m_view.At(kIdProgress).shown);
        for (const int id : {kIdAngle, kIdBrowseSource, kIdBrowseTarget, kIdByCabinet, kIdByScreen,
                             kIdWidth, kIdHeight, kIdStart})
            EXPECT_TRUE(m_view.At(id).enabled) << id;
        EXPECT_TRUE(m_dialog.InputMap().empty());
        EXPECT_TRUE(m_dialog.OutputMap().empty());
        EXPECT_EQ(m_view.Calls().back(), L"wait 0 0");
    }

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

    std::vector<std::wstring> expected{L"wait 0 1"};
    expected.insert(expected.end(), idle.begin(), idle.end());
    expected.insert(expected.end(),
                    {L"run 1 ", L"show 1008 1", L"enable 1021 0", L"progress 1008 5"});
    expected.insert(expected.end(), busy.begin(), busy.end());
    expected.insert(expected.end(),
                    {L"progress 1008 10", L"progress 1008 80", L"progress 1008 95", L"call 0 ",
                     L"message 0 " + Text(L"Trevolt_Export_Finished"), L"progress 1008 100"});
    expected.insert(expected.end(), idle.begin(), idle.end());
    expected.insert(expected.end(), {L"run 0 ", L"wait 0 0"});
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

TEST_F(TrevoltDlgRun, WaitCursorGoesFromStartToTheEndOfARefusedRunToo) {
    m_dialog.Fields().current = {0, 0};
    m_dialog.OnStart();
    EXPECT_EQ(m_view.Calls().front(), L"wait 0 1");
    EXPECT_EQ(m_view.Calls().back(), L"wait 0 0");
}

/// What `calls` hold of the taskbar button and of messages.
std::vector<std::wstring> SeenFromTheTaskbar(const std::vector<std::wstring>& calls) {
    std::vector<std::wstring> seen;
    for (const std::wstring& call : calls)
        for (const wchar_t* what : {L"run ", L"call ", L"message "})
            if (call.starts_with(what))
                seen.push_back(call);
    return seen;
}

TEST_F(TrevoltDlgRun, FailureIsSeenFromTheTaskbarBeforeItsMessage) {
    const auto failed = [&](const wchar_t* key, int style) {
        return std::vector<std::wstring>{L"run 2 ", L"call 0 ",
                                         L"message " + std::to_wstring(style) + L" " + Text(key),
                                         L"run 0 "};
    };
    m_dialog.OnStart();
    EXPECT_EQ(SeenFromTheTaskbar(m_view.Calls()), failed(L"Trevolt_Coef_File_Not_Found", 0x30));

    WriteNumbered9f(m_source.File(L"Cab_01.9fcoef"), 3, 2);
    m_dialog.Fields().targetFolder = m_target.File(L"missing");
    m_view.Forget();
    m_dialog.OnStart();
    std::vector<std::wstring> expected = failed(L"Trevolt_Export_Path_Not_Exist", 0x20);
    expected.insert(expected.begin(), L"run 1 ");
    EXPECT_EQ(SeenFromTheTaskbar(m_view.Calls()), expected);
}

TEST_F(TrevoltDlgRun, RunThatIsRefusedAtOnceCallsNobody) {
    m_dialog.Fields().current = {0, 0};
    m_dialog.OnStart();
    EXPECT_EQ(SeenFromTheTaskbar(m_view.Calls()),
              (std::vector<std::wstring>{
                  L"message 48 " + Text(L"Trevolt_Please_Input_Correct_Cabinet_Size"), L"run 0 "}));
}

/// Bytes of a map of 3 × 2.
constexpr std::uint64_t kMapBytes = 6 * (sizeof(SMatrixCoef) + sizeof(float));

TEST_F(TrevoltDlgRun, MemoryRefusedForAMapOfTheTypedSizeEndsTheRun) {
    for (const wchar_t* name : {L"a.9fcoef", L"b.9fcoef"})
        WriteNumbered9f(m_source.File(name), 3, 2);
    for (const std::uint64_t room : {std::uint64_t{0}, kMapBytes, 2 * kMapBytes - 1}) {
        const test::CBudgetLimit limit(CMemoryBudget::Process().Outstanding() + room);
        m_view.Forget();
        m_dialog.OnStart();
        ExpectEndWithoutMemory();
        EXPECT_TRUE(m_view.Positions().empty());
        EXPECT_TRUE(m_target.Names().empty());
    }
}

TEST_F(TrevoltDlgRun, ASizeThatNoMapCanHaveEndsTheRun) {
    WriteNumbered9f(m_source.File(L"a.9fcoef"), 3, 2);
    m_dialog.Fields().current = {65535, 40000};
    m_dialog.OnStart();
    ExpectEndWithoutMemory();
    EXPECT_TRUE(m_target.Names().empty());
}

TEST_F(TrevoltDlgRun, MemoryRefusedForATurnedMapEndsTheRun) {
    ASSERT_EQ(Write3bCoefFile(*NumberedMap(3, 2), m_source.File(L"a.3bcoef").c_str(), nullptr),
              S_OK);
    const test::CBudgetLimit limit(CMemoryBudget::Process().Outstanding() + kMapBytes + 18);
    m_dialog.OnStart();
    ExpectEndWithoutMemory();
    EXPECT_EQ(m_view.Positions(), (Positions{5, 10}));
    EXPECT_TRUE(m_target.Names().empty());
}

TEST_F(TrevoltDlgRun, MemoryRefusedForWhatIsWrittenEndsTheRun) {
    for (const SFileKind& kind : FileKinds()) {
        const std::wstring name = L"a" + std::wstring(kind.extension);
        ASSERT_FALSE(Failed(kind.save(*NumberedMap(3, 2), m_source.File(name).c_str())));
        std::optional<test::CBudgetLimit> limit;
        m_view.onAngleAsked = [&] { limit.emplace(CMemoryBudget::Process().Outstanding()); };
        m_view.Forget();
        m_dialog.OnStart();
        if (kind.extension == L".cccoef") // text is written as it goes
            EXPECT_EQ(m_view.Messages(), (Messages{{Text(L"Trevolt_Export_Finished"), 0}}));
        else
            ExpectEndWithoutMemory();
        limit.reset();
        ASSERT_TRUE(RemoveFile(m_source.File(name)));
    }
}

TEST_F(TrevoltDlgRun, NothingIsWrittenAfterMemoryWasRefused) {
    for (const wchar_t* name : {L"a.9fcoef", L"b.9fcoef", L"c.9fcoef"})
        WriteNumbered9f(m_source.File(name), 3, 2);
    std::optional<test::CBudgetLimit> limit;
    int asked = 0;
    m_view.onAngleAsked = [&] {
        if (++asked == 2)
            limit.emplace(CMemoryBudget::Process().Outstanding());
    };
    m_dialog.OnStart();
    ExpectEndWithoutMemory();
    EXPECT_EQ(asked, 2);
    ASSERT_EQ(m_target.Names().size(), 1U);
    limit.reset();
    CChromaCorrectCoef written;
    written.Resize(2, 3);
    EXPECT_EQ(Read9fCoefFile(written, m_target.File(m_target.Names()[0]).c_str()), 1);

    // The next run has its memory again.
    m_view.onAngleAsked = [] {};
    m_view.Forget();
    m_dialog.OnStart();
    EXPECT_EQ(m_view.Messages(), (Messages{{Text(L"Trevolt_Export_Finished"), 0}}));
    EXPECT_EQ(m_target.Names().size(), 3U);
}

TEST_F(TrevoltDlgRun, KeepsMemoryForItsOwnFilesOnly) {
    for (const wchar_t* name : {L"a.9fcoef", L"b.9fcoef"})
        WriteNumbered9f(m_source.File(name), 40, 30);
    std::uint64_t keptMidway = 0;
    m_view.onAngleAsked = [&] {
        keptMidway = std::max(keptMidway, CMemoryBudget::Process().Kept());
    };
    m_dialog.OnStart();
    EXPECT_EQ(m_view.Messages(), (Messages{{Text(L"Trevolt_Export_Finished"), 0}}));
    EXPECT_GT(keptMidway, 0U);
    EXPECT_EQ(CMemoryBudget::Process().Kept(), 0U);
}

TEST_F(TrevoltDlgRun, AnyMemoryExhaustionEndsTheRun) {
    WriteNumbered9f(m_source.File(L"a.9fcoef"), 3, 2);
    m_view.onAngleAsked = [] { throw std::bad_alloc(); };
    m_dialog.OnStart();
    ExpectEndWithoutMemory();
    EXPECT_TRUE(m_target.Names().empty());
}

TEST_F(TrevoltDlgRun, AFileThatAsksForTooMuchMemoryItselfIsNoEnd) {
    const std::wstring liar = m_source.File(L"liar.9wcoef");
    ASSERT_FALSE(Failed(SaveWordCoefFile(EWordKind::Chroma, *NumberedMap(3, 2), liar.c_str())));
    test::Bytes bytes = test::ReadFile(liar);
    StoreLittle<std::uint32_t>(&bytes[28], 131072); // width and height of the header
    StoreLittle<std::uint32_t>(&bytes[32], 65536);
    test::WriteFile(liar, bytes);
    for (const wchar_t* name : {L"a.9fcoef", L"b.9fcoef"})
        WriteNumbered9f(m_source.File(name), 3, 2);
    const test::CBudgetLimit limit(CMemoryBudget::Process().Outstanding() +
                                   (std::uint64_t{1} << 26));
    {
        const CTransferReport report;
        CChromaCorrectCoef map;
        map.Resize(3, 2);
        DropStatus(FindLoadKind(L".9wcoef")->load(map, liar.c_str())); // the report is what counts
        ASSERT_TRUE(report.WasMemoryRefused());
    }
    m_dialog.OnStart();
    EXPECT_EQ(m_view.Messages(), (Messages{{Text(L"Trevolt_Export_Finished"), 0}}));
    EXPECT_EQ(m_target.Names(),
              (std::vector<std::wstring>{L"a-90\u00B0.9fcoef", L"b-90\u00B0.9fcoef",
                                         L"liar-90\u00B0.9wcoef"}));
    for (const wchar_t* name : {L"a-90\u00B0.9fcoef", L"b-90\u00B0.9fcoef"}) {
        CChromaCorrectCoef turned;
        turned.Resize(2, 3);
        EXPECT_EQ(Read9fCoefFile(turned, m_target.File(name).c_str()), 1);
        EXPECT_EQ(turned.FindElement(0, 2)->m[4], NumberedPixel(2, 1).m[4]);
    }
}

TEST_F(TrevoltDlgRun, EveryEntryIsNamedByTheAngleThatIsShownThen) {
    for (const wchar_t* name : {L"a.9fcoef", L"b.9fcoef"})
        m_dialog.OutputMap()[name] = NumberedMap(2, 3);
    std::vector<std::wstring> expected;
    int asked = 0;
    for (const auto& [name, map] : m_dialog.OutputMap())
        expected.push_back(ExportName(name, std::to_wstring(++asked)));
    std::sort(expected.begin(), expected.end());
    asked = 0;
    m_view.onAngleAsked = [&] { m_view.SelectAngle(1, std::to_wstring(++asked)); };
    m_dialog.ExportAll();
    EXPECT_EQ(m_target.Names(), expected);
}

TEST_F(TrevoltDlgRun, SkippedMapsMoveTheBarToo) {
    const std::vector<std::wstring> names{L"a.9fcoef", L"b.9fcoef", L"c.9fcoef"};
    for (const std::wstring& name : names)
        m_dialog.InputMap()[name] = nullptr;
    std::vector<std::unique_ptr<CChromaCorrectCoef>*> inOrder;
    for (auto& [name, map] : m_dialog.InputMap())
        inOrder.push_back(&map);

    *inOrder[1] = NumberedMap(3, 2);
    *inOrder[2] = NumberedMap(3, 2);
    EXPECT_EQ(m_dialog.RotateAll(), 1);
    EXPECT_EQ(m_view.Positions(), (Positions{10, 0, 80, 95})) << "the first map is skipped";

    m_view.Forget();
    *inOrder[0] = NumberedMap(3, 2);
    *inOrder[2] = nullptr;
    EXPECT_EQ(m_dialog.RotateAll(), 1);
    EXPECT_EQ(m_view.Positions(), (Positions{10, 0, 0, 95})) << "the last map is skipped";
}

TEST_F(TrevoltDlgRun, ScreenModeAsksNothingOfTheCurrentPair) {
    WriteNumbered9f(m_source.File(L"wall.9fcoef"), 3, 2);
    m_dialog.Fields().wholeScreen = 1;
    m_dialog.Fields().screen = {3, 2};
    // Maps of no size are turned, and lose their exports; those of half a size are too small.
    for (const auto& [current, key] : {std::pair{SMapSize{0, 0}, L"Trevolt_Export_Finished"},
                                       {{3, 0}, L"Trevolt_Export_Failed"},
                                       {{0, 2}, L"Trevolt_Export_Failed"}}) {
        m_view.Forget();
        m_dialog.Fields().current = current;
        m_dialog.OnStart();
        EXPECT_EQ(m_view.Messages(), (Messages{{Text(key), 0}}));
    }
}

TEST_F(TrevoltDlgRun, CabinetModeAsksNothingOfTheScreenPair) {
    WriteNumbered9f(m_source.File(L"a.9fcoef"), 3, 2);
    ASSERT_EQ(m_dialog.Fields().screen, (SMapSize{0, 0}));
    m_dialog.OnStart();
    EXPECT_EQ(m_view.Messages(), (Messages{{Text(L"Trevolt_Export_Finished"), 0}}));
}

TEST_F(TrevoltDlgRun, NothingToExportIsToldBeforeAMissingFolder) {
    m_dialog.Fields().targetFolder = WithSeparator(m_target.File(L"missing"));
    m_dialog.ExportAll();
    EXPECT_EQ(m_view.Messages(), (Messages{{Text(L"Trevolt_Export_Failed"), 0}}));
}

TEST_F(TrevoltDlgRun, TheExportHasItsOwnOrderOfKinds) {
    const std::wstring name = L"x.12wcoef.3fcoef"; // loads as .3fcoef
    m_dialog.OutputMap()[name] = NumberedMap(2, 3);
    m_dialog.ExportAll();
    const std::wstring expected = m_source.File(L"expected");
    ASSERT_FALSE(Failed(
        SaveWordCoefFile(EWordKind::VirtualGreenChroma, *NumberedMap(2, 3), expected.c_str())));
    EXPECT_EQ(test::ReadFile(m_target.File(L"x-90\u00B0.12wcoef.3fcoef")),
              test::ReadFile(expected));
}

TEST_F(TrevoltDlgRun, NothingIsInsertedIntoTheFoldersPaths) {
    WriteNumbered9f(m_source.File(L"cab_1.9fcoef"), 3, 2);
    WriteNumbered9f(m_source.File(L"wall.9fcoef"), 3, 2);
    m_dialog.Fields().sourceFolder = m_source.File(L"cab");
    ASSERT_TRUE(CreateFolders(m_target.File(L"turned")));
    m_dialog.Fields().targetFolder = m_target.File(L"turned");
    m_dialog.OnStart();
    EXPECT_EQ(m_target.Names(),
              (std::vector<std::wstring>{L"turned", L"turnedcab_1-90\u00B0.9fcoef"}));
}

TEST_F(TrevoltDlgRun, FolderWithoutAKnownFileIsLoadedAllTheSame) {
    test::WriteText(m_source.File(L"readme.txt"), "x");
    CCoefMapTable map;
    EXPECT_EQ(CTrevoltDlg::LoadFolder(m_source.Path(), {3, 2}, map), S_OK);
    EXPECT_TRUE(map.empty());
    EXPECT_EQ(CTrevoltDlg::LoadFolder(m_source.File(L"none"), {3, 2}, map), E_FAIL);
}

TEST_F(TrevoltDlgRun, TheDialogIsBusyUntilTheExportsMessageIsClosed) {
    WriteNumbered9f(m_source.File(L"a.9fcoef"), 3, 2);
    std::vector<std::int32_t> busy;
    m_view.onAngleAsked = [&] { busy.push_back(m_dialog.Fields().busy); };
    m_view.onMessage = [&] { busy.push_back(m_dialog.Fields().busy); };
    m_dialog.OnStart();
    EXPECT_EQ(busy, (std::vector<std::int32_t>{1, 1}));
    EXPECT_EQ(m_dialog.Fields().busy, 0);
}

TEST_F(TrevoltDlgRun, StartNeedsBothFolders) {
    for (const std::uint32_t set : {0U, kSourceSet, kTargetSet}) {
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

TEST_F(TrevoltDlgRun, ASecondStartKeepsNothingOfTheFirst) {
    WriteNumbered9f(m_source.File(L"a.9fcoef"), 3, 2);
    m_dialog.OnStart();
    ASSERT_TRUE(RemoveFile(m_source.File(L"a.9fcoef")));
    ASSERT_TRUE(RemoveFile(m_target.File(L"a-90\u00B0.9fcoef")));
    WriteNumbered9f(m_source.File(L"b.9fcoef"), 3, 2);
    m_dialog.OnStart();
    for (const CCoefMapTable* maps : {&m_dialog.InputMap(), &m_dialog.OutputMap()}) {
        ASSERT_EQ(maps->size(), 1U);
        EXPECT_EQ(maps->begin()->first, L"b.9fcoef");
    }
    EXPECT_EQ(m_target.Names(), (std::vector<std::wstring>{L"b-90\u00B0.9fcoef"}));
}

TEST(CoefMapTable, IsMadeWithSeventeenBuckets) {
    EXPECT_GE(CCoefMapTable().bucket_count(), 17U);
    EXPECT_LT(CCoefMapTable().bucket_count(), 29U); // the next size after 17
}

} // namespace
} // namespace trevolt
