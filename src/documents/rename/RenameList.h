#pragma once

// The list of the renamer: which files of a folder, in which order, and their new names. Names are
// the bytes of the disk, without a folder.

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "io/FileError.h"

namespace velloran {

struct RenameRow {
    std::string source, target;
    bool operator==(const RenameRow&) const = default;
};

enum class RenameSort { kName, kCreated, kModified };
enum class RenameSelection { kAll, kOdd, kEven, kEveryMth };

struct RenameFilter {
    int type = 0;  // position in the list of file types: 0 pictures, 1 to 8 a kind, 9 all files
    RenameSort sort = RenameSort::kName;
    bool descending = false;
    RenameSelection selection = RenameSelection::kAll;
    int first = 1, every = 1;  // N and M: from the N-th file each M-th
};

/// 1 JPEG, 2 GIF, 3 BMP, 4 PNG, 5 TIFF, 6 JPEG 2000, 7 WebP, 8 camera raw, 9 anything else; by
/// the extension, ignoring case.
int FileKind(std::string_view name);

/// The place of a page in a scanned book by the first characters of its name: 0 cover, 1 title, 2
/// copyright, 3 foreword, 4 contents ("!"), 5 body ("0"), 6 inserts, 7 attachments, 8 back, 9
/// anything else.
int PageGroup(std::string_view name);

/// Why a filter cannot be used; empty when it can.
std::u16string_view RefuseFilter(const RenameFilter& filter);

/// Reads the folder into the list, targets empty. Where no name stands outside the page groups and
/// they are two or more, a sort by name is one by group and then by name, never reversed. False
/// where the folder cannot be listed.
bool FillList(const std::filesystem::path& folder, const RenameFilter& filter,
              std::vector<RenameRow>& rows, FileError* error);

/// Appends files chosen by hand. Those of another folder are refused; those in the list already
/// are not added again.
struct AddedFiles {
    std::size_t added = 0, alreadyThere = 0, ofOtherFolders = 0;
};
AddedFiles AddFiles(const std::filesystem::path& folder,
                    const std::vector<std::filesystem::path>& files, std::vector<RenameRow>& rows);

struct Numbering {
    bool useNumber = true;
    std::string prefix = {}, suffix = {};
    int digits = 0;  // position in the list "1" to "8": 0 is without padding, else width + 1
    std::int64_t start = 1, step = 1;
    bool keepExtension = true;
};

/// Writes the targets in the order of the list: prefix, number and suffix, or prefix and the
/// source's own name, then its extension. A step below 1 is refused: the message, rows unchanged.
std::u16string_view Renumber(const Numbering& numbering, std::vector<RenameRow>& rows);

}  // namespace velloran
