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
    enum class Input { Pipe, None, Device };
    Input input = Input::Pipe;
    std::string bytes = LanguageBytes(0);
};

class CTrevoltProcess {
  public:
    /// Starts the program file and waits for its window.
    explicit CTrevoltProcess(const std::wstring& program, const SLaunch& launch = {});
    /// Ends the program if it still runs.
    ~CTrevoltProcess();
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
    /// Presses a key while the control has the focus. Does not wait for its effect.
    void Press(int id, WPARAM key) const;
    /// Clicks a button and returns when its handler is done.
    void Click(int id) const;
    /// Clicks a button whose handler shows a modal window. Does not wait.
    void ClickModal(int id) const;
    void SelectAngle(int index) const;
    void SendLanguage(ULONG_PTR tag, std::int32_t id) const;

    /// Waits for a modal window over the dialog and returns it.
    HWND WaitForPopup() const;
    /// Waits for the text of an information balloon; empty when none is shown in time.
    std::wstring WaitForBalloon() const;
    HWND FindBalloon() const;

    /// Asks the window to close and waits for the program's end.
    void Close();
    bool WaitForEnd() const;
    bool HasEnded() const { return WaitForSingleObject(m_process, 0) == WAIT_OBJECT_0; }

    /// The process, for reading what its controls hold.
    HANDLE Process() const { return m_process; }

  private:
    std::vector<HWND> Windows(const wchar_t* className) const;

    HANDLE m_process = nullptr;
    DWORD m_processId = 0;
    DWORD m_threadId = 0;
    HWND m_window = nullptr;
};

/// A message box as the user sees it.
struct SMessageBox {
    std::wstring title;
    std::wstring text;
    std::wstring button;
    bool hasIcon = false;
};

/// Reads a message box.
SMessageBox ReadMessageBox(HWND box);

/// Presses the button of a modal window and waits until it is gone.
void ClosePopup(HWND popup, int buttonId = IDOK);

/// A window's text, asked from its own process.
std::wstring TextOf(HWND window);

} // namespace trevolt::test
