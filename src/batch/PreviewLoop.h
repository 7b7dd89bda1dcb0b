#pragma once

// The background preview of a view: a worker that runs the pipeline again after each change of the
// parameters that alters pixels, about every 100 ms at most, and hands the result to the window.

#include <cstdint>
#include <functional>

#include "batch/SafeThread.h"
#include "pipeline/Run.h"

namespace velloran {

class CDibImage;
class CParaBlock;

class PreviewLoop {
 public:
    /// Copies the document's image into an empty one, on the worker; false when there is none.
    using Source = std::function<bool(CDibImage& copy)>;
    /// Takes a result over (Transfer, or a copy), on the worker; when it returns, the result goes.
    /// A report that is not whole wants a note beside the picture: not all was done to it. Where
    /// memory did not even hold the copy the result is empty. A window that is told by a
    /// synchronous call must not Stop from inside that call.
    using Deliver = std::function<void(CDibImage& result, const RunReport& report)>;
    /// What is run on the copy; the whole pipeline as a preview where none is given.
    using Run =
        std::function<RunReport(CDibImage& image, const Settings& settings, CancelToken cancel)>;

    /// `wanted` is the block that the user edits, `applied` the one of the image on screen. Both
    /// must outlive the loop; what a run finds is written into both.
    PreviewLoop(Source source, CParaBlock& wanted, CParaBlock& applied, Deliver deliver,
                Run run = {});
    /// Stops.
    ~PreviewLoop();
    PreviewLoop(const PreviewLoop&) = delete;
    PreviewLoop& operator=(const PreviewLoop&) = delete;

    bool Start() { return thread_.Start(); }
    /// Waits for the worker, which ends at its next poll and delivers nothing more. The caller must
    /// hold no lock that the source or the delivery takes.
    void Stop() { thread_.Stop(); }
    bool IsRunning() const { return thread_.IsRunning(); }

 private:
    std::uint32_t Loop();
    bool RunOnce();

    Source source_;
    CParaBlock& wanted_;
    CParaBlock& applied_;
    Deliver deliver_;
    Run run_;
    CNormalThread thread_;  // last: it uses all of the others
};

}  // namespace velloran
