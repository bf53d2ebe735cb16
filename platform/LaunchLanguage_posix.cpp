#include "platform/LaunchLanguage.h"

#include <array>
#include <bit>
#include <cstring>

#include <sys/stat.h>
#include <unistd.h>

namespace trevolt {
namespace {

static_assert(std::endian::native == std::endian::little, "the id is copied as it lies");

bool IsPipeOrFile(int input) {
    struct stat info {};
    return fstat(input, &info) == 0 &&
           (S_ISREG(info.st_mode) || S_ISFIFO(info.st_mode) || S_ISSOCK(info.st_mode));
}

} // namespace

std::int32_t ReadLaunchLanguage() {
    std::array<char, 10000> bytes{};
    std::int32_t id = 0;
    if (IsPipeOrFile(STDIN_FILENO) && read(STDIN_FILENO, bytes.data(), bytes.size()) >= 0)
        std::memcpy(&id, bytes.data(), sizeof id);
    close(STDIN_FILENO);
    return id;
}

} // namespace trevolt
