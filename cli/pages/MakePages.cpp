// Writes the manual page and the shells' completions of trevolt-cli below a folder, under the names
// that they have below a system's share/.
#include <array>
#include <cerrno>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

#include "cli/Program.h"
#include "cli/pages/Pages.h"

namespace trevolt {
namespace {

struct SPageFile {
    const char* path;
    std::string (*make)(const SCommandTable& table);
};

constexpr std::array kPages = {
    SPageFile{"man/man1/trevolt-cli.1", ManualPage},
    SPageFile{"bash-completion/completions/trevolt-cli", BashCompletion},
    SPageFile{"zsh/site-functions/_trevolt-cli", ZshCompletion},
    SPageFile{"fish/vendor_completions.d/trevolt-cli.fish", FishCompletion},
};

void WriteFile(const std::filesystem::path& path, const std::string& text) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary);
    file << text << std::flush;
    if (!file)
        throw std::system_error(errno, std::generic_category(), path.string());
}

void MakePages(const std::filesystem::path& folder) {
    int unusedStatus = 0;
    const SCommandTable table = TableOf(*MakeProgram(unusedStatus));
    for (const SPageFile& page : kPages)
        WriteFile(folder / page.path, page.make(table));
}

} // namespace
} // namespace trevolt

int main(int argumentCount, char** arguments) try {
    if (argumentCount != 2 || arguments[1][0] == '-') {
        std::fputs("usage: make-cli-pages FOLDER\n", stderr);
        return 2;
    }
    trevolt::MakePages(arguments[1]);
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "make-cli-pages: %s\n", error.what());
    return 1;
}
