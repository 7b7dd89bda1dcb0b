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

bool IsThreadStopping(const void* thread) {
    return static_cast<const CSafeThread*>(thread)->IsStopRequested();
}

RunReport RunWholePipeline(CDibImage& image, const Settings& settings, CancelToken cancel) {
    RunRequest request;
    request.image = &image;
    request.settings = settings;
    request.mode = RunMode::kPreview;
    request.cancel = cancel;
    request.deskewEdge = settings[PARA_DESKEW_EDGE];
    return velloran::Run(request);
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

/// False when the loop is to end.
bool PreviewLoop::RunOnce() {
    CDibImage copy;
    RunReport report;
    try {
        if (!source_(copy))
            return true;
        const CancelToken cancel(IsThreadStopping, static_cast<const CSafeThread*>(&thread_));
        report = run_(copy, applied_.GetSettings(), cancel);
        report.found.ApplyTo(wanted_);
        report.found.ApplyTo(applied_);
    } catch (const std::bad_alloc&) {
        copy.Destroy();
        report.NotePage(StepResult::kNoMemory);
    }
    // The last test before the delivery: behind it the window may wait for this thread.
    if (thread_.IsStopRequested())
        return false;
    deliver_(copy, report);
    return true;
}

}  // namespace velloran
