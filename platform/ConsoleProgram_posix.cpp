#include "platform/ConsoleProgram.h"

#include <csignal>
#include <new>

#include "platform/StandardDescriptors.h"

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace {

/// Lets the heap keep what a file's work frees for the next file, too; else every buffer of some
/// size is fetched from the system and given back, page by page.
void KeepFreedHeap() {
#ifdef __GLIBC__
    constexpr int kLargestInHeap = 32 << 20; // the most that it takes
    mallopt(M_MMAP_THRESHOLD, kLargestInHeap);
    mallopt(M_TRIM_THRESHOLD, 2 * kLargestInHeap);
#endif
}

} // namespace

int main(int argc, char** argv) {
    trevolt::OpenStandardDescriptors();
    std::signal(SIGXFSZ, SIG_IGN); // a file that the system lets grow no more is a full disk
    KeepFreedHeap();
    try {
        return trevolt::ConsoleMain({argv + (argc > 0 ? 1 : 0), argv + argc});
    } catch (const std::bad_alloc&) {
        return trevolt::EndWithoutMemory(argc > 1 ? argv[1] : "");
    }
}
