// Start, language and end of the real program.
#include <windows.h>

#include <commctrl.h>

#include "tests/win32/WindowFixture.h"
#include "win32/Version.h"

namespace trevolt {
namespace {

using namespace std::string_literals;
using test::LanguageBytes;
using test::SLaunch;

/// The bytes of an id with others behind them, `size` in all.
std::string Padded(std::int32_t id, std::size_t size) {
    std::string bytes = LanguageBytes(id);
    bytes.resize(size, 'x');
    return bytes;
}

class TrevoltStart : public test::WindowFixture {
  protected:
    void ExpectTexts(const std::wstring& file, int id) const {
        EXPECT_EQ(m_trevolt->Title(), TextIn(file, L"Trevolt_102")) << id;
        for (const int control : test::kTranslatedControls)
            EXPECT_EQ(m_trevolt->Text(control),
                      TextIn(file, L"Trevolt_" + std::to_wstring(control)))
                << id << " " << control;
    }
};

TEST_F(TrevoltStart, OpensByCabinetAndIdle) {
    const auto& trevolt = Start();
    EXPECT_TRUE(trevolt.IsChecked(kIdByCabinet));
    EXPECT_FALSE(trevolt.IsChecked(kIdByScreen));
    EXPECT_EQ(trevolt.Text(kIdWidth), L"0");
    EXPECT_EQ(trevolt.Text(kIdHeight), L"0");
    EXPECT_EQ(trevolt.Text(kIdSource), kPlaceholder);
    EXPECT_EQ(trevolt.Text(kIdTarget), kPlaceholder);
    EXPECT_EQ(trevolt.Text(kIdAngle), L"90\u00B0");
    EXPECT_EQ(trevolt.Send(kIdAngle, CB_GETCOUNT), 3);
    EXPECT_EQ(trevolt.Send(kIdAngle, CB_GETCURSEL), 0);
    EXPECT_FALSE(trevolt.IsEnabled(kIdStart));
    EXPECT_FALSE(trevolt.IsVisible(kIdProgress));
    EXPECT_EQ(trevolt.Send(kIdProgress, PBM_GETPOS), 0);
    for (const int id : {kIdAngle, kIdBrowseSource, kIdBrowseTarget, kIdByCabinet, kIdByScreen,
                         kIdWidth, kIdHeight})
        EXPECT_TRUE(trevolt.IsEnabled(id) && trevolt.IsVisible(id)) << id;
    // The folders are shown and not typed.
    for (const int edit : {kIdSource, kIdTarget}) {
        trevolt.MoveFocus(edit);
        trevolt.Send(edit, WM_CHAR, L'x');
        EXPECT_EQ(trevolt.Text(edit), kPlaceholder);
    }
}

TEST_F(TrevoltStart, TakesEveryLanguageFromItsLauncher) {
    for (const auto& [id, file] : test::kLanguageCases) {
        const auto& trevolt = StartIn(id);
        ExpectTexts(file, id);
        EXPECT_EQ(trevolt.Text(kIdWidthLabel), TextIn(file, L"Trevolt_Cabinet_Width"));
        EXPECT_EQ(trevolt.Text(kIdHeightLabel), TextIn(file, L"Trevolt_Cabinet_Height"));
        EXPECT_EQ(trevolt.Text(kIdSource), kPlaceholder);
    }
}

TEST_F(TrevoltStart, OddStandardInputsAreDefined) {
    const std::pair<SLaunch, const wchar_t*> cases[] = {
        {{SLaunch::Input::None, ""}, L"Multi_eng.ini"},
        {{SLaunch::Input::Device, ""}, L"Multi_eng.ini"},
        {{SLaunch::Input::InvalidValue, ""}, L"Multi_eng.ini"},
        {{SLaunch::Input::ClosedHandle, ""}, L"Multi_eng.ini"},
        {{SLaunch::Input::File, ""}, L"Multi_eng.ini"},
        {{SLaunch::Input::File, LanguageBytes(4)}, L"Multi_French.ini"},
        {{SLaunch::Input::OpenPipe, LanguageBytes(10)}, L"Multi_Polish.ini"},
        {{SLaunch::Input::Pipe, ""}, L"Multi_eng.ini"},
        {{SLaunch::Input::Pipe, "\x05\x00\x00"s}, L"Multi_Japanese.ini"},
        {{SLaunch::Input::Pipe, Padded(6, 10000)}, L"Multi_Korean.ini"},
        {{SLaunch::Input::Pipe, Padded(7, 20000)}, L"Multi_Russian.ini"},
        {{SLaunch::Input::Pipe, "\xFF\xFF\xFF\xFF"s}, L"Multi_eng.ini"},
    };
    for (const auto& [launch, file] : cases) {
        Start(launch);
        ExpectTexts(file, static_cast<int>(launch.bytes.size()));
    }
}

TEST_F(TrevoltStart, ComesUpAmongJunkWhenItsLauncherIsSilent) {
    const std::wstring language = ToolsLanguageFolder(m_tree.ModuleFolder()) + L"Multi_eng.ini";
    const std::string whole = test::ReadText(language);
    test::WriteText(language, whole.substr(0, whole.size() / 2) + std::string(70000, '\0'));
    test::WriteText(m_tree.SettingsFile(),
                    "[coefInfo]\nBoxWidth=7\nBoxHeight=\0\nOriCoefPath=\0\1\2"s +
                        std::string(std::size_t{1} << 20, 'x'));
    const auto& trevolt = Start({SLaunch::Input::OpenPipe, ""});
    EXPECT_EQ(trevolt.Title(), English(L"Trevolt_102"));
    EXPECT_EQ(trevolt.Text(kIdWidth), L"7");
    trevolt.Type(kIdHeight, L"12");
    EXPECT_EQ(Saved(kKeyCabinetHeight), L"12");
    EXPECT_EQ(Saved(kKeyCabinetWidth), L"7");
}

TEST_F(TrevoltStart, ChangesItsLanguageWhileItRuns) {
    const auto& trevolt = Start();
    for (const auto& [id, file] : test::kLanguageCases) {
        trevolt.SendLanguage(0, id);
        ExpectTexts(file, id);
        EXPECT_EQ(trevolt.Text(kIdWidthLabel), English(L"Trevolt_Cabinet_Width"));
        trevolt.SendLanguage(1, 5);
        ExpectTexts(file, id);
    }
    trevolt.SendLanguage(0, 5);
    trevolt.Click(kIdByScreen);
    EXPECT_EQ(trevolt.Text(kIdWidthLabel), TextIn(L"Multi_Japanese.ini", L"Trevolt_Screen_Width"));
}

TEST_F(TrevoltStart, OddLanguageMessagesAreDefined) {
    const auto& trevolt = Start();
    for (const std::string& tooShort : {""s, "\x05\x00\x00"s}) {
        trevolt.SendCopyData(0, tooShort);
        ExpectTexts(L"Multi_eng.ini", static_cast<int>(tooShort.size()));
    }
    trevolt.SendCopyData(0, Padded(7, 5000));
    ExpectTexts(L"Multi_Russian.ini", 5000);
    // Under Wine no larger ones: its own programs do not answer one of 2 MiB either.
    trevolt.SendCopyData(0, Padded(4, std::size_t{1} << 20));
    ExpectTexts(L"Multi_French.ini", 1 << 20);
}

TEST_F(TrevoltStart, EscapeCloses) {
    for (const int control : {kIdWidth, kIdBrowseSource, kIdByCabinet}) {
        const auto& trevolt = Start();
        trevolt.Press(control, VK_ESCAPE);
        EXPECT_TRUE(trevolt.WaitForEnd()) << control;
    }
}

TEST_F(TrevoltStart, CloseEndsWithZero) {
    auto& trevolt = Start();
    trevolt.Close();
    EXPECT_EQ(trevolt.WaitForExitCode(), 0U);
}

TEST_F(TrevoltStart, SentCloseEndsTheProgram) {
    const std::pair<UINT, WPARAM> requests[] = {{WM_CLOSE, 0}, {WM_SYSCOMMAND, SC_CLOSE}};
    for (const auto& [message, wParam] : requests) {
        const auto& trevolt = Start();
        trevolt.SendClose(message, wParam);
        EXPECT_EQ(trevolt.WaitForExitCode(), 0U) << message;
    }
}

TEST_F(TrevoltStart, ClosingUnderAModalWindowEndsTheProgram) {
    for (const int browseButton : {0, static_cast<int>(kIdBrowseSource)}) {
        const auto& trevolt = Start();
        if (browseButton == 0)
            PostMessageW(trevolt.Window(), WM_SYSCOMMAND, 0x10, 0);
        else
            trevolt.ClickModal(browseButton);
        trevolt.WaitForPopup();
        trevolt.SendClose();
        EXPECT_EQ(trevolt.WaitForExitCode(), 0U) << browseButton;
    }
}

TEST_F(TrevoltStart, SystemMenuOpensTheAboutBox) {
    const auto& trevolt = Start();
    // The system uses the command's low four bits.
    for (const WPARAM command : {0x10U, 0x1FU}) {
        PostMessageW(trevolt.Window(), WM_SYSCOMMAND, command, 0);
        const HWND about = trevolt.WaitForPopup();
        EXPECT_EQ(test::TextOf(about), L"About Trevolt");
        EXPECT_EQ(test::ReadTexts(about).text, L"" TREVOLT_ABOUT_TEXT);
        EXPECT_EQ(test::ReadTexts(about).button, L"OK");
        EXPECT_FALSE(IsWindowEnabled(trevolt.Window()));
        test::ClosePopup(about);
    }
    EXPECT_TRUE(IsWindowEnabled(trevolt.Window()));
}

TEST_F(TrevoltStart, MinimisesAndComesBack) {
    const auto& trevolt = Start();
    trevolt.Type(kIdWidth, L"77");
    trevolt.MoveFocus(kIdByCabinet); // no caret blinks, and it is where Wine puts the focus again
    const auto clientArea = [&] {
        RECT area{};
        GetClientRect(trevolt.Window(), &area);
        MapWindowPoints(trevolt.Window(), nullptr, reinterpret_cast<POINT*>(&area), 2);
        return area;
    };
    const RECT place = clientArea();
    const auto before = test::CPixels::OfSteadyScreen(place);
    PostMessageW(trevolt.Window(), WM_SYSCOMMAND, SC_MINIMIZE, 0);
    ASSERT_TRUE(test::WaitUntil([&] { return IsIconic(trevolt.Window()) != 0; }));
    EXPECT_FALSE(test::CPixels::OfSteadyScreen(place) == before) << "the window is still there";
    PostMessageW(trevolt.Window(), WM_SYSCOMMAND, SC_RESTORE, 0);
    ASSERT_TRUE(test::WaitUntil([&] { return IsIconic(trevolt.Window()) == 0; }));
    EXPECT_TRUE(test::WaitUntil([&] { return trevolt.IsActive(); }));
    EXPECT_EQ(trevolt.Text(kIdWidth), L"77");
    const RECT after = clientArea();
    EXPECT_TRUE(EqualRect(&after, &place));
    EXPECT_EQ(test::CPixels::OfSteadyScreen(place).Differing(before), 0U);
}

TEST_F(TrevoltStart, ComesUpMinimisedWhenItsLauncherAsks) {
    for (const auto& [asked, isMinimised] :
         {std::pair(SW_SHOWMINNOACTIVE, true), std::pair(SW_SHOWMINIMIZED, true),
          std::pair(SW_HIDE, false), std::pair(SW_SHOWNORMAL, false)}) {
        SLaunch launch;
        launch.show = static_cast<WORD>(asked);
        const auto& trevolt = Start(launch);
        EXPECT_EQ(IsIconic(trevolt.Window()) != 0, isMinimised) << asked;
        EXPECT_TRUE(IsWindowVisible(trevolt.Window())) << asked;
    }
}

TEST_F(TrevoltStart, LivesInAFolderWithAChineseName) {
    const test::CTemporaryFolder other;
    const std::wstring bin = other.File(L"\u5DE5\u5177\\\u65CB\u8F6C \u00E9\\bin\\");
    const std::wstring language = other.File(L"Language\\Tools\\");
    ASSERT_TRUE(CreateFolders(bin));
    ASSERT_TRUE(CreateFolders(language));
    ASSERT_TRUE(CopyFileW(Program().c_str(), (bin + L"Trevolt.exe").c_str(), FALSE));
    test::WriteText(language + L"Multi_eng.ini", "Trevolt_102=Found\n");
    test::CTrevoltProcess trevolt(bin + L"Trevolt.exe");
    EXPECT_EQ(trevolt.Title(), L"Found");
    trevolt.Type(kIdWidth, L"77");
    EXPECT_EQ(CSettingsProfile(bin + L"Trevo.ini", L"coefInfo").ReadString(L"BoxWidth"), L"77");
    trevolt.Close();
}

TEST_F(TrevoltStart, RunsFromTheTreeThatIsGivenOut) {
    const std::wstring tree = GetModuleFolder() + L"..\\window-tree\\";
    test::CTrevoltProcess trevolt(tree + L"Tools\\Trevolt\\bin\\Trevolt.exe",
                                  {SLaunch::Input::Pipe, LanguageBytes(11)});
    EXPECT_EQ(trevolt.Title(), TextIn(L"Multi_Swedish.ini", L"Trevolt_102"));
    EXPECT_EQ(trevolt.Text(kIdStart), TextIn(L"Multi_Swedish.ini", L"Trevolt_1001"));
    trevolt.Close();
}

TEST_F(TrevoltStart, MissingLanguageFilesLeaveTheTemplatesTexts) {
    ASSERT_TRUE(RemoveFile(ToolsLanguageFolder(m_tree.ModuleFolder()) + L"Multi_eng.ini"));
    const auto& trevolt = Start();
    EXPECT_EQ(trevolt.Title(), L"\u7CFB\u6570\u65CB\u8F6C");
    EXPECT_EQ(trevolt.Text(kIdByCabinet), L"By Cabinet");
    EXPECT_EQ(trevolt.Text(kIdByScreen), L"\u6309\u6574\u5C4F");
    EXPECT_EQ(trevolt.Text(kIdAngleLabel), L"\u65CB\u8F6C\u89D2\u5EA6");
    EXPECT_EQ(trevolt.Text(kIdSourceLabel), L"Coefficient before Adjustment");
    EXPECT_EQ(trevolt.Text(kIdBrowseSource), L"\u9009\u62E9\u8DEF\u5F84");
    EXPECT_EQ(trevolt.Text(kIdTargetLabel), L"\u8C03\u6574\u540E\u7CFB\u6570");
    EXPECT_EQ(trevolt.Text(kIdBrowseTarget), L"\u9009\u62E9\u8DEF\u5F84");
    EXPECT_EQ(trevolt.Text(kIdStart), L"\u5F00\u59CB");
    EXPECT_EQ(trevolt.Text(kIdWidthLabel), L"Cabinet Width");
}

} // namespace
} // namespace trevolt
