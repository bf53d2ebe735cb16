#include "platform/SettingsProfile.h"

#include <cstdint>
#include <fstream>
#include <optional>
#include <string_view>
#include <type_traits>
#include <utility>

#include "platform/FileStream.h"
#include "platform/FileSystem.h"
#include "platform/SettingsText.h"

namespace trevolt {
namespace {

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

/// The file's lines, none when it is missing; nothing when it cannot be read or is too large to be
/// a settings file.
std::optional<SettingsLines> ReadLines(const std::wstring& path, unsigned codePage) {
    if (!PathExists(path))
        return SettingsLines{};
    const auto bytes = ReadWholeFile(path, kLargestSettingsFile);
    if (!bytes)
        return std::nullopt;
    return DecodeSettings(*bytes, codePage);
}

bool WriteLines(const std::wstring& path, const SettingsLines& lines) {
    std::string bytes(kUtf16Mark);
    for (const std::wstring& line : lines)
        bytes += ToUtf16(line + L"\r\n");
    if (bytes.size() > kLargestSettingsFile) // it could not be read again
        return false;
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

} // namespace

CSettingsProfile::CSettingsProfile(std::wstring path, std::wstring section, unsigned codePage)
    : m_path(std::move(path)), m_section(std::move(section)), m_codePage(codePage) {}

std::wstring CSettingsProfile::ReadString(const std::wstring& key) const {
    auto lines = ReadLines(m_path, m_codePage).value_or(SettingsLines{});
    return FindSetting(std::move(lines), m_section, key).substr(0, kLongestValue);
}

bool CSettingsProfile::WriteString(const std::wstring& key, const std::wstring& value) const {
    if (value.find_first_of(std::wstring_view(L"\r\n\0", 3)) != std::wstring::npos)
        return false;
    auto lines = ReadLines(m_path, m_codePage);
    if (!lines)
        return false;
    ChangeSetting(*lines, m_section, key, value);
    return WriteLines(m_path, *lines);
}

} // namespace trevolt
