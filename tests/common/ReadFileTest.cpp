#include "common/ReadFile.h"

#include <cerrno>

#include <gtest/gtest.h>

#include "tests/support/TestFiles.h"
#include "trevolt/TransferReport.h"

namespace trevolt {
namespace {

using test::CTemporaryFolder;

TEST(ReadFile, AFileThatDoesNotOpenIsNotedWithTheReason) {
    const CTemporaryFolder folder;
    test::WriteText(folder.File(L"f"), "text");
    const CTransferReport report;
    CInputFile file;
    ASSERT_TRUE(OpenRead(file, folder.File(L"f").c_str()));
    NoteIfRefused(file);
    EXPECT_EQ(report.SystemError(), 0);
    EXPECT_FALSE(report.HasReadFailed());
    CInputFile missing;
    EXPECT_FALSE(OpenRead(missing, folder.File(L"missing").c_str()));
    EXPECT_EQ(report.SystemError(), ENOENT);
    EXPECT_FALSE(report.HasReadFailed());
}

TEST(ReadFile, AStreamThatBrokeWithoutAReasonIsNoted) {
    const CTransferReport report;
    CInputFile file;
    file.setstate(std::ios::failbit);
    NoteIfRefused(file);
    EXPECT_FALSE(report.HasReadFailed());
    file.setstate(std::ios::badbit);
    NoteIfRefused(file);
    EXPECT_TRUE(report.HasReadFailed());
    EXPECT_EQ(report.SystemError(), 0);
}

#ifdef __linux__
// The first page of a process is nobody's: its memory opens, and the first read fails.
TEST(ReadFile, ARefusedReadIsNotedThoughTheStreamWasClearedSince) {
    const CTransferReport report;
    CInputFile file;
    ASSERT_TRUE(OpenRead(file, L"/proc/self/mem"));
    EXPECT_EQ(file.get(), EOF);
    file.clear();
    EXPECT_FALSE(report.HasReadFailed());
    NoteIfRefused(file);
    EXPECT_TRUE(report.HasReadFailed());
    EXPECT_EQ(report.SystemError(), EIO);
}
#endif

} // namespace
} // namespace trevolt
