// What a batch run costs beside the decoding and encoding of its pages. The floor reads and writes
// the same pages with nothing between; the ratio of the processor times is the figure.

#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <filesystem>
#include <stdexcept>
#include <string>

#include "batch/BatchEngine.h"
#include "core/DibImage.h"
#include "core/ProcessorCount.h"
#include "files/ImageFiles.h"
#include "params/ParaBlock.h"
#include "support/Page.h"

namespace velloran::bench {
namespace {

namespace fs = std::filesystem;

constexpr int kPages = 6;

/// A folder with pages, gone at the end.
class PageFolder {
 public:
    PageFolder() {
        std::string name = (fs::temp_directory_path() / "velloran-bench-XXXXXX").native();
        if (::mkdtemp(name.data()) == nullptr)
            throw std::runtime_error("no temporary folder");
        folder_ = name;
        fs::create_directory(folder_ / "src");
        fs::create_directory(folder_ / "out");
        CDibImage page = ScannedPage(24);
        const CParaBlock block;
        if (!SaveImageFile(Source(0), page, 90, 300, 2, false, block))
            throw std::runtime_error("the page cannot be written");
        for (int i = 1; i < kPages; ++i)
            fs::copy_file(Source(0), Source(i));
    }
    ~PageFolder() {
        std::error_code ignored;
        fs::remove_all(folder_, ignored);
    }
    PageFolder(const PageFolder&) = delete;
    PageFolder& operator=(const PageFolder&) = delete;

    fs::path Folder() const { return folder_; }
    fs::path Source(int i) const { return folder_ / "src" / (std::to_string(i) + ".jpg"); }
    fs::path Target(int i) const { return folder_ / "out" / (std::to_string(i) + ".jpg"); }

 private:
    fs::path folder_;
};

void CountPages(benchmark::State& state) {
    state.SetItemsProcessed(state.iterations() * kPages);
}

void FloorReadAndWritePages(benchmark::State& state) {
    const PageFolder pages;
    const CParaBlock block;
    SetInnerThreads(1);
    for (auto _ : state)
        for (int i = 0; i < kPages; ++i) {
            CDibImage image;
            if (!LoadImageFile(pages.Source(i), image) ||
                !SaveImageFile(pages.Target(i), image, 70, 300, 2, false, block))
                state.SkipWithError("a page failed");
        }
    CountPages(state);
}
BENCHMARK(FloorReadAndWritePages)->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);

void BatchPages(benchmark::State& state) {
    const PageFolder pages;
    BatchRequest request;
    request.source = pages.Folder() / "src";
    request.target = pages.Folder() / "out";
    request.log = pages.Folder() / "log.txt";
    request.jobs = static_cast<int>(state.range(0));
    for (auto _ : state)
        if (RunBatch(request, {}).converted != kPages)
            state.SkipWithError("a page failed");
    CountPages(state);
}
BENCHMARK(BatchPages)
    ->Arg(1)
    ->Arg(2)
    ->MeasureProcessCPUTime()
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace velloran::bench
