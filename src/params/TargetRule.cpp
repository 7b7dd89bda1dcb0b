#include "params/TargetRule.h"

#include <algorithm>

namespace velloran {

namespace {

using enum TargetFormat;

constexpr TargetFormat kExtension[] = {kAuto, kJpeg, kBmp, kPng, kTiff, kJp2, kGif, kWebp};
constexpr TargetFormat kPlain[] = {kBmp, kPng, kTiff, kGif, kWebp};
constexpr TargetFormat kGray[] = {kJpeg, kBmp, kPng, kTiff, kJp2, kGif, kWebp};
constexpr TargetFormat kTrueColor[] = {kJpeg, kBmp, kPng, kTiff, kJp2, kWebp};

/// A field of the packed value: its 4 bits, what it allows, what stands for anything else.
struct Field {
    TargetFormat TargetRule::*member;
    int shift;
    std::span<const TargetFormat> choices;
    TargetFormat fallback;
};

constexpr Field kExtensionField = {&TargetRule::extension, 0, kExtension, kAuto};
constexpr Field kOtherField = {&TargetRule::other, 4, kPlain, kPng};
constexpr Field kBlackWhiteField = {&TargetRule::blackWhite, 8, kPlain, kTiff};
constexpr Field kGray256Field = {&TargetRule::gray256, 12, kGray, kJpeg};
constexpr Field kColor24Field = {&TargetRule::color24, 16, kTrueColor, kJpeg};
constexpr Field kFields[] = {kExtensionField, kOtherField, kBlackWhiteField, kGray256Field,
                             kColor24Field};
constexpr int kCropGifShift = 20;

TargetFormat Allowed(const Field& field, TargetFormat format) {
    const bool known = std::ranges::find(field.choices, format) != field.choices.end();
    return known ? format : field.fallback;
}

TargetFormat AtPosition(const Field& field, int position) {
    if (position < 0 || static_cast<std::size_t>(position) >= field.choices.size())
        return field.fallback;
    return field.choices[static_cast<std::size_t>(position)];
}

int PositionOf(const Field& field, const TargetRule& rule) {
    const auto found = std::ranges::find(field.choices, rule.*field.member);
    return static_cast<int>(found - field.choices.begin());
}

}  // namespace

std::span<const TargetFormat> ExtensionChoices() {
    return kExtension;
}
std::span<const TargetFormat> OtherChoices() {
    return kPlain;
}
std::span<const TargetFormat> BlackWhiteChoices() {
    return kPlain;
}
std::span<const TargetFormat> Gray256Choices() {
    return kGray;
}
std::span<const TargetFormat> Color24Choices() {
    return kTrueColor;
}

std::int32_t PackTargetRule(const TargetRule& rule) {
    std::int32_t value = (rule.cropGif ? 1 : 0) << kCropGifShift;
    for (const Field& field : kFields)
        value |= static_cast<std::int32_t>(Allowed(field, rule.*field.member)) << field.shift;
    return value;
}

TargetRule UnpackTargetRule(std::int32_t value) {
    const auto bits = static_cast<std::uint32_t>(value);
    TargetRule rule;
    for (const Field& field : kFields)
        rule.*field.member = Allowed(field, static_cast<TargetFormat>((bits >> field.shift) & 15));
    rule.cropGif = ((bits >> kCropGifShift) & 15) != 0;
    return rule;
}

std::int32_t PackTargetRule(int extensionPos, int depth24Pos, int gray256Pos, int otherPos,
                            int bwPos, bool cropGif) {
    TargetRule rule;
    rule.extension = AtPosition(kExtensionField, extensionPos);
    rule.color24 = AtPosition(kColor24Field, depth24Pos);
    rule.gray256 = AtPosition(kGray256Field, gray256Pos);
    rule.other = AtPosition(kOtherField, otherPos);
    rule.blackWhite = AtPosition(kBlackWhiteField, bwPos);
    rule.cropGif = cropGif;
    return PackTargetRule(rule);
}

void UnpackTargetRule(std::int32_t value, int& extensionPos, int& depth24Pos, int& gray256Pos,
                      int& otherPos, int& bwPos, bool& cropGif) {
    const TargetRule rule = UnpackTargetRule(value);
    extensionPos = PositionOf(kExtensionField, rule);
    depth24Pos = PositionOf(kColor24Field, rule);
    gray256Pos = PositionOf(kGray256Field, rule);
    otherPos = PositionOf(kOtherField, rule);
    bwPos = PositionOf(kBlackWhiteField, rule);
    cropGif = rule.cropGif;
}

std::u16string_view TargetExtension(TargetFormat format) {
    switch (format) {
        case kTiff:
            return u"tif";
        case kBmp:
            return u"bmp";
        case kPng:
            return u"png";
        case kGif:
            return u"gif";
        case kWebp:
            return u"webp";
        case kJpeg:
            return u"jpg";
        case kJp2:
            return u"jp2";
        default:
            return {};
    }
}

std::int32_t PresetTargetRule(TargetPreset button) {
    TargetRule rule;  // black and white is tif under every button
    switch (button) {
        case TargetPreset::kLossless:
            rule.color24 = rule.gray256 = rule.other = kPng;
            break;
        case TargetPreset::kSmallFiles:
            rule.color24 = rule.gray256 = rule.other = kWebp;
            break;
        case TargetPreset::kCommon:
            break;  // jpg, and png for the rest: the defaults
    }
    return PackTargetRule(rule);
}

}  // namespace velloran
