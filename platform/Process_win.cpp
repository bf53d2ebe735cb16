#include "platform/Process.h"

#include <windows.h>

namespace trevolt {
namespace {

std::atomic<bool> g_interrupted{false};

constexpr DWORD kGraceMilliseconds = 10000; // the system waits no longer itself

BOOL WINAPI OnControl(DWORD event) {
    g_interrupted = true;
    // A closed console, a log-off or a shutdown ends the process when this returns. The program
    // ends before the wait is over, with its temporary files removed.
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT)
        Sleep(kGraceMilliseconds);
    return TRUE;
}

} // namespace

std::uint32_t ProcessId() { return GetCurrentProcessId(); }

const std::atomic<bool>& CatchInterrupts() {
    SetConsoleCtrlHandler(OnControl, TRUE);
    return g_interrupted;
}

bool IsErrorTerminal() {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
}

} // namespace trevolt
