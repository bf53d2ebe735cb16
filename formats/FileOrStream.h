// Where a reader takes a file's bytes from and where a writer puts them: a file by its path, or a
// stream that the caller holds. What is opened and closed is so here alone, so that both ways are
// one reader and one writer.
#pragma once

#include <istream>
#include <ostream>

#include "common/BrokenStream.h"
#include "common/ReadFile.h"
#include "common/WrittenFile.h"
#include "platform/FileStream.h"
#include "trevolt/StatusCodes.h"

namespace trevolt {

/// Neither the path nor the stream is owned.
class CFileSource {
  public:
    CFileSource(const wchar_t* path) : m_path(path) {}
    CFileSource(std::istream& stream) : m_stream(&stream) {}

    /// The answer of `read`, which is handed the stream, or that of the file, opened for it.
    /// E_COEF_INVALIDARG for a null path, E_COEF_OPENFAILED. The thread's transfer report hears when
    /// the stream or the file broke, and of a file why.
    template <class Read>
    Status Take(Read read) const {
        if (m_stream != nullptr) {
            const Status status = read(*m_stream);
            NoteIfBroken(*m_stream);
            return status;
        }
        if (m_path == nullptr)
            return E_COEF_INVALIDARG;
        CInputFile file;
        if (!OpenRead(file, m_path))
            return E_COEF_OPENFAILED;
        const Status status = read(file);
        NoteIfRefused(file);
        return status;
    }

  private:
    const wchar_t* m_path = nullptr;
    std::istream* m_stream = nullptr;
};

/// Neither the path nor the stream is owned.
class CFileTarget {
  public:
    CFileTarget(const wchar_t* path) : m_path(path) {}
    CFileTarget(std::ostream& stream) : m_stream(&stream) {}

    /// Whether there is nowhere to write to: a null path.
    bool IsNull() const { return m_path == nullptr && m_stream == nullptr; }

    /// The answer of `write`, which is handed the stream, or that of the file, made or cut to
    /// nothing and closed behind it. E_COEF_OPENFAILED. Of a file, not of a stream, the thread's
    /// transfer report hears when it does not open or does not take all its bytes.
    template <class Write>
    Status Put(Write write) const {
        if (m_stream != nullptr)
            return write(*m_stream);
        COutputFile file;
        if (!OpenWritten(file, m_path, std::ios::out | std::ios::trunc))
            return E_COEF_OPENFAILED;
        const Status status = write(file);
        CloseWritten(file);
        return status;
    }

  private:
    const wchar_t* m_path = nullptr;
    std::ostream* m_stream = nullptr;
};

} // namespace trevolt
