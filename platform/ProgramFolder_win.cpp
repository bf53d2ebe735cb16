#include "platform/ProgramFolder.h"

#include <windows.h>

namespace trevolt {
namespace {

/// The program file's full path; empty when the system does not tell it.
std::wstring ProgramPath() {
    constexpr std::size_t kLongestPath = 32768;
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length =
            GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
        if (length < path.size()) {
            path.resize(length);
            return path;
        }
        if (path.size() >= kLongestPath)
            return {};
        path.resize(kLongestPath);
    }
}

} // namespace

std::wstring ThroughCodePage(const std::wstring& text) {
    const int units = static_cast<int>(text.size());
    const int byteCount =
        WideCharToMultiByte(CP_ACP, 0, text.data(), units, nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<std::size_t>(byteCount), '\0');
    WideCharToMultiByte(CP_ACP, 0, text.data(), units, bytes.data(), byteCount, nullptr, nullptr);

    const int backUnits = MultiByteToWideChar(CP_ACP, 0, bytes.data(), byteCount, nullptr, 0);
    std::wstring back(static_cast<std::size_t>(backUnits), L'\0');
    MultiByteToWideChar(CP_ACP, 0, bytes.data(), byteCount, back.data(), backUnits);
    return back;
}

std::wstring GetModuleFolder() {
    const std::wstring path = ProgramPath();
    return ThroughCodePage(path.substr(0, path.rfind(L'\\') + 1));
}

} // namespace trevolt
