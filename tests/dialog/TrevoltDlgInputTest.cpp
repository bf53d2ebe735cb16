// Sizes, modes and folders that the user enters, against the window in memory.
#include "app/dialog/TrevoltDlg.h"

#include "tests/dialog/DialogFixture.h"

namespace trevolt {
namespace {

using test::CMemoryView;
using Balloons = std::vector<CMemoryView::Balloon>;

class TrevoltDlgInput : public test::DialogFixture {
  protected:
    TrevoltDlgInput() {
        m_dialog.OnInitDialog(0);
        m_view.Forget();
    }

    /// The balloons that the two texts bring up, with what the check answers.
    Balloons Check(const std::wstring& width, const std::wstring& height, std::int32_t answer) {
        m_view.SetText(kIdWidth, width);
        m_view.SetText(kIdHeight, height);
        m_view.Forget();
        EXPECT_EQ(m_dialog.ValidateSizeInputs(), answer);
        return m_view.Balloons();
    }
    static Balloons Tip(int id, const std::wstring& text) {
        return {{id, English(L"Tools_Cannot_Input_Char"), text}};
    }
    static Balloons NumbersTip(int id) { return Tip(id, English(L"Tools_Only_Numbers_Can_Input")); }
    static Balloons IntegerTip(int id) { return Tip(id, English(L"Tools_Only_Integer_Can_Input")); }
    static Balloons LimitTip(int id, std::int32_t highest) {
        return Tip(id, WithNumbers(English(L"Trevolt_Edit_Limit"), 0, highest));
    }
};

TEST_F(TrevoltDlgInput, LimitsAreInclusive) {
    EXPECT_EQ(Check(L"0", L"0", 1), Balloons());
    EXPECT_EQ(Check(L"65535", L"32768", 1), Balloons());
    EXPECT_EQ(Check(L"65536", L"1", 0), LimitTip(kIdWidth, 65535));
    EXPECT_EQ(Check(L"1", L"32769", 0), LimitTip(kIdHeight, 32768));
    EXPECT_EQ(Check(L"99999999999999999999", L"1", 0), LimitTip(kIdWidth, 65535));
    EXPECT_EQ(Check(L"000000000000000000007", L"1", 1), Balloons());
}

TEST_F(TrevoltDlgInput, LimitTipNamesBothLimits) {
    EXPECT_EQ(Check(L"65536", L"1", 0).at(0).text, L"Please enter a number from 0 to 65535.");
    EXPECT_EQ(Check(L"1", L"40000", 0).at(0).text, L"Please enter a number from 0 to 32768.");
}

TEST_F(TrevoltDlgInput, FaultsAreToldInTheirOrder) {
    EXPECT_EQ(Check(L"12a", L"", 0), NumbersTip(kIdWidth));
    EXPECT_EQ(Check(L"12.5", L"-1", 0), NumbersTip(kIdHeight));
    EXPECT_EQ(Check(L"12.5", L"", 0), IntegerTip(kIdWidth));
    EXPECT_EQ(Check(L"", L"99999", 0), IntegerTip(kIdWidth));
    EXPECT_EQ(Check(L"65536", L"", 0), IntegerTip(kIdHeight));
    EXPECT_EQ(Check(L"65536", L"99999", 0), LimitTip(kIdWidth, 65535));
    EXPECT_EQ(Check(L" 1", L"1", 0), NumbersTip(kIdWidth));
    EXPECT_EQ(Check(L"+1", L"1", 0), NumbersTip(kIdWidth));
    EXPECT_EQ(Check(L"\uFF11", L"1", 0), NumbersTip(kIdWidth));
    EXPECT_EQ(Check(L".", L"1", 0), IntegerTip(kIdWidth));
}

TEST_F(TrevoltDlgInput, WholeTextIsSelectedAfterTheBalloon) {
    Check(L"12a", L"1", 0);
    ASSERT_EQ(m_view.Calls().size(), 2U);
    EXPECT_TRUE(m_view.Calls()[0].starts_with(L"balloon 1002 "));
    EXPECT_EQ(m_view.Calls()[1], L"select 1002 ");
}

TEST_F(TrevoltDlgInput, TypedValuesAreTakenAndSavedAtEveryChange) {
    Type(kIdWidth, L"128");
    Type(kIdHeight, L"64");
    EXPECT_EQ(m_dialog.Fields().current, (SMapSize{128, 64}));
    EXPECT_EQ(Saved(L"BoxWidth"), L"128");
    EXPECT_EQ(Saved(L"BoxHeight"), L"64");
    EXPECT_EQ(Saved(L"ScreenWidth"), L"0");
    Type(kIdWidth, L"12.5");
    EXPECT_EQ(Saved(L"BoxWidth"), L"12");
    Type(kIdWidth, L"");
    EXPECT_EQ(Saved(L"BoxWidth"), L"0");
    Type(kIdWidth, L"-7");
    EXPECT_EQ(m_dialog.Fields().current.width, -7);
    EXPECT_EQ(Saved(L"BoxWidth"), L"0");
    EXPECT_TRUE(m_view.Balloons().empty());
}

TEST_F(TrevoltDlgInput, CommittedValueIsCheckedAndSavedAllTheSame) {
    m_view.SetText(kIdWidth, L"65536");
    m_view.SetText(kIdHeight, L"9");
    EXPECT_EQ(m_dialog.OnNumberEditNotify(kIdWidth), 0);
    EXPECT_EQ(m_view.Balloons(), LimitTip(kIdWidth, 65535));
    EXPECT_EQ(m_dialog.Fields().current, (SMapSize{65536, 9}));
    EXPECT_EQ(Saved(L"BoxWidth"), L"65536");
}

TEST_F(TrevoltDlgInput, NotificationsOfOtherEditsAreIgnored) {
    m_view.SetText(kIdWidth, L"12a");
    m_view.Forget();
    EXPECT_EQ(m_dialog.OnNumberEditNotify(kIdSource), 0);
    EXPECT_EQ(m_dialog.OnNumberEditNotify(0), 0);
    EXPECT_TRUE(m_view.Calls().empty());
    EXPECT_FALSE(test::FileExists(m_tree.SettingsFile()));
}

TEST_F(TrevoltDlgInput, ModesRememberTheirSizes) {
    Type(kIdWidth, L"128");
    Type(kIdHeight, L"64");
    ClickMode(kIdByScreen);
    EXPECT_EQ(m_dialog.Fields().wholeScreen, 1);
    EXPECT_EQ(m_view.At(kIdWidth).text, L"0");
    EXPECT_EQ(m_view.At(kIdWidthLabel).text, English(L"Trevolt_Screen_Width"));
    Type(kIdWidth, L"1920");
    Type(kIdHeight, L"1080");
    ClickMode(kIdByCabinet);
    EXPECT_EQ(m_view.At(kIdWidth).text, L"128");
    EXPECT_EQ(m_view.At(kIdHeight).text, L"64");
    EXPECT_EQ(m_view.At(kIdHeightLabel).text, English(L"Trevolt_Cabinet_Height"));
    ClickMode(kIdByScreen);
    EXPECT_EQ(m_view.At(kIdWidth).text, L"1920");
    EXPECT_EQ(m_view.At(kIdHeight).text, L"1080");
    EXPECT_EQ(Saved(L"BoxWidth"), L"128");
    EXPECT_EQ(Saved(L"ScreenHeight"), L"1080");
}

TEST_F(TrevoltDlgInput, ShowingTheFieldsIsNoChangeByTheUser) {
    Type(kIdWidth, L"128");
    Type(kIdHeight, L"64");
    m_dialog.Fields().screen = {1920, 1080};
    // A real edit tells its dialog about every text, whoever set it.
    m_view.onTextSet = [this](int id) {
        if (id == kIdWidth || id == kIdHeight)
            m_dialog.OnSizeChanged();
    };
    ClickMode(kIdByScreen);
    EXPECT_EQ(m_dialog.Fields().screen, (SMapSize{1920, 1080}));
    EXPECT_EQ(m_dialog.Fields().cabinet, (SMapSize{128, 64}));
    EXPECT_EQ(m_dialog.Fields().current, (SMapSize{1920, 1080}));
}

TEST_F(TrevoltDlgInput, ChosenFoldersAreShownSavedAndEnableStart) {
    const std::wstring separator(1, kPathSeparator);
    m_view.browsed = {true, L"D:" + separator + L"\u7BB1\u4F53"};
    m_dialog.OnBrowseSource();
    EXPECT_EQ(m_view.At(kIdSource).text, L"D:" + separator + L"\u7BB1\u4F53" + separator);
    EXPECT_EQ(Saved(L"OriCoefPath"), L"D:" + separator + L"\u7BB1\u4F53" + separator);
    EXPECT_EQ(Saved(L"TargetCoefPath"), L"");
    EXPECT_FALSE(m_view.At(kIdStart).enabled);

    m_view.browsed = {true, L"E:" + separator};
    m_dialog.OnBrowseTarget();
    EXPECT_EQ(m_view.At(kIdTarget).text, L"E:" + separator);
    EXPECT_EQ(Saved(L"TargetCoefPath"), L"E:" + separator);
    EXPECT_TRUE(m_view.At(kIdStart).enabled);
    EXPECT_TRUE(m_view.Messages().empty());
}

TEST_F(TrevoltDlgInput, CancelledBrowsingChangesNothing) {
    m_dialog.OnBrowseSource();
    EXPECT_EQ(m_view.At(kIdSource).text, kPlaceholder);
    EXPECT_EQ(m_dialog.Fields().pathsSet, 0U);
    EXPECT_TRUE(m_view.Messages().empty());
    EXPECT_EQ(Saved(L"OriCoefPath"), L"");
}

TEST_F(TrevoltDlgInput, ItemOutsideTheFileSystemIsRefused) {
    m_view.browsed = {true, L""};
    m_dialog.OnBrowseTarget();
    EXPECT_EQ(m_view.Messages(), (std::vector<CMemoryView::Message>{
                                     {English(L"Trevolt_Invalid_Path_Select_Again"), 0x40}}));
    EXPECT_EQ(m_dialog.Fields().pathsSet, 0U);
    EXPECT_EQ(m_view.At(kIdTarget).text, kPlaceholder);
}

TEST_F(TrevoltDlgInput, BrowserOpensAtTheFolderThatIsSet) {
    m_dialog.OnBrowseSource();
    EXPECT_EQ(m_view.Calls().front(), L"browse 0 ");
    m_view.browsed = {true, L"one"};
    m_dialog.OnBrowseSource();
    m_view.browsed = {};
    for (const auto& [browse, opened] :
         {std::pair(&CTrevoltDlg::OnBrowseSource, m_dialog.Fields().sourceFolder),
          std::pair(&CTrevoltDlg::OnBrowseTarget, std::wstring())}) {
        m_view.Forget();
        (m_dialog.*browse)();
        EXPECT_EQ(m_view.Calls().front(), L"browse 0 " + opened);
    }
}

TEST_F(TrevoltDlgInput, DroppedFolderIsTakenAsABrowsedOne) {
    const test::CTemporaryFolder source;
    const test::CTemporaryFolder target;
    test::WriteText(source.File(L"a.9fcoef"), "");
    m_dialog.OnFolderDropped(target.Path(), kIdTarget);
    EXPECT_EQ(m_view.At(kIdTarget).text, target.Path());
    EXPECT_EQ(Saved(L"TargetCoefPath"), target.Path());
    EXPECT_FALSE(m_view.At(kIdStart).enabled);
    m_dialog.OnFolderDropped(source.File(L"a.9fcoef"), 0);
    EXPECT_EQ(m_view.At(kIdSource).text, source.Path());
    EXPECT_EQ(Saved(L"OriCoefPath"), source.Path());
    EXPECT_TRUE(m_view.At(kIdStart).enabled);
    EXPECT_TRUE(m_view.Messages().empty());
}

TEST_F(TrevoltDlgInput, DroppedPathOfNothingIsRefused) {
    const test::CTemporaryFolder folder;
    m_dialog.OnFolderDropped(folder.File(L"missing"), kIdSource);
    EXPECT_EQ(m_view.Messages(), (std::vector<CMemoryView::Message>{
                                     {English(L"Trevolt_Invalid_Path_Select_Again"), 0x40}}));
    EXPECT_EQ(m_dialog.Fields().pathsSet, 0U);
    EXPECT_EQ(m_view.At(kIdSource).text, kPlaceholder);
}

TEST_F(TrevoltDlgInput, NothingIsTakenWhileARunIsOn) {
    const test::CTemporaryFolder folder;
    m_dialog.Fields().busy = 1;
    m_dialog.OnFolderDropped(folder.Path(), kIdSource);
    EXPECT_TRUE(m_view.Calls().empty());
    EXPECT_EQ(m_dialog.Fields().pathsSet, 0U);
    EXPECT_FALSE(test::FileExists(m_tree.SettingsFile()));
}

} // namespace
} // namespace trevolt
