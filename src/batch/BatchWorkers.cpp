#include "batch/BatchWorkers.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "batch/MemoryGate.h"
#include "core/PixelMemory.h"
#include "core/ProcessorCount.h"

namespace velloran {

namespace {

constexpr std::chrono::milliseconds kPollInterval{50};

class Workers {
 public:
    explicit Workers(const WorkerRequest& request) : request_(request), gate_(request.memory) {}

    void Run() {
        std::vector<std::thread> threads;
        const int wanted = std::max(1, request_.workers);
        for (int i = 0; i < wanted; ++i) {
            const std::lock_guard hold(lock_);
            try {
                threads.emplace_back([this] { Work(); });
                ++alive_;
            } catch (const std::system_error&) {
                break;  // fewer then
            }
        }
        if (threads.empty()) {
            alive_ = 1;
            Work();
        }
        Deliver();
        for (std::thread& thread : threads)
            thread.join();
    }

 private:
    void Work() {
        std::unique_lock hold(lock_);
        while (true) {
            changed_.wait(hold, [this] { return CanTake() || IsOver(); });
            if (IsOver())
                break;
            const bool alone = !settled_ && request_.needsAlone && request_.needsAlone();
            settled_ = !alone;
            const std::size_t index = next_++;
            ++running_;
            hold.unlock();
            const PageWork work = request_.begin(index);
            hold.lock();
            // In order, so that small files do not keep a large one waiting for ever.
            const auto mayEnter = [&] {
                return (index == entering_ && gate_.MayEnter(work.need)) || request_.stop->load();
            };
            if (!mayEnter()) {
                // What this thread keeps for its next page is memory that the others may need.
                hold.unlock();
                ReleaseFreedMemory();
                hold.lock();
                changed_.wait(hold, mayEnter);
            }
            ++entering_;
            gate_.Enter(work.need);
            changed_.notify_all();
            hold.unlock();
            SetInnerThreads(alone ? request_.aloneThreads : request_.innerThreads);
            FileOutcome outcome = work.run();
            hold.lock();
            if (gate_.IsTight()) {
                hold.unlock();
                ReleaseFreedMemory();
                hold.lock();
            }
            --running_;
            gate_.Leave(work.need);
            done_.emplace(index, std::move(outcome));
            changed_.notify_all();
        }
        --alive_;
        changed_.notify_all();
    }

    /// Until it is known that no file changes what the others see, one file runs at a time.
    bool CanTake() const { return settled_ || running_ == 0; }
    bool IsOver() const { return next_ >= request_.count || request_.stop->load(); }

    void Deliver() {
        std::unique_lock hold(lock_);
        std::size_t index = 0;
        while (index < request_.count) {
            auto found = done_.find(index);
            if (found == done_.end() && alive_ > 0) {
                changed_.wait_for(hold, kPollInterval);
                hold.unlock();
                Poll();
                hold.lock();
                continue;
            }
            FileOutcome outcome;  // stopped, for a file that never began
            if (found != done_.end()) {
                outcome = std::move(found->second);
                done_.erase(found);
            }
            hold.unlock();
            request_.deliver(index++, std::move(outcome));
            Poll();
            hold.lock();
        }
    }

    void Poll() {
        if (request_.poll && request_.poll())
            request_.stop->store(true);
        if (request_.stop->load())
            changed_.notify_all();
    }

    const WorkerRequest& request_;
    std::mutex lock_;
    std::condition_variable changed_;
    MemoryGate gate_;
    std::size_t next_ = 0, entering_ = 0;
    int running_ = 0, alive_ = 0;
    bool settled_ = false;
    std::map<std::size_t, FileOutcome> done_;
};

}  // namespace

void RunWorkers(const WorkerRequest& request) {
    Workers(request).Run();
}

WorkShares ShareProcessors(std::size_t files, int jobs, int processors) {
    WorkShares shares;
    const auto most = static_cast<int>(std::min<std::size_t>(files, 1 << 20));
    shares.workers = std::clamp(jobs, 1, std::max(1, most));
    if (most < processors)
        shares.innerThreads = std::max(1, processors / shares.workers);
    shares.aloneThreads = std::min(std::max(processors, 1), shares.workers * shares.innerThreads);
    return shares;
}

}  // namespace velloran
