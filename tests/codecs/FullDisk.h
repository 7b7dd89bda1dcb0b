#pragma once

// A disk that is full: while it lives, no file of this process grows beyond a size.

#include <sys/resource.h>

#include <csignal>

namespace velloran::test {

class FullDisk {
 public:
    explicit FullDisk(rlim_t bytes) : oldHandler_(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &oldLimit_);
        const rlimit limit{bytes, oldLimit_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &oldLimit_);
        std::signal(SIGXFSZ, oldHandler_);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

 private:
    rlimit oldLimit_{};
    void (*oldHandler_)(int);
};

}  // namespace velloran::test
