#include "platform/Process.h"

#include <windows.h>

namespace trevolt {
namespace {

std::atomic<bool> g_interrupted{false};

BOOL WINAPI OnControl(DWORD) {
    g_interrupted = true;
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
