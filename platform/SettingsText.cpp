#include "platform/SettingsText.h"

#include <algorithm>
#include <cstddef>

#include "platform/CodePage.h"
#include "platform/TrimmedText.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

using Lines = SettingsLines;

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

std::uint32_t UnitAt(std::string_view bytes, std::size_t i) {
    return static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[i])) |
           static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[i + 1])) << 8U;
}

std::wstring FromUtf16(std::string_view bytes) {
    std::wstring text;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        std::uint32_t code = UnitAt(bytes, i);
        const std::uint32_t next = i + 3 < bytes.size() ? UnitAt(bytes, i + 2) : 0;
        if ((code & 0xFC00U) == 0xD800U && (next & 0xFC00U) == 0xDC00U) {
            code = 0x10000U + ((code & 0x3FFU) << 10U) + (next & 0x3FFU);
            i += 2;
        }
        text.push_back(static_cast<wchar_t>(code));
    }
    return text;
}

std::wstring BytesAsCharacters(std::string_view bytes) {
    std::wstring text;
    for (const char byte : bytes)
        text.push_back(static_cast<wchar_t>(static_cast<unsigned char>(byte)));
    return text;
}

std::wstring Decoded(std::string_view bytes, unsigned codePage) {
    if (bytes.starts_with(kUtf16Mark))
        return FromUtf16(bytes.substr(kUtf16Mark.size()));
    if (bytes.starts_with(kUtf8Mark))
        bytes.remove_prefix(kUtf8Mark.size());
    if (auto text = Utf8ToWide(bytes))
        return *std::move(text);
    if (auto text = CodePageToWide(bytes, codePage))
        return *std::move(text);
    return BytesAsCharacters(bytes);
}

Lines SplitLines(std::wstring_view text) {
    Lines lines;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(L'\n'), text.size());
        std::wstring_view line = text.substr(0, end);
        if (line.ends_with(L'\r'))
            line.remove_suffix(1);
        lines.emplace_back(line);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

std::wstring_view Unquoted(std::wstring_view text) {
    const bool isQuoted = text.size() >= 2 && text.front() == text.back() &&
                          (text.front() == L'"' || text.front() == L'\'');
    return isQuoted ? text.substr(1, text.size() - 2) : text;
}

bool IsSameName(std::wstring_view a, std::wstring_view b) {
    const auto lower = [](wchar_t c) {
        return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c - L'A' + L'a') : c;
    };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [&](wchar_t x, wchar_t y) { return lower(x) == lower(y); });
}

bool IsSectionLine(std::wstring_view line) { return Trimmed(line).starts_with(L'['); }

bool IsLineOfSection(std::wstring_view line, std::wstring_view section) {
    const std::wstring_view name = Trimmed(line);
    const std::size_t end = name.find(L']');
    return name.starts_with(L'[') && end != std::wstring_view::npos &&
           IsSameName(name.substr(1, end - 1), section);
}

bool HasSection(const Lines& lines, std::wstring_view section) {
    return std::any_of(lines.begin(), lines.end(),
                       [&](const std::wstring& line) { return IsLineOfSection(line, section); });
}

bool IsLineOfKey(std::wstring_view line, std::wstring_view key) {
    const std::size_t equals = line.find(L'=');
    return equals != std::wstring_view::npos && IsSameName(Trimmed(line.substr(0, equals)), key);
}

/// The lines between a section's heading and the next one.
struct SectionLines {
    Lines::iterator begin;
    Lines::iterator end;
};

SectionLines FindSection(Lines& lines, std::wstring_view section) {
    auto begin = std::find_if(lines.begin(), lines.end(), [&](const std::wstring& line) {
        return IsLineOfSection(line, section);
    });
    if (begin != lines.end())
        ++begin;
    return {begin, std::find_if(begin, lines.end(), IsSectionLine)};
}

Lines::iterator FindKey(const SectionLines& lines, std::wstring_view key) {
    return std::find_if(lines.begin, lines.end,
                        [&](const std::wstring& line) { return IsLineOfKey(line, key); });
}

} // namespace

SettingsLines DecodeSettings(std::string_view bytes, unsigned codePage) {
    return SplitLines(Decoded(bytes, codePage));
}

std::wstring FindSetting(SettingsLines lines, std::wstring_view section, std::wstring_view key) {
    const SectionLines own = FindSection(lines, section);
    const auto line = FindKey(own, key);
    if (line == own.end)
        return {};
    const std::wstring_view text = *line;
    return std::wstring(Unquoted(Trimmed(text.substr(text.find(L'=') + 1))));
}

void ChangeSetting(SettingsLines& lines, const std::wstring& section, const std::wstring& key,
                   const std::wstring& value) {
    if (!HasSection(lines, section))
        lines.push_back(L"[" + section + L"]");
    const SectionLines own = FindSection(lines, section);
    const auto line = FindKey(own, key);
    if (line != own.end)
        *line = key + L"=" + value;
    else
        lines.insert(own.end, key + L"=" + value);
}

} // namespace trevolt
