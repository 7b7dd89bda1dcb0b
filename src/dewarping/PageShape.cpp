#include "dewarping/PageShape.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "mcalc/LinearSolver.h"

namespace velloran::dewarping {
namespace {

using QT::QPointF;

constexpr std::size_t kPieces = 8, kShares = kPieces + 3, kUnknowns = 2 * kShares;
constexpr double kAgreeing = 0.15;  // rms in pitches up to which a line agrees
constexpr double kEase = 0.6;       // of the text's width: how far its slope goes on beyond it

/// The cubic B-splines that are not 0 at a place: `first` and the three behind it.
struct Shares {
    std::size_t first = 0;
    std::array<double, 4> values{};
};

/// At `at` pieces from the left, within 0..kPieces.
Shares sharesAt(double at) {
    Shares shares;
    shares.first = static_cast<std::size_t>(std::clamp(at, 0.0, kPieces - 1.0));
    const double t = at - static_cast<double>(shares.first), s = 1 - t;
    shares.values = {s * s * s / 6, (3 * t * t * t - 6 * t * t + 4) / 6,
                     (3 * s * s * s - 6 * s * s + 4) / 6, t * t * t / 6};
    return shares;
}

double blend(const std::vector<double>& coefficients, const Shares& shares) {
    double value = 0;
    for (std::size_t k = 0; k < 4; ++k)
        value += coefficients[shares.first + k] * shares.values[k];
    return value;
}

/// Sums for the system of normal equations.
struct System {
    std::vector<double> matrix = std::vector<double>(kUnknowns * kUnknowns);
    std::vector<double> right = std::vector<double>(kUnknowns);
};

/// The basis at a place of a line: eight of the unknowns.
struct Basis {
    std::array<std::size_t, 8> index{};
    std::array<double, 8> value{};
};

Basis basisAt(double at, double u) {
    const Shares shares = sharesAt(at);
    Basis basis;
    for (std::size_t k = 0; k < 4; ++k) {
        basis.index[k] = shares.first + k;
        basis.value[k] = shares.values[k];
        basis.index[k + 4] = kShares + shares.first + k;
        basis.value[k + 4] = shares.values[k] * u;
    }
    return basis;
}

/// Each line stands where it likes: what its points have in common says nothing of the bend.
class LineSums {
 public:
    void add(const Basis& basis, double y, double weight, System& system) {
        for (std::size_t a = 0; a < 8; ++a) {
            const double value = weight * basis.value[a];
            mean_[basis.index[a]] += value;
            system.right[basis.index[a]] += value * y;
            for (std::size_t b = 0; b < 8; ++b)
                system.matrix[basis.index[a] * kUnknowns + basis.index[b]] +=
                    value * basis.value[b];
        }
        meanY_ += weight * y;
        weight_ += weight;
    }

    void takeMeanOut(System& system) const {
        if (weight_ <= 0)
            return;
        for (std::size_t a = 0; a < kUnknowns; ++a) {
            if (mean_[a] == 0)
                continue;
            system.right[a] -= mean_[a] * meanY_ / weight_;
            for (std::size_t b = 0; b < kUnknowns; ++b)
                system.matrix[a * kUnknowns + b] -= mean_[a] * mean_[b] / weight_;
        }
    }

 private:
    std::array<double, kUnknowns> mean_{};
    double meanY_ = 0, weight_ = 0;
};

/// Where no line tells, the bend goes on as straight as it can, and alike down the page.
void addSmoothness(double samples, System& system) {
    constexpr double kBending = 0.002, kChange = 2e-4, kHeld = 1e-7;
    constexpr double kSecond[] = {1, -2, 1};
    const double usual = samples / static_cast<double>(kShares);
    for (std::size_t part = 0; part < 2; ++part) {
        const std::size_t first = part * kShares;
        for (std::size_t k = 0; k + 2 < kShares; ++k)
            for (std::size_t a = 0; a < 3; ++a)
                for (std::size_t b = 0; b < 3; ++b)
                    system.matrix[(first + k + a) * kUnknowns + first + k + b] +=
                        kBending * usual * kSecond[a] * kSecond[b];
        for (std::size_t k = 0; k < kShares; ++k)
            system.matrix[(first + k) * (kUnknowns + 1)] += (part == 1 ? kChange : kHeld) * usual;
    }
}

}  // namespace

double PageShape::riseAt(const Bend& bend, double x, double u) const {
    const double width = frame_.right - frame_.left;
    const double inside = std::clamp(x, frame_.left, frame_.right);
    const auto value = [&](double at) {
        const Shares shares = sharesAt((at - frame_.left) / width * double{kPieces});
        return blend(bend.common, shares) + u * blend(bend.change, shares);
    };
    if (inside == x)
        return value(x);
    const double near = 0.01 * width, sign = x > inside ? 1 : -1;
    const double slope = (value(inside) - value(inside - sign * near)) / near;
    const double beyond = std::min(std::fabs(x - inside), kEase * width);
    return value(inside) + slope * (beyond - beyond * beyond / (2 * kEase * width));
}

PageShape::Bend PageShape::solve(std::span<const LineTrack* const> tracks,
                                 std::span<const double> places, double pitch) const {
    constexpr int kRounds = 5;
    constexpr double kDoubtful = 0.12;  // of the pitch: what lies further off counts less
    const double width = frame_.right - frame_.left;
    Bend bend{std::vector<double>(kShares), std::vector<double>(kShares)};
    for (int round = 0; round < kRounds; ++round) {
        System system;
        double samples = 0;
        for (std::size_t i = 0; i < tracks.size(); ++i) {
            double rms = 0;
            const double offset = offsetOf(*tracks[i], bend, places[i], rms);
            LineSums sums;
            for (const QPointF& point : tracks[i]->points) {
                double weight = 1;
                if (round > 0) {
                    const double left =
                        (point.y - offset - riseAt(bend, point.x, places[i])) / (kDoubtful * pitch);
                    weight = 1 / ((1 + left * left) * (1 + left * left));
                }
                const double at = std::clamp((point.x - frame_.left) / width, 0.0, 1.0);
                sums.add(basisAt(at * double{kPieces}, places[i]), point.y - frame_.middleY, weight,
                         system);
                samples += weight;
            }
            sums.takeMeanOut(system);
        }
        addSmoothness(std::max(samples, 1.0), system);
        std::vector<double> x(kUnknowns);
        mcalc::DynamicPoolAllocator<double> pool;
        mcalc::LinearSolver(kUnknowns, kUnknowns, 1)
            .solve(system.matrix.data(), x.data(), system.right.data(), pool);
        bend.common.assign(x.begin(), x.begin() + kShares);
        bend.change.assign(x.begin() + kShares, x.end());
    }
    return bend;
}

double PageShape::offsetOf(const LineTrack& track, const Bend& bend, double u, double& rms) const {
    double sum = 0, squares = 0;
    for (const QPointF& point : track.points) {
        const double left = point.y - riseAt(bend, point.x, u);
        sum += left;
        squares += left * left;
    }
    const double count = static_cast<double>(track.points.size()), mean = sum / count;
    rms = std::sqrt(std::max(0.0, squares / count - mean * mean));
    return mean;
}

void PageShape::settlePlaces(std::span<const LineTrack* const> tracks, const Bend& bend,
                             std::vector<double>& places) const {
    const double x = (frame_.left + frame_.right) / 2;
    for (std::size_t i = 0; i < tracks.size(); ++i) {
        double rms = 0;
        const double offset = offsetOf(*tracks[i], bend, places[i], rms);
        places[i] = std::clamp(frame_.shareOf(offset + riseAt(bend, x, places[i])), -1.0, 1.0);
    }
}

double PageShape::apartOf(const std::vector<const LineTrack*> (&halves)[2],
                          const std::vector<double> (&places)[2], double pitch) const {
    Bend bends[2];
    double left = frame_.left, right = frame_.right;  // where both halves hold lines
    for (int half = 0; half < 2; ++half) {
        if (halves[half].empty())
            return pitch;
        bends[half] = solve(halves[half], places[half], pitch);
        double first = frame_.right, last = frame_.left;
        for (const LineTrack* track : halves[half]) {
            first = std::min(first, track->points.front().x);
            last = std::max(last, track->points.back().x);
        }
        left = std::max(left, first);
        right = std::min(right, last);
    }
    double most = right > left ? 0 : pitch;
    for (int half = 0; half < 2; ++half)
        for (std::size_t i = 0; i < halves[half].size(); ++i) {
            std::vector<double> apart;
            double mean = 0;
            for (const QPointF& point : halves[half][i]->points)
                if (point.x >= left && point.x <= right) {
                    apart.push_back(riseAt(bends[0], point.x, places[half][i]) -
                                    riseAt(bends[1], point.x, places[half][i]));
                    mean += apart.back();
                }
            for (const double difference : apart)
                most = std::max(most,
                                std::fabs(difference - mean / static_cast<double>(apart.size())));
        }
    return most;
}

double PageShape::bowOf(const Bend& bend) const {
    constexpr int kNodes = 25;
    double most = 0;
    for (const double u : {-0.5, 0.0, 0.5}) {
        // The straight line of least squares over evenly spaced nodes.
        std::array<double, kNodes> rise;
        double mean = 0, slope = 0, spread = 0;
        for (int i = 0; i < kNodes; ++i) {
            const double t = static_cast<double>(i) / (kNodes - 1) - 0.5;
            const double x = frame_.left + (frame_.right - frame_.left) * (t + 0.5);
            rise[static_cast<std::size_t>(i)] = riseAt(bend, x, u);
            mean += rise[static_cast<std::size_t>(i)] / kNodes;
            slope += rise[static_cast<std::size_t>(i)] * t;
            spread += t * t;
        }
        for (int i = 0; i < kNodes; ++i) {
            const double t = static_cast<double>(i) / (kNodes - 1) - 0.5;
            most = std::max(
                most, std::fabs(rise[static_cast<std::size_t>(i)] - mean - slope / spread * t));
        }
    }
    return most;
}

void PageShape::judge(const std::vector<LineTrack>& tracks, double width, double height,
                      double pitch) {
    double all = 0, agreeing = 0, squares = 0, points = 0;
    for (const LineTrack& track : tracks)
        all += track.length();
    std::vector<const LineTrack*> halves[2];
    std::vector<double> places[2];
    double first = height, last = 0;
    for (std::size_t i = 0; i < agreeing_.size(); ++i) {
        const LineTrack& track = agreeing_[i];
        agreeing += track.length();
        double rms = 0;
        offsetOf(track, bend_, places_[i], rms);
        squares += rms * rms * static_cast<double>(track.points.size());
        points += static_cast<double>(track.points.size());
        const bool isLong = track.length() >= (frame_.right - frame_.left) / 3;
        evidence_.longLines += isLong ? 1 : 0;
        halves[i % 2].push_back(&track);
        places[i % 2].push_back(places_[i]);
        first = std::min(first, offsets_[i]);
        last = std::max(last, offsets_[i]);
    }
    evidence_.tracedLines = static_cast<int>(tracks.size());
    evidence_.agreeingLines = static_cast<int>(agreeing_.size());
    evidence_.agreeingShare = all > 0 ? agreeing / all : 0;
    evidence_.residual = points > 0 ? std::sqrt(squares / points) / pitch : 0;
    evidence_.bow = bowOf(bend_) / pitch;
    evidence_.widthShare = (frame_.right - frame_.left) / width;
    evidence_.heightShare = std::max(0.0, last - first) / height;
    evidence_.linePitch = pitch;
    evidence_.halvesApart = apartOf(halves, places, pitch) / pitch;
}

PageShape::Frame PageShape::frameOf(const std::vector<LineTrack>& tracks, double linePitch) {
    Frame frame{tracks[0].points.front().x, tracks[0].points.back().x, 0, 1};
    double top = tracks[0].points[0].y, bottom = top;
    for (const LineTrack& track : tracks) {
        frame.left = std::min(frame.left, track.points.front().x);
        frame.right = std::max(frame.right, track.points.back().x);
        const double y = track.points[track.points.size() / 2].y;
        top = std::min(top, y);
        bottom = std::max(bottom, y);
    }
    frame.middleY = (top + bottom) / 2;
    frame.height = std::max(bottom - top, linePitch);
    return frame;
}

void PageShape::dropStrangers(std::vector<const LineTrack*>& tracks, std::vector<double>& places,
                              double most) const {
    std::size_t kept = 0;
    for (std::size_t i = 0; i < tracks.size(); ++i) {
        double rms = 0;
        offsetOf(*tracks[i], bend_, places[i], rms);
        if (rms > most)
            continue;
        tracks[kept] = tracks[i];
        places[kept] = places[i];
        ++kept;
    }
    tracks.resize(kept);
    places.resize(kept);
}

std::optional<PageShape> PageShape::fit(const std::vector<LineTrack>& tracks, double width,
                                        double height, double linePitch) {
    if (tracks.size() < 2)
        return std::nullopt;
    PageShape shape;
    shape.frame_ = frameOf(tracks, linePitch);
    if (shape.frame_.right - shape.frame_.left < 1)
        return std::nullopt;
    std::vector<const LineTrack*> used;
    std::vector<double> places;
    for (const LineTrack& track : tracks) {
        used.push_back(&track);
        places.push_back(shape.frame_.shareOf(track.points[track.points.size() / 2].y));
    }
    // Lines that do not belong are left out, first the worst, then what does not agree.
    for (const double most : {3 * kAgreeing, 1.5 * kAgreeing, kAgreeing}) {
        shape.bend_ = shape.solve(used, places, linePitch);
        shape.settlePlaces(used, shape.bend_, places);
        shape.dropStrangers(used, places, most * linePitch);
        if (used.size() < 2)
            return std::nullopt;
    }
    shape.bend_ = shape.solve(used, places, linePitch);
    for (std::size_t i = 0; i < used.size(); ++i) {
        double rms = 0;
        shape.agreeing_.push_back(*used[i]);
        shape.offsets_.push_back(shape.offsetOf(*used[i], shape.bend_, places[i], rms));
    }
    shape.places_ = std::move(places);
    shape.judge(tracks, width, height, linePitch);
    return shape;
}

std::vector<QPointF> PageShape::lineOf(std::size_t i, double left, double right) const {
    constexpr int kNodes = 49;
    std::vector<QPointF> line;
    for (int k = 0; k < kNodes; ++k) {
        const double x = left + (right - left) * k / (kNodes - 1);
        line.push_back({x, offsets_[i] + riseAt(bend_, x, places_[i])});
    }
    return line;
}

}  // namespace velloran::dewarping
