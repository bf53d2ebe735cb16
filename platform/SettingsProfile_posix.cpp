#include "platform/SettingsProfile.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <optional>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "platform/FileStream.h"
#include "platform/FileSystem.h"
#include "platform/Utf8.h"

namespace trevolt {
namespace {

using Lines = std::vector<std::wstring>;

constexpr std::string_view kUtf16Mark = "\xFF\xFE";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::uint64_t kLargestFile = 4U << 20U;

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

void AppendUnit(std::string& bytes, std::uint32_t unit) {
    bytes.push_back(static_cast<char>(unit & 0xFFU));
    bytes.push_back(static_cast<char>(unit >> 8U));
}

std::string ToUtf16(std::wstring_view text) {
    std::string bytes;
    for (const wchar_t c : text) {
        const auto code = static_cast<std::uint32_t>(static_cast<std::make_unsigned_t<wchar_t>>(c));
        if (code >= 0x10000U) {
            AppendUnit(bytes, 0xD800U + ((code - 0x10000U) >> 10U));
            AppendUnit(bytes, 0xDC00U + ((code - 0x10000U) & 0x3FFU));
        } else {
            AppendUnit(bytes, code);
        }
    }
    return bytes;
}

/// A file without a mark and not UTF-8 comes from a code page that is not known here: its bytes are
/// kept as the characters of the same number.
std::wstring FromBytes(std::string_view bytes) {
    std::wstring text;
    for (const char byte : bytes)
        text.push_back(static_cast<wchar_t>(static_cast<unsigned char>(byte)));
    return text;
}

std::wstring Decoded(std::string_view bytes) {
    if (bytes.starts_with(kUtf16Mark))
        return FromUtf16(bytes.substr(kUtf16Mark.size()));
    if (bytes.starts_with(kUtf8Mark))
        bytes.remove_prefix(kUtf8Mark.size());
    if (auto text = Utf8ToWide(bytes))
        return *std::move(text);
    return FromBytes(bytes);
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

/// The file's lines, none when it is missing; nothing when it cannot be read or is too large to be
/// a settings file.
std::optional<Lines> ReadLines(const std::wstring& path) {
    if (!PathExists(path))
        return Lines{};
    const auto bytes = ReadWholeFile(path, kLargestFile);
    if (!bytes)
        return std::nullopt;
    return SplitLines(Decoded(*bytes));
}

bool WriteLines(const std::wstring& path, const Lines& lines) {
    std::string bytes(kUtf16Mark);
    for (const std::wstring& line : lines)
        bytes += ToUtf16(line + L"\r\n");
    const std::wstring whole = path + L".new";
    std::fstream stream;
    if (!OpenFileStream(stream, whole.c_str(), std::ios::out | std::ios::trunc))
        return false;
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    stream.close();
    if (stream.good() && ReplaceWith(whole, path))
        return true;
    RemoveFile(whole);
    return false;
}

std::wstring_view Trimmed(std::wstring_view text) {
    constexpr std::wstring_view kBlanks = L" \t";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::wstring_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
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

CSettingsProfile::CSettingsProfile(std::wstring path, std::wstring section)
    : m_path(std::move(path)), m_section(std::move(section)) {}

std::wstring CSettingsProfile::ReadString(const std::wstring& key) const {
    Lines lines = ReadLines(m_path).value_or(Lines{});
    const SectionLines section = FindSection(lines, m_section);
    const auto line = FindKey(section, key);
    if (line == section.end)
        return {};
    const std::wstring_view text = *line;
    const std::wstring_view value = Unquoted(Trimmed(text.substr(text.find(L'=') + 1)));
    return std::wstring(value.substr(0, kLongestValue));
}

bool CSettingsProfile::WriteString(const std::wstring& key, const std::wstring& value) const {
    if (value.find_first_of(std::wstring_view(L"\r\n\0", 3)) != std::wstring::npos)
        return false;
    auto lines = ReadLines(m_path);
    if (!lines)
        return false;
    if (!HasSection(*lines, m_section))
        lines->push_back(L"[" + m_section + L"]");

    const SectionLines section = FindSection(*lines, m_section);
    const auto line = FindKey(section, key);
    if (line != section.end)
        *line = key + L"=" + value;
    else
        lines->insert(section.end, key + L"=" + value);
    return WriteLines(m_path, *lines);
}

} // namespace trevolt
