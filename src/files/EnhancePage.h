#pragma once

// The run of a loaded page. A page that is still transparent keeps that as long as the run and its
// target do; where either cannot, it is laid on the fill colour and run again.

#include "files/LoadPage.h"
#include "pipeline/Run.h"

namespace velloran {

/// `run.image` is set here. Neither label nor poll is told of the second run's beginning.
RunReport EnhancePage(const LoadPageRequest& load, LoadedPage& page, RunRequest run);

}  // namespace velloran
