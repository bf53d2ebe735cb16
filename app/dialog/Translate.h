// CTranslate: the texts of the user interface, looked up by key in a language file and a fallback
// file. A language file is UTF-8 text, with or without a byte order mark: "key=text" lines, lines
// that begin with ";" are comments, "\n" in a text is a line end and "\\" a backslash. Blanks around
// key and text are dropped, the first line of a key wins, and lines that are not valid UTF-8 or hold
// no "=" are passed over.
//
// The lookups may be called from any threads while nobody sets a path or an id.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>

namespace trevolt {

/// What `CTranslate::TranslateDialog` shows its texts on.
class CTranslatedDialog {
  public:
    virtual ~CTranslatedDialog() = default;
    virtual void ShowTitle(const std::wstring& text) = 0;
    virtual void ShowControlText(int controlId, const std::wstring& text) = 0;
};

class CTranslate {
  public:
    /// Replaces the texts by those of the two files. A file that is missing, or too large to be a
    /// language file, counts as an empty one.
    void SetLangPath(const std::wstring& languageFile, const std::wstring& fallbackFile);

    /// Replaces the texts by those of two language files that lie in memory as they stand on the disk.
    void SetLangTexts(std::string_view languageFile, std::string_view fallbackFile);

    /// Remembers the language's id. No file is read.
    void SetLangId(std::int32_t id) { m_langId = id; }
    std::int32_t LangId() const { return m_langId; }

    /// The key's text in the language file, else in the fallback file; nothing when it stands in
    /// neither.
    std::optional<std::wstring> Find(const std::wstring& key) const;

    /// The key's text. A key that stands in neither file reads as its words: the prefix up to the
    /// first underscore dropped, the other underscores turned to blanks.
    std::wstring TranslateString(const std::wstring& key) const;

    /// Shows the text of `prefix` + `templateId` as the dialog's title, and that of `prefix` + id on
    /// each of the controls. What has no text in either file keeps the one that it shows.
    void TranslateDialog(CTranslatedDialog& dialog, std::span<const int> controlIds, int templateId,
                         std::wstring_view prefix) const;

  private:
    using Texts = std::unordered_map<std::wstring, std::wstring>;

    static Texts ReadTexts(std::string_view file);

    Texts m_texts;
    Texts m_fallbackTexts;
    std::int32_t m_langId = 0;
};

/// `format` with its first "%d" replaced by `first` and its second by `second`. A translation is
/// data: whatever else stands in it is copied as it is.
std::wstring WithNumbers(const std::wstring& format, std::int32_t first, std::int32_t second);

} // namespace trevolt
