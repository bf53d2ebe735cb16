// A file that is there for its first reader only.
#pragma once

#ifndef _WIN32

#include <cstddef>
#include <string>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "platform/FileSystem.h"
#include "tests/support/TestFiles.h"

namespace trevolt::test {

/// While it lives, whoever opens the path reads `bytes`, and the path is gone before the first of
/// them comes. `bytes` are few enough for a pipe to hold.
class CVanishingFile {
  public:
    CVanishingFile(const std::wstring& path, Bytes bytes)
        : m_path(ToNativePath(path).value()), m_bytes(std::move(bytes)) {
        EXPECT_EQ(mkfifo(m_path.c_str(), 0600), 0);
        m_writer = std::thread([this] { Serve(); });
    }
    ~CVanishingFile() {
        // A writer that nobody came to is let go.
        if (const int pipe = open(m_path.c_str(), O_RDONLY | O_NONBLOCK); pipe >= 0)
            close(pipe);
        m_writer.join();
    }
    CVanishingFile(const CVanishingFile&) = delete;
    CVanishingFile& operator=(const CVanishingFile&) = delete;

  private:
    void Serve() {
        const int pipe = open(m_path.c_str(), O_WRONLY); // waits for the reader
        unlink(m_path.c_str());
        EXPECT_EQ(write(pipe, m_bytes.data(), m_bytes.size()),
                  static_cast<ssize_t>(m_bytes.size()));
        close(pipe);
    }

    NativePath m_path;
    Bytes m_bytes;
    std::thread m_writer;
};

} // namespace trevolt::test

#endif
