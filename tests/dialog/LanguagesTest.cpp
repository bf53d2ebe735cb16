#include "app/dialog/Languages.h"

#include <gtest/gtest.h>

#include "app/dialog/TrevoltApp.h"
#include "tests/dialog/DialogFixture.h"

namespace trevolt {
namespace {

const std::wstring kSeparator(1, kPathSeparator);

TEST(Languages, EveryIdHasItsFileAndFallback) {
    const SLanguageFiles english{L"Multi_eng.ini", L"Multi_eng.ini"};
    const std::vector<std::pair<std::int32_t, SLanguageFiles>> expected{
        {0, english},
        {1, {L"Multi_chi.ini", L"Multi_chi.ini"}},
        {2, {L"Multi_chi_fanti.ini", L"Multi_chi.ini"}},
        {3, english},
        {4, {L"Multi_French.ini", L"Multi_eng.ini"}},
        {5, {L"Multi_Japanese.ini", L"Multi_eng.ini"}},
        {6, {L"Multi_Korean.ini", L"Multi_eng.ini"}},
        {7, {L"Multi_Russian.ini", L"Multi_eng.ini"}},
        {8, {L"Multi_Thai.ini", L"Multi_eng.ini"}},
        {9, {L"Multi_Spanish.ini", L"Multi_eng.ini"}},
        {10, {L"Multi_Polish.ini", L"Multi_eng.ini"}},
        {11, {L"Multi_Swedish.ini", L"Multi_eng.ini"}},
        {12, {L"Multi_Portuguese.ini", L"Multi_eng.ini"}},
        {13, english},
        {99, english},
        {-2147483647 - 1, english}};
    for (const auto& [id, files] : expected)
        EXPECT_EQ(FindLanguageFiles(id), files) << id;
}

TEST(Languages, FoldersLieThreeAboveTheProgram) {
    const std::wstring up = L".." + kSeparator;
    EXPECT_EQ(StartLanguageFolder(L"P/"), L"P/" + up + up + up + L"Language" + kSeparator);
    EXPECT_EQ(ToolsLanguageFolder(L"P/"),
              L"P/" + up + up + up + L"Language" + kSeparator + L"Tools" + kSeparator);
    EXPECT_EQ(StartLanguageFolder(L""), up + up + up + L"Language" + kSeparator);
}

TEST(Languages, ToolsLanguageFallsBackKeyByKey) {
    const test::CInstalledTree tree;
    const std::wstring tools = ToolsLanguageFolder(tree.ModuleFolder());
    test::WriteText(tools + L"Multi_chi_fanti.ini", "Trevolt_1001=mine\n");
    CTranslate translate;
    SelectToolsLanguage(translate, tree.ModuleFolder(), 2);
    EXPECT_EQ(translate.LangId(), 2);
    EXPECT_EQ(translate.TranslateString(L"Trevolt_1001"), L"mine");
    EXPECT_EQ(translate.TranslateString(L"Trevolt_102"), L"\u7CFB\u6570\u65CB\u8F6C");
}

class StartLanguage : public testing::Test {
  protected:
    void Write(const wchar_t* name, std::string_view text) const {
        test::WriteText(StartLanguageFolder(m_tree.ModuleFolder()) + name, text);
    }
    test::CInstalledTree m_tree;
    CTranslate m_translate;
};

TEST_F(StartLanguage, IsChineseWithoutTheEnglishFallback) {
    Write(L"Multi_chi.ini", "Trevolt_A=chinese\n");
    Write(L"Multi_eng.ini", "Trevolt_A=english\nTrevolt_B=english\n");
    SelectStartLanguage(m_translate, m_tree.ModuleFolder());
    EXPECT_EQ(m_translate.TranslateString(L"Trevolt_A"), L"chinese");
    // The fallback is the bare file name, which is looked for where the program was started.
    EXPECT_EQ(m_translate.Find(L"Trevolt_B"), std::nullopt);
}

TEST_F(StartLanguage, IsEnglishByFallbackWhereTheChineseFileIsMissing) {
    Write(L"Multi_eng.ini", "Trevolt_B=english\n");
    ASSERT_TRUE(RemoveFile(StartLanguageFolder(m_tree.ModuleFolder()) + L"Multi_chi.ini"));
    SelectStartLanguage(m_translate, m_tree.ModuleFolder());
    EXPECT_EQ(m_translate.TranslateString(L"Trevolt_B"), L"english");
}

TEST_F(StartLanguage, FolderInPlaceOfTheChineseFileCountsAsMissing) {
    Write(L"Multi_eng.ini", "Trevolt_B=english\n");
    const std::wstring chinese = StartLanguageFolder(m_tree.ModuleFolder()) + L"Multi_chi.ini";
    ASSERT_TRUE(RemoveFile(chinese));
    ASSERT_TRUE(CreateFolders(chinese));
    SelectStartLanguage(m_translate, m_tree.ModuleFolder());
    EXPECT_EQ(m_translate.TranslateString(L"Trevolt_B"), L"english");
}

TEST_F(StartLanguage, AppSelectsItBeforeTheDialogAndEndsWithoutALoop) {
    std::wstring seen;
    const bool goesOn = CTrevoltApp().InitInstance(m_translate, m_tree.ModuleFolder(), [&] {
        seen = m_translate.TranslateString(L"Trevolt_Cabinet_Width");
    });
    EXPECT_FALSE(goesOn);
    EXPECT_EQ(seen, L"\u7BB1\u4F53\u5BBD(&W)");
}

} // namespace
} // namespace trevolt
