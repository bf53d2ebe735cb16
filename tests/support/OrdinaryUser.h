// Somebody who is refused what the superuser is not.
#pragma once

#include <unistd.h>

#include <gtest/gtest.h>

namespace trevolt::test {

/// Lets the system refuse what it lets nobody but root do.
class COrdinaryUser {
  public:
    COrdinaryUser() { EXPECT_EQ(m_user == 0 ? seteuid(kNobody) : 0, 0); }
    ~COrdinaryUser() { EXPECT_EQ(seteuid(m_user), 0); }
    COrdinaryUser(const COrdinaryUser&) = delete;
    COrdinaryUser& operator=(const COrdinaryUser&) = delete;

  private:
    static constexpr uid_t kNobody = 65534;
    const uid_t m_user = geteuid();
};

} // namespace trevolt::test
