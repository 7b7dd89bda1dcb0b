#include "codecs/Formats.h"

#include <gtest/gtest.h>

#include <set>

#include "params/ParaLists.h"
#include "params/TargetRule.h"

namespace velloran {
namespace {

TEST(Formats, TheParameterListNamesTheSameSourcesAsTheTable) {
    ASSERT_EQ(SourceFilterCount(), static_cast<int>(std::size(lists::kSourceFiles)));
    for (int i = 0; i < SourceFilterCount(); ++i)
        EXPECT_TRUE(SourceFilter(i) == lists::kSourceFiles[i]) << i;
    EXPECT_TRUE(SourceFilter(-1).empty());
    EXPECT_TRUE(SourceFilter(SourceFilterCount()).empty());
}

TEST(Formats, TheSourceListIsAsSettingsFilesKnowIt) {
    EXPECT_EQ(SourceFilterCount(), 11);
    EXPECT_EQ(SourceFilter(1), u"*.jpg;*.jpeg");
    EXPECT_EQ(SourceFilter(8), u"*.jpf;*.jpx;*.jp2;*.j2k;*.jpc;*.j2c;");
    EXPECT_EQ(SourceFilter(10), u"*.nef;*.crw;*.cr2;*.dng");
}

TEST(Formats, TheDialogsFilterHoldsTheListAsItIs) {
    EXPECT_TRUE(
        SupportedFilter() ==
        u"Supported|*.jpg;*.jpeg;*.jpe;*.gif;*.ufo;*.bmp;*.dib;*.png;*.tif;*.tiff;*.wmf;*.emf;"
        u"*.jpf;*.jpx;*.jp2;*.j2k;*.jpc;*.j2c;*.webp;*.nef;*.crw;*.cr2;*.dng|"
        u"JPEG|*.jpg;*.jpeg;*.jpe|GIF|*.gif|UFO|*.ufo|BMP|*.bmp;*.dib|PNG|*.png|"
        u"TIFF|*.tif;*.tiff|WMF|*.wmf;*.emf|JPEG 2000|*.jpf;*.jpx;*.jp2;*.j2k;*.jpc;*.j2c|"
        u"Webp|*.webp|Raw|*.nef;*.crw;*cr2;*.dng|All Files(*.*)|*.*||");
}

TEST(Formats, EachIdAndEachNameStandsOnce) {
    std::set<int> ids;
    std::set<std::string_view> names, extensions;
    for (const Format& format : Formats()) {
        EXPECT_TRUE(ids.insert(format.id).second) << format.name;
        EXPECT_TRUE(names.insert(format.name).second) << format.name;
        EXPECT_EQ(FindFormat(format.id), &format);
        for (const FormatExtension& extension : format.extensions)
            EXPECT_TRUE(extensions.insert(extension.text).second) << extension.text;
    }
    EXPECT_EQ(ids.size(), 12U);
    EXPECT_EQ(FindFormat(kTypeUnknown), nullptr);
    EXPECT_EQ(FindFormat(12), nullptr);
}

TEST(Formats, TargetsOfTheParameterAreRowsWithThatExtension) {
    for (const TargetFormat target : ExtensionChoices()) {
        const Format* format = FormatOfTarget(target);
        ASSERT_EQ(format == nullptr, target == TargetFormat::kAuto);
        if (format == nullptr)
            continue;
        std::string dotted = ".";
        for (const char16_t unit : TargetExtension(target))
            dotted += static_cast<char>(unit);
        EXPECT_EQ(FormatOfName(dotted), format) << dotted;
    }
}

TEST(Formats, FieldsOfTheTargetParameterOfferWhatTheTypesHold) {
    const auto all = [](std::span<const TargetFormat> choices, unsigned trait) {
        for (const TargetFormat target : choices)
            EXPECT_TRUE(FormatOfTarget(target)->Has(trait)) << FormatOfTarget(target)->name;
    };
    all(OtherChoices(), Format::kReducedTarget | Format::kHoldsPalette);
    all(BlackWhiteChoices(), Format::kHoldsPalette);
    all(Gray256Choices(), Format::kHoldsGray);
    all(Color24Choices(), Format::kHoldsColor);
}

TEST(Formats, AWordForAnExtensionIsKnownInEachSpelling) {
    EXPECT_EQ(FormatOfExtension("jpg"), TargetFormat::kJpeg);
    EXPECT_EQ(FormatOfExtension("JPG"), TargetFormat::kJpeg);
    EXPECT_EQ(FormatOfExtension("jpeg"), TargetFormat::kJpeg);
    EXPECT_EQ(FormatOfExtension(".Tiff"), TargetFormat::kTiff);
    EXPECT_EQ(FormatOfExtension("Auto"), TargetFormat::kAuto);
    EXPECT_EQ(FormatOfExtension("jp2"), TargetFormat::kJp2);
    for (const char* word : {"", ".", "j2k", "ufo", "nef", "jpe", "wmf", "jp", "..jpg"})
        EXPECT_FALSE(FormatOfExtension(word)) << word;
    EXPECT_EQ(TargetExtensionWords().size(), ExtensionChoices().size());
    for (std::size_t i = 0; i < TargetExtensionWords().size(); ++i)
        EXPECT_EQ(FormatOfExtension(TargetExtensionWords()[i]), ExtensionChoices()[i]);
}

}  // namespace
}  // namespace velloran
