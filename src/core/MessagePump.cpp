#include "core/MessagePump.h"

#include <memory>
#include <mutex>
#include <thread>
#include <utility>

namespace velloran {

namespace {

using Pump = std::function<void()>;

struct InstalledPump {
    std::mutex lock;
    std::thread::id owner;
    std::shared_ptr<const Pump> pump;
};

InstalledPump& Installed() {
    static InstalledPump installed;
    return installed;
}

/// Shared, so that a pump that sets another one outlives its own call.
std::shared_ptr<const Pump> PumpOfThisThread() {
    InstalledPump& installed = Installed();
    const std::lock_guard hold(installed.lock);
    return installed.owner == std::this_thread::get_id() ? installed.pump : nullptr;
}

}  // namespace

void SetMessagePump(std::function<void()> pump) {
    const auto shared = pump ? std::make_shared<const Pump>(std::move(pump)) : nullptr;
    InstalledPump& installed = Installed();
    const std::lock_guard hold(installed.lock);
    installed.owner = std::this_thread::get_id();
    installed.pump = shared;
}

void PumpMessages() {
    if (const auto pump = PumpOfThisThread())
        (*pump)();
}

}  // namespace velloran
