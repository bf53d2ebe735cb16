// The dialog where files cannot be read or written, or hold what nobody wrote: it goes on, and tells
// no more than it does otherwise.
#include "app/dialog/TrevoltDlg.h"

#include <algorithm>

#include "tests/dialog/DialogFixture.h"
#include "tests/support/CoefMaps.h"
#include "trevolt/CoefRotation.h"
#include "trevolt/FileKinds.h"
#include "trevolt/Utf8.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <unistd.h>

#include "tests/support/FileSizeLimit.h"
#endif

namespace trevolt {
namespace {

using namespace std::string_literals;
using namespace test;

/// A dialog with both folders set, a cabinet size of 3 × 2 and 90° selected.
class TrevoltDlgFaults : public DialogFixture {
  protected:
    TrevoltDlgFaults() {
        m_dialog.OnInitDialog(0);
        CTrevoltDlg::SFields& fields = m_dialog.Fields();
        fields.sourceFolder = m_source.Path();
        fields.targetFolder = m_target.Path();
        fields.pathsSet = kSourceSet | kTargetSet;
        fields.current = {3, 2};
    }

    static std::wstring NameOf(const SFileKind& kind) {
        return L"cab" + std::wstring(kind.extension);
    }
    std::wstring Output(const SFileKind& kind) const {
        return m_target.File(ExportName(NameOf(kind), L"90\u00B0"));
    }

    void AddCabinetOfEveryKind() const {
        CChromaCorrectCoef map;
        map.Resize(3, 2);
        PaintMap(map, BytePixel);
        for (const SFileKind& kind : FileKinds())
            ASSERT_FALSE(Failed(kind.save(map, m_source.File(NameOf(kind)).c_str())));
    }

    /// Fails unless the run told `key` alone and the dialog can be used again.
    void ExpectRunEndsWith(const wchar_t* key, std::uint32_t style) {
        m_view.Forget();
        m_dialog.OnStart();
        EXPECT_EQ(m_view.Messages(), (std::vector<CMemoryView::Message>{{English(key), style}}));
        EXPECT_EQ(m_dialog.Fields().busy, 0);
        EXPECT_FALSE(m_view.At(kIdProgress).shown);
        for (const int id : {kIdAngle, kIdBrowseSource, kIdBrowseTarget, kIdByCabinet, kIdByScreen,
                             kIdWidth, kIdHeight, kIdStart})
            EXPECT_TRUE(m_view.At(id).enabled) << id;
        EXPECT_EQ(m_view.Calls().back(), L"wait 0 0");
    }
    void ExpectFinishedRun() { ExpectRunEndsWith(L"Trevolt_Export_Finished", kMessagePlain); }

    void ExpectOutput(const SFileKind& kind, const CChromaCorrectCoef& expected) const {
        CChromaCorrectCoef turned;
        turned.Resize(2, 3);
        EXPECT_FALSE(Failed(kind.load(turned, Output(kind).c_str()))) << NameOf(kind).c_str();
        for (int y = 0; y < 3; ++y)
            for (int x = 0; x < 2; ++x)
                EXPECT_NEAR(turned.FindElement(x, y)->m[0], expected.FindElement(x, y)->m[0],
                            5.1e-6)
                    << "text holds five decimals";
    }
    void ExpectWholeOutputs() const {
        for (const SFileKind& kind : FileKinds()) {
            CChromaCorrectCoef source;
            source.Resize(3, 2);
            ASSERT_FALSE(Failed(kind.load(source, m_source.File(NameOf(kind)).c_str())));
            CChromaCorrectCoef expected;
            TurnMap(source, 3, 2, 1, expected);
            ExpectOutput(kind, expected);
        }
    }

    CTemporaryFolder m_source;
    CTemporaryFolder m_target;
};

/// Files that open and cannot be read, or do not open.
class CUnreadable {
  public:
#ifdef _WIN32
    void Make(const std::wstring& path) {
        WriteText(path, "x");
        m_handles.push_back(
            CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        EXPECT_NE(m_handles.back(), INVALID_HANDLE_VALUE);
    }
    ~CUnreadable() {
        for (const HANDLE handle : m_handles)
            CloseHandle(handle);
    }

  private:
    std::vector<HANDLE> m_handles;
#else
    void Make(const std::wstring& path) {
        // The first page of a process's memory cannot be read.
        const char* const target = m_opens ? "/proc/self/mem" : "nowhere";
        EXPECT_EQ(symlink(target, ToNativePath(path)->c_str()), 0);
    }
    explicit CUnreadable(bool opens) : m_opens(opens) {}

  private:
    bool m_opens;
#endif
};

TEST_F(TrevoltDlgFaults, FilesThatCannotBeReadGoAsDefaults) {
#ifdef _WIN32
    CUnreadable files[1];
#else
    CUnreadable files[] = {CUnreadable(true), CUnreadable(false)};
#endif
    CChromaCorrectCoef defaults;
    defaults.Resize(2, 3);
    for (CUnreadable& unreadable : files) {
        for (const SFileKind& kind : FileKinds())
            unreadable.Make(m_source.File(NameOf(kind)));
        ExpectFinishedRun();
        EXPECT_EQ(m_target.Names().size(), FileKinds().size());
        for (const SFileKind& kind : FileKinds()) {
            ExpectOutput(kind, defaults);
            RemoveFile(m_source.File(NameOf(kind)));
            EXPECT_TRUE(RemoveFile(Output(kind)));
        }
    }
}

#ifndef _WIN32
TEST_F(TrevoltDlgFaults, AFullTargetEndsTheRunAsItAlwaysEnds) {
    AddCabinetOfEveryKind();
    for (const rlim_t bytes : {0U, 1U, 24U, 60U, 168U, 200U}) {
        const CFileSizeLimit limit(bytes);
        ExpectFinishedRun();
    }
    ExpectFinishedRun();
    ExpectWholeOutputs();
}
#endif

TEST_F(TrevoltDlgFaults, AnOutputsPlaceThatIsTakenLosesThatOutputOnly) {
    AddCabinetOfEveryKind();
    const auto isTaken = [](const SFileKind& kind) { return (&kind - &FileKinds()[0]) % 2 == 0; };
    for (const SFileKind& kind : FileKinds())
        if (isTaken(kind)) {
            ASSERT_TRUE(CreateFolders(Output(kind)));
        }
    ExpectFinishedRun();
    for (const SFileKind& kind : FileKinds()) {
        EXPECT_EQ(IsFolder(Output(kind)), isTaken(kind));
        EXPECT_TRUE(PathExists(Output(kind)));
        if (isTaken(kind)) {
            ASSERT_TRUE(ReplaceWith(Output(kind), m_target.File(L"was " + NameOf(kind))));
        }
    }
    ExpectFinishedRun();
    ExpectWholeOutputs();
}

TEST_F(TrevoltDlgFaults, ATargetThatGoesWhileItIsWrittenEndsTheRunAsItAlwaysEnds) {
    AddCabinetOfEveryKind();
    const std::wstring target = m_target.File(L"target");
    ASSERT_TRUE(CreateFolders(target));
    m_dialog.Fields().targetFolder = WithSeparator(target);
    int asked = 0;
    m_view.onAngleAsked = [&] {
        if (++asked == 4) {
            EXPECT_TRUE(ReplaceWith(target, m_target.File(L"away")));
        }
    };
    ExpectFinishedRun();
    EXPECT_EQ(asked, 9);
    EXPECT_FALSE(PathExists(target));
    EXPECT_EQ(ListEntries(WithSeparator(m_target.File(L"away"))).entries.size(), 3U + 2U);
    ExpectRunEndsWith(L"Trevolt_Export_Path_Not_Exist", kMessageQuestion);
}

TEST_F(TrevoltDlgFaults, FoldersWhoseNamesAreNoneEndTheRun) {
    AddCabinetOfEveryKind();
    const std::wstring odd = m_source.Path() + L'\0' + L"x" + kPathSeparator;
    m_dialog.Fields().sourceFolder = odd;
    ExpectRunEndsWith(L"Trevolt_Coef_File_Not_Found", kMessageExclamation);
    m_dialog.Fields().sourceFolder = m_source.Path();
    m_dialog.Fields().targetFolder = std::wstring(100000, L'n') + kPathSeparator;
    ExpectRunEndsWith(L"Trevolt_Export_Path_Not_Exist", kMessageQuestion);
    m_dialog.Fields().sourceFolder = m_dialog.Fields().targetFolder;
    ExpectRunEndsWith(L"Trevolt_Coef_File_Not_Found", kMessageExclamation);
}

/// What may stand in a file that somebody else wrote or a disk lost.
std::vector<std::string> Junk() {
    std::string everyByte;
    for (int round = 0; round < 16; ++round)
        for (int byte = 0; byte < 256; ++byte)
            everyByte += static_cast<char>(byte);
    const std::string line(5000, 'x');
    return {"",
            "\n",
            "\xFF\xFE",
            "\xFF\xFE\xFF",
            "\xFF\xFE["s,
            "\xFE\xFF\0["s,
            "\xEF\xBB\xBF",
            "\xEF\xBB",
            std::string(1, '\0'),
            std::string(4096, '\0'),
            "\xFF\xFE" + std::string(4096, '\0'),
            "\xFF\xFE" + std::string(4096, '\xDB'), // halves of pairs
            "\xFF\xFE" + std::string(4096, '\xDF'),
            "[coefInfo]\r\nBoxWidth="s + '\0' + "5\r\n",
            "[coefInfo",
            "[coefInfo]",
            "[[[[coefInfo]]]]\n=\n==\n=5\nBoxWidth\nBoxWidth==\n\"\n",
            everyByte,
            "\xFF\xFE" + everyByte,
            line,
            "[" + line,
            "[coefInfo]\n" + line,
            "[coefInfo]\nBoxWidth=" + std::string(std::size_t{1} << 20, '7'),
            "[coefInfo]\n" + line + "=5\n",
            "[coefInfo]\nOriCoefPath=" + line + "\nTargetCoefPath=" + line,
            std::string(line.size(), '\n'),
            std::string(line.size(), '['),
            std::string(line.size(), '=')};
}

class TrevoltDlgJunk : public DialogFixture {};

TEST_F(TrevoltDlgJunk, InTheSettingsFileIsReadAsSomeSettings) {
    for (const std::string& junk : Junk()) {
        SCOPED_TRACE(testing::PrintToString(junk.substr(0, 24)) + " of " +
                     std::to_string(junk.size()));
        WriteText(m_tree.SettingsFile(), junk);
        EXPECT_TRUE(m_dialog.OnInitDialog(0));
        EXPECT_LE(m_dialog.Fields().sourceFolder.size(), 999U);
        EXPECT_EQ(m_view.Title(), English(L"Trevolt_102"));
        EXPECT_TRUE(ReadText(m_tree.SettingsFile()) == junk) << "opening changes nothing";
        Type(kIdWidth, L"12");
        EXPECT_EQ(m_dialog.Fields().current.width, 12);
        EXPECT_EQ(Saved(L"BoxWidth"), L"12");
    }
    EXPECT_TRUE(m_view.Messages().empty());
}

TEST_F(TrevoltDlgJunk, AFolderInTheSettingsFilesPlaceLosesTheSettings) {
    ASSERT_TRUE(CreateFolders(m_tree.SettingsFile()));
    EXPECT_TRUE(m_dialog.OnInitDialog(0));
    Type(kIdWidth, L"12");
    EXPECT_EQ(m_dialog.Fields().current.width, 12);
    EXPECT_EQ(m_view.At(kIdWidth).text, L"12");
    EXPECT_EQ(Saved(L"BoxWidth"), L"");
    EXPECT_TRUE(IsFolder(m_tree.SettingsFile()));
    EXPECT_TRUE(m_view.Messages().empty());
}

#ifdef _WIN32
TEST_F(TrevoltDlgJunk, ASettingsFileThatAnotherProgramHoldsStaysAsItIs) {
    std::string utf16 = "\xFF\xFE";
    for (const char c : "[coefInfo]\r\nBoxWidth=5\r\n"s)
        utf16.append({c, '\0'});
    for (const std::string& content : {"[coefInfo]\r\nBoxWidth=5\r\n"s, utf16}) {
        WriteText(m_tree.SettingsFile(), content);
        const HANDLE holder = CreateFileW(m_tree.SettingsFile().c_str(), GENERIC_READ,
                                          FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
        ASSERT_NE(holder, INVALID_HANDLE_VALUE);
        m_dialog.OnInitDialog(0);
        EXPECT_EQ(m_view.At(kIdWidth).text, L"5");
        Type(kIdWidth, L"12");
        EXPECT_EQ(m_dialog.Fields().current.width, 12);
        EXPECT_EQ(ReadText(m_tree.SettingsFile()), content);
        EXPECT_FALSE(FileExists(m_tree.SettingsFile() + L".new"));
        CloseHandle(holder);
    }
    EXPECT_TRUE(m_view.Messages().empty());
}
#endif

TEST_F(TrevoltDlgJunk, InALanguageFileLeavesItsFallback) {
    const std::wstring french = ToolsLanguageFolder(m_tree.ModuleFolder()) + L"Multi_French.ini";
    for (const std::string& junk : Junk()) {
        SCOPED_TRACE(testing::PrintToString(junk.substr(0, 24)) + " of " +
                     std::to_string(junk.size()));
        WriteText(french, junk);
        m_dialog.OnInitDialog(4);
        EXPECT_EQ(m_view.Title(), English(L"Trevolt_102"));
        EXPECT_EQ(m_view.At(kIdStart).text, English(L"Trevolt_1001"));
    }
    ASSERT_TRUE(RemoveFile(french));
    ASSERT_TRUE(CreateFolders(french));
    m_dialog.OnInitDialog(4);
    EXPECT_EQ(m_view.Title(), English(L"Trevolt_102"));
}

// Wherever the file ends, a key reads as the whole file has it, or begins so where it is cut, or as
// the fallback has it.
TEST_F(TrevoltDlgJunk, ALanguageFileThatIsCutGivesWhatIsLeft) {
    const std::wstring file = m_tree.ModuleFolder() + L"cut.ini";
    const std::string whole = ReadText(LanguageFile(L"Tools/Multi_chi.ini"));
    const std::wstring keys[] = {L"Trevolt_102", L"Trevolt_1001", L"Trevolt_Cabinet_Width",
                                 L"Trevolt_Export_Finished", L"Tools_Cannot_Input_Char"};
    for (std::size_t size = 0; size <= whole.size(); size += 37) {
        WriteText(file, whole.substr(0, size));
        m_translate.SetLangPath(file, LanguageFile(L"Tools/Multi_eng.ini"));
        for (const std::wstring& key : keys) {
            const std::wstring text = m_translate.TranslateString(key);
            EXPECT_TRUE(text == English(key) || TextOf(L"Multi_chi.ini", key).starts_with(text))
                << size << " " << WideToShownUtf8(key);
        }
    }
}

TEST_F(TrevoltDlgJunk, ALanguageMessageIsTakenByItsFirstFourBytesWhateverItsSize) {
    m_dialog.OnInitDialog(0);
    std::vector<std::byte> data(std::size_t{16} << 20, std::byte{0xFF});
    m_dialog.OnCopyData(0, data);
    EXPECT_EQ(m_translate.LangId(), -1);
    EXPECT_EQ(m_view.Title(), English(L"Trevolt_102"));
    data[0] = std::byte{4};
    data[1] = data[2] = data[3] = std::byte{0};
    m_dialog.OnCopyData(0, data);
    EXPECT_EQ(m_view.Title(), TextOf(L"Multi_French.ini", L"Trevolt_102"));
    for (const std::size_t size : {0U, 1U, 3U}) {
        m_dialog.OnCopyData(0, std::span(data).subspan(4, size));
        EXPECT_EQ(m_translate.LangId(), 4);
    }
}

} // namespace
} // namespace trevolt
