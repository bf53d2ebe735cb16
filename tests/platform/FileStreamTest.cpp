#include "platform/FileStream.h"

#include <cerrno>

#include <gtest/gtest.h>

#include "tests/support/FailingFile.h"
#include "tests/support/TestFiles.h"

#ifndef _WIN32
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

TEST(InputFile, DoesNotOpenWhatIsNoFile) {
    const CTemporaryFolder folder;
    CInputFile file;
    EXPECT_FALSE(file.Open(folder.File(L"missing").c_str()));
    EXPECT_TRUE(file.fail());
    CInputFile ofFolder;
    EXPECT_FALSE(ofFolder.Open(folder.Path().c_str()));
    CInputFile ofNothing;
    EXPECT_FALSE(ofNothing.Open(nullptr));
}

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
