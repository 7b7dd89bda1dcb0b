#include "imaging/MinMax.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "imaging/SamplePlane.h"
#include "support/Threads.h"

namespace velloran {
namespace {

using test::Content;
using test::ExpectSameSamples;
using test::kContents;
using test::MakeSamples;
using test::SamplePlane;

SamplePlane Extremes(const SamplePlane& source, const Window& window, bool minimum) {
    SamplePlane result(source.Width(), source.Height(), source.Channels());
    for (int y = 0; y < source.Height(); ++y)
        for (int x = 0; x < source.Width(); ++x)
            for (int c = 0; c < source.Channels(); ++c) {
                int extreme = minimum ? 255 : 0;
                for (int j = 0; j < window.height; ++j)
                    for (int i = 0; i < window.width; ++i) {
                        const int sample =
                            source.Nearest(x - window.anchorX + i, y - window.anchorY + j, c);
                        extreme = minimum ? std::min(extreme, sample) : std::max(extreme, sample);
                    }
                result.At(x, y, c) = static_cast<std::uint8_t>(extreme);
            }
    return result;
}

void ExpectPlainExtremes(const SamplePlane& source, const Window& window) {
    SamplePlane target(source.Width(), source.Height(), source.Channels());
    MinFilter(source.View(), window, target.View());
    ExpectSameSamples(target, Extremes(source, window, /*minimum=*/true));
    MaxFilter(source.View(), window, target.View());
    ExpectSameSamples(target, Extremes(source, window, /*minimum=*/false));
}

constexpr Window kWindows[] = {{1, 1, 0, 0}, {2, 2, 1, 1}, {3, 3, 1, 1}, {4, 4, 2, 2},
                               {5, 5, 2, 2}, {7, 2, 0, 1}, {1, 9, 0, 8}};

TEST(MinMaxFilter, EqualsThePlainExtremeOnEveryPlane) {
    for (const Window& window : kWindows)
        for (const int channels : {1, 3}) {
            for (int width = 1; width <= 17; ++width)
                for (const int height : {1, 2, 3, 16, 17})
                    ExpectPlainExtremes(MakeSamples(width, height, channels, Content::kNoise),
                                        window);
            for (const int width : {63, 64, 65, 129, 700})
                for (const Content content : kContents)
                    ExpectPlainExtremes(MakeSamples(width, 40, channels, content), window);
        }
}

TEST(MinMaxFilter, TheWidestWindowCoversASmallPlane) {
    const Window window{kMostWindowSide, kMostWindowSide, 31, 40};
    ExpectPlainExtremes(MakeSamples(5, 7, 3, Content::kNoise), window);
    ExpectPlainExtremes(MakeSamples(90, 90, 1, Content::kSmooth), window);
}

TEST(MinMaxFilter, PlanesOfMoreThan32767PixelsAreWhole) {
    ExpectPlainExtremes(MakeSamples(40001, 2, 3, Content::kNoise), {3, 3, 1, 1});
    ExpectPlainExtremes(MakeSamples(2, 40001, 1, Content::kNoise), {3, 3, 1, 1});
}

TEST(MinMaxFilter, ReadsAndWritesRowsThatAreStoredUpsideDown) {
    const SamplePlane source = MakeSamples(6, 6, 1, Content::kNoise);
    SamplePlane target(6, 6);
    MinFilter(source.View().UpsideDown(), {1, 2, 0, 1}, target.View().UpsideDown());
    // Up, as the rows are told, is the next stored row.
    EXPECT_EQ(target.At(2, 3), std::min(source.At(2, 3), source.At(2, 4)));
    EXPECT_EQ(target.At(2, 5), source.At(2, 5));
}

TEST(MinMaxFilter, ThreadsDoNotChangeTheBytes) {
    const SamplePlane source = MakeSamples(701, 90, 3, Content::kNoise);
    SamplePlane one(701, 90, 3);
    {
        const test::Threads guard(1);
        MinFilter(source.View(), {5, 5, 2, 2}, one.View());
    }
    for (const int threads : {2, 7}) {
        const test::Threads guard(threads);
        SamplePlane several(701, 90, 3);
        MinFilter(source.View(), {5, 5, 2, 2}, several.View());
        ExpectSameSamples(several, one);
    }
}

}  // namespace
}  // namespace velloran
