#include "platform/ProgramFolder.h"

#include <filesystem>

#include "trevolt/Utf8.h"

namespace trevolt {

std::wstring GetModuleFolder() {
    std::error_code error;
    const std::string path = std::filesystem::read_symlink("/proc/self/exe", error).string();
    return Utf8ToWide(path.substr(0, path.rfind('/') + 1)).value_or(L"");
}

} // namespace trevolt
