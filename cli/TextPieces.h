// Text on its way to a stream, in pieces of a fixed size. It takes no memory: what is done is told also
// where none is left.
#pragma once

#include <array>
#include <cstddef>
#include <cstdio>
#include <string_view>

namespace trevolt {

class CTextPieces {
  public:
    explicit CTextPieces(std::FILE* stream) : m_stream(stream) {}

    /// Adds some whole characters of UTF-8, a few bytes: a console takes no parts of them. Throws what
    /// fmt::print throws.
    void Add(std::string_view characters);

    /// Prints what waits. Throws the same.
    void End();

  private:
    std::FILE* m_stream;
    std::array<char, 480> m_piece{}; ///< as much as fmt::print has place for in itself, nearly
    std::size_t m_size = 0;
};

} // namespace trevolt
