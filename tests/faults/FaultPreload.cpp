// A library to preload into a program: it lets chosen calls of the system fail, so that a test can
// see what the program makes of it. Told by the environment:
//
//   TREVOLT_FAULT        CALL:FIRST:COUNT, for example write:3:1: of the calls of that name the
//                        FIRST-th (from 1, as soon as main runs) and COUNT - 1 more fail
//   TREVOLT_FAULT_MARK   a file that is made when the first fault happens
//   TREVOLT_FAULT_PATH   what the calls that change something on the disk change
//
// Calls (each with the functions that it stands for below): alloc, thread, open, read, short-read,
// end (of file), write, short-write, seek, close, sync, rename, list, stat; and those that work as ever, but
// before them the file or folder at the path is changed by somebody else: truncate and grow (before a
// read), remove (a rename, before a read). space:BYTES:1 is a disk with so much room for all files.
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

namespace {

constexpr int kFirstFile = 3; // descriptors below are the console's

struct SFault {
    char call[16] = "";
    long first = 0;
    long count = 0;
};

/// Without any call that asks for memory: allocations are among what is counted.
SFault ReadFault() {
    SFault fault;
    const char* text = std::getenv("TREVOLT_FAULT");
    if (text == nullptr)
        return fault;
    for (std::size_t i = 0; *text != ':' && *text != '\0' && i + 1 < sizeof fault.call; ++i)
        fault.call[i] = *text++;
    char* behind = nullptr;
    fault.first = *text == ':' ? std::strtol(text + 1, &behind, 10) : 0;
    fault.count = behind != nullptr && *behind == ':' ? std::strtol(behind + 1, nullptr, 10) : 0;
    return fault;
}

const SFault& Fault() {
    static const SFault fault = ReadFault();
    return fault;
}

void Mark() {
    const char* const path = std::getenv("TREVOLT_FAULT_MARK");
    if (path == nullptr)
        return;
    const long file = syscall(SYS_openat, AT_FDCWD, path, O_CREAT | O_WRONLY, 0600);
    if (file >= 0)
        syscall(SYS_close, file);
}

bool IsChosen(const char* call) { return std::strcmp(Fault().call, call) == 0; }

/// The program's own main, which may catch what fails; before it nothing does.
int (*g_main)(int, char**, char**) = nullptr;
std::atomic<bool> g_isInMain{false};

int CountedMain(int count, char** arguments, char** environment) {
    g_isInMain = true;
    return g_main(count, arguments, environment);
}

/// Counts one call of this name; true when it is to fail.
bool Fails(const char* call) {
    static std::atomic<long> calls{0};
    if (!g_isInMain || !IsChosen(call))
        return false;
    const long number = ++calls;
    if (number < Fault().first || number - Fault().first >= Fault().count)
        return false;
    if (number == Fault().first)
        Mark();
    return true;
}

/// As many of `count` bytes as the disk still has room for; -1 when it is full.
ssize_t TakeSpace(std::size_t count) {
    static std::atomic<long> taken{0};
    if (!IsChosen("space"))
        return static_cast<ssize_t>(count);
    const long before = taken.fetch_add(static_cast<long>(count));
    if (before + static_cast<long>(count) <= Fault().first)
        return static_cast<ssize_t>(count);
    Mark();
    return before < Fault().first ? Fault().first - before : -1;
}

template <class Result>
Result Refuse(int reason, Result answer) {
    errno = reason;
    return answer;
}

template <class Function>
Function* Real(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

/// What somebody else does to the file or folder while the program works on it.
void ChangeBeforeRead() {
    const char* const path = std::getenv("TREVOLT_FAULT_PATH");
    struct stat entry {};
    if (path == nullptr || stat(path, &entry) != 0)
        return;
    if (Fails("truncate"))
        syscall(SYS_truncate, path, entry.st_size / 2);
    else if (Fails("grow"))
        syscall(SYS_truncate, path, entry.st_size + 100);
    else if (Fails("remove")) {
        const std::string gone = std::string(path) + ".gone";
        syscall(SYS_rename, path, gone.c_str());
    }
}

/// The answer of a write of so many bytes to a file that `write(count)` writes some of.
template <class Write>
ssize_t WriteSome(std::size_t count, const Write& write) {
    if (Fails("write"))
        return Refuse(ENOSPC, ssize_t{-1});
    if (count > 1 && Fails("short-write"))
        return write(count / 2);
    const ssize_t room = TakeSpace(count);
    return room < 0 ? Refuse(ENOSPC, ssize_t{-1}) : write(static_cast<std::size_t>(room));
}

} // namespace

#define TREVOLT_REAL(name) (Real<decltype(name)>(#name))

extern "C" {

// NOLINTNEXTLINE(readability-identifier-naming)
int __libc_start_main(int (*main)(int, char**, char**), int count, char** arguments,
                      void (*begin)(), void (*end)(), void (*unload)(), void* stackEnd) {
    g_main = main;
    return TREVOLT_REAL(__libc_start_main)(CountedMain, count, arguments, begin, end, unload,
                                           stackEnd);
}

// ---- memory ----

// What the C library calls its own.
// NOLINTBEGIN(readability-identifier-naming)
void* __libc_malloc(std::size_t bytes);
void* __libc_calloc(std::size_t count, std::size_t bytes);
void* __libc_realloc(void* memory, std::size_t bytes);
void* __libc_memalign(std::size_t alignment, std::size_t bytes);
// NOLINTEND(readability-identifier-naming)

void* malloc(std::size_t bytes) {
    return Fails("alloc") ? Refuse<void*>(ENOMEM, nullptr) : __libc_malloc(bytes);
}
void* calloc(std::size_t count, std::size_t bytes) {
    return Fails("alloc") ? Refuse<void*>(ENOMEM, nullptr) : __libc_calloc(count, bytes);
}
void* realloc(void* memory, std::size_t bytes) {
    return Fails("alloc") ? Refuse<void*>(ENOMEM, nullptr) : __libc_realloc(memory, bytes);
}
void* aligned_alloc(std::size_t alignment, std::size_t bytes) {
    return Fails("alloc") ? Refuse<void*>(ENOMEM, nullptr) : __libc_memalign(alignment, bytes);
}
int posix_memalign(void** memory, std::size_t alignment, std::size_t bytes) {
    if (Fails("alloc"))
        return ENOMEM;
    *memory = __libc_memalign(alignment, bytes);
    return *memory == nullptr ? ENOMEM : 0;
}
void* mmap(void* at, std::size_t bytes, int protection, int flags, int file, off_t offset) {
    if ((flags & MAP_ANONYMOUS) != 0 && Fails("alloc"))
        return Refuse(ENOMEM, MAP_FAILED);
    return TREVOLT_REAL(mmap)(at, bytes, protection, flags, file, offset);
}

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*run)(void*),
                   void* argument) {
    return Fails("thread") ? EAGAIN
                           : TREVOLT_REAL(pthread_create)(thread, attributes, run, argument);
}

// ---- files ----

int open(const char* path, int flags, ...) {
    va_list more;
    va_start(more, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(more, mode_t) : 0;
    va_end(more);
    return Fails("open") ? Refuse(EMFILE, -1) : TREVOLT_REAL(open)(path, flags, mode);
}
int open64(const char* path, int flags, ...) {
    va_list more;
    va_start(more, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(more, mode_t) : 0;
    va_end(more);
    return Fails("open") ? Refuse(EMFILE, -1) : TREVOLT_REAL(open64)(path, flags, mode);
}
FILE* fopen(const char* path, const char* mode) {
    return Fails("open") ? Refuse<FILE*>(EMFILE, nullptr) : TREVOLT_REAL(fopen)(path, mode);
}
FILE* fopen64(const char* path, const char* mode) {
    return Fails("open") ? Refuse<FILE*>(EMFILE, nullptr) : TREVOLT_REAL(fopen64)(path, mode);
}

ssize_t read(int file, void* bytes, std::size_t count) {
    if (file < kFirstFile)
        return TREVOLT_REAL(read)(file, bytes, count);
    ChangeBeforeRead();
    if (Fails("read"))
        return Refuse(EIO, ssize_t{-1});
    if (Fails("end"))
        return 0;
    const bool isShort = count > 1 && Fails("short-read");
    return TREVOLT_REAL(read)(file, bytes, isShort ? count / 2 : count);
}

ssize_t write(int file, const void* bytes, std::size_t count) {
    const auto real = TREVOLT_REAL(write);
    if (file < kFirstFile)
        return real(file, bytes, count);
    return WriteSome(count, [&](std::size_t some) { return real(file, bytes, some); });
}

/// Piece by piece, so that a write may end inside of one.
ssize_t writev(int file, const iovec* pieces, int pieceCount) {
    if (file < kFirstFile)
        return TREVOLT_REAL(writev)(file, pieces, pieceCount);
    ssize_t total = 0;
    for (int i = 0; i < pieceCount; ++i) {
        const ssize_t written = write(file, pieces[i].iov_base, pieces[i].iov_len);
        if (written < 0)
            return total == 0 ? -1 : total;
        total += written;
        if (static_cast<std::size_t>(written) < pieces[i].iov_len)
            break;
    }
    return total;
}

off_t lseek(int file, off_t offset, int whence) noexcept {
    return Fails("seek") ? Refuse(EIO, off_t{-1}) : TREVOLT_REAL(lseek)(file, offset, whence);
}
off64_t lseek64(int file, off64_t offset, int whence) noexcept {
    return Fails("seek") ? Refuse(EIO, off64_t{-1}) : TREVOLT_REAL(lseek64)(file, offset, whence);
}

// A close that fails has closed the file all the same.
int close(int file) {
    const int answer = TREVOLT_REAL(close)(file);
    return file >= kFirstFile && Fails("close") ? Refuse(EIO, -1) : answer;
}
int fclose(FILE* file) {
    const bool isFile = fileno(file) >= kFirstFile;
    const int answer = TREVOLT_REAL(fclose)(file);
    return isFile && Fails("close") ? Refuse(EIO, EOF) : answer;
}

int fsync(int file) { return Fails("sync") ? Refuse(EIO, -1) : TREVOLT_REAL(fsync)(file); }
int fdatasync(int file) { return Fails("sync") ? Refuse(EIO, -1) : TREVOLT_REAL(fdatasync)(file); }

int rename(const char* from, const char* to) noexcept {
    return Fails("rename") ? Refuse(EACCES, -1) : TREVOLT_REAL(rename)(from, to);
}
int renameat2(int fromFolder, const char* from, int toFolder, const char* to,
              unsigned flags) noexcept {
    return Fails("rename") ? Refuse(EACCES, -1)
                           : TREVOLT_REAL(renameat2)(fromFolder, from, toFolder, to, flags);
}

// ---- folders ----

DIR* opendir(const char* path) {
    return Fails("list") ? Refuse<DIR*>(EIO, nullptr) : TREVOLT_REAL(opendir)(path);
}
dirent* readdir(DIR* folder) {
    if (Fails("list"))
        return Refuse<dirent*>(EIO, nullptr);
    dirent* const entry = TREVOLT_REAL(readdir)(folder);
    if (entry != nullptr && IsChosen("stat"))
        entry->d_type = DT_UNKNOWN; // as where the file system leaves it to that call
    return entry;
}
dirent64* readdir64(DIR* folder) {
    return Fails("list") ? Refuse<dirent64*>(EIO, nullptr) : TREVOLT_REAL(readdir64)(folder);
}

int stat(const char* path, struct stat* entry) noexcept {
    return Fails("stat") ? Refuse(EACCES, -1) : TREVOLT_REAL(stat)(path, entry);
}

} // extern "C"
