#include "batch/PreviewLoop.h"

#include <chrono>
#include <new>
#include <random>
#include <utility>

#include "core/DibImage.h"
#include "params/ParaBlock.h"

namespace velloran {

namespace {

/// Drawn once a thread, so that two views do not fall into step.
std::chrono::milliseconds DrawWait() {
    std::random_device seed;
    std::uniform_int_distribution<int> wait(100, 110);
    return std::chrono::milliseconds(wait(seed));
}

int IsThreadStopping(void* thread) {
    return static_cast<const CSafeThread*>(thread)->IsStopRequested() ? 1 : 0;
}

void RunWholePipeline(CDibImage& image, CParaBlock& block, CancelFunction cancel, void* context) {
    block.RunPipeline(&image, cancel, context, LabelFunction(), kStopWhole, nullptr);
}

}  // namespace

PreviewLoop::PreviewLoop(Source source, CParaBlock& wanted, CParaBlock& applied, Deliver deliver,
                         Run run)
    : source_(std::move(source)),
      wanted_(wanted),
      applied_(applied),
      deliver_(std::move(deliver)),
      run_(run ? std::move(run) : Run(RunWholePipeline)) {
    thread_.SetProcedure([this](void*) { return Loop(); });
}

PreviewLoop::~PreviewLoop() {
    Stop();
}

std::uint32_t PreviewLoop::Loop() {
    const std::chrono::milliseconds wait = DrawWait();
    while (!thread_.IsStopRequested()) {
        thread_.WaitWake(wait);
        if (thread_.IsStopRequested())
            return 0;
        const bool isUnchanged = applied_.CopyFrom(wanted_, /*ignoreOutputOnly=*/true);
        if (!isUnchanged && !RunOnce())
            return 0;
    }
    return 0;
}

/// False when the loop is to end. A page that memory does not hold is left out.
bool PreviewLoop::RunOnce() {
    try {
        CDibImage copy;
        if (!source_(copy))
            return true;
        run_(copy, wanted_, IsThreadStopping, static_cast<CSafeThread*>(&thread_));
        // The last test before the delivery: behind it the window may wait for this thread.
        if (thread_.IsStopRequested())
            return false;
        deliver_(copy);
    } catch (const std::bad_alloc&) {
    }
    return true;
}

}  // namespace velloran
