// velloran-curved-accuracy: draws curved pages of known truth, searches their curves, and tells how
// straight their lines are before and after.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "core/DibImage.h"
#include "dewarping/CurvePoints.h"
#include "dewarping/Dewarp.h"
#include "dewarping/FindCurves.h"
#include "dewarping/ResampleFlat.h"
#include "files/ImageFiles.h"
#include "params/ParaBlock.h"
#include "samples/CurvedPage.h"
#include "samples/CurvedScore.h"

namespace {

using namespace velloran;
using namespace velloran::samples;

constexpr double kTolerance = 0.15;

struct Options {
    int count = 40, dpi = 150, method = 0, illum = 1, only = -1, strength = -1;
    std::uint64_t seed = 1;
    bool verbose = false, kinds = false;
    std::filesystem::path pictures;
    std::vector<std::string> files;
};

/// Of the pages of one strength.
struct Tally {
    std::vector<double> before, after;
    int pages = 0, found = 0, worse = 0;
    double usual(std::vector<double> values, double share) const {
        std::sort(values.begin(), values.end());
        return values.empty() ? 0
                              : values[static_cast<std::size_t>(share * double(values.size() - 1))];
    }
    static double Within(const std::vector<double>& values) {
        const auto within =
            std::count_if(values.begin(), values.end(), [](double v) { return v <= kTolerance; });
        return values.empty() ? 0 : 100.0 * double(within) / double(values.size());
    }
};

SampleRequest KindAt(int index, const Options& options) {
    SampleRequest request;
    request.kind = static_cast<PageKind>(index % kPageKindCount);
    request.dpi = options.dpi;
    request.width = 2480 * options.dpi / 300;
    request.height = 3508 * options.dpi / 300;
    if (IsTwoPages(request.kind))
        std::swap(request.width, request.height);
    request.seed = options.seed + static_cast<std::uint64_t>(index);
    return request;
}

void WritePicture(const std::filesystem::path& path, CDibImage image) {
    constexpr int kQuality = 90, kTrueColor = 0;
    FileError error;
    if (!SaveImageFile(path, image, kQuality, image.GetXDpi(), kTrueColor, /*cropGif=*/false,
                       CParaBlock(), &error))
        std::fprintf(stderr, "%s: cannot be written\n", path.c_str());
}

/// The picture itself and, where it has curves, the picture made flat.
void WriteBeforeAndAfter(const std::filesystem::path& folder, const std::string& name,
                         const CDibImage& image, const dewarping::CurveFinding& finding) {
    WritePicture(folder / (name + "_before.png"), image);
    CDibImage flat = image;
    if (dewarping::dewarp(dewarping::kCubic, flat, finding.top.data(), finding.bottom.data(),
                          dewarping::kCurvePoints, 0) != 0)
        WritePicture(folder / (name + "_after.png"), flat);
}

void PrintFinding(const char* name, const dewarping::CurveFinding& finding) {
    const auto& e = finding.evidence;
    std::printf(
        "%-46s found %d sure %.2f lines %d/%d long %d share %.2f residual %.3f halves %.3f "
        "bow %.2f w %.2f h %.2f pitch %.0f own %.3f %.3f",
        name, finding.found, finding.sure, e.agreeingLines, e.tracedLines, e.longLines,
        e.agreeingShare, e.residual, e.halvesApart, e.bow, e.widthShare, e.heightShare, e.linePitch,
        finding.bentBefore, finding.bentAfter);
}

/// Pictures from outside, of which nothing is known.
void TryFiles(const Options& options) {
    for (const std::string& file : options.files) {
        CDibImage image;
        if (!LoadImageFile(file, image)) {
            std::fprintf(stderr, "%s: cannot be read\n", file.c_str());
            continue;
        }
        const auto finding = dewarping::measureCurves(options.method, image, options.illum);
        const std::string name = std::filesystem::path(file).stem().string();
        PrintFinding(name.c_str(), finding);
        std::printf("\n");
        if (!options.pictures.empty())
            WriteBeforeAndAfter(options.pictures, name, image, finding);
    }
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app("Measures how straight the search for curves makes lines of known truth.",
                 "velloran-curved-accuracy");
    Options options;
    app.add_option("--count", options.count, "Number of pages")->capture_default_str();
    app.add_option("--dpi", options.dpi, "Dots per inch")->capture_default_str();
    app.add_option("--method", options.method, "As PARA_CRT_DEWARPING_TYPE")->capture_default_str();
    app.add_option("--illum", options.illum, "As PARA_CRT_DEWARPING_ILLUM")->capture_default_str();
    app.add_option("--seed", options.seed, "Another seed gives other pages")->capture_default_str();
    app.add_option("--only", options.only, "One page of the corpus");
    app.add_option("--strength", options.strength, "Pages of one strength alone, 0 to 3");
    app.add_flag("--kinds", options.kinds, "The kinds of sample pages instead of the corpus");
    app.add_option("--pictures", options.pictures, "Folder for the pages before and after");
    app.add_flag("-v,--verbose", options.verbose, "A line a page");
    app.add_option("FILES", options.files, "Pictures to try instead of the corpus");
    CLI11_PARSE(app, argc, argv);
    if (!options.files.empty()) {
        TryFiles(options);
        return 0;
    }
    Tally tallies[kCurlStrengthCount];
    for (int i = 0; i < options.count; ++i) {
        if (options.only >= 0 && i != options.only)
            continue;
        CurvedRequest request = CurvedRequestAt(i, options.dpi, options.seed);
        if (options.strength >= 0 && options.strength != static_cast<int>(request.strength))
            continue;
        if (options.kinds)
            request.strength = CurlStrength::kFlat;
        const SamplePage page =
            options.kinds ? MakeSamplePage(KindAt(i, options)) : MakeCurvedPage(request);
        const auto finding = dewarping::measureCurves(options.method, page.image, options.illum);
        const std::vector<double> before = BentLines(page.truth);
        std::vector<double> after = before;
        if (finding.found) {
            const auto surface = dewarping::surfaceOf(finding.top.data(), finding.bottom.data(),
                                                      dewarping::kCurvePoints);
            after = BentLines(page.truth, [&](Point p) {
                const auto flat = surface->toFlat({p.x - 0.5, p.y - 0.5});
                return Point{flat.x, flat.y};
            });
        }
        Tally& tally = tallies[static_cast<int>(request.strength)];
        ++tally.pages;
        tally.found += finding.found ? 1 : 0;
        tally.worse += IsWorse(before, after) ? 1 : 0;
        tally.before.insert(tally.before.end(), before.begin(), before.end());
        tally.after.insert(tally.after.end(), after.begin(), after.end());
        if (options.verbose) {
            PrintFinding((std::to_string(i) + " " + page.truth.kind).c_str(), finding);
            std::printf(" | %.2f to %.2f, %.0f %%%s\n", tally.usual(before, 0.9),
                        tally.usual(after, 0.9), Tally::Within(after),
                        IsWorse(before, after) ? " WORSE" : "");
            std::fflush(stdout);
        }
        if (!options.pictures.empty())
            WriteBeforeAndAfter(options.pictures, std::to_string(i) + "_" + page.truth.kind,
                                page.image, finding);
    }
    std::printf(
        "| curl | pages | found | lines | median before | 95 %% before | within before | "
        "median | 95 %% | within | pages worse |\n"
        "|---|---|---|---|---|---|---|---|---|---|---|\n");
    for (int i = 0; i < kCurlStrengthCount; ++i) {
        const Tally& t = tallies[i];
        std::printf("| %s | %d | %d | %zu | %.3f | %.3f | %.1f %% | %.3f | %.3f | %.1f %% | %d |\n",
                    NameOf(static_cast<CurlStrength>(i)).c_str(), t.pages, t.found, t.after.size(),
                    t.usual(t.before, 0.5), t.usual(t.before, 0.95), Tally::Within(t.before),
                    t.usual(t.after, 0.5), t.usual(t.after, 0.95), Tally::Within(t.after), t.worse);
    }
}
