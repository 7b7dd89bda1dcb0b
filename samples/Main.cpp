// velloran-samples: writes sample pages and what is known of them.

#include <CLI/CLI.hpp>
#include <atomic>
#include <exception>
#include <filesystem>
#include <iostream>

#include "samples/SampleFiles.h"

#ifdef _OPENMP
#include <omp.h>
#endif

namespace {

using namespace velloran::samples;

struct Options {
    std::filesystem::path folder;
    SampleSet set;
    int threads = 0;
};

void AddOptions(CLI::App& app, Options& options) {
    SampleSet& set = options.set;
    const auto side = CLI::Range(kSmallestSide, kLargestSide);
    app.add_option("OUT_DIR", options.folder, "Folder for the pages; made where it is missing")
        ->required();
    app.add_option("--set", set.name, "Kinds of pages")
        ->check(CLI::IsMember({"demo", "text", "comic", "spread", "all"}))
        ->capture_default_str();
    app.add_option("--count", set.count, "Number of pages; default: each kind of the set once")
        ->check(CLI::Range(1, 100000));
    app.add_option("--seed", set.seed, "Another seed gives other pages")->capture_default_str();
    app.add_option("--width", set.width, "Pixels; default: A4")->check(side);
    app.add_option("--height", set.height, "Pixels; default: A4")->check(side);
    app.add_option("--dpi", set.dpi, "Dots per inch")
        ->check(CLI::Range(30, 2400))
        ->capture_default_str();
    app.add_option("--angle", set.angleDegrees, "Skew of all flat pages, degrees clockwise")
        ->check(CLI::Range(-kLargestTurn, kLargestTurn));
    app.add_option("--format", set.format, "File format")
        ->check(CLI::IsMember({"jpg", "png", "tif"}))
        ->capture_default_str();
    app.add_option("--quality", set.quality, "Of JPEG files")
        ->check(CLI::Range(1, 100))
        ->capture_default_str();
    app.add_flag("--masks", set.inkMasks, "Also write the ink of each page as NAME_ink.png");
    app.add_option("--threads", options.threads, "Pages at once; default: all processors")
        ->check(CLI::Range(1, 1024));
}

void SetThreadCount([[maybe_unused]] int count) {
#ifdef _OPENMP
    omp_set_num_threads(count);
#endif
}

/// The number of pages that failed.
int WriteAll(const Options& options, const std::vector<SampleRequest>& requests) {
    std::atomic<int> failed = 0;
    const int count = static_cast<int>(requests.size());
#pragma omp parallel for schedule(dynamic)
    for (int i = 0; i < count; ++i) {
        try {
            WriteSample(options.set, requests[i], i + 1, options.folder);
        } catch (const std::exception& error) {
            ++failed;
#pragma omp critical(report)
            std::cerr << SampleName(i + 1, requests[i].kind) << ": " << error.what() << "\n";
        }
    }
    return failed;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app("Writes sample scans, and beside each what is known of it as JSON.",
                 "velloran-samples");
    Options options;
    AddOptions(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : 2;
    }
    std::error_code cause;
    std::filesystem::create_directories(options.folder, cause);
    if (cause) {
        std::cerr << options.folder.string() << ": " << cause.message() << "\n";
        return 1;
    }
    if (options.threads > 0)
        SetThreadCount(options.threads);
    const std::vector<SampleRequest> requests = RequestsOf(options.set);
    const int failed = WriteAll(options, requests);
    std::cout << requests.size() - static_cast<std::size_t>(failed) << " pages in "
              << options.folder.string() << "\n";
    return failed == 0 ? 0 : 1;
}
