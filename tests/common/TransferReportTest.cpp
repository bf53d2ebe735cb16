#include "trevolt/TransferReport.h"

#include <cerrno>
#include <limits>
#include <sstream>
#include <thread>

#include <gtest/gtest.h>

#include "common/BrokenStream.h"
#include "common/WrittenFile.h"
#include "platform/FileStream.h"
#include "tests/support/TestFiles.h"

namespace trevolt {
namespace {

TEST(TransferReport, StartsClean) {
    const CTransferReport report;
    EXPECT_FALSE(report.HasWriteFailed());
    EXPECT_FALSE(report.WasMemoryRefused());
    EXPECT_EQ(report.FailedChunks(), 0U);
    EXPECT_EQ(report.MissingPixels(), 0U);
    EXPECT_EQ(report.RepeatedPixels(), 0U);
    EXPECT_EQ(report.MissingExtraWords(), 0U);
    EXPECT_EQ(report.ChunksOutside(), 0U);
    EXPECT_EQ(report.StrayBytes(), 0U);
    EXPECT_EQ(report.ForeignIndices(), 0U);
    EXPECT_EQ(report.FailedRead(), S_OK);
    EXPECT_EQ(report.SystemError(), 0);
    EXPECT_FALSE(report.HasReadFailed());
    EXPECT_EQ(report.CleanedPixels(), 0U);
    EXPECT_EQ(report.TextFlaws()[ETextFlaw::DataLine].count, 0U);
}

TEST(TransferReport, NotesReachTheInnermostReportAndThoseAroundIt) {
    const CTransferReport outer;
    CTransferReport::NoteFailedChunks(1);
    {
        const CTransferReport inner;
        CTransferReport::NoteFailedChunks(2);
        CTransferReport::NoteWriteFailed();
        EXPECT_EQ(inner.FailedChunks(), 2U);
        EXPECT_TRUE(inner.HasWriteFailed());
        EXPECT_FALSE(inner.WasMemoryRefused());
    }
    CTransferReport::NoteMemoryRefused();
    EXPECT_EQ(outer.FailedChunks(), 3U);
    EXPECT_TRUE(outer.HasWriteFailed());
    EXPECT_TRUE(outer.WasMemoryRefused());
}

TEST(TransferReport, AddsMissingPixelsAndKeepsTheFirstFailedRead) {
    const CTransferReport outer;
    CTransferReport::NoteMissingPixels(40000);
    CTransferReport::NoteFailedRead(E_COEF_BADFORMAT);
    {
        const CTransferReport inner;
        CTransferReport::NoteMissingPixels(8589934592);
        CTransferReport::NoteFailedRead(E_FAIL);
        EXPECT_EQ(inner.MissingPixels(), 8589934592U);
        EXPECT_EQ(inner.FailedRead(), E_FAIL);
    }
    EXPECT_EQ(outer.MissingPixels(), 8589974592U);
    EXPECT_EQ(outer.FailedRead(), E_COEF_BADFORMAT);
}

TEST(TransferReport, AddsWhatDiffersFromAWritersFile) {
    const CTransferReport outer;
    CTransferReport::NoteRepeatedPixels(1);
    CTransferReport::NoteChunksOutside(2);
    CTransferReport::NoteStrayBytes(3);
    CTransferReport::NoteForeignIndices(4);
    CTransferReport::NoteMissingExtraWords(5);
    {
        const CTransferReport inner;
        CTransferReport::NoteRepeatedPixels(10);
        CTransferReport::NoteChunksOutside(20);
        CTransferReport::NoteStrayBytes(8589934592);
        CTransferReport::NoteForeignIndices(40);
        CTransferReport::NoteMissingExtraWords(50);
        EXPECT_EQ(inner.MissingExtraWords(), 50U);
        EXPECT_EQ(inner.RepeatedPixels(), 10U);
        EXPECT_EQ(inner.ChunksOutside(), 20U);
        EXPECT_EQ(inner.StrayBytes(), 8589934592U);
        EXPECT_EQ(inner.ForeignIndices(), 40U);
    }
    EXPECT_EQ(outer.MissingExtraWords(), 55U);
    EXPECT_EQ(outer.RepeatedPixels(), 11U);
    EXPECT_EQ(outer.ChunksOutside(), 22U);
    EXPECT_EQ(outer.StrayBytes(), 8589934595U);
    EXPECT_EQ(outer.ForeignIndices(), 44U);
    CTransferReport::NoteRepeatedPixels(std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(outer.RepeatedPixels(), std::numeric_limits<std::uint64_t>::max());
    CTransferReport::NoteMissingExtraWords(std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(outer.MissingExtraWords(), std::numeric_limits<std::uint64_t>::max());
}

TEST(TransferReport, NeverCountsMissingPixelsBackToNone) {
    constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();
    const CTransferReport report;
    CTransferReport::NoteMissingPixels(2);
    CTransferReport::NoteMissingPixels(kMost - 3);
    EXPECT_EQ(report.MissingPixels(), kMost - 1);
    CTransferReport::NoteMissingPixels(2);
    EXPECT_EQ(report.MissingPixels(), kMost);
    CTransferReport::NoteMissingPixels(kMost);
    EXPECT_EQ(report.MissingPixels(), kMost);
}

TEST(TransferReport, AddsWhatTextFilesTell) {
    const CTransferReport outer;
    CTextFlaws flaws;
    flaws.Note(ETextFlaw::NoEnd, 9);
    CTransferReport::NoteTextFlaws(flaws);
    CTransferReport::NoteCleanedPixels(3);
    {
        const CTransferReport inner;
        CTransferReport::NoteTextFlaws(flaws);
        CTransferReport::NoteCleanedPixels(4);
        CTransferReport::NoteReadFailed();
        EXPECT_EQ(inner.TextFlaws()[ETextFlaw::NoEnd].count, 1U);
        EXPECT_EQ(inner.CleanedPixels(), 4U);
        EXPECT_TRUE(inner.HasReadFailed());
    }
    EXPECT_EQ(outer.TextFlaws()[ETextFlaw::NoEnd].count, 2U);
    EXPECT_EQ(outer.TextFlaws()[ETextFlaw::NoEnd].first, 9U);
    EXPECT_EQ(outer.TextFlaws()[ETextFlaw::LongLine].count, 0U);
    EXPECT_EQ(outer.CleanedPixels(), 7U);
    EXPECT_TRUE(outer.HasReadFailed());
}

TEST(TransferReport, NotesOnlyAStreamThatBroke) {
    const CTransferReport report;
    std::istringstream stream("x");
    std::string line;
    std::getline(stream, line);
    EXPECT_TRUE(stream.eof());
    stream.setstate(std::ios::failbit);
    NoteIfBroken(stream);
    EXPECT_FALSE(report.HasReadFailed());
    stream.setstate(std::ios::badbit);
    NoteIfBroken(stream);
    EXPECT_TRUE(report.HasReadFailed());
}

TEST(TransferReport, KeepsTheFirstReasonOfTheSystem) {
    const CTransferReport outer;
    CTransferReport::NoteSystemError(0); // a failure without one
    CTransferReport::NoteSystemError(ENOSPC);
    {
        const CTransferReport inner;
        CTransferReport::NoteSystemError(EIO);
        EXPECT_EQ(inner.SystemError(), EIO);
    }
    EXPECT_EQ(outer.SystemError(), ENOSPC);
    EXPECT_FALSE(outer.HasWriteFailed());
}

TEST(TransferReport, IsOfItsThreadOnly) {
    const CTransferReport report;
    std::jthread([] {
        CTransferReport::NoteWriteFailed();
        const CTransferReport own;
        CTransferReport::NoteMemoryRefused();
        EXPECT_TRUE(own.WasMemoryRefused());
    }).join();
    EXPECT_FALSE(report.HasWriteFailed());
    EXPECT_FALSE(report.WasMemoryRefused());
}

TEST(TransferReport, CloseNotesOnlyAStreamThatFailed) {
    const test::CTemporaryFolder folder;
    const CTransferReport report;
    COutputFile file;
    ASSERT_TRUE(OpenWritten(file, folder.File(L"f").c_str(), std::ios::trunc));
    file << "text";
    CloseWritten(file);
    EXPECT_FALSE(report.HasWriteFailed());
    EXPECT_EQ(test::ReadText(folder.File(L"f")), "text");

    ASSERT_TRUE(OpenWritten(file, folder.File(L"f").c_str(), std::ios::trunc));
    file.setstate(std::ios::badbit); // as after a write that the disk refused
    CloseWritten(file);
    EXPECT_TRUE(report.HasWriteFailed());
    EXPECT_EQ(report.SystemError(), 0);
}

TEST(TransferReport, OpenNotesWhyAFileDoesNotOpen) {
    const test::CTemporaryFolder folder;
    const CTransferReport report;
    COutputFile file;
    EXPECT_FALSE(OpenWritten(file, (folder.File(L"missing") + L"/f").c_str(), std::ios::trunc));
    EXPECT_EQ(report.SystemError(), ENOENT);
    EXPECT_FALSE(report.HasWriteFailed()); // the status tells of it
}

#ifndef _WIN32
TEST(TransferReport, CloseNotesWhyAFileIsNotWhole) {
    const CTransferReport report;
    COutputFile file;
    ASSERT_TRUE(OpenWritten(file, L"/dev/full", std::ios::trunc));
    file << "text";
    CloseWritten(file);
    EXPECT_TRUE(report.HasWriteFailed());
    EXPECT_EQ(report.SystemError(), ENOSPC);
}
#endif

} // namespace
} // namespace trevolt
