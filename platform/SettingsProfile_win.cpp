#include "platform/SettingsProfile.h"

#include <array>
#include <fstream>
#include <utility>

#include <windows.h>

#include "platform/FileStream.h"
#include "platform/FileSystem.h"
#include "platform/SettingsText.h"

namespace trevolt {
namespace {

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

/// Sees to it that a UTF-16 file stands at the path: the profile functions keep what they find.
/// False when there is none in the end; a file of another encoding then is as it was.
bool MakeUtf16(const std::wstring& path, unsigned codePage) {
    if (!PathExists(path))
        return WriteUtf16(path, L"");
    const auto bytes = ReadWholeFile(path, kLargestSettingsFile);
    if (!bytes || bytes->starts_with(kUtf16Mark))
        return bytes.has_value();
    std::wstring text;
    for (const std::wstring& line : DecodeSettings(*bytes, codePage))
        text += line + L"\r\n";
    if (kUtf16Mark.size() + text.size() * sizeof(wchar_t) > kLargestSettingsFile)
        return false; // it could not be read again
    const std::wstring whole = path + L".new";
    if (WriteUtf16(whole, text) && ReplaceWith(whole, path))
        return true;
    RemoveFile(whole);
    return false;
}

} // namespace

CSettingsProfile::CSettingsProfile(std::wstring path, std::wstring section, unsigned codePage)
    : m_path(std::move(path)), m_section(std::move(section)), m_codePage(codePage) {}

/// The profile functions read what is not UTF-16 in the program's active code page, which by its
/// manifest is UTF-8.
std::wstring CSettingsProfile::ReadString(const std::wstring& key) const {
    const auto bytes = ReadWholeFile(m_path, kLargestSettingsFile);
    if (bytes && !bytes->starts_with(kUtf16Mark))
        return FindSetting(DecodeSettings(*bytes, m_codePage), m_section, key)
            .substr(0, kLongestValue);
    std::array<wchar_t, kLongestValue + 1> value{};
    const DWORD length = GetPrivateProfileStringW(m_section.c_str(), key.c_str(), L"", value.data(),
                                                  static_cast<DWORD>(value.size()), m_path.c_str());
    return {value.data(), length};
}

bool CSettingsProfile::WriteString(const std::wstring& key, const std::wstring& value) const {
    return MakeUtf16(m_path, m_codePage) &&
           WritePrivateProfileStringW(m_section.c_str(), key.c_str(), value.c_str(),
                                      m_path.c_str()) != 0;
}

} // namespace trevolt
