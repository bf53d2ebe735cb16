#include "platform/Process.h"

#include <csignal>

#include <unistd.h>

namespace trevolt {
namespace {

std::atomic<bool> g_interrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free);

void OnSignal(int) { g_interrupted = true; }

} // namespace

std::uint32_t ProcessId() { return static_cast<std::uint32_t>(getpid()); }

const std::atomic<bool>& CatchInterrupts() {
    struct sigaction action {};
    action.sa_handler = OnSignal;
    action.sa_flags = SA_RESTART;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        sigaction(signal, &action, nullptr);
    return g_interrupted;
}

bool IsErrorTerminal() { return isatty(STDERR_FILENO) != 0; }

} // namespace trevolt
