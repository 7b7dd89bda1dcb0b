// The geometry of a page: searches in copies of the page, turns and warps beside OpenCV's.

#include "support/Page.h"

#include <benchmark/benchmark.h>

#include <array>
#include <opencv2/imgproc.hpp>

#include "core/DibImage.h"
#include "page/ContentBox.h"
#include "page/Deskew.h"
#include "page/MeasureBox.h"
#include "page/MeasureSkew.h"
#include "page/PageLayout.h"
#include "page/PageLines.h"
#include "page/PageSizes.h"
#include "page/Trapezoid.h"
#include "samples/SamplePage.h"
#include "support/BesideOpenCv.h"

namespace velloran::bench {
namespace {

BENCHMARK(FloorCopyPage<kColorBits>)->Apply(OneAndTwoThreads);

constexpr double kTurn = 1.3;  // degrees

const CDibImage& TextPage() {
    static const CDibImage page =
        samples::MakeSamplePage({.kind = samples::PageKind::kTextChinese, .angleDegrees = kTurn})
            .image;
    return page;
}

const CDibImage& SpreadPage() {
    static const CDibImage page =
        samples::MakeSamplePage(
            {.kind = samples::PageKind::kSpread, .width = kPageHeight, .height = kPageWidth})
            .image;
    return page;
}

void FindSkewRows(benchmark::State& state) {
    double angle = 0, confidence = 0;
    Measure(state, TextPage(), [&] { findSkew(TextPage(), angle, confidence, {}, kDeskewRows); });
}
BENCHMARK(FindSkewRows)->Apply(OneAndTwoThreads);

void MeasureSkewRows(benchmark::State& state) {
    SkewFinding finding;
    Measure(state, TextPage(), [&] { measureSkew(TextPage(), {}, kDeskewRows, finding); });
}
BENCHMARK(MeasureSkewRows)->Apply(OneAndTwoThreads);

ContentBoxRequest WholePage(bool bkMore) {
    ContentBoxRequest request;
    request.bkMore = bkMore;
    request.searchRect = {0, 0, TextPage().GetWidth(), TextPage().GetHeight()};
    return request;
}

template <bool kStrong>
void FindBox(benchmark::State& state) {
    PageBox box;
    Measure(state, TextPage(), [&] { findContentBox(TextPage(), WholePage(kStrong), box); });
}
BENCHMARK(FindBox<false>)->Apply(OneAndTwoThreads);
BENCHMARK(FindBox<true>)->Apply(OneAndTwoThreads);

void MeasureBox(benchmark::State& state) {
    BoxFinding finding;
    Measure(state, TextPage(), [&] { measureContentBox(TextPage(), WholePage(false), finding); });
}
BENCHMARK(MeasureBox)->Apply(OneAndTwoThreads);

template <int kMode>
void FindLines(benchmark::State& state) {
    std::array<std::int32_t, 4> lines{};
    Measure(state, SpreadPage(), [&] { findPageLines(SpreadPage(), kMode, lines.data(), 0, 0); });
}
BENCHMARK(FindLines<kLeftRightMid>)->Apply(OneAndTwoThreads);
BENCHMARK(FindLines<kFourCorners>)->Apply(OneAndTwoThreads);

void FloorCvRotateCubic(benchmark::State& state) {
    CDibImage page = TextPage();
    const cv::Mat source = MatOf(page);
    cv::Mat result(source.size(), source.type());
    const cv::Mat turn =
        cv::getRotationMatrix2D({page.GetWidth() / 2.0F, page.GetHeight() / 2.0F}, kTurn, 1);
    Measure(state, page, [&] {
        cv::warpAffine(source, result, turn, source.size(), cv::INTER_CUBIC, cv::BORDER_REPLICATE);
    });
}
BENCHMARK(FloorCvRotateCubic)->Apply(OneAndTwoThreads);

template <int kInterpolation>
void RotatePage(benchmark::State& state) {
    MeasureOnCopies(state, TextPage(), [](CDibImage& image) {
        rotateKeepSize(image, kTurn, kInterpolation, kFillEdge, 0xFFFFFF);
    });
}
BENCHMARK(RotatePage<0>)->Name("RotatePageCubic")->Apply(OneAndTwoThreads);
BENCHMARK(RotatePage<1>)->Name("RotatePageNearest")->Apply(OneAndTwoThreads);

/// Corners of a photographed page within the picture, as PARA_CRT_PT_* hold them.
PackedCorners PhotoCorners(const CDibImage& page) {
    const int w = page.GetWidth(), h = page.GetHeight();
    const TrueCorners corners = {CornerPoint{w / 12, h / 16}, CornerPoint{w - w / 10, h / 14},
                                 CornerPoint{w - w / 30, h - h / 20},
                                 CornerPoint{w / 40, h - h / 18}};
    return PackCorners(corners, w, h);
}

void FloorCvWarpCubic(benchmark::State& state) {
    CDibImage page = TextPage();
    const cv::Mat source = MatOf(page);
    int width = 0, height = 0;
    TrueCorners quad{};
    correctionOutputSize(width, height, quad, page, PhotoCorners(page), 0, 0);
    const auto wide = static_cast<float>(width), high = static_cast<float>(height);
    const cv::Point2f to[] = {{0, 0}, {wide, 0}, {wide, high}, {0, high}};
    cv::Point2f from[4];
    for (std::size_t i = 0; i < 4; ++i)
        from[i] = {static_cast<float>(quad[i].x), static_cast<float>(quad[i].y)};
    const cv::Mat map = cv::getPerspectiveTransform(from, to);
    cv::Mat result(height, width, source.type());
    Measure(state, page, [&] {
        cv::warpPerspective(source, result, map, result.size(), cv::INTER_CUBIC,
                            cv::BORDER_REPLICATE);
    });
}
BENCHMARK(FloorCvWarpCubic)->Apply(OneAndTwoThreads);

void WarpPageCubic(benchmark::State& state) {
    const PackedCorners corners = PhotoCorners(TextPage());
    MeasureOnNew(state, TextPage(), [&](CDibImage& image) {
        warpToRectangle(image, corners, /*nearest=*/0, 0, 0, 0xFFFFFF);
    });
}
BENCHMARK(WarpPageCubic)->Apply(OneAndTwoThreads);

/// Content somewhat smaller than its page, in pixels.
void PlacePage(benchmark::State& state) {
    LayoutRequest request;
    request.unit = 1;
    request.pageSize = kGivenBoth;
    request.pageWidth = kPageWidth + 200;
    request.pageHeight = kPageHeight + 200;
    request.innerWidth = request.innerHeight = -1;
    request.imageWidth = request.contentWidth = kPageWidth;
    request.imageHeight = request.contentHeight = kPageHeight;
    request.marginLeft = request.marginTop = request.marginRight = request.marginBottom = 100;
    MeasureOnNew(state, TextPage(), [&](CDibImage& image) {
        LayoutRequest own = request;
        placeOnPage(image, own);
    });
}
BENCHMARK(PlacePage)->Apply(OneAndTwoThreads);

}  // namespace
}  // namespace velloran::bench
