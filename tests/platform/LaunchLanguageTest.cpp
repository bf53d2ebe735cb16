#include "platform/LaunchLanguage.h"

#include <chrono>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "platform/FileSystem.h"
#include "tests/support/TestFiles.h"

#ifdef _WIN32
#include <thread>

#include <windows.h>
#else
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace trevolt {
namespace {

using namespace std::string_literals;

constexpr std::chrono::milliseconds kLauncherWorks{40};
/// The window appears within so long, whatever its launcher does.
constexpr std::chrono::milliseconds kWindowPromise{2000};

#ifdef _WIN32

/// The standard input is another one while this lives.
class CStandardInput {
  public:
    CStandardInput() : m_former(GetStdHandle(STD_INPUT_HANDLE)) {}
    ~CStandardInput() { SetStdHandle(STD_INPUT_HANDLE, m_former); }

    void BePipe(const std::string& bytes) {
        BeOpenPipe();
        Write(bytes);
        CloseWriter();
    }
    /// A pipe whose writer does not go away.
    void BeOpenPipe() {
        HANDLE reader = nullptr;
        ASSERT_TRUE(CreatePipe(&reader, &m_writer, nullptr, 65536));
        SetStdHandle(STD_INPUT_HANDLE, reader);
    }
    void Write(const std::string& bytes) const {
        DWORD written = 0;
        ASSERT_TRUE(
            bytes.empty() ||
            WriteFile(m_writer, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr));
    }
    void CloseWriter() const { CloseHandle(m_writer); }
    /// Has a launcher write the bytes and end, after a while.
    void WriteLaterAndClose(const std::string& bytes) {
        m_launcher = std::thread([this, bytes] {
            std::this_thread::sleep_for(kLauncherWorks);
            Write(bytes);
            CloseWriter();
        });
    }
    void WaitForLauncher() { m_launcher.join(); }
    void BeFile(const std::wstring& path) {
        SetStdHandle(STD_INPUT_HANDLE, CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr,
                                                   OPEN_EXISTING, 0, nullptr));
    }
    void BeAbsent() { SetStdHandle(STD_INPUT_HANDLE, nullptr); }
    void BeDevice() {
        SetStdHandle(STD_INPUT_HANDLE,
                     CreateFileW(L"NUL", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    }
    bool IsClosed() const { return GetStdHandle(STD_INPUT_HANDLE) == nullptr; }

  private:
    HANDLE m_former;
    HANDLE m_writer = nullptr;
    std::thread m_launcher;
};

#else

/// The standard input is another one while this lives.
class CStandardInput {
  public:
    CStandardInput() : m_former(dup(STDIN_FILENO)) {}
    ~CStandardInput() {
        if (m_former < 0)
            return;
        dup2(m_former, STDIN_FILENO);
        close(m_former);
    }

    void BePipe(const std::string& bytes) {
        BeOpenPipe();
        Write(bytes);
        CloseWriter();
    }
    /// A pipe whose writer does not go away.
    void BeOpenPipe() {
        int ends[2] = {-1, -1};
        ASSERT_EQ(pipe(ends), 0);
        m_writer = ends[1];
        Become(ends[0]);
    }
    void Write(const std::string& bytes) const {
        ASSERT_EQ(write(m_writer, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }
    void CloseWriter() const { close(m_writer); }
    /// Has a launcher write the bytes and end, after a while. It is a process: a thread's heap would
    /// stay behind and be in the way of tests that count memory.
    void WriteLaterAndClose(const std::string& bytes) {
        m_launcher = fork();
        ASSERT_GE(m_launcher, 0);
        if (m_launcher == 0) {
            usleep(static_cast<useconds_t>(std::chrono::microseconds(kLauncherWorks).count()));
            const auto count = static_cast<ssize_t>(bytes.size());
            _exit(write(m_writer, bytes.data(), bytes.size()) == count ? 0 : 1);
        }
        CloseWriter();
    }
    void WaitForLauncher() const {
        int status = -1;
        EXPECT_EQ(waitpid(m_launcher, &status, 0), m_launcher);
        EXPECT_EQ(status, 0);
    }
    void BeFile(const std::wstring& path) {
        Become(open(ToNativePath(path)->c_str(), O_RDONLY | O_CLOEXEC));
    }
    void BeAbsent() { close(STDIN_FILENO); }
    void BeDevice() { Become(open("/dev/zero", O_RDONLY | O_CLOEXEC)); }
    bool IsClosed() const { return fcntl(STDIN_FILENO, F_GETFD) == -1; }

  private:
    static void Become(int input) {
        ASSERT_GE(input, 0);
        if (input == STDIN_FILENO)
            return;
        dup2(input, STDIN_FILENO);
        close(input);
    }

    int m_former;
    int m_writer = -1;
    pid_t m_launcher = -1;
};

#endif

std::int32_t IdFromPipe(const std::string& bytes) {
    CStandardInput input;
    input.BePipe(bytes);
    const std::int32_t id = ReadLaunchLanguage();
    EXPECT_TRUE(input.IsClosed());
    return id;
}

TEST(LaunchLanguage, IsTheFirstFourBytesLittleEndian) {
    EXPECT_EQ(IdFromPipe("\x05\x00\x00\x00"s), 5);
    EXPECT_EQ(IdFromPipe("\x0C\x00\x00\x00\xFF\xFF\xFF"s), 12);
    EXPECT_EQ(IdFromPipe("\x78\x56\x34\x12"s), 0x12345678);
    EXPECT_EQ(IdFromPipe("\xFE\xFF\xFF\xFF"s), -2);
}

TEST(LaunchLanguage, MissingBytesCountAsZero) {
    EXPECT_EQ(IdFromPipe(""s), 0);
    EXPECT_EQ(IdFromPipe("\x07"s), 7);
    EXPECT_EQ(IdFromPipe("\x01\x02\x03"s), 0x030201);
}

TEST(LaunchLanguage, TenThousandBytesAndMoreAreTaken) {
    EXPECT_EQ(IdFromPipe("\x08\x00\x00\x00"s + std::string(9996, 'x')), 8);
    EXPECT_EQ(IdFromPipe("\x09\x00\x00\x00"s + std::string(20000, 'x')), 9);
}

TEST(LaunchLanguage, ReadsAFile) {
    const test::CTemporaryFolder folder;
    test::WriteText(folder.File(L"id"), "\x0A\x00\x00\x00"s);
    test::WriteText(folder.File(L"none"), "");
    for (const auto& [name, id] : {std::pair{L"id", 10}, std::pair{L"none", 0}}) {
        CStandardInput input;
        input.BeFile(folder.File(name));
        EXPECT_EQ(ReadLaunchLanguage(), id);
        EXPECT_TRUE(input.IsClosed());
    }
}

TEST(LaunchLanguage, IsZeroWithoutAStandardInput) {
    CStandardInput input;
    input.BeAbsent();
    EXPECT_EQ(ReadLaunchLanguage(), 0);
}

// The program's window must come up, whatever the launcher does.
TEST(LaunchLanguage, IsZeroWhenTheLauncherHoldsItsPipeOpenAndWritesNothing) {
    static_assert(kLaunchPatience <= std::chrono::milliseconds(1500), "of the window's promise");
    CStandardInput input;
    input.BeOpenPipe();
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(ReadLaunchLanguage(std::chrono::milliseconds(60)), 0);
    const auto waited = std::chrono::steady_clock::now() - start;
    EXPECT_GE(waited, std::chrono::milliseconds(40));
    EXPECT_LT(waited, std::chrono::milliseconds(60) + kWindowPromise - kLaunchPatience);
    EXPECT_TRUE(input.IsClosed());
    input.CloseWriter();
}

TEST(LaunchLanguage, IsWaitedForWhileTheLauncherLives) {
    for (const auto& [bytes, id] : {std::pair{"\x06\x00\x00\x00"s, 6}, std::pair{""s, 0}}) {
        CStandardInput input;
        input.BeOpenPipe();
        input.WriteLaterAndClose(bytes);
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(ReadLaunchLanguage(std::chrono::minutes(1)), id);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
        EXPECT_TRUE(input.IsClosed());
        input.WaitForLauncher();
    }
}

TEST(LaunchLanguage, AnOpenPipeThatHoldsTheIdIsNotWaitedFor) {
    CStandardInput input;
    input.BeOpenPipe();
    input.Write("\x06\x00\x00\x00"s);
    EXPECT_EQ(ReadLaunchLanguage(std::chrono::milliseconds(0)), 6);
    input.CloseWriter();
}

TEST(LaunchLanguage, DeviceIsClosedAndNotRead) {
    CStandardInput input;
    input.BeDevice();
    EXPECT_EQ(ReadLaunchLanguage(), 0);
    EXPECT_TRUE(input.IsClosed());
}

} // namespace
} // namespace trevolt
