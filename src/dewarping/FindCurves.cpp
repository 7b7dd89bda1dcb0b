#include "dewarping/FindCurves.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <exception>
#include <new>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

#include "core/DibImage.h"
#include "core/GrayDepth.h"
#include "core/Refusal.h"
#include "core/StepContext.h"
#include "dewarping/CoverPage.h"
#include "dewarping/CurvePoints.h"
#include "dewarping/Dewarp.h"
#include "dewarping/PageEdges.h"
#include "dewarping/TextLines.h"
#include "dewarping/TextSides.h"
#include "imaging/Planes.h"

namespace velloran::dewarping {
namespace {

using QT::QLineF;
using QT::QPointF;

constexpr int kLeastSide = 10;

double sigmaOf(int illum) {
    constexpr double kUneven = 2, kUsual = 12, kEven = 15;
    return illum == 0 ? kUneven : (illum == 1 ? kUsual : kEven);
}

double ramp(double value, double low, double high) {
    return std::clamp((value - low) / (high - low), 0.0, 1.0);
}

/// From many lines that agree over much of the page; the weakest link counts most.
double sureOfLines(const ShapeEvidence& evidence) {
    const double links[] = {
        ramp(evidence.longLines, 2, 9),
        ramp(evidence.agreeingShare, 0.4, 0.85),
        1 - ramp(evidence.halvesApart, 0.03, 0.3),
        1 - ramp(evidence.residual, 0.05, 0.14),
        ramp(evidence.widthShare, 0.25, 0.55),
        ramp(evidence.heightShare, 0.1, 0.45),
    };
    double least = 1, mean = 0;
    for (const double link : links) {
        least = std::min(least, link);
        mean += link / static_cast<double>(std::size(links));
    }
    return least * (0.5 + 0.5 * mean);
}

/// Below it a shape is not flattened.
constexpr double kLeastSure = 0.12;
/// Up to it a page is flat, in line pitches; beside the wandering of the lines around their shape.
constexpr double kFlatBow = 0.08, kFlatBesideResidual = 1.5;

/// Rms of points around the straight line of least squares through them.
double leavesStraight(const std::vector<QPointF>& points) {
    const double n = static_cast<double>(points.size());
    double sx = 0, sy = 0, sxx = 0, sxy = 0, syy = 0;
    for (const QPointF& p : points) {
        const double x = p.x - points.front().x, y = p.y - points.front().y;
        sx += x;
        sy += y;
        sxx += x * x;
        sxy += x * y;
        syy += y * y;
    }
    const double spread = sxx - sx * sx / n, both = sxy - sx * sy / n;
    const double rest = syy - sy * sy / n - (spread > 0 ? both * both / spread : 0);
    return std::sqrt(std::max(0.0, rest / n));
}

/// Of the lines, in pitches; through the surface where there is one.
double bentLines(const std::vector<LineTrack>& lines, double pitch,
                 const CylindricalSurfaceDewarper* surface) {
    std::vector<double> bent;
    for (const LineTrack& line : lines) {
        std::vector<QPointF> points = line.points;
        if (surface != nullptr)
            for (QPointF& point : points)
                point = surface->toFlat(point);
        bent.push_back(leavesStraight(points) / pitch);
    }
    if (bent.empty())
        return 0;
    const auto middle = bent.begin() + static_cast<std::ptrdiff_t>(bent.size() / 2);
    std::nth_element(bent.begin(), middle, bent.end());
    return *middle;
}

struct PointsOfCurves {
    std::int32_t *top, *bottom;
    int n;
};

void packBoth(const PageCurves& curves, const PointsOfCurves& points) {
    std::exception_ptr failures[2];
#pragma omp parallel sections
    {
#pragma omp section
        try {
            packCurve(curves.top, points.top, points.n);
        } catch (...) {
            failures[0] = std::current_exception();
        }
#pragma omp section
        try {
            packCurve(curves.bottom, points.bottom, points.n);
        } catch (...) {
            failures[1] = std::current_exception();
        }
    }
    for (const std::exception_ptr& failure : failures)
        if (failure)
            std::rethrow_exception(failure);
}

/// The sides of the page that given curves tell, from row 0 to the last.
QLineF boundOf(std::int32_t top, std::int32_t bottom, int height) {
    const QPointF upper = unpackPoint(top), lower = unpackPoint(bottom);
    const auto at = [&](double y) {
        const double share = lower.y != upper.y ? (y - upper.y) / (lower.y - upper.y) : 0.0;
        return QPointF{upper.x + share * (lower.x - upper.x), y};
    };
    return {at(0), at(height - 1.0)};
}

/// An 8-bit copy; of colour it is made without a copy of the colours.
CDibImage grayOf(const CDibImage& image) {
    constexpr GrayWeights kLuminance{0.114F, 0.587F, 0.299F};
    CDibImage gray;
    if (image.GetBpp() == 24) {
        if (gray.Create(image.GetWidth(), image.GetHeight(), 8) == nullptr)
            throw std::bad_alloc();
        gray.SetGrayPalette();
        WeightedGray(ViewOf(image), kLuminance, ViewOf(gray));
        return gray;
    }
    gray = image;
    if (!gray.IsValid() || ConvertToGray(gray) == 0)
        throw std::bad_alloc();
    return gray;
}

/// One search: what it found stands in the points and in the finding.
class Search {
 public:
    Search(const CDibImage& image, const PointsOfCurves& points, int illum)
        : points_(points),
          sigma_(sigmaOf(illum)),
          width_(image.GetWidth()),
          height_(image.GetHeight()),
          gray_(grayOf(image)) {}

    /// Whether it came to a result, a flat page among them.
    bool run(int method, CurveFinding& finding) {
        const CurveState state = classifyCurves(points_.top, points_.bottom, points_.n);
        const bool isUnset = state == kNoCurves || state == kUnknownCurves;
        if (isUnset && method >= kOnlyWhenUnset)
            method -= kOnlyWhenUnset;
        if (!isUnset && method > kPageEdges) {
            left_ = boundOf(points_.top[0], points_.bottom[0], height_);
            right_ = boundOf(points_.top[points_.n - 1], points_.bottom[points_.n - 1], height_);
        }
        resetCurves(width_, height_, points_.top, points_.bottom, points_.n);
        DistortionModelBuilder builder({0, 1});
        const bool isDone = method == kPageEdges ? findByEdges(builder, finding)
                                                 : findByText(method, builder, finding);
        if (!finding.found)
            resetCurves(width_, height_, points_.top, points_.bottom, points_.n);
        return isDone && !CurrentCancel().IsCancelled();
    }

 private:
    bool findByEdges(DistortionModelBuilder& builder, CurveFinding& finding) {
        const double share = tracePageEdges(gray_, builder, width_);
        if (share <= 0)
            return false;
        const DistortionModel model = builder.tryBuildModel();
        if (!model.isValid())
            return false;
        packBoth({model.top.polyline, model.bottom.polyline}, points_);
        finding.found = surfaceOf(points_.top, points_.bottom, points_.n).has_value();
        finding.sure = ramp(share, 0.5, 0.95);
        // Straight edges are those of a flat page.
        return finding.found ||
               classifyCurves(points_.top, points_.bottom, points_.n) == kFlatCurves;
    }

    bool findByText(int method, DistortionModelBuilder& builder, CurveFinding& finding) {
        constexpr int kCleanToo = 7, kExtendedOnly = 6;
        const bool isClean = method == kCleanTextLines || method == kCleanToo;
        const auto trace = traceTextLines(gray_, builder, width_, sigma_, left_, right_, isClean);
        if (!trace)
            return false;
        if (method % kOnlyWhenUnset == kExtendedTextLines &&
            extendTextLines(gray_, builder, width_, height_, 0, sigma_) == 0)
            extendTextLines(gray_, builder, width_, height_, 1, sigma_);
        if (method == kExtendedOnly &&
            extendTextLines(gray_, builder, width_, height_, 0, sigma_) == 0)
            return true;  // the grid
        finding.evidence = trace->evidence;
        finding.sure = sureOfLines(trace->evidence);
        const double pitch = trace->evidence.linePitch;
        finding.bentBefore = finding.bentAfter = bentLines(trace->lines, pitch, nullptr);
        if (finding.sure < kLeastSure)
            return false;
        if (trace->evidence.bow <
            std::max(kFlatBow, kFlatBesideResidual * trace->evidence.residual))
            return true;
        return buildModel(builder, *trace, finding);
    }

    /// The curves between two sides of the page, and how bent they leave the usual line. Nothing
    /// where the lines make no model that covers the page.
    struct Curves {
        std::vector<std::int32_t> top, bottom;
        double bent = 0;
    };
    std::optional<Curves> curvesBetween(const DistortionModelBuilder& builder,
                                        const TextTrace& trace) const {
        const DistortionModel model = builder.tryBuildModel();
        if (!model.isValid())
            return std::nullopt;
        const auto cover = coverPage(model, trace.content, width_, height_);
        if (!cover)
            return std::nullopt;
        const auto count = static_cast<std::size_t>(points_.n);
        Curves curves{std::vector<std::int32_t>(count), std::vector<std::int32_t>(count)};
        packBoth(*cover, {curves.top.data(), curves.bottom.data(), points_.n});
        const auto surface = surfaceOf(curves.top.data(), curves.bottom.data(), points_.n);
        if (!surface)
            return std::nullopt;
        curves.bent = bentLines(trace.lines, trace.evidence.linePitch, &*surface);
        return curves;
    }

    bool buildModel(const DistortionModelBuilder& builder, const TextTrace& trace,
                    CurveFinding& finding) {
        std::optional<Curves> curves = curvesBetween(builder, trace);
        // The edges of the text tell the better sides, where they leave the lines as straight.
        constexpr double kAsStraight = 1.1, kNothing = 0.005;
        const auto sides = left_ == right_ ? sidesOfText(trace.content.lines,
                                                         trace.evidence.linePitch, width_, height_)
                                           : std::nullopt;
        if (sides) {
            DistortionModelBuilder slanted = builder;
            slanted.setVerticalBounds(sides->left, sides->right);
            std::optional<Curves> other = curvesBetween(slanted, trace);
            if (other && (!curves || other->bent <= kAsStraight * curves->bent + kNothing))
                curves = std::move(other);
        }
        if (!curves)
            return false;
        // What does not make the very lines straight that it was made of is wrong.
        constexpr double kBetter = 0.9;
        if (!(curves->bent < kBetter * finding.bentBefore)) {
            finding.sure = std::min(finding.sure, kLeastSure);
            return false;
        }
        std::copy(curves->top.begin(), curves->top.end(), points_.top);
        std::copy(curves->bottom.begin(), curves->bottom.end(), points_.bottom);
        finding.bentAfter = curves->bent;
        finding.sure *= 1 - ramp(curves->bent, 0.05, 0.2);
        finding.found = true;
        return true;
    }

    PointsOfCurves points_;
    double sigma_;
    int width_, height_;
    QLineF left_, right_;
    CDibImage gray_;
};

bool isLargeEnough(const CDibImage& image) {
    return image.IsValid() && image.GetWidth() >= kLeastSide && image.GetHeight() >= kLeastSide;
}

}  // namespace

CurveFinding measureCurves(int method, const CDibImage& image, int illum) {
    CurveFinding finding;
    if (!isLargeEnough(image))
        return finding;
    const PointsOfCurves points{finding.top.data(), finding.bottom.data(), kCurvePoints};
    try {
        Search(image, points, illum).run(method, finding);
    } catch (const std::runtime_error&) {
        finding = {};  // nothing was found
        resetCurves(image.GetWidth(), image.GetHeight(), points.top, points.bottom, points.n);
    }
    return finding;
}

int findCurves(int method, const CDibImage& image, std::int32_t* top, std::int32_t* bottom, int n,
               int illum) {
    if (n < kLeastCurvePoints || !isLargeEnough(image)) {
        if (image.IsValid() && n > 0)
            resetCurves(image.GetWidth(), image.GetHeight(), top, bottom, n);
        return 0;
    }
    const int done = RefuseWhenOutOfMemory([&] {
        CurveFinding finding;
        try {
            return Search(image, {top, bottom, n}, illum).run(method, finding) ? 1 : 0;
        } catch (const std::runtime_error&) {
            return 0;
        }
    });
    if (done == 0)
        resetCurves(image.GetWidth(), image.GetHeight(), top, bottom, n);
    return done;
}

}  // namespace velloran::dewarping
