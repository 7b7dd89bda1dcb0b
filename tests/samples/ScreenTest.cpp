#include <gtest/gtest.h>

#include <cmath>

#include "samples/Sheet.h"

namespace velloran::samples {
namespace {

constexpr int kSide = 240;

struct ScreenedSheet {
    Inks inks;
    Truth truth;
    FontBook fonts;
    ScreenTruth notes;

    explicit ScreenedSheet(const Screen& screen, const ToneAt& tone) {
        inks.black = Plane(kSide, kSide);
        SheetPlace place;
        place.width = place.height = kSide;
        Sheet sheet(place, inks, fonts, truth);
        sheet.PrintTone({{RectangleContour({0, 0, kSide, kSide})}}, screen, tone, inks.black,
                        &notes);
    }
    double Mean(int top, int bottom) const {
        double sum = 0;
        for (int y = top; y < bottom; ++y)
            for (int x = 20; x < kSide - 20; ++x)
                sum += inks.black.Row(y)[x] / 255.0;
        return sum / ((bottom - top) * (kSide - 40.0));
    }
    // How alike the picture is to itself moved by (dx, dy); 1 is the same.
    double Likeness(double dx, double dy) const {
        const double mean = Mean(20, kSide - 20);
        double product = 0, square = 0;
        for (int y = 60; y < kSide - 60; ++y)
            for (int x = 60; x < kSide - 60; ++x) {
                const double here = inks.black.Row(y)[x] / 255.0 - mean;
                const double there =
                    inks.black.Row(static_cast<int>(std::lround(y + dy)))[std::lround(x + dx)] /
                        255.0 -
                    mean;
                product += here * there;
                square += here * here;
            }
        return product / square;
    }
};

TEST(SampleScreen, DotsCoverTheToneThatTheyPrint) {
    for (const double tone : {0.1, 0.3, 0.6}) {
        const ScreenedSheet sheet({8, 45}, [=](Point) { return tone; });
        EXPECT_NEAR(sheet.Mean(20, kSide - 20), tone, 0.01) << tone;
        ASSERT_EQ(sheet.notes.areas.size(), 1U);
        EXPECT_NEAR(sheet.notes.areas[0].tone, tone, 1e-9);
    }
}

TEST(SampleScreen, DotsRepeatAtTheToldPitchAlongTheToldAngle) {
    const double along = 10 * std::cos(30 * 3.14159265358979 / 180);
    const double down = 10 * std::sin(30 * 3.14159265358979 / 180);
    const ScreenedSheet sheet({10, 30}, [](Point) { return 0.3; });
    EXPECT_GT(sheet.Likeness(along * 4, down * 4), 0.85);
    EXPECT_GT(sheet.Likeness(-down * 4, along * 4), 0.85);
    EXPECT_LT(sheet.Likeness(along / 2, down / 2), 0);
    EXPECT_LT(sheet.Likeness(along * 4, -down * 4), 0.5);
}

TEST(SampleScreen, GradientFollowsThePage) {
    const ScreenedSheet sheet({6, 45}, [](Point at) { return 0.6 * at.y / kSide; });
    EXPECT_NEAR(sheet.Mean(50, 70), 0.15, 0.02);
    EXPECT_NEAR(sheet.Mean(170, 190), 0.45, 0.02);
}

}  // namespace
}  // namespace velloran::samples
