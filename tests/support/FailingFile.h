// A file in memory of which only a part can be read.
#pragma once

#include <algorithm>
#include <cstddef>
#include <ios>
#include <istream>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <utility>

#include "tests/support/TestFiles.h"

namespace trevolt::test {

/// A file whose size is told and of which only the first `readable` bytes can be read: the next read
/// fails, or, of a file that `hasShrunk`, comes to an end.
class CFailingFile : public std::istream {
  public:
    CFailingFile(const Bytes& bytes, std::size_t readable, bool hasShrunk = false)
        : std::istream(nullptr),
          m_buffer(std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size()), readable,
                   hasShrunk) {
        rdbuf(&m_buffer);
    }

  private:
    class CBuffer : public std::streambuf {
      public:
        CBuffer(std::string text, std::size_t readable, bool hasShrunk)
            : m_text(std::move(text)), m_readable(readable), m_hasShrunk(hasShrunk) {
            StandAt(0);
        }

      protected:
        int_type underflow() override {
            if (!m_hasShrunk && m_readable < m_text.size())
                throw std::runtime_error("input error");
            return traits_type::eof();
        }

        pos_type seekoff(off_type offset, std::ios::seekdir from, std::ios::openmode) override {
            const off_type here = (gptr() - eback()) + m_past;
            const off_type base = from == std::ios::beg   ? 0
                                  : from == std::ios::cur ? here
                                                          : static_cast<off_type>(m_text.size());
            return seekpos(base + offset, std::ios::in);
        }

        pos_type seekpos(pos_type to, std::ios::openmode) override {
            const off_type at = to;
            if (at < 0)
                return off_type{-1};
            StandAt(at);
            return to;
        }

      private:
        void StandAt(off_type at) {
            const off_type inside = std::min(at, static_cast<off_type>(m_readable));
            m_past = at - inside;
            setg(m_text.data(), m_text.data() + inside, m_text.data() + m_readable);
        }

        std::string m_text;
        std::size_t m_readable;
        bool m_hasShrunk;
        off_type m_past = 0; ///< how far behind what can be read
    };

    CBuffer m_buffer;
};

} // namespace trevolt::test
