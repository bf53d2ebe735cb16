#include "platform/SettingsProfile.h"

#include <array>
#include <fstream>
#include <utility>

#include <windows.h>

#include "platform/FileStream.h"
#include "platform/FileSystem.h"
#include "platform/Utf8.h"

namespace trevolt {
namespace {

constexpr std::string_view kUtf16Mark = "\xFF\xFE";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::uint64_t kLargestFile = 4U << 20U;

/// The machine's own code page: the program's active one may be UTF-8 by its manifest.
UINT SystemCodePage() {
    DWORD page = CP_ACP;
    GetLocaleInfoEx(LOCALE_NAME_SYSTEM_DEFAULT, LOCALE_IDEFAULTANSICODEPAGE | LOCALE_RETURN_NUMBER,
                    reinterpret_cast<LPWSTR>(&page), sizeof page / sizeof(wchar_t));
    return page;
}

std::wstring FromSystemCodePage(std::string_view bytes) {
    const UINT page = SystemCodePage();
    const int byteCount = static_cast<int>(bytes.size());
    const int units = MultiByteToWideChar(page, 0, bytes.data(), byteCount, nullptr, 0);
    std::wstring text(static_cast<std::size_t>(units), L'\0');
    MultiByteToWideChar(page, 0, bytes.data(), byteCount, text.data(), units);
    return text;
}

/// The text of a settings file that is not UTF-16.
std::wstring Decoded(std::string_view bytes) {
    if (bytes.starts_with(kUtf8Mark))
        bytes.remove_prefix(kUtf8Mark.size());
    if (auto text = Utf8ToWide(bytes))
        return *std::move(text);
    return FromSystemCodePage(bytes);
}

bool WriteUtf16(const std::wstring& path, const std::wstring& text) {
    std::fstream stream;
    if (!OpenFileStream(stream, path.c_str(), std::ios::out | std::ios::trunc))
        return false;
    stream.write(kUtf16Mark.data(), kUtf16Mark.size());
    stream.write(reinterpret_cast<const char*>(text.data()),
                 static_cast<std::streamsize>(text.size() * sizeof(wchar_t)));
    stream.close();
    return stream.good();
}

/// Rewrites an existing file that is not UTF-16. What cannot be rewritten stays as it is.
void MakeUtf16(const std::wstring& path) {
    const auto bytes = ReadWholeFile(path, kLargestFile);
    if (!bytes || bytes->starts_with(kUtf16Mark))
        return;
    const std::wstring whole = path + L".new";
    if (!WriteUtf16(whole, Decoded(*bytes)) || !ReplaceWith(whole, path))
        RemoveFile(whole);
}

} // namespace

CSettingsProfile::CSettingsProfile(std::wstring path, std::wstring section)
    : m_path(std::move(path)), m_section(std::move(section)) {}

std::wstring CSettingsProfile::ReadString(const std::wstring& key) const {
    MakeUtf16(m_path);
    std::array<wchar_t, kLongestValue + 1> value{};
    const DWORD length = GetPrivateProfileStringW(m_section.c_str(), key.c_str(), L"", value.data(),
                                                  static_cast<DWORD>(value.size()), m_path.c_str());
    return {value.data(), length};
}

bool CSettingsProfile::WriteString(const std::wstring& key, const std::wstring& value) const {
    MakeUtf16(m_path);
    if (!PathExists(m_path) && !WriteUtf16(m_path, L""))
        return false;
    return WritePrivateProfileStringW(m_section.c_str(), key.c_str(), value.c_str(),
                                      m_path.c_str()) != 0;
}

} // namespace trevolt
