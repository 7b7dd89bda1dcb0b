#include "codecs/Raw.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "codecs/FileForms.h"
#include "codecs/Mutations.h"
#include "support/Images.h"

namespace velloran {
namespace {

using test::BytesOf;
using test::PixelAt;

/// A digital negative, little-endian, uncompressed, 16 bits: fields in the order of their tags.
class Negative {
 public:
    void Add(int tag, int type, const std::vector<std::uint32_t>& values) {
        std::string bytes;
        const int size = type == 1 || type == 2 ? 1 : (type == 3 ? 2 : 4);
        for (const std::uint32_t value : values)
            Put(bytes, value, size);
        const std::size_t count = type == 5 || type == 10 ? values.size() / 2 : values.size();
        fields_.push_back({tag, type, count, bytes});
    }

    std::string File(const std::string& samples) {
        const std::size_t after = 8 + 2 + fields_.size() * 12 + 4;
        std::string more;
        std::string file = "II";
        Put(file, 42, 2);
        Put(file, 8, 4);
        Put(file, static_cast<std::uint32_t>(fields_.size()), 2);
        std::size_t total = 0;
        for (const Field& field : fields_)
            total += field.bytes.size() > 4 ? field.bytes.size() : 0;
        for (const Field& field : fields_) {
            Put(file, static_cast<std::uint32_t>(field.tag), 2);
            Put(file, static_cast<std::uint32_t>(field.type), 2);
            Put(file, static_cast<std::uint32_t>(field.count), 4);
            if (field.tag == 273) {
                Put(file, static_cast<std::uint32_t>(after + total), 4);
            } else if (field.bytes.size() > 4) {
                Put(file, static_cast<std::uint32_t>(after + more.size()), 4);
                more += field.bytes;
            } else {
                file += field.bytes + std::string(4 - field.bytes.size(), '\0');
            }
        }
        Put(file, 0, 4);
        return file + more + samples;
    }

 private:
    struct Field {
        int tag, type;
        std::size_t count;
        std::string bytes;
    };
    static void Put(std::string& to, std::uint32_t value, int size) {
        for (int i = 0; i < size; ++i)
            to += static_cast<char>(value >> (8 * i));
    }
    std::vector<Field> fields_;
};

constexpr int kWidth = 96, kHeight = 64;

/// Red on the left half, blue on the right one, seen through a mosaic of red, green, green, blue.
std::string RawFile(int orientation = 1, bool isRaw = true) {
    std::string samples;
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x) {
            const bool redSite = y % 2 == 0 && x % 2 == 0, blueSite = y % 2 != 0 && x % 2 != 0;
            const bool lit = x < kWidth / 2 ? redSite : blueSite;
            const int level = lit ? 60000 : 200;
            samples += static_cast<char>(level & 255);
            samples += static_cast<char>(level >> 8);
        }
    Negative negative;
    negative.Add(254, 4, {0});
    negative.Add(256, 4, {kWidth});
    negative.Add(257, 4, {kHeight});
    negative.Add(258, 3, {16});
    negative.Add(259, 3, {1});
    negative.Add(262, 3, {isRaw ? 32803U : 1U});
    negative.Add(271, 2, {'T', 'e', 's', 't', 'c', 'a', 'm', 0});
    negative.Add(272, 2, {'O', 'n', 'e', 0});
    negative.Add(273, 4, {0});
    negative.Add(274, 3, {static_cast<std::uint32_t>(orientation)});
    negative.Add(277, 3, {1});
    negative.Add(278, 4, {kHeight});
    negative.Add(279, 4, {kWidth * kHeight * 2});
    if (isRaw) {
        negative.Add(33421, 3, {2, 2});
        negative.Add(33422, 1, {0, 1, 1, 2});
        negative.Add(50706, 1, {1, 4, 0, 0});
        negative.Add(50708, 2, {'T', 'e', 's', 't', 'c', 'a', 'm', ' ', 'O', 'n', 'e', 0});
        // The matrix of sRGB itself: the camera sees what a screen shows.
        negative.Add(50721, 10,
                     {32406, 10000, static_cast<std::uint32_t>(-15372), 10000,
                      static_cast<std::uint32_t>(-4986), 10000, static_cast<std::uint32_t>(-9689),
                      10000, 18758, 10000, 415, 10000, 557, 10000,
                      static_cast<std::uint32_t>(-2040), 10000, 10570, 10000});
        negative.Add(50728, 5, {1, 1, 1, 1, 1, 1});
        negative.Add(50778, 3, {21});
    }
    return negative.File(samples);
}

bool Load(const std::string& file, CDibImage& image, FileError* error = nullptr) {
    MemorySource source(BytesOf(file));
    LoadNotes notes;
    return LoadRaw(source, image, notes, error);
}

bool IsRaw(const std::string& file) {
    MemorySource source(BytesOf(file));
    return IsRawFile(source);
}

TEST(Raw, OnlyWhatHoldsRawSamplesIsRaw) {
    EXPECT_TRUE(IsRaw(RawFile()));
    EXPECT_FALSE(IsRaw(RawFile(1, /*isRaw=*/false)));  // a scan that names its camera
    EXPECT_FALSE(IsRaw("II*"));
    EXPECT_FALSE(IsRaw("some words that are long enough"));
    EXPECT_FALSE(IsRaw(std::string("II\x1A\0\0\0HEAPCCDR", 14)));  // a head and nothing behind it
}

TEST(Raw, ColoursComeOutOfTheMosaic) {
    CDibImage image;
    FileError error;
    ASSERT_TRUE(Load(RawFile(), image, &error)) << error.detail;
    EXPECT_EQ(image.GetWidth(), kWidth);
    EXPECT_EQ(image.GetHeight(), kHeight);
    ASSERT_EQ(image.GetBpp(), 24);
    const test::Rgb left = PixelAt(image, 20, 30), right = PixelAt(image, 76, 30);
    EXPECT_GT(left.red, 200);
    EXPECT_LT(left.blue, 60);
    EXPECT_LT(left.green, 60);
    EXPECT_GT(right.blue, 200);
    EXPECT_LT(right.red, 60);
}

TEST(Raw, PicturesAreUpright) {
    CDibImage image;
    ASSERT_TRUE(Load(RawFile(6), image));
    EXPECT_EQ(image.GetWidth(), kHeight);
    EXPECT_EQ(image.GetHeight(), kWidth);
    EXPECT_GT(PixelAt(image, 30, 20).red, 200);  // the left half is above now
    EXPECT_GT(PixelAt(image, 30, 76).blue, 200);
    ImageInfo info;
    const std::string file = RawFile(6);
    MemorySource source(BytesOf(file));
    ASSERT_TRUE(ReadRawInfo(source, info, nullptr));
    EXPECT_EQ(info.width, kHeight);
    EXPECT_EQ(info.height, kWidth);
}

TEST(Raw, DamagedFilesEndInAMessageOrAPicture) {
    const std::string file = RawFile();
    const auto load = [](const std::string& damaged) {
        CDibImage image;
        FileError error;
        const bool loaded = Load(damaged, image, &error);
        EXPECT_EQ(loaded, image.IsValid());
        EXPECT_TRUE(loaded || error.cause != FileError::Cause::kNone);
    };
    for (const std::string& cut : test::TruncationsOf(file))
        load(cut);
    test::ForEachMutation(file, 200, 13, load);
}

}  // namespace
}  // namespace velloran
