// Each form of the surface blur beside a plain second formulation.

#include <gtest/gtest.h>

#include <cstdint>

#include "core/Threads.h"
#include "filters/ColumnCounts.h"
#include "filters/PlainPlanes.h"
#include "filters/SurfaceBlur.h"
#include "filters/SurfaceBlurHistogram.h"
#include "support/EachForm.h"
#include "support/Images.h"

namespace velloran {
namespace {

using test::PlainPlane;

constexpr int kWeighted = 0, kGuided = 1, kGaussian = 2, kMean = 3;

PlainPlane Times(int times, PlainPlane plane,
                 const std::function<PlainPlane(const PlainPlane&)>& pass) {
    for (int i = 0; i < times; ++i)
        plane = pass(plane);
    return plane;
}

template <typename SampleAt>
PlainPlane Mapped(const PlainPlane& plane, SampleAt&& sampleAt) {
    PlainPlane out = plane;
    for (int y = 0; y < plane.height; ++y)
        for (int x = 0; x < plane.width; ++x)
            out.At(x, y) = sampleAt(x, y);
    return out;
}

float PlainWeight(int difference, int threshold) {
    const auto t = static_cast<float>(threshold * 2.5);
    const float weight = 1.0F - static_cast<float>(std::abs(difference)) / t;
    return weight < 0.0F ? 0.0F : weight;
}

PlainPlane PlainDirect(const PlainPlane& plane, int radius, int threshold) {
    return Mapped(plane, [&](int x, int y) {
        float weights = 0, samples = 0;
        for (int dy = -radius; dy <= radius; ++dy)
            for (int dx = -radius; dx <= radius; ++dx) {
                const int v = plane.Clamped(x + dx, y + dy);
                const float w = PlainWeight(v - plane.At(x, y), threshold);
                weights += w;
                samples += static_cast<float>(v) * w;
            }
        return static_cast<int>(static_cast<double>(samples / weights) + 0.5);
    });
}

int PlainMirror(int x, int size) {
    if (x < 0) {
        x = -x;
        while (x >= size)
            x -= size;
    } else if (x >= size) {
        x = 2 * size - x - 2;
        while (x < 0)
            x += size;
    }
    return x;
}

/// The weight of a difference, for the forms in integers.
using Weight = std::function<int(int difference)>;

PlainPlane PlainMirrored(const PlainPlane& plane, int radius, const Weight& weight) {
    return Mapped(plane, [&](int x, int y) {
        std::uint32_t den = 0, num = 0;
        for (int dy = -radius; dy <= radius; ++dy)
            for (int dx = -radius; dx <= radius; ++dx) {
                const int v =
                    plane.At(PlainMirror(x + dx, plane.width), PlainMirror(y + dy, plane.height));
                const auto w = static_cast<std::uint32_t>(weight(v - plane.At(x, y)));
                den += w;
                num += w * static_cast<std::uint32_t>(v);
            }
        return static_cast<int>((num + den / 2) / den);
    });
}

Weight LinearWeight(int threshold) {
    return [=](int d) { return std::max(0, 2500 - std::abs(d) * 1000 / threshold); };
}

Weight EqualWeight(int threshold) {
    return [=](int d) { return std::abs(d) <= threshold ? 1 : 0; };
}

/// One stage of the selective Gaussian, along the rows or the columns.
PlainPlane PlainGaussianStage(const PlainPlane& plane, int radius, int threshold, bool alongRows) {
    const double sigma = radius / 3.0, d = (sigma + sigma) * sigma;
    const double g = 1.0 / std::sqrt(d * 3.1415924);
    return Mapped(plane, [&](int x, int y) {
        std::uint32_t sum = 0, taps = 0;
        for (int j = -(radius - 1); j <= radius - 1; ++j) {
            const int nx = alongRows ? x + j : x, ny = alongRows ? y : y + j;
            if (nx < 0 || nx >= plane.width || ny < 0 || ny >= plane.height ||
                std::abs(plane.At(nx, ny) - plane.At(x, y)) > threshold)
                continue;
            const auto k = static_cast<std::uint32_t>(std::exp(-(j * j) / d) * g * 2048.0);
            sum += k * static_cast<std::uint32_t>(plane.At(nx, ny));
            taps += k;
        }
        return static_cast<int>((sum + taps / 2) / taps);
    });
}

PlainPlane PlainGaussian(const PlainPlane& plane, int radius, int threshold) {
    return PlainGaussianStage(PlainGaussianStage(plane, radius, threshold, true), radius, threshold,
                              false);
}

CDibImage Blurred(const CDibImage& image, int radius, int threshold, int times, int algorithm) {
    CDibImage blurred = image;
    EXPECT_NE(SurfaceBlur(blurred, radius, threshold, times, algorithm), 0);
    return blurred;
}

TEST(SurfaceBlurForms, DirectFormIsTheFloatSumsOfTheWholeWindow) {
    test::ForEachPicture([](const CDibImage& image, int number) {
        const int radius = 1 + number % 5, threshold = 2 + number * 7 % 49, times = 1 + number % 2;
        test::ExpectSamePixels(Blurred(image, radius, threshold, times, kWeighted),
                               test::WithPlanes(image, [=](const PlainPlane& plane) {
                                   return Times(times, plane, [=](const PlainPlane& p) {
                                       return PlainDirect(p, radius, threshold);
                                   });
                               }));
    });
}

TEST(SurfaceBlurForms, DirectFormKeepsTheFloatSumsWhereTheyTouchATie) {
    // With one neighbour level at equal weight the mean is exactly in the middle, or next to it.
    for (const int threshold : {2, 3, 7, 20, 33, 50})
        for (int radius = 1; radius <= 5; ++radius) {
            CDibImage image = test::TwoLevels(40, 30, 8, 199);
            for (int x = 0; x < 40; x += 3)
                image.GetBits(7)[x] = static_cast<std::uint8_t>(199 + threshold * 2);
            test::ExpectSamePixels(Blurred(image, radius, threshold, 1, kWeighted),
                                   test::WithPlanes(image, [=](const PlainPlane& plane) {
                                       return PlainDirect(plane, radius, threshold);
                                   }));
        }
}

TEST(SurfaceBlurForms, HistogramFormIsTheIntegerSumsOfTheMirroredWindow) {
    test::ForEachPicture([](const CDibImage& image, int number) {
        const int radius = 6 + number % 10, threshold = 2 + number * 7 % 49;
        test::ExpectSamePixels(Blurred(image, radius, threshold, 1, kWeighted),
                               test::WithPlanes(image, [=](const PlainPlane& plane) {
                                   return PlainMirrored(plane, radius, LinearWeight(threshold));
                               }));
    });
}

TEST(SurfaceBlurForms, SelectiveBlurIsTheMeanOfTheAcceptedSamples) {
    test::ForEachPicture([](const CDibImage& image, int number) {
        const int radius = 1 + number % 15, threshold = 2 + number * 7 % 49;
        test::ExpectSamePixels(Blurred(image, radius, threshold, 1, kMean),
                               test::WithPlanes(image, [=](const PlainPlane& plane) {
                                   return PlainMirrored(plane, radius, EqualWeight(threshold));
                               }));
    });
}

TEST(SurfaceBlurForms, HistogramFormsJoinTheirTilesWithoutASeam) {
    for (const auto& [width, height] : {std::pair{530, 7}, {7, 270}, {1030, 260}}) {
        const CDibImage image = test::Smooth(width, height, 8);
        test::ExpectSamePixels(Blurred(image, 6, 9, 1, kWeighted),
                               test::WithPlanes(image, [](const PlainPlane& plane) {
                                   return PlainMirrored(plane, 6, LinearWeight(9));
                               }));
        test::ExpectSamePixels(Blurred(image, 3, 50, 1, kMean),
                               test::WithPlanes(image, [](const PlainPlane& plane) {
                                   return PlainMirrored(plane, 3, EqualWeight(50));
                               }));
    }
}

TEST(SurfaceBlurForms, HistogramFormsFeedEachPassTheOneBefore) {
    const CDibImage image = test::Noise(45, 33, 24, 3);
    test::ExpectSamePixels(
        Blurred(image, 7, 40, 3, kWeighted), test::WithPlanes(image, [](const PlainPlane& plane) {
            return Times(3, plane,
                         [](const PlainPlane& p) { return PlainMirrored(p, 7, LinearWeight(40)); });
        }));
    test::ExpectSamePixels(
        Blurred(image, 4, 50, 3, kMean), test::WithPlanes(image, [](const PlainPlane& plane) {
            return Times(3, plane,
                         [](const PlainPlane& p) { return PlainMirrored(p, 4, EqualWeight(50)); });
        }));
}

TEST(SurfaceBlurForms, LargestCountsAndWeightsStayExact) {
    // A window of 961 white samples, and one of white and the level with the largest product.
    CDibImage image = test::Filled(64, 40, 8, 255);
    test::ExpectSamePixels(Blurred(image, 15, 50, 1, kWeighted), image);
    for (int y = 0; y < 40; ++y)
        for (int x = y % 2; x < 64; x += 2)
            image.GetBits(y)[x] = 193;
    test::ExpectSamePixels(Blurred(image, 15, 50, 1, kWeighted),
                           test::WithPlanes(image, [](const PlainPlane& plane) {
                               return PlainMirrored(plane, 15, LinearWeight(50));
                           }));
}

TEST(SurfaceBlurForms, RowsAgreeInEachForm) {
    const int count = 70;
    for (const int radius : {1, 6, 15})
        for (const int reach : {2, 50, 125}) {
            const CDibImage noise = test::Noise(count + 2 * radius, 2 * radius + 1, 8, 9);
            ColumnCounts counts(count + 2 * radius);
            counts.Clear(count + 2 * radius);
            for (int y = 0; y < noise.GetHeight(); ++y)
                for (int x = 0; x < noise.GetWidth(); ++x)
                    counts.Add(x, noise.GetBits(y)[x]);
            LevelWeights weights;
            weights.reach = reach;
            for (int d = -reach; d <= reach; ++d)
                weights.table[static_cast<std::size_t>(d + 255)] =
                    static_cast<std::int16_t>(2500 - std::abs(d) * 19);
            std::vector<std::uint8_t> plain(count);
            HistogramRow row{&counts, &weights, noise.GetBits(radius) + radius, plain.data(), 1,
                             count,   radius};
            test::InEachForm([&](const std::string& form) {
                std::vector<std::uint8_t> made(count);
                row.target = form == "SCALAR" ? plain.data() : made.data();
                BlurHistogramRow(row);
                EXPECT_TRUE(form == "SCALAR" || plain == made) << radius << ' ' << reach;
            });
            EXPECT_NE(plain, std::vector<std::uint8_t>(count, plain[0]));
        }
}

TEST(SurfaceBlurForms, SelectiveGaussianIsTwoStagesOfAcceptedTaps) {
    test::ForEachPicture([](const CDibImage& image, int number) {
        const int radius = 1 + number % 15, threshold = 2 + number * 7 % 49, times = 1 + number % 3;
        test::ExpectSamePixels(Blurred(image, radius, threshold, times, kGaussian),
                               test::WithPlanes(image, [=](const PlainPlane& plane) {
                                   return Times(times, plane, [=](const PlainPlane& p) {
                                       return PlainGaussian(p, radius, threshold);
                                   });
                               }));
    });
}

TEST(SurfaceBlurForms, SelectiveGaussianHandlesRowsOfSeveralBlocks) {
    for (const int width : {255, 256, 257, 600}) {
        const CDibImage image = test::Smooth(width, 9, 24);
        for (const auto& [radius, threshold] : {std::pair{2, 50}, {3, 50}, {15, 20}})
            test::ExpectSamePixels(Blurred(image, radius, threshold, 1, kGaussian),
                                   test::WithPlanes(image, [&](const PlainPlane& plane) {
                                       return PlainGaussian(plane, radius, threshold);
                                   }));
    }
}

// The guided filter, means in double precision.

struct PlainFloats {
    int width = 0, height = 0;
    std::vector<float> values;

    float& At(int x, int y) { return values[static_cast<std::size_t>(y * width + x)]; }
    float At(int x, int y) const { return values[static_cast<std::size_t>(y * width + x)]; }
};

PlainFloats PlainBoxMean(const PlainFloats& plane, int radius) {
    PlainFloats out = plane;
    const double area = (2.0 * radius + 1) * (2.0 * radius + 1);
    for (int y = 0; y < plane.height; ++y)
        for (int x = 0; x < plane.width; ++x) {
            double sum = 0;
            for (int dy = -radius; dy <= radius; ++dy)
                for (int dx = -radius; dx <= radius; ++dx)
                    sum += static_cast<double>(plane.At(std::clamp(x + dx, 0, plane.width - 1),
                                                        std::clamp(y + dy, 0, plane.height - 1)));
            out.At(x, y) = static_cast<float>(sum / area);
        }
    return out;
}

PlainPlane PlainGuided(const PlainPlane& plane, int radius, int threshold, int times) {
    const auto eps = static_cast<float>(threshold * threshold * 0.7);
    PlainPlane p = plane;
    PlainFloats i{plane.width, plane.height, {}};
    for (const int sample : plane.samples)
        i.values.push_back(static_cast<float>(sample));
    for (int pass = 0; pass < times; ++pass) {
        PlainFloats q = i;
        for (float& value : q.values)
            value *= value;
        i = PlainBoxMean(i, radius);
        q = PlainBoxMean(q, radius);
        for (std::size_t at = 0; at < q.values.size(); ++at) {
            const float variance = q.values[at] - i.values[at] * i.values[at];
            q.values[at] = variance / (variance + eps);
            i.values[at] -= q.values[at] * i.values[at];
        }
        q = PlainBoxMean(q, radius);
        i = PlainBoxMean(i, radius);
        for (std::size_t at = 0; at < q.values.size(); ++at) {
            i.values[at] += q.values[at] * static_cast<float>(p.samples[at]);
            p.samples[at] = static_cast<int>(
                std::clamp(std::lround(static_cast<double>(i.values[at])), 0L, 255L));
        }
    }
    return p;
}

TEST(SurfaceBlurForms, GuidedFilterFollowsItsStepsUpToTheLastBitOfTheMeans) {
    long samples = 0, different = 0;
    test::ForEachPicture([&](const CDibImage& image, int number) {
        if (image.GetWidth() < 3 || image.GetHeight() < 3)
            return;
        const int radius = 1 + number % 15, threshold = 2 + number * 7 % 49, times = 1 + number % 3;
        const std::vector<PlainPlane> actual =
            test::PlanesOf(Blurred(image, radius, threshold, times, kGuided));
        const std::vector<PlainPlane> expected =
            test::PlanesOf(test::WithPlanes(image, [=](const PlainPlane& plane) {
                return PlainGuided(plane, radius, threshold, times);
            }));
        for (std::size_t c = 0; c < actual.size(); ++c)
            for (std::size_t at = 0; at < actual[c].samples.size(); ++at) {
                const int by = std::abs(actual[c].samples[at] - expected[c].samples[at]);
                ASSERT_LE(by, 1);
                ++samples;
                different += by;
            }
    });
    EXPECT_GT(samples, 50000);
    EXPECT_LE(different, samples / 1000);
}

TEST(SurfaceBlurForms, GuidedFilterCarriesItsUnroundedValuesIntoTheNextPass) {
    const CDibImage image = test::Noise(30, 30, 8, 4);
    const CDibImage twice = Blurred(image, 4, 50, 2, kGuided);
    const CDibImage restarted = Blurred(Blurred(image, 4, 50, 1, kGuided), 4, 50, 1, kGuided);
    EXPECT_NE(test::PlanesOf(twice)[0].samples, test::PlanesOf(restarted)[0].samples);
}

}  // namespace
}  // namespace velloran
