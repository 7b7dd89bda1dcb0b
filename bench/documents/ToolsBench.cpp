// The folder tools over 10,000 files.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <vector>

#include "TempBenchFolder.h"
#include "core/DibImage.h"
#include "documents/Asker.h"
#include "documents/measure/FileStats.h"
#include "documents/rename/RenameRun.h"
#include "files/ImageFiles.h"
#include "params/ParaBlock.h"

namespace velloran::bench {
namespace {

constexpr int kFiles = 10000;

class SilentAsker : public Asker {
 public:
    std::size_t Choose(const Question& question) override { return question.safe; }
    void Tell(std::u16string_view) override {}
    void TellEnd(const EndMessage&) override {}
    void TellFailure(const BatchFailure&) override {}
    void Warn(const std::string&) override {}
};

void FillWithPictures(const TempBenchFolder& folder) {
    CDibImage page;
    page.Create(600, 400, 24, 0);
    page.Clear(200);
    const std::filesystem::path first = folder / "page0.jpg";
    SaveImageFile(first, page, 90, 300, 2, false, CParaBlock());
    for (int i = 1; i < kFiles; ++i)
        std::filesystem::copy_file(first, folder / ("page" + std::to_string(i) + ".jpg"));
}

void FloorOpenAndRead(benchmark::State& state) {
    const TempBenchFolder folder;
    FillWithPictures(folder);
    std::vector<std::string> names;
    for (auto _ : state) {
        names.clear();
        for (const auto& entry : std::filesystem::directory_iterator(folder.Path()))
            names.push_back(entry.path().native());
        std::ranges::sort(names);
        std::array<char, 4096> bytes{};
        for (const std::string& name : names) {
            const int file = ::open(name.c_str(), O_RDONLY | O_CLOEXEC);
            benchmark::DoNotOptimize(::read(file, bytes.data(), bytes.size()));
            ::close(file);
        }
    }
}
BENCHMARK(FloorOpenAndRead)->Unit(benchmark::kMillisecond);

void MeasurePictures(benchmark::State& state) {
    const TempBenchFolder folder;
    FillWithPictures(folder);
    SilentAsker asker;
    for (auto _ : state)
        if (MeasureFolder({folder.Path(), u"*.jpg", true}, asker).stats.Count() != kFiles)
            state.SkipWithError("not all were counted");
}
BENCHMARK(MeasurePictures)->Unit(benchmark::kMillisecond);

void PlanRenames(benchmark::State& state) {
    const TempBenchFolder folder;
    FillWithPictures(folder);
    for (auto _ : state) {
        RenameRequest request;
        request.source = folder.Path();
        if (!FillList(request.source, {}, request.rows, nullptr) ||
            !Renumber({.prefix = "p", .digits = 4}, request.rows).empty() ||
            !JudgePlan(request).empty())
            state.SkipWithError("no plan");
    }
}
BENCHMARK(PlanRenames)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace velloran::bench
