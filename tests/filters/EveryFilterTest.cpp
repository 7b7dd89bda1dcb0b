// What holds for all filters of a page, whatever they make of its pixels.

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "filters/AdjustSharpen.h"
#include "filters/LevelFilters.h"
#include "filters/Morphology.h"
#include "filters/MultiScaleDetail.h"
#include "filters/ScarceMemory.h"
#include "filters/SmoothPlane.h"
#include "filters/SurfaceBlur.h"
#include "filters/UnsharpMask.h"
#include "support/Differ.h"
#include "support/Images.h"
#include "support/Threads.h"

namespace velloran {
namespace {

/// How a filter changes the depth of little depths and palettes before it works.
enum class Depth { kOfItsColors, kOfKernels };

struct FilterCase {
    std::string name;
    std::function<int(CDibImage&)> run;
    Depth depth = Depth::kOfItsColors;
    int reach = 40;  // a pixel depends on those as far away as this and no others; 0: on all
    /// What stands where memory ends in a later round; null where no pixel changes before all is
    /// done.
    std::function<int(CDibImage&)> firstRound = nullptr;
};
void PrintTo(const FilterCase& c, std::ostream* out) {
    *out << c.name;
}

void AddLevelFilters(std::vector<FilterCase>& cases) {
    for (int level = 1; level <= 12; ++level)
        cases.push_back({"Sharpen" + std::to_string(level),
                         [=](CDibImage& image) { return SharpenLevel(image, level); },
                         level < 10 ? Depth::kOfKernels : Depth::kOfItsColors});
    for (int level = 1; level <= 10; ++level)
        cases.push_back({"Blur" + std::to_string(level),
                         [=](CDibImage& image) { return BlurLevel(image, level); },
                         level < 6 ? Depth::kOfKernels : Depth::kOfItsColors});
}

void AddSurfaceBlurs(std::vector<FilterCase>& cases) {
    struct Form {
        const char* name;
        int radius, algorithm;
    };
    const auto blur = [](const Form& form, int times) {
        return [=](CDibImage& image) {
            return SurfaceBlur(image, form.radius, 40, times, form.algorithm);
        };
    };
    for (const Form& form : {Form{"Histogram", 7, 0}, Form{"Guided", 4, 1},
                             Form{"SelectiveGaussian", 5, 2}, Form{"SelectiveMean", 5, 3}})
        cases.push_back({std::string("Surface") + form.name, blur(form, 2)});
    const Form direct{"Direct", 3, 0};
    cases.push_back({"SurfaceDirect", blur(direct, 2), Depth::kOfItsColors, 40, blur(direct, 1)});
}

void AddMorphology(std::vector<FilterCase>& cases) {
    for (int level = 1; level <= 4; ++level) {
        cases.push_back({"Darken" + std::to_string(level),
                         [=](CDibImage& image) { return Darken(image, level); }});
        cases.push_back({"Lighten" + std::to_string(level),
                         [=](CDibImage& image) { return Lighten(image, level); }});
    }
}

std::vector<FilterCase> AllFilters() {
    std::vector<FilterCase> cases;
    AddLevelFilters(cases);
    cases.push_back({"Gaussian", [](CDibImage& image) {
                         return UnsharpMask(image, 1, 2.5F, 1, 1, /*blurOnly=*/true);
                     }});
    const auto sharpen = [](int times) {
        return [=](CDibImage& image) {
            return UnsharpMask(image, 120, 1.5F, 4, times, /*blurOnly=*/false);
        };
    };
    cases.push_back({"UnsharpMask", sharpen(2), Depth::kOfItsColors, 40, sharpen(1)});
    AddSurfaceBlurs(cases);
    cases.push_back({"MultiScaleDetail",
                     [](CDibImage& image) { return MultiScaleDetail(image, 2); },
                     Depth::kOfItsColors, 0});
    cases.push_back({"SmoothPlane", [](CDibImage& image) { return SmoothPlane(image, 3); },
                     Depth::kOfItsColors, 0});
    cases.push_back(
        {"AdjustSharpen", [](CDibImage& image) { return AdjustSharpen(image, 20, 7); }});
    AddMorphology(cases);
    return cases;
}

class EveryFilter : public testing::TestWithParam<FilterCase> {
 protected:
    static CDibImage Filtered(const CDibImage& page) {
        CDibImage image = page;
        EXPECT_NE(GetParam().run(image), 0);
        return image;
    }
};
INSTANTIATE_TEST_SUITE_P(Filters, EveryFilter, testing::ValuesIn(AllFilters()),
                         [](const auto& filter) { return filter.param.name; });

/// Where a pixel depends on its whole row, wide pictures are shown beside the plain form.
std::vector<FilterCase> LocalFilters() {
    std::vector<FilterCase> cases = AllFilters();
    std::erase_if(cases, [](const FilterCase& c) { return c.reach == 0; });
    return cases;
}

class LocalFilter : public EveryFilter {};
INSTANTIATE_TEST_SUITE_P(Filters, LocalFilter, testing::ValuesIn(LocalFilters()),
                         [](const auto& filter) { return filter.param.name; });

int GrayOf(test::Rgb color) {
    return (601 * color.green + 306 * color.red + 117 * color.blue) >> 10;
}

bool IsGray(test::Rgb color) {
    return std::abs(color.red - color.green) < 5 && std::abs(color.red - color.blue) < 5 &&
           std::abs(color.green - color.blue) < 5;
}

/// The page as it is when the filter begins: every pixel through its palette.
CDibImage Normalised(const CDibImage& page, Depth depth) {
    if (page.GetBpp() == 24 || page.IsGrayScale())
        return page;
    bool isGray = true;
    for (int y = 0; y < page.GetHeight(); ++y)
        for (int x = 0; x < page.GetWidth(); ++x)
            isGray = isGray && IsGray(test::PixelAt(page, x, y));
    if (depth == Depth::kOfKernels)
        isGray = page.GetBpp() < 8;
    CDibImage normal = test::Filled(page.GetWidth(), page.GetHeight(), isGray ? 8 : 24, 0);
    for (int y = 0; y < page.GetHeight(); ++y)
        for (int x = 0; x < page.GetWidth(); ++x)
            if (isGray)
                test::SetIndex(normal, x, y, GrayOf(test::PixelAt(page, x, y)));
            else
                test::SetPixel(normal, x, y, test::PixelAt(page, x, y));
    return normal;
}

/// Noise whose palette entries, all of them in use, go through `colorOf`.
CDibImage WithPalette(int bpp, const std::function<test::Rgb(int gray)>& colorOf) {
    CDibImage page = test::Noise(45, 37, bpp);
    std::vector<test::Rgb> entries;
    for (int i = 0; i < page.GetPaletteCount(); ++i)
        entries.push_back(colorOf(page.GetPalette()[i].green));
    test::SetPalette(page, entries);
    return page;
}

TEST_P(EveryFilter, MakesOfAPaletteWhatItMakesOfItsColors) {
    for (const int bpp : {1, 4, 8}) {
        SCOPED_TRACE(bpp);
        for (const CDibImage& page :
             {test::Noise(45, 37, bpp),
              WithPalette(bpp,
                          [](int gray) {
                              return test::Rgb{255 - gray, 255 - gray, 255 - gray};
                          }),
              WithPalette(bpp,
                          [](int gray) {
                              return test::Rgb{gray / 2 + 4, gray / 2, gray / 2};
                          }),
              WithPalette(bpp, [](int gray) {
                  return test::Rgb{gray, 255 - gray, gray / 3};
              })})
            test::ExpectSamePixels(Filtered(page), Filtered(Normalised(page, GetParam().depth)));
    }
}

TEST_P(EveryFilter, LeavesAPictureOfOneColor) {
    for (const int tone : {0, 1, 127, 254, 255})
        for (const int bpp : {8, 24}) {
            const CDibImage page = test::Filled(31, 23, bpp, static_cast<std::uint8_t>(tone));
            test::ExpectSamePixels(Filtered(page), page);
        }
    CDibImage color = test::Filled(31, 23, 24, 0);
    for (int y = 0; y < 23; ++y)
        for (int x = 0; x < 31; ++x)
            test::SetPixel(color, x, y, {250, 90, 3});
    test::ExpectSamePixels(Filtered(color), color);
}

TEST_P(EveryFilter, GivesTheSameBytesWithOneTwoAndSevenThreads) {
    for (const int bpp : {8, 24}) {
        const CDibImage page = test::Noise(311, 223, bpp);
        std::vector<CDibImage> results;
        for (const int count : {1, 2, 7}) {
            const test::Threads threads(count);
            results.push_back(Filtered(page));
        }
        test::ExpectSamePixels(results[1], results[0]);
        test::ExpectSamePixels(results[2], results[0]);
    }
}

TEST_P(EveryFilter, WithoutMemoryThePixelsAreThoseOfWholeRounds) {
    const auto& [name, run, depth, reach, firstRound] = GetParam();
    for (const int bpp : {1, 4, 8}) {
        const CDibImage page = WithPalette(bpp, [](int gray) {
            return test::Rgb{gray, 255 - gray, gray / 3};
        });
        const CDibImage normal = Normalised(page, depth), whole = Filtered(page);
        CDibImage half = page;
        if (firstRound != nullptr) {
            ASSERT_NE(firstRound(half), 0);
        }
        bool wasHalf = false;
        const int failures = test::RunWithScarceMemory(
            page, /*onlyOne=*/false, run, [&](const CDibImage& image, int result, bool failed) {
                if (!failed) {
                    EXPECT_TRUE(result != 0 && !test::Differ(image, whole));
                } else if (test::Differ(image, page) && test::Differ(image, normal)) {
                    EXPECT_TRUE(result != 0 && firstRound != nullptr && !test::Differ(image, half));
                    wasHalf = true;
                }
            });
        EXPECT_GE(failures, 2);  // the depth, and room for the filter's own work
        EXPECT_EQ(wasHalf, firstRound != nullptr);
    }
}

TEST_P(EveryFilter, KeepsAlphaAndResolution) {
    CDibImage page = test::Noise(45, 37, 4);
    page.SetXDpi(300);
    page.SetYDpi(200);
    ASSERT_TRUE(page.CreateAlpha());
    for (int i = 0; i < 45 * 37; ++i)
        page.GetAlpha()[i] = static_cast<std::uint8_t>(i * 7);
    const CDibImage image = Filtered(page);
    EXPECT_EQ(image.GetXDpi(), 300);
    EXPECT_EQ(image.GetYDpi(), 200);
    ASSERT_NE(image.GetAlpha(), nullptr);
    for (int i = 0; i < 45 * 37; ++i)
        ASSERT_EQ(image.GetAlpha()[i], static_cast<std::uint8_t>(i * 7));
}

/// Columns from `first` to `first + width`.
CDibImage Columns(const CDibImage& page, int first, int width) {
    CDibImage part = test::Filled(width, page.GetHeight(), 24, 0);
    for (int y = 0; y < page.GetHeight(); ++y)
        for (int x = 0; x < width; ++x)
            test::SetPixel(part, x, y, test::PixelAt(page, first + x, y));
    return part;
}

TEST_P(LocalFilter, BeyondColumn32767WorksAsOnASmallPicture) {
    constexpr int kWidth = 33001, kFirst = 32600, kReach = 40;
    ASSERT_LE(GetParam().reach, kReach);
    const CDibImage page = test::Noise(kWidth, 8, 24);
    const CDibImage part = Filtered(Columns(page, kFirst - kReach, kWidth - kFirst + kReach));
    test::ExpectSamePixels(Columns(Filtered(page), kFirst, kWidth - kFirst),
                           Columns(part, kReach, kWidth - kFirst));
}

}  // namespace
}  // namespace velloran
