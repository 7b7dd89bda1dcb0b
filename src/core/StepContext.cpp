#include "core/StepContext.h"

#include <algorithm>
#include <exception>
#include <new>

namespace velloran {
namespace {

thread_local StepContext* current = nullptr;

}  // namespace

StepContext::StepContext(CancelToken cancel) noexcept : cancel_(cancel), outer_(current) {
    current = this;
}

StepContext::~StepContext() {
    current = outer_;
}

void StepContext::PassFailureOn() const noexcept {
    if (failed_ && outer_ != nullptr)
        outer_->Note(FailureText());
}

void StepContext::Note(std::string_view failure) noexcept {
    if (failed_)
        return;
    failed_ = true;
    std::copy_n(failure.data(), std::min(failure.size(), failureText_.size() - 1),
                failureText_.data());
}

CancelToken CurrentCancel() noexcept {
    return current != nullptr ? current->cancel_ : CancelToken();
}

void NoteOutOfMemory() noexcept {
    if (current != nullptr)
        current->outOfMemory_ = true;
}

void NoteFailure(std::string_view what) noexcept {
    if (current != nullptr)
        current->Note(what);
}

void NoteException() noexcept {
    try {
        throw;
    } catch (const std::bad_alloc&) {
        NoteOutOfMemory();
    } catch (const std::exception& failure) {
        NoteFailure(failure.what());
    } catch (...) {
        NoteFailure("unknown exception");
    }
}

}  // namespace velloran
