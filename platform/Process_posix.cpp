#include "platform/Process.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <functional>
#include <string>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace trevolt {
namespace {

std::atomic<bool> g_interrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free);

constexpr std::size_t kUsualColumns = 80;

void OnSignal(int) { g_interrupted = true; }

/// Takes the signal, unless who started the program had it ignored (as nohup does).
void CatchSignal(int signal) {
    struct sigaction action {};
    if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN)
        return;
    action = {};
    action.sa_handler = OnSignal;
    // Each write to a pipe that nobody reads comes as one more.
    action.sa_flags = signal == SIGPIPE ? SA_RESTART : SA_RESTART | static_cast<int>(SA_RESETHAND);
    sigaction(signal, &action, nullptr);
}

} // namespace

std::uint32_t ProcessId() { return static_cast<std::uint32_t>(getpid()); }

std::uint32_t ProcessRealm() {
    // New with each start of the system. A stream's buffer would take more memory than it needs.
    const int start = open("/proc/sys/kernel/random/boot_id", O_RDONLY | O_CLOEXEC);
    std::array<char, 36> text{};
    const ssize_t count = start < 0 ? 0 : read(start, text.data(), text.size());
    if (start >= 0)
        close(start);
    struct stat counting {};
    if (count <= 0 || stat("/proc/self/ns/pid", &counting) != 0)
        return 0;
    const std::string realm =
        std::string(text.data(), static_cast<std::size_t>(count)) + std::to_string(counting.st_ino);
    return static_cast<std::uint32_t>(std::hash<std::string>()(realm));
}

bool IsProcessGone(std::uint32_t id) {
    const auto process = static_cast<pid_t>(id);
    return process > 0 && kill(process, 0) != 0 && errno == ESRCH;
}

const std::atomic<bool>& CatchInterrupts() {
    // A reader of the output that goes away (SIGPIPE) wants no more of it either.
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE})
        CatchSignal(signal);
    return g_interrupted;
}

std::size_t ErrorTerminalColumns() {
    if (isatty(STDERR_FILENO) == 0)
        return 0;
    struct winsize size {};
    const bool isTold = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col != 0;
    return isTold ? size.ws_col : kUsualColumns;
}

} // namespace trevolt
