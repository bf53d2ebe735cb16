// A file that is looked at more than once: the operations first recognise a file and then read it.
#pragma once

#include <fstream>
#include <istream>

namespace trevolt {

/// A file under a path, which every look opens anew, or in a stream, which every look puts back.
class CWordFileSource {
  public:
    /// The path may be null.
    explicit CWordFileSource(const wchar_t* path) : m_path(path) {}
    /// The file begins at the stream's position; the stream must outlive the source. `path` is where
    /// readers that know paths alone find the same file, null for nowhere.
    explicit CWordFileSource(std::istream& stream, const wchar_t* path = nullptr);
    CWordFileSource(const CWordFileSource&) = delete;
    CWordFileSource& operator=(const CWordFileSource&) = delete;

    /// Whether there is neither a path nor a stream.
    bool IsNull() const { return m_path == nullptr && m_stream == nullptr; }
    /// Where the file lies, null when it is in a stream alone.
    const wchar_t* Path() const { return m_path; }

    /// The file at its first byte; null when a path does not open, or no longer. It is the source's,
    /// and the same stream every time. A stream that had failed, or that cannot tell its position, has
    /// failed here too: it reads as a file without bytes.
    std::istream* Open();

    /// Puts back to its first byte what `Open` has given, without opening it anew.
    void Rewind();

  private:
    const wchar_t* m_path;
    std::istream* m_stream = nullptr; ///< not owned
    std::streamoff m_start = 0;       ///< negative for a stream that cannot tell it
    std::fstream m_file;
};

} // namespace trevolt
