#include "app/dialog/Translate.h"

#include <array>
#include <map>

#include <gtest/gtest.h>

#include "tests/support/TestFiles.h"

namespace trevolt {
namespace {

using test::CTemporaryFolder;

/// A translator on two files of the given content.
class Translate : public testing::Test {
  protected:
    void Load(std::string_view language, std::string_view fallback = {}) {
        test::WriteText(m_folder.File(L"language.ini"), language);
        test::WriteText(m_folder.File(L"fallback.ini"), fallback);
        m_translate.SetLangPath(m_folder.File(L"language.ini"), m_folder.File(L"fallback.ini"));
    }

    CTemporaryFolder m_folder;
    CTranslate m_translate;
};

TEST_F(Translate, KeyWithoutFilesReadsAsItsWords) {
    EXPECT_EQ(m_translate.TranslateString(L"Trevolt_Select_Path_Please"), L"Select Path Please");
    EXPECT_EQ(m_translate.TranslateString(L"Tools_OK"), L"OK");
    EXPECT_EQ(m_translate.TranslateString(L"Plain"), L"Plain");
    EXPECT_EQ(m_translate.TranslateString(L"Trevolt_"), L"");
    EXPECT_EQ(m_translate.TranslateString(L""), L"");
    EXPECT_EQ(m_translate.Find(L"Trevolt_Select_Path_Please"), std::nullopt);
}

TEST_F(Translate, LanguageFileComesBeforeFallback) {
    Load("Trevolt_A=first\nTrevolt_Empty=\n", "Trevolt_A=second\nTrevolt_B=b\nTrevolt_Empty=x\n");
    EXPECT_EQ(m_translate.TranslateString(L"Trevolt_A"), L"first");
    EXPECT_EQ(m_translate.TranslateString(L"Trevolt_B"), L"b");
    EXPECT_EQ(m_translate.TranslateString(L"Trevolt_Empty"), L"");
    EXPECT_EQ(m_translate.TranslateString(L"Trevolt_C_D"), L"C D");
}

TEST_F(Translate, ReadsByteOrderMarkCarriageReturnsCommentsAndBlanks) {
    Load("\xEF\xBB\xBFTrevolt_A=\xE7\xAE\xB1\xE4\xBD\x93\r\n"
         ";Trevolt_B=comment\r\n"
         "  ; Trevolt_B=comment too\r\n"
         "[section]\r\n"
         "no text\r\n"
         " \t Trevolt_B \t= two = three ; four \r\n"
         "Trevolt_B=later\r\n"
         "Trevolt_Last=end");
    EXPECT_EQ(m_translate.TranslateString(L"Trevolt_A"), L"\u7BB1\u4F53");
    EXPECT_EQ(m_translate.TranslateString(L"Trevolt_B"), L"two = three ; four");
    EXPECT_EQ(m_translate.Find(L";Trevolt_B"), std::nullopt);
    EXPECT_EQ(m_translate.Find(L"; Trevolt_B"), std::nullopt);
    EXPECT_EQ(m_translate.TranslateString(L"Trevolt_Last"), L"end");
    EXPECT_EQ(m_translate.Find(L"trevolt_last"), std::nullopt);
}

TEST_F(Translate, ResolvesEscapes) {
    Load("A=one\\ntwo\nB=C:\\\\new\nC=\\t \\\nD=\\\\n\n");
    EXPECT_EQ(m_translate.TranslateString(L"A"), L"one\ntwo");
    EXPECT_EQ(m_translate.TranslateString(L"B"), L"C:\\new");
    EXPECT_EQ(m_translate.TranslateString(L"C"), L"\\t \\");
    EXPECT_EQ(m_translate.TranslateString(L"D"), L"\\n");
}

TEST_F(Translate, ResolvesAnEscapeAtATextsEnd) {
    Load("Trevolt_A=end\\n\nTrevolt_B=end\\\\\nTrevolt_C=end\\\n");
    EXPECT_EQ(m_translate.TranslateString(L"Trevolt_A"), L"end\n");
    EXPECT_EQ(m_translate.TranslateString(L"Trevolt_B"), L"end\\");
    EXPECT_EQ(m_translate.TranslateString(L"Trevolt_C"), L"end\\");
}

TEST_F(Translate, PassesOverLinesThatAreNotUtf8) {
    Load("A=\xC0\x80\nB=good\n\xFF=C\n");
    EXPECT_EQ(m_translate.Find(L"A"), std::nullopt);
    EXPECT_EQ(m_translate.TranslateString(L"B"), L"good");
}

TEST_F(Translate, TooLargeAFileCountsAsEmpty) {
    std::string text = "A=text\n";
    text.resize((4U << 20U) + 1, ';');
    Load(text, "A=fallback\n");
    EXPECT_EQ(m_translate.TranslateString(L"A"), L"fallback");
}

#ifdef __linux__
// The first page of a process is nobody's: its memory opens, and the first read fails.
TEST_F(Translate, AFileThatCannotBeReadCountsAsEmpty) {
    test::WriteText(m_folder.File(L"fallback.ini"), "Trevolt_A=second\n");
    m_translate.SetLangPath(L"/proc/self/mem", m_folder.File(L"fallback.ini"));
    EXPECT_EQ(m_translate.TranslateString(L"Trevolt_A"), L"second");
    m_translate.SetLangPath(L"/proc/self/mem", L"/proc/self/mem");
    EXPECT_EQ(m_translate.TranslateString(L"Trevolt_A"), L"A");
}
#endif

TEST_F(Translate, SettingThePathForgetsTheFormerTexts) {
    Load("A=text\n");
    m_translate.SetLangPath(m_folder.File(L"missing.ini"), m_folder.Path());
    EXPECT_EQ(m_translate.Find(L"A"), std::nullopt);
}

TEST_F(Translate, RemembersTheId) {
    EXPECT_EQ(m_translate.LangId(), 0);
    m_translate.SetLangId(99);
    EXPECT_EQ(m_translate.LangId(), 99);
}

class CRecordedDialog : public CTranslatedDialog {
  public:
    void ShowTitle(const std::wstring& text) override { title = text; }
    void ShowControlText(int id, const std::wstring& text) override { texts[id] = text; }

    std::wstring title = L"untouched";
    std::map<int, std::wstring> texts;
};

TEST_F(Translate, DialogShowsWhatHasAText) {
    Load("Trevolt_102=Title\nTrevolt_7=Seven\nTrevolt_8=\n", "Trevolt_9=Nine\nOther_10=Ten\n");
    CRecordedDialog dialog;
    m_translate.TranslateDialog(dialog, std::array{7, 8, 9, 10}, 102, L"Trevolt_");
    EXPECT_EQ(dialog.title, L"Title");
    EXPECT_EQ(dialog.texts, (std::map<int, std::wstring>{{7, L"Seven"}, {8, L""}, {9, L"Nine"}}));

    m_translate.TranslateDialog(dialog, std::array{10}, 103, L"Other_");
    EXPECT_EQ(dialog.title, L"Title");
    EXPECT_EQ(dialog.texts[10], L"Ten");
}

TEST(WithNumbers, ReplacesTwoPlaceholdersAndNothingElse) {
    EXPECT_EQ(WithNumbers(L"from %d to %d.", 0, 65535), L"from 0 to 65535.");
    EXPECT_EQ(WithNumbers(L"%d%d%d", -1, 2), L"-12%d");
    EXPECT_EQ(WithNumbers(L"only %d", 5, 6), L"only 5");
    EXPECT_EQ(WithNumbers(L"%s %n 100%", 5, 6), L"%s %n 100%");
    EXPECT_EQ(WithNumbers(L"", 5, 6), L"");
}

} // namespace
} // namespace trevolt
