// CSettingsProfile: one section of a settings file, "[section]" and "key=value" lines, as the
// Windows profile functions understand it, on every system the same file. Names are compared without
// regard to case, the first match wins, blanks around a value are trimmed and one pair of quotes is
// stripped; a comment stands at the start of a line, after ";".
//
// The file is UTF-16 with a byte order mark, so that any folder name survives. One that an earlier
// program left as UTF-8 or in the system's code page is read as that, and rewritten as UTF-16 with the
// same content before it is first written.
//
// Used by one thread at a time.
#pragma once

#include <string>

#include "platform/CodePage.h"

namespace trevolt {

class CSettingsProfile {
  public:
    /// Longest value that is read; what follows is cut.
    static constexpr std::size_t kLongestValue = 999;

    /// `path` is the settings file's full path, `codePage` the one of a file that is neither UTF-16
    /// nor UTF-8. Nothing is read or written yet.
    CSettingsProfile(std::wstring path, std::wstring section, unsigned codePage = SystemCodePage());

    /// The key's value; empty when the file, the section or the key is missing.
    std::wstring ReadString(const std::wstring& key) const;

    /// Sets the key's value, making the file and the section where they are missing. False when it
    /// could not be written.
    bool WriteString(const std::wstring& key, const std::wstring& value) const;

  private:
    std::wstring m_path;
    std::wstring m_section;
    unsigned m_codePage;
};

} // namespace trevolt
