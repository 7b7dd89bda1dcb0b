#pragma once

// The run log: which files of a run failed, and why. A UTF-16 text file that a user opens in an
// editor; it exists only when something failed.

#include <filesystem>
#include <string>

#include "io/FileError.h"

namespace velloran {

/// Rows of labels::kLogRows that a batch run writes.
enum LogRow : int {
    kLogWriteFailed = 2,
    kLogReadFailed = 3,
    kLogOutOfMemory = 6,
    kLogDamaged = 7,
    kLogConversionFailed = 25,
};

class RunLog {
 public:
    /// Nothing is touched before Reset or the first failure.
    explicit RunLog(std::filesystem::path file) : file_(std::move(file)) {}
    ~RunLog() { Close(); }
    RunLog(const RunLog&) = delete;
    RunLog& operator=(const RunLog&) = delete;

    /// Deletes the log of the run before and forgets the lines. A log that another run is writing
    /// is left alone, and so is a file that is no log.
    void Reset();

    /// Appends a line: path, TAB, the row's text, CR LF; a second TAB stands before the text of
    /// row 7. An empty path, the path of the line before (ignoring case) and a row that does not
    /// exist write nothing. The first line creates the file; when another run holds it, or it is no
    /// log, a numbered name beside it is taken. False when the line could not be written.
    bool LogFailure(const std::filesystem::path& path, int row, FileError* error = nullptr);

    bool HasLogLines() const { return lines_ > 0; }
    int CountLines() const { return lines_; }

    /// The file of this run: as given, or the numbered one once that was taken.
    const std::filesystem::path& File() const { return file_; }

 private:
    bool CreateFile(FileError* error);
    bool TakeOver(const std::filesystem::path& file, FileError* error);
    void Close();

    std::filesystem::path file_;
    int descriptor_ = -1;  // open and locked from the first line on
    int lines_ = 0;
    std::u16string lastPath_;
};

}  // namespace velloran
