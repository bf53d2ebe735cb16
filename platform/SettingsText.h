// The text of a settings file: "[section]" and "key=value" lines, found as the Windows profile
// functions find them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace trevolt {

inline constexpr std::string_view kUtf16Mark = "\xFF\xFE";

/// What is larger is no settings file.
inline constexpr std::uint64_t kLargestSettingsFile = 4U << 20U;

using SettingsLines = std::vector<std::wstring>;

/// The lines of a file's bytes: UTF-16 by its mark, else UTF-8 where they are that, with or without
/// a mark, else text in `codePage`. Where that page is not known each byte becomes the character of
/// its number.
SettingsLines DecodeSettings(std::string_view bytes, unsigned codePage);

/// The key's value, empty when the section or the key is missing.
std::wstring FindSetting(SettingsLines lines, std::wstring_view section, std::wstring_view key);

/// Sets the key's value, adding what is missing.
void ChangeSetting(SettingsLines& lines, const std::wstring& section, const std::wstring& key,
                   const std::wstring& value);

} // namespace trevolt
