// Initialisation, settings and language of the dialog, against the window in memory.
#include "app/dialog/TrevoltDlg.h"

#include "app/dialog/ControlNames.h"
#include "tests/dialog/DialogFixture.h"

namespace trevolt {
namespace {

using test::CMemoryView;

class TrevoltDlgSetup : public test::DialogFixture {
  protected:
    void ReceiveLanguage(std::uintptr_t tag, std::int32_t id) {
        m_dialog.OnCopyData(tag, std::as_bytes(std::span(&id, 1)));
    }
};

TEST_F(TrevoltDlgSetup, OpensByCabinetWithPlaceholdersAndQuarterTurn) {
    EXPECT_TRUE(m_dialog.OnInitDialog(0));
    EXPECT_EQ(m_view.At(kIdSource).text, kPlaceholder);
    EXPECT_EQ(m_view.At(kIdTarget).text, kPlaceholder);
    EXPECT_EQ(m_view.At(kIdWidth).text, L"0");
    EXPECT_EQ(m_view.At(kIdHeight).text, L"0");
    EXPECT_TRUE(m_view.IsChecked(kIdByCabinet));
    EXPECT_FALSE(m_view.At(kIdStart).enabled);
    EXPECT_FALSE(m_view.At(kIdProgress).shown);
    EXPECT_EQ(m_view.Entries(), (std::vector<CMemoryView::Entry>{
                                    {L"90\u00B0", 1}, {L"180\u00B0", 2}, {L"270\u00B0", 3}}));
    EXPECT_EQ(m_view.SelectedData(kIdAngle), 1);
    EXPECT_EQ(m_view.Limits(kIdWidth), (CMemoryView::NumberLimits{1, 0, 65535}));
    EXPECT_EQ(m_view.Limits(kIdHeight), (CMemoryView::NumberLimits{1, 0, 32768}));
    EXPECT_FALSE(test::FileExists(m_tree.SettingsFile()));
}

TEST_F(TrevoltDlgSetup, TakesItsStepsInOrder) {
    m_dialog.OnInitDialog(6);
    const auto& calls = m_view.Calls();
    const auto place = [&](const std::wstring& call) {
        const auto found = std::find(calls.begin(), calls.end(), call);
        EXPECT_NE(found, calls.end());
        return found - calls.begin();
    };
    EXPECT_EQ(place(L"set up 0 "), 0);
    const std::wstring korean = L"Multi_Korean.ini";
    const auto range = place(L"range 1008 0 100");
    const auto check = place(L"check 1017 ");
    const auto title = place(L"title 0 " + TextOf(korean, L"Trevolt_102"));
    const auto language = place(L"language 6 ");
    const auto label = place(L"text 1019 " + TextOf(korean, L"Trevolt_Cabinet_Width"));
    const auto limits = place(L"limits 1002 65535");
    EXPECT_LT(range, check);
    EXPECT_LT(check, title);
    EXPECT_LT(title, language);
    EXPECT_LT(language, label);
    EXPECT_LT(label, limits);
}

TEST_F(TrevoltDlgSetup, BrowseButtonsHaveNamesOfTheirOwnInEveryLanguage) {
    m_dialog.OnInitDialog(0);
    for (std::int32_t id = 0; id <= 12; ++id) {
        m_view.Forget();
        ReceiveLanguage(0, id);
        std::vector<std::wstring> names;
        for (const std::wstring& call : m_view.Calls())
            if (call.starts_with(L"name "))
                names.push_back(call);
        EXPECT_EQ(names,
                  (std::vector<std::wstring>{
                      L"name 1005 " + ButtonName(m_view.At(1005).text, m_view.At(1003).text),
                      L"name 1013 " + ButtonName(m_view.At(1013).text, m_view.At(1006).text)}))
            << id;
        EXPECT_NE(names[0].substr(10), names[1].substr(10)) << id;
    }
}

TEST_F(TrevoltDlgSetup, ReadsTheSettingsFile) {
    Save(L"OriCoefPath", L"D:\\\u7BB1\u4F53\\");
    Save(L"TargetCoefPath", L"E:\\out\\");
    Save(L"BoxWidth", L"128");
    Save(L"BoxHeight", L"64");
    Save(L"ScreenWidth", L"1920");
    Save(L"ScreenHeight", L"1080");
    m_dialog.OnInitDialog(0);
    EXPECT_EQ(m_view.At(kIdSource).text, L"D:\\\u7BB1\u4F53\\");
    EXPECT_EQ(m_view.At(kIdTarget).text, L"E:\\out\\");
    EXPECT_EQ(m_view.At(kIdWidth).text, L"128");
    EXPECT_EQ(m_view.At(kIdHeight).text, L"64");
    EXPECT_TRUE(m_view.At(kIdStart).enabled);
    EXPECT_EQ(m_dialog.Fields().screen, (SMapSize{1920, 1080}));
    EXPECT_EQ(m_dialog.Fields().cabinet, (SMapSize{128, 64}));
    EXPECT_EQ(m_dialog.Fields().pathsSet, 3U);
}

TEST_F(TrevoltDlgSetup, OneFolderLeavesStartDisabled) {
    Save(L"TargetCoefPath", L"E:\\out\\");
    m_dialog.OnInitDialog(0);
    EXPECT_EQ(m_dialog.Fields().pathsSet, kTargetSet);
    EXPECT_EQ(m_view.At(kIdSource).text, kPlaceholder);
    EXPECT_FALSE(m_view.At(kIdStart).enabled);
}

TEST_F(TrevoltDlgSetup, SettingsNumbersAreSignedAndSaturated) {
    Save(L"BoxWidth", L"-3");
    Save(L"BoxHeight", L"12 cm");
    Save(L"ScreenWidth", L"99999999999999999999");
    Save(L"ScreenHeight", L"wide");
    m_dialog.LoadSettings();
    EXPECT_EQ(m_dialog.Fields().cabinet, (SMapSize{-3, 12}));
    EXPECT_EQ(m_dialog.Fields().current, (SMapSize{-3, 12}));
    EXPECT_EQ(m_dialog.Fields().screen, (SMapSize{2147483647, 0}));
}

TEST_F(TrevoltDlgSetup, NegativeSizesAreSavedAsZero) {
    Save(L"BoxWidth", L"-3");
    m_dialog.OnInitDialog(0);
    EXPECT_EQ(m_view.At(kIdWidth).text, L"-3");
    m_dialog.SaveSettings();
    EXPECT_EQ(Saved(L"BoxWidth"), L"0");
    EXPECT_EQ(m_dialog.Fields().cabinet.width, -3);
}

TEST_F(TrevoltDlgSetup, WritesTheSixKeysInOrderWithEmptyFolders) {
    m_dialog.OnInitDialog(0);
    m_dialog.Fields().current = {128, 64};
    m_dialog.Fields().screen = {1920, 1080};
    m_dialog.SaveSettings();
    std::string expected = "\xFF\xFE";
    for (const char c : std::string("[coefInfo]\r\nBoxWidth=128\r\nBoxHeight=64\r\n"
                                    "ScreenWidth=1920\r\nScreenHeight=1080\r\n"
                                    "OriCoefPath=\r\nTargetCoefPath=\r\n"))
        expected.append({c, '\0'});
    EXPECT_EQ(test::ReadText(m_tree.SettingsFile()), expected);
}

TEST_F(TrevoltDlgSetup, SettingsThatCannotBeWrittenAreIgnored) {
    CTrevoltDlg lost(m_view, m_translate, {m_tree.ModuleFolder() + L"missing/", kPlaceholder});
    lost.OnInitDialog(0);
    lost.Fields().current = {7, 8};
    lost.SaveSettings();
    EXPECT_EQ(lost.Fields().cabinet, (SMapSize{7, 8}));
    EXPECT_TRUE(m_view.Messages().empty());
}

TEST_F(TrevoltDlgSetup, EveryLanguageIdTranslatesTheWindow) {
    const std::wstring english = L"Multi_eng.ini";
    const std::vector<std::pair<std::int32_t, std::wstring>> languages{
        {0, english},
        {1, L"Multi_chi.ini"},
        {2, L"Multi_chi_fanti.ini"},
        {3, english},
        {4, L"Multi_French.ini"},
        {5, L"Multi_Japanese.ini"},
        {6, L"Multi_Korean.ini"},
        {7, L"Multi_Russian.ini"},
        {8, L"Multi_Thai.ini"},
        {9, L"Multi_Spanish.ini"},
        {10, L"Multi_Polish.ini"},
        {11, L"Multi_Swedish.ini"},
        {12, L"Multi_Portuguese.ini"},
        {99, english},
        {-1, english}};
    for (const auto& [id, file] : languages) {
        m_dialog.OnInitDialog(id);
        EXPECT_EQ(m_translate.LangId(), id);
        EXPECT_EQ(m_view.Title(), TextOf(file, L"Trevolt_102"));
        for (const int control : {1000, 1001, 1003, 1005, 1006, 1013, 1017, 1018})
            EXPECT_EQ(m_view.At(control).text, TextOf(file, L"Trevolt_" + std::to_wstring(control)))
                << id << " " << control;
        EXPECT_EQ(m_view.At(kIdWidthLabel).text, TextOf(file, L"Trevolt_Cabinet_Width"));
        EXPECT_EQ(m_view.At(kIdHeightLabel).text, TextOf(file, L"Trevolt_Cabinet_Height"));
        EXPECT_EQ(m_view.At(kIdSource).text, kPlaceholder);
    }
}

TEST_F(TrevoltDlgSetup, CopyDataChangesTheLanguageAndTheSizeLabelsFollowLater) {
    m_dialog.OnInitDialog(0);
    m_view.Forget();
    ReceiveLanguage(0, 5);
    const std::wstring japanese = L"Multi_Japanese.ini";
    EXPECT_EQ(m_view.Title(), TextOf(japanese, L"Trevolt_102"));
    EXPECT_EQ(m_view.At(kIdStart).text, TextOf(japanese, L"Trevolt_1001"));
    EXPECT_EQ(m_view.At(kIdWidthLabel).text, English(L"Trevolt_Cabinet_Width"));
    for (const std::wstring& call : m_view.Calls())
        EXPECT_FALSE(call.starts_with(L"language")) << "the library's own texts stay";
    ClickMode(kIdByScreen);
    EXPECT_EQ(m_view.At(kIdWidthLabel).text, TextOf(japanese, L"Trevolt_Screen_Width"));
    EXPECT_EQ(m_view.At(kIdHeightLabel).text, TextOf(japanese, L"Trevolt_Screen_Height"));
}

TEST_F(TrevoltDlgSetup, CopyDataOfOtherTagsOrTooShortChangesNothing) {
    m_dialog.OnInitDialog(0);
    m_view.Forget();
    ReceiveLanguage(1, 5);
    const std::array<std::byte, 3> tooShort{};
    m_dialog.OnCopyData(0, tooShort);
    m_dialog.OnCopyData(0, {});
    EXPECT_TRUE(m_view.Calls().empty());
    EXPECT_EQ(m_translate.LangId(), 0);
}

TEST_F(TrevoltDlgSetup, LanguageChangesAnyNumberOfTimes) {
    m_dialog.OnInitDialog(1);
    for (int round = 0; round < 3; ++round)
        for (const auto& [id, file] :
             {std::pair{7, L"Multi_Russian.ini"}, std::pair{99, L"Multi_eng.ini"}}) {
            ReceiveLanguage(0, id);
            EXPECT_EQ(m_view.Title(), TextOf(file, L"Trevolt_102"));
        }
}

TEST_F(TrevoltDlgSetup, MissingLanguageFilesLeaveTheTemplatesTexts) {
    CMemoryView view;
    CTranslate translate;
    CTrevoltDlg lost(view, translate, {L"missing/", kPlaceholder});
    lost.OnInitDialog(5);
    EXPECT_EQ(view.Title(), L"");
    EXPECT_EQ(view.At(kIdStart).text, L"");
    EXPECT_EQ(view.At(kIdWidthLabel).text, L"Cabinet Width");
}

} // namespace
} // namespace trevolt
