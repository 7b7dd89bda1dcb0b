// Every step makes the same bytes in every form of the kernels: those of ref/EachForm.txt.

#include "support/EachForm.h"

#include <gtest/gtest.h>

#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "core/DibImage.h"
#include "core/GrayDepth.h"
#include "params/ParaTable.h"
#include "pipeline/RunRecord.h"
#include "support/Images.h"

namespace velloran {
namespace {

constexpr int kWidth = 203, kHeight = 149;
constexpr const char* kReference = VELLORAN_PIPELINE_REF "/EachForm.txt";

/// A page in the small: paper that is lit unevenly and a little yellow, grain, lines of strokes as
/// of text, a coloured picture with hard and with soft edges. From sums of integers alone.
CDibImage ColorPage() {
    std::mt19937 random(20240229);
    CDibImage page = test::Filled(kWidth, kHeight, 24, 0);
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x) {
            const int light = 225 - x / 6 - y * y / 700, grain = static_cast<int>(random() % 13);
            test::Rgb pixel{light + grain, light + grain - 6, light + grain - 20};
            const bool isText = y > 10 && y < 90 && y % 14 < 9 && x > 12 && x < 110;
            if (isText && (x * 7 + y / 14 * 5) % 11 < 4 && (x + y) % 17 > 2)
                pixel = {30 + grain, 28 + grain, 35 + grain};
            if (x > 125 && x < 190 && y > 20 && y < 120)
                pixel = {(x * 3 + grain) & 255, (y * 2 + 5 * grain) & 255, ((x + y) * 2) & 255};
            if (x > 20 && x < 100 && y > 100 && y < 135)
                pixel = {250 - x, 60 + y / 2 + grain, x + grain};
            test::SetPixel(page, x, y, pixel);
        }
    return page;
}

/// The page in 24, 8 or 1 bits.
CDibImage Page(int bpp) {
    CDibImage page = ColorPage();
    if (bpp == 24)
        return page;
    EXPECT_NE(ConvertToGray(page), 0);
    if (bpp == 8)
        return page;
    CDibImage ink = test::Filled(kWidth, kHeight, 1, 0);
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
            test::SetIndex(ink, x, y, test::IndexAt(page, x, y) > 150 ? 1 : 0);
    return ink;
}

constexpr int kDepths[] = {1, 8, 24};

/// FNV-1a of all that a picture is.
std::string HashOf(const CDibImage& image) {
    std::uint64_t hash = 14695981039346656037ULL;
    const auto add = [&](std::int64_t byte) {
        hash = (hash ^ static_cast<std::uint64_t>(byte & 255)) * 1099511628211ULL;
    };
    for (const int value : {image.GetWidth(), image.GetHeight(), image.GetBpp()})
        for (int shift = 0; shift < 32; shift += 8)
            add(value >> shift);
    for (int y = 0; y < image.GetHeight(); ++y)
        for (int x = 0; x < image.GetWidth(); ++x) {
            const test::Rgb pixel = test::PixelAt(image, x, y);
            add(pixel.red);
            add(pixel.green);
            add(pixel.blue);
            if (image.GetBpp() <= 8)
                add(test::IndexAt(image, x, y));
        }
    std::ostringstream text;
    text << std::hex << hash;
    return text.str();
}

/// A line: the values of a run, and the hashes of what it makes of the page in each depth.
struct Row {
    std::string values;
    std::vector<std::string> hashes;
};

struct Reference {
    std::vector<std::string> comments;
    std::vector<Row> rows;
};

Reference ReadReference() {
    Reference reference;
    std::ifstream file(kReference);
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("#")) {
            reference.comments.push_back(line);
            continue;
        }
        const std::size_t end = line.find(':');
        Row row{line.substr(0, end), {}};
        std::istringstream words(end == std::string::npos ? "" : line.substr(end + 1));
        for (std::string hash; words >> hash;)
            row.hashes.push_back(hash);
        reference.rows.push_back(row);
    }
    return reference;
}

CDibImage After(const std::string& values, CDibImage page) {
    CParaBlock block;
    std::istringstream words(values);
    for (std::string word; words >> word;) {
        const std::size_t equals = word.find('=');
        const auto index = FindPara(word.substr(0, equals));
        int value = 0;
        const char* digits = word.c_str() + std::min(equals + 1, word.size());
        const auto told = std::from_chars(digits, word.c_str() + word.size(), value);
        EXPECT_TRUE(index && told.ec == std::errc() && *told.ptr == '\0') << word;
        if (index)
            block.SetPara(static_cast<ParaIndex>(*index), value);
    }
    test::RunRecord record;
    test::Run(block, &page, kStopWhole, record);
    return page;
}

/// The page where no value is set.
std::string HashOfUntouched(int bpp) {
    return HashOf(After("", Page(bpp)));
}

void Remake(Reference reference) {
    ASSERT_NE(UseProcessorForm("SCALAR"), 0);
    std::ofstream file(kReference);
    for (const std::string& comment : reference.comments)
        file << comment << "\n";
    for (const Row& row : reference.rows) {
        file << row.values << ":";
        for (const int bpp : kDepths)
            file << " " << HashOf(After(row.values, Page(bpp)));
        file << "\n";
    }
    ASSERT_TRUE(file.flush());
}

TEST(EachForm, GivesTheSameBytes) {
    const Reference reference = ReadReference();
    ASSERT_GT(reference.rows.size(), 30U);
    if (std::getenv("VELLORAN_REMAKE") != nullptr)
        return Remake(reference);
    test::InEachForm([&](const std::string&) {
        for (const Row& row : reference.rows) {
            ASSERT_EQ(row.hashes.size(), std::size(kDepths)) << row.values;
            for (std::size_t i = 0; i < std::size(kDepths); ++i)
                EXPECT_EQ(HashOf(After(row.values, Page(kDepths[i]))), row.hashes[i])
                    << row.values << " on " << kDepths[i] << " bits";
        }
    });
}

/// A row whose values change nothing would guard nothing.
TEST(EachForm, EveryRowChangesThePageInSomeDepth) {
    for (const Row& row : ReadReference().rows) {
        bool changes = false;
        for (std::size_t i = 0; i < row.hashes.size() && i < std::size(kDepths); ++i)
            changes = changes || row.hashes[i] != HashOfUntouched(kDepths[i]);
        EXPECT_TRUE(changes) << row.values;
    }
}

}  // namespace
}  // namespace velloran
