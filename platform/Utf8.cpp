#include "trevolt/Utf8.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace trevolt {
namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr bool kWideIsUtf16 = sizeof(wchar_t) == 2;

bool IsHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool IsLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }
bool IsScalar(char32_t code) { return code <= 0x10FFFF && !(code >= 0xD800 && code <= 0xDFFF); }

char32_t UnitAt(std::wstring_view text, std::size_t i) {
    return static_cast<char32_t>(static_cast<std::make_unsigned_t<wchar_t>>(text[i]));
}

/// Takes one code point at `i` and moves `i` behind it; nothing when there is none, `i` then one on.
std::optional<char32_t> TakeWide(std::wstring_view text, std::size_t& i) {
    const char32_t unit = UnitAt(text, i++);
    if (kWideIsUtf16 && IsHighSurrogate(unit) && i < text.size() && IsLowSurrogate(UnitAt(text, i)))
        return 0x10000 + ((unit - 0xD800) << 10) + (UnitAt(text, i++) - 0xDC00);
    if (!IsScalar(unit))
        return std::nullopt;
    return unit;
}

void AppendUtf8(std::string& out, char32_t code) {
    const auto put = [&out](char32_t bits) { out.push_back(static_cast<char>(bits)); };
    if (code < 0x80) {
        put(code);
        return;
    }
    if (code < 0x800) {
        put(0xC0 | (code >> 6));
    } else if (code < 0x10000) {
        put(0xE0 | (code >> 12));
        put(0x80 | ((code >> 6) & 0x3F));
    } else {
        put(0xF0 | (code >> 18));
        put(0x80 | ((code >> 12) & 0x3F));
        put(0x80 | ((code >> 6) & 0x3F));
    }
    put(0x80 | (code & 0x3F));
}

void AppendWide(std::wstring& out, char32_t code) {
    if (kWideIsUtf16 && code >= 0x10000) {
        out.push_back(static_cast<wchar_t>(0xD800 + ((code - 0x10000) >> 10)));
        out.push_back(static_cast<wchar_t>(0xDC00 + ((code - 0x10000) & 0x3FF)));
        return;
    }
    out.push_back(static_cast<wchar_t>(code));
}

/// Bytes of the sequence that `lead` begins, 0 when it begins none.
std::size_t SequenceLength(unsigned char lead) {
    if (lead < 0x80)
        return 1;
    if (lead < 0xC2)
        return 0;
    if (lead < 0xE0)
        return 2;
    if (lead < 0xF0)
        return 3;
    return lead < 0xF5 ? 4 : 0;
}

/// Takes one code point at `i` and moves `i` behind it; nothing when the bytes are not UTF-8.
std::optional<char32_t> TakeUtf8(std::string_view text, std::size_t& i) {
    constexpr std::array<char32_t, 5> kSmallest{0, 0, 0x80, 0x800, 0x10000};
    constexpr std::array<unsigned, 5> kLeadMask{0, 0x7F, 0x1F, 0x0F, 0x07};
    const auto lead = static_cast<unsigned char>(text[i]);
    const std::size_t length = SequenceLength(lead);
    if (length == 0 || text.size() - i < length)
        return std::nullopt;
    char32_t code = lead & kLeadMask[length];
    for (std::size_t k = 1; k < length; ++k) {
        const auto byte = static_cast<unsigned char>(text[i + k]);
        if ((byte & 0xC0U) != 0x80U)
            return std::nullopt;
        code = (code << 6) | (byte & 0x3FU);
    }
    if (code < kSmallest[length] || !IsScalar(code))
        return std::nullopt;
    i += length;
    return code;
}

} // namespace

std::optional<std::string> WideToUtf8(std::wstring_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        const auto code = TakeWide(text, i);
        if (!code)
            return std::nullopt;
        AppendUtf8(out, *code);
    }
    return out;
}

std::optional<std::wstring> Utf8ToWide(std::string_view text) {
    std::wstring out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        const auto code = TakeUtf8(text, i);
        if (!code)
            return std::nullopt;
        AppendWide(out, *code);
    }
    return out;
}

std::string WideToShownUtf8(std::wstring_view text) {
    std::string out;
    for (std::size_t i = 0; i < text.size();)
        AppendUtf8(out, TakeWide(text, i).value_or(kReplacement));
    return out;
}

} // namespace trevolt
