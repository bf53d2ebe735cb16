// Streams for tests: bytes in memory, and streams that cannot be sought, run full or break.
#pragma once

#include <algorithm>
#include <cstring>
#include <ios>
#include <istream>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <string_view>

#include "tests/support/TestFiles.h"

namespace trevolt::test {

inline std::string AsText(const Bytes& bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

inline Bytes AsBytes(std::string_view text) {
    Bytes bytes(text.size());
    if (!text.empty())
        std::memcpy(bytes.data(), text.data(), text.size());
    return bytes;
}

inline std::istringstream StreamOf(const Bytes& bytes) { return std::istringstream(AsText(bytes)); }

/// What stands before a file in a stream that holds more.
constexpr std::string_view kPrefix = "what stands before it";

/// A stream of `bytes` that stands behind `kPrefix`.
inline std::istringstream StreamBehindPrefix(const Bytes& bytes) {
    std::istringstream stream(std::string(kPrefix) + AsText(bytes));
    stream.seekg(static_cast<std::streamoff>(kPrefix.size()));
    return stream;
}

/// Bytes that come one after the other and cannot be sought, as from a pipe. With `breaks` what
/// follows them cannot be read.
class CPipe : public std::istream {
  public:
    explicit CPipe(const Bytes& bytes, bool breaks = false)
        : std::istream(nullptr), m_buffer(AsText(bytes), breaks) {
        rdbuf(&m_buffer);
    }

  private:
    class CBuffer : public std::streambuf {
      public:
        CBuffer(std::string text, bool breaks) : m_text(std::move(text)), m_breaks(breaks) {
            setg(m_text.data(), m_text.data(), m_text.data() + m_text.size());
        }

      protected:
        int_type underflow() override {
            if (m_breaks)
                throw std::runtime_error("broken pipe");
            return traits_type::eof();
        }

      private:
        std::string m_text;
        bool m_breaks;
    };

    CBuffer m_buffer;
};

/// Takes `room` bytes, refuses what follows them, and cannot be sought.
class CFullDisk : public std::ostream {
  public:
    explicit CFullDisk(std::size_t room) : std::ostream(nullptr), m_buffer(room) {
        rdbuf(&m_buffer);
    }

    const std::string& Taken() const { return m_buffer.m_taken; }

  private:
    class CBuffer : public std::streambuf {
      public:
        explicit CBuffer(std::size_t room) : m_room(room) {}

        std::string m_taken;

      protected:
        int_type overflow(int_type byte) override {
            if (m_taken.size() == m_room || traits_type::eq_int_type(byte, traits_type::eof()))
                return traits_type::eof();
            m_taken.push_back(traits_type::to_char_type(byte));
            return byte;
        }

        std::streamsize xsputn(const char* bytes, std::streamsize count) override {
            const std::size_t fit =
                std::min(static_cast<std::size_t>(count), m_room - m_taken.size());
            m_taken.append(bytes, fit);
            return static_cast<std::streamsize>(fit);
        }

      private:
        std::size_t m_room;
    };

    CBuffer m_buffer;
};

/// A stream of characters whose positions start far behind 0.
class CFarBuffer : public std::stringbuf {
  public:
    explicit CFarBuffer(off_type start) : m_start(start) {}

  protected:
    pos_type seekoff(off_type offset, std::ios::seekdir from, std::ios::openmode which) override {
        if (from == std::ios::beg)
            offset -= m_start;
        const pos_type position = std::stringbuf::seekoff(offset, from, which);
        return position == pos_type(off_type(-1)) ? position : position + m_start;
    }
    pos_type seekpos(pos_type position, std::ios::openmode which) override {
        return seekoff(off_type(position), std::ios::beg, which);
    }

  private:
    off_type m_start;
};

} // namespace trevolt::test
