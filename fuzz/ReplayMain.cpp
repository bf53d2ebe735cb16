// Runs a fuzz target once over every file below the given folders, without the fuzzer: its seeds
// stay tests on every system. Fails when a folder is missing or holds no file.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "platform/ConsoleProgram.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

void Replay(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(stream), {}};
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

int ReplayFolder(const std::filesystem::path& folder) {
    int files = 0;
    std::error_code error;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder, error)) {
        if (!entry.is_regular_file())
            continue;
        Replay(entry.path());
        ++files;
    }
    return files;
}

} // namespace

int trevolt::StatusWithoutMemory(std::string_view /*firstArgument*/) noexcept { return 1; }

int trevolt::ConsoleMain(const std::vector<std::string>& arguments) {
    if (arguments.empty())
        return 2;
    for (const std::string& folder : arguments) {
        const int files = ReplayFolder(std::u8string(folder.begin(), folder.end()));
        std::printf("%s: %d inputs replayed\n", folder.c_str(), files);
        if (files == 0)
            return 1;
    }
    return 0;
}
