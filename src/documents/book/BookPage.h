#pragma once

// One page of a book: read, judged, enhanced with the values of its row, named, saved.

#include <atomic>
#include <functional>
#include <string>
#include <string_view>

#include "batch/ConvertFile.h"
#include "documents/book/BookProject.h"
#include "pipeline/FoundValues.h"
#include "pipeline/Run.h"

namespace velloran {

class CDibImage;

struct BookPageRequest {
    const BookProject* project = nullptr;
    std::filesystem::path target;  // folder
    const std::atomic<bool>* stop = nullptr;
    bool isAlone = false;    // what a page takes in memory is not asked for
    bool wantsSure = false;  // what is found is also judged
    std::function<void(std::string_view source, std::u16string_view stage)> stage;
};

/// The values with which a row's page is run: its own, and the project's rule of names.
Settings SettingsOfRow(const BookProject& project, const BookRow& row);

/// Why the pages cannot be written as the project says, with the row at fault; empty where they
/// can. A reduced page wants a type that holds it.
std::u16string RefuseColors(const BookProject& project, std::string& source);

/// Begins the page of a row; what the run finds comes into `found`, which must outlive the work.
PageWork BeginBookPage(const BookPageRequest& request, std::size_t row, FoundValues& found);

/// The picture of a row as a run with the stop code shows it.
enum class PreviewEnd { kDone, kUnreadable, kFailed, kCancelled };
PreviewEnd RunBookPreview(const BookProject& project, std::size_t row, int stop, CancelToken cancel,
                          CDibImage& image, FoundValues& found, FileError* error);

}  // namespace velloran
