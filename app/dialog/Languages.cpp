#include "app/dialog/Languages.h"

#include <algorithm>
#include <array>

#include "platform/FileSystem.h"

namespace trevolt {
namespace {

constexpr std::wstring_view kChinese = L"Multi_chi.ini";
constexpr std::wstring_view kEnglish = L"Multi_eng.ini";

struct SLanguage {
    std::int32_t id;
    SLanguageFiles files;
};

constexpr std::array kLanguages{
    SLanguage{1, {kChinese, kChinese}},
    SLanguage{2, {L"Multi_chi_fanti.ini", kChinese}},
    SLanguage{4, {L"Multi_French.ini", kEnglish}},
    SLanguage{5, {L"Multi_Japanese.ini", kEnglish}},
    SLanguage{6, {L"Multi_Korean.ini", kEnglish}},
    SLanguage{7, {L"Multi_Russian.ini", kEnglish}},
    SLanguage{8, {L"Multi_Thai.ini", kEnglish}},
    SLanguage{9, {L"Multi_Spanish.ini", kEnglish}},
    SLanguage{10, {L"Multi_Polish.ini", kEnglish}},
    SLanguage{11, {L"Multi_Swedish.ini", kEnglish}},
    SLanguage{12, {L"Multi_Portuguese.ini", kEnglish}},
};

constexpr SLanguageFiles kOtherLanguages{kEnglish, kEnglish};

std::wstring Joined(std::wstring folder, std::wstring_view name) { return folder.append(name); }

} // namespace

SLanguageFiles FindLanguageFiles(std::int32_t id) {
    const auto found = std::find_if(kLanguages.begin(), kLanguages.end(),
                                    [&](const SLanguage& language) { return language.id == id; });
    return found == kLanguages.end() ? kOtherLanguages : found->files;
}

std::wstring StartLanguageFolder(const std::wstring& moduleFolder) {
    std::wstring folder = moduleFolder;
    for (const wchar_t* step : {L"..", L"..", L"..", L"Language"})
        folder.append(step).push_back(kPathSeparator);
    return folder;
}

std::wstring ToolsLanguageFolder(const std::wstring& moduleFolder) {
    return StartLanguageFolder(moduleFolder) + L"Tools" + kPathSeparator;
}

void SelectStartLanguage(CTranslate& translate, const std::wstring& moduleFolder) {
    const std::wstring folder = StartLanguageFolder(moduleFolder);
    const std::wstring first = Joined(folder, kChinese);
    const bool isFile = PathExists(first) && !IsFolder(first);
    translate.SetLangPath(first, isFile ? std::wstring(kChinese) : Joined(folder, kEnglish));
}

void SelectToolsLanguage(CTranslate& translate, const std::wstring& moduleFolder, std::int32_t id) {
    const std::wstring folder = ToolsLanguageFolder(moduleFolder);
    const SLanguageFiles files = FindLanguageFiles(id);
    translate.SetLangId(id);
    translate.SetLangPath(Joined(folder, files.language), Joined(folder, files.fallback));
}

} // namespace trevolt
