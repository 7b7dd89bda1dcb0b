// Scanned text turned black and white: small files that have lost no strokes.

#include <gtest/gtest.h>

#include <filesystem>

#include "core/DibImage.h"
#include "core/Pipeline.h"
#include "files/ImageFiles.h"
#include "params/ParaBlock.h"
#include "samples/SamplePage.h"
#include "support/Images.h"
#include "support/TempFolder.h"

namespace velloran {
namespace {

using samples::PageKind;

// A quarter of A4 at 300 dpi, with letters of their usual size.
constexpr int kWidth = 1240, kHeight = 1754;
constexpr double kLargestMean = 60000 / 4.0;
constexpr PageKind kKinds[] = {PageKind::kTextLatin,   PageKind::kTextChinese,
                               PageKind::kLightUneven, PageKind::kBleedThrough,
                               PageKind::kSpecks,      PageKind::kRedSeal};

samples::SamplePage Draw(PageKind kind) {
    samples::SampleRequest request;
    request.kind = kind;
    request.width = kWidth;
    request.height = kHeight;
    request.wantInkMask = true;
    return samples::MakeSamplePage(request);
}

CParaBlock BlackAndWhite() {
    CParaBlock block;
    block.SetPara(PARA_COLOR, 7);
    block.SetPara(PARA_DECREASE_DESPECKLE_SIZE, 2);
    block.SetPara(PARA_DECREASE_DE_SMOOTH, 1);
    return block;
}

/// Of the pixels that ink covers wholly, the share that came out black.
double KeptInk(const CDibImage& page, const CDibImage& ink) {
    int covered = 0, black = 0;
    for (int y = 0; y < ink.GetHeight(); ++y)
        for (int x = 0; x < ink.GetWidth(); ++x)
            if (test::IndexAt(ink, x, y) == 255) {
                ++covered;
                black += test::PixelAt(page, x, y).red == 0 ? 1 : 0;
            }
    return static_cast<double>(black) / covered;
}

TEST(BlackWhiteSize, TextPagesStayBelow60KilobytesAnA4PageAndKeepTheirStrokes) {
    const test::TempFolder folder;
    double bytes = 0;
    for (const PageKind kind : kKinds) {
        SCOPED_TRACE(static_cast<int>(kind));
        samples::SamplePage page = Draw(kind);
        CParaBlock block = BlackAndWhite();
        block.RunPipeline(
            &page.image, nullptr, nullptr, [](std::u16string_view) {}, kStopWhole, nullptr);
        const std::filesystem::path file = folder / "page.tif";
        ASSERT_TRUE(SaveImageFile(file, page.image, 70, 300, 7, /*cropGif=*/false, block));
        bytes += static_cast<double>(std::filesystem::file_size(file));
        CDibImage read;
        ASSERT_TRUE(LoadImageFile(file, read));
        EXPECT_EQ(read.GetBpp(), 1);
        EXPECT_GT(KeptInk(read, page.inkMask), 0.99);
    }
    const double mean = bytes / std::size(kKinds);
    RecordProperty("meanBytes", static_cast<int>(mean));
    EXPECT_LT(mean, kLargestMean);
    EXPECT_GT(mean, 1000);  // pages of text, not blank ones
}

}  // namespace
}  // namespace velloran
