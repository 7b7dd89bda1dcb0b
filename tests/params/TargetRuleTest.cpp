#include "params/TargetRule.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "text/Text.h"

namespace velloran {
namespace {

using enum TargetFormat;

std::vector<int> Ids(std::span<const TargetFormat> choices) {
    std::vector<int> ids;
    for (const TargetFormat format : choices)
        ids.push_back(static_cast<int>(format));
    return ids;
}

TEST(TargetRule, ZeroUnpacksToTheDefaults) {
    const TargetRule rule = UnpackTargetRule(0);
    EXPECT_EQ(static_cast<int>(rule.extension), 0);
    EXPECT_EQ(static_cast<int>(rule.color24), 6);
    EXPECT_EQ(static_cast<int>(rule.gray256), 6);
    EXPECT_EQ(static_cast<int>(rule.blackWhite), 1);
    EXPECT_EQ(static_cast<int>(rule.other), 3);
    EXPECT_FALSE(rule.cropGif);
}

TEST(TargetRule, FieldsStandInTheirBits) {
    TargetRule rule;
    rule.extension = kWebp;  // 5 at bit 0
    rule.other = kGif;       // 4 at bit 4
    rule.blackWhite = kBmp;  // 2 at bit 8
    rule.gray256 = kJp2;     // 7 at bit 12
    rule.color24 = kTiff;    // 1 at bit 16
    rule.cropGif = true;     // 1 at bit 20
    EXPECT_EQ(PackTargetRule(rule), 0x117245);
    EXPECT_EQ(UnpackTargetRule(0x117245), rule);
    // The value that a project file of the default rule holds.
    EXPECT_EQ(PackTargetRule(TargetRule()), 0x66130);
    EXPECT_EQ(UnpackTargetRule(418096).gray256, kJpeg);
}

TEST(TargetRule, ListsStandInTheOrderOfTheComboBoxes) {
    EXPECT_EQ(Ids(ExtensionChoices()), (std::vector{0, 6, 2, 3, 1, 7, 4, 5}));
    EXPECT_EQ(Ids(OtherChoices()), (std::vector{2, 3, 1, 4, 5}));
    EXPECT_EQ(Ids(BlackWhiteChoices()), (std::vector{2, 3, 1, 4, 5}));
    EXPECT_EQ(Ids(Gray256Choices()), (std::vector{6, 2, 3, 1, 7, 4, 5}));
    EXPECT_EQ(Ids(Color24Choices()), (std::vector{6, 2, 3, 1, 7, 5}));
}

TEST(TargetRule, AnIdThatIsNotAllowedIsReplacedOnUnpacking) {
    // Ids 0 to 15 in every field at once.
    for (int id = 0; id < 16; ++id) {
        const TargetRule rule = UnpackTargetRule(id * 0x11111);
        const auto expect = [id](std::vector<int> allowed, int fallback) {
            return std::ranges::find(allowed, id) != allowed.end() ? id : fallback;
        };
        EXPECT_EQ(static_cast<int>(rule.extension), expect({0, 6, 2, 3, 1, 7, 4, 5}, 0)) << id;
        EXPECT_EQ(static_cast<int>(rule.other), expect({2, 3, 1, 4, 5}, 3)) << id;
        EXPECT_EQ(static_cast<int>(rule.blackWhite), expect({2, 3, 1, 4, 5}, 1)) << id;
        EXPECT_EQ(static_cast<int>(rule.gray256), expect({6, 2, 3, 1, 7, 4, 5}, 6)) << id;
        EXPECT_EQ(static_cast<int>(rule.color24), expect({6, 2, 3, 1, 7, 5}, 6)) << id;
    }
}

TEST(TargetRule, AnIdThatIsNotAllowedIsReplacedOnPacking) {
    TargetRule rule;
    rule.other = kJpeg;
    rule.blackWhite = kAuto;
    rule.color24 = kGif;
    rule.extension = static_cast<TargetFormat>(9);
    EXPECT_EQ(PackTargetRule(rule), 0x66130);
}

TEST(TargetRule, AnyGifFlagIsStoredAsZeroOrOne) {
    EXPECT_TRUE(UnpackTargetRule(0xF00000).cropGif);
    EXPECT_EQ(PackTargetRule(UnpackTargetRule(0xF00000)), 0x166130);
    EXPECT_FALSE(UnpackTargetRule(-1).cropGif == false);
    EXPECT_EQ(PackTargetRule(UnpackTargetRule(-1)), 0x166130);
}

TEST(TargetRule, PositionsGoThereAndBack) {
    EXPECT_EQ(PackTargetRule(2, 5, 6, 3, 0, true),
              0x100000 | 0x2 | 5 << 16 | 5 << 12 | 4 << 4 | 2 << 8);
    int extension = -1, color24 = -1, gray256 = -1, other = -1, blackWhite = -1;
    bool cropGif = false;
    UnpackTargetRule(PackTargetRule(2, 5, 6, 3, 0, true), extension, color24, gray256, other,
                     blackWhite, cropGif);
    EXPECT_EQ(extension, 2);
    EXPECT_EQ(color24, 5);
    EXPECT_EQ(gray256, 6);
    EXPECT_EQ(other, 3);
    EXPECT_EQ(blackWhite, 0);
    EXPECT_TRUE(cropGif);
}

TEST(TargetRule, APositionPastTheListStandsForTheDefault) {
    EXPECT_EQ(PackTargetRule(8, 6, 7, 5, 5, false), 0x66130);
    EXPECT_EQ(PackTargetRule(-1, -1, -1, -1, -1, false), 0x66130);
}

TEST(TargetRule, PresetButtonsSetTheirFormats) {
    // Color, grey, black and white, other: from bit 16 down.
    EXPECT_EQ(PresetTargetRule(TargetPreset::kLossless), 0x33130);
    EXPECT_EQ(PresetTargetRule(TargetPreset::kSmallFiles), 0x55150);
    EXPECT_EQ(PresetTargetRule(TargetPreset::kCommon), 0x66130);
}

TEST(TargetRule, EveryFormatHasItsExtension) {
    const char* const extensions[] = {"", "tif", "bmp", "png", "gif", "webp", "jpg", "jp2"};
    for (int id = 0; id < 8; ++id)
        EXPECT_EQ(ToUtf8(TargetExtension(static_cast<TargetFormat>(id))), extensions[id]);
    EXPECT_TRUE(TargetExtension(static_cast<TargetFormat>(8)).empty());
}

}  // namespace
}  // namespace velloran
