#include "reduce/OctreePalette.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <vector>

#include "reduce/PaletteMakers.h"
#include "support/Images.h"

namespace velloran {
namespace {

/// The tree with nodes on the heap and lists as lists, nothing remembered between colours.
struct PlainNode {
    bool leaf = false;
    std::uint64_t pixels = 0, red = 0, green = 0, blue = 0;
    std::array<std::unique_ptr<PlainNode>, 8> child;
};

class PlainOctree {
 public:
    explicit PlainOctree(int colors) : colors_(colors), limit_(std::max(colors, 16)) {}

    void Add(int red, int green, int blue) {
        std::unique_ptr<PlainNode>* at = &root_;
        for (int level = 0;; ++level) {
            if (*at == nullptr) {
                *at = std::make_unique<PlainNode>();
                (*at)->leaf = level == 8;
                if (level == 8)
                    ++leaves_;
                else
                    reducible_[static_cast<std::size_t>(level)].push_back(at->get());
            }
            if ((*at)->leaf)
                break;
            const int mask = 0x80 >> level;
            const int which = (red & mask ? 4 : 0) + (green & mask ? 2 : 0) + (blue & mask ? 1 : 0);
            at = &(*at)->child[static_cast<std::size_t>(which)];
        }
        PlainNode& leaf = **at;
        ++leaf.pixels;
        leaf.red += static_cast<std::uint64_t>(red);
        leaf.green += static_cast<std::uint64_t>(green);
        leaf.blue += static_cast<std::uint64_t>(blue);
        while (leaves_ > limit_)
            Reduce();
    }

    Palette Read() const {
        std::vector<const PlainNode*> leaves;
        Collect(root_.get(), leaves);
        const std::size_t n = leaves.size(), wanted = static_cast<std::size_t>(colors_);
        Palette table;
        for (const PlainNode* leaf : leaves)
            table.push_back(EntryFrom(leaf->red, leaf->green, leaf->blue, leaf->pixels));
        if (n <= wanted)
            return table;
        Palette grouped;
        for (std::size_t j = 0; j < wanted; ++j) {
            std::uint64_t red = 0, green = 0, blue = 0, pixels = 0;
            for (std::size_t i = n * j / wanted; i < n * (j + 1) / wanted; ++i) {
                red += table[i].red * leaves[i]->pixels;
                green += table[i].green * leaves[i]->pixels;
                blue += table[i].blue * leaves[i]->pixels;
                pixels += leaves[i]->pixels;
            }
            grouped.push_back(EntryFrom(red, green, blue, pixels));
        }
        return grouped;
    }

 private:
    static PaletteEntry EntryFrom(std::uint64_t red, std::uint64_t green, std::uint64_t blue,
                                  std::uint64_t pixels) {
        const auto mean = [&](std::uint64_t sum) {
            const double value = static_cast<double>(sum) / static_cast<double>(pixels) + 0.5;
            return static_cast<std::uint8_t>(std::min(value, 255.0));
        };
        return {mean(blue), mean(green), mean(red), 0};
    }

    void Reduce() {
        std::size_t level = 7;
        while (level > 0 && reducible_[level].empty())
            --level;
        PlainNode& node = *reducible_[level].back();
        reducible_[level].pop_back();
        for (auto& child : node.child)
            if (child != nullptr) {
                node.red += child->red;
                node.green += child->green;
                node.blue += child->blue;
                node.pixels += child->pixels;
                child.reset();
                --leaves_;
            }
        node.leaf = true;
        ++leaves_;
    }

    static void Collect(const PlainNode* node, std::vector<const PlainNode*>& leaves) {
        if (node->leaf) {
            leaves.push_back(node);
            return;
        }
        for (const auto& child : node->child)
            if (child != nullptr)
                Collect(child.get(), leaves);
    }

    int colors_, limit_, leaves_ = 0;
    std::unique_ptr<PlainNode> root_;
    std::array<std::vector<PlainNode*>, 8> reducible_;
};

Palette PlainPalette(const CDibImage& image, int colors) {
    PlainOctree tree(colors);
    for (int y = image.GetHeight() - 1; y >= 0; --y)  // rows as they are stored
        for (int x = 0; x < image.GetWidth(); ++x) {
            const test::Rgb c = test::PixelAt(image, x, y);
            tree.Add(c.red, c.green, c.blue);
        }
    return tree.Read();
}

TEST(Octree, FewColorsComeOutInTreeOrder) {
    const CDibImage image =
        test::FromRows({{255, 255, 255, 0, 0, 0, 255, 0, 0, 0, 255, 0, 0, 0, 255}}, 3);
    EXPECT_EQ(
        OctreePalette(image, 16),
        (Palette{
            {0, 0, 0, 0}, {255, 0, 0, 0}, {0, 255, 0, 0}, {0, 0, 255, 0}, {255, 255, 255, 0}}));
}

TEST(Octree, BelowSixteenNeighborsAreGroupedByTheirPixels) {
    // Five leaves into two entries: the first two, then three.
    const CDibImage image = test::FromRows({{0, 0,   0, 0,   0, 0, 0,   0,   0,  0, 0, 255,  //
                                             0, 255, 0, 255, 0, 0, 255, 255, 255}},
                                           3);
    // Black three times and blue once: 255 / 4 = 63.75. Green, red, white: 170 each.
    EXPECT_EQ(OctreePalette(image, 2), (Palette{{64, 0, 0, 0}, {85, 170, 170, 0}}));
}

TEST(Octree, SeventeenCloseColorsMergeInTheDeepestNodeThatCameLast) {
    // Greys 0, 8, ... 120 and 121: the last two part at the lowest level alone.
    CDibImage image = test::Filled(17, 1, 24, 0);
    for (int x = 0; x < 16; ++x)
        test::SetPixel(image, x, 0, {8 * x, 8 * x, 8 * x});
    test::SetPixel(image, 16, 0, {121, 121, 121});
    const Palette palette = OctreePalette(image, 16);
    ASSERT_EQ(palette.size(), 16u);
    for (std::size_t i = 0; i < 15; ++i)
        EXPECT_EQ(palette[i].red, 8 * i);
    EXPECT_EQ(palette[15].red, 121);  // 120.5 rounds up
}

TEST(Octree, EqualsAPlainTreeOnNoiseAndSmoothPages) {
    for (const int colors : {1, 2, 3, 4, 8, 15, 16, 31, 32, 64, 128, 255, 256})
        for (const int kind : {0, 1}) {
            CDibImage image = test::Noise(37, 29, 24, static_cast<std::uint32_t>(colors));
            if (kind == 1)
                for (int y = 0; y < 29; ++y)
                    for (int x = 0; x < 37; ++x)
                        test::SetPixel(image, x, y, {x / 3 * 20, y * 8, (x + y) / 2 * 7});
            EXPECT_EQ(OctreePalette(image, colors), PlainPalette(image, colors)) << colors;
        }
}

TEST(Octree, SmallerDepthsGiveTheColorsOfTheirPalette) {
    for (const int bpp : {1, 4, 8})
        for (int width = 1; width <= 17; ++width) {
            CDibImage image = test::Noise(width, 3, bpp, static_cast<std::uint32_t>(width));
            for (int i = 0; i < image.GetPaletteCount(); ++i)
                image.GetPalette()[i] = {static_cast<std::uint8_t>(7 * i),
                                         static_cast<std::uint8_t>(11 * i),
                                         static_cast<std::uint8_t>(255 - i), 0};
            EXPECT_EQ(OctreePalette(image, 16), PlainPalette(image, 16)) << bpp << ' ' << width;
        }
}

TEST(Octree, TheReservedByteIsTheMeanAlpha) {
    CQuantizer quantizer(16, 8);
    quantizer.AddColor(1, 2, 3, 10);
    quantizer.AddColor(1, 2, 3, 20);
    quantizer.AddColor(1, 2, 3, 21);
    EXPECT_EQ(quantizer.ReadPalette(), (Palette{{3, 2, 1, 17}}));
}

TEST(Octree, TheLeavesNeverExceedTheLimit) {
    CQuantizer few(2, 8), many(256, 8);
    for (int i = 0; i < 5000; ++i) {
        const auto byte = [&](int factor) { return static_cast<std::uint8_t>(i * factor >> 3); };
        few.AddColor(byte(37), byte(101), byte(59), 0);
        many.AddColor(byte(37), byte(101), byte(59), 0);
        ASSERT_LE(few.GetLeafCount(), 16);
        ASSERT_LE(many.GetLeafCount(), 256);
    }
    EXPECT_EQ(few.ReadPalette().size(), 2u);
}

TEST(Octree, AnEmptyImageGivesAnEmptyPalette) {
    EXPECT_TRUE(OctreePalette(CDibImage(), 16).empty());
}

}  // namespace
}  // namespace velloran
