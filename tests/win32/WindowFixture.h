// A test on the real program, installed in a tree of its own with the project's language files. A
// failure leaves a picture of the screen among the others (FailurePicture.cpp).
#pragma once

#include <memory>

#include "app/dialog/StartConstants.h"
#include "platform/ProgramFolder.h"
#include "tests/dialog/DialogFixture.h"
#include "tests/win32/Screenshot.h"
#include "tests/win32/TrevoltProcess.h"
#include "trevolt/Utf8.h"

namespace trevolt::test {

/// The folder for pictures, beside the programs.
inline std::wstring PictureFolder() {
    const std::wstring folder = GetModuleFolder() + L"..\\window-pictures\\";
    CreateFolders(folder);
    return folder;
}

/// The system asks programs for dark windows while this lives.
class CDarkSystem {
  public:
    CDarkSystem() {
        const DWORD dark = 0;
        EXPECT_EQ(RegSetKeyValueW(HKEY_CURRENT_USER, kKey, kValue, REG_DWORD, &dark, sizeof dark),
                  ERROR_SUCCESS);
    }
    ~CDarkSystem() { RegDeleteKeyValueW(HKEY_CURRENT_USER, kKey, kValue); }
    CDarkSystem(const CDarkSystem&) = delete;
    CDarkSystem& operator=(const CDarkSystem&) = delete;

  private:
    static constexpr const wchar_t* kKey =
        L"Software\\Microsoft\\Windows\\CurrentVersion\\Themes\\Personalize";
    static constexpr const wchar_t* kValue = L"AppsUseLightTheme";
};

class WindowFixture : public testing::Test {
  protected:
    static constexpr const wchar_t* kPlaceholder = L"Select Path Please";

    WindowFixture() {
        EXPECT_TRUE(
            CopyFileW((GetModuleFolder() + L"Trevolt.exe").c_str(), Program().c_str(), FALSE));
    }

    std::wstring Program() const { return m_tree.ModuleFolder() + L"Trevolt.exe"; }

    CTrevoltProcess& Start(const SLaunch& launch = {}, std::int32_t shownLanguage = 0) {
        m_trevolt.reset();
        UseWindowFont(FontFor(shownLanguage));
        m_trevolt = std::make_unique<CTrevoltProcess>(Program(), launch);
        return *m_trevolt;
    }
    /// As Start, with fonts that have the language's letters.
    CTrevoltProcess& StartIn(std::int32_t language) {
        return Start({SLaunch::Input::Pipe, LanguageBytes(language)}, language);
    }

    /// The font of a language's windows. Thai is shaped, which here only the window's own font can
    /// be; it is too tall for the others.
    static std::wstring FontFor(std::int32_t language) {
        constexpr std::int32_t kThai = 8;
        return language == kThai ? L"Waree" : L"DejaVu Sans";
    }

    /// What stands in for the system's fonts in the programs started from now on.
    static void UseWindowFont(const std::wstring& font) {
        for (const wchar_t* replaced : {L"Segoe UI", L"Tahoma"})
            EXPECT_EQ(RegSetKeyValueW(HKEY_CURRENT_USER, L"Software\\Wine\\Fonts\\Replacements",
                                      replaced, REG_SZ, font.c_str(),
                                      static_cast<DWORD>((font.size() + 1) * sizeof(wchar_t))),
                      ERROR_SUCCESS);
    }

    static std::wstring TextIn(const std::wstring& file, const std::wstring& key) {
        CTranslate translate;
        translate.SetLangPath(LanguageFile(L"Tools/" + file), L"");
        return translate.Find(key).value_or(L"(missing)");
    }
    static std::wstring English(const std::wstring& key) { return TextIn(L"Multi_eng.ini", key); }

    CSettingsProfile Settings() const {
        return CSettingsProfile(m_tree.SettingsFile(), kSettingsSection);
    }
    std::wstring Saved(const wchar_t* key) const { return Settings().ReadString(key); }
    void Save(const wchar_t* key, const std::wstring& value) const {
        EXPECT_TRUE(Settings().WriteString(key, value));
    }
    void SaveFolders(const std::wstring& source, const std::wstring& target) const {
        Save(kKeySourceFolder, source);
        Save(kKeyTargetFolder, target);
    }

    CInstalledTree m_tree;
    std::unique_ptr<CTrevoltProcess> m_trevolt; ///< ends before its tree goes
};

/// The language ids, their files and names for pictures.
struct SLanguageCase {
    std::int32_t id;
    const wchar_t* file;
};

inline constexpr SLanguageCase kLanguageCases[] = {
    {0, L"Multi_eng.ini"},         {1, L"Multi_chi.ini"},     {2, L"Multi_chi_fanti.ini"},
    {3, L"Multi_eng.ini"},         {4, L"Multi_French.ini"},  {5, L"Multi_Japanese.ini"},
    {6, L"Multi_Korean.ini"},      {7, L"Multi_Russian.ini"}, {8, L"Multi_Thai.ini"},
    {9, L"Multi_Spanish.ini"},     {10, L"Multi_Polish.ini"}, {11, L"Multi_Swedish.ini"},
    {12, L"Multi_Portuguese.ini"}, {99, L"Multi_eng.ini"}};

inline constexpr int kTranslatedControls[] = {1000, 1001, 1003, 1005, 1006, 1013, 1017, 1018};

} // namespace trevolt::test
