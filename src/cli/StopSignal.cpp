#include "cli/StopSignal.h"

#include <csignal>

#include "cli/ExitStatus.h"

namespace velloran::cli {

namespace {

std::atomic<bool> stopFlag{false};
std::atomic<int> firstSignal{0};
static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<int>::is_always_lock_free,
              "a signal handler may only touch lock-free atomics");

void OnSignal(int number) {
    int none = 0;
    firstSignal.compare_exchange_strong(none, number);
    stopFlag.store(true);
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
}

std::atomic<bool>& StopFlag() {
    return stopFlag;
}

int StopStatus() {
    const int number = firstSignal.load();
    return number == 0 ? 0 : kSignalBase + number;
}

}  // namespace velloran::cli
