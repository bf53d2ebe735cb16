// Settings files. An input is a file as it stands.
#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/FuzzInput.h"
#include "platform/SettingsText.h"

namespace trevolt::fuzz {
namespace {

constexpr const wchar_t* kSection = L"coefInfo";
constexpr std::array kKeys{L"OriCoefPath", L"TargetCoefPath", L"BoxWidth", L"ScreenHeight"};
constexpr const wchar_t* kValue = L"D:\\Wall 7\\\u00B0=[x]";

std::array<std::wstring, kKeys.size()> ValuesOf(const SettingsLines& lines) {
    std::array<std::wstring, kKeys.size()> values;
    for (std::size_t i = 0; i < kKeys.size(); ++i)
        values[i] = FindSetting(lines, kSection, kKeys[i]);
    return values;
}

/// Checks that a changed key has its new value, the others what they had, and that all of the lines
/// stay.
void CheckChange(SettingsLines lines, std::size_t changed) {
    const std::size_t count = lines.size();
    auto expected = ValuesOf(lines);
    expected[changed] = kValue;
    ChangeSetting(lines, kSection, kKeys[changed], kValue);
    Check(ValuesOf(lines) == expected);
    Check(lines.size() >= count && lines.size() <= count + 2);
}

void CheckSettingsFile(std::string_view file) {
    for (const unsigned codePage : {1252U, 936U, 0xFFFFU}) {
        const SettingsLines lines = DecodeSettings(file, codePage);
        for (const std::wstring& line : lines)
            Check(line.find(L'\n') == std::wstring::npos);
        for (std::size_t i = 0; i < kKeys.size(); ++i)
            CheckChange(lines, i);
    }
}

} // namespace
} // namespace trevolt::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    trevolt::fuzz::CheckSettingsFile({reinterpret_cast<const char*>(data), size});
    return 0;
}
