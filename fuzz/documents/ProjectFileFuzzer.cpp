// Any bytes as a project file: no row leads out of its folder, and what is written of a project is
// read back as it was.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "documents/book/BookProject.h"
#include "documents/book/BookRows.h"
#include "documents/book/RowName.h"

namespace {

using namespace velloran;

void Require(bool holds) {
    if (!holds)
        std::abort();
}

bool IsThere(const std::string&) {
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    std::optional<BookProject> project = ParseProject(bytes, "folder", IsThere);
    if (!project)
        return 0;
    for (const BookRow& row : project->rows)
        Require(IsInnerName(TextOfName(row.source)));
    RebuildTargets(*project);
    Require(FindPartners(*project).size() == project->rows.size());
    const std::optional<BookProject> again =
        ParseProject(ProjectBytes(*project), "folder", IsThere);
    Require(again && again->rows.size() == project->rows.size());
    for (std::size_t i = 0; i < again->rows.size(); ++i)
        Require(again->rows[i].source == project->rows[i].source &&
                again->rows[i].values == project->rows[i].values);
    Require(again->start == project->start && again->ext == project->ext &&
            again->target == project->target);
    return 0;
}
