// The real Trevolt.exe, started as a launcher starts it and worked through window messages only.
// Every wait is for a state and has a deadline, after which the test fails; where
// it could not go on, by an exception.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <windows.h>

namespace trevolt::test {

/// Waits until `condition` holds; false when it does not within the deadline.
bool WaitUntil(const std::function<bool()>& condition);

/// Bytes of a language id as a launcher writes them.
std::string LanguageBytes(std::int32_t id);

/// How the program finds its standard input.
struct SLaunch {
    enum class Input {
        Pipe,     ///< closed by the launcher after the bytes
        OpenPipe, ///< held open by the launcher until the window is there
        File,
        Device,       ///< one that is neither pipe nor file
        None,         ///< no handle
        InvalidValue, ///< the value that stands for failure
        ClosedHandle  ///< a value that names no handle
    };
    Input input = Input::Pipe;
    std::string bytes = LanguageBytes(0);
    std::optional<WORD> show = std::nullopt; ///< how the launcher asks for the window, if at all
};

/// A balloon as the user sees it.
struct SBalloon {
    std::wstring text;
    HWND edit = nullptr; ///< what it is about
    RECT place{};
};

class CTrevoltProcess {
  public:
    /// Starts the program file and waits for its window. The program ends with this object.
    explicit CTrevoltProcess(const std::wstring& program, const SLaunch& launch = {});
    ~CTrevoltProcess() = default;
    CTrevoltProcess(const CTrevoltProcess&) = delete;
    CTrevoltProcess& operator=(const CTrevoltProcess&) = delete;

    HWND Window() const { return m_window; }
    HWND Control(int id) const { return GetDlgItem(m_window, id); }
    std::wstring Title() const;
    std::wstring Text(int id) const;
    bool IsEnabled(int id) const { return IsWindowEnabled(Control(id)) != 0; }
    bool IsVisible(int id) const { return IsWindowVisible(Control(id)) != 0; }
    bool IsChecked(int id) const;
    LRESULT Send(int id, UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const;

    /// Clicks into the edit, marks all of its text and types.
    void Type(int id, const std::wstring& text) const;
    /// Clicks into an edit and waits until it has the focus.
    void Focus(int id) const;
    /// Gives a control the focus as the dialog itself does, without a click.
    void MoveFocus(int id) const;
    /// Waits until the control has the focus.
    bool WaitForFocus(int id) const;
    /// Presses a key while the control has the focus. Does not wait for its effect.
    void Press(int id, WPARAM key) const;
    /// Presses Alt and a letter while the control has the focus. Does not wait for its effect.
    void PressAlt(int id, wchar_t letter) const;
    /// Clicks a button and returns when its handler is done.
    void Click(int id) const;
    /// Clicks a button whose handler shows a modal window. Does not wait.
    void ClickModal(int id) const;
    void SelectAngle(int index) const;
    void SendLanguage(ULONG_PTR tag, std::int32_t id) const;
    /// Sends a block of WM_COPYDATA, with no data when `bytes` is empty.
    void SendCopyData(ULONG_PTR tag, const std::string& bytes) const;

    /// Waits for a modal window over the dialog and returns it.
    HWND WaitForPopup() const;
    /// Waits for the text of a balloon; empty when none is shown in time.
    std::wstring WaitForBalloon() const;
    HWND FindBalloon() const;
    /// Waits for a balloon and reads it.
    SBalloon ReadBalloon() const;

    /// Asks the window to close and waits for the program's end.
    void Close();
    /// Asks the window to close as another program does that waits for the answer: the message is
    /// sent and not posted.
    void SendClose(UINT message = WM_CLOSE, WPARAM wParam = 0) const;
    bool WaitForEnd() const;
    /// Waits for the program's end. Its exit code, nothing when it does not end in time.
    std::optional<DWORD> WaitForExitCode() const;
    bool HasEnded() const { return m_process.HasEnded(); }

    /// The process, for reading what its controls hold.
    HANDLE Process() const { return m_process.Handle(); }

    /// Whether the window is the one that the user works in.
    bool IsActive() const { return GuiState().hwndActive == m_window; }

  private:
    /// A started process; ends it if it still runs.
    class CChild {
      public:
        CChild() = default;
        ~CChild();
        CChild(const CChild&) = delete;
        CChild& operator=(const CChild&) = delete;

        void Take(HANDLE handle) { m_handle = handle; }
        HANDLE Handle() const { return m_handle; }
        bool HasEnded() const { return WaitForSingleObject(m_handle, 0) == WAIT_OBJECT_0; }

      private:
        HANDLE m_handle = nullptr;
    };

    std::vector<HWND> Windows(const wchar_t* className) const;
    GUITHREADINFO GuiState() const;

    CChild m_process;
    DWORD m_processId = 0;
    DWORD m_threadId = 0;
    HWND m_window = nullptr;
};

/// The system's icons of message boxes, told apart by what the screen shows.
enum class EBoxIcon { None, Question, Exclamation, Information, Unknown };

/// A message box as the user sees it.
struct SMessageBox {
    std::wstring title;
    std::wstring text;
    std::wstring button;
    EBoxIcon icon = EBoxIcon::None;
};

/// Reads a message box.
SMessageBox ReadMessageBox(HWND box);

/// Reads a modal window's texts; its icon stays None.
SMessageBox ReadTexts(HWND box);

/// Presses the button of a modal window and waits until it is gone.
void ClosePopup(HWND popup, int buttonId = IDOK);

/// Puts a window before all others on the screen, which the bare X server leaves to chance.
void Raise(HWND window);

/// A window's text, asked from its own process.
std::wstring TextOf(HWND window);

/// Memory in a program, for messages that point to it.
class CRemoteMemory {
  public:
    CRemoteMemory(HANDLE process, std::size_t size);
    ~CRemoteMemory();
    CRemoteMemory(const CRemoteMemory&) = delete;
    CRemoteMemory& operator=(const CRemoteMemory&) = delete;

    void* Address() const { return m_address; }
    template <class T>
    void Write(const T& value) const {
        WriteProcessMemory(m_process, m_address, &value, sizeof value, nullptr);
    }
    template <class T>
    void Read(T& value) const {
        ReadProcessMemory(m_process, m_address, &value, sizeof value, nullptr);
    }

  private:
    HANDLE m_process;
    void* m_address;
};

} // namespace trevolt::test
