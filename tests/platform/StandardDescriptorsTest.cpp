#include "platform/StandardDescriptors.h"

#include <gtest/gtest.h>

#ifdef _WIN32
#include <windows.h>
#else
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace trevolt {
namespace {

#ifdef _WIN32

class CStandardHandle {
  public:
    CStandardHandle(DWORD id, HANDLE handle) : m_id(id), m_before(GetStdHandle(id)) {
        SetStdHandle(id, handle);
    }
    ~CStandardHandle() { SetStdHandle(m_id, m_before); }
    CStandardHandle(const CStandardHandle&) = delete;
    CStandardHandle& operator=(const CStandardHandle&) = delete;

  private:
    DWORD m_id;
    HANDLE m_before;
};

HANDLE ClosedHandle() {
    const HANDLE handle = CreateFileW(L"NUL", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_NE(handle, INVALID_HANDLE_VALUE);
    CloseHandle(handle);
    return handle;
}

TEST(StandardDescriptors, MissingAndClosedHandlesLeadNowhere) {
    for (const DWORD id : {STD_INPUT_HANDLE, STD_OUTPUT_HANDLE, STD_ERROR_HANDLE})
        for (const HANDLE missing : {HANDLE{}, INVALID_HANDLE_VALUE, ClosedHandle()}) {
            const CStandardHandle handle(id, missing);
            OpenStandardDescriptors();
            const HANDLE opened = GetStdHandle(id);
            EXPECT_EQ(GetFileType(opened), static_cast<DWORD>(FILE_TYPE_CHAR)) << id;
            DWORD count = 0;
            char byte = 'x';
            EXPECT_NE(WriteFile(opened, &byte, 1, &count, nullptr), 0) << id;
            EXPECT_NE(ReadFile(opened, &byte, 1, &count, nullptr), 0) << id;
            EXPECT_EQ(count, 0U) << id;
            CloseHandle(opened);
        }
}

TEST(StandardDescriptors, AHandleThatIsThereStays) {
    const HANDLE file = CreateFileW(L"NUL", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    {
        const CStandardHandle handle(STD_INPUT_HANDLE, file);
        OpenStandardDescriptors();
        EXPECT_EQ(GetStdHandle(STD_INPUT_HANDLE), file);
    }
    CloseHandle(file);
}

#else

/// Which of the standard descriptors `closed`, as bits, take bytes and hold none in a process that
/// began with them closed.
int AfterClosing(std::initializer_list<int> closed) {
    const pid_t child = fork();
    if (child == 0) {
        for (const int descriptor : closed)
            close(descriptor);
        OpenStandardDescriptors();
        int found = 0;
        for (const int descriptor : closed) {
            char byte = 'x';
            if (write(descriptor, &byte, 1) == 1 && read(descriptor, &byte, 1) == 0)
                found |= 1 << descriptor;
        }
        _exit(found);
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    return WEXITSTATUS(status);
}

TEST(StandardDescriptors, ClosedOnesLeadNowhere) {
    for (const int descriptor : {0, 1, 2})
        EXPECT_EQ(AfterClosing({descriptor}), 1 << descriptor);
    EXPECT_EQ(AfterClosing({0, 1, 2}), 7);
}

TEST(StandardDescriptors, WhatIsOpenedNextComesBehindThem) {
    const pid_t child = fork();
    if (child == 0) {
        for (int descriptor = 0; descriptor < 64; ++descriptor)
            close(descriptor);
        OpenStandardDescriptors();
        _exit(open("/dev/null", O_RDONLY));
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(WEXITSTATUS(status), 3) << "and nothing more was left open";
}

#endif

} // namespace
} // namespace trevolt
