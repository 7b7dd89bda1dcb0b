#pragma once

// What the progress window of a long run holds: a bar, a path and the user's wish to cancel. The
// window shows it; without a window the same object serves a terminal.

#include <atomic>
#include <functional>
#include <string>
#include <string_view>

namespace velloran {

class ProgressModel {
 public:
    /// `changed` is called after each change of what is to be seen, on the thread that made it.
    explicit ProgressModel(std::function<void()> changed = {});

    /// Limits of the bar, 0 to 100 at first; the position is brought between them. Limits in the
    /// wrong order are swapped.
    void SetRange(int low, int high);
    /// Values outside the range are limited.
    void SetPos(int pos);
    /// One further, up to the upper limit.
    void StepIt();
    void ShowPath(std::u16string_view path);

    /// The cancel button: sets the flag for good and closes.
    void Cancel();
    /// The end of the run, cancelled or not.
    void Close();

    /// May be asked from any thread.
    bool IsCancelled() const { return cancelled_; }
    bool IsOpen() const { return open_; }

    int GetLow() const { return low_; }
    int GetHigh() const { return high_; }
    int GetPos() const { return pos_; }
    /// 0 to 1; 1 for an empty range.
    double GetFraction() const;
    const std::u16string& GetPath() const { return path_; }

 private:
    void Tell() const;

    std::function<void()> changed_;
    int low_ = 0, high_ = 100, pos_ = 0;
    std::u16string path_;
    std::atomic<bool> cancelled_{false};
    bool open_ = true;
};

/// As a cancel function of a run, with a ProgressModel as context: pumps messages, then reads the
/// flag.
int CancelOfProgress(void* progressModel);

}  // namespace velloran
