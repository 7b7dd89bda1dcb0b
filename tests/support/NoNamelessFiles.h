#pragma once

// File systems of the network and of USB sticks have no files without a name. This makes the
// system refuse them to the calling process and to the programs it starts.

#include <fcntl.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

#include <array>
#include <cerrno>
#include <cstddef>

namespace velloran::test {

/// For good; false where the system has no such filters.
inline bool RefuseNamelessFiles() {
    constexpr auto kNameless = static_cast<unsigned>(O_TMPFILE & ~O_DIRECTORY);
    std::array<sock_filter, 6> rules = {{
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_openat, 0, 3),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, args) + 2 * sizeof(__u64)),
        BPF_JUMP(BPF_JMP | BPF_JSET | BPF_K, kNameless, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EOPNOTSUPP),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    }};
    const sock_fprog program{rules.size(), rules.data()};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

}  // namespace velloran::test
