#pragma once

// What root may do says nothing of permissions: a piece of a test runs in a child process that is
// nobody.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

namespace velloran::test {

/// Runs `work`, a function giving true or false, without root's rights and gives its answer. The
/// folder of the test is opened to that user.
template <typename Work>
bool TrueAsOtherUser(const std::filesystem::path& folder, Work&& work) {
    constexpr uid_t kNobody = 65534;
    std::filesystem::permissions(folder, std::filesystem::perms::owner_all |
                                             std::filesystem::perms::others_read |
                                             std::filesystem::perms::others_exec);
    const pid_t child = fork();
    if (child == 0) {
        if (geteuid() == 0 && (setgid(kNobody) != 0 || setuid(kNobody) != 0))
            _exit(2);
        _exit(work() ? 0 : 1);
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) != 2) << "the child failed: " << status;
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace velloran::test
