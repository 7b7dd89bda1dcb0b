#pragma once

// The forms of the kernels: each is compiled for several instruction sets, and the best that the
// processor has is used. All give the same bytes; another than the best is asked for by tests and
// to find out about a fault.

#include <string>
#include <string_view>
#include <vector>

namespace velloran {

/// Names of the forms that this processor has, the plainest first: SCALAR, then such as SSE4, AVX2.
std::vector<std::string> ProcessorForms();

/// The one in use.
std::string ProcessorForm();

/// From now on, in all threads; a kernel under way ends in its own form. Capitals do not matter.
/// Returns 0 where the processor has no such form (nothing changes), otherwise 1.
int UseProcessorForm(std::string_view name);

/// UseProcessorForm with the environment's VELLORAN_CPU, the best where it is unset or empty.
int UseProcessorFormOfEnvironment();

}  // namespace velloran
