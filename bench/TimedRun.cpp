// Runs a command and prints what it took:
//
//   timed-run COMMAND [ARGUMENT ...]
//
// One line on standard output: the command's exit status (128 and the signal's number when one ended
// it), its seconds from start to end, its page faults that needed no disk, and the KiB that it held
// at most. What the command prints there is thrown away. A program this small stands between the
// measuring script and the command because a new process inherits the peak of the one that starts it.
#include <chrono>
#include <cstdio>
#include <cstdlib>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int kCannotStart = 127;
constexpr int kSignalled = 128;

[[noreturn]] void Become(char** command) {
    const int nowhere = open("/dev/null", O_WRONLY);
    if (nowhere >= 0)
        dup2(nowhere, STDOUT_FILENO);
    execvp(command[0], command);
    std::perror(command[0]);
    _exit(kCannotStart);
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fputs("timed-run: a command is wanted\n", stderr);
        return EXIT_FAILURE;
    }
    const auto start = std::chrono::steady_clock::now();
    const pid_t child = fork();
    if (child == 0)
        Become(argv + 1);
    int status = 0;
    rusage usage{};
    if (child < 0 || wait4(child, &status, 0, &usage) != child) {
        std::perror("timed-run");
        return EXIT_FAILURE;
    }
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    const int exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : kSignalled + WTERMSIG(status);
    std::printf("%d %.6f %ld %ld\n", exitStatus, seconds.count(), usage.ru_minflt, usage.ru_maxrss);
    return EXIT_SUCCESS;
}
