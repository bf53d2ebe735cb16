#include "tests/win32/TrevoltProcess.h"

#include <array>
#include <stdexcept>

#include <commctrl.h>
#include <gtest/gtest.h>

#include "app/dialog/DialogView.h"
#include "tests/support/TestFiles.h"
#include "tests/win32/Screenshot.h"

namespace trevolt::test {
namespace {

constexpr ULONGLONG kDeadlineMilliseconds = 20000;
constexpr DWORD kPollMilliseconds = 5;
constexpr const wchar_t* kDialogClass = L"#32770";

class CHandle {
  public:
    CHandle() = default;
    ~CHandle() { Close(); }
    CHandle(const CHandle&) = delete;
    CHandle& operator=(const CHandle&) = delete;

    HANDLE Get() const { return m_handle; }
    HANDLE* Out() { return &m_handle; }
    void Close() {
        if (m_handle != nullptr && m_handle != INVALID_HANDLE_VALUE)
            CloseHandle(m_handle);
        m_handle = nullptr;
    }

  private:
    HANDLE m_handle = nullptr;
};

/// The standard input that the program inherits.
class CInput {
  public:
    explicit CInput(const SLaunch& launch) : m_input(launch.input) {
        switch (launch.input) {
        case SLaunch::Input::Pipe:
            OpenPipe(launch.bytes);
            m_writer.Close();
            break;
        case SLaunch::Input::OpenPipe:
            OpenPipe(launch.bytes);
            break;
        case SLaunch::Input::File:
            WriteText(m_folder.File(L"input"), launch.bytes);
            OpenFile(m_folder.File(L"input"));
            break;
        case SLaunch::Input::Device:
            OpenFile(L"NUL");
            break;
        default:
            break;
        }
    }

    HANDLE Handle() const {
        constexpr std::uintptr_t kNoSuchHandle = 0x7778;
        if (m_input == SLaunch::Input::InvalidValue)
            return INVALID_HANDLE_VALUE;
        if (m_input == SLaunch::Input::ClosedHandle)
            return reinterpret_cast<HANDLE>(kNoSuchHandle);
        return m_reader.Get();
    }

    /// Fails unless the program has closed its end of a pipe that the launcher holds open.
    void ExpectClosedByProgram() {
        if (m_input != SLaunch::Input::OpenPipe)
            return;
        m_reader.Close();
        EXPECT_TRUE(WaitUntil([&] {
            DWORD written = 0;
            return ::WriteFile(m_writer.Get(), "x", 1, &written, nullptr) == 0;
        })) << "the program keeps its standard input";
    }

  private:
    void OpenPipe(const std::string& bytes) {
        EXPECT_TRUE(CreatePipe(m_reader.Out(), m_writer.Out(), &m_inherited, 65536));
        EXPECT_TRUE(SetHandleInformation(m_writer.Get(), HANDLE_FLAG_INHERIT, 0));
        DWORD written = 0;
        EXPECT_TRUE(bytes.empty() ||
                    ::WriteFile(m_writer.Get(), bytes.data(), static_cast<DWORD>(bytes.size()),
                                &written, nullptr));
    }
    void OpenFile(const std::wstring& path) {
        *m_reader.Out() = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, &m_inherited,
                                      OPEN_EXISTING, 0, nullptr);
        EXPECT_NE(m_reader.Get(), INVALID_HANDLE_VALUE);
    }

    SECURITY_ATTRIBUTES m_inherited{sizeof m_inherited, nullptr, TRUE};
    SLaunch::Input m_input;
    CTemporaryFolder m_folder;
    CHandle m_reader; ///< closed before its folder goes
    CHandle m_writer;
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
    CInput input(launch);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = input.Handle();
    if (launch.show.has_value()) {
        startup.dwFlags |= STARTF_USESHOWWINDOW;
        startup.wShowWindow = *launch.show;
    }
    PROCESS_INFORMATION info{};
    std::wstring command = L"\"" + program + L"\"";
    const auto start = [&] {
        return CreateProcessW(program.c_str(), command.data(), nullptr, nullptr, TRUE, 0, nullptr,
                              nullptr, &startup, &info) != 0;
    };
    // Wine on a busy machine was seen to refuse two of some thousand starts.
    if (!WaitUntil(start))
        throw std::runtime_error("the program does not start: error " +
                                 std::to_string(GetLastError()));
    CloseHandle(info.hThread);
    m_process.Take(info.hProcess);
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
    SetForegroundWindow(m_window);
    input.ExpectClosedByProgram();
}

CTrevoltProcess::CChild::~CChild() {
    if (m_handle == nullptr)
        return;
    if (!HasEnded())
        TerminateProcess(m_handle, 1);
    WaitForSingleObject(m_handle, kDeadlineMilliseconds);
    CloseHandle(m_handle);
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
    if (GuiState().hwndFocus == Control(id))
        return; // a click that is still on its way would undo what is selected next
    PostMessageW(Control(id), WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(3, 3));
    PostMessageW(Control(id), WM_LBUTTONUP, 0, MAKELPARAM(3, 3));
    EXPECT_TRUE(WaitForFocus(id));
}

void CTrevoltProcess::MoveFocus(int id) const {
    SendTo(m_window, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(Control(id)), TRUE);
    EXPECT_TRUE(WaitForFocus(id));
}

bool CTrevoltProcess::WaitForFocus(int id) const {
    const bool hasFocus = WaitUntil([&] {
        const GUITHREADINFO info = GuiState();
        return info.hwndFocus == Control(id) && info.hwndCapture == nullptr;
    });
    EXPECT_TRUE(hasFocus) << "no focus on control " << id;
    return hasFocus;
}

GUITHREADINFO CTrevoltProcess::GuiState() const {
    GUITHREADINFO info{};
    info.cbSize = sizeof info;
    GetGUIThreadInfo(m_threadId, &info);
    return info;
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

void CTrevoltProcess::PressAlt(int id, wchar_t letter) const {
    constexpr LPARAM kAltIsDown = 1 << 29;
    PostMessageW(Control(id), WM_SYSCHAR, letter, kAltIsDown);
}

void CTrevoltProcess::Click(int id) const { Send(id, BM_CLICK); }

void CTrevoltProcess::ClickModal(int id) const { PostMessageW(Control(id), BM_CLICK, 0, 0); }

void CTrevoltProcess::SelectAngle(int index) const {
    Send(kIdAngle, CB_SETCURSEL, static_cast<WPARAM>(index));
}

void CTrevoltProcess::SendLanguage(ULONG_PTR tag, std::int32_t id) const {
    SendCopyData(tag, LanguageBytes(id));
}

void CTrevoltProcess::SendCopyData(ULONG_PTR tag, const std::string& bytes) const {
    std::string copy = bytes;
    COPYDATASTRUCT data{};
    data.dwData = tag;
    data.cbData = static_cast<DWORD>(copy.size());
    data.lpData = copy.empty() ? nullptr : copy.data();
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

SBalloon CTrevoltProcess::ReadBalloon() const {
    SBalloon seen;
    seen.text = WaitForBalloon();
    const HWND window = FindBalloon();
    GetWindowRect(window, &seen.place);

    const CRemoteMemory toolMemory(Process(), sizeof(TTTOOLINFOW));
    TTTOOLINFOW tool{};
    tool.cbSize = sizeof tool;
    toolMemory.Write(tool);
    SendTo(window, TTM_ENUMTOOLSW, 0, reinterpret_cast<LPARAM>(toolMemory.Address()));
    toolMemory.Read(tool);
    seen.edit = reinterpret_cast<HWND>(tool.uId);
    return seen;
}

void CTrevoltProcess::Close() {
    PostMessageW(m_window, WM_CLOSE, 0, 0);
    EXPECT_TRUE(WaitForEnd()) << "the program does not end";
}

void CTrevoltProcess::SendClose(UINT message, WPARAM wParam) const {
    SendTo(m_window, message, wParam);
}

bool CTrevoltProcess::WaitForEnd() const {
    return WaitForSingleObject(m_process.Handle(), kDeadlineMilliseconds) == WAIT_OBJECT_0;
}

std::optional<DWORD> CTrevoltProcess::WaitForExitCode() const {
    DWORD code = 0;
    if (!WaitForEnd() || GetExitCodeProcess(m_process.Handle(), &code) == 0)
        return std::nullopt;
    return code;
}

namespace {

bool IsIconControl(HWND control) {
    return IsOfClass(control, L"Static") &&
           (GetWindowLongW(control, GWL_STYLE) & SS_TYPEMASK) == SS_ICON;
}

/// Which of the system's icons the screen shows at the control.
EBoxIcon SeenIcon(HWND control) {
    const std::pair<EBoxIcon, const wchar_t*> icons[] = {{EBoxIcon::Question, IDI_QUESTION},
                                                         {EBoxIcon::Exclamation, IDI_WARNING},
                                                         {EBoxIcon::Information, IDI_INFORMATION}};
    RECT place{};
    GetWindowRect(control, &place);
    const SIZE size{place.right - place.left, place.bottom - place.top};
    EBoxIcon found = EBoxIcon::Unknown;
    WaitUntil([&] {
        const CPixels seen = CPixels::OfScreen(place);
        for (const auto& [icon, name] : icons) {
            const HICON drawn = LoadIconW(nullptr, name);
            const CPixels expected(size, [&](HDC context) {
                const RECT all{0, 0, size.cx, size.cy};
                FillRect(context, &all, GetSysColorBrush(COLOR_3DFACE));
                DrawIconEx(context, 0, 0, drawn, 0, 0, 0, nullptr, DI_NORMAL);
            });
            if (seen == expected)
                found = icon;
        }
        return found != EBoxIcon::Unknown;
    });
    return found;
}

} // namespace

void Raise(HWND window) {
    constexpr UINT kInPlace = SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE;
    SetWindowPos(window, HWND_NOTOPMOST, 0, 0, 0, 0, kInPlace);
    SetWindowPos(window, HWND_TOPMOST, 0, 0, 0, 0, kInPlace);
}

SMessageBox ReadTexts(HWND box) {
    SMessageBox seen;
    seen.title = TextOf(box);
    for (const HWND child : ChildrenOf(box)) {
        if (IsWindowVisible(child) == 0 || IsIconControl(child))
            continue;
        if (IsOfClass(child, L"Button"))
            seen.button = TextOf(child);
        else if (IsOfClass(child, L"Static"))
            seen.text = TextOf(child);
    }
    return seen;
}

SMessageBox ReadMessageBox(HWND box) {
    SMessageBox seen = ReadTexts(box);
    Raise(box);
    for (const HWND child : ChildrenOf(box))
        if (IsIconControl(child) && SendTo(child, STM_GETICON) != 0)
            seen.icon = SeenIcon(child);
    return seen;
}

void ClosePopup(HWND popup, int buttonId) {
    HWND button = GetDlgItem(popup, buttonId);
    if (button == nullptr)
        button = GetDlgItem(popup, IDCANCEL);
    PostMessageW(button, BM_CLICK, 0, 0);
    EXPECT_TRUE(WaitUntil([&] { return IsWindow(popup) == 0; })) << "the modal window stays";
}

CRemoteMemory::CRemoteMemory(HANDLE process, std::size_t size)
    : m_process(process),
      m_address(VirtualAllocEx(process, nullptr, size, MEM_COMMIT, PAGE_READWRITE)) {}

CRemoteMemory::~CRemoteMemory() { VirtualFreeEx(m_process, m_address, 0, MEM_RELEASE); }

} // namespace trevolt::test
