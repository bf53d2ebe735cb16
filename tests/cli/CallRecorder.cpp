// Loaded before a program (LD_PRELOAD), it writes down the calls that make outputs last, in their
// order, and lets chosen ones fail:
//
//   TREVOLT_CALLS           the file that the lines are added to: "sync PATH", "time PATH" of one that
//                           is set, "rename FROM TO", "print TEXT" of what goes to the standard
//                           output, "refuse memory"
//   TREVOLT_FAIL_SYNC       syncs of paths that end so fail with EIO,
//   TREVOLT_SPARE_SYNCS     but for so many that come first,
//   TREVOLT_MOST_FAILURES   no more of them than so many,
//   TREVOLT_SYNC_ERROR      or with this errno value
//   TREVOLT_FAIL_TIME       paths that end so are given no time: EPERM
//   TREVOLT_FAIL_READDIR    the number of the call that reads of a folder and fails with EIO
//   TREVOLT_FAIL_THREAD     threads that start before all others fail to
//   TREVOLT_FAIL_NEW        the number of the allocation that is refused, from the entry point's call
//                           of `signal` on: the objects that libraries keep are made before it
//   TREVOLT_PLAIN_RENAMES   1: the file system has no rename that replaces nothing, 2: nor hard links
//   TREVOLT_APPEARS         an empty file comes to stand under each new name in the last moment
//   TREVOLT_INTERRUPT       the program is interrupted when it reads or syncs a file whose path ends so
//   TREVOLT_DECAY           a file whose cached pages are given up has lost a bit on the disk
#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <string_view>

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

template <class Function>
Function* Next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

long NumberIn(const char* variable, long without) {
    const char* const text = std::getenv(variable);
    return text == nullptr ? without : std::strtol(text, nullptr, 10);
}

/// One write a line, so that lines of several threads stay whole.
void Record(const char* call, std::string_view what) {
    const char* const path = std::getenv("TREVOLT_CALLS");
    if (path == nullptr)
        return;
    std::string line(call);
    line.append(" ").append(what).append("\n");
    const int file = open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    if (write(file, line.data(), line.size()) != static_cast<ssize_t>(line.size()))
        std::abort();
    close(file);
}

std::atomic<bool> g_hasBegun{false};

/// The recorder's own allocations are no part of the program.
thread_local bool t_isOwn = false;

class COwnWork {
  public:
    COwnWork() : m_before(t_isOwn) { t_isOwn = true; }
    ~COwnWork() { t_isOwn = m_before; }
    COwnWork(const COwnWork&) = delete;
    COwnWork& operator=(const COwnWork&) = delete;

  private:
    bool m_before;
};

std::string PathOf(int descriptor) {
    char path[4096];
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    const ssize_t length = readlink(link.c_str(), path, sizeof path);
    return {path, length < 0 ? 0 : static_cast<std::size_t>(length)};
}

bool IsToFail(const char* variable, std::string_view path) {
    const char* const end = std::getenv(variable);
    return end != nullptr && path.ends_with(end);
}

void InterruptAt(std::string_view path) {
    static std::atomic<bool> isDone{false};
    if (IsToFail("TREVOLT_INTERRUPT", path) && !isDone.exchange(true))
        std::raise(SIGINT);
}

void Decay(int descriptor) {
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    const int file = open(link.c_str(), O_RDWR | O_CLOEXEC);
    char last = 0;
    const off_t place = lseek(file, -1, SEEK_END);
    if (pread(file, &last, 1, place) != 1)
        std::abort();
    last = static_cast<char>(last ^ 1);
    if (pwrite(file, &last, 1, place) != 1)
        std::abort();
    close(file);
}

} // namespace

extern "C" {

int fsync(int descriptor) {
    const COwnWork own;
    const std::string synced = PathOf(descriptor);
    InterruptAt(synced);
    static std::atomic<long> spared{NumberIn("TREVOLT_SPARE_SYNCS", 0)};
    static std::atomic<long> left{NumberIn("TREVOLT_MOST_FAILURES", LONG_MAX)};
    if (IsToFail("TREVOLT_FAIL_SYNC", synced) && spared-- <= 0 && left-- > 0) {
        errno = static_cast<int>(NumberIn("TREVOLT_SYNC_ERROR", EIO));
        return -1;
    }
    const int result = Next<int(int)>("fsync")(descriptor);
    Record("sync", synced); // when it is done
    return result;
}

ssize_t read(int descriptor, void* bytes, std::size_t count) {
    const COwnWork own;
    if (std::getenv("TREVOLT_INTERRUPT") != nullptr)
        InterruptAt(PathOf(descriptor));
    return Next<ssize_t(int, void*, std::size_t)>("read")(descriptor, bytes, count);
}

int utimensat(int folder, const char* path, const timespec* times, int flags) noexcept {
    const COwnWork own;
    if (IsToFail("TREVOLT_FAIL_TIME", path)) {
        errno = EPERM;
        return -1;
    }
    Record("time", path);
    return Next<int(int, const char*, const timespec*, int)>("utimensat")(folder, path, times,
                                                                          flags);
}

int rename(const char* from, const char* to) noexcept {
    const COwnWork own;
    Record("rename", std::string(from) + " " + to); // before anybody can see it
    return Next<int(const char*, const char*)>("rename")(from, to);
}

int renameat2(int fromFolder, const char* from, int toFolder, const char* to,
              unsigned flags) noexcept {
    const COwnWork own;
    if (NumberIn("TREVOLT_APPEARS", 0) != 0)
        close(open(to, O_WRONLY | O_CREAT | O_CLOEXEC, 0666));
    if (NumberIn("TREVOLT_PLAIN_RENAMES", 0) != 0) {
        errno = EINVAL;
        return -1;
    }
    Record("rename", std::string(from) + " " + to);
    return Next<int(int, const char*, int, const char*, unsigned)>("renameat2")(
        fromFolder, from, toFolder, to, flags);
}

int link(const char* from, const char* to) noexcept {
    const COwnWork own;
    if (NumberIn("TREVOLT_PLAIN_RENAMES", 0) > 1) {
        errno = EPERM;
        return -1;
    }
    return Next<int(const char*, const char*)>("link")(from, to);
}

int posix_fadvise(int descriptor, off_t from, off_t length, int advice) noexcept {
    const COwnWork own;
    if (NumberIn("TREVOLT_DECAY", 0) != 0)
        Decay(descriptor);
    return Next<int(int, off_t, off_t, int)>("posix_fadvise")(descriptor, from, length, advice);
}

sighandler_t signal(int number, sighandler_t handler) noexcept {
    g_hasBegun = true;
    return Next<sighandler_t(int, sighandler_t)>("signal")(number, handler);
}

std::size_t fwrite(const void* bytes, std::size_t size, std::size_t count, FILE* stream) {
    const COwnWork own;
    if (stream == stdout && size * count > 1)
        Record("print", {static_cast<const char*>(bytes), size * count - 1});
    return Next<std::size_t(const void*, std::size_t, std::size_t, FILE*)>("fwrite")(bytes, size,
                                                                                     count, stream);
}

dirent* readdir(DIR* folder) {
    static long left = NumberIn("TREVOLT_FAIL_READDIR", 0);
    if (left > 0 && --left == 0) {
        errno = EIO;
        return nullptr;
    }
    return Next<dirent*(DIR*)>("readdir")(folder);
}

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*),
                   void* argument) noexcept {
    static std::atomic<long> refused{NumberIn("TREVOLT_FAIL_THREAD", 0)};
    if (refused > 0 && refused-- > 0)
        return EAGAIN;
    return Next<int(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*)>("pthread_create")(
        thread, attributes, body, argument);
}

} // extern "C"

void* operator new(std::size_t bytes) {
    static std::atomic<long> left{NumberIn("TREVOLT_FAIL_NEW", 0)};
    if (g_hasBegun && !t_isOwn && left > 0 && left-- == 1) {
        const COwnWork own;
        Record("refuse", "memory");
        throw std::bad_alloc();
    }
    void* const memory = std::malloc(bytes == 0 ? 1 : bytes);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
