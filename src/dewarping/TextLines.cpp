#include "dewarping/TextLines.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <stdexcept>
#include <utility>

#include "core/Rounding.h"
#include "core/StepContext.h"
#include "dewarping/TraceImage.h"
#include "filters/GaussianBlur.h"
#include "page/ContentBox.h"

namespace velloran::dewarping {
namespace {

using QT::QLineF;
using QT::QPointF;

constexpr double kPitchOfLetters = 2.2;  // line pitch beside the height of letters, where unknown
constexpr double kWidestPitch = 3.5;
constexpr double kAround = 0.8;  // line pitches of paper above a first line and below a last one

bool hasLength(const QLineF& line) {
    return line.p1 != line.p2;
}

PageBox contentOf(const CDibImage& copy) {
    ContentBoxRequest request;
    request.removeBlackEdge = true;
    request.speckle = 8;
    request.compensation = true;
    request.bkMore = false;
    request.searchRect = {0, 0, copy.GetWidth(), copy.GetHeight()};
    PageBox box = request.searchRect;
    findContentBox(copy, request, box);
    return box;
}

/// The lines of a copy, in pixels of the picture.
std::vector<LineTrack> linesOf(const CBaseImage& copy, const CopyPlace& place,
                               const InkRequest& request, int margin, double& letterHeight) {
    const InkPage ink = findInk(TopDownViewOf(copy), request);
    std::vector<LineTrack> tracks = traceLines(
        ink, {margin, margin, copy.GetWidth() - margin - 1, copy.GetHeight() - margin - 1});
    for (LineTrack& track : tracks)
        for (QPointF& point : track.points)
            point = place.inPicture(point);
    letterHeight = ink.letterHeight * place.scale.y;
    return tracks;
}

std::optional<PageShape> shapeOf(const std::vector<LineTrack>& tracks, int width, int height,
                                 double letterHeight) {
    // Lines far apart are no measure of what a reader sees as crooked.
    const double pitch =
        std::min(linePitchOf(tracks, kPitchOfLetters * letterHeight), kWidestPitch * letterHeight);
    try {
        return PageShape::fit(tracks, width, height, pitch);
    } catch (const std::runtime_error&) {
        return std::nullopt;  // the lines hold no shape
    }
}

void addLines(const PageShape& shape, DistortionModelBuilder& builder) {
    constexpr std::size_t kMostCurves = 40;  // more tell nothing new and take long
    const auto [left, right] =
        std::pair(std::min(builder.leftBound().p1.x, builder.leftBound().p2.x),
                  std::max(builder.rightBound().p1.x, builder.rightBound().p2.x));
    const std::size_t count = shape.agreeing().size();
    const std::size_t taken = std::min(count, kMostCurves);
    for (std::size_t i = 0; i < taken; ++i) {
        const std::size_t line = taken < 2 ? 0 : i * (count - 1) / (taken - 1);
        builder.addHorizontalCurve(shape.lineOf(line, left, right));
    }
}

const std::vector<QPointF>& nearestOf(const std::deque<std::vector<QPointF>>& curves,
                                      const std::vector<QPointF>& curve) {
    const auto distance = [&](const std::vector<QPointF>& other) {
        return std::fabs(other.front().y + other.back().y - curve.front().y - curve.back().y);
    };
    return *std::min_element(curves.begin(), curves.end(), [&](const auto& a, const auto& b) {
        return distance(a) < distance(b);
    });
}

/// Whether two lines bend alike: what a blurred copy tells otherwise than the finer one is wrong.
bool runsAs(const std::vector<QPointF>& a, const std::vector<QPointF>& b, double pitch) {
    constexpr double kAlike = 0.04;
    if (a.size() != b.size())
        return false;
    double sum = 0, squares = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const double apart = a[i].y - b[i].y;
        sum += apart;
        squares += apart * apart;
    }
    const double n = static_cast<double>(a.size());
    return std::sqrt(std::max(0.0, squares / n - sum / n * (sum / n))) < kAlike * pitch;
}

}  // namespace

std::optional<TextTrace> traceTextLines(const CDibImage& gray, DistortionModelBuilder& builder,
                                        int width, double sigma, const QLineF& left,
                                        const QLineF& right, int clean) {
    CopyPlace place;
    CDibImage copy = prepareTraceImage(gray, CopySize::kFine, place);
    CEBookPage page(copy);
    if (clean == 0) {
        const PageBox box = contentOf(copy);
        if (page.cropTo(box.left, box.top, box.right, box.bottom))
            place = place.movedBy(box.left, box.top);
    }
    // The edges of what is content are left out: cut letters, and the page's own edge.
    const double factor = static_cast<double>(width) / copy.GetWidth();
    const int margin = clean != 0 ? 0 : TruncToInt(factor * 8.0);
    double letterHeight = 0;
    std::vector<LineTrack> lines = linesOf(page, place, {sigma, clean != 0}, margin, letterHeight);
    const auto shape = shapeOf(lines, width, gray.GetHeight(), letterHeight);
    if (!shape || CurrentCancel().IsCancelled())
        return std::nullopt;
    const double bottom = gray.GetHeight() - 1.0, last = width - 1.0;
    builder.setVerticalBounds(hasLength(left) ? left : QLineF{{0, 0}, {0, bottom}},
                              hasLength(right) ? right : QLineF{{last, 0}, {last, bottom}});
    addLines(*shape, builder);
    return TextTrace{shape->evidence(), std::move(lines),
                     PageContent{shape->agreeing(), shape->left(), shape->right(),
                                 kAround * shape->evidence().linePitch}};
}

int extendTextLines(const CDibImage& gray, DistortionModelBuilder& builder, int width, int height,
                    int second, double sigma) {
    constexpr float kBlur = 1.5F;
    constexpr double kSure = 0.6;
    constexpr int kLeastLines = 4;
    CopyPlace place;
    CDibImage copy =
        prepareTraceImage(gray, second == 0 ? CopySize::kMedium : CopySize::kSmall, place);
    if (GaussianBlurInPlace(ViewOf(copy), kBlur) == 0)
        return 0;
    double letterHeight = 0;
    const int margin = std::min(copy.GetWidth(), copy.GetHeight()) / 50;
    const auto shape = shapeOf(linesOf(copy, place, {sigma, false}, margin, letterHeight), width,
                               height, letterHeight);
    if (!shape || builder.curves().empty() || shape->evidence().longLines < kLeastLines ||
        shape->evidence().agreeingShare < kSure)
        return 0;
    DistortionModelBuilder extended({0, 1});
    extended.setVerticalBounds(builder.leftBound(), builder.rightBound());
    addLines(*shape, extended);
    const double pitch = shape->evidence().linePitch;
    std::erase_if(extended.curves(), [&](const std::vector<QPointF>& curve) {
        return !runsAs(nearestOf(builder.curves(), curve), curve, pitch);
    });
    if (extended.curves().empty())
        return 0;
    const double gap = std::max(10.0, height * 0.03);
    const auto isNear = [&](const std::vector<QPointF>& old) {
        return std::any_of(extended.curves().begin(), extended.curves().end(),
                           [&](const std::vector<QPointF>& curve) {
                               return std::fabs(old.front().y - curve.front().y) < gap ||
                                      std::fabs(old.back().y - curve.back().y) < gap;
                           });
    };
    std::erase_if(builder.curves(), isNear);
    for (const std::vector<QPointF>& curve : extended.curves())
        builder.addHorizontalCurve(curve);
    return 1;
}

}  // namespace velloran::dewarping
