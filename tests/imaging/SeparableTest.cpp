#include "imaging/Separable.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <new>
#include <numeric>
#include <vector>

#include "imaging/FilterBands.h"
#include "imaging/PlainSums.h"
#include "imaging/SamplePlane.h"
#include "support/FailingAllocator.h"
#include "support/Threads.h"

namespace velloran {
namespace {

using test::Content;
using test::ExpectSameSamples;
using test::ForManyPlanes;
using test::MakeSamples;
using test::RoundedQuotient;
using test::SamplePlane;
using test::Weights;

const Weights kKernels[] = {
    {1}, {1, 2, 1}, {54, 244, 402, 244, 54}, {3, -1, 0, 7, 5, -2, 1}, Weights(39, 50)};

std::int32_t SumOf(const Weights& taps) {
    return std::accumulate(taps.begin(), taps.end(), 0);
}

int Folded(int index, int size) {
    while (index < 0 || index >= size)
        index = index < 0 ? -1 - index : 2 * size - 1 - index;
    return index;
}

SamplePlane Filtered(const SamplePlane& source, const Weights& taps, std::int32_t divisor,
                     bool alongRows) {
    const int reach = static_cast<int>(taps.size()) / 2;
    SamplePlane result(source.Width(), source.Height(), source.Channels());
    for (int y = 0; y < source.Height(); ++y)
        for (int x = 0; x < source.Width(); ++x)
            for (int c = 0; c < source.Channels(); ++c) {
                std::int64_t sum = 0;
                for (int k = -reach; k <= reach; ++k)
                    sum += std::int64_t{taps[static_cast<std::size_t>(k + reach)]} *
                           (alongRows ? source.At(Folded(x + k, source.Width()), y, c)
                                      : source.At(x, Folded(y + k, source.Height()), c));
                result.At(x, y, c) = RoundedQuotient(sum, divisor);
            }
    return result;
}

/// Columns, then rows.
SamplePlane FilteredBothWays(const SamplePlane& source, const Weights& taps) {
    const std::int32_t sum = SumOf(taps);
    return Filtered(Filtered(source, taps, sum, /*alongRows=*/false), taps, sum,
                    /*alongRows=*/true);
}

TEST(FilterColumnsAndRows, EqualThePlainSumWithReflectedEdges) {
    for (const Weights& taps : kKernels) {
        const std::int32_t sum = std::accumulate(taps.begin(), taps.end(), 0);
        ForManyPlanes([&](const SamplePlane& source) {
            SamplePlane target(source.Width(), source.Height(), source.Channels());
            FilterColumns(source.View(), taps, sum, target.View());
            ExpectSameSamples(target, Filtered(source, taps, sum, /*alongRows=*/false));
            FilterRows(source.View(), taps, sum, target.View());
            ExpectSameSamples(target, Filtered(source, taps, sum, /*alongRows=*/true));
        });
    }
}

TEST(FilterColumnsAndRows, TheLongestKernelFoldsOftenOverASmallPlane) {
    Weights taps(801);
    for (std::size_t i = 0; i < taps.size(); ++i)
        taps[i] = static_cast<std::int32_t>(1 + i % 3);
    const std::int32_t sum = std::accumulate(taps.begin(), taps.end(), 0);
    for (const int channels : {1, 3})
        for (const int width : {1, 2, 13, 500}) {
            const SamplePlane source = MakeSamples(width, 3, channels, Content::kNoise);
            SamplePlane target(width, 3, channels);
            FilterColumns(source.View(), taps, sum, target.View());
            ExpectSameSamples(target, Filtered(source, taps, sum, /*alongRows=*/false));
            FilterRows(source.View(), taps, sum, target.View());
            ExpectSameSamples(target, Filtered(source, taps, sum, /*alongRows=*/true));
        }
}

TEST(FilterColumnsAndRows, PlanesOfMoreThan32767PixelsAreWhole) {
    const Weights taps = {1, 2, 1};
    for (const bool isWide : {true, false}) {
        const SamplePlane source =
            MakeSamples(isWide ? 40001 : 2, isWide ? 2 : 40001, 3, Content::kNoise);
        SamplePlane target(source.Width(), source.Height(), 3);
        FilterColumns(source.View(), taps, 4, target.View());
        ExpectSameSamples(target, Filtered(source, taps, 4, /*alongRows=*/false));
        FilterRows(source.View(), taps, 4, target.View());
        ExpectSameSamples(target, Filtered(source, taps, 4, /*alongRows=*/true));
    }
}

TEST(FilterInPlace, EqualsThePlainSumsBothWays) {
    for (const Weights& taps : kKernels)
        ForManyPlanes([&](const SamplePlane& source) {
            SamplePlane target = source;
            FilterInPlace(target.View(), taps, SumOf(taps));
            ExpectSameSamples(target, FilteredBothWays(source, taps));
        });
}

TEST(FilterInPlace, BandsMeetWithoutATrace) {
    const Weights narrow = {3, -1, 0, 7, 5, -2, 1}, wide(39, 50);
    for (const Weights& taps : {narrow, wide}) {
        const SamplePlane source = MakeSamples(311, 250, 3, Content::kNoise);
        const SamplePlane expected = FilteredBothWays(source, taps);
        ASSERT_TRUE(FitsInBands(source.View(), taps.size()));
        for (const int threads : {1, 2, 3, 7}) {
            const test::Threads guard(threads);
            SamplePlane target = source;
            FilterInPlace(target.View(), taps, SumOf(taps));
            ExpectSameSamples(target, expected);
        }
    }
}

TEST(FilterInPlace, RowsTooWideForBandsTakeTwoPasses) {
    const Weights taps = {1, 2, 1};
    const SamplePlane source = MakeSamples(9001, 40, 3, Content::kNoise);
    ASSERT_FALSE(FitsInBands(source.View(), taps.size()));
    SamplePlane target = source;
    FilterInPlace(target.View(), taps, 4);
    ExpectSameSamples(target, FilteredBothWays(source, taps));
}

TEST(FilterInPlace, MixesWhatItFilteredWithWhatWasThere) {
    const Weights taps = {1, 2, 1};
    for (const int width : {5, 311, 9001}) {
        const SamplePlane source = MakeSamples(width, 90, 3, Content::kNoise);
        SamplePlane expected = FilteredBothWays(source, taps), target = source;
        for (int y = 0; y < 90; ++y)
            for (int x = 0; x < width; ++x)
                for (int c = 0; c < 3; ++c)
                    expected.At(x, y, c) = static_cast<std::uint8_t>(
                        (expected.At(x, y, c) + 3 * source.At(x, y, c)) / 4);
        FilterInPlace(target.View(), taps, 4,
                      [](const std::uint8_t* filtered, int count, std::uint8_t* row) {
                          for (int i = 0; i < count; ++i)
                              row[i] = static_cast<std::uint8_t>((filtered[i] + 3 * row[i]) / 4);
                      });
        ExpectSameSamples(target, expected);
    }
}

TEST(FilterInPlace, WithoutMemoryNothingChanges) {
    for (const int width : {311, 9001}) {
        const SamplePlane source = MakeSamples(width, 90, 3, Content::kNoise);
        SamplePlane target = source;
        const int failed = test::SweepFailingAllocations([&](long n) {
            bool isRefused = false;
            {
                const test::FailAllocation fail(n);
                try {
                    FilterInPlace(target.View(), Weights{1, 2, 1}, 4);
                } catch (const std::bad_alloc&) {
                    isRefused = true;
                }
            }
            if (isRefused)
                ExpectSameSamples(target, source);
        });
        EXPECT_GT(failed, 3);
    }
}

TEST(FilterInPlace, AnEmptyPlaneHasNothingToMix) {
    bool isAsked = false;
    FilterInPlace(PlaneView{}, Weights{1, 2, 1}, 4,
                  [&](const std::uint8_t*, int, std::uint8_t*) { isAsked = true; });
    EXPECT_FALSE(isAsked);
}

TEST(FilterColumnsAndRows, ThreadsDoNotChangeTheBytes) {
    const SamplePlane source = MakeSamples(701, 90, 3, Content::kNoise);
    const Weights taps = {1, 3, 9, 3, 1};
    std::vector<SamplePlane> results;
    for (const int threads : {1, 2, 7}) {
        const test::Threads guard(threads);
        SamplePlane both(701, 180, 3);
        PlaneView target = both.View();
        target.height = 90;
        FilterColumns(source.View(), taps, 17, target);
        target.first += 90 * target.stride;
        FilterRows(source.View(), taps, 17, target);
        results.push_back(both);
    }
    ExpectSameSamples(results[1], results[0]);
    ExpectSameSamples(results[2], results[0]);
}

}  // namespace
}  // namespace velloran
