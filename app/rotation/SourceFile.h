// A coefficient file that is opened once and looked at several times.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/FileStream.h"
#include "trevolt/StatusCodes.h"
#include "trevolt/TransferReport.h"

namespace trevolt {

class CSourceFile {
  public:
    void Open(const std::wstring& path) {
        m_isOpen = m_stream.Open(path.c_str());
        if (m_isOpen)
            m_size = BytesToEnd(m_stream);
    }
    bool IsOpen() const { return m_isOpen; }

    /// The stream at the file's first byte, without a failure; of a file that is open.
    std::istream& FirstByte() {
        m_stream.clear();
        m_stream.seekg(0);
        return m_stream;
    }

    /// The answer of `look`, which is handed the stream at the first byte of a file that is open. The
    /// thread's transfer report hears why the system refused to read.
    template <class Look>
    auto TakeOpen(Look look) {
        auto answer = look(FirstByte());
        CTransferReport::NoteSystemError(m_stream.SystemError());
        return answer;
    }

    /// As `TakeOpen`; E_COEF_OPENFAILED when the file did not open.
    template <class Look>
    Status Take(Look look) {
        return m_isOpen ? TakeOpen(look) : E_COEF_OPENFAILED;
    }

    /// Whether the file has grown or shrunk since it was opened, as one does that is being written.
    bool HasOtherSize() { return m_isOpen && BytesToEnd(FirstByte()) != m_size; }

  private:
    CInputFile m_stream;
    std::optional<std::uint64_t> m_size; ///< at the opening; nothing when it could not be told
    bool m_isOpen = false;
};

} // namespace trevolt
