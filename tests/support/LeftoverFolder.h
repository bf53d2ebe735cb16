// A folder where a file that a killed run left takes the last room.
#pragma once

#include <algorithm>
#include <chrono>
#include <climits>
#include <cstddef>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "platform/FileSystem.h"
#include "tests/support/TestFiles.h"

namespace trevolt::test {

/// A folder so deep that no file under work fits into it: each would have a longer path than the
/// system takes. What a run left there long ago has a shorter name.
class CLeftoverFolder {
  public:
    CLeftoverFolder() {
        constexpr std::size_t kPart = 200;
        const std::size_t length = PATH_MAX - 1 - kLeft.size();
        m_path = m_above.Path();
        while (length - m_path.size() > 2 * kPart)
            m_path += std::wstring(kPart - 1, L'd') + kPathSeparator;
        while (m_path.size() < length) {
            const std::size_t part = std::min(kPart, length - m_path.size());
            m_path += std::wstring(part - 1, L'e') + kPathSeparator;
        }
        EXPECT_TRUE(CreateFolders(m_path));
        WriteText(Left(), "half");
        std::filesystem::last_write_time(ToNativePath(Left()).value(),
                                         std::filesystem::file_time_type::clock::now() -
                                             std::chrono::hours(24 * 8));
    }

    /// With the separator at its end.
    const std::wstring& Path() const { return m_path; }
    std::wstring Left() const { return m_path + kLeft; }

  private:
    static inline const std::wstring kLeft = L".trevolt-1-1-1-1.tmp";

    CTemporaryFolder m_above;
    std::wstring m_path;
};

} // namespace trevolt::test
