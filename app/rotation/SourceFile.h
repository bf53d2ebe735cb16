// A coefficient file that is opened once and looked at several times.
#pragma once

#include <fstream>
#include <string>

#include "platform/FileStream.h"
#include "trevolt/StatusCodes.h"

namespace trevolt {

class CSourceFile {
  public:
    void Open(const std::wstring& path) {
        m_isOpen = OpenFileStream(m_stream, path.c_str(), std::ios::in);
    }
    bool IsOpen() const { return m_isOpen; }

    /// The stream at the file's first byte, without a failure; of a file that is open.
    std::istream& FirstByte() {
        m_stream.clear();
        m_stream.seekg(0);
        return m_stream;
    }

    /// The answer of `look`, which is handed the stream at the first byte; E_COEF_OPENFAILED when the
    /// file did not open.
    template <class Look>
    Status Take(Look look) {
        return m_isOpen ? look(FirstByte()) : E_COEF_OPENFAILED;
    }

  private:
    std::fstream m_stream;
    bool m_isOpen = false;
};

} // namespace trevolt
