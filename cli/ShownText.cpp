#include "cli/ShownText.h"

#include <algorithm>
#include <array>

#include <fmt/format.h>

#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

struct SCodeRange {
    wchar_t first;
    wchar_t last;
};

/// Beside C0 and DEL: C1, the marks and isolates of bidirectional text, line and paragraph ends.
constexpr std::array kUnseen{SCodeRange{0x80, 0x9F}, SCodeRange{0x61C, 0x61C},
                             SCodeRange{0x200E, 0x200F}, SCodeRange{0x2028, 0x202E},
                             SCodeRange{0x2066, 0x2069}};

bool IsControlByte(wchar_t c) { return c < 0x20 || c == 0x7F; }

bool IsUnseen(wchar_t c) {
    return std::any_of(kUnseen.begin(), kUnseen.end(), [c](const SCodeRange& range) {
        return range.first <= c && c <= range.last;
    });
}

std::wstring Escape(const char* form, unsigned code) {
    const std::string escape = fmt::format(fmt::runtime(form), code);
    return {escape.begin(), escape.end()};
}

std::string ShownBytes(std::string_view text) {
    std::string shown;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        shown +=
            byte >= 0x80 || IsControlByte(byte) ? fmt::format("\\x{:02X}", byte) : std::string{c};
    }
    return shown;
}

} // namespace

std::string Shown(std::string_view text) {
    const auto wide = Utf8ToWide(text);
    if (!wide)
        return ShownBytes(text);
    std::wstring shown;
    for (const wchar_t c : *wide) {
        if (IsControlByte(c))
            shown += Escape("\\x{:02X}", static_cast<unsigned>(c));
        else if (IsUnseen(c))
            shown += Escape("\\u{:04X}", static_cast<unsigned>(c));
        else
            shown += c;
    }
    return WideToShownUtf8(shown);
}

void PrintLine(std::FILE* stream, std::string_view text) {
    fmt::print(stream, "{}\n", Shown(text));
}

void Complain(std::string_view problem) {
    PrintLine(stderr, fmt::format("trevolt-cli: {}", problem));
}

} // namespace trevolt
