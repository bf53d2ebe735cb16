#include "platform/LaunchLanguage.h"

#include <array>
#include <cstring>

#include <windows.h>

namespace trevolt {
namespace {

bool IsPipeOrFile(HANDLE input) {
    const DWORD type = GetFileType(input);
    return type == FILE_TYPE_PIPE || type == FILE_TYPE_DISK;
}

} // namespace

std::int32_t ReadLaunchLanguage() {
    const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    if (input == nullptr || input == INVALID_HANDLE_VALUE)
        return 0;

    std::array<char, 10000> bytes{};
    std::int32_t id = 0;
    DWORD count = 0;
    if (IsPipeOrFile(input) &&
        ReadFile(input, bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr) != 0)
        std::memcpy(&id, bytes.data(), sizeof id); // Windows is little-endian
    CloseHandle(input);
    SetStdHandle(STD_INPUT_HANDLE, nullptr); // nobody may use the closed handle
    return id;
}

} // namespace trevolt
