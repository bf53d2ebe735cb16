#include "platform/Process.h"

#include <csignal>

#include <unistd.h>

namespace trevolt {
namespace {

std::atomic<bool> g_interrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free);

void OnSignal(int) { g_interrupted = true; }

/// Takes the signal, unless who started the program had it ignored (as nohup does).
void CatchSignal(int signal) {
    struct sigaction action {};
    if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN)
        return;
    action = {};
    action.sa_handler = OnSignal;
    action.sa_flags = SA_RESTART;
    sigaction(signal, &action, nullptr);
}

} // namespace

std::uint32_t ProcessId() { return static_cast<std::uint32_t>(getpid()); }

const std::atomic<bool>& CatchInterrupts() {
    // A reader of the output that goes away (SIGPIPE) wants no more of it either.
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE})
        CatchSignal(signal);
    return g_interrupted;
}

bool IsErrorTerminal() { return isatty(STDERR_FILENO) != 0; }

} // namespace trevolt
