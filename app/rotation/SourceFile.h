// A coefficient file that is opened once and looked at several times.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "common/ReadFile.h"
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
    /// thread's transfer report hears when the system refused to read, and why.
    template <class Look>
    auto TakeOpen(Look look) {
        auto answer = look(FirstByte());
        m_sizeBehindLook = BytesToEnd(FirstByte());
        NoteIfRefused(m_stream);
        return answer;
    }

    /// As `TakeOpen`; E_COEF_OPENFAILED when the file did not open, and the report hears why.
    template <class Look>
    Status Take(Look look) {
        if (m_isOpen)
            return TakeOpen(look);
        CTransferReport::NoteSystemError(m_stream.SystemError());
        return E_COEF_OPENFAILED;
    }

    /// The `errno` value of why the system refused the last read or seek, else 0.
    int SystemError() const { return m_stream.SystemError(); }

    /// Whether the file had grown or shrunk behind the last look, as one has that is being written.
    bool HasOtherSize() const { return m_size && m_sizeBehindLook && *m_size != *m_sizeBehindLook; }

  private:
    CInputFile m_stream;
    std::optional<std::uint64_t> m_size; ///< at the opening; nothing when it could not be told
    std::optional<std::uint64_t> m_sizeBehindLook;
    bool m_isOpen = false;
};

} // namespace trevolt
