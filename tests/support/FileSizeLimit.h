// A disk that fills up, for tests on POSIX systems.
#pragma once

#include <csignal>

#include <sys/resource.h>

#include <gtest/gtest.h>

namespace trevolt::test {

/// No file grows past `bytes`, until the holder goes.
class CFileSizeLimit {
  public:
    explicit CFileSizeLimit(rlim_t bytes) : m_handler(std::signal(SIGXFSZ, SIG_IGN)) {
        EXPECT_EQ(getrlimit(RLIMIT_FSIZE, &m_before), 0);
        const rlimit limit{bytes, m_before.rlim_max};
        EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    }
    ~CFileSizeLimit() {
        EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &m_before), 0);
        EXPECT_NE(std::signal(SIGXFSZ, m_handler), SIG_ERR);
    }
    CFileSizeLimit(const CFileSizeLimit&) = delete;
    CFileSizeLimit& operator=(const CFileSizeLimit&) = delete;

  private:
    void (*m_handler)(int);
    rlimit m_before{};
};

} // namespace trevolt::test
