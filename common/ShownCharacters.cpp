#include "common/ShownCharacters.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include <fmt/format.h>

namespace trevolt {
namespace {

struct SCodeRange {
    std::uint32_t first;
    std::uint32_t last;
};

/// Beside C0 and DEL: C1, the marks and isolates of bidirectional text, line and paragraph ends.
constexpr std::array kUnseen{SCodeRange{0x80, 0x9F}, SCodeRange{0x61C, 0x61C},
                             SCodeRange{0x200E, 0x200F}, SCodeRange{0x2028, 0x202E},
                             SCodeRange{0x2066, 0x2069}};

bool IsUnseen(std::uint32_t code) {
    return std::any_of(kUnseen.begin(), kUnseen.end(), [code](const SCodeRange& range) {
        return range.first <= code && code <= range.last;
    });
}

struct SCharacter {
    std::uint32_t code = 0;
    std::size_t length = 0; ///< in bytes; 0 where none begins
};

/// The character of several bytes that `text` begins with.
SCharacter FirstOf(std::string_view text) {
    struct SForm {
        std::uint32_t lead; ///< the first byte's fixed bits
        std::uint32_t mask;
        std::uint32_t least; ///< code of so many bytes
        std::size_t length;
    };
    constexpr std::array kForms{SForm{0xC0, 0xE0, 0x80, 2}, SForm{0xE0, 0xF0, 0x800, 3},
                                SForm{0xF0, 0xF8, 0x10000, 4}};
    const auto byte = [&](std::size_t i) {
        return static_cast<std::uint32_t>(static_cast<unsigned char>(text[i]));
    };
    for (const SForm& form : kForms) {
        if ((byte(0) & form.mask) != form.lead || text.size() < form.length)
            continue;
        std::uint32_t code = byte(0) & ~form.mask;
        for (std::size_t i = 1; i < form.length; ++i) {
            if ((byte(i) & 0xC0U) != 0x80)
                return {};
            code = code << 6U | (byte(i) & 0x3FU);
        }
        const bool isSurrogate = 0xD800 <= code && code <= 0xDFFF;
        if (code < form.least || code > 0x10FFFF || isSurrogate)
            return {};
        return {code, form.length};
    }
    return {};
}

} // namespace

std::size_t CharacterBytes(std::string_view text) {
    return static_cast<unsigned char>(text[0]) < 0x80 ? 1 : FirstOf(text).length;
}

CShownCharacter::CShownCharacter(std::string_view text) {
    const auto byte = static_cast<unsigned char>(text[0]);
    const SCharacter character = FirstOf(text);
    m_bytes = std::max<std::size_t>(character.length, 1);
    if (character.length == 0 && (byte < 0x20 || byte >= 0x7F))
        m_size = fmt::format_to_n(m_shown.data(), m_shown.size(), "\\x{:02X}", byte).size;
    else if (IsUnseen(character.code))
        m_size = fmt::format_to_n(m_shown.data(), m_shown.size(), "\\u{:04X}", character.code).size;
    else
        m_size = text.copy(m_shown.data(), m_bytes);
}

std::string Shown(std::string_view text) {
    std::string shown;
    while (!text.empty()) {
        const CShownCharacter character(text);
        shown += character.Text();
        text.remove_prefix(character.Bytes());
    }
    return shown;
}

} // namespace trevolt
