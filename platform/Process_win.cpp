#include "platform/Process.h"

#include <array>
#include <functional>
#include <string>

#include <windows.h>

namespace trevolt {
namespace {

std::atomic<bool> g_interrupted{false};

constexpr std::size_t kUsualColumns = 80;
constexpr DWORD kGraceMilliseconds = 10000; // the system waits no longer itself

BOOL WINAPI OnControl(DWORD event) {
    const bool isSecond = g_interrupted.exchange(true);
    // A closed console, a log-off or a shutdown ends the process when this returns. The program
    // ends before the wait is over, with its temporary files removed.
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT)
        Sleep(kGraceMilliseconds);
    else if (isSecond)
        return FALSE; // the system ends the program
    return TRUE;
}

} // namespace

std::uint32_t ProcessId() { return GetCurrentProcessId(); }

/// A computer's name is its own in its network. Ids are given again after a start of the system: a
/// process that has one then is taken for the earlier.
std::uint32_t ProcessRealm() {
    std::array<wchar_t, 256> name{}; // whole: the older names are cut to 15 characters
    auto length = static_cast<DWORD>(name.size());
    if (GetComputerNameExW(ComputerNamePhysicalDnsHostname, name.data(), &length) == 0)
        return 0;
    return static_cast<std::uint32_t>(std::hash<std::wstring>()({name.data(), length}));
}

bool IsProcessGone(std::uint32_t id) {
    const HANDLE process = OpenProcess(SYNCHRONIZE, FALSE, id);
    if (process == nullptr)
        return GetLastError() == ERROR_INVALID_PARAMETER;
    const bool hasEnded = WaitForSingleObject(process, 0) == WAIT_OBJECT_0;
    CloseHandle(process);
    return hasEnded;
}

const std::atomic<bool>& CatchInterrupts() {
    SetConsoleCtrlHandler(OnControl, TRUE);
    return g_interrupted;
}

std::size_t ErrorTerminalColumns() {
    const HANDLE terminal = GetStdHandle(STD_ERROR_HANDLE);
    DWORD mode = 0;
    if (GetConsoleMode(terminal, &mode) == 0)
        return 0;
    CONSOLE_SCREEN_BUFFER_INFO info{};
    if (GetConsoleScreenBufferInfo(terminal, &info) == 0 ||
        info.srWindow.Right < info.srWindow.Left)
        return kUsualColumns;
    return static_cast<std::size_t>(info.srWindow.Right - info.srWindow.Left) + 1;
}

} // namespace trevolt
