#include "tests/win32/TrevoltProcess.h"

#include <array>
#include <stdexcept>

#include <commctrl.h>
#include <gtest/gtest.h>

#include "app/DialogView.h"

namespace trevolt::test {
namespace {

constexpr ULONGLONG kDeadlineMilliseconds = 20000;
constexpr DWORD kPollMilliseconds = 5;
constexpr const wchar_t* kDialogClass = L"#32770";

/// The end of a pipe, or another standard input, that the program inherits.
class CInput {
  public:
    explicit CInput(const SLaunch& launch) {
        SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
        if (launch.input == SLaunch::Input::Device)
            m_handle = CreateFileW(L"NUL", GENERIC_READ, 0, &inherited, OPEN_EXISTING, 0, nullptr);
        if (launch.input != SLaunch::Input::Pipe)
            return;
        HANDLE writer = nullptr;
        EXPECT_TRUE(CreatePipe(&m_handle, &writer, &inherited, 65536));
        EXPECT_TRUE(SetHandleInformation(writer, HANDLE_FLAG_INHERIT, 0));
        DWORD written = 0;
        EXPECT_TRUE(launch.bytes.empty() ||
                    WriteFile(writer, launch.bytes.data(), static_cast<DWORD>(launch.bytes.size()),
                              &written, nullptr));
        CloseHandle(writer);
    }
    ~CInput() {
        if (m_handle != nullptr)
            CloseHandle(m_handle);
    }
    CInput(const CInput&) = delete;
    CInput& operator=(const CInput&) = delete;

    HANDLE Handle() const { return m_handle; }

  private:
    HANDLE m_handle = nullptr;
};

/// Sends a message that must be answered within the deadline.
LRESULT SendTo(HWND window, UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
    DWORD_PTR result = 0;
    if (SendMessageTimeoutW(window, message, wParam, lParam, SMTO_NORMAL, kDeadlineMilliseconds,
                            &result) == 0)
        throw std::runtime_error("message " + std::to_string(message) + " was not answered");
    return static_cast<LRESULT>(result);
}

std::vector<HWND> ChildrenOf(HWND window) {
    std::vector<HWND> children;
    for (HWND child = GetWindow(window, GW_CHILD); child != nullptr;
         child = GetWindow(child, GW_HWNDNEXT))
        children.push_back(child);
    return children;
}

bool IsOfClass(HWND window, const wchar_t* className) {
    std::array<wchar_t, 64> name{};
    GetClassNameW(window, name.data(), static_cast<int>(name.size()));
    return lstrcmpiW(name.data(), className) == 0;
}

} // namespace

bool WaitUntil(const std::function<bool()>& condition) {
    const ULONGLONG deadline = GetTickCount64() + kDeadlineMilliseconds;
    while (!condition()) {
        if (GetTickCount64() > deadline)
            return false;
        Sleep(kPollMilliseconds);
    }
    return true;
}

std::string LanguageBytes(std::int32_t id) {
    return {reinterpret_cast<const char*>(&id), sizeof id};
}

std::wstring TextOf(HWND window) {
    const auto length = static_cast<std::size_t>(SendTo(window, WM_GETTEXTLENGTH));
    std::wstring text(length + 1, L'\0');
    text.resize(static_cast<std::size_t>(
        SendTo(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()))));
    return text;
}

CTrevoltProcess::CTrevoltProcess(const std::wstring& program, const SLaunch& launch) {
    const CInput input(launch);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = input.Handle();
    PROCESS_INFORMATION info{};
    std::wstring command = L"\"" + program + L"\"";
    EXPECT_TRUE(CreateProcessW(program.c_str(), command.data(), nullptr, nullptr, TRUE, 0, nullptr,
                               nullptr, &startup, &info));
    CloseHandle(info.hThread);
    m_process = info.hProcess;
    m_processId = info.dwProcessId;
    m_threadId = info.dwThreadId;
    WaitUntil([&] {
        for (const HWND window : Windows(kDialogClass))
            if (IsWindowVisible(window) != 0)
                m_window = window;
        return m_window != nullptr || HasEnded();
    });
    if (m_window == nullptr)
        throw std::runtime_error("the window did not come up");
}

CTrevoltProcess::~CTrevoltProcess() {
    if (!HasEnded())
        TerminateProcess(m_process, 1);
    WaitForEnd();
    CloseHandle(m_process);
}

std::vector<HWND> CTrevoltProcess::Windows(const wchar_t* className) const {
    std::vector<HWND> found;
    for (HWND window = FindWindowExW(nullptr, nullptr, className, nullptr); window != nullptr;
         window = FindWindowExW(nullptr, window, className, nullptr)) {
        DWORD processId = 0;
        GetWindowThreadProcessId(window, &processId);
        if (processId == m_processId)
            found.push_back(window);
    }
    return found;
}

std::wstring CTrevoltProcess::Title() const { return TextOf(m_window); }

std::wstring CTrevoltProcess::Text(int id) const { return TextOf(Control(id)); }

bool CTrevoltProcess::IsChecked(int id) const { return Send(id, BM_GETCHECK) == BST_CHECKED; }

LRESULT CTrevoltProcess::Send(int id, UINT message, WPARAM wParam, LPARAM lParam) const {
    return SendTo(Control(id), message, wParam, lParam);
}

void CTrevoltProcess::Focus(int id) const {
    PostMessageW(Control(id), WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(3, 3));
    PostMessageW(Control(id), WM_LBUTTONUP, 0, MAKELPARAM(3, 3));
    EXPECT_TRUE(WaitUntil([&] {
        GUITHREADINFO info{};
        info.cbSize = sizeof info;
        return GetGUIThreadInfo(m_threadId, &info) != 0 && info.hwndFocus == Control(id) &&
               info.hwndCapture == nullptr;
    })) << "no focus on control "
        << id;
}

void CTrevoltProcess::Type(int id, const std::wstring& text) const {
    Focus(id);
    Send(id, EM_SETSEL, 0, -1);
    if (text.empty())
        Send(id, WM_CHAR, VK_BACK);
    for (const wchar_t c : text)
        Send(id, WM_CHAR, c);
    EXPECT_EQ(Text(id), text);
}

void CTrevoltProcess::Press(int id, WPARAM key) const {
    PostMessageW(Control(id), WM_KEYDOWN, key, 0);
    PostMessageW(Control(id), WM_KEYUP, key, 0);
}

void CTrevoltProcess::Click(int id) const { Send(id, BM_CLICK); }

void CTrevoltProcess::ClickModal(int id) const { PostMessageW(Control(id), BM_CLICK, 0, 0); }

void CTrevoltProcess::SelectAngle(int index) const {
    Send(kIdAngle, CB_SETCURSEL, static_cast<WPARAM>(index));
}

void CTrevoltProcess::SendLanguage(ULONG_PTR tag, std::int32_t id) const {
    COPYDATASTRUCT data{};
    data.dwData = tag;
    data.cbData = sizeof id;
    data.lpData = &id;
    SendTo(m_window, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&data));
}

HWND CTrevoltProcess::WaitForPopup() const {
    HWND popup = nullptr;
    WaitUntil([&] {
        for (const HWND window : Windows(kDialogClass))
            if (window != m_window && GetWindow(window, GW_OWNER) == m_window &&
                IsWindowVisible(window) != 0)
                popup = window;
        return popup != nullptr || HasEnded();
    });
    if (popup == nullptr)
        throw std::runtime_error("no modal window came up");
    return popup;
}

HWND CTrevoltProcess::FindBalloon() const {
    for (const HWND window : Windows(TOOLTIPS_CLASSW))
        if (IsWindowVisible(window) != 0)
            return window;
    return nullptr;
}

std::wstring CTrevoltProcess::WaitForBalloon() const {
    EXPECT_TRUE(WaitUntil([&] { return FindBalloon() != nullptr; })) << "no balloon came up";
    const HWND balloon = FindBalloon();
    return balloon == nullptr ? std::wstring() : TextOf(balloon);
}

void CTrevoltProcess::Close() {
    PostMessageW(m_window, WM_CLOSE, 0, 0);
    EXPECT_TRUE(WaitForEnd()) << "the program does not end";
}

bool CTrevoltProcess::WaitForEnd() const {
    return WaitForSingleObject(m_process, kDeadlineMilliseconds) == WAIT_OBJECT_0;
}

SMessageBox ReadMessageBox(HWND box) {
    SMessageBox seen;
    seen.title = TextOf(box);
    for (const HWND child : ChildrenOf(box)) {
        if (IsWindowVisible(child) == 0)
            continue;
        if (IsOfClass(child, L"Button"))
            seen.button = TextOf(child);
        else if (!IsOfClass(child, L"Static"))
            continue;
        else if ((GetWindowLongW(child, GWL_STYLE) & SS_TYPEMASK) == SS_ICON)
            seen.hasIcon = SendTo(child, STM_GETICON) != 0;
        else
            seen.text = TextOf(child);
    }
    return seen;
}

void ClosePopup(HWND popup, int buttonId) {
    HWND button = GetDlgItem(popup, buttonId);
    if (button == nullptr)
        button = GetDlgItem(popup, IDCANCEL);
    PostMessageW(button, BM_CLICK, 0, 0);
    EXPECT_TRUE(WaitUntil([&] { return IsWindow(popup) == 0; })) << "the modal window stays";
}

} // namespace trevolt::test
