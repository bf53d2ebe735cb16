// What happened during a load or a save that its status does not tell. Some statuses are fixed by
// the file kinds' own rules (a writer answers 0 though the disk was full; a reader gives the result
// of its last chunk only); whoever needs the truth holds a report while the call runs.
#pragma once

#include <cstdint>

#include "trevolt/StatusCodes.h"
#include "trevolt/TextFlaws.h"

namespace trevolt {

/// Collects, while it lives, what the operations of this thread note. Reports nest: a note reaches
/// the innermost one and those around it. Used by the thread that made it only.
class CTransferReport {
  public:
    CTransferReport();
    ~CTransferReport();
    CTransferReport(const CTransferReport&) = delete;
    CTransferReport& operator=(const CTransferReport&) = delete;

    /// An output stream had failed when it was closed: the file is not whole.
    bool HasWriteFailed() const { return m_writeFailed; }
    /// An input stream broke: it was told that bytes cannot be read, and what a reader made of those
    /// before them is not the whole file, whatever its status.
    bool HasReadFailed() const { return m_readFailed; }
    /// The system's reason (an `errno` value) for the first file that did not open, output that did
    /// not take its bytes, or input that could not be read; 0 when there was none or the system gave
    /// none.
    int SystemError() const { return m_systemError; }
    /// The memory budget or the system refused a block.
    bool WasMemoryRefused() const { return m_memoryRefused; }
    /// Chunks of word files that could not be read.
    std::uint32_t FailedChunks() const { return m_failedChunks; }
    /// Pixels of word files' stated sizes that none of their chunks holds; 2^64 − 1 stands for
    /// more.
    std::uint64_t MissingPixels() const { return m_missingPixels; }
    /// Pixels of word files' stated sizes that several of their chunks hold; limited as above.
    std::uint64_t RepeatedPixels() const { return m_repeatedPixels; }
    /// Pixels of word files' stated sizes whose extra word no chunk of their part for extra words
    /// holds; limited as above. What counts for the file is its matrix part: this counts for who
    /// keeps extra words.
    std::uint64_t MissingExtraWords() const { return m_missingExtraWords; }
    /// Chunks that reach out of their word file's stated area. Whole blocks that it touches may.
    std::uint32_t ChunksOutside() const { return m_chunksOutside; }
    /// Bytes of word files behind their last chunk that are no part for extra words.
    std::uint64_t StrayBytes() const { return m_strayBytes; }
    /// Chunks of word files whose block index is not that of their place. No damage: bands that are
    /// moved by a part of a block have such, and whole files are read by the place alone.
    std::uint32_t ForeignIndices() const { return m_foreignIndices; }
    /// The status of the first read that failed behind a success, S_OK when there was none.
    Status FailedRead() const { return m_failedRead; }
    /// What the reader of text files passed over.
    const CTextFlaws& TextFlaws() const { return m_textFlaws; }
    /// Pixels that the cleaning of text files changed: whole data lines of which it changed a value
    /// by more than the sign of a zero.
    std::uint64_t CleanedPixels() const { return m_cleanedPixels; }

    static void NoteWriteFailed();
    static void NoteReadFailed();
    static void NoteSystemError(int error);
    static void NoteMemoryRefused();
    static void NoteFailedChunks(std::uint32_t count);
    static void NoteMissingPixels(std::uint64_t count);
    static void NoteRepeatedPixels(std::uint64_t count);
    static void NoteMissingExtraWords(std::uint64_t count);
    static void NoteChunksOutside(std::uint32_t count);
    static void NoteStrayBytes(std::uint64_t count);
    static void NoteForeignIndices(std::uint32_t count);
    static void NoteFailedRead(Status status);
    static void NoteTextFlaws(const CTextFlaws& flaws);
    static void NoteCleanedPixels(std::uint64_t count);

  private:
    CTransferReport* m_outer;
    bool m_writeFailed = false;
    bool m_readFailed = false;
    int m_systemError = 0;
    bool m_memoryRefused = false;
    std::uint32_t m_failedChunks = 0;
    std::uint64_t m_missingPixels = 0;
    std::uint64_t m_repeatedPixels = 0;
    std::uint64_t m_missingExtraWords = 0;
    std::uint32_t m_chunksOutside = 0;
    std::uint64_t m_strayBytes = 0;
    std::uint32_t m_foreignIndices = 0;
    Status m_failedRead{};
    CTextFlaws m_textFlaws;
    std::uint64_t m_cleanedPixels = 0;
};

} // namespace trevolt
