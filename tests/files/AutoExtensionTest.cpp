#include "files/AutoExtension.h"

#include <gtest/gtest.h>

#include <string>

#include "params/TargetRule.h"
#include "support/Images.h"

namespace velloran {
namespace {

CDibImage BlackAndWhite() {
    return test::Filled(8, 4, 1, 1);
}
CDibImage TwoColours() {
    CDibImage image = test::Filled(8, 4, 1, 1);
    test::SetPalette(image, {{255, 0, 0}, {255, 255, 255}});
    return image;
}
CDibImage SixteenColours() {
    return test::Filled(8, 4, 4, 3);
}
CDibImage Gray() {
    return test::Filled(8, 4, 8, 90);
}
CDibImage Palette256() {
    CDibImage image = test::Filled(8, 4, 8, 90);
    test::SetPalette(image, {{255, 0, 0}});
    return image;
}
CDibImage TrueColour() {
    return test::Filled(8, 4, 24, 90);
}

TEST(PickAutoExtension, ChosenPositionGivesItsExtensionWhateverTheImage) {
    const std::u16string_view expected[] = {u"",    u"jpg", u"bmp", u"png",
                                            u"tif", u"jp2", u"gif", u"webp"};
    for (int position = 1; position <= 7; ++position) {
        EXPECT_EQ(PickAutoExtension(TrueColour(), position, 0), expected[position]) << position;
        EXPECT_EQ(PickAutoExtension(CDibImage(), position, 0), expected[position]) << position;
    }
}

TEST(PickAutoExtension, PositionOutsideTheListGivesNone) {
    EXPECT_EQ(PickAutoExtension(TrueColour(), 8, 0), u"");
    EXPECT_EQ(PickAutoExtension(TrueColour(), -1, 0), u"");
    EXPECT_EQ(PickAutoExtension(TrueColour(), 0x7FFFFFFF, 0), u"");
}

TEST(PickAutoExtension, EmptyImageGivesNone) {
    EXPECT_EQ(PickAutoExtension(CDibImage(), 0, 0), u"");
}

TEST(PickAutoExtension, DefaultRuleGivesTifForBlackAndWhiteAndJpgForTrueColour) {
    EXPECT_EQ(PickAutoExtension(BlackAndWhite(), 0, 0), u"tif");
    EXPECT_EQ(PickAutoExtension(TrueColour(), 0, 0), u"jpg");
    EXPECT_EQ(PickAutoExtension(Gray(), 0, 0), u"jpg");
    EXPECT_EQ(PickAutoExtension(Palette256(), 0, 0), u"png");
}

TEST(PickAutoExtension, EachDepthHasItsField) {
    // other png 3, black and white bmp 2, grey webp 5, 24 bits jp2 7: bits 4, 8, 12 and 16.
    constexpr std::int32_t kRule = 3 << 4 | 2 << 8 | 5 << 12 | 7 << 16;
    EXPECT_EQ(PickAutoExtension(BlackAndWhite(), 0, kRule), u"bmp");
    EXPECT_EQ(PickAutoExtension(TwoColours(), 0, kRule), u"png");
    EXPECT_EQ(PickAutoExtension(SixteenColours(), 0, kRule), u"png");
    EXPECT_EQ(PickAutoExtension(Gray(), 0, kRule), u"webp");
    EXPECT_EQ(PickAutoExtension(Palette256(), 0, kRule), u"png");
    EXPECT_EQ(PickAutoExtension(TrueColour(), 0, kRule), u"jp2");
}

TEST(PickAutoExtension, WhiteBeforeBlackIsBlackAndWhiteToo) {
    CDibImage image = BlackAndWhite();
    test::SetPalette(image, {{255, 255, 255}, {0, 0, 0}});
    EXPECT_EQ(PickAutoExtension(image, 0, 0), u"tif");
}

TEST(PickAutoExtension, IdThatAFieldDoesNotOfferIsItsDefault) {
    // black and white jpg 6 and 24 bits gif 4 are not offered.
    constexpr std::int32_t kRule = 6 << 8 | 4 << 16;
    EXPECT_EQ(PickAutoExtension(BlackAndWhite(), 0, kRule), u"tif");
    EXPECT_EQ(PickAutoExtension(TrueColour(), 0, kRule), u"jpg");
}

struct PresetCase {
    TargetPreset preset;
    std::u16string_view trueColour, gray, blackWhite, other;
};

TEST(PickAutoExtension, PresetsChooseAsTheirNamesSay) {
    const PresetCase cases[] = {
        {TargetPreset::kLossless, u"png", u"png", u"tif", u"png"},
        {TargetPreset::kSmallFiles, u"webp", u"webp", u"tif", u"webp"},
        {TargetPreset::kCommon, u"jpg", u"jpg", u"tif", u"png"},
    };
    for (const PresetCase& c : cases) {
        const std::int32_t rule = PresetTargetRule(c.preset);
        SCOPED_TRACE(rule);
        EXPECT_EQ(PickAutoExtension(TrueColour(), 0, rule), c.trueColour);
        EXPECT_EQ(PickAutoExtension(Gray(), 0, rule), c.gray);
        EXPECT_EQ(PickAutoExtension(BlackAndWhite(), 0, rule), c.blackWhite);
        EXPECT_EQ(PickAutoExtension(Palette256(), 0, rule), c.other);
        EXPECT_EQ(UnpackTargetRule(rule).extension, TargetFormat::kAuto);
        EXPECT_FALSE(UnpackTargetRule(rule).cropGif);
    }
}

struct SourceCase {
    const char* source;
    // by depth: black and white, two colours, 16 colours, grey, palette, 24 bits
    const char *bw, *two, *sixteen, *gray, *palette, *trueColour;
};

constexpr SourceCase kSourceCases[] = {
    {"a.jpg", ".tif", ".png", ".png", ".jpg", ".png", ".jpg"},
    {"a.JPEG", ".tif", ".png", ".png", ".JPEG", ".png", ".JPEG"},
    {"a.jp2", ".tif", ".png", ".png", ".jp2", ".png", ".jp2"},
    {"a.j2k", ".tif", ".png", ".png", ".j2k", ".png", ".j2k"},
    {"a.gif", ".gif", ".gif", ".gif", ".gif", ".gif", ".jpg"},
    {"a.bmp", ".bmp", ".bmp", ".bmp", ".bmp", ".bmp", ".bmp"},
    {"a.png", ".png", ".png", ".png", ".png", ".png", ".png"},
    {"a.tiff", ".tiff", ".tiff", ".tiff", ".tiff", ".tiff", ".tiff"},
    {"a.webp", ".webp", ".webp", ".webp", ".webp", ".webp", ".webp"},
    {"a.ufo", ".tif", ".png", ".png", ".jpg", ".png", ".jpg"},
    {"a.wmf", ".tif", ".png", ".png", ".jpg", ".png", ".jpg"},
    {"a.nef", ".tif", ".png", ".png", ".jpg", ".png", ".jpg"},
    {"a", ".tif", ".png", ".png", ".jpg", ".png", ".jpg"},
};

TEST(SameAsSourceExtension, KeepsTheSourcesWhereTheDepthSuitsIt) {
    for (const SourceCase& c : kSourceCases) {
        SCOPED_TRACE(c.source);
        EXPECT_EQ(SameAsSourceExtension(BlackAndWhite(), c.source, false), c.bw);
        EXPECT_EQ(SameAsSourceExtension(TwoColours(), c.source, false), c.two);
        EXPECT_EQ(SameAsSourceExtension(SixteenColours(), c.source, false), c.sixteen);
        EXPECT_EQ(SameAsSourceExtension(Gray(), c.source, false), c.gray);
        EXPECT_EQ(SameAsSourceExtension(Palette256(), c.source, false), c.palette);
        EXPECT_EQ(SameAsSourceExtension(TrueColour(), c.source, false), c.trueColour);
    }
}

TEST(SameAsSourceExtension, GifFlagWinsUpToEightBits) {
    EXPECT_EQ(SameAsSourceExtension(BlackAndWhite(), "a.png", true), ".gif");
    EXPECT_EQ(SameAsSourceExtension(Gray(), "a.jpg", true), ".gif");
    EXPECT_EQ(SameAsSourceExtension(TrueColour(), "a.png", true), ".png");
}

}  // namespace
}  // namespace velloran
