// Real files of few colours through the enhancement with nothing set: what comes out has the same
// colours, and no more depth than it needs.

#include <gtest/gtest.h>

#include <filesystem>

#include "core/DibImage.h"
#include "files/ImageFiles.h"
#include "params/ParaBlock.h"
#include "reduce/CheckGray.h"
#include "reduce/CountColors.h"
#include "support/Images.h"
#include "support/SharedData.h"

namespace velloran {
namespace {

/// The depth that the pipeline should give: a file of 8 bits and fewer returns to palettes where
/// its colours still fit; 8-bit grey files stay as they are.
int ExpectedDepth(const CDibImage& checked, int sourceDepth) {
    const int colors = CountColors(checked);
    if (sourceDepth < 1 || sourceDepth > 8 || colors > 1 << sourceDepth)
        return checked.GetBpp();
    if (checked.GetBpp() == 8 && sourceDepth != 1 && sourceDepth != 4)
        return 8;
    return colors <= 2 ? 1 : colors <= 16 ? 4 : 8;
}

TEST(KeepDepth, RealFilesComeBackWithTheirColorsAtTheirDepth) {
    const std::filesystem::path data = test::SharedData();
    if (data.empty())
        GTEST_SKIP() << "no pictures to try on";
    int pictures = 0, reduced = 0;
    for (const auto& entry : std::filesystem::directory_iterator(data / "depths")) {
        CDibImage image;
        if (!LoadImageFile(entry.path(), image))
            continue;  // a licence
        SCOPED_TRACE(entry.path().filename().string());
        const CDibImage loaded(image);
        ASSERT_NE(CheckGray(image, kGrayStrict), 0);
        const int expected = ExpectedDepth(image, static_cast<int>(image.Source().sourceColours));
        CParaBlock block;
        block.RunPipeline(
            &image, nullptr, nullptr, [](std::u16string_view) {}, kStopWhole, nullptr);
        EXPECT_EQ(image.GetBpp(), expected);
        ASSERT_EQ(image.GetWidth(), loaded.GetWidth());
        ASSERT_EQ(image.GetHeight(), loaded.GetHeight());
        int differing = 0;
        for (int y = 0; y < image.GetHeight(); ++y)
            for (int x = 0; x < image.GetWidth(); ++x)
                differing += test::PixelAt(image, x, y) == test::PixelAt(loaded, x, y) ? 0 : 1;
        EXPECT_EQ(differing, 0);
        ++pictures;
        reduced += expected < 8 ? 1 : 0;
    }
    EXPECT_GE(pictures, 15);
    EXPECT_GE(reduced, 5);
}

}  // namespace
}  // namespace velloran
