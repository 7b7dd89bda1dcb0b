// clang-format off
#include <cstdio>  // jpeglib.h needs it before itself
#include <jpeglib.h>
// clang-format on

#include <gtest/gtest.h>

#include <cmath>

#include "codecs/FileForms.h"
#include "codecs/FullDisk.h"
#include "codecs/Jpeg.h"
#include "codecs/JpegDecoder.h"
#include "codecs/JpegSource.h"
#include "codecs/Mutations.h"
#include "codecs/PlainJpeg.h"
#include "core/DibImage.h"
#include "params/ParaBlock.h"
#include "support/FailingAllocator.h"
#include "support/Images.h"
#include "support/SharedData.h"
#include "support/TempFolder.h"

namespace velloran {
namespace {

using test::JpegFacts;
using test::PlainOptions;
using test::PlainPicture;
using Factors = std::vector<std::pair<int, int>>;

constexpr std::uint32_t kJpegType = 1;

/// A smooth page, so that the pixels survive the coding.
CDibImage Smooth(int width, int height, int bpp) {
    CDibImage image = test::Filled(width, height, bpp, 0);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const int level = 60 + 100 * x / width + 50 * y / height;
            if (bpp == 24)
                test::SetPixel(image, x, y, {level, level - 30, 220 - level});
            else
                test::SetIndex(image, x, y, level);
        }
    return image;
}

class JpegWriter : public testing::Test {
 protected:
    JpegWriter() {  // the block's defaults ask for some of them
        for (const ParaIndex index :
             {JPG_RESAMPLE_TYPE, JPG_RESAMPLE_H, JPG_RESAMPLE_V, JPG_SRC_SAMPLE, JPG_SRC_QUALITY,
              JPG_SRC_CODE, JPG_OPTIMIZE, JPG_PROGRESSIVE})
            params_.SetPara(index, 0);
    }

    JpegFacts Saved(CDibImage& image, int quality = 85, int dpi = 300,
                    const CDibImage* sourceImage = nullptr) {
        FileError error;
        EXPECT_TRUE(
            SaveJpeg(folder_ / "page.jpg", image, sourceImage, quality, dpi, params_, &error))
            << error.detail;
        bytes_ = test::ReadAll(folder_ / "page.jpg");
        return test::FactsOf(bytes_);
    }

    /// A file made by the library in the test folder, as the source of an image.
    void SetSource(CDibImage& image, const std::string& name, const PlainOptions& options,
                   int channels = 3) {
        test::WriteAll(folder_ / name, test::EncodePlain(test::Scene(16, 16, channels), options));
        CDibImage loaded;
        ASSERT_TRUE(LoadJpeg(folder_ / name, loaded));
        image.Source() = loaded.Source();
        image.Source().sourceName = folder_ / name;
        image.Source().sourceInfo = kJpegType;
    }

    /// What a load would keep of a file, whose picture need not be one that can be decoded.
    static void TakeHead(CDibImage& image, const std::string& file) try {
        MemorySource source(test::BytesOf(file));
        JpegDecoder decoder(source);
        decoder.ReadHead();
        image.Source().jpegHead =
            std::make_shared<const JpegSourceHead>(SourceHeadOf(decoder.Head()));
    } catch (const CNewJPEGException&) {
        image.Source().jpegHead.reset();
    }

    static PlainOptions SampledOptions(int h, int v, int quality = 40) {
        PlainOptions options;
        options.quality = quality;
        options.adjust = [=](jpeg_compress_struct& jpeg) {
            jpeg.comp_info[0].h_samp_factor = h;
            jpeg.comp_info[0].v_samp_factor = v;
        };
        return options;
    }

    test::TempFolder folder_;
    CParaBlock params_;
    std::string bytes_;
};

/// Tables that the library makes for a quality.
std::map<int, std::vector<int>> TablesOf(int quality) {
    PlainOptions options;
    options.quality = quality;
    return test::FactsOf(test::EncodePlain(test::Scene(8, 8, 3), options)).quantTables;
}

TEST_F(JpegWriter, PixelsComeBackFromThePlainLibrary) {
    for (const int bpp : {8, 24})
        for (const int width : {1, 5, 16, 37}) {
            CDibImage image = Smooth(width, 23, bpp);
            const CDibImage before = image;
            Saved(image, 95);
            const PlainPicture back = test::DecodePlain(bytes_);
            ASSERT_EQ(back.width, width);
            ASSERT_EQ(back.height, 23);
            ASSERT_EQ(back.channels, bpp / 8);
            for (int y = 0; y < 23; ++y)
                for (int x = 0; x < width; ++x) {
                    const test::Rgb expected = test::PixelAt(before, x, y);
                    const int last = back.channels - 1;
                    EXPECT_NEAR(back.At(x, y, 0), expected.red, 10);
                    EXPECT_NEAR(back.At(x, y, last / 2), expected.green, 10);
                    EXPECT_NEAR(back.At(x, y, last), expected.blue, 10);
                }
            test::ExpectSamePixels(image, before);
        }
}

TEST_F(JpegWriter, TheFileIsWhatThePlainLibraryWrites) {
    CDibImage image = test::Noise(33, 47, 24);
    PlainPicture same{33, 47, 3, {}};
    for (int y = 0; y < 47; ++y)
        for (int x = 0; x < 33; ++x) {
            const test::Rgb pixel = test::PixelAt(image, x, y);
            for (const int sample : {pixel.red, pixel.green, pixel.blue})
                same.samples.push_back(static_cast<std::uint8_t>(sample));
        }
    Saved(image, 75, 200);
    PlainOptions options;
    options.quality = 75;
    options.adjust = [](jpeg_compress_struct& jpeg) {
        jpeg.comp_info[0].h_samp_factor = 1;  // portrait, quality 75
        jpeg.comp_info[0].v_samp_factor = 2;
        jpeg.density_unit = 1;
        jpeg.X_density = jpeg.Y_density = 200;
    };
    EXPECT_TRUE(bytes_ == test::EncodePlain(same, options));
}

TEST_F(JpegWriter, DensityIsInDotsPerInchBothWays) {
    CDibImage image = Smooth(8, 8, 24);
    const JpegFacts facts = Saved(image, 85, 300);
    EXPECT_EQ(facts.densityUnit, 1);
    EXPECT_EQ(facts.xDensity, 300);
    EXPECT_EQ(facts.yDensity, 300);
    EXPECT_TRUE(facts.endsWithEndMarker);
    EXPECT_EQ(Saved(image, 85, 70000).xDensity, 65535);
    EXPECT_EQ(Saved(image, 85, -5).xDensity, 0);
}

struct SamplingCase {
    int quality, width, height, horizontal, vertical;
};
constexpr SamplingCase kSampling[] = {
    {1, 8, 16, 2, 2},   {69, 16, 8, 2, 2},  {69, 8, 16, 2, 2}, {70, 8, 16, 1, 2},
    {70, 16, 8, 2, 1},  {80, 16, 8, 2, 1},  {80, 8, 16, 1, 2}, {80, 16, 16, 1, 2},
    {89, 17, 16, 2, 1}, {89, 16, 17, 1, 2}, {90, 16, 8, 1, 1}, {100, 8, 16, 1, 1},
};

TEST_F(JpegWriter, AutomaticSamplingFollowsQualityAndShape) {
    for (const SamplingCase& c : kSampling) {
        const LumaSampling expected{c.horizontal, c.vertical};
        EXPECT_EQ(AutomaticLumaSampling(c.quality, c.width, c.height), expected);
        CDibImage image = Smooth(c.width, c.height, 24);
        EXPECT_EQ(Saved(image, c.quality).sampling,
                  (Factors{{c.horizontal, c.vertical}, {1, 1}, {1, 1}}))
            << c.quality << ' ' << c.width << 'x' << c.height;
    }
}

TEST_F(JpegWriter, QualityEightyHalvesAcrossALandscapeAndDownAPortrait) {
    CDibImage landscape = Smooth(32, 16, 24), portrait = Smooth(16, 32, 24);
    EXPECT_EQ(Saved(landscape, 80).sampling, (Factors{{2, 1}, {1, 1}, {1, 1}}));
    EXPECT_EQ(Saved(portrait, 80).sampling, (Factors{{1, 2}, {1, 1}, {1, 1}}));
}

TEST_F(JpegWriter, GrayHasOneComponentWhateverTheSampling) {
    params_.SetPara(JPG_RESAMPLE_TYPE, 1);
    params_.SetPara(JPG_RESAMPLE_H, 1);
    CDibImage image = Smooth(16, 16, 8);
    EXPECT_EQ(Saved(image, 50).sampling, (Factors{{1, 1}}));
}

struct ManualCase {
    const char* name;
    int h, v;
    Factors factors;
};
TEST_F(JpegWriter, ManualSamplingHalvesWhatIsAskedFor) {
    const ManualCase cases[] = {
        {"Nothing", 0, 0, {{1, 1}, {1, 1}, {1, 1}}},
        {"OnlyVertical", 0, 1, {{2, 2}, {2, 1}, {2, 1}}},
        {"OnlyHorizontal", 1, 0, {{2, 2}, {1, 2}, {1, 2}}},
        {"Both", 1, 1, {{2, 2}, {1, 1}, {1, 1}}},
    };
    for (const ManualCase& c : cases) {
        params_.SetPara(JPG_RESAMPLE_TYPE, 1);
        params_.SetPara(JPG_RESAMPLE_H, c.h);
        params_.SetPara(JPG_RESAMPLE_V, c.v);
        CDibImage image = Smooth(20, 30, 24);
        EXPECT_EQ(Saved(image, 50).sampling, c.factors) << c.name;
        EXPECT_EQ(test::DecodePlain(bytes_).height, 30);
    }
}

TEST_F(JpegWriter, OneBitPagesBecomeEightBitGray) {
    CDibImage image = test::Filled(16, 8, 1, 0);
    for (int x = 0; x < 8; ++x)
        for (int y = 0; y < 8; ++y)
            test::SetIndex(image, x, y, 1);
    const JpegFacts facts = Saved(image, 90);
    EXPECT_EQ(facts.sampling.size(), 1U);
    const PlainPicture back = test::DecodePlain(bytes_);
    EXPECT_EQ(back.At(3, 3, 0), 255);
    EXPECT_EQ(back.At(12, 3, 0), 0);
    EXPECT_EQ(image.GetBpp(), 8);
}

TEST_F(JpegWriter, ColorPalettesBecomeThreeComponents) {
    CDibImage image = test::Filled(8, 8, 4, 3);
    test::SetPalette(image, {{0, 0, 0}, {1, 1, 1}, {2, 2, 2}, {200, 50, 50}});
    EXPECT_EQ(Saved(image, 95).sampling.size(), 3U);
    EXPECT_NEAR(test::DecodePlain(bytes_).At(4, 4, 0), 200, 3);
    CDibImage nearlyGray = test::Filled(8, 8, 4, 3);
    test::SetPalette(nearlyGray, {{0, 255, 0}, {1, 1, 1}, {2, 2, 2}, {100, 104, 102}});
    EXPECT_EQ(Saved(nearlyGray, 95).sampling.size(), 1U);
}

TEST_F(JpegWriter, OptimizeAndProgressiveAreAsTheBlockSays) {
    CDibImage image = Smooth(64, 64, 24);
    const JpegFacts plain = Saved(image);
    EXPECT_EQ(plain.frame, 0xC0);
    EXPECT_EQ(plain.scans, 1);
    const std::size_t plainSize = bytes_.size();

    params_.SetPara(JPG_OPTIMIZE, 1);
    const JpegFacts optimized = Saved(image);
    EXPECT_EQ(optimized.frame, 0xC0);
    EXPECT_NE(optimized.huffmanTables, plain.huffmanTables);
    EXPECT_LT(bytes_.size(), plainSize);

    params_.SetPara(JPG_PROGRESSIVE, 1);
    params_.SetPara(JPG_OPTIMIZE, 0);
    const JpegFacts progressive = Saved(image);
    EXPECT_EQ(progressive.frame, 0xC2);
    EXPECT_EQ(progressive.scans, 10);  // the library's script for three components
}

TEST_F(JpegWriter, QualityIsLimitedAndTablesAreNotForcedToBaseline) {
    CDibImage image = Smooth(16, 16, 24);
    EXPECT_EQ(Saved(image, 500).quantTables, TablesOf(100));
    EXPECT_EQ(Saved(image, -3).quantTables, TablesOf(1));
    EXPECT_EQ(Saved(image, 1).frame, 0xC1);  // values above 255
    EXPECT_EQ(Saved(image, 85).quantTables, TablesOf(85));
}

TEST_F(JpegWriter, SourceQualityCopiesTheTables) {
    CDibImage image = Smooth(16, 16, 24);
    SetSource(image, "source.jpg", SampledOptions(2, 2, 33));
    params_.SetPara(JPG_SRC_QUALITY, 1);
    const JpegFacts facts = Saved(image, 95);
    EXPECT_EQ(facts.quantTables, TablesOf(33));
    EXPECT_EQ(facts.sampling, (Factors{{1, 1}, {1, 1}, {1, 1}}));  // still by the quality asked for
}

TEST_F(JpegWriter, AGraySourceGivesOnlyTheTableThatItHolds) {
    CDibImage image = Smooth(16, 16, 24);
    PlainOptions options;
    options.quality = 20;
    SetSource(image, "gray.jpg", options, 1);
    params_.SetPara(JPG_SRC_QUALITY, 1);
    const auto tables = Saved(image, 95).quantTables;
    EXPECT_EQ(tables.at(0), TablesOf(20).at(0));
    EXPECT_EQ(tables.at(1), TablesOf(95).at(1));
}

TEST_F(JpegWriter, ASourceThatIsGoneMeanwhileIsInheritedFromAllTheSame) {
    CDibImage image = Smooth(16, 16, 24);
    SetSource(image, "source.jpg", SampledOptions(1, 1, 33));
    std::filesystem::remove(folder_ / "source.jpg");
    params_.SetPara(JPG_SRC_QUALITY, 1);
    params_.SetPara(JPG_SRC_CODE, 1);
    params_.SetPara(JPG_SRC_SAMPLE, 1);
    params_.SetPara(JPG_PROGRESSIVE, 1);
    const JpegFacts facts = Saved(image, 60);
    EXPECT_EQ(facts.quantTables, TablesOf(33));
    EXPECT_EQ(facts.frame, 0xC0);
    EXPECT_EQ(facts.sampling, (Factors{{1, 1}, {1, 1}, {1, 1}}));
}

TEST_F(JpegWriter, ASourceThatIsNoJpegLeavesTheQualityAskedFor) {
    CDibImage image = Smooth(16, 16, 24);
    test::WriteAll(folder_ / "source.jpg", "no picture at all");
    image.Source().sourceName = folder_ / "source.jpg";
    image.Source().sourceInfo = kJpegType;
    params_.SetPara(JPG_SRC_QUALITY, 1);
    EXPECT_EQ(Saved(image, 60).quantTables, TablesOf(60));
}

TEST_F(JpegWriter, TheSecondImageIsTheSourceWhereTheFirstCameFromNoJpeg) {
    CDibImage image = Smooth(16, 16, 24), other, own;
    SetSource(other, "other.jpg", SampledOptions(1, 1, 33));
    SetSource(own, "own.jpg", SampledOptions(1, 1, 44));
    params_.SetPara(JPG_SRC_QUALITY, 1);
    EXPECT_EQ(Saved(image, 95, 300, &other).quantTables, TablesOf(33));
    image.Source() = own.Source();
    EXPECT_EQ(Saved(image, 95, 300, &other).quantTables, TablesOf(44));
    image.Source().jpegHead.reset();
    EXPECT_EQ(Saved(image, 95, 300, &other).quantTables, TablesOf(33));
    other.Source().jpegHead.reset();
    EXPECT_EQ(Saved(image, 95, 300, &other).quantTables, TablesOf(95));
}

TEST_F(JpegWriter, SourceCodeSettlesTheCoding) {
    CDibImage image = Smooth(64, 64, 24);
    const JpegFacts plain = Saved(image);
    params_.SetPara(JPG_SRC_CODE, 1);

    PlainOptions progressive;
    progressive.adjust = [](jpeg_compress_struct& jpeg) { jpeg_simple_progression(&jpeg); };
    SetSource(image, "progressive.jpg", progressive);
    EXPECT_EQ(Saved(image).frame, 0xC2);

    PlainOptions optimized;
    optimized.adjust = [](jpeg_compress_struct& jpeg) { jpeg.optimize_coding = TRUE; };
    SetSource(image, "optimized.jpg", optimized);
    JpegFacts facts = Saved(image);
    EXPECT_EQ(facts.frame, 0xC0);
    EXPECT_NE(facts.huffmanTables, plain.huffmanTables);

    SetSource(image, "usual.jpg", {});
    params_.SetPara(JPG_PROGRESSIVE, 1);  // the source wins
    params_.SetPara(JPG_OPTIMIZE, 1);
    facts = Saved(image);
    EXPECT_EQ(facts.frame, 0xC0);
    EXPECT_EQ(facts.huffmanTables, plain.huffmanTables);
}

TEST_F(JpegWriter, SourceSamplingIsCopied) {
    params_.SetPara(JPG_SRC_SAMPLE, 1);
    params_.SetPara(JPG_RESAMPLE_TYPE, 1);  // the source wins
    CDibImage image = Smooth(32, 32, 24);
    SetSource(image, "source.jpg", SampledOptions(2, 1));
    EXPECT_EQ(Saved(image, 95).sampling, (Factors{{2, 1}, {1, 1}, {1, 1}}));
    SetSource(image, "source.jpg", SampledOptions(4, 1));
    EXPECT_EQ(Saved(image, 95).sampling, (Factors{{4, 1}, {1, 1}, {1, 1}}));
    EXPECT_EQ(Saved(image, 95).quantTables, TablesOf(95));
}

TEST_F(JpegWriter, SamplingOfAGraySourceIsTheAutomaticRule) {
    params_.SetPara(JPG_SRC_SAMPLE, 1);
    params_.SetPara(JPG_RESAMPLE_TYPE, 1);
    CDibImage image = Smooth(32, 16, 24);
    SetSource(image, "gray.jpg", {}, 1);
    EXPECT_EQ(Saved(image, 80).sampling, (Factors{{2, 1}, {1, 1}, {1, 1}}));
}

TEST_F(JpegWriter, SamplingThatCannotBeWrittenIsTheAutomaticRule) {
    params_.SetPara(JPG_SRC_SAMPLE, 1);
    CDibImage image = Smooth(32, 16, 24);
    SetSource(image, "source.jpg", SampledOptions(2, 2));
    const std::string whole = test::ReadAll(folder_ / "source.jpg");
    const std::size_t frame = whole.find("\xFF\xC0");
    for (const auto& factors : {std::string("\x44\x11\x11"), std::string("\x31\x21\x11")}) {
        std::string changed = whole;
        for (std::size_t i = 0; i < 3; ++i)
            changed[frame + 11 + 3 * i] = factors[i];
        TakeHead(image, changed);
        EXPECT_EQ(Saved(image, 80).sampling, (Factors{{2, 1}, {1, 1}, {1, 1}}));
    }
}

TEST_F(JpegWriter, ASourceTableWithAZeroIsNotTaken) {
    params_.SetPara(JPG_SRC_QUALITY, 1);
    CDibImage image = Smooth(32, 16, 24);
    SetSource(image, "source.jpg", SampledOptions(1, 1, 33));
    std::string changed = test::ReadAll(folder_ / "source.jpg");
    changed[changed.find("\xFF\xDB") + 4 + 1 + 7] = '\0';
    TakeHead(image, changed);
    const auto tables = Saved(image, 80).quantTables;
    EXPECT_EQ(tables.at(0), TablesOf(80).at(0));
    EXPECT_EQ(tables.at(1), TablesOf(33).at(1));
}

TEST_F(JpegWriter, AnyDamagedSourceStillLetsThePageBeSaved) {
    params_.SetPara(JPG_SRC_QUALITY, 1);
    params_.SetPara(JPG_SRC_CODE, 1);
    params_.SetPara(JPG_SRC_SAMPLE, 1);
    CDibImage image = Smooth(20, 20, 24);
    SetSource(image, "source.jpg", SampledOptions(2, 2));
    test::ForEachMutation(test::ReadAll(folder_ / "source.jpg"), 250, 3,
                          [&](const std::string& damaged) {
                              TakeHead(image, damaged);
                              Saved(image, 80);
                          });
}

TEST_F(JpegWriter, APageMayBeSavedOverItsOwnSource) {
    CDibImage image = Smooth(16, 16, 24);
    SetSource(image, "page.jpg", SampledOptions(2, 2, 33));
    params_.SetPara(JPG_SRC_QUALITY, 1);
    params_.SetPara(JPG_SRC_SAMPLE, 1);
    const JpegFacts facts = Saved(image, 95);
    EXPECT_EQ(facts.quantTables, TablesOf(33));
    EXPECT_EQ(facts.sampling, (Factors{{2, 2}, {1, 1}, {1, 1}}));
    EXPECT_EQ(folder_.AllNames(), std::vector<std::string>{"page.jpg"});
}

TEST_F(JpegWriter, SidesAboveTheFormatsLimitAreRefusedUntouched) {
    CDibImage image = test::Filled(65501, 1, 8, 0);
    test::WriteAll(folder_ / "page.jpg", "before");
    FileError error;
    EXPECT_FALSE(SaveJpeg(folder_ / "page.jpg", image, nullptr, 85, 300, params_, &error));
    EXPECT_EQ(error.cause, FileError::Cause::kContent);
    EXPECT_NE(error.detail.find("65500"), std::string::npos);
    EXPECT_EQ(test::ReadAll(folder_ / "page.jpg"), "before");
    CDibImage largest = test::Filled(65500, 1, 8, 0);
    EXPECT_EQ(Saved(largest).width, 65500);
}

TEST_F(JpegWriter, AnEmptyImageIsRefusedBeforeTheFileIsTouched) {
    CDibImage image;
    FileError error;
    EXPECT_FALSE(SaveJpeg(folder_ / "page.jpg", image, nullptr, 85, 300, params_, &error));
    EXPECT_EQ(error.cause, FileError::Cause::kContent);
    EXPECT_TRUE(folder_.AllNames().empty());
}

TEST_F(JpegWriter, AFolderThatIsMissingIsAStorageFailure) {
    CDibImage image = Smooth(8, 8, 24);
    FileError error;
    EXPECT_FALSE(SaveJpeg(folder_ / "none" / "page.jpg", image, nullptr, 85, 300, params_, &error));
    EXPECT_EQ(error.cause, FileError::Cause::kStorage);
}

TEST_F(JpegWriter, AFullDiskIsAStorageFailureAndKeepsTheOldFile) {
    CDibImage image = test::Noise(900, 700, 24);  // more than one buffer of output
    test::WriteAll(folder_ / "page.jpg", "before");
    for (const rlim_t room : {0, 100, 4096, 300'000}) {
        FileError error;
        {
            const test::FullDisk full(room);
            EXPECT_FALSE(SaveJpeg(folder_ / "page.jpg", image, nullptr, 95, 300, params_, &error));
        }
        EXPECT_EQ(error.cause, FileError::Cause::kStorage);
        EXPECT_EQ(test::ReadAll(folder_ / "page.jpg"), "before");
        EXPECT_EQ(folder_.AllNames(), std::vector<std::string>{"page.jpg"});
    }
}

TEST_F(JpegWriter, OutOfMemoryAnywhereLeavesNoFile) {
    params_.SetPara(JPG_SRC_QUALITY, 1);
    CDibImage image = Smooth(30, 20, 24);
    SetSource(image, "source.jpg", {});
    const std::filesystem::path path = folder_ / "page.jpg";
    const int failures = test::SweepFailingAllocations([&](long) {
        FileError error;
        if (!SaveJpeg(path, image, nullptr, 85, 300, params_, &error)) {
            EXPECT_FALSE(std::filesystem::exists(path));
        }
    });
    EXPECT_GE(failures, 1);
    for (const std::string& name : folder_.AllNames())
        EXPECT_TRUE(name == "page.jpg" || name == "source.jpg") << name;
}

TEST_F(JpegWriter, RealPagesSurviveASaveAtHighQuality) {
    if (test::SharedData().empty())
        GTEST_SKIP() << "no shared pictures";
    for (const char* name : {"scans/test24.jpg", "scans/1555.003.jpg", "scans/lucasta.150.jpg"}) {
        CDibImage image, back;
        ASSERT_TRUE(LoadJpeg(test::SharedData() / name, image));
        Saved(image, 95);
        ASSERT_TRUE(LoadJpeg(folder_ / "page.jpg", back));
        double squares = 0;
        for (int y = 0; y < image.GetHeight(); ++y)
            for (int x = 0; x < image.GetWidth(); ++x)
                squares +=
                    std::pow(test::PixelAt(image, x, y).green - test::PixelAt(back, x, y).green, 2);
        EXPECT_LT(std::sqrt(squares / image.GetWidth() / image.GetHeight()), 4.0) << name;
        EXPECT_EQ(back.GetXDpi(), 300);
    }
}

}  // namespace
}  // namespace velloran
