#pragma once

// What long work on the user-interface thread calls between its steps, so that the window stays
// alive and the press of a stop button reaches its flag.

#include <functional>

namespace velloran {

/// Sets the pump of a front end: a function that handles all waiting messages without blocking.
/// An empty one, the state at start, makes PumpMessages do nothing.
void SetMessagePump(std::function<void()> pump);

/// Runs the pump when called on the thread that set it; elsewhere nothing, as a worker must not
/// handle a window's messages.
void PumpMessages();

}  // namespace velloran
