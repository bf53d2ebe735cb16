// What happened during a load or a save that its status does not tell. Some statuses are fixed by
// the file kinds' own rules (a writer answers 0 though the disk was full; a reader gives the result
// of its last chunk only); whoever needs the truth holds a report while the call runs.
#pragma once

#include <cstdint>
#include <fstream>

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
    /// The memory budget or the system refused a block.
    bool WasMemoryRefused() const { return m_memoryRefused; }
    /// Chunks of word files that could not be read.
    std::uint32_t FailedChunks() const { return m_failedChunks; }

    static void NoteWriteFailed();
    static void NoteMemoryRefused();
    static void NoteFailedChunks(std::uint32_t count);

  private:
    CTransferReport* m_outer;
    bool m_writeFailed = false;
    bool m_memoryRefused = false;
    std::uint32_t m_failedChunks = 0;
};

/// Closes a stream that was written to, and notes when it failed now or before.
void CloseWritten(std::fstream& stream);

} // namespace trevolt
