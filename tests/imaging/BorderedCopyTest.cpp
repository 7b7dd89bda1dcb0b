#include "imaging/BorderedCopy.h"

#include <gtest/gtest.h>

#include "imaging/SamplePlane.h"

namespace velloran {
namespace {

using test::Content;
using test::MakeSamples;
using test::SamplePlane;

TEST(BorderedCopy, RepeatsTheNearestPixelOnAllSides) {
    for (const int channels : {1, 3})
        for (const int width : {1, 2, 17})
            for (const int height : {1, 3, 16}) {
                const SamplePlane source = MakeSamples(width, height, channels, Content::kNoise);
                const BorderWidths border{.left = 3, .top = 0, .right = 1, .bottom = 5};
                const BorderedCopy copy(source.View(), border);
                const ConstPlaneView view = copy.View();
                ASSERT_EQ(view.width, width + 4);
                ASSERT_EQ(view.height, height + 5);
                for (int y = 0; y < view.height; ++y)
                    for (int x = 0; x < view.width; ++x)
                        for (int c = 0; c < channels; ++c)
                            ASSERT_EQ(view.Row(y)[static_cast<std::size_t>(x * channels + c)],
                                      source.Nearest(x - border.left, y - border.top, c));
            }
}

TEST(BorderedCopy, ReadsRowsThatAreStoredUpsideDown) {
    const SamplePlane source = MakeSamples(4, 3, 1, Content::kNoise);
    const BorderedCopy copy(source.View().UpsideDown(), 1);
    EXPECT_EQ(copy.View().Row(0)[1], source.At(0, 2));
    EXPECT_EQ(copy.View().Row(4)[5], source.At(3, 0));
}

TEST(BorderedCopy, OfNothingIsEmpty) {
    const BorderedCopy copy(ConstPlaneView{}, 0);
    EXPECT_EQ(copy.View().width, 0);
    EXPECT_EQ(copy.View().height, 0);
}

}  // namespace
}  // namespace velloran
