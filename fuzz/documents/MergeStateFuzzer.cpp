// Any bytes as the file of a merge: options and rows are read, and what is written is read back.

#include "documents/merge/MergeState.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace {

using namespace velloran;

void Require(bool holds) {
    if (!holds)
        std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ProfileFile profile;
    profile.Parse({reinterpret_cast<const char*>(data), size});
    MergeState state;
    ReadMergeOptions(profile, state.para);
    state.items = {{.name = "a.jpg"}, {.name = "b.jpg", .folder = 1}, {.name = "Main"}};
    ReadMergeItems(profile, state.items);
    ProfileFile written;
    WriteMergeState(state, written);
    MergeState again;
    ReadMergeOptions(written, again.para);
    again.items = {{.name = "a.jpg"}, {.name = "b.jpg", .folder = 1}};
    ReadMergeItems(written, again.items);
    Require(again.para.layout == state.para.layout && again.para.fill == state.para.fill &&
            again.para.jpeg == state.para.jpeg);
    for (std::size_t i = 0; i < again.items.size(); ++i)
        Require(again.items[i].offsetH == state.items[i].offsetH &&
                again.items[i].deskewAngle == state.items[i].deskewAngle &&
                again.items[i].checked == state.items[i].checked);
    return 0;
}
