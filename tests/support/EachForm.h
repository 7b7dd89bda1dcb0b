#pragma once

// Runs a test in every form of the kernels that the processor has.

#include <gtest/gtest.h>

#include <string>

#include "core/ProcessorForm.h"

namespace velloran::test {

/// `work(name)` in each form, the plainest first; the form of before afterwards.
template <typename Work>
void InEachForm(Work&& work) {
    struct Restored {
        std::string before = ProcessorForm();
        ~Restored() { UseProcessorForm(before); }
    } const restored;
    for (const std::string& name : ProcessorForms()) {
        SCOPED_TRACE("in the form " + name);
        ASSERT_NE(UseProcessorForm(name), 0);
        work(name);
    }
}

}  // namespace velloran::test
