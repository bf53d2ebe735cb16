// Files for tests: temporary folders, whole-file bytes, and the sample files of the project.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace trevolt::test {

using Bytes = std::vector<std::byte>;

/// Bytes from integers: MakeBytes({0xA7, 0x00}).
Bytes MakeBytes(std::initializer_list<int> values);

/// A folder of its own, removed with all that is in it. `Path()` ends with the separator.
class CTemporaryFolder {
  public:
    CTemporaryFolder();
    ~CTemporaryFolder();
    CTemporaryFolder(const CTemporaryFolder&) = delete;
    CTemporaryFolder& operator=(const CTemporaryFolder&) = delete;

    const std::wstring& Path() const { return m_path; }
    std::wstring File(std::wstring_view name) const { return m_path + std::wstring(name); }
    /// The names in the folder, sorted, without "." and "..".
    std::vector<std::wstring> Names() const;

  private:
    std::wstring m_path;
};

bool FileExists(const std::wstring& path);
/// The whole file; a failure is reported to the running test.
Bytes ReadFile(const std::wstring& path);
std::string ReadText(const std::wstring& path);
void WriteFile(const std::wstring& path, const Bytes& bytes);
void WriteText(const std::wstring& path, std::string_view text);

/// Path of a file below the project's samples/ folder, named with slashes.
std::wstring Sample(std::wstring_view name);

} // namespace trevolt::test
