#include "imaging/Rotate.h"

#include <algorithm>
#include <cstddef>

#include "core/ExactMath.h"
#include "core/StepContext.h"
#include "core/Threads.h"
#include "imaging/CubicSample.h"

namespace velloran {
namespace {

// Places in the source are fixed-point numbers of 32 fraction bits, so that every processor finds
// the same ones; over a row of 2^20 pixels they are off by less than 1/4096.
constexpr int kFractionBits = 32;
constexpr std::int64_t kHalf = std::int64_t{1} << (kFractionBits - 1);
constexpr double kOne = 4294967296.0;

struct Place {
    std::int64_t x = 0, y = 0;
    Place operator+(const Place& step) const { return {x + step.x, y + step.y}; }
    int NearestX() const { return static_cast<int>((x + kHalf) >> kFractionBits); }
    int NearestY() const { return static_cast<int>((y + kHalf) >> kFractionBits); }
};

/// Where target pixels come from.
class Inverse {
 public:
    explicit Inverse(const Rotation& rotation)
        : sine_(Sin(rotation.degrees * kRadian)),
          cosine_(Cos(rotation.degrees * kRadian)),
          rotation_(rotation) {}

    Place Step() const { return {Fixed(cosine_), Fixed(sine_)}; }

    /// Of the first pixel of row y.
    Place RowStart(int y) const {
        const double dx = -rotation_.centerX, dy = y - rotation_.centerY;
        return {Fixed(cosine_ * dx - sine_ * dy + rotation_.centerX),
                Fixed(sine_ * dx + cosine_ * dy + rotation_.centerY)};
    }

 private:
    static constexpr double kRadian = 0.017453292519943295;
    static std::int64_t Fixed(double value) { return static_cast<std::int64_t>(value * kOne); }

    double sine_, cosine_;
    Rotation rotation_;
};

/// The pixels first <= x < end of a row whose places round into the source; what a straight line
/// crosses of a rectangle is one piece.
struct Piece {
    int first = 0, end = 0;
};

bool IsInside(Place place, int width, int height) {
    const int x = place.NearestX(), y = place.NearestY();
    return x >= 0 && y >= 0 && x < width && y < height;
}

Place At(Place start, Place step, int x) {
    return {start.x + step.x * x, start.y + step.y * x};
}

Piece PieceInside(Place start, Place step, int width, int height) {
    Piece piece{0, width};
    while (piece.first < width && !IsInside(At(start, step, piece.first), width, height))
        ++piece.first;
    while (piece.end > piece.first && !IsInside(At(start, step, piece.end - 1), width, height))
        --piece.end;
    return piece;
}

template <int kChannels>
void NearestRow(ConstPlaneView source, Place place, Place step, Piece piece, std::uint8_t* out) {
    place = At(place, step, piece.first);
    out += std::ptrdiff_t{piece.first} * kChannels;
    for (int x = piece.first; x < piece.end; ++x, place = place + step, out += kChannels) {
        const std::uint8_t* from = source.first + place.NearestY() * source.stride +
                                   std::ptrdiff_t{place.NearestX()} * kChannels;
        for (int c = 0; c < kChannels; ++c)
            out[c] = from[c];
    }
}

template <int kChannels>
void CubicRow(ConstPlaneView source, Place place, Place step, Piece piece, std::uint8_t* out) {
    constexpr int kToStep = kFractionBits - 8;
    place = At(place, step, piece.first);
    out += std::ptrdiff_t{piece.first} * kChannels;
    for (int x = piece.first; x < piece.end; ++x, place = place + step, out += kChannels) {
        // Rounded to a step, so that a place halfway between two steps takes the nearer sample.
        const std::int64_t xSteps = (place.x + (std::int64_t{1} << (kToStep - 1))) >> kToStep;
        const std::int64_t ySteps = (place.y + (std::int64_t{1} << (kToStep - 1))) >> kToStep;
        CubicSample<kChannels>(source, xSteps, ySteps, out);
    }
}

using RowKernel = void (*)(ConstPlaneView, Place, Place, Piece, std::uint8_t*);

void RotateRows(ConstPlaneView source, const Rotation& rotation, PlaneView target,
                RowKernel kernel) {
    const Inverse inverse(rotation);
    const Place step = inverse.Step();
    const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(static) if (IsWorthThreads(source))
    for (int y = 0; y < target.height; ++y) {
        if (cancel.IsCancelled())
            continue;
        const Place start = inverse.RowStart(y);
        const Piece piece = PieceInside(start, step, source.width, source.height);
        kernel(source, start, step, piece, target.Row(y).data());
    }
}

}  // namespace

void RotateNearest(ConstPlaneView source, const Rotation& rotation, PlaneView target) {
    RotateRows(source, rotation, target, source.channels == 3 ? NearestRow<3> : NearestRow<1>);
}

void RotateCubic(ConstPlaneView source, const Rotation& rotation, PlaneView target) {
    RotateRows(source, rotation, target, source.channels == 3 ? CubicRow<3> : CubicRow<1>);
}

}  // namespace velloran
