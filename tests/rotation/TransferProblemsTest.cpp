#include "trevolt/TransferProblems.h"

#include <cerrno>

#include <gtest/gtest.h>

namespace trevolt {
namespace {

using Problems = std::vector<std::string>;

TEST(ReadProblems, AWholeFileHasNone) {
    const CTransferReport report;
    EXPECT_EQ(DescribeReadProblems(S_OK, report), Problems{});
    EXPECT_EQ(DescribeReadProblems(MakeStatus(1), report), Problems{});
}

TEST(ReadProblems, AStatusIsNamed) {
    const CTransferReport report;
    EXPECT_EQ(DescribeReadProblems(E_COEF_BADTEXT, report),
              Problems{"cannot be read: E_COEF_BADTEXT (0xE0830013): the first line is not a known "
                       "tag"});
}

TEST(ReadProblems, AFileThatDoesNotOpenIsNamedWithTheReason) {
    const CTransferReport report;
    CTransferReport::NoteSystemError(EMFILE);
    EXPECT_EQ(DescribeReadProblems(S_OK, report), Problems{});
    EXPECT_EQ(DescribeReadProblems(E_COEF_OPENFAILED, report),
              Problems{"cannot be read: E_COEF_OPENFAILED (0xE0830011): the file could not be "
                       "opened: Too many open files"});
}

TEST(ReadProblems, ReadsThatFailBehindASuccessAreNamed) {
    const CTransferReport report;
    CTransferReport::NoteFailedRead(E_COEF_BADFORMAT);
    const Problems expected{"cannot be read: E_COEF_BADFORMAT (0xE0830010): not a file of this "
                            "kind, or of a newer version"};
    EXPECT_EQ(DescribeReadProblems(S_OK, report), expected);
    CTransferReport::NoteFailedChunks(1);
    CTransferReport::NoteMissingPixels(2);
    EXPECT_EQ(DescribeReadProblems(S_OK, report), expected);
    EXPECT_EQ(DescribeReadProblems(E_FAIL, report),
              Problems{"cannot be read: E_FAIL (0x80004005): the content is damaged or does not "
                       "match its header"});
}

TEST(ReadProblems, ChunksAndPixelsAreCounted) {
    const CTransferReport report;
    {
        const CTransferReport inner;
        CTransferReport::NoteFailedChunks(3);
        EXPECT_EQ(DescribeReadProblems(S_OK, inner),
                  Problems{"is damaged: 3 of its chunks could not be read"});
    }
    {
        const CTransferReport inner;
        CTransferReport::NoteMissingPixels(1);
        EXPECT_EQ(DescribeReadProblems(S_OK, inner),
                  Problems{"is incomplete: 1 pixel has no data"});
    }
    CTransferReport::NoteMissingPixels(1);
    EXPECT_EQ(DescribeReadProblems(S_OK, report),
              (Problems{"is damaged: 3 of its chunks could not be read",
                        "is incomplete: 2 pixels have no data"}));
    CTransferReport::NoteMissingPixels(8589934590);
    EXPECT_EQ(DescribeReadProblems(S_OK, report),
              (Problems{"is damaged: 3 of its chunks could not be read",
                        "is incomplete: 8589934592 pixels have no data"}));
}

TEST(ExtraWordProblems, PixelsWithoutOneAreCounted) {
    const CTransferReport report;
    EXPECT_EQ(DescribeExtraWordProblems(report), Problems{});
    CTransferReport::NoteMissingExtraWords(1);
    EXPECT_EQ(DescribeExtraWordProblems(report),
              Problems{"is incomplete: 1 pixel has no extra word"});
    CTransferReport::NoteMissingExtraWords(1);
    EXPECT_EQ(DescribeExtraWordProblems(report),
              Problems{"is incomplete: 2 pixels have no extra word"});
    EXPECT_EQ(DescribeReadProblems(S_OK, report), Problems{});
    {
        const CTransferReport broken;
        CTransferReport::NoteMissingExtraWords(1);
        CTransferReport::NoteReadFailed();
        EXPECT_EQ(DescribeExtraWordProblems(broken), Problems{});
    }
    const CTransferReport refused;
    CTransferReport::NoteMissingExtraWords(1);
    CTransferReport::NoteMemoryRefused();
    EXPECT_EQ(DescribeExtraWordProblems(refused), Problems{});
}

TEST(ReadProblems, WhatNoWriterMakesIsCounted) {
    struct SCase {
        void (*note)();
        const char* one;
        const char* several;
    };
    for (const SCase& test : {SCase{[] { CTransferReport::NoteChunksOutside(1); },
                                    "is damaged: 1 of its chunks reaches out of its area",
                                    "is damaged: 2 of its chunks reach out of its area"},
                              SCase{[] { CTransferReport::NoteRepeatedPixels(1); },
                                    "is damaged: 1 pixel lies in several of its chunks",
                                    "is damaged: 2 pixels lie in several of its chunks"},
                              SCase{[] { CTransferReport::NoteStrayBytes(1); },
                                    "is damaged: 1 byte lies behind its last chunk",
                                    "is damaged: 2 bytes lie behind its last chunk"}}) {
        const CTransferReport report;
        test.note();
        EXPECT_EQ(DescribeReadProblems(S_OK, report), Problems{test.one});
        test.note();
        EXPECT_EQ(DescribeReadProblems(S_OK, report), Problems{test.several});
    }
}

TEST(ReadNotes, AnIndexOfAnotherPlaceIsNoProblem) {
    const CTransferReport report;
    EXPECT_EQ(DescribeReadNotes(report), Problems{});
    CTransferReport::NoteForeignIndices(1);
    EXPECT_EQ(DescribeReadNotes(report),
              Problems{"1 of its chunks has a block index that is not that of the place"});
    CTransferReport::NoteForeignIndices(4);
    EXPECT_EQ(DescribeReadNotes(report),
              Problems{"5 of its chunks have a block index that is not that of the place"});
    EXPECT_EQ(DescribeReadProblems(S_OK, report), Problems{});
}

TEST(ReadProblems, ABrokenStreamIsToldByTheSystemsReasonWhateverFollowed) {
    const CTransferReport report;
    CTransferReport::NoteReadFailed();
    CTransferReport::NoteFailedRead(E_FAIL);
    CTransferReport::NoteFailedChunks(1);
    CTextFlaws flaws;
    flaws.Note(ETextFlaw::NoEnd, 4);
    CTransferReport::NoteTextFlaws(flaws);
    for (const Status status : {S_OK, E_COEF_BADTEXT})
        EXPECT_EQ(DescribeReadProblems(status, report),
                  Problems{"cannot be read: the system did not give all of its bytes"});
    CTransferReport::NoteSystemError(EIO);
    for (const Status status : {S_OK, E_COEF_BADTEXT})
        EXPECT_EQ(DescribeReadProblems(status, report),
                  Problems{"cannot be read: Input/output error"});
}

TEST(ReadProblems, EachFlawOfATextIsToldWithALine) {
    struct SCase {
        ETextFlaw flaw;
        const char* one;
        const char* several;
    };
    for (const SCase& c : {
             SCase{ETextFlaw::SizeLine, "is damaged: line 2 is no whole size line",
                   "is damaged: 2 lines are no whole size lines, the first is line 2"},
             {ETextFlaw::DataLine, "is damaged: line 2 is no whole data line",
              "is damaged: 2 lines are no whole data lines, the first is line 2"},
             {ETextFlaw::Outside, "is damaged: line 2 names a pixel outside the file's size",
              "is damaged: 2 lines name pixels outside the file's size, the first is line 2"},
             {ETextFlaw::Repeated, "is damaged: line 2 names a pixel that an earlier line names",
              "is damaged: 2 lines name pixels that earlier lines name, the first is line 2"},
             {ETextFlaw::LongLine,
              "is damaged: line 2 is too long, and what follows in the file is not read",
              "is damaged: 2 lines are too long, and what follows is not read, the first is line "
              "2"},
             {ETextFlaw::NoEnd, "is damaged: line 2 is the last and has no end",
              "is damaged: 2 last lines have no end, the first is line 2"},
         }) {
        const CTransferReport report;
        CTextFlaws flaws;
        flaws.Note(c.flaw, 2);
        CTransferReport::NoteTextFlaws(flaws);
        EXPECT_EQ(DescribeReadProblems(S_OK, report), Problems{c.one});
        CTransferReport::NoteTextFlaws(flaws);
        EXPECT_EQ(DescribeReadProblems(S_OK, report), Problems{c.several});
        // A file that is refused is told by its status alone.
        EXPECT_EQ(DescribeReadProblems(E_COEF_BADTEXT, report),
                  Problems{"cannot be read: E_COEF_BADTEXT (0xE0830013): the first line is not a "
                           "known tag"});
    }
}

TEST(ReadNotes, TellOfCleanedPixelsAlone) {
    const CTransferReport report;
    CTransferReport::NoteFailedChunks(1);
    EXPECT_EQ(DescribeReadNotes(report), Problems{});
    CTransferReport::NoteCleanedPixels(12);
    EXPECT_EQ(DescribeReadNotes(report), Problems{"cleaning changed 12 of its pixels"});
}

// Memory that was refused says nothing of the file, whatever else it led to.
TEST(ReadProblems, RefusedMemoryComesFirst) {
    const CTransferReport report;
    CTransferReport::NoteMemoryRefused();
    const Problems expected{"not enough memory to read it whole"};
    EXPECT_EQ(DescribeReadProblems(S_OK, report), expected);
    CTransferReport::NoteFailedRead(E_FAIL);
    CTransferReport::NoteReadFailed();
    CTransferReport::NoteFailedChunks(3);
    CTransferReport::NoteMissingPixels(2);
    for (const Status status : {S_OK, E_FAIL, E_OUTOFMEMORY, E_COEF_NOBUFFER})
        EXPECT_EQ(DescribeReadProblems(status, report), expected);
}

TEST(WriteProblem, AWholeOutputHasNone) {
    const CTransferReport report;
    EXPECT_EQ(DescribeWriteProblem(S_OK, report), "");
    CTransferReport::NoteFailedChunks(1); // of some reader
    EXPECT_EQ(DescribeWriteProblem(MakeStatus(1), report), "");
}

TEST(WriteProblem, AFailedWriteIsToldByTheSystemsReason) {
    const CTransferReport report;
    CTransferReport::NoteWriteFailed();
    for (const Status status : {S_OK, E_FAIL})
        EXPECT_EQ(DescribeWriteProblem(status, report),
                  "cannot be written: the target refused some of the bytes");
    CTransferReport::NoteSystemError(ENOSPC);
    for (const Status status : {S_OK, E_FAIL})
        EXPECT_EQ(DescribeWriteProblem(status, report),
                  "cannot be written: No space left on device");
}

TEST(WriteProblem, AStatusIsNamedWithTheSystemsReason) {
    const CTransferReport report;
    EXPECT_EQ(DescribeWriteProblem(E_HANDLE, report),
              "cannot be written: E_HANDLE (0x80070006): the file could not be opened");
    CTransferReport::NoteSystemError(EACCES);
    EXPECT_EQ(DescribeWriteProblem(E_HANDLE, report),
              "cannot be written: E_HANDLE (0x80070006): the file could not be opened: Permission "
              "denied");
}

TEST(WriteProblem, RefusedMemoryComesFirst) {
    const CTransferReport report;
    CTransferReport::NoteMemoryRefused();
    EXPECT_EQ(DescribeWriteProblem(S_OK, report), "not enough memory to write it whole");
    CTransferReport::NoteWriteFailed();
    CTransferReport::NoteSystemError(ENOSPC);
    EXPECT_EQ(DescribeWriteProblem(E_FAIL, report), "not enough memory to write it whole");
}

TEST(SyncProblem, IsToldByTheSystemsReason) {
    EXPECT_EQ(DescribeSyncProblem(EIO), "cannot be written: Input/output error");
    EXPECT_EQ(DescribeFolderSyncProblem(EIO),
              "written, but its name may be lost: the target folder cannot be synced: "
              "Input/output error");
}

TEST(RenameProblem, IsToldByTheSystemsReason) {
    EXPECT_EQ(DescribeRenameProblem(0), "cannot be given its final name in the target folder");
    EXPECT_EQ(DescribeRenameProblem(ENAMETOOLONG),
              "cannot be given its final name in the target folder: File name too long");
}

} // namespace
} // namespace trevolt
