#include "coef/WordFileSource.h"

#include <array>
#include <cerrno>
#include <sstream>

#include <gtest/gtest.h>

#include "tests/support/FailingFile.h"
#include "tests/support/Streams.h"
#include "tests/support/TestFiles.h"
#include "trevolt/TransferReport.h"

namespace trevolt {
namespace {

std::string ReadAll(std::istream& stream) { return {std::istreambuf_iterator<char>(stream), {}}; }

TEST(WordFileSource, OpensAPathAnewForEveryLook) {
    const test::CTemporaryFolder folder;
    const std::wstring path = folder.File(L"file");
    CWordFileSource file(path.c_str());
    EXPECT_EQ(file.Open(), nullptr);
    EXPECT_EQ(file.Take([](std::istream&) { return S_OK; }), E_COEF_OPENFAILED);
    test::WriteText(path, "first");
    ASSERT_NE(file.Open(), nullptr);
    EXPECT_EQ(ReadAll(*file.Open()), "first");
    test::WriteText(path, "second\r\n\x1A.");
    std::istream* const stream = file.Open();
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(ReadAll(*stream), "second\r\n\x1A.");
    file.Rewind();
    EXPECT_EQ(ReadAll(*stream), "second\r\n\x1A.");
    EXPECT_EQ(file.Take([](std::istream& taken) {
        EXPECT_EQ(ReadAll(taken), "second\r\n\x1A.");
        return E_COEF_BADTEXT;
    }),
              E_COEF_BADTEXT);
    EXPECT_EQ(CWordFileSource(static_cast<const wchar_t*>(nullptr)).Take([](std::istream&) {
        return S_OK;
    }),
              E_COEF_INVALIDARG);
}

TEST(WordFileSource, TellsWhyAPathDoesNotOpen) {
    const test::CTemporaryFolder folder;
    const CTransferReport report;
    {
        const std::wstring missing = folder.File(L"missing");
        CWordFileSource file(missing.c_str());
        EXPECT_EQ(file.Open(), nullptr);
    }
    EXPECT_EQ(report.SystemError(), ENOENT);
    EXPECT_FALSE(report.HasReadFailed());
}

TEST(WordFileSource, PutsAStreamBackForEveryLook) {
    std::istringstream stream("before|file");
    stream.seekg(7);
    CWordFileSource file(stream);
    for (int look = 0; look < 2; ++look) {
        ASSERT_EQ(file.Open(), &stream);
        EXPECT_EQ(ReadAll(stream), "file");
        EXPECT_FALSE(stream.get() != EOF);
        EXPECT_TRUE(stream.fail());
    }
    file.Rewind();
    EXPECT_TRUE(stream.good());
    EXPECT_EQ(stream.tellg(), std::streampos(7));
}

TEST(WordFileSource, AStreamThatHadFailedHasNoBytes) {
    std::istringstream stream("file");
    stream.setstate(std::ios::failbit);
    CWordFileSource file(stream);
    ASSERT_EQ(file.Open(), &stream);
    EXPECT_EQ(stream.get(), EOF);
    file.Rewind();
    EXPECT_EQ(stream.get(), EOF);
    EXPECT_TRUE(stream.fail());
}

TEST(WordFileSource, AStreamThatCannotBeSoughtHasNoBytes) {
    test::CPipe stream(test::Bytes(4, std::byte{'x'}));
    CWordFileSource file(stream);
    ASSERT_EQ(file.Open(), &stream);
    EXPECT_EQ(stream.get(), EOF);
    EXPECT_TRUE(stream.fail());
}

TEST(WordFileSource, TellsOfAStreamThatBreaksInAnyLook) {
    const test::Bytes bytes(8, std::byte{'x'});
    const auto readEight = [](std::istream& stream) {
        std::array<char, 8> to{};
        stream.read(to.data(), to.size());
        return S_OK;
    };
    {
        const CTransferReport report;
        test::CFailingFile stream(bytes, bytes.size());
        CWordFileSource file(stream);
        EXPECT_EQ(file.Take(readEight), S_OK);
        EXPECT_FALSE(report.HasReadFailed());
    }
    for (const bool isPutBack : {false, true}) {
        const CTransferReport report;
        test::CFailingFile stream(bytes, 5);
        {
            CWordFileSource file(stream);
            EXPECT_EQ(file.Take(readEight), S_OK);
            EXPECT_FALSE(report.HasReadFailed());
            if (isPutBack) {
                file.Rewind();
                EXPECT_TRUE(report.HasReadFailed());
                EXPECT_TRUE(stream.good());
            }
        }
        EXPECT_TRUE(report.HasReadFailed());
    }
}

#ifdef __linux__
// The first page of a process is nobody's: its memory opens, and the first read fails.
TEST(WordFileSource, TellsOfAFileThatBreaksWhenItIsOpenedAnew) {
    const CTransferReport report;
    CWordFileSource file(L"/proc/self/mem");
    EXPECT_EQ(file.Take([](std::istream& stream) {
        stream.get();
        return S_OK;
    }),
              S_OK);
    EXPECT_FALSE(report.HasReadFailed());
    ASSERT_NE(file.Open(), nullptr);
    EXPECT_TRUE(report.HasReadFailed());
    EXPECT_EQ(report.SystemError(), EIO);
}
#endif

} // namespace
} // namespace trevolt
