#include "batch/SafeThread.h"

#include <system_error>
#include <utility>

namespace velloran {

void CManualEvent::Set() {
    // Notified under the lock: whoever waits may destroy the event as soon as it sees the signal.
    const std::lock_guard hold(lock_);
    signalled_ = true;
    changed_.notify_all();
}

void CManualEvent::Reset() {
    const std::lock_guard hold(lock_);
    signalled_ = false;
}

bool CManualEvent::IsSet() const {
    const std::lock_guard hold(lock_);
    return signalled_;
}

void CManualEvent::Wait() const {
    std::unique_lock hold(lock_);
    changed_.wait(hold, [this] { return signalled_; });
}

bool CManualEvent::Wait(std::chrono::milliseconds time) const {
    std::unique_lock hold(lock_);
    return changed_.wait_for(hold, time, [this] { return signalled_; });
}

CSafeThread::~CSafeThread() {
    Stop();
}

void CSafeThread::SetProcedure(Procedure procedure, void* argument) {
    if (IsOwnThread())
        return;
    Stop();
    procedure_ = std::move(procedure);
    argument_ = argument;
}

bool CSafeThread::Start() {
    if (!procedure_ || IsOwnThread())
        return false;
    Stop();
    running_ = true;
    try {
        thread_ = std::thread([this] { Run(); });
    } catch (const std::system_error&) {
        running_ = false;
        return false;
    }
    return true;
}

void CSafeThread::Stop() {
    if (IsOwnThread()) {  // it cannot wait for itself
        Ask();
        return;
    }
    if (!thread_.joinable())
        return;
    if (running_)
        Ask();
    finished_.Wait();
    thread_.join();
    stopRequest_.Reset();
    finished_.Reset();
    OnReset();
}

void CSafeThread::WaitFinished() const {
    if (!IsOwnThread() && thread_.joinable())
        finished_.Wait();
}

void CSafeThread::Ask() {
    OnStopRequest();
    stopRequest_.Set();
}

void CSafeThread::Run() {
    workerId_ = std::this_thread::get_id();
    std::uint32_t result = kEndedByException;
    try {
        result = procedure_(argument_);
    } catch (...) {
        // A worker that runs out of memory must not take the program with it.
    }
    result_ = result;
    workerId_ = std::thread::id();
    running_ = false;
    finished_.Set();
}

}  // namespace velloran
