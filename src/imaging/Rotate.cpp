#include "imaging/Rotate.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>
#include <vector>

#include "core/ExactMath.h"
#include "core/StepContext.h"
#include "core/Threads.h"
#include "imaging/CubicSample.h"
#include "imaging/PlacedPixels.h"

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

void Repeat(const std::uint8_t* pixel, int channels, std::uint8_t* out, int count) {
    if (channels == 1)
        std::memset(out, *pixel, static_cast<std::size_t>(count));
    else
        for (int x = 0; x < count; ++x)
            std::copy_n(pixel, 3, out + 3 * std::ptrdiff_t{x});
}

/// Places of which each rounds to the pixel behind that of the one before it, in the same row: so
/// many at the most from `place` on, itself included. A turn of one degree has runs of 57.
std::int64_t RunFrom(Place place, Place step) {
    constexpr std::int64_t kWhole = std::int64_t{1} << kFractionBits;
    const std::int64_t x = (place.x + kHalf) & (kWhole - 1), y = (place.y + kHalf) & (kWhole - 1);
    if (step.x <= 0 || step.x > kWhole)
        return 1;
    std::int64_t run = std::numeric_limits<std::int32_t>::max();
    if (step.x < kWhole)  // falls behind a pixel at a time
        run = x / (kWhole - step.x);
    if (step.y > 0)
        run = std::min(run, (kWhole - 1 - y) / step.y);
    else if (step.y < 0)
        run = std::min(run, y / -step.y);
    return run + 1;
}

void NearestRow(ConstPlaneView source, Place place, Place step, Piece piece, std::int32_t*,
                std::uint8_t* out) {
    const int channels = source.channels;
    place = At(place, step, piece.first);
    for (int x = piece.first; x < piece.end;) {
        const int run =
            static_cast<int>(std::min<std::int64_t>(RunFrom(place, step), piece.end - x));
        std::memcpy(out + std::ptrdiff_t{x} * channels,
                    source.first + place.NearestY() * source.stride +
                        std::ptrdiff_t{place.NearestX()} * channels,
                    static_cast<std::size_t>(run) * static_cast<std::size_t>(channels));
        x += run;
        place = At(place, step, run);
    }
}

/// A place in 1/kCubicSteps of a pixel. Rounded, so that one halfway between two steps takes the
/// nearer sample.
std::int64_t StepsOf(std::int64_t place) {
    constexpr int kToStep = kFractionBits - 8;
    return (place + (std::int64_t{1} << (kToStep - 1))) >> kToStep;
}

/// `scratch` holds twice as many numbers as a row has pixels.
void CubicRow(ConstPlaneView source, Place place, Place step, Piece piece, std::int32_t* scratch,
              std::uint8_t* out) {
    const int count = piece.end - piece.first;
    const PixelPlaces places{scratch, scratch + count};
    place = At(place, step, piece.first);
    for (int i = 0; i < count; ++i, place = place + step) {
        places.x[i] = static_cast<std::int32_t>(StepsOf(place.x));
        places.y[i] = static_cast<std::int32_t>(StepsOf(place.y));
    }
    CubicPixels(source, places, count, out + std::ptrdiff_t{piece.first} * source.channels);
}

/// Of sources whose places fit no shorter numbers.
void LongCubicRow(ConstPlaneView source, Place place, Place step, Piece piece, std::int32_t*,
                  std::uint8_t* out) {
    const auto sample = source.channels == 3 ? CubicSample<3> : CubicSample<1>;
    place = At(place, step, piece.first);
    for (int x = piece.first; x < piece.end; ++x, place = place + step)
        sample(source, StepsOf(place.x), StepsOf(place.y),
               out + std::ptrdiff_t{x} * source.channels);
}

using RowKernel = void (*)(ConstPlaneView, Place, Place, Piece, std::int32_t*, std::uint8_t*);

void RotateRows(ConstPlaneView source, const Rotation& rotation, PlaneView target, RowKernel kernel,
                bool wantsScratch) {
    const Inverse inverse(rotation);
    const Place step = inverse.Step();
    const CancelToken cancel = CurrentCancel();
    const std::size_t room = wantsScratch ? 2 * static_cast<std::size_t>(target.width) : 0;
    std::vector<std::int32_t> scratch(room * static_cast<std::size_t>(MaxThreads()));
#pragma omp parallel for schedule(static) if (IsWorthThreads(source))
    for (int y = 0; y < target.height; ++y) {
        if (cancel.IsCancelled())
            continue;
        const Place start = inverse.RowStart(y);
        const Piece piece = PieceInside(start, step, source.width, source.height);
        std::uint8_t* out = target.Row(y).data();
        kernel(source, start, step, piece,
               scratch.data() + room * static_cast<std::size_t>(ThreadNumber()), out);
        if (rotation.outside == nullptr)
            continue;
        Repeat(rotation.outside, target.channels, out, piece.first);
        Repeat(rotation.outside, target.channels, out + std::ptrdiff_t{piece.end} * target.channels,
               target.width - piece.end);
    }
}

}  // namespace

void RotateNearest(ConstPlaneView source, const Rotation& rotation, PlaneView target) {
    RotateRows(source, rotation, target, NearestRow, /*wantsScratch=*/false);
}

void RotateCubic(ConstPlaneView source, const Rotation& rotation, PlaneView target) {
    const bool fits = std::max(source.width, source.height) <= kLongestPlacedSide;
    RotateRows(source, rotation, target, fits ? CubicRow : LongCubicRow, /*wantsScratch=*/fits);
}

}  // namespace velloran
