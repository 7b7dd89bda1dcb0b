#include "cli/StopSignal.h"

#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <ctime>

#include "cli/ExitStatus.h"

namespace velloran::cli {

namespace {

std::atomic<bool> stopFlag{false};
std::atomic<int> firstSignal{0};
std::atomic<std::int64_t> firstAt{0};  // milliseconds
static_assert(std::atomic<std::int64_t>::is_always_lock_free &&
                  std::atomic<bool>::is_always_lock_free && std::atomic<int>::is_always_lock_free,
              "a signal handler may only touch lock-free atomics");

/// One wish to stop may come as two signals at once, to the process and to its group.
constexpr std::int64_t kOneWish = 200;  // milliseconds

std::int64_t Now() {
    timespec time{};
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return std::int64_t{time.tv_sec} * 1000 + time.tv_nsec / 1'000'000;
}

void OnSignal(int number) {
    int none = 0;
    if (firstSignal.compare_exchange_strong(none, number)) {
        firstAt.store(Now());
        stopFlag.store(true);
        return;
    }
    // Nameless temporary files go with the process, named ones at the next run.
    const std::int64_t at = firstAt.load();
    if (at != 0 && Now() - at >= kOneWish)
        ::_exit(kSignalBase + none);
}

}  // namespace

void CatchStopSignals() {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction before {};
        if (::sigaction(number, nullptr, &before) == 0 && before.sa_handler == SIG_IGN)
            continue;
        struct sigaction action {};
        action.sa_handler = OnSignal;
        action.sa_flags = SA_RESTART;
        ::sigemptyset(&action.sa_mask);
        ::sigaction(number, &action, nullptr);
    }
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

std::atomic<bool>& StopFlag() {
    return stopFlag;
}

int StopStatus() {
    const int number = firstSignal.load();
    return number == 0 ? 0 : kSignalBase + number;
}

}  // namespace velloran::cli
