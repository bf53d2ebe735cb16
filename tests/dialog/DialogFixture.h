// A dialog against the window in memory, in a program folder of its own with the project's language
// files in their places.
#pragma once

#include <gtest/gtest.h>

#include "app/dialog/Languages.h"
#include "app/dialog/TrevoltDlg.h"
#include "platform/FileSystem.h"
#include "tests/dialog/MemoryView.h"
#include "tests/support/TestFiles.h"

namespace trevolt::test {

/// Path of one of the project's language files, named below Language/ with slashes.
inline std::wstring LanguageFile(const std::wstring& name) {
    return Sample(L"../Language/" + name);
}

/// A tree as the program is installed in: its own folder, and Language three folders above it.
class CInstalledTree {
  public:
    CInstalledTree() {
        EXPECT_TRUE(CreateFolders(m_moduleFolder));
        const std::wstring tools = ToolsLanguageFolder(m_moduleFolder);
        EXPECT_TRUE(CreateFolders(tools));
        for (const FolderEntry& entry : ListEntries(LanguageFile(L"Tools/")).entries)
            if (entry.kind == EntryKind::File)
                WriteText(tools + entry.name, ReadText(LanguageFile(L"Tools/" + entry.name)));
        for (const std::wstring name : {L"Multi_chi.ini", L"Multi_eng.ini"})
            WriteText(StartLanguageFolder(m_moduleFolder) + name, ReadText(LanguageFile(name)));
    }

    const std::wstring& ModuleFolder() const { return m_moduleFolder; }
    std::wstring SettingsFile() const { return m_moduleFolder + L"Trevo.ini"; }

  private:
    CTemporaryFolder m_folder;
    std::wstring m_moduleFolder =
        WithSeparator(WithSeparator(WithSeparator(m_folder.File(L"Tools")) + L"Trevolt") + L"bin");
};

class DialogFixture : public testing::Test {
  protected:
    static constexpr const wchar_t* kPlaceholder = L"Select Path Please";

    /// The text that the language file `name` gives `key`.
    static std::wstring TextOf(const std::wstring& name, const std::wstring& key) {
        CTranslate translate;
        translate.SetLangPath(LanguageFile(L"Tools/" + name), L"");
        return translate.Find(key).value_or(L"(missing)");
    }
    static std::wstring English(const std::wstring& key) { return TextOf(L"Multi_eng.ini", key); }

    std::wstring Saved(const wchar_t* key) const {
        return CSettingsProfile(m_tree.SettingsFile(), L"coefInfo").ReadString(key);
    }
    void Save(const wchar_t* key, const std::wstring& value) const {
        EXPECT_TRUE(CSettingsProfile(m_tree.SettingsFile(), L"coefInfo").WriteString(key, value));
    }

    /// The user types: the edit holds the text and tells its dialog.
    void Type(int id, const std::wstring& text) {
        m_view.SetText(id, text);
        m_dialog.OnSizeChanged();
    }
    void ClickMode(int id) {
        m_view.Check(id);
        m_dialog.OnModeChanged();
    }

    CInstalledTree m_tree;
    CMemoryView m_view;
    CTranslate m_translate;
    CTrevoltDlg m_dialog{m_view, m_translate, {m_tree.ModuleFolder(), kPlaceholder}};
};

} // namespace trevolt::test
