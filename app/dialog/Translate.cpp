#include "app/dialog/Translate.h"

#include <algorithm>

#include "platform/FileStream.h"
#include "platform/TrimmedText.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

constexpr std::uint64_t kLargestFile = 4U << 20U;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

/// Takes the first line off `text`, without its line end.
std::string_view TakeLine(std::string_view& text) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    return line;
}

std::wstring Unescaped(std::wstring_view text) {
    std::wstring out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const wchar_t next = text[i] == L'\\' && i + 1 < text.size() ? text[i + 1] : L'\0';
        if (next == L'n')
            out.push_back(L'\n');
        else
            out.push_back(text[i]);
        if (next == L'n' || next == L'\\')
            ++i;
    }
    return out;
}

} // namespace

CTranslate::Texts CTranslate::ReadTexts(std::string_view file) {
    std::string_view rest = file;
    if (rest.starts_with(kByteOrderMark))
        rest.remove_prefix(kByteOrderMark.size());

    Texts texts;
    while (!rest.empty()) {
        const std::string_view line = Trimmed(TakeLine(rest));
        const std::size_t equals = line.find('=');
        if (line.starts_with(';') || equals == std::string_view::npos)
            continue;
        const auto key = Utf8ToWide(Trimmed(line.substr(0, equals)));
        const auto text = Utf8ToWide(Trimmed(line.substr(equals + 1)));
        if (key && text)
            texts.try_emplace(*key, Unescaped(*text));
    }
    return texts;
}

void CTranslate::SetLangPath(const std::wstring& languageFile, const std::wstring& fallbackFile) {
    const auto contentOf = [](const std::wstring& path) {
        return ReadWholeFile(path, kLargestFile).value_or("");
    };
    SetLangTexts(contentOf(languageFile), contentOf(fallbackFile));
}

void CTranslate::SetLangTexts(std::string_view languageFile, std::string_view fallbackFile) {
    m_texts = ReadTexts(languageFile);
    m_fallbackTexts = ReadTexts(fallbackFile);
}

std::optional<std::wstring> CTranslate::Find(const std::wstring& key) const {
    for (const Texts* texts : {&m_texts, &m_fallbackTexts}) {
        const auto found = texts->find(key);
        if (found != texts->end())
            return found->second;
    }
    return std::nullopt;
}

std::wstring CTranslate::TranslateString(const std::wstring& key) const {
    if (auto text = Find(key))
        return *std::move(text);
    const std::size_t underscore = key.find(L'_');
    std::wstring words = underscore == std::wstring::npos ? key : key.substr(underscore + 1);
    std::replace(words.begin(), words.end(), L'_', L' ');
    return words;
}

void CTranslate::TranslateDialog(CTranslatedDialog& dialog, std::span<const int> controlIds,
                                 int templateId, std::wstring_view prefix) const {
    const auto find = [&](int id) { return Find(std::wstring(prefix) + std::to_wstring(id)); };
    if (const auto title = find(templateId))
        dialog.ShowTitle(*title);
    for (const int id : controlIds)
        if (const auto text = find(id))
            dialog.ShowControlText(id, *text);
}

std::wstring WithNumbers(const std::wstring& format, std::int32_t first, std::int32_t second) {
    constexpr std::wstring_view kPlaceholder = L"%d";
    std::wstring out;
    std::wstring_view rest = format;
    for (const std::int32_t number : {first, second}) {
        const std::size_t place = rest.find(kPlaceholder);
        if (place == std::wstring_view::npos)
            break;
        out.append(rest.substr(0, place)).append(std::to_wstring(number));
        rest.remove_prefix(place + kPlaceholder.size());
    }
    return out.append(rest);
}

} // namespace trevolt
