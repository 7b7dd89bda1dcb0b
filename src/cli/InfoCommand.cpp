#include <fmt/format.h>

#include <string>
#include <vector>

#include "cli/Causes.h"
#include "cli/Commands.h"
#include "cli/Console.h"
#include "cli/ExitStatus.h"
#include "cli/Json.h"
#include "codecs/ColorProfile.h"
#include "codecs/LoadNotes.h"
#include "files/FileType.h"
#include "files/ImageFiles.h"
#include "text/Labels.h"
#include "text/Text.h"

namespace velloran::cli {

namespace {

/// The description of the profile; a profile without one is told by an empty text.
Json ProfileAsJson(const LoadNotes& notes) {
    if (notes.metadata == nullptr || notes.metadata->profile.empty())
        return Json();
    return Json(ProfileDescription(notes.metadata->profile));
}

Json InfoAsJson(const std::string& path, int type, const ImageInfo& info, const LoadNotes& notes,
                bool read) {
    Json json = Json::Object();
    json.AddPath(path);
    json.Add("type", type);
    json.Add("typeName", FileTypeName(type));
    json.Add("width", info.width);
    json.Add("height", info.height);
    json.Add("bpp", info.bitsPerPixel);
    json.Add("colours", info.colorsUsed);
    json.Add("xDpi", info.xDpi);
    json.Add("yDpi", info.yDpi);
    json.Add("grey", info.gray);
    json.Add("error", read ? Json() : Json(labels::kLoadFailed.Text()));
    json.Add("pages", read ? notes.pictures : 0);
    json.Add("profile", ProfileAsJson(notes));
    json.Add("exif", notes.metadata != nullptr && !notes.metadata->exif.empty());
    json.Add("xmp", notes.metadata != nullptr && !notes.metadata->xmp.empty());
    return json;
}

}  // namespace

int RunInfo(const ParsedWords& words) {
    int status = kDone;
    Json all = Json::Array();
    for (const std::string& path : words.operands) {
        int type = kTypeUnknown;
        ImageInfo info;
        LoadNotes notes;
        FileError error;
        const bool read =
            ReadImageInfo(path, type, info, &error, words.Has(Option::kJson) ? &notes : nullptr);
        if (!read) {
            info = {.xDpi = 0, .yDpi = 0};
            PrintFailure({.path = path,
                          .message = labels::kLoadFailed,
                          .cause = CauseText(error.reason),
                          .detail = error.detail});
            status = kFileFailed;
        }
        if (words.Has(Option::kJson))
            all.Append(InfoAsJson(path, type, info, notes, read));
        else if (read)
            Print(fmt::format("{}\t{}\t{}\t{}\t{}\t{}\t{}\t{}\t{}\n", OutputName(path), type,
                              FileTypeName(type), info.width, info.height, info.bitsPerPixel,
                              info.colorsUsed, info.xDpi, info.yDpi));
    }
    if (words.Has(Option::kJson))
        PrintJson(all);
    return FinishOutput(status);
}

}  // namespace velloran::cli
