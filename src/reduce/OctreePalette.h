#pragma once

// The octree behind OctreePalette: colours are taken in one by one and the tree is reduced as it
// grows, so that its memory stays bounded by the leaves that it may hold.

#include <array>
#include <cstdint>
#include <vector>

#include "reduce/Palette.h"

namespace velloran {

class CQuantizer {
 public:
    /// At most `maxColors` entries are read out; the tree holds max(maxColors, 16) leaves.
    CQuantizer(int maxColors, int colorBits);
    virtual ~CQuantizer() = default;

    void AddColor(std::uint8_t red, std::uint8_t green, std::uint8_t blue, std::uint8_t alpha);

    int GetLeafCount() const { return leafCount_; }

    /// Leaves depth first; where there are more than wanted, neighbours are grouped.
    Palette ReadPalette() const;

 private:
    using NodeIndex = std::int32_t;
    static constexpr NodeIndex kNone = -1;

    struct Node {
        bool leaf = false;
        std::uint32_t pixels = 0;
        std::uint64_t red = 0, green = 0, blue = 0, alpha = 0;
        std::array<NodeIndex, 8> child{kNone, kNone, kNone, kNone, kNone, kNone, kNone, kNone};
        NodeIndex nextReducible = kNone;
    };
    struct LeafColor {
        PaletteEntry color;
        std::uint32_t pixels;
    };

    NodeIndex MakeNode(int level);
    void Reduce();
    std::vector<LeafColor> ReadLeaves() const;

    std::vector<Node> nodes_;
    std::vector<NodeIndex> free_;
    NodeIndex root_ = kNone;
    int leafCount_ = 0;
    std::array<NodeIndex, 9> reducible_;
    int outputColors_, internalLimit_, colorBits_;
    // The leaf of the last colour, while the tree is as it was.
    std::uint32_t lastColor_ = 0;
    NodeIndex lastLeaf_ = kNone;
};

}  // namespace velloran
