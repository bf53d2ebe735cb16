// The language files against one list of keys and placeholders.
#include <algorithm>
#include <map>
#include <set>

#include <gtest/gtest.h>

#include "common/TextConversion.h"
#include "tests/dialog/DialogFixture.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

const std::vector<std::wstring> kToolsFiles{
    L"Multi_chi.ini",      L"Multi_chi_fanti.ini", L"Multi_eng.ini",     L"Multi_French.ini",
    L"Multi_Japanese.ini", L"Multi_Korean.ini",    L"Multi_Russian.ini", L"Multi_Thai.ini",
    L"Multi_Spanish.ini",  L"Multi_Polish.ini",    L"Multi_Swedish.ini", L"Multi_Portuguese.ini"};

/// The labels of controls that the user reaches, with an access key each. First those that both
/// modes show, then the two of each mode.
const std::vector<std::wstring> kCommonLabels{L"Trevolt_1017", L"Trevolt_1018", L"Trevolt_1000",
                                              L"Trevolt_1003", L"Trevolt_1005", L"Trevolt_1006",
                                              L"Trevolt_1013", L"Trevolt_1001"};
const std::vector<std::wstring> kCabinetLabels{L"Trevolt_Cabinet_Width", L"Trevolt_Cabinet_Height"};
const std::vector<std::wstring> kScreenLabels{L"Trevolt_Screen_Width", L"Trevolt_Screen_Height"};

const std::vector<std::wstring> kOtherTexts{L"Trevolt_102",
                                            L"Trevolt_Select_Path_Please",
                                            L"Trevolt_Please_Input_Correct_Cabinet_Size",
                                            L"Trevolt_Please_Input_Correct_Screen_Size",
                                            L"Trevolt_Coef_File_Not_Found",
                                            L"Trevolt_Make_Sure_File_Is_Only_One",
                                            L"Trevolt_Export_Failed",
                                            L"Trevolt_Export_Path_Not_Exist",
                                            L"Trevolt_Export_Finished",
                                            L"Trevolt_Not_Enough_Memory",
                                            L"Trevolt_Invalid_Path_Select_Again",
                                            L"Trevolt_Edit_Limit",
                                            L"Tools_Cannot_Input_Char",
                                            L"Tools_Only_Numbers_Can_Input",
                                            L"Tools_Only_Integer_Can_Input",
                                            L"Tools_OK"};

using Texts = std::map<std::wstring, std::wstring>;

/// Every "key=text" line of a language file. A second line of a key is an error.
Texts ReadTexts(const std::wstring& path) {
    const auto decoded = Utf8ToWide(test::ReadText(path));
    EXPECT_TRUE(decoded.has_value()) << "not UTF-8";
    const std::wstring content = decoded.value_or(L"");
    Texts texts;
    std::wstring_view rest = content;
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find(L'\n'), rest.size());
        const std::wstring_view line = rest.substr(0, end);
        rest.remove_prefix(std::min(end + 1, rest.size()));
        const std::size_t equals = line.find(L'=');
        if (line.empty() || line.starts_with(L';'))
            continue;
        EXPECT_NE(equals, std::wstring_view::npos);
        const std::wstring key(line.substr(0, equals));
        EXPECT_TRUE(texts.emplace(key, line.substr(equals + 1)).second)
            << "twice: " << WideToShownUtf8(key);
    }
    return texts;
}

std::set<std::wstring> AllKeys() {
    std::set<std::wstring> keys;
    for (const auto& list : {kCommonLabels, kCabinetLabels, kScreenLabels, kOtherTexts})
        keys.insert(list.begin(), list.end());
    return keys;
}

std::set<std::wstring> KeysOf(const Texts& texts) {
    std::set<std::wstring> keys;
    for (const auto& [key, text] : texts)
        keys.insert(key);
    return keys;
}

std::size_t Count(const std::wstring& text, std::wstring_view part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::wstring::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

/// The small form of a letter of the scripts that the files' access keys come from: Latin, with
/// Latin-1 and Extended-A, Greek and Cyrillic. Windows takes either form for the same key.
wchar_t FoldedLetter(wchar_t c) {
    const auto isIn = [c](int first, int last) { return c >= first && c <= last; };
    const auto moved = [c](int distance) { return static_cast<wchar_t>(c + distance); };
    if (isIn(L'A', L'Z') || (isIn(0xC0, 0xDE) && c != 0xD7) || isIn(0x391, 0x3A9) ||
        isIn(0x410, 0x42F))
        return moved(0x20);
    if (isIn(0x400, 0x40F))
        return moved(0x50);
    // Extended-A holds pairs: the capital is even, but odd in two stretches.
    const bool isCapitalOdd = isIn(0x139, 0x148) || isIn(0x179, 0x17E);
    if (isIn(0x100, 0x17E) && c != 0x178 && c % 2 == (isCapitalOdd ? 1 : 0))
        return moved(1);
    return c;
}

TEST(FoldedLetter, FoldsTheScriptsOfTheAccessKeys) {
    const std::wstring capitals = L"AZ\u00C1\u00D6\u0104\u0141\u015A\u017B\u03A9\u0401\u0428\u042F";
    const std::wstring small = L"az\u00E1\u00F6\u0105\u0142\u015B\u017C\u03C9\u0451\u0448\u044F";
    for (std::size_t i = 0; i < capitals.size(); ++i) {
        EXPECT_EQ(FoldedLetter(capitals[i]), small[i]) << i;
        EXPECT_EQ(FoldedLetter(small[i]), small[i]) << i;
    }
}

class LanguageFiles : public testing::TestWithParam<std::wstring> {
  protected:
    Texts m_texts = ReadTexts(test::LanguageFile(L"Tools/" + GetParam()));
};

TEST_P(LanguageFiles, HoldsEveryKeyAndNoOther) {
    EXPECT_EQ(KeysOf(m_texts), AllKeys());
    for (const auto& [key, text] : m_texts)
        EXPECT_FALSE(text.empty()) << WideToShownUtf8(key);
}

TEST_P(LanguageFiles, PlaceholdersStandInTheLimitAndNowhereElse) {
    for (const auto& [key, text] : m_texts) {
        const std::size_t expected = key == L"Trevolt_Edit_Limit" ? 2 : 0;
        EXPECT_EQ(Count(text, L"%d"), expected) << WideToShownUtf8(key);
        EXPECT_EQ(Count(text, L"%"), expected) << WideToShownUtf8(key);
    }
}

TEST_P(LanguageFiles, AccessKeysDoNotClash) {
    for (const auto& modeLabels : {kCabinetLabels, kScreenLabels}) {
        std::vector<std::wstring> labels = kCommonLabels;
        labels.insert(labels.end(), modeLabels.begin(), modeLabels.end());
        std::set<wchar_t> used;
        for (const std::wstring& key : labels) {
            const std::wstring& text = m_texts[key];
            ASSERT_EQ(Count(text, L"&"), 1U) << WideToShownUtf8(key);
            const wchar_t letter = FoldedLetter(text[text.find(L'&') + 1]);
            EXPECT_TRUE(used.insert(letter).second)
                << WideToShownUtf8(key) << " " << WideToShownUtf8(std::wstring(1, letter));
        }
    }
    for (const std::wstring& key : kOtherTexts)
        EXPECT_EQ(Count(m_texts[key], L"&"), 0U) << WideToShownUtf8(key);
}

TEST_P(LanguageFiles, BrowseButtonsTellThatMoreFollows) {
    for (const std::wstring key : {L"Trevolt_1005", L"Trevolt_1013"})
        EXPECT_TRUE(m_texts[key].ends_with(L"...")) << WideToShownUtf8(key);
    EXPECT_FALSE(m_texts[L"Trevolt_1001"].ends_with(L"..."));
}

/// What every form of a language's words for the two folders holds.
struct SFolderWords {
    std::wstring source;
    std::wstring target;
};

const std::map<std::wstring, SFolderWords> kFolderWords{
    {L"Multi_chi.ini", {L"源文件夹", L"目标文件夹"}},
    {L"Multi_chi_fanti.ini", {L"來源資料夾", L"目標資料夾"}},
    {L"Multi_eng.ini", {L"ource folder", L"arget folder"}},
    {L"Multi_French.ini", {L"ossier source", L"ossier cible"}},
    {L"Multi_Japanese.ini", {L"元のフォルダー", L"保存先のフォルダー"}},
    {L"Multi_Korean.ini", {L"원본 폴더", L"대상 폴더"}},
    {L"Multi_Russian.ini", {L"сходн", L"елев"}},
    {L"Multi_Thai.ini", {L"โฟลเดอร์ต้นทาง", L"โฟลเดอร์ปลายทาง"}},
    {L"Multi_Spanish.ini", {L"arpeta de origen", L"arpeta de destino"}},
    {L"Multi_Polish.ini", {L"źródłow", L"docelow"}},
    {L"Multi_Swedish.ini", {L"ällmapp", L"ålmapp"}},
    {L"Multi_Portuguese.ini", {L"asta de origem", L"asta de destino"}}};

TEST_P(LanguageFiles, MessagesCallTheFoldersAsTheirLabelsDo) {
    const SFolderWords& words = kFolderWords.at(GetParam());
    const auto holds = [&](const wchar_t* key, const std::wstring& word) {
        return ToLowerAscii(m_texts[key]).find(word) != std::wstring::npos;
    };
    for (const wchar_t* key :
         {L"Trevolt_1003", L"Trevolt_Coef_File_Not_Found", L"Trevolt_Make_Sure_File_Is_Only_One"})
        EXPECT_TRUE(holds(key, words.source)) << WideToShownUtf8(key);
    for (const wchar_t* key : {L"Trevolt_1006", L"Trevolt_Export_Path_Not_Exist"})
        EXPECT_TRUE(holds(key, words.target)) << WideToShownUtf8(key);
}

INSTANTIATE_TEST_SUITE_P(Tools, LanguageFiles, testing::ValuesIn(kToolsFiles),
                         [](const auto& suite) {
                             const std::wstring name = suite.param.substr(6);
                             return std::string(WideToShownUtf8(name.substr(0, name.size() - 4)));
                         });

TEST(LanguageFolder, HoldsTheTwelveFilesAndNoOther) {
    std::set<std::wstring> names;
    for (const FolderEntry& entry : ListEntries(test::LanguageFile(L"Tools/")).entries)
        if (entry.kind == EntryKind::File)
            names.insert(entry.name);
    EXPECT_EQ(names, std::set<std::wstring>(kToolsFiles.begin(), kToolsFiles.end()));
}

TEST(LanguageFolder, StartUpFilesHoldTheTextsOfTheToolsFiles) {
    for (const std::wstring name : {L"Multi_chi.ini", L"Multi_eng.ini"}) {
        const Texts start = ReadTexts(test::LanguageFile(name));
        EXPECT_EQ(KeysOf(start), AllKeys());
        EXPECT_EQ(start, ReadTexts(test::LanguageFile(L"Tools/" + name)));
    }
}

} // namespace
} // namespace trevolt
