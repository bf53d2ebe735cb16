// Language files through the translator, and the language id that a launching program hands over. An
// input is a file as it stands, or what the program wrote.
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "app/dialog/Languages.h"
#include "app/dialog/Translate.h"
#include "fuzz/FuzzInput.h"
#include "platform/LaunchLanguage.h"
#include "trevolt/Utf8.h"

namespace trevolt::fuzz {
namespace {

constexpr std::string_view kOtherFile = "Trevolt_Start=Start\nTrevolt_Angle=Angle\\n\\\\\n";

CTranslate TranslateBy(std::string_view language, std::string_view fallback) {
    CTranslate translate;
    translate.SetLangTexts(language, fallback);
    return translate;
}

/// What may be a key: all that stands before a "=", with and without the blanks around it.
std::set<std::wstring> KeysOf(std::string_view file) {
    std::set<std::wstring> keys{L"Trevolt_Start", L"Trevolt_Angle", L""};
    for (std::size_t equals = file.find('='); equals != std::string_view::npos;
         equals = file.find('=', equals + 1)) {
        const std::size_t begin = file.find_last_of("\n=", equals - (equals == 0 ? 0 : 1));
        std::string_view key = file.substr(0, equals).substr(begin + 1 <= equals ? begin + 1 : 0);
        while (!key.empty() && (key.front() == ' ' || key.front() == '\t'))
            key.remove_prefix(1);
        while (!key.empty() && (key.back() == ' ' || key.back() == '\t'))
            key.remove_suffix(1);
        if (const auto wide = Utf8ToWide(key))
            keys.insert(*wide);
    }
    return keys;
}

/// Checks that a key's text is the language file's, else the fallback file's, else made of its words.
void CheckOrder(std::string_view file, const std::wstring& key) {
    const auto own = TranslateBy(file, "").Find(key);
    const auto other = TranslateBy(kOtherFile, "").Find(key);
    Check(TranslateBy(file, kOtherFile).Find(key) == (own ? own : other));
    Check(TranslateBy(kOtherFile, file).Find(key) == (other ? other : own));
    const std::wstring shown = TranslateBy(file, kOtherFile).TranslateString(key);
    Check(own || other ? shown == (own ? *own : *other)
                       : shown.find(L'_') == std::wstring::npos && shown.size() <= key.size());
}

/// Checks that later lines of a key change nothing.
void CheckFirstWins(std::string_view file, const std::wstring& key) {
    const std::string twice = std::string(file) + "\n" + std::string(file);
    Check(TranslateBy(twice, "").Find(key) == TranslateBy(file, "").Find(key));
}

/// Checks that an id chooses a language's two files only where it is one of those that have them.
void CheckLaunch(std::string_view given) {
    const std::int32_t id = LaunchLanguageOf(given);
    std::int64_t expected = 0;
    for (std::size_t i = 0; i < 4 && i < given.size(); ++i)
        expected += std::int64_t{static_cast<unsigned char>(given[i])} << (8 * i);
    Check(id == static_cast<std::int32_t>(expected));
    const bool isListed = id >= 1 && id <= 12 && id != 3;
    Check((FindLanguageFiles(id).language == L"Multi_eng.ini") != isListed);
}

void CheckLanguageFile(std::string_view file) {
    CheckLaunch(file);
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    while (file.starts_with(kByteOrderMark)) // no mark once it stands in the middle
        file.remove_prefix(kByteOrderMark.size());
    for (const std::wstring& key : KeysOf(file)) {
        CheckOrder(file, key);
        CheckFirstWins(file, key);
    }
}

} // namespace
} // namespace trevolt::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kMostBytes = 512; // each key is looked up in every order
    trevolt::fuzz::CheckLanguageFile(
        {reinterpret_cast<const char*>(data), size < kMostBytes ? size : kMostBytes});
    return 0;
}
