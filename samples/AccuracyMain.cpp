// velloran-accuracy: draws pages of known truth, lets the automatic steps search them, and tells
// how far what they find lies from the truth.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "page/ContentBox.h"
#include "page/Deskew.h"
#include "page/PackedLine.h"
#include "page/PageLines.h"
#include "samples/SamplePage.h"

namespace {

using namespace velloran;
using namespace velloran::samples;

/// Errors of one finding over pages, and how many of them lie within the tolerance.
class Tally {
 public:
    explicit Tally(double tolerance) : tolerance_(tolerance) {}
    void Add(double error) { errors_.push_back(error); }
    void Print(const char* name) {
        if (errors_.empty())
            return;
        std::sort(errors_.begin(), errors_.end());
        const auto within = std::count_if(errors_.begin(), errors_.end(),
                                          [this](double e) { return e <= tolerance_; });
        const auto at = [this](double share) {
            return errors_[static_cast<std::size_t>(share * double(errors_.size() - 1))];
        };
        std::printf("| %s | %zu | %.3f | %.3f | %.1f %% |\n", name, errors_.size(), at(0.5),
                    at(0.95), 100.0 * double(within) / double(errors_.size()));
    }

 private:
    double tolerance_;
    std::vector<double> errors_;
};

struct Options {
    int count = 25;
    int dpi = 150;
    std::uint64_t seed = 1;
    bool verbose = false;
};

SampleRequest RequestOf(const Options& options, int index) {
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

bool IsUpright(const Truth& truth) {
    return truth.pages.size() == 1 && truth.pages[0].uprightContentBox.has_value();
}

double SkewError(const SamplePage& page, double& confidence) {
    const bool vertical = !page.truth.lines.empty() && page.truth.lines[0].vertical;
    double angle = 0;
    findSkew(page.image, angle, confidence, {}, vertical ? kDeskewColumns : kDeskewRows);
    return angle - page.truth.angleDegrees;
}

/// The largest distance of a side.
double BoxError(const SamplePage& page, PageBox& box) {
    ContentBoxRequest request;
    request.searchRect = {0, 0, page.image.GetWidth(), page.image.GetHeight()};
    request.compensation = false;
    if (findContentBox(page.image, request, box) == 0)
        return 1e9;
    const Box& truth = *page.truth.contentBox;
    return std::max({std::fabs(box.left - truth.left), std::fabs(box.top - truth.top),
                     std::fabs(box.right - truth.right), std::fabs(box.bottom - truth.bottom)});
}

double GutterError(const SamplePage& page, PageLine& mid) {
    std::int32_t lines[3] = {};
    findPageLines(page.image, kLeftRightMid, lines, 0, 0);
    mid = UnpackLine(lines[2]);
    const GutterTruth& gutter = *page.truth.gutter;
    return std::max(std::fabs(mid.top - gutter.top.x), std::fabs(mid.bottom - gutter.bottom.x)) /
           page.image.GetWidth();
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app("Measures what the automatic steps find on pages of known truth.",
                 "velloran-accuracy");
    Options options;
    app.add_option("--count", options.count, "Number of pages")->capture_default_str();
    app.add_option("--dpi", options.dpi, "Dots per inch")->capture_default_str();
    app.add_option("--seed", options.seed, "Another seed gives other pages")->capture_default_str();
    app.add_flag("-v,--verbose", options.verbose, "A line a page");
    CLI11_PARSE(app, argc, argv);
    Tally skew(0.1), box(4.0 * options.dpi / 300), gutter(0.01);
    for (int i = 0; i < options.count; ++i) {
        const SamplePage page = MakeSamplePage(RequestOf(options, i));
        const char* name = page.truth.kind.c_str();
        if (IsUpright(page.truth) && page.truth.lines.size() >= 8) {
            double confidence = 0;
            const double error = SkewError(page, confidence);
            skew.Add(std::fabs(error));
            if (options.verbose)
                std::printf("skew %s true %.2f error %.3f confidence %.2f\n", name,
                            page.truth.angleDegrees, error, confidence);
        }
        if (page.truth.contentBox && page.truth.pages.size() == 1) {
            PageBox found;
            const double error = BoxError(page, found);
            box.Add(error);
            const Box& b = *page.truth.contentBox;
            if (options.verbose)
                std::printf("box %s error %.1f: %d %d %d %d true %.1f %.1f %.1f %.1f\n", name,
                            error, found.left, found.top, found.right, found.bottom, b.left, b.top,
                            b.right, b.bottom);
        }
        if (page.truth.gutter && page.truth.pages.size() == 2) {
            PageLine mid;
            const double error = GutterError(page, mid);
            gutter.Add(error);
            if (options.verbose)
                std::printf("gutter %s error %.4f: %d %d true %.1f %.1f\n", name, error, mid.top,
                            mid.bottom, page.truth.gutter->top.x, page.truth.gutter->bottom.x);
        }
        std::fflush(stdout);
    }
    std::printf("| finding | pages | median | 95 %% | within |\n|---|---|---|---|---|\n");
    skew.Print("skew, degrees");
    box.Print("content box, pixels");
    gutter.Print("gutter, of the width");
}
