// The search for the curves of a page, and the page through them beside OpenCV's remapping with
// its maps made beforehand.

#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "core/DibImage.h"
#include "core/GrayDepth.h"
#include "dewarping/CurvePoints.h"
#include "dewarping/Dewarp.h"
#include "dewarping/FindCurves.h"
#include "dewarping/ResampleFlat.h"
#include "samples/CurvedPage.h"
#include "support/BesideOpenCv.h"
#include "support/Page.h"

namespace velloran::bench {
namespace {

using dewarping::CylindricalSurfaceDewarper;

const CDibImage& BentPage() {
    static const CDibImage page = [] {
        samples::CurvedRequest request;
        request.dpi = 300;
        request.light = samples::LightKind::kUneven;
        request.seed = 3;
        CDibImage image = samples::MakeCurvedPage(request).image;
        ConvertToRgb(image);
        return image;
    }();
    return page;
}

/// How far a line is bent at x.
double Bend(double x) {
    const double s = x / kPageWidth;
    return -110 * 6.75 * s * (1 - s) * (1 - s);
}

struct Curves {
    std::array<std::int32_t, dewarping::kCurvePoints> top, bottom;
};

Curves CurvesOfPage() {
    Curves curves;
    for (std::size_t i = 0; i < curves.top.size(); ++i) {
        const double x = static_cast<double>(i) * (kPageWidth - 1) / 7;
        curves.top[i] = dewarping::packPoint({x, 130 + Bend(x)});
        curves.bottom[i] = dewarping::packPoint({x, kPageHeight - 1 + Bend(x)});
    }
    return curves;
}

CylindricalSurfaceDewarper SurfaceOfPage() {
    const Curves curves = CurvesOfPage();
    return *dewarping::surfaceOf(curves.top.data(), curves.bottom.data(), dewarping::kCurvePoints);
}

BENCHMARK(FloorCopyPage<kColorBits>)->Apply(OneAndTwoThreads);

template <int kMethod>
void FindCurves(benchmark::State& state) {
    const CDibImage& page = BentPage();
    bool found = true;
    CountPeak(state, [&] { dewarping::measureCurves(kMethod, page, 1); });
    Measure(state, page,
            [&] { found = found && dewarping::measureCurves(kMethod, page, 1).found; });
    if (!found && kMethod != dewarping::kPageEdges)
        state.SkipWithError("the page has curves");
}
BENCHMARK(FindCurves<dewarping::kExtendedTextLines>)->Apply(OneAndTwoThreads);
BENCHMARK(FindCurves<dewarping::kTextLines>)->Apply(OneAndTwoThreads);
BENCHMARK(FindCurves<dewarping::kPageEdges>)->Apply(OneAndTwoThreads);

template <int kMode>
void Resample(benchmark::State& state) {
    const CylindricalSurfaceDewarper surface = SurfaceOfPage();
    const QT::QSize size{kPageWidth, kPageHeight};
    const QT::QRect rect{0, 0, static_cast<int>(surface.flatWidth()) - 1,
                         static_cast<int>(surface.flatHeight()) - 1};
    MeasureOnNew(state, BentPage(), [&](CDibImage& image) {
        dewarping::resample(kMode, image, size, surface, rect, 0xFFFFFF);
    });
}
BENCHMARK(Resample<dewarping::kNearestPixel>)->Apply(OneAndTwoThreads);
BENCHMARK(Resample<dewarping::kLinear>)->Apply(OneAndTwoThreads);
BENCHMARK(Resample<dewarping::kCubic>)->Apply(OneAndTwoThreads);

template <int kInterpolation>
void RemapByOpenCv(benchmark::State& state) {
    const CylindricalSurfaceDewarper surface = SurfaceOfPage();
    cv::Mat mapX(kPageHeight, kPageWidth, CV_32FC1), mapY(kPageHeight, kPageWidth, CV_32FC1);
    for (int x = 0; x < kPageWidth; ++x) {
        const auto column = surface.columnAt(x * surface.flatWidth() / kPageWidth);
        for (int y = 0; y < kPageHeight; ++y) {
            const QT::QPointF from = column.at(static_cast<double>(y) / kPageHeight);
            mapX.at<float>(y, x) = static_cast<float>(from.x);
            mapY.at<float>(y, x) = static_cast<float>(from.y);
        }
    }
    MeasureOnNew(state, BentPage(), [&](CDibImage& image) {
        CDibImage flat;
        flat.Create(kPageWidth, kPageHeight, kColorBits);
        cv::Mat from = MatOf(image), to = MatOf(flat);
        cv::remap(from, to, mapX, mapY, kInterpolation, cv::BORDER_CONSTANT);
        benchmark::DoNotOptimize(to.data);
    });
}
BENCHMARK(RemapByOpenCv<cv::INTER_NEAREST>)->Apply(OneAndTwoThreads);
BENCHMARK(RemapByOpenCv<cv::INTER_LINEAR>)->Apply(OneAndTwoThreads);
BENCHMARK(RemapByOpenCv<cv::INTER_CUBIC>)->Apply(OneAndTwoThreads);

}  // namespace
}  // namespace velloran::bench
