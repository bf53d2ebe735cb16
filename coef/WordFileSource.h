// A file that is looked at more than once: the operations first recognise a file and then read it.
#pragma once

#include <istream>
#include <optional>

#include "platform/FileStream.h"
#include "trevolt/StatusCodes.h"

namespace trevolt {

/// A file under a path, which every look opens anew, or in a stream, which every look puts back. When
/// it breaks in one of them the thread's transfer report hears of it, at the latest as the source
/// goes, and of a path also why.
class CWordFileSource {
  public:
    /// The path may be null.
    explicit CWordFileSource(const wchar_t* path) : m_path(path) {}
    /// The file begins at the stream's position; the stream must outlive the source.
    explicit CWordFileSource(std::istream& stream);
    ~CWordFileSource() { NoteTrouble(); }
    CWordFileSource(const CWordFileSource&) = delete;
    CWordFileSource& operator=(const CWordFileSource&) = delete;

    /// The file at its first byte; null when a path does not open, or no longer. It is the source's,
    /// and the same stream every time. A stream that had failed, or that cannot tell its position, has
    /// failed here too: it reads as a file without bytes.
    std::istream* Open();

    /// The answer of `look`, which is handed the file at its first byte. E_COEF_INVALIDARG for a null
    /// path, E_COEF_OPENFAILED.
    template <class Look>
    Status Take(Look look) {
        if (m_path == nullptr && m_stream == nullptr)
            return E_COEF_INVALIDARG;
        std::istream* const stream = Open();
        return stream == nullptr ? E_COEF_OPENFAILED : look(*stream);
    }

    /// Puts back to its first byte what `Open` has given, without opening it anew.
    void Rewind();

  private:
    void NoteTrouble() const;

    const wchar_t* m_path = nullptr;
    std::istream* m_stream = nullptr; ///< not owned
    std::streamoff m_start = 0;       ///< negative for a stream that cannot tell it
    std::optional<CInputFile> m_file; ///< under the path, from the first look on
};

} // namespace trevolt
