// A book of 5,000 rows read, written and changed, and a run with one page at a time beside one with
// two.

#include <benchmark/benchmark.h>

#include <fstream>

#include "TempBenchFolder.h"
#include "core/DibImage.h"
#include "documents/Asker.h"
#include "documents/book/BookApply.h"
#include "documents/book/BookConvert.h"
#include "documents/book/BookRows.h"
#include "documents/book/BookStore.h"
#include "files/ImageFiles.h"
#include "params/ParaBlock.h"
#include "support/Page.h"
#include "text/PathText.h"

namespace velloran::bench {
namespace {

constexpr std::size_t kRows = 5000;

class YesAsker : public Asker {
 public:
    std::size_t Choose(const Question&) override { return 0; }
    void Tell(std::u16string_view) override {}
    void TellEnd(const EndMessage&) override {}
    void TellFailure(const BatchFailure&) override {}
    void Warn(const std::string&) override {}
};

/// `changed` values differ in each row.
BookProject ProjectOf(const TempBenchFolder& folder, int changed) {
    BookProject project;
    project.source = folder.Path();
    for (std::size_t i = 0; i < kRows; ++i) {
        BookRow row{std::to_string(i) + ".jpg", {}};
        std::ofstream(folder / row.source) << "x";
        for (std::size_t p = 0; p < static_cast<std::size_t>(changed); ++p)
            row.values[p] += static_cast<std::int32_t>(i % 7) + 1;
        project.rows.push_back(std::move(row));
    }
    return project;
}

void ReadProject(benchmark::State& state) {
    const TempBenchFolder folder;
    YesAsker asker;
    BookProject project = ProjectOf(folder, static_cast<int>(state.range(0)));
    if (SaveProject(project, false, asker).end != BookEnd::kDone)
        state.SkipWithError("not written");
    for (auto _ : state) {
        BookProject read;
        if (LoadProject(folder.Path(), read).end != BookEnd::kDone || read.rows.size() != kRows)
            state.SkipWithError("not read");
    }
}
BENCHMARK(ReadProject)->Arg(5)->Arg(134)->Unit(benchmark::kMillisecond);

void WriteProject(benchmark::State& state) {
    const TempBenchFolder folder;
    YesAsker asker;
    BookProject project = ProjectOf(folder, static_cast<int>(state.range(0)));
    for (auto _ : state) {
        project.zoom = (project.zoom + 1) % 7;  // an unchanged project is not written
        if (SaveProject(project, false, asker).end != BookEnd::kDone)
            state.SkipWithError("not written");
    }
}
BENCHMARK(WriteProject)->Arg(5)->Arg(134)->Unit(benchmark::kMillisecond);

void ApplyToAllRows(benchmark::State& state) {
    const TempBenchFolder folder;
    BookProject project = ProjectOf(folder, 134);
    for (auto _ : state) {
        ApplyToRows(project, 0, AllParaIndexes(), RowsOf(project, 0, ApplyTo::kAll),
                    GeometryRule::kAuto);
        benchmark::DoNotOptimize(project.rows.data());
    }
}
BENCHMARK(ApplyToAllRows)->Unit(benchmark::kMillisecond);

void ConvertBook(benchmark::State& state) {
    constexpr int kPages = 6;
    const TempBenchFolder folder;
    std::filesystem::create_directory(folder / "src");
    CDibImage page = ScannedPage(24);
    const std::filesystem::path first = folder / "src/0.jpg";
    if (!SaveImageFile(first, page, 90, 300, 2, false, CParaBlock()))
        state.SkipWithError("no page");
    BookProject project;
    project.source = folder / "src";
    project.target = PathText(folder / "out");
    for (int i = 0; i < kPages; ++i) {
        const std::string name = std::to_string(i) + ".jpg";
        if (i > 0)
            std::filesystem::copy_file(first, project.source / name);
        project.rows.push_back({name, {}});
        project.rows.back().values[PARA_CONTRAST] = 120;
    }
    RebuildTargets(project);
    YesAsker asker;
    for (auto _ : state)
        if (ConvertAll(project,
                       {.jobs = static_cast<int>(state.range(0)), .log = folder / "log.txt"}, asker)
                .converted != kPages)
            state.SkipWithError("a page failed");
}
BENCHMARK(ConvertBook)->Arg(1)->Arg(2)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace velloran::bench
