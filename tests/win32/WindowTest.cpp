// The window's classes in the test's own process: what another process cannot see of a window.
#include <cstring>
#include <functional>
#include <future>
#include <thread>

#include <windows.h>

#include <commctrl.h>
#include <shlobj.h>

#include "app/dialog/StartConstants.h"
#include "tests/dialog/DialogFixture.h"
#include "tests/win32/Screenshot.h"
#include "tests/win32/TrevoltProcess.h"
#include "win32/MsgBox.h"
#include "win32/Resource.h"
#include "win32/TrevoltWindow.h"

namespace trevolt {
namespace {

/// The visible dialog of a thread, null when it shows none in time.
HWND WaitForDialogOf(DWORD threadId) {
    HWND found = nullptr;
    test::WaitUntil([&] {
        EnumThreadWindows(
            threadId,
            [](HWND window, LPARAM out) {
                wchar_t name[16]{};
                GetClassNameW(window, name, 16);
                if (IsWindowVisible(window) != 0 && std::wstring(name) == L"#32770")
                    *reinterpret_cast<HWND*>(out) = window;
                return TRUE;
            },
            reinterpret_cast<LPARAM>(&found));
        return found != nullptr;
    });
    EXPECT_NE(found, nullptr);
    return found;
}

test::CPixels Drawn(HICON icon, int size) {
    return test::CPixels({size, size}, [&](HDC context) {
        DrawIconEx(context, 0, 0, icon, size, size, 0, nullptr, DI_NORMAL);
    });
}

test::CPixels ProgramIcon(int size) {
    const auto icon = static_cast<HICON>(LoadImageW(
        GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDI_TREVOLT), IMAGE_ICON, size, size, 0));
    test::CPixels pixels = Drawn(icon, size);
    DestroyIcon(icon);
    return pixels;
}

/// A thread of its own that shows a dialog until that is closed.
class CDialogThread {
  public:
    explicit CDialogThread(const std::function<void()>& show)
        : m_thread([this, show] {
              m_id.set_value(GetCurrentThreadId());
              show();
          }),
          m_window(WaitForDialogOf(m_id.get_future().get())) {}
    /// To be called when the dialog was asked to close.
    ~CDialogThread() { m_thread.join(); }
    CDialogThread(const CDialogThread&) = delete;
    CDialogThread& operator=(const CDialogThread&) = delete;

    HWND Window() const { return m_window; }

  private:
    std::promise<DWORD> m_id;
    std::thread m_thread;
    HWND m_window;
};

/// The main dialog on a thread of its own, closed with this object.
class CShownWindow {
  public:
    /// `prepare` writes settings before the window reads them.
    explicit CShownWindow(const std::function<void(const CSettingsProfile&)>& prepare =
                              [](const auto&) {})
        : m_isPrepared(Prepare(prepare)) {}
    ~CShownWindow() { SendMessageW(Get(), WM_CLOSE, 0, 0); }
    CShownWindow(const CShownWindow&) = delete;
    CShownWindow& operator=(const CShownWindow&) = delete;

    HWND Get() const { return m_dialog.Window(); }

  private:
    void Run() const {
        SetStdHandle(STD_INPUT_HANDLE, nullptr); // the window would read it, and close it
        CTranslate translate;
        CTrevoltWindow window(translate, {m_tree.ModuleFolder(), L"placeholder"});
        window.RunModal(SW_SHOWDEFAULT);
    }

    bool Prepare(const std::function<void(const CSettingsProfile&)>& prepare) const {
        prepare(CSettingsProfile(m_tree.SettingsFile(), kSettingsSection));
        return true;
    }

    test::CInstalledTree m_tree;
    bool m_isPrepared;
    CDialogThread m_dialog{[this] { Run(); }};
};

TEST(TrevoltWindow, SystemMenuEndsWithTheAboutEntry) {
    const CShownWindow window;
    const HMENU menu = GetSystemMenu(window.Get(), FALSE);
    const int count = GetMenuItemCount(menu);
    ASSERT_GE(count, 2);
    EXPECT_EQ(GetMenuItemID(menu, count - 1), 16U);
    wchar_t text[64]{};
    GetMenuStringW(menu, static_cast<UINT>(count - 1), text, 64, MF_BYPOSITION);
    EXPECT_STREQ(text, L"&About Trevolt...");
    EXPECT_NE(GetMenuState(menu, static_cast<UINT>(count - 2), MF_BYPOSITION) & MF_SEPARATOR, 0U);
}

TEST(TrevoltWindow, HasItsIconInBothSizesAndWhileItIsDragged) {
    const CShownWindow window;
    const UINT dpi = GetDpiForWindow(window.Get());
    const int big = GetSystemMetricsForDpi(SM_CXICON, dpi);
    const int small = GetSystemMetricsForDpi(SM_CXSMICON, dpi);
    const auto icon = [&](WPARAM which) {
        return reinterpret_cast<HICON>(SendMessageW(window.Get(), WM_GETICON, which, 0));
    };
    EXPECT_TRUE(Drawn(icon(ICON_BIG), big) == ProgramIcon(big));
    EXPECT_TRUE(Drawn(icon(ICON_SMALL), small) == ProgramIcon(small));
    EXPECT_EQ(SendMessageW(window.Get(), WM_QUERYDRAGICON, 0, 0),
              reinterpret_cast<LRESULT>(icon(ICON_BIG)));
}

TEST(TrevoltWindow, CopyDataWithoutABlockIsIgnored) {
    const CShownWindow window;
    EXPECT_EQ(SendMessageW(window.Get(), WM_COPYDATA, 0, 0), 0);
    EXPECT_TRUE(IsWindow(window.Get()));
}

TEST(TrevoltWindow, CopyDataWithoutItsDataIsIgnored) {
    const CShownWindow window;
    for (const DWORD size : {DWORD{4}, DWORD{0xFFFFFFFF}}) {
        COPYDATASTRUCT data{};
        data.cbData = size;
        EXPECT_EQ(SendMessageW(window.Get(), WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&data)), 0);
    }
    EXPECT_TRUE(IsWindow(window.Get()));
}

TEST(TrevoltWindow, PaintsWhileItIsMinimised) {
    const CShownWindow window;
    SendMessageW(window.Get(), WM_SYSCOMMAND, SC_MINIMIZE, 0);
    ASSERT_TRUE(IsIconic(window.Get()));
    InvalidateRect(window.Get(), nullptr, FALSE);
    SendMessageW(window.Get(), WM_PAINT, 0, 0);
    EXPECT_FALSE(GetUpdateRect(window.Get(), nullptr, FALSE)) << "nothing is left to be painted";
}

TEST(FirstShowCommand, IsMinimisedWhenAskedAndElseShown) {
    for (const int asked : {SW_MINIMIZE, SW_SHOWMINIMIZED, SW_SHOWMINNOACTIVE, SW_FORCEMINIMIZE})
        EXPECT_EQ(FirstShowCommand(asked), SW_SHOWMINNOACTIVE) << asked;
    for (const int asked : {SW_HIDE, SW_SHOWNORMAL, SW_SHOWMAXIMIZED, SW_SHOW, SW_SHOWDEFAULT})
        EXPECT_EQ(FirstShowCommand(asked), SW_SHOW) << asked;
}

TEST(WidenedButtonShift, KeepsTheButtonAtTheRightOrInTheMiddle) {
    const RECT box{100, 0, 300, 100};
    EXPECT_EQ(WidenedButtonShift(box, {210, 70, 290, 90}, 60), 60);
    EXPECT_EQ(WidenedButtonShift(box, {160, 70, 240, 90}, 60), 30);
    EXPECT_EQ(WidenedButtonShift(box, {160, 70, 240, 90}, 0), 0);
}

TEST(CentredIconPlace, HalvesWhatIsLeftRoundedUp) {
    const auto place = [](SIZE client, SIZE icon) {
        const POINT at = CentredIconPlace(client, icon);
        return std::pair(at.x, at.y);
    };
    EXPECT_EQ(place({36, 36}, {32, 32}), std::pair(2L, 2L));
    EXPECT_EQ(place({37, 40}, {32, 32}), std::pair(3L, 4L));
    EXPECT_EQ(place({32, 33}, {32, 32}), std::pair(0L, 1L));
    EXPECT_EQ(place({160, 24}, {32, 32}), std::pair(64L, -3L));
}

/// A view on a dialog that does nothing by itself.
class ControlView : public testing::Test {
  protected:
    ControlView()
        : m_window(CreateDialogParamW(
              GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_TREVOLT), nullptr,
              [](HWND, UINT, WPARAM, LPARAM) -> INT_PTR { return FALSE; }, 0)) {
        EXPECT_NE(m_window, nullptr);
        m_view.Attach(m_window);
    }
    ~ControlView() override { DestroyWindow(m_window); }

    HWND m_window;
    CControlView m_view;
};

TEST_F(ControlView, BoxAnswersForItsSelectedEntry) {
    m_view.AddEntry(kIdAngle, L"90\u00B0", 1);
    m_view.AddEntry(kIdAngle, L"180\u00B0", 2);
    EXPECT_EQ(m_view.SelectedData(kIdAngle), -1);
    EXPECT_EQ(m_view.SelectedText(kIdAngle), L"");
    m_view.SelectEntry(kIdAngle, 1);
    EXPECT_EQ(m_view.SelectedData(kIdAngle), 2);
    EXPECT_EQ(m_view.SelectedText(kIdAngle), L"180\u00B0");
    m_view.ClearEntries(kIdAngle);
    EXPECT_EQ(m_view.SelectedData(kIdAngle), -1);
}

TEST_F(ControlView, RadioButtonsExcludeEachOther) {
    m_view.Check(kIdByScreen);
    EXPECT_TRUE(m_view.IsChecked(kIdByScreen));
    EXPECT_FALSE(m_view.IsChecked(kIdByCabinet));
    m_view.Check(kIdByCabinet);
    EXPECT_TRUE(m_view.IsChecked(kIdByCabinet));
    EXPECT_FALSE(m_view.IsChecked(kIdByScreen));
}

TEST_F(ControlView, NumberEditsKeepTheirLimitsAndAreKnownByTheirAddresses) {
    m_view.SetNumberLimits(kIdWidth, 1, 0, 65535);
    m_view.SetNumberLimits(kIdHeight, 1, 0, 32768);
    for (const auto& [id, highest] : {std::pair(kIdWidth, 65535), std::pair(kIdHeight, 32768)}) {
        const CNumberEdit& edit = m_view.NumberEdit(id);
        EXPECT_EQ(edit.Type(), 1);
        EXPECT_EQ(edit.MinValue(), 0);
        EXPECT_EQ(edit.MaxValue(), highest);
        EXPECT_EQ(m_view.FindNumberEdit(reinterpret_cast<LPARAM>(&edit)), id);
    }
    EXPECT_EQ(m_view.FindNumberEdit(0), 0);
}

TEST_F(ControlView, ProgressStandsWhereItIsSetAndTheRangeStays) {
    m_view.SetProgressRange(kIdProgress, 0, 100);
    for (const int position : {5, 10, 0, 80, 95, 100}) {
        m_view.SetProgress(kIdProgress, position);
        EXPECT_EQ(SendDlgItemMessageW(m_window, kIdProgress, PBM_GETPOS, 0, 0), position);
        EXPECT_EQ(SendDlgItemMessageW(m_window, kIdProgress, PBM_GETRANGE, FALSE, 0), 100);
    }
}

TEST_F(ControlView, WholeTextIsSelected) {
    m_view.SetText(kIdWidth, L"65536");
    m_view.SelectWholeText(kIdWidth);
    EXPECT_EQ(SendDlgItemMessageW(m_window, kIdWidth, EM_GETSEL, 0, 0), MAKELONG(0, 5));
}

/// The text of the tooltip that a dialog of this process has for a control, empty for none.
std::wstring TipOf(HWND dialog, int id) {
    struct SSought {
        HWND dialog;
        HWND control;
        std::wstring text;
    } sought{dialog, GetDlgItem(dialog, id), {}};
    EnumThreadWindows(
        GetWindowThreadProcessId(dialog, nullptr),
        [](HWND window, LPARAM out) {
            auto& seen = *reinterpret_cast<SSought*>(out);
            wchar_t name[32]{};
            GetClassNameW(window, name, 32);
            if (lstrcmpiW(name, TOOLTIPS_CLASSW) != 0)
                return TRUE;
            wchar_t text[1024]{};
            TTTOOLINFOW tool{};
            tool.cbSize = sizeof tool;
            tool.hwnd = seen.dialog;
            tool.uId = reinterpret_cast<UINT_PTR>(seen.control);
            tool.lpszText = text;
            SendMessageW(window, TTM_GETTEXTW, std::size(text), reinterpret_cast<LPARAM>(&tool));
            seen.text += text;
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&sought));
    return sought.text;
}

TEST_F(ControlView, LongPathShowsItsEndAndItsWholeInATooltip) {
    const std::wstring path =
        L"D:\\" + std::wstring(60, L'a') + L"\\" + std::wstring(60, L'b') + L"\\";
    for (const int id : {kIdSource, kIdTarget}) {
        m_view.ShowFolder(id, L"D:\\walls\\");
        EXPECT_EQ(TipOf(m_window, id), L"");
        m_view.ShowFolder(id, path);
        EXPECT_EQ(m_view.GetText(id), path);
        EXPECT_EQ(TipOf(m_window, id), path.substr(0, 64) + L"\r\n" + path.substr(64));
        const auto place = [&](std::size_t character) {
            return static_cast<short>(
                LOWORD(SendDlgItemMessageW(m_window, id, EM_POSFROMCHAR, character, 0)));
        };
        RECT box{};
        GetClientRect(GetDlgItem(m_window, id), &box);
        EXPECT_LT(place(0), 0) << "scrolled";
        EXPECT_GE(place(path.size() - 1), 0);
        EXPECT_LT(place(path.size() - 1), box.right);
        m_view.ShowFolder(id, L"D:\\");
        EXPECT_EQ(TipOf(m_window, id), L"");
    }
}

/// What the shell gives a window that a path is dropped on, `mouse` in the window's own pixels.
HDROP MakeDrop(const std::wstring& path, POINT mouse) {
    const std::size_t bytes = sizeof(DROPFILES) + (path.size() + 2) * sizeof(wchar_t);
    const HGLOBAL memory = GlobalAlloc(GHND, bytes);
    auto* drop = static_cast<DROPFILES*>(GlobalLock(memory));
    drop->pFiles = sizeof(DROPFILES);
    drop->pt = mouse;
    drop->fWide = TRUE;
    std::memcpy(drop + 1, path.c_str(), path.size() * sizeof(wchar_t));
    GlobalUnlock(memory);
    return static_cast<HDROP>(memory);
}

/// Drops a path on the middle of a control, or on the window's corner for 0.
void DropOn(HWND window, int id, const std::wstring& path) {
    RECT place{0, 0, 2, 2};
    if (id != 0) {
        GetWindowRect(GetDlgItem(window, id), &place);
        MapWindowPoints(nullptr, window, reinterpret_cast<POINT*>(&place), 2);
    }
    const POINT middle{(place.left + place.right) / 2, (place.top + place.bottom) / 2};
    SendMessageW(window, WM_DROPFILES, reinterpret_cast<WPARAM>(MakeDrop(path, middle)), 0);
}

TEST(TrevoltWindow, TakesWhatIsDroppedOnAFolderBoxOrElsewhere) {
    const test::CTemporaryFolder first;
    const test::CTemporaryFolder second;
    test::WriteText(second.File(L"a.9fcoef"), "");
    const CShownWindow window;
    EXPECT_NE(GetWindowLongW(window.Get(), GWL_EXSTYLE) & WS_EX_ACCEPTFILES, 0);
    const auto text = [&](int id) { return test::TextOf(GetDlgItem(window.Get(), id)); };
    // As the shell names a folder: without a separator at its end.
    DropOn(window.Get(), kIdTarget, first.Path().substr(0, first.Path().size() - 1));
    EXPECT_EQ(text(kIdTarget), first.Path());
    EXPECT_EQ(text(kIdSource), L"placeholder");
    DropOn(window.Get(), 0, second.File(L"a.9fcoef"));
    EXPECT_EQ(text(kIdSource), second.Path());
    DropOn(window.Get(), kIdStart, first.Path());
    EXPECT_EQ(text(kIdSource), first.Path());
    EXPECT_EQ(text(kIdTarget), first.Path());
}

TEST(TrevoltWindow, TakesNothingDroppedUnderAModalWindow) {
    const test::CTemporaryFolder folder;
    const CShownWindow window;
    EnableWindow(window.Get(), FALSE);
    DropOn(window.Get(), kIdSource, folder.Path());
    EnableWindow(window.Get(), TRUE);
    EXPECT_EQ(test::TextOf(GetDlgItem(window.Get(), kIdSource)), L"placeholder");
}

/// Listens to the messages that this thread's windows are sent, for what a balloon is shown with.
class CBalloonMessages {
  public:
    CBalloonMessages() {
        g_texts.clear();
        m_hook = SetWindowsHookExW(WH_CALLWNDPROC, Listen, nullptr, GetCurrentThreadId());
    }
    ~CBalloonMessages() { UnhookWindowsHookEx(m_hook); }
    CBalloonMessages(const CBalloonMessages&) = delete;
    CBalloonMessages& operator=(const CBalloonMessages&) = delete;

    /// Title and text of each request, in order, with the icon between them.
    static const std::vector<std::wstring>& Texts() { return g_texts; }

  private:
    static LRESULT CALLBACK Listen(int code, WPARAM wParam, LPARAM lParam) {
        const auto& sent = *reinterpret_cast<const CWPSTRUCT*>(lParam);
        if (code == HC_ACTION && sent.message == EM_SHOWBALLOONTIP) {
            const auto& balloon = *reinterpret_cast<const EDITBALLOONTIP*>(sent.lParam);
            g_texts.insert(g_texts.end(), {L"edit", balloon.pszTitle,
                                           std::to_wstring(balloon.ttiIcon), balloon.pszText});
        }
        if (code == HC_ACTION && sent.message == TTM_SETTITLEW)
            g_texts.insert(g_texts.end(),
                           {L"tooltip", reinterpret_cast<const wchar_t*>(sent.lParam),
                            std::to_wstring(sent.wParam)});
        if (code == HC_ACTION && sent.message == TTM_ADDTOOLW)
            g_texts.push_back(reinterpret_cast<const TTTOOLINFOW*>(sent.lParam)->lpszText);
        return CallNextHookEx(nullptr, code, wParam, lParam);
    }

    static inline std::vector<std::wstring> g_texts;
    HHOOK m_hook;
};

TEST(BalloonTip, AnEditsOwnBalloonNeedsItsFocus) {
    const HWND edit = GetDesktopWindow();
    const HWND other = GetShellWindow();
    ASSERT_NE(edit, other);
    EXPECT_TRUE(IsOwnBalloonFit(edit, edit));
    EXPECT_FALSE(IsOwnBalloonFit(edit, other));
    EXPECT_FALSE(IsOwnBalloonFit(edit, nullptr));
}

TEST_F(ControlView, BalloonHasItsTitleAndTheInformationIcon) {
    ShowWindow(m_window, SW_SHOW);
    ASSERT_EQ(GetActiveWindow(), m_window);
    static_assert(TTI_INFO == 1);
    const std::vector<std::wstring> asked{L"edit", L"a title", L"1", L"a text"};
    const std::vector<std::wstring> standIn{L"a text", L"tooltip", L"a title", L"1"};
    const HWND height = GetDlgItem(m_window, kIdHeight);

    // The edit that has the focus is asked first; where it shows none, the tooltip stands in.
    SetFocus(height);
    {
        const CBalloonMessages messages;
        m_view.ShowBalloon(kIdHeight, L"a title", L"a text");
        std::vector<std::wstring> both = asked;
        both.insert(both.end(), standIn.begin(), standIn.end());
        EXPECT_EQ(messages.Texts(), both);
        EXPECT_EQ(GetFocus(), height);
    }
    for (const int id : {kIdWidth, kIdBrowseSource}) {
        const HWND focused = SetFocus(GetDlgItem(m_window, id));
        EXPECT_NE(focused, nullptr);
        const CBalloonMessages messages;
        m_view.ShowBalloon(kIdHeight, L"a title", L"a text");
        EXPECT_EQ(messages.Texts(), standIn) << id;
        EXPECT_EQ(GetFocus(), GetDlgItem(m_window, id));
    }
}

/// The cursor that this thread's windows show as each message of a kind comes to one of them.
class CCursorAtMessage {
  public:
    /// Listens to the windows of a thread of this process.
    CCursorAtMessage(UINT message, DWORD threadId) {
        g_message = message;
        g_cursors.clear();
        m_hook = SetWindowsHookExW(WH_CALLWNDPROC, Listen, nullptr, threadId);
    }
    ~CCursorAtMessage() { UnhookWindowsHookEx(m_hook); }
    CCursorAtMessage(const CCursorAtMessage&) = delete;
    CCursorAtMessage& operator=(const CCursorAtMessage&) = delete;

    static const std::vector<HCURSOR>& Cursors() { return g_cursors; }

  private:
    static LRESULT CALLBACK Listen(int code, WPARAM wParam, LPARAM lParam) {
        if (code == HC_ACTION && reinterpret_cast<const CWPSTRUCT*>(lParam)->message == g_message)
            g_cursors.push_back(GetCursor());
        return CallNextHookEx(nullptr, code, wParam, lParam);
    }

    static inline UINT g_message = 0;
    static inline std::vector<HCURSOR> g_cursors;
    HHOOK m_hook;
};

const HCURSOR kArrow = LoadCursorW(nullptr, IDC_ARROW);
const HCURSOR kWait = LoadCursorW(nullptr, IDC_WAIT);

TEST_F(ControlView, WaitCursorStandsButUnderAMessageBox) {
    ASSERT_NE(kArrow, kWait);
    m_view.ShowWaitCursor(true);
    EXPECT_EQ(GetCursor(), kWait);
    {
        const CCursorAtMessage opened(WM_INITDIALOG, GetCurrentThreadId());
        const DWORD thisThread = GetCurrentThreadId();
        std::thread closer([thisThread] { test::ClosePopup(WaitForDialogOf(thisThread)); });
        m_view.ShowMessage(L"text", 0);
        closer.join();
        ASSERT_FALSE(opened.Cursors().empty());
        EXPECT_EQ(opened.Cursors().front(), kArrow);
    }
    EXPECT_EQ(GetCursor(), kWait);
    m_view.ShowWaitCursor(false);
    EXPECT_EQ(GetCursor(), kArrow);
}

/// A window that is ready to turn one cabinet.
class CReadyWindow {
  public:
    CReadyWindow() {
        test::WriteFile(m_source.File(L"Cab_01.9fcoef"),
                        test::ReadFile(test::Sample(L"cabinet/Cab_01.9fcoef")));
    }

    HWND Get() const { return m_window.Get(); }
    DWORD Thread() const { return GetWindowThreadProcessId(Get(), nullptr); }

    /// Presses Start, closes the message that the run ends with, and waits for the window's return.
    void Run() const {
        PostMessageW(GetDlgItem(Get(), kIdStart), BM_CLICK, 0, 0);
        HWND box = nullptr;
        ASSERT_TRUE(test::WaitUntil([&] {
            box = GetLastActivePopup(Get());
            return box != Get() && IsWindowVisible(box) != 0;
        }));
        EXPECT_EQ(m_target.Names().size(), 1U);
        test::ClosePopup(box);
        ASSERT_TRUE(
            test::WaitUntil([&] { return IsWindowEnabled(GetDlgItem(Get(), kIdHeight)) != 0; }));
    }

  private:
    test::CTemporaryFolder m_source;
    test::CTemporaryFolder m_target;
    CShownWindow m_window{[this](const CSettingsProfile& settings) {
        EXPECT_TRUE(settings.WriteString(kKeySourceFolder, m_source.Path()));
        EXPECT_TRUE(settings.WriteString(kKeyTargetFolder, m_target.Path()));
        EXPECT_TRUE(settings.WriteString(kKeyCabinetWidth, L"40"));
        EXPECT_TRUE(settings.WriteString(kKeyCabinetHeight, L"24"));
    }};
};

/// Counts what a thread takes out of its message queue from the bar's first step until a dialog comes
/// up, and sees to it that there is something to take.
class CTakenDuringRun {
  public:
    explicit CTakenDuringRun(DWORD threadId) {
        g_isRunning = false;
        g_steps = 0;
        g_taken = 0;
        m_sent = SetWindowsHookExW(WH_CALLWNDPROC, OnSent, nullptr, threadId);
        m_taken = SetWindowsHookExW(WH_GETMESSAGE, OnTaken, nullptr, threadId);
    }
    ~CTakenDuringRun() {
        UnhookWindowsHookEx(m_sent);
        UnhookWindowsHookEx(m_taken);
    }
    CTakenDuringRun(const CTakenDuringRun&) = delete;
    CTakenDuringRun& operator=(const CTakenDuringRun&) = delete;

    static int Steps() { return g_steps; }
    static int Taken() { return g_taken; }

  private:
    static LRESULT CALLBACK OnSent(int code, WPARAM wParam, LPARAM lParam) {
        const auto& sent = *reinterpret_cast<const CWPSTRUCT*>(lParam);
        if (code == HC_ACTION && sent.message == PBM_SETPOS) {
            g_isRunning = g_steps++ == 0 || g_isRunning;
            PostMessageW(sent.hwnd, WM_NULL, 0, 0);
        }
        if (code == HC_ACTION && sent.message == WM_INITDIALOG)
            g_isRunning = false;
        return CallNextHookEx(nullptr, code, wParam, lParam);
    }
    static LRESULT CALLBACK OnTaken(int code, WPARAM wParam, LPARAM lParam) {
        if (code == HC_ACTION && g_isRunning)
            ++g_taken;
        return CallNextHookEx(nullptr, code, wParam, lParam);
    }

    static inline bool g_isRunning = false;
    static inline int g_steps = 0;
    static inline int g_taken = 0;
    HHOOK m_sent;
    HHOOK m_taken;
};

TEST(TrevoltWindow, TakesNoMessageFromItsQueueDuringARun) {
    const CReadyWindow window;
    const CTakenDuringRun taken(window.Thread());
    window.Run();
    EXPECT_GE(taken.Steps(), 5);
    EXPECT_EQ(taken.Taken(), 0);
}

TEST(TaskbarButton, StatesHaveTheirFlags) {
    EXPECT_EQ(TaskbarFlag(ERunState::None), TBPF_NOPROGRESS);
    EXPECT_EQ(TaskbarFlag(ERunState::Working), TBPF_NORMAL);
    EXPECT_EQ(TaskbarFlag(ERunState::Failed), TBPF_ERROR);
}

/// A taskbar that writes down what it is asked to show.
class CRecordedTaskbar : public ITaskbarList3 {
  public:
    virtual ~CRecordedTaskbar() = default;

    ULONG References() const { return m_references; }
    const std::vector<std::string>& Shown() const { return m_shown; }

    HRESULT WINAPI QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG WINAPI AddRef() override { return ++m_references; }
    ULONG WINAPI Release() override { return --m_references; }
    HRESULT WINAPI SetProgressValue(HWND, ULONGLONG done, ULONGLONG total) override {
        m_shown.push_back(std::to_string(done) + " of " + std::to_string(total));
        return S_OK;
    }
    HRESULT WINAPI SetProgressState(HWND, TBPFLAG state) override {
        m_shown.push_back("state " + std::to_string(static_cast<int>(state)));
        return S_OK;
    }

    HRESULT WINAPI HrInit() override { return S_OK; }
    HRESULT WINAPI AddTab(HWND) override { return E_NOTIMPL; }
    HRESULT WINAPI DeleteTab(HWND) override { return E_NOTIMPL; }
    HRESULT WINAPI ActivateTab(HWND) override { return E_NOTIMPL; }
    HRESULT WINAPI SetActiveAlt(HWND) override { return E_NOTIMPL; }
    HRESULT WINAPI MarkFullscreenWindow(HWND, BOOL) override { return E_NOTIMPL; }
    HRESULT WINAPI RegisterTab(HWND, HWND) override { return E_NOTIMPL; }
    HRESULT WINAPI UnregisterTab(HWND) override { return E_NOTIMPL; }
    HRESULT WINAPI SetTabOrder(HWND, HWND) override { return E_NOTIMPL; }
    HRESULT WINAPI SetTabActive(HWND, HWND, DWORD) override { return E_NOTIMPL; }
    HRESULT WINAPI ThumbBarAddButtons(HWND, UINT, LPTHUMBBUTTON) override { return E_NOTIMPL; }
    HRESULT WINAPI ThumbBarUpdateButtons(HWND, UINT, LPTHUMBBUTTON) override { return E_NOTIMPL; }
    HRESULT WINAPI ThumbBarSetImageList(HWND, HIMAGELIST) override { return E_NOTIMPL; }
    HRESULT WINAPI SetOverlayIcon(HWND, HICON, LPCWSTR) override { return E_NOTIMPL; }
    HRESULT WINAPI SetThumbnailTooltip(HWND, LPCWSTR) override { return E_NOTIMPL; }
    HRESULT WINAPI SetThumbnailClip(HWND, RECT*) override { return E_NOTIMPL; }

  private:
    ULONG m_references = 1;
    std::vector<std::string> m_shown;
};

TEST(TaskbarButton, FollowsARunAndTakesTheWholeButtonForAFailure) {
    static_assert(TBPF_NOPROGRESS == 0 && TBPF_NORMAL == 2 && TBPF_ERROR == 4);
    CRecordedTaskbar taskbar;
    {
        CTaskbarButton button(&taskbar);
        button.ShowPosition(nullptr, 50, 100); // no run works
        button.ShowState(nullptr, ERunState::Working);
        button.ShowPosition(nullptr, 5, 100);
        button.ShowPosition(nullptr, 95, 100);
        button.ShowState(nullptr, ERunState::Failed);
        button.ShowPosition(nullptr, 100, 100); // the failure stands
        button.ShowState(nullptr, ERunState::None);
        EXPECT_EQ(taskbar.References(), 1U);
    }
    EXPECT_EQ(taskbar.References(), 0U);
    EXPECT_EQ(taskbar.Shown(), (std::vector<std::string>{"state 2", "5 of 100", "95 of 100",
                                                         "1 of 1", "state 4", "state 0"}));
}

TEST(TrevoltWindow, ShowsTheWaitCursorDuringARun) {
    const CReadyWindow window;
    const CCursorAtMessage moved(PBM_SETPOS, window.Thread());
    window.Run();
    EXPECT_GE(moved.Cursors().size(), 5U);
    for (const HCURSOR cursor : moved.Cursors())
        EXPECT_EQ(cursor, kWait);
}

/// A message box on a thread of its own, closed with this object.
class CShownBox {
  public:
    explicit CShownBox(std::uint32_t style)
        : m_dialog([style] { MsgBox(nullptr, L"text & more", style); }) {}
    ~CShownBox() { test::ClosePopup(Get()); }
    CShownBox(const CShownBox&) = delete;
    CShownBox& operator=(const CShownBox&) = delete;

    HWND Get() const { return m_dialog.Window(); }
    HICON Icon() const {
        for (HWND child = GetWindow(Get(), GW_CHILD); child != nullptr;
             child = GetWindow(child, GW_HWNDNEXT))
            if (const LRESULT icon = SendMessageW(child, STM_GETICON, 0, 0); icon != 0)
                return reinterpret_cast<HICON>(icon);
        return nullptr;
    }

  private:
    CDialogThread m_dialog;
};

TEST(MsgBox, StyleBitsPickTheSystemsIcon) {
    const std::pair<std::uint32_t, const wchar_t*> styles[] = {
        {0x20, IDI_QUESTION}, {0x30, IDI_WARNING}, {0x40, IDI_INFORMATION}};
    for (const auto& [style, icon] : styles) {
        const CShownBox box(style);
        ASSERT_NE(box.Icon(), nullptr) << style;
        EXPECT_TRUE(Drawn(box.Icon(), 32) == Drawn(LoadIconW(nullptr, icon), 32)) << style;
    }
    const CShownBox plain(0);
    EXPECT_EQ(plain.Icon(), nullptr);
    EXPECT_EQ(test::ReadMessageBox(plain.Get()).text, L"text & more");
}

} // namespace
} // namespace trevolt
