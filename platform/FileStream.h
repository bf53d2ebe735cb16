// Binary file streams on wide-character paths.
#pragma once

#include <cstdint>
#include <fstream>
#include <istream>
#include <optional>
#include <ostream>
#include <string>

namespace trevolt {

/// Opens `stream` in binary mode, with `mode` added, on `path`. False when the path is null, is a
/// folder, or does not open. Offsets and sizes are 64-bit on every system.
bool OpenFileStream(std::fstream& stream, const wchar_t* path, std::ios::openmode mode);

/// A binary file that is read, which remembers why the system refused it. Any thread may read.
class CInputFile : public std::istream {
  public:
    CInputFile();
    ~CInputFile() override = default;
    CInputFile(const CInputFile&) = delete;
    CInputFile& operator=(const CInputFile&) = delete;

    /// Opens as `OpenFileStream` does.
    bool Open(const wchar_t* path);

    /// The `errno` value of the first open, read or seek that the system refused; 0 when it refused
    /// none or gave no reason. A seek to where the file has no place is no such refusal.
    int SystemError() const { return m_buffer.SystemError(); }

  private:
    /// Asks for the reason where the refused call returns or throws: later calls may overwrite it.
    class CBuffer : public std::filebuf {
      public:
        bool Open(const wchar_t* path);
        int SystemError() const { return m_systemError; }

      protected:
        int_type underflow() override;
        std::streamsize xsgetn(char* bytes, std::streamsize count) override;
        pos_type seekoff(off_type offset, std::ios::seekdir from,
                         std::ios::openmode which) override;
        pos_type seekpos(pos_type to, std::ios::openmode which) override;

      private:
        int m_systemError = 0;
    };

    CBuffer m_buffer;
};

/// A binary file that is written to, which remembers why the system refused it.
class COutputFile : public std::ostream {
  public:
    COutputFile();
    ~COutputFile() override = default;
    COutputFile(const COutputFile&) = delete;
    COutputFile& operator=(const COutputFile&) = delete;

    /// Opens as `OpenFileStream` does.
    bool Open(const wchar_t* path, std::ios::openmode mode);

    /// Writes what is still held back and closes. False when that failed or anything before it.
    bool Close();

    /// The `errno` value of the first open, write, seek or close that the system refused; 0 when it
    /// refused none or gave no reason. A seek to where no file has a place is no such refusal.
    int SystemError() const { return m_buffer.SystemError(); }

  private:
    /// Asks for the reason where the refused call returns: later calls may overwrite it.
    class CBuffer : public std::filebuf {
      public:
        bool Open(const wchar_t* path, std::ios::openmode mode);
        bool Close();
        int SystemError() const { return m_systemError; }

      protected:
        int_type overflow(int_type byte) override;
        std::streamsize xsputn(const char* bytes, std::streamsize count) override;
        pos_type seekoff(off_type offset, std::ios::seekdir from,
                         std::ios::openmode which) override;
        pos_type seekpos(pos_type to, std::ios::openmode which) override;

      private:
        int m_systemError = 0;
    };

    CBuffer m_buffer;
};

/// Bytes from the current position to the end of the stream, which keeps its position; nothing when
/// the stream cannot tell.
std::optional<std::uint64_t> BytesToEnd(std::istream& stream);

/// The bytes from the current position to the end of the stream, which may be a pipe or another that
/// does not tell its size; nothing when they cannot all be read or are more than `limit`.
std::optional<std::string> ReadToEnd(std::istream& stream, std::uint64_t limit);

/// The file's bytes; nothing when it does not open, cannot be read whole or holds more than `limit`.
std::optional<std::string> ReadWholeFile(const std::wstring& path, std::uint64_t limit);

} // namespace trevolt
