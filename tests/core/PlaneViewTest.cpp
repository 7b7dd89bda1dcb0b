#include "core/PlaneView.h"

#include <gtest/gtest.h>

#include <numeric>
#include <vector>

#include "core/Threads.h"

namespace velloran {
namespace {

/// Bytes 0, 1, 2 ... in rows of 20 bytes, of which 5 pixels of three are the plane.
struct Numbered {
    std::vector<std::uint8_t> bytes = std::vector<std::uint8_t>(4 * 20);
    PlaneView view{bytes.data(), 5, 4, 3, 20};

    Numbered() { std::iota(bytes.begin(), bytes.end(), std::uint8_t{0}); }
};

TEST(PlaneView, ACropIsItsRectangle) {
    const Numbered plane;
    const PlaneView crop = plane.view.Crop(1, 2, 3, 2);
    EXPECT_EQ(crop.width, 3);
    EXPECT_EQ(crop.height, 2);
    EXPECT_EQ(crop.channels, 3);
    EXPECT_EQ(crop.Row(0).size(), 9U);
    EXPECT_EQ(crop.Row(0).front(), 2 * 20 + 3);
    EXPECT_EQ(crop.Row(1).back(), 3 * 20 + 11);
}

TEST(PlaneView, ACropOfAViewUpsideDownCountsFromItsFirstRow) {
    const Numbered plane;
    const PlaneView crop = plane.view.UpsideDown().Crop(4, 1, 1, 3);
    EXPECT_EQ(crop.Row(0).front(), 2 * 20 + 12);
    EXPECT_EQ(crop.Row(2).front(), 0 * 20 + 12);
}

TEST(PlaneView, TheWholeAndNothingAreCropsToo) {
    const Numbered plane;
    EXPECT_EQ(plane.view.Crop(0, 0, 5, 4).Row(3).back(), plane.view.Row(3).back());
    EXPECT_EQ(plane.view.Crop(5, 4, 0, 0).width, 0);
    EXPECT_EQ(plane.view.Rows(1, 2).Row(1).front(), 40);
    EXPECT_EQ(plane.view.Rows(1, 2).height, 2);
}

TEST(PlaneView, AChannelIsEveryThirdByte) {
    const Numbered plane;
    const ChannelView green = plane.view.Channel(1);
    EXPECT_EQ(green.Row(0)[0], 1);
    EXPECT_EQ(green.Row(3)[4], 60 + 13);
    green.Row(2)[3] = 200;
    EXPECT_EQ(plane.bytes[2 * 20 + 10], 200);
    const ConstChannelView red = ConstPlaneView(plane.view).Crop(2, 1, 2, 2).Channel(2);
    EXPECT_EQ(red.width, 2);
    EXPECT_EQ(red.Row(0)[1], 20 + 11);
}

TEST(PlaneView, TheChannelOfAGrayPlaneIsThePlane) {
    std::vector<std::uint8_t> bytes = {1, 2, 3, 4, 5, 6};
    const PlaneView view{bytes.data(), 3, 2, 1, 3};
    EXPECT_EQ(view.Channel(0).Row(1)[2], 6);
}

TEST(Threads, MoreWorkForASampleIsWorthThreadsEarlier) {
    EXPECT_FALSE(IsWorthThreads(65535));
    EXPECT_TRUE(IsWorthThreads(65536));
    EXPECT_FALSE(IsWorthThreads(65536, SampleWork::kCopy));
    EXPECT_TRUE(IsWorthThreads(262144, SampleWork::kCopy));
    EXPECT_TRUE(IsWorthThreads(16384, SampleWork::kLong));
    EXPECT_FALSE(IsWorthThreads(16383, SampleWork::kLong));
}

}  // namespace
}  // namespace velloran
