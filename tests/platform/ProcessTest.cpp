#include "platform/Process.h"

#include <gtest/gtest.h>

#ifndef _WIN32
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace trevolt {
namespace {

TEST(Process, ItsRealmIsKnownAndStays) {
    EXPECT_NE(ProcessRealm(), 0U);
    EXPECT_EQ(ProcessRealm(), ProcessRealm());
}

TEST(Process, OneThatRunsIsNotGone) {
    EXPECT_FALSE(IsProcessGone(ProcessId()));
    EXPECT_TRUE(IsProcessGone(0x7FFFFFF0)) << "above every id that systems give";
}

#ifndef _WIN32
TEST(Process, OneThatEndedIsGone) {
    const pid_t child = fork();
    if (child == 0)
        _exit(0);
    ASSERT_EQ(waitpid(child, nullptr, 0), child);
    EXPECT_TRUE(IsProcessGone(static_cast<std::uint32_t>(child)));
    EXPECT_FALSE(IsProcessGone(1)) << "another user's, which may not be asked";
    // Numbers that mean groups of processes.
    EXPECT_FALSE(IsProcessGone(0));
    EXPECT_FALSE(IsProcessGone(0xFFFFFFFF));
}
#endif

} // namespace
} // namespace trevolt
