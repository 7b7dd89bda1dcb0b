#include "dewarping/LineTracks.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "core/ExactMath.h"
#include "core/Rounding.h"
#include "core/StepContext.h"
#include "core/Threads.h"

namespace velloran::dewarping {
namespace {

using QT::QPointF;

/// Ink around the nodes of a lattice: columns `step` pixels apart, all rows.
class BodyProfile {
 public:
    BodyProfile(const InkPage& page, const QT::QRect& area, int step, int reach, double sigma)
        : area_(area),
          step_(step),
          columns_(std::max(1, area.Width() / step)),
          sums_(static_cast<std::size_t>(columns_) * static_cast<std::size_t>(area.Height())) {
        gatherRows(page, reach);
        smoothColumns(sigma);
    }

    int columns() const { return columns_; }
    double xOf(int column) const { return area_.left + (column + 0.5) * step_ - 0.5; }

    struct Peak {
        double y = 0;
        float height = 0;
    };
    /// Where a column's profile is higher than above and below, top to bottom.
    void peaksOf(int column, std::vector<Peak>& peaks) const {
        peaks.clear();
        for (int y = 1; y + 1 < area_.Height(); ++y) {
            const float above = at(column, y - 1), here = at(column, y), below = at(column, y + 1);
            if (here <= above || here < below || here <= 0)
                continue;
            const double bend = double{above} - 2.0 * here + below;
            const double shift = bend < 0 ? (double{above} - below) / (2 * bend) : 0.0;
            peaks.push_back({area_.top + y + std::clamp(shift, -0.5, 0.5), here});
        }
    }

 private:
    float at(int column, int y) const {
        return sums_[static_cast<std::size_t>(y) * static_cast<std::size_t>(columns_) +
                     static_cast<std::size_t>(column)];
    }
    float* row(int y) { return sums_.data() + static_cast<std::ptrdiff_t>(y) * columns_; }

    /// Sums over 2 * reach + 1 pixels, then weights 1 2 1 over neighbouring nodes.
    void gatherRows(const InkPage& page, int reach) {
        const std::size_t room = static_cast<std::size_t>(area_.Width()) + 1;
        std::vector<std::uint32_t> scratch(room * static_cast<std::size_t>(MaxThreads()));
        const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule( \
    static) if (IsWorthThreads(std::int64_t{area_.Width()} * area_.Height()))
        for (int y = 0; y < area_.Height(); ++y) {
            if (cancel.IsCancelled())
                continue;
            std::uint32_t* running =
                scratch.data() + room * static_cast<std::size_t>(ThreadNumber());
            const std::uint8_t* ink = page.row(area_.top + y) + area_.left;
            running[0] = 0;
            for (std::size_t x = 0; x + 1 < room; ++x)
                running[x + 1] = running[x] + ink[x];
            const auto sumAt = [&](int k) {
                const int middle = std::clamp(k, 0, columns_ - 1) * step_ + step_ / 2;
                return static_cast<float>(running[std::min(area_.Width(), middle + reach + 1)] -
                                          running[std::max(0, middle - reach)]);
            };
            float* out = row(y);
            for (int k = 0; k < columns_; ++k)
                out[k] = sumAt(k - 1) + 2 * sumAt(k) + sumAt(k + 1);
        }
    }

    void smoothColumns(double sigma) {
        const int reach = std::max(1, TruncToInt(3 * sigma));
        std::vector<float> taps;
        for (int i = 0; i <= reach; ++i)
            taps.push_back(static_cast<float>(Exp(-i * i / (2 * sigma * sigma))));
        std::vector<float> smooth(sums_.size());
        const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule( \
    static) if (IsWorthThreads(std::int64_t{columns_} * area_.Height() * reach))
        for (int y = 0; y < area_.Height(); ++y) {
            if (cancel.IsCancelled())
                continue;
            float* out = smooth.data() + static_cast<std::ptrdiff_t>(y) * columns_;
            for (int i = -reach; i <= reach; ++i) {
                if (y + i < 0 || y + i >= area_.Height())
                    continue;
                const float tap = taps[static_cast<std::size_t>(std::abs(i))];
                const float* from = row(y + i);
                for (int k = 0; k < columns_; ++k)
                    out[k] += tap * from[k];
            }
        }
        sums_ = std::move(smooth);
    }

    QT::QRect area_;
    int step_, columns_;
    std::vector<float> sums_;
};

/// A line that is being followed.
struct OpenTrack {
    LineTrack track;
    int lastColumn = 0;
    double slope = 0;  // of the last points, in pixels a pixel

    double expectedAt(double x) const {
        const QPointF& last = track.points.back();
        return last.y + slope * (x - last.x);
    }

    void append(const QPointF& point, int column) {
        track.points.push_back(point);
        lastColumn = column;
        constexpr std::size_t kFitted = 9, kSettled = 4;
        const std::size_t count = std::min(track.points.size(), kFitted);
        if (count < kSettled)
            return;
        double sx = 0, sy = 0, sxx = 0, sxy = 0;
        for (std::size_t i = track.points.size() - count; i < track.points.size(); ++i) {
            const double x = track.points[i].x - point.x, y = track.points[i].y - point.y;
            sx += x;
            sy += y;
            sxx += x * x;
            sxy += x * y;
        }
        const double n = static_cast<double>(count);
        const double spread = sxx - sx * sx / n;
        if (spread > 0)
            slope = (sxy - sx * sy / n) / spread;
    }
};

/// Joins the peaks of neighbouring columns, each to the track that expects it most nearly.
class Tracker {
 public:
    Tracker(double tolerance, int longestGap) : tolerance_(tolerance), longestGap_(longestGap) {}

    void take(int column, double x, const std::vector<BodyProfile::Peak>& peaks) {
        closeTracksBefore(column);
        std::vector<std::size_t> nearestTrack(peaks.size(), kNone);
        std::vector<std::size_t> nearestPeak(open_.size(), kNone);
        std::vector<double> trackDistance(open_.size(), tolerance_);
        std::vector<double> peakDistance(peaks.size(), tolerance_);
        for (std::size_t t = 0; t < open_.size(); ++t) {
            const double expected = open_[t].expectedAt(x);
            for (std::size_t p = 0; p < peaks.size(); ++p) {
                const double distance = std::fabs(peaks[p].y - expected);
                if (distance < trackDistance[t]) {
                    trackDistance[t] = distance;
                    nearestPeak[t] = p;
                }
                if (distance < peakDistance[p]) {
                    peakDistance[p] = distance;
                    nearestTrack[p] = t;
                }
            }
        }
        const std::size_t known = open_.size();
        for (std::size_t p = 0; p < peaks.size(); ++p) {
            const std::size_t t = nearestTrack[p];
            if (t != kNone && nearestPeak[t] == p)
                open_[t].append({x, peaks[p].y}, column);
            else
                begin({x, peaks[p].y}, column, known);
        }
    }

    std::vector<LineTrack> finish() && {
        closeTracksBefore(std::numeric_limits<int>::max());
        return std::move(closed_);
    }

 private:
    static constexpr std::size_t kNone = ~std::size_t{0};

    /// A new track runs as its nearest settled neighbour does.
    void begin(const QPointF& point, int column, std::size_t known) {
        constexpr std::size_t kSettled = 6;
        OpenTrack track;
        double nearest = std::numeric_limits<double>::max();
        for (std::size_t t = 0; t < known; ++t) {
            const double distance = std::fabs(open_[t].track.points.back().y - point.y);
            if (open_[t].track.points.size() >= kSettled && distance < nearest) {
                nearest = distance;
                track.slope = open_[t].slope;
            }
        }
        track.append(point, column);
        open_.push_back(std::move(track));
    }

    void closeTracksBefore(int column) {
        std::size_t kept = 0;
        for (OpenTrack& track : open_) {
            if (column - track.lastColumn <= longestGap_) {
                if (&open_[kept] != &track)
                    open_[kept] = std::move(track);
                ++kept;
            } else {
                closed_.push_back(std::move(track.track));
            }
        }
        open_.resize(kept);
    }

    double tolerance_;
    int longestGap_;
    std::vector<OpenTrack> open_;
    std::vector<LineTrack> closed_;
};

float medianHeight(std::vector<float> heights) {
    if (heights.empty())
        return 0;
    const auto middle = heights.begin() + static_cast<std::ptrdiff_t>(heights.size() / 2);
    std::nth_element(heights.begin(), middle, heights.end());
    return *middle;
}

/// The y of a track at x, between its points; NaN outside.
double heightAt(const LineTrack& track, double x) {
    const auto& points = track.points;
    if (x < points.front().x || x > points.back().x)
        return std::numeric_limits<double>::quiet_NaN();
    const auto behind = std::lower_bound(points.begin() + 1, points.end() - 1, x,
                                         [](const QPointF& p, double at) { return p.x < at; });
    const QPointF &a = *(behind - 1), &b = *behind;
    return a.y + (x - a.x) / (b.x - a.x) * (b.y - a.y);
}

}  // namespace

std::vector<LineTrack> traceLines(const InkPage& page, const QT::QRect& area) {
    constexpr double kLeastLetter = 3, kLeastLength = 7, kLeastFill = 0.55, kFaintPeak = 0.2;
    if (page.letterHeight < kLeastLetter || area.IsEmpty())
        return {};
    const double letter = page.letterHeight;
    const int step = std::max(2, RoundHalf(letter / 2));
    if (area.Width() < 4 * step || area.Height() < 3)
        return {};
    const BodyProfile profile(page, area, step, RoundHalf(letter), 0.42 * letter);
    std::vector<std::vector<BodyProfile::Peak>> peaks(static_cast<std::size_t>(profile.columns()));
    std::vector<float> heights;
    for (int k = 0; k < profile.columns(); ++k) {
        profile.peaksOf(k, peaks[static_cast<std::size_t>(k)]);
        for (const auto& peak : peaks[static_cast<std::size_t>(k)])
            heights.push_back(peak.height);
    }
    const float least = static_cast<float>(kFaintPeak) * medianHeight(std::move(heights));
    Tracker tracker(0.45 * letter, RoundHalf(4 * letter / step));
    for (int k = 0; k < profile.columns(); ++k) {
        auto& own = peaks[static_cast<std::size_t>(k)];
        std::erase_if(own, [least](const auto& peak) { return peak.height < least; });
        tracker.take(k, profile.xOf(k), own);
    }
    std::vector<LineTrack> tracks = std::move(tracker).finish();
    std::erase_if(tracks, [&](const LineTrack& track) {
        return track.points.size() < 4 || track.length() < kLeastLength * letter ||
               static_cast<double>(track.points.size()) * step < kLeastFill * track.length();
    });
    std::sort(tracks.begin(), tracks.end(), [](const LineTrack& a, const LineTrack& b) {
        return a.points[a.points.size() / 2].y < b.points[b.points.size() / 2].y;
    });
    return tracks;
}

double linePitchOf(const std::vector<LineTrack>& tracks, double fallback) {
    std::vector<double> distances;
    for (const LineTrack& track : tracks) {
        const QPointF& middle = track.points[track.points.size() / 2];
        double nearest = std::numeric_limits<double>::max();
        for (const LineTrack& other : tracks) {
            const double y = heightAt(other, middle.x);
            if (y > middle.y + 1 && y - middle.y < nearest)
                nearest = y - middle.y;
        }
        if (nearest < std::numeric_limits<double>::max())
            distances.push_back(nearest);
    }
    if (distances.empty())
        return fallback;
    const auto middle = distances.begin() + static_cast<std::ptrdiff_t>(distances.size() / 2);
    std::nth_element(distances.begin(), middle, distances.end());
    return *middle;
}

}  // namespace velloran::dewarping
