#pragma once

// A worker thread that can be asked to end and is waited for: it is idle, running or stopping.
// The work polls IsStopRequested, or sleeps in WaitStop or on an event of its own that
// OnStopRequest sets. Start, Stop and SetProcedure belong to one thread, the user of the object.

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>

namespace velloran {

/// Stays signalled until it is reset; not signalled at first.
class CManualEvent {
 public:
    void Set();
    void Reset();
    bool IsSet() const;
    /// Returns once it is signalled.
    void Wait() const;
    /// True when it is, or becomes, signalled within the time. 0 only looks.
    bool Wait(std::chrono::milliseconds time) const;

 private:
    mutable std::mutex lock_;
    mutable std::condition_variable changed_;
    bool signalled_ = false;
};

class CSafeThread {
 public:
    using Procedure = std::function<std::uint32_t(void* argument)>;
    /// The result of a procedure that an exception ended.
    static constexpr std::uint32_t kEndedByException = 0xFFFFFFFF;

    CSafeThread() = default;
    /// Stops a running thread. A derived class whose OnStopRequest uses own fields stops in its own
    /// destructor, while they still stand.
    virtual ~CSafeThread();
    CSafeThread(const CSafeThread&) = delete;
    CSafeThread& operator=(const CSafeThread&) = delete;

    /// Stops a running thread first, then stores both; nothing runs before Start. Ignored when the
    /// thread itself calls it.
    void SetProcedure(Procedure procedure, void* argument = nullptr);

    /// Stops a running thread first, then starts a new one. False without a procedure, without
    /// a thread to be had, and when the thread itself calls it.
    bool Start();

    /// Asks a running thread to end and waits for it without a time limit; the caller must hold
    /// no lock that the thread takes. Nothing when idle. When the thread itself calls it, only
    /// asks.
    void Stop();

    /// Whether the procedure has been started and not ended.
    bool IsRunning() const { return running_; }
    bool IsStopRequested() const { return stopRequest_.IsSet(); }
    /// True when the stop is, or becomes, requested within the time.
    bool WaitStop(std::chrono::milliseconds time) const { return stopRequest_.Wait(time); }
    /// Returns once a started procedure has ended; at once when none was started.
    void WaitFinished() const;
    /// What the last procedure that ended returned; 0 before any has.
    std::uint32_t GetResult() const { return result_; }

    /// For the user of the thread; nothing here takes it.
    std::recursive_mutex& Lock() { return lock_; }

 protected:
    /// Called by Stop on a running thread, just before the stop request is set.
    virtual void OnStopRequest() {}
    /// Called when the events are reset, between two runs of the thread.
    virtual void OnReset() {}

 private:
    void Run();
    void Ask();
    bool IsOwnThread() const { return workerId_.load() == std::this_thread::get_id(); }

    std::thread thread_;
    std::atomic<std::thread::id> workerId_{};  // none unless the procedure runs
    std::recursive_mutex lock_;
    CManualEvent finished_, stopRequest_;
    Procedure procedure_;
    void* argument_ = nullptr;
    std::atomic<bool> running_{false};
    std::atomic<std::uint32_t> result_{0};
};

/// A thread whose loop sleeps on an event and is woken by a stop at once.
class CNormalThread : public CSafeThread {
 public:
    ~CNormalThread() override { Stop(); }

    /// Sleeps for the time, or until the thread is asked to stop; true when it was.
    bool WaitWake(std::chrono::milliseconds time) const { return wake_.Wait(time); }

 protected:
    void OnStopRequest() override { wake_.Set(); }
    void OnReset() override { wake_.Reset(); }

 private:
    CManualEvent wake_;
};

}  // namespace velloran
