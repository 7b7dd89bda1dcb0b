#include "batch/ProgressModel.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "core/MessagePump.h"

namespace velloran {

ProgressModel::ProgressModel(std::function<void()> changed) : changed_(std::move(changed)) {}

void ProgressModel::SetRange(int low, int high) {
    low_ = std::min(low, high);
    high_ = std::max(low, high);
    pos_ = std::clamp(pos_, low_, high_);
    Tell();
}

void ProgressModel::SetPos(int pos) {
    pos_ = std::clamp(pos, low_, high_);
    Tell();
}

void ProgressModel::StepIt() {
    if (pos_ < high_)
        ++pos_;
    Tell();
}

void ProgressModel::ShowPath(std::u16string_view path) {
    path_ = path;
    Tell();
}

void ProgressModel::Cancel() {
    cancelled_ = true;
    Close();
}

void ProgressModel::Close() {
    if (!open_)
        return;
    open_ = false;
    Tell();
}

double ProgressModel::GetFraction() const {
    const auto length = static_cast<std::int64_t>(high_) - low_;
    const auto done = static_cast<std::int64_t>(pos_) - low_;
    return length == 0 ? 1.0 : static_cast<double>(done) / static_cast<double>(length);
}

void ProgressModel::Tell() const {
    if (changed_)
        changed_();
}

int CancelOfProgress(void* progressModel) {
    PumpMessages();
    return static_cast<const ProgressModel*>(progressModel)->IsCancelled() ? 1 : 0;
}

}  // namespace velloran
