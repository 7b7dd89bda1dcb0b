#pragma once

// The rules under which an open document is saved, and what a save dialog begins with. Windows and
// the command line share them; the texts are those of core/Labels.

#include <filesystem>
#include <string>
#include <string_view>

#include "core/CancelToken.h"
#include "core/Pipeline.h"
#include "io/FileError.h"

namespace velloran {

class CDibImage;
class CParaBlock;

/// PARA_DPI limited to 0..8000.
int SaveDpi(const CParaBlock& block);

/// Before the pipeline: the message of a depth that the target's type cannot hold, empty when it
/// may be saved. The 16-bit depths want BMP, the other reductions a type of IsColourReducedTarget.
std::u16string_view RefusalOfDepth(const std::filesystem::path& target, int colourIndex);

/// After the pipeline: the same for what the run made of the image. A palette that is no grey ramp
/// wants a type of IsColourReducedTarget.
std::u16string_view RefusalOfResult(const std::filesystem::path& target, const CDibImage& result);

/// How the pipeline runs for a save; the labels are told to nobody where none are given.
struct SaveRun {
    int stop = kStopWhole;
    CancelToken cancel;
    LabelFunction label;
    int ownDpi = 0;          // of the source, to be kept; 0: PARA_DPI
    bool isPreview = false;  // runs without labels, so that colours are only made to look reduced
};

enum class SaveOutcome { kSaved, kRefused, kFailed, kStopped };

struct SaveResult {
    SaveOutcome outcome = SaveOutcome::kFailed;
    std::u16string_view message;  // for the user; empty when saved or stopped
    FileError error;              // the reason of kFailed
};

/// Runs the pipeline on a copy of the document's image with its block, and saves the copy with the
/// block's quality, dpi, colours and GIF crop. Nothing is written unless all rules are kept.
SaveResult SaveDocument(const std::filesystem::path& target, const CDibImage& image,
                        CParaBlock& block, const SaveRun& run = {});

/// Whether a document may be saved under its old name: ids 1, 3, 4, 5, 6, 9, 10 by extension. For
/// another name the user is asked labels::kOnlyJpegAsk, and JpegNameFor is taken on Yes.
bool CanKeepName(const std::filesystem::path& path);
std::filesystem::path JpegNameFor(const std::filesystem::path& path);

/// The extension without dot that a save dialog begins with, by the type id of the document's
/// source and PARA_COLOR.
std::u16string_view FirstSaveExtension(int sourceType, int colourIndex);

/// The message for a path that cannot be opened as a document, which holds "?" or names nothing;
/// empty when it may be tried.
std::u16string OpenRefusal(const std::filesystem::path& path);

}  // namespace velloran
