#include "platform/LaunchLanguage.h"

#include <algorithm>
#include <array>
#include <cerrno>

#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace trevolt {
namespace {

bool IsPipeOrFile(int input) {
    struct stat info {};
    return fstat(input, &info) == 0 &&
           (S_ISREG(info.st_mode) || S_ISFIFO(info.st_mode) || S_ISSOCK(info.st_mode));
}

/// Whether a read would not block, now or within `patience`.
bool WaitForInput(int input, std::chrono::milliseconds patience) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point end = Clock::now() + patience;
    pollfd waited{input, POLLIN, 0};
    for (;;) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()).count();
        const int answer = poll(&waited, 1, left > 0 ? static_cast<int>(left) : 0);
        if (answer >= 0 || errno != EINTR)
            return answer > 0;
    }
}

} // namespace

std::int32_t ReadLaunchLanguage(std::chrono::milliseconds patience) {
    std::array<char, 10000> bytes{};
    ssize_t count = 0;
    if (IsPipeOrFile(STDIN_FILENO) && WaitForInput(STDIN_FILENO, patience))
        count = read(STDIN_FILENO, bytes.data(), bytes.size());
    close(STDIN_FILENO);
    return LaunchLanguageOf({bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))});
}

} // namespace trevolt
