#include "documents/measure/FolderWalk.h"

#include <system_error>

#include "core/MessagePump.h"
#include "documents/Asker.h"
#include "files/SrchDir.h"
#include "io/FileError.h"
#include "text/Labels.h"

namespace velloran {

namespace {

class ToolWalker : public CSrchDir {
 public:
    ToolWalker(Asker& asker, const std::function<void(const std::filesystem::path&)>& work)
        : asker_(asker), work_(work) {}

    WalkEnd end;

 protected:
    void OnFile(const std::filesystem::path& path, const FindData&) override {
        PumpMessages();
        if (asker_.IsStopped()) {
            end.wasStopped = true;
            Stop();
            return;
        }
        work_(path);
    }
    void OnFolderUnreadable(const std::filesystem::path& folder,
                            const std::error_code& reason) override {
        constexpr int kOpenFailed = 1;
        ++end.unreadableFolders;
        asker_.TellFailure({.path = folder.native(),
                            .message = labels::kLogRows[kOpenFailed],
                            .detail = reason.message(),
                            .reason = ReasonOfErrno(reason.value())});
    }

 private:
    Asker& asker_;
    const std::function<void(const std::filesystem::path&)>& work_;
};

}  // namespace

std::u16string_view RefuseWalk(const FolderWalk& walk) {
    if (walk.folder.empty())
        return labels::kNoSourceFolder;
    std::error_code ignored;
    if (!std::filesystem::is_directory(walk.folder, ignored))
        return labels::kSourceInvalid;
    if (walk.filter.empty())
        return labels::kNoTypesChosen;
    return {};
}

WalkEnd WalkFiles(const FolderWalk& walk, Asker& asker,
                  const std::function<void(const std::filesystem::path&)>& work) {
    ToolWalker walker(asker, work);
    walker.SetUp(walk.filter, nullptr, walk.recursive);
    walker.Walk(walk.folder);
    return walker.end;
}

}  // namespace velloran
