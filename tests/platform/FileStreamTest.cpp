#include "platform/FileStream.h"

#include <cerrno>

#include <gtest/gtest.h>

#include "platform/FileSystem.h"
#include "tests/support/FailingFile.h"
#include "tests/support/TestFiles.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/FileSizeLimit.h"
#endif

namespace trevolt {
namespace {

using test::CTemporaryFolder;

constexpr std::size_t kPastTheBuffer = std::size_t{1} << 20;

TEST(OutputFile, TakesBytesAndCloses) {
    const CTemporaryFolder folder;
    const std::wstring path = folder.File(L"f");
    test::WriteText(path, "something longer before");
    COutputFile file;
    ASSERT_TRUE(file.Open(path.c_str(), std::ios::trunc));
    file << "text\n";
    file.seekp(2);
    file << 'X';
    EXPECT_TRUE(file.Close());
    EXPECT_EQ(file.SystemError(), 0);
    EXPECT_EQ(test::ReadText(path), "teXt\n");

    COutputFile again;
    ASSERT_TRUE(again.Open(path.c_str(), std::ios::in)); // opened for reading too, it stays
    again.seekp(0, std::ios::end);
    EXPECT_EQ(again.tellp(), std::streampos(5));
    again << "more";
    EXPECT_TRUE(again.Close());
    EXPECT_EQ(test::ReadText(path), "teXt\nmore");

    COutputFile anew;
    ASSERT_TRUE(anew.Open(path.c_str(), std::ios::openmode{}));
    anew << 'x';
    EXPECT_TRUE(anew.Close());
    EXPECT_EQ(test::ReadText(path), "x");
}

TEST(OutputFile, TellsWhyItDoesNotOpen) {
    const CTemporaryFolder folder;
    COutputFile missing;
    EXPECT_FALSE(missing.Open((folder.File(L"missing") + L"/f").c_str(), std::ios::trunc));
    EXPECT_EQ(missing.SystemError(), ENOENT);
    EXPECT_FALSE(missing.Close());
    EXPECT_EQ(missing.SystemError(), ENOENT);

    COutputFile isFolder;
    EXPECT_FALSE(isFolder.Open(folder.Path().c_str(), std::ios::trunc));
    EXPECT_EQ(isFolder.SystemError(), EISDIR);

    errno = EIO; // of an earlier call
    COutputFile nowhere;
    EXPECT_FALSE(nowhere.Open(nullptr, std::ios::trunc));
    EXPECT_EQ(nowhere.SystemError(), 0);
    EXPECT_FALSE(nowhere.good());
}

TEST(OutputFile, AFailureThatIsNotTheSystemsHasNoReason) {
    const CTemporaryFolder folder;
    COutputFile file;
    ASSERT_TRUE(file.Open(folder.File(L"f").c_str(), std::ios::trunc));
    file.setstate(std::ios::badbit);
    errno = EIO;
    EXPECT_FALSE(file.Close());
    EXPECT_EQ(file.SystemError(), 0);

    COutputFile unopened;
    errno = EIO;
    unopened << "nowhere to go";
    EXPECT_FALSE(unopened.good());
    EXPECT_EQ(unopened.SystemError(), 0);
}

#ifndef _WIN32
TEST(OutputFile, TellsOfAFileThatTakesAPartOnly) {
    const CTemporaryFolder folder;
    const std::string bytes(kPastTheBuffer, 'x');
    COutputFile file;
    ASSERT_TRUE(file.Open(folder.File(L"f").c_str(), std::ios::trunc));
    {
        const test::CFileSizeLimit limit(1000);
        file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }
    EXPECT_FALSE(file.good());
    EXPECT_EQ(file.SystemError(), EFBIG);
    EXPECT_FALSE(file.Close());
    EXPECT_EQ(test::ReadText(folder.File(L"f")), std::string(1000, 'x'));
}

TEST(OutputFile, TellsOfAFullDiskAtTheClose) {
    COutputFile file;
    ASSERT_TRUE(file.Open(L"/dev/full", std::ios::openmode{}));
    file << "it lies in the buffer";
    EXPECT_TRUE(file.good());
    errno = EIO;
    EXPECT_FALSE(file.Close());
    EXPECT_EQ(file.SystemError(), ENOSPC);
}

TEST(OutputFile, TellsOfAFullDiskMidway) {
    const std::string bytes(kPastTheBuffer, 'x');
    COutputFile atOnce;
    ASSERT_TRUE(atOnce.Open(L"/dev/full", std::ios::openmode{}));
    atOnce.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    EXPECT_FALSE(atOnce.good());
    EXPECT_EQ(atOnce.SystemError(), ENOSPC);

    COutputFile oneByOne;
    ASSERT_TRUE(oneByOne.Open(L"/dev/full", std::ios::openmode{}));
    for (const char byte : bytes)
        oneByOne.put(byte);
    EXPECT_FALSE(oneByOne.good());
    EXPECT_EQ(oneByOne.SystemError(), ENOSPC);

    // Later calls that the system refuses for other reasons change nothing.
    errno = EIO;
    EXPECT_FALSE(oneByOne.Open(L"/missing/file", std::ios::trunc));
    EXPECT_FALSE(oneByOne.Close());
    EXPECT_EQ(oneByOne.SystemError(), ENOSPC);
}
#endif

// Settings and languages are read so: all of a file, or nothing of it.
TEST(ReadToEnd, GivesAllOrNothing) {
    const test::Bytes bytes(100, std::byte{'x'});
    for (std::size_t readable = 0; readable <= bytes.size(); ++readable)
        for (const bool hasShrunk : {false, true}) {
            test::CFailingFile stream(bytes, readable, hasShrunk);
            const auto read = ReadToEnd(stream, 100);
            EXPECT_EQ(read, readable < bytes.size() ? std::nullopt
                                                    : std::optional(std::string(100, 'x')));
        }
    test::CFailingFile stream(bytes, bytes.size());
    EXPECT_EQ(ReadToEnd(stream, 99), std::nullopt);
    stream.seekg(60);
    EXPECT_EQ(ReadToEnd(stream, 40), std::string(40, 'x'));
}

TEST(InputFile, GivesBytesAndNoReason) {
    const CTemporaryFolder folder;
    const std::wstring path = folder.File(L"f");
    test::WriteText(path, "text\r\n\x1A.");
    CInputFile file;
    ASSERT_TRUE(file.Open(path.c_str()));
    std::string bytes(20, '-');
    file.read(bytes.data(), 20);
    EXPECT_EQ(file.gcount(), 8);
    EXPECT_EQ(bytes.substr(0, 8), "text\r\n\x1A.");
    EXPECT_TRUE(file.eof());
    EXPECT_FALSE(file.bad());
    file.clear();
    file.seekg(2);
    EXPECT_EQ(file.get(), 'x');
    EXPECT_EQ(file.SystemError(), 0);
}

TEST(InputFile, DoesNotOpenWhatIsNoFileAndTellsWhy) {
    const CTemporaryFolder folder;
    CInputFile file;
    EXPECT_FALSE(file.Open(folder.File(L"missing").c_str()));
    EXPECT_TRUE(file.fail());
    EXPECT_EQ(file.SystemError(), ENOENT);
    CInputFile ofFolder;
    EXPECT_FALSE(ofFolder.Open(folder.Path().c_str()));
    EXPECT_EQ(ofFolder.SystemError(), EISDIR);
    CInputFile ofNothing;
    errno = EIO; // of an earlier call
    EXPECT_FALSE(ofNothing.Open(nullptr));
    EXPECT_EQ(ofNothing.SystemError(), 0);
}

TEST(InputFile, ASeekToNoPlaceIsNoRefusal) {
    const CTemporaryFolder folder;
    test::WriteText(folder.File(L"f"), "text");
    for (const bool isRelative : {false, true}) {
        CInputFile file;
        ASSERT_TRUE(file.Open(folder.File(L"f").c_str()));
        if (isRelative)
            file.seekg(-5, std::ios::end);
        else
            file.seekg(-5);
        EXPECT_TRUE(file.fail());
        EXPECT_EQ(file.SystemError(), 0);
    }
    CInputFile unopened;
    errno = EIO;
    EXPECT_EQ(unopened.tellg(), std::streampos(-1));
    EXPECT_EQ(unopened.SystemError(), 0);
}

#ifdef _WIN32
TEST(InputFile, TellsOfAFileThatAnotherProgramHasForItself) {
    const CTemporaryFolder folder;
    const std::wstring path = folder.File(L"f");
    test::WriteText(path, "text");
    const HANDLE owner =
        CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(owner, INVALID_HANDLE_VALUE);
    CInputFile file;
    EXPECT_FALSE(file.Open(path.c_str()));
    EXPECT_EQ(file.SystemError(), EACCES);
    CloseHandle(owner);
}
#else
/// A pipe with a name, whose seeks the system refuses.
class CNamedPipe {
  public:
    CNamedPipe() {
        const std::string path = *ToNativePath(Path());
        EXPECT_EQ(mkfifo(path.c_str(), 0600), 0);
        m_ends = open(path.c_str(), O_RDWR | O_CLOEXEC); // nobody waits for the other end then
        EXPECT_GE(m_ends, 0);
    }
    ~CNamedPipe() { close(m_ends); }
    CNamedPipe(const CNamedPipe&) = delete;
    CNamedPipe& operator=(const CNamedPipe&) = delete;

    std::wstring Path() const { return m_folder.File(L"pipe"); }

  private:
    CTemporaryFolder m_folder;
    int m_ends = -1;
};

TEST(InputFile, TellsWhyItCannotBeSought) {
    const CNamedPipe pipe;
    const auto reasonOf = [&](auto seek) {
        CInputFile file;
        EXPECT_TRUE(file.Open(pipe.Path().c_str()));
        seek(file);
        errno = EIO; // of a later call
        return file.SystemError();
    };
    EXPECT_EQ(reasonOf([](CInputFile& file) { file.seekg(1); }), ESPIPE);
    EXPECT_EQ(reasonOf([](CInputFile& file) { file.seekg(0, std::ios::end); }), ESPIPE);
    EXPECT_EQ(reasonOf([](CInputFile& file) { EXPECT_EQ(BytesToEnd(file), std::nullopt); }),
              ESPIPE);
}

TEST(OutputFile, TellsWhyItCannotBeSought) {
    const CNamedPipe pipe;
    for (const bool isRelative : {false, true}) {
        COutputFile file;
        ASSERT_TRUE(file.Open(pipe.Path().c_str(), std::ios::openmode{}));
        if (isRelative)
            file.seekp(0, std::ios::end);
        else
            file.seekp(1);
        EXPECT_TRUE(file.fail());
        EXPECT_FALSE(file.Close());
        EXPECT_EQ(file.SystemError(), ESPIPE);
    }
}
#endif

#ifdef __linux__
// The first page of a process is nobody's: its memory opens, and the first read fails.
TEST(InputFile, TellsWhyItCannotBeRead) {
    for (const std::streamsize count : {1, 1 << 20}) { // through the buffer and past it
        CInputFile file;
        ASSERT_TRUE(file.Open(L"/proc/self/mem"));
        std::vector<char> bytes(static_cast<std::size_t>(count));
        file.read(bytes.data(), count);
        EXPECT_TRUE(file.bad());
        EXPECT_EQ(file.SystemError(), EIO);
    }
    EXPECT_EQ(ReadWholeFile(L"/proc/self/mem", 1 << 20), std::nullopt);
}
#endif

} // namespace
} // namespace trevolt
