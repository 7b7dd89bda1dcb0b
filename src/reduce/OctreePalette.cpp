#include "reduce/OctreePalette.h"

#include <algorithm>
#include <new>

#include "core/IndexRows.h"
#include "core/StepContext.h"
#include "reduce/PaletteMakers.h"

namespace velloran {
namespace {

/// sum / count + 0.5, truncated, in integers.
std::uint8_t Mean(std::uint64_t sum, std::uint64_t count) {
    return static_cast<std::uint8_t>(std::min<std::uint64_t>(255, (2 * sum + count) / (2 * count)));
}

/// Merges entries j * n / colors up to (j + 1) * n / colors, weighted by their pixels.
template <typename Leaves>
Palette GroupNeighbors(const Leaves& leaves, std::size_t colors) {
    Palette palette;
    palette.reserve(colors);
    for (std::size_t j = 0; j < colors; ++j) {
        std::uint64_t blue = 0, green = 0, red = 0, reserved = 0, pixels = 0;
        for (std::size_t i = leaves.size() * j / colors; i < leaves.size() * (j + 1) / colors;
             ++i) {
            const std::uint64_t weight = leaves[i].pixels;
            blue += leaves[i].color.blue * weight;
            green += leaves[i].color.green * weight;
            red += leaves[i].color.red * weight;
            reserved += leaves[i].color.reserved * weight;
            pixels += weight;
        }
        palette.push_back(
            {Mean(blue, pixels), Mean(green, pixels), Mean(red, pixels), Mean(reserved, pixels)});
    }
    return palette;
}

}  // namespace

CQuantizer::CQuantizer(int maxColors, int colorBits)
    : outputColors_(std::clamp(maxColors, 1, 256)),
      internalLimit_(std::max(outputColors_, 16)),
      colorBits_(std::clamp(colorBits, 1, 8)) {
    reducible_.fill(kNone);
}

CQuantizer::NodeIndex CQuantizer::MakeNode(int level) {
    NodeIndex index;
    if (free_.empty()) {
        index = static_cast<NodeIndex>(nodes_.size());
        nodes_.emplace_back();
    } else {
        index = free_.back();
        free_.pop_back();
        nodes_[static_cast<std::size_t>(index)] = {};
    }
    Node& node = nodes_[static_cast<std::size_t>(index)];
    if (level == colorBits_) {
        node.leaf = true;
        ++leafCount_;
    } else {
        const auto list = static_cast<std::size_t>(level);
        node.nextReducible = reducible_[list];
        reducible_[list] = index;
    }
    return index;
}

void CQuantizer::AddColor(std::uint8_t red, std::uint8_t green, std::uint8_t blue,
                          std::uint8_t alpha) {
    const std::uint32_t color = std::uint32_t{red} << 16 | std::uint32_t{green} << 8 | blue;
    NodeIndex at = lastLeaf_;
    if (at == kNone || color != lastColor_) {
        if (root_ == kNone)
            root_ = MakeNode(0);
        at = root_;
        for (int level = 0; !nodes_[static_cast<std::size_t>(at)].leaf; ++level) {
            const int shift = 7 - level;
            const auto which = static_cast<std::size_t>(
                (red >> shift & 1) * 4 + (green >> shift & 1) * 2 + (blue >> shift & 1));
            NodeIndex next = nodes_[static_cast<std::size_t>(at)].child[which];
            if (next == kNone) {
                next = MakeNode(level + 1);  // may move the nodes
                nodes_[static_cast<std::size_t>(at)].child[which] = next;
            }
            at = next;
        }
        lastColor_ = color;
        lastLeaf_ = at;
    }
    Node& leaf = nodes_[static_cast<std::size_t>(at)];
    ++leaf.pixels;
    leaf.red += red;
    leaf.green += green;
    leaf.blue += blue;
    leaf.alpha += alpha;
    while (leafCount_ > internalLimit_)
        Reduce();
}

void CQuantizer::Reduce() {
    std::size_t level = static_cast<std::size_t>(colorBits_) - 1;
    while (level > 0 && reducible_[level] == kNone)
        --level;
    const NodeIndex index = reducible_[level];
    Node& node = nodes_[static_cast<std::size_t>(index)];
    reducible_[level] = node.nextReducible;
    int children = 0;
    for (NodeIndex& child : node.child) {
        if (child == kNone)
            continue;
        const Node& from = nodes_[static_cast<std::size_t>(child)];
        node.pixels += from.pixels;
        node.red += from.red;
        node.green += from.green;
        node.blue += from.blue;
        node.alpha += from.alpha;
        free_.push_back(child);
        child = kNone;
        ++children;
    }
    node.leaf = true;
    leafCount_ += 1 - children;
    lastLeaf_ = kNone;
}

std::vector<CQuantizer::LeafColor> CQuantizer::ReadLeaves() const {
    std::vector<LeafColor> leaves;
    std::vector<NodeIndex> open;
    if (root_ != kNone)
        open.push_back(root_);
    while (!open.empty()) {
        const Node& node = nodes_[static_cast<std::size_t>(open.back())];
        open.pop_back();
        if (node.leaf) {
            leaves.push_back({{Mean(node.blue, node.pixels), Mean(node.green, node.pixels),
                               Mean(node.red, node.pixels), Mean(node.alpha, node.pixels)},
                              node.pixels});
            continue;
        }
        for (auto child = node.child.rbegin(); child != node.child.rend(); ++child)
            if (*child != kNone)
                open.push_back(*child);
    }
    return leaves;
}

Palette CQuantizer::ReadPalette() const {
    const std::vector<LeafColor> leaves = ReadLeaves();
    const auto wanted = static_cast<std::size_t>(outputColors_);
    if (leaves.size() > wanted)
        return GroupNeighbors(leaves, wanted);
    Palette palette;
    palette.reserve(wanted);
    for (const LeafColor& leaf : leaves)
        palette.push_back(leaf.color);
    return palette;
}

Palette OctreePalette(const CDibImage& image, int colors) {
    try {
        CQuantizer quantizer(colors, 8);
        const PaletteEntry* palette = image.GetPalette();
        const CancelToken cancel = CurrentCancel();
        for (int y = 0; y < image.GetHeight() && !cancel.IsCancelled(); ++y) {
            const std::uint8_t* row = image.GetBits(y);
            const auto addIndex = [&](int index) {
                const PaletteEntry& entry = palette[index];
                quantizer.AddColor(entry.red, entry.green, entry.blue, entry.reserved);
            };
            if (image.GetBpp() == 24)
                for (int x = 0; x < image.GetWidth(); ++x, row += 3)
                    quantizer.AddColor(row[2], row[1], row[0], 0);
            else
                ForEachIndex(row, image.GetWidth(), image.GetBpp(),
                             [&](int, int index) { addIndex(index); });
        }
        return quantizer.ReadPalette();
    } catch (const std::bad_alloc&) {
        NoteOutOfMemory();
        return {};
    }
}

}  // namespace velloran
