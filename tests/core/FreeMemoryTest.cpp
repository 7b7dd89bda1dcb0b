#include "core/FreeMemory.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/Sanitized.h"

namespace velloran::test {
namespace {

TEST(FreeMemory, TheMachineTellsWhatIsAvailable) {
    EXPECT_EQ(AvailableOfMemInfo("MemTotal:   100 kB\nMemFree: 5 kB\nMemAvailable:   60 kB\n"),
              60 * 1024);
    EXPECT_EQ(AvailableOfMemInfo("MemTotal:   100 kB\n"), 0);
    EXPECT_GT(FreeMemory(), 0);
}

TEST(FreeMemory, AContainerLeavesItsLimitWithoutWhatIsUsed) {
    EXPECT_EQ(LeftInContainer("1000\n", "700\n", "anon 500\ninactive_file 150\n"), 450);
    EXPECT_EQ(LeftInContainer("1000\n", "700\n", "total_inactive_file 200\n"), 500)
        << "of the older layout";
    EXPECT_EQ(LeftInContainer("1000", "1700", ""), 0);
    EXPECT_EQ(LeftInContainer("max\n", "700\n", ""), -1);
    EXPECT_EQ(LeftInContainer("9223372036854771712\n", "700\n", ""), -1)
        << "the older layout's word for no limit";
    EXPECT_EQ(LeftInContainer("", "", ""), -1);
}

TEST(FreeMemory, TheOwnAddressSpaceIsALimitToo) {
    if (test::kSanitized)
        GTEST_SKIP() << "the sanitizer needs more address space than the limit leaves";
    const pid_t child = fork();
    if (child == 0) {
        constexpr rlim_t kBytes = rlim_t{900} << 20;
        const rlimit limit{kBytes, kBytes};
        const bool set = setrlimit(RLIMIT_AS, &limit) == 0;
        _exit(set && FreeMemory() < static_cast<std::int64_t>(kBytes) ? 0 : 1);
    }
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

}  // namespace
}  // namespace velloran::test
