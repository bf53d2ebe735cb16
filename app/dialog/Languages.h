// Which language files the translator gets: by the language id of the launching program, and for
// the moment at start-up before an id is known.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "app/dialog/Translate.h"

namespace trevolt {

/// The names of a language's file and of the file that answers for the keys it lacks.
struct SLanguageFiles {
    std::wstring_view language;
    std::wstring_view fallback;
    friend bool operator==(const SLanguageFiles&, const SLanguageFiles&) = default;
};

/// The files of a language id; English for an id that names no language.
SLanguageFiles FindLanguageFiles(std::int32_t id);

/// The folder of the start-up language, three folders above the program's, with its separator.
std::wstring StartLanguageFolder(const std::wstring& moduleFolder);

/// The folder of the tools' languages, with its separator.
std::wstring ToolsLanguageFolder(const std::wstring& moduleFolder);

/// Gives the translator the start-up language: the Chinese file, with its own bare name as fallback,
/// or with the English file as fallback where the Chinese one is missing.
void SelectStartLanguage(CTranslate& translate, const std::wstring& moduleFolder);

/// Gives the translator the id and the tools' files of that language.
void SelectToolsLanguage(CTranslate& translate, const std::wstring& moduleFolder, std::int32_t id);

} // namespace trevolt
