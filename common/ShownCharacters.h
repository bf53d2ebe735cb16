// Text with nothing hidden in it, for people to read.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace trevolt {

/// How many bytes the UTF-8 character has that `text` begins with, which is not empty; 0 where none
/// begins.
std::size_t CharacterBytes(std::string_view text);

/// The first character of a text as it is shown: itself, or escaped where it controls a terminal or the
/// order of letters. C0, DEL and bytes that are no UTF-8 are \x1B, C1, line separators and
/// bidirectional controls \u202E.
class CShownCharacter {
  public:
    /// Of a text that is not empty.
    explicit CShownCharacter(std::string_view text);

    std::string_view Text() const { return {m_shown.data(), m_size}; }
    /// How many bytes of the text it stands for.
    std::size_t Bytes() const { return m_bytes; }

  private:
    std::array<char, 8> m_shown{};
    std::size_t m_size = 0;
    std::size_t m_bytes = 0;
};

/// A text as it is shown.
std::string Shown(std::string_view text);

} // namespace trevolt
