#include "codecs/Metadata.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "codecs/ColorProfile.h"
#include "codecs/ExifBlock.h"
#include "codecs/FileForms.h"
#include "codecs/LoadNotes.h"
#include "codecs/Mutations.h"
#include "codecs/PlainMetadata.h"
#include "io/MemorySink.h"
#include "support/Images.h"

namespace velloran {
namespace {

using test::BytesOf;
using test::PixelAt;

constexpr FileTypeId kCarriers[] = {kTypeJpeg, kTypePng, kTypeTiff, kTypeWebp, kTypeJp2};

std::string NameOf(FileTypeId type) {
    return std::string(FileTypeName(type));
}

std::string Save(FileTypeId type, CDibImage& image, int dpi = 300) {
    SaveOptions options;
    options.quality = 90;
    options.dpi = dpi;
    options.jp2Rate = 100;
    MemorySink sink;
    FileError error;
    EXPECT_TRUE(FindFormat(type)->save(sink, image, options, &error))
        << NameOf(type) << error.detail;
    return {sink.Bytes().begin(), sink.Bytes().end()};
}

CDibImage Load(FileTypeId type, const std::string& file) {
    MemorySource source(BytesOf(file));
    CDibImage image;
    LoadNotes notes;
    FileError error;
    EXPECT_TRUE(FindFormat(type)->load(source, {}, image, notes, &error))
        << NameOf(type) << error.detail;
    return image;
}

Metadata MetadataOf(const CDibImage& image) {
    return image.Source().metadata != nullptr ? *image.Source().metadata : Metadata();
}

CDibImage PageWith(int bpp, Metadata metadata, int width = 61, int height = 43) {
    CDibImage image = test::Noise(width, height, bpp);
    image.Source().metadata = std::make_shared<const Metadata>(std::move(metadata));
    return image;
}

std::uint64_t Number(const Blob& block, std::size_t at, int size) {
    std::uint64_t value = 0;
    for (int i = 0; i < size; ++i)
        value =
            value << 8 | block[at + static_cast<std::size_t>(block[0] == 'M' ? i : size - 1 - i)];
    return value;
}

/// An entry of the directory at a place: where it lies, 0 for none.
std::size_t FindEntry(const Blob& block, std::size_t directory, int tag) {
    const auto count = static_cast<std::size_t>(Number(block, directory, 2));
    for (std::size_t i = 0; i < count; ++i)
        if (Number(block, directory + 2 + 12 * i, 2) == static_cast<std::uint64_t>(tag))
            return directory + 2 + 12 * i;
    return 0;
}

std::uint64_t ShortOrLong(const Blob& block, std::size_t directory, int tag) {
    const std::size_t entry = FindEntry(block, directory, tag);
    if (entry == 0)
        return 0;
    return Number(block, entry + 8, Number(block, entry + 2, 2) == 3 ? 2 : 4);
}

std::size_t First(const Blob& block) {
    return static_cast<std::size_t>(Number(block, 4, 4));
}

std::string TextOf(const Blob& block, int tag) {
    const std::size_t entry = FindEntry(block, First(block), tag);
    if (entry == 0)
        return "none";
    const auto count = static_cast<std::size_t>(Number(block, entry + 4, 4));
    const auto at = static_cast<std::size_t>(Number(block, entry + 8, 4));
    return {block.begin() + static_cast<std::ptrdiff_t>(at),
            block.begin() + static_cast<std::ptrdiff_t>(at + count)};
}

/// All that a block made of ExifOf must still and newly say.
void ExpectSettled(const Blob& exif, bool bigEndian, int width, int height, int dpi) {
    ASSERT_TRUE(IsExif(exif));
    EXPECT_EQ(exif[0], bigEndian ? 'M' : 'I');
    EXPECT_EQ(ExifOrientation(exif), 1);
    EXPECT_EQ(TextOf(exif, 0x10F), std::string("Grandma\0", 8));
    EXPECT_EQ(TextOf(exif, 0xC5F0), std::string(test::kUnknownValue, 12));
    EXPECT_EQ(ShortOrLong(exif, First(exif), 0xC5F1), 77U);
    const auto main = static_cast<std::size_t>(ShortOrLong(exif, First(exif), 0x8769));
    ASSERT_NE(main, 0U);
    EXPECT_EQ(ShortOrLong(exif, main, 0xA002), static_cast<std::uint64_t>(width));
    EXPECT_EQ(ShortOrLong(exif, main, 0xA003), static_cast<std::uint64_t>(height));
    const auto exposure =
        static_cast<std::size_t>(Number(exif, FindEntry(exif, main, 0x829A) + 8, 4));
    EXPECT_EQ(Number(exif, exposure + 4, 4), 125U);
    const auto resolution =
        static_cast<std::size_t>(Number(exif, FindEntry(exif, First(exif), 0x11A) + 8, 4));
    EXPECT_EQ(Number(exif, resolution, 4), static_cast<std::uint64_t>(dpi));
    EXPECT_EQ(Number(exif, resolution + 4, 4), 1U);
    constexpr std::string_view kThumbnail = "thumbnail";
    EXPECT_EQ(std::search(exif.begin(), exif.end(), kThumbnail.begin(), kThumbnail.end()),
              exif.end());
}

TEST(Exif, BecomesTrueOfThePageAndKeepsTheRest) {
    for (const bool bigEndian : {false, true}) {
        Blob exif = test::ExifOf(bigEndian);
        EXPECT_EQ(ExifOrientation(exif), 6);
        SettleExif({70000, 500, 300, 300}, exif);
        ExpectSettled(exif, bigEndian, 70000, 500, 300);
        EXPECT_LE(exif.size(), 250U);  // the thumbnail's picture ended the block
        EXPECT_EQ(Number(exif, 8 + 2 + 8 * 12, 4), 0U);
    }
}

TEST(Exif, OrientationOutOfRangeIsNone) {
    for (const int wrong : {0, 9, 65535})
        EXPECT_EQ(ExifOrientation(test::ExifOf(false, wrong)), 1);
    EXPECT_EQ(ExifOrientation(Blob{'I', 'I', 42, 0}), 1);
    EXPECT_EQ(ExifOrientation(Blob(20, 0)), 1);
}

TEST(Exif, DamagedBlocksAreSettledWithoutHarm) {
    const Blob whole = test::ExifOf(true);
    const std::string text(whole.begin(), whole.end());
    const auto settle = [](const std::string& damaged) {
        Blob block(damaged.begin(), damaged.end());
        const std::size_t before = block.size();
        SettleExif({100, 100, 300, 300}, block);
        EXPECT_LE(block.size(), before);
    };
    for (const std::string& cut : test::TruncationsOf(text))
        settle(cut);
    test::ForEachMutation(text, 3000, 11, settle);
}

TEST(Exif, AThumbnailThatSharesBytesWithTheRestTakesNoneOfIt) {
    Blob exif = test::ExifOf(false);
    exif[214 + 2 + 8] = 8;  // its picture is told to lie on the first directory
    exif[214 + 2 + 9] = 0;
    std::fill(exif.begin() + 250, exif.end(), std::uint8_t{'x'});
    SettleExif({10, 10, 300, 300}, exif);
    ExpectSettled(exif, false, 10, 10, 300);
}

struct PairCase {
    FileTypeId from, to;
};
void PrintTo(const PairCase& c, std::ostream* out) {
    *out << NameOf(c.from) << "To" << NameOf(c.to);
}
std::vector<PairCase> AllPairs() {
    std::vector<PairCase> pairs;
    for (const FileTypeId from : kCarriers)
        for (const FileTypeId to : kCarriers)
            pairs.push_back({from, to});
    return pairs;
}

class MetadataOfPairs : public testing::TestWithParam<PairCase> {};

TEST_P(MetadataOfPairs, ProfileExifXmpAndResolutionTravel) {
    for (const bool bigEndian : {false, true}) {
        CDibImage page =
            PageWith(24, {test::RgbProfile(), test::ExifOf(bigEndian), test::XmpPacket()});
        CDibImage first = Load(GetParam().from, Save(GetParam().from, page));
        const CDibImage second = Load(GetParam().to, Save(GetParam().to, first, 200));
        const Metadata metadata = MetadataOf(second);
        EXPECT_EQ(metadata.profile, test::RgbProfile());
        ExpectSettled(metadata.exif, bigEndian, 61, 43, 200);
        const std::string xmp(metadata.xmp.begin(), metadata.xmp.end());
        EXPECT_NE(xmp.find("tiff:Artist=\"Grandma\""), std::string::npos);
        EXPECT_NE(xmp.find("tiff:Orientation=\"1\""), std::string::npos);
        // WebP has no resolution of its own.
        EXPECT_EQ(second.GetXDpi(), GetParam().to == kTypeWebp ? 96 : 200);
        ASSERT_EQ(second.GetWidth(), 61);
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, MetadataOfPairs, testing::ValuesIn(AllPairs()),
                         [](const auto& tested) {
                             return NameOf(tested.param.from) + "To" + NameOf(tested.param.to);
                         });

class MetadataOfFormat : public testing::TestWithParam<FileTypeId> {};

TEST_P(MetadataOfFormat, AProfileOfAnotherKindOfColourIsDropped) {
    struct Case {
        int bpp;
        Blob profile;
        bool stays;
    };
    const bool holdsGray = GetParam() != kTypeWebp;  // all its pictures are colour
    for (const Case& c : {Case{8, test::RgbProfile(), false},
                          {24, test::GrayProfile(), false},
                          {24, test::CmykProfile(), false},
                          {24, test::RgbProfile(), true},
                          {8, test::GrayProfile(), holdsGray}}) {
        CDibImage page = PageWith(c.bpp, {c.profile, {}, {}});
        const Metadata metadata = MetadataOf(Load(GetParam(), Save(GetParam(), page)));
        EXPECT_EQ(metadata.profile, c.stays ? c.profile : Blob()) << c.bpp;
    }
}

TEST_P(MetadataOfFormat, NothingIsWrittenForAPageThatBringsNothing) {
    CDibImage page = test::Noise(20, 20, 24);
    EXPECT_EQ(Load(GetParam(), Save(GetParam(), page)).Source().metadata, nullptr);
}

TEST_P(MetadataOfFormat, NotesTellTheSameWithoutPixels) {
    CDibImage page = PageWith(24, {test::RgbProfile(), test::ExifOf(false), test::XmpPacket()});
    const std::string file = Save(GetParam(), page);
    MemorySource source(BytesOf(file));
    LoadNotes notes;
    ASSERT_TRUE(FindFormat(GetParam())->notes(source, notes, nullptr));
    ASSERT_NE(notes.metadata, nullptr);
    const Metadata loaded = MetadataOf(Load(GetParam(), file));
    EXPECT_EQ(notes.metadata->profile, loaded.profile);
    EXPECT_EQ(notes.metadata->exif, loaded.exif);
    EXPECT_EQ(notes.metadata->xmp, loaded.xmp);
    EXPECT_EQ(notes.pictures, 1);
}

TEST_P(MetadataOfFormat, LargeProfilesTravelWhole) {
    Blob profile = test::RgbProfile();
    profile.resize(200000);
    for (std::size_t i = 4000; i < profile.size(); ++i)
        profile[i] = static_cast<std::uint8_t>(i * 7919 >> 5);
    CDibImage page = PageWith(24, {profile, {}, {}}, 400, 300);
    EXPECT_EQ(MetadataOf(Load(GetParam(), Save(GetParam(), page))).profile, profile);
}

TEST_P(MetadataOfFormat, DamagedFilesStillEndInAMessageOrAPicture) {
    CDibImage page =
        PageWith(24, {test::RgbProfile(), test::ExifOf(false), test::XmpPacket()}, 8, 8);
    const Format& format = *FindFormat(GetParam());
    test::ForEachMutation(Save(GetParam(), page), 400, 3, [&](const std::string& damaged) {
        MemorySource source(BytesOf(damaged)), again(BytesOf(damaged));
        CDibImage image;
        LoadNotes notes;
        FileError error;
        const bool loaded = format.load(source, {}, image, notes, &error);
        EXPECT_EQ(loaded, image.IsValid());
        format.notes(again, notes, nullptr);
    });
}

INSTANTIATE_TEST_SUITE_P(Formats, MetadataOfFormat, testing::ValuesIn(kCarriers),
                         [](const auto& tested) { return NameOf(tested.param); });

TEST(Metadata, AColourProfileIsWrittenToAPaletteOfColours) {
    CDibImage page = PageWith(8, {test::RgbProfile(), {}, {}});
    test::SetPalette(page, {{255, 0, 0}, {0, 9, 0}});
    for (const FileTypeId type : {kTypePng, kTypeTiff}) {
        CDibImage copy(page);
        EXPECT_EQ(MetadataOf(Load(type, Save(type, copy))).profile, test::RgbProfile())
            << NameOf(type);
    }
}

/// Where the upright picture's pixel lies in the stored one, by the meaning of the tag.
test::Rgb StoredAt(const CDibImage& stored, int orientation, int x, int y) {
    const int w = stored.GetWidth() - 1, h = stored.GetHeight() - 1;
    switch (orientation) {
        case 2:
            return PixelAt(stored, w - x, y);
        case 3:
            return PixelAt(stored, w - x, h - y);
        case 4:
            return PixelAt(stored, x, h - y);
        case 5:
            return PixelAt(stored, y, x);
        case 6:
            return PixelAt(stored, y, h - x);
        case 7:
            return PixelAt(stored, w - y, h - x);
        case 8:
            return PixelAt(stored, w - y, x);
        default:
            return PixelAt(stored, x, y);
    }
}

/// The block at its place in a file, once.
std::string WithOrientation(std::string file, int orientation) {
    const Blob upright = [] {
        Blob exif = test::ExifOf(false);
        SettleExif({61, 43, 300, 300}, exif);
        return exif;
    }();
    const std::string_view text(reinterpret_cast<const char*>(upright.data()), upright.size());
    const std::size_t at = file.find(text);
    EXPECT_NE(at, std::string::npos);
    EXPECT_EQ(file[at + 22 + 8], 1);  // the second entry's value
    file[at + 22 + 8] = static_cast<char>(orientation);
    return file;
}

TEST(Metadata, EveryOrientationOfExifIsObeyedInEveryFormat) {
    for (const FileTypeId type : {kTypePng, kTypeWebp, kTypeJp2})
        for (const bool withAlpha : {false, true}) {
            if (withAlpha && type == kTypeJp2)
                continue;  // written without
            CDibImage page = PageWith(24, {{}, test::ExifOf(false), {}});
            if (withAlpha) {
                page.CreateAlpha();
                page.GetAlpha()[5] = 99;
            }
            const std::string file = Save(type, page);
            const CDibImage stored = Load(type, file);
            for (int orientation = 1; orientation <= 8; ++orientation) {
                const std::string turned = WithOrientation(file, orientation);
                const CDibImage image = Load(type, turned);
                const bool swaps = orientation >= 5;
                ASSERT_EQ(image.GetWidth(), swaps ? 43 : 61) << NameOf(type) << orientation;
                for (int y = 0; y < image.GetHeight(); ++y)
                    for (int x = 0; x < image.GetWidth(); ++x)
                        ASSERT_EQ(PixelAt(image, x, y), StoredAt(stored, orientation, x, y))
                            << NameOf(type) << " " << orientation << " at " << x << ", " << y;
                ImageInfo info;
                MemorySource source(BytesOf(turned));
                ASSERT_TRUE(FindFormat(type)->info(source, info, nullptr));
                EXPECT_EQ(info.width, image.GetWidth());
                EXPECT_EQ(info.height, image.GetHeight());
                EXPECT_EQ(image.GetAlpha() != nullptr, withAlpha);
            }
        }
}

TEST(InkConverter, MixesByTheFilesOwnProfile) {
    const Blob profile = test::CmykProfile();
    const std::uint8_t inks[] = {0, 0, 0, 0, 0, 0, 0, 255, 255, 0, 0, 0};
    std::uint8_t bgr[9] = {};
    InkConverter(profile, /*invert=*/false).ConvertRow(inks, bgr, 3);
    constexpr int kExpected[] = {255, 255, 255, 0, 0, 0, 0, 0, 255};
    for (int i = 0; i < 9; ++i)
        EXPECT_NEAR(bgr[i], kExpected[i], 4) << i;
    std::uint8_t inverted[12];
    std::transform(std::begin(inks), std::end(inks), inverted,
                   [](std::uint8_t ink) { return static_cast<std::uint8_t>(255 - ink); });
    InkConverter(profile, /*invert=*/true).ConvertRow(inverted, bgr, 3);
    for (int i = 0; i < 9; ++i)
        EXPECT_NEAR(bgr[i], kExpected[i], 4) << i;
}

TEST(InkConverter, WithoutAProfileOfInksMixesAsBefore) {
    const std::uint8_t inks[] = {0, 0, 0, 255};
    for (const Blob& profile : {Blob(), test::RgbProfile(), Blob(500, 1)}) {
        std::uint8_t bgr[3] = {};
        InkConverter(profile, /*invert=*/false).ConvertRow(inks, bgr, 1);
        EXPECT_EQ(bgr[0], 32);
        EXPECT_EQ(bgr[2], 35);
    }
}

TEST(ProfileDescription, IsWhatTheProfileCallsItself) {
    EXPECT_EQ(ProfileDescription(test::CmykProfile()), "Odd inks");
    EXPECT_EQ(ProfileDescription(Blob(300, 7)), "");
}

}  // namespace
}  // namespace velloran
