#include "platform/LaunchLanguage.h"

#include <array>

#include <windows.h>

namespace trevolt {
namespace {

bool IsPipeOrFile(HANDLE input) {
    const DWORD type = GetFileType(input);
    return type == FILE_TYPE_PIPE || type == FILE_TYPE_DISK;
}

/// Whether a pipe has something to read or to tell, now or within `patience`. What cannot be looked
/// into, as a pipe whose writer is gone, a read tells of at once.
bool WaitForInput(HANDLE input, std::chrono::milliseconds patience) {
    constexpr DWORD kPauseMilliseconds = 5;
    const ULONGLONG end = GetTickCount64() + static_cast<ULONGLONG>(patience.count());
    DWORD available = 0;
    while (PeekNamedPipe(input, nullptr, 0, nullptr, &available, nullptr) != 0 && available == 0) {
        if (GetTickCount64() >= end)
            return false;
        Sleep(kPauseMilliseconds);
    }
    return true;
}

} // namespace

std::int32_t ReadLaunchLanguage(std::chrono::milliseconds patience) {
    const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    if (input == nullptr || input == INVALID_HANDLE_VALUE)
        return 0;

    std::array<char, 10000> bytes{};
    DWORD count = 0;
    const bool isRead =
        IsPipeOrFile(input) && WaitForInput(input, patience) &&
        ReadFile(input, bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr) != 0;
    CloseHandle(input);
    SetStdHandle(STD_INPUT_HANDLE, nullptr); // nobody may use the closed handle
    return isRead ? LaunchLanguageOf({bytes.data(), count}) : 0;
}

} // namespace trevolt
