#include "core/IndexRows.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

namespace velloran {
namespace {

/// Index of pixel x by the layout of the rows: the leftmost pixel in the highest bits.
int PlainIndex(const std::uint8_t* row, int x, int bpp) {
    int index = 0;
    for (int bit = x * bpp; bit < (x + 1) * bpp; ++bit)
        index = index * 2 + (row[bit / 8] >> (7 - bit % 8)) % 2;
    return index;
}

std::vector<std::uint8_t> SomeIndices(int width, int bpp) {
    std::vector<std::uint8_t> indices(static_cast<std::size_t>(width));
    for (int x = 0; x < width; ++x)
        indices[static_cast<std::size_t>(x)] =
            static_cast<std::uint8_t>((x * 37 + 11) % (1 << bpp));
    return indices;
}

TEST(IndexRows, PackedRowsHoldTheIndicesAtEveryWidthAndNoStrayBits) {
    for (const int bpp : {1, 4, 8})
        for (int width = 1; width <= 33; ++width) {
            const std::vector<std::uint8_t> indices = SomeIndices(width, bpp);
            const int bytes = (width * bpp + 7) / 8;
            std::array<std::uint8_t, 40> row, each;
            row.fill(0xFF);
            each.fill(0xFF);
            PackIndexRow(indices.data(), width, bpp, row.data());
            PackEachIndex(width, bpp, each.data(),
                          [&](int x) { return indices[static_cast<std::size_t>(x)] + 256; });
            EXPECT_EQ(row, each) << bpp << " bits, width " << width;
            for (int x = 0; x < width; ++x)
                ASSERT_EQ(PlainIndex(row.data(), x, bpp), indices[static_cast<std::size_t>(x)]);
            for (int bit = width * bpp; bit < bytes * 8; ++bit)
                EXPECT_EQ(PlainIndex(row.data(), bit, 1), 0);
            EXPECT_EQ(row[static_cast<std::size_t>(bytes)], 0xFF);  // and nothing behind it
        }
}

TEST(IndexRows, AreReadBackAtEveryWidth) {
    for (const int bpp : {1, 4, 8})
        for (int width = 1; width <= 33; ++width) {
            const std::vector<std::uint8_t> indices = SomeIndices(width, bpp);
            std::array<std::uint8_t, 40> row{};
            PackIndexRow(indices.data(), width, bpp, row.data());
            std::vector<std::uint8_t> unpacked(indices.size()), visited;
            UnpackIndexRow(row.data(), width, bpp, unpacked.data());
            EXPECT_EQ(unpacked, indices);
            ForEachIndex(row.data(), width, bpp, [&](int x, int index) {
                EXPECT_EQ(x, static_cast<int>(visited.size()));
                visited.push_back(static_cast<std::uint8_t>(index));
            });
            EXPECT_EQ(visited, indices);
        }
}

TEST(IndexRows, AnIndexThatTheDepthCannotHoldIsPackedAs0) {
    const std::uint8_t indices[] = {16, 15, 255};
    std::uint8_t row[2] = {};
    PackIndexRow(indices, 3, 4, row);
    EXPECT_EQ(row[0], 0x0F);
    EXPECT_EQ(row[1], 0);
}

TEST(IndexRows, PuttingAnIndexLeavesItsNeighbors) {
    for (const int bpp : {1, 4, 8})
        for (int x = 0; x < 8; ++x) {
            std::array<std::uint8_t, 8> row;
            row.fill(0xA5);
            const std::array<std::uint8_t, 8> before = row;
            PutIndex(row.data(), x, bpp, 6);
            for (int at = 0; at < 8; ++at)
                EXPECT_EQ(PlainIndex(row.data(), at, bpp),
                          at == x ? 6 % (1 << bpp) : PlainIndex(before.data(), at, bpp));
        }
}

TEST(IndexRows, TheMaskOfTheLastByteCoversItsPixels) {
    EXPECT_EQ(LastByteMask(8, 1), 0xFF);
    EXPECT_EQ(LastByteMask(9, 1), 0x80);
    EXPECT_EQ(LastByteMask(3, 4), 0xF0);
    EXPECT_EQ(LastByteMask(5, 24), 0xFF);
}

}  // namespace
}  // namespace velloran
