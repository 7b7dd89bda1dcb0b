#include "samples/PageScan.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "samples/Grain.h"

namespace velloran::samples {

namespace {

struct Color {
    float red = 0, green = 0, blue = 0;
};

Color ColorOf(const Rgb& c) {
    return {static_cast<float>(c.red), static_cast<float>(c.green), static_cast<float>(c.blue)};
}
Color Mix(Color from, Color to, float share) {
    return {from.red + (to.red - from.red) * share, from.green + (to.green - from.green) * share,
            from.blue + (to.blue - from.blue) * share};
}
Color Scale(Color c, float factor) {
    return {c.red * factor, c.green * factor, c.blue * factor};
}
// What a process ink takes from each channel, at full cover.
Color Filtered(Color c, float share, Color taken) {
    return {c.red * (1 - share * taken.red), c.green * (1 - share * taken.green),
            c.blue * (1 - share * taken.blue)};
}
constexpr Color kCyanTakes{0.92F, 0.30F, 0.10F};
constexpr Color kMagentaTakes{0.10F, 0.82F, 0.42F};
constexpr Color kYellowTakes{0.01F, 0.08F, 0.86F};
const Rgb kBrownRim{176, 138, 84};

constexpr std::uint64_t kBlotchSeed = 11, kFibreSeed = 12, kWoodSeed = 13, kNoiseSeed = 14;

class RowScanner {
 public:
    RowScanner(const Scene& scene, const LightField& light)
        : scene_(scene),
          light_(light),
          factors_(scene.width),
          structure_(scene.width),
          wood_(scene.width) {}

    void Scan(int y, std::span<Color> out) {
        light_.FillRow(y, factors_);
        FillStructure(y);
        for (int x = 0; x < scene_.width; ++x)
            out[x] = Scale(Reflected(x, y), factors_[x]);
        for (const Box& edge : scene_.blackEdges)
            if (y >= edge.top && y < edge.bottom)
                std::fill(out.begin() + static_cast<int>(edge.left),
                          out.begin() + static_cast<int>(edge.right),
                          ColorOf(scene_.blackEdgeColor));
        if (!scene_.specks.IsEmpty())
            for (int x = 0; x < scene_.width; ++x)
                out[x] = Mix(out[x], ColorOf(scene_.speckColor), Share(scene_.specks, x, y));
        if (scene_.noise > 0)
            for (int x = 0; x < scene_.width; ++x) {
                const float noise = static_cast<float>(scene_.noise) *
                                    NoiseAt(MixBits(scene_.seed + kNoiseSeed), x, y);
                out[x] = {out[x].red + noise, out[x].green + noise, out[x].blue + noise};
            }
    }

 private:
    static float Share(const Plane& plane, int x, int y) {
        return plane.IsEmpty() ? 0.0F : plane.Row(y)[x] / 255.0F;
    }

    void FillStructure(int y) {
        const double inch = scene_.dpi;
        std::fill(structure_.begin(), structure_.end(), 0.0F);
        if (scene_.stock.blotch > 0) {
            const auto blotch = static_cast<float>(scene_.stock.blotch);
            const std::uint64_t seed = MixBits(scene_.seed + kBlotchSeed);
            AddCloudRow(seed, y, inch * 1.1, inch * 1.1, blotch, structure_);
            AddCloudRow(seed + 1, y, inch * 0.3, inch * 0.3, blotch * 0.5F, structure_);
        }
        if (scene_.stock.fibre > 0)
            AddCloudRow(MixBits(scene_.seed + kFibreSeed), y, inch * 0.022, inch * 0.012,
                        static_cast<float>(scene_.stock.fibre), structure_);
        std::fill(wood_.begin(), wood_.end(), 0.0F);
        if (scene_.woodenDesk) {
            const std::uint64_t seed = MixBits(scene_.seed + kWoodSeed);
            AddCloudRow(seed, y, inch * 4, inch * 0.16, 11, wood_);
            AddCloudRow(seed + 1, y, inch * 1.5, inch * 0.035, 6, wood_);
        }
    }

    Color PaperAt(int x, int y) const {
        Color paper = ColorOf(scene_.stock.color);
        if (scene_.stock.browning > 0) {
            const double rim = std::min({x, y, scene_.width - 1 - x, scene_.height - 1 - y}) +
                               structure_[x] * scene_.dpi * 0.02;
            const double share =
                scene_.stock.browning * std::exp(-std::max(rim, 0.0) / (scene_.dpi * 0.35));
            paper = Mix(paper, ColorOf(kBrownRim), static_cast<float>(share));
        }
        // Blotches are brownish: they take more from blue.
        paper.red += structure_[x];
        paper.green += structure_[x] * 1.1F;
        paper.blue += structure_[x] * 1.5F;
        return paper;
    }

    Color Reflected(int x, int y) const {
        const float paperShare = scene_.paper.IsEmpty() ? 1.0F : Share(scene_.paper, x, y);
        Color color{};
        if (paperShare < 1) {
            color = ColorOf(scene_.desk);
            color = {color.red + wood_[x], color.green + wood_[x] * 0.75F,
                     color.blue + wood_[x] * 0.55F};
            color = Scale(color, 1 - 0.6F * Share(scene_.deskShadow, x, y));
        }
        if (paperShare <= 0)
            return color;
        Color page = PaperAt(x, y);
        const Color ink = ColorOf(scene_.ink);
        page =
            Mix(page, ink, static_cast<float>(scene_.bleedThrough) * Share(scene_.reverse, x, y));
        page = Filtered(page, Share(scene_.inks.yellow, x, y), kYellowTakes);
        page = Filtered(page, Share(scene_.inks.magenta, x, y), kMagentaTakes);
        page = Filtered(page, Share(scene_.inks.cyan, x, y), kCyanTakes);
        page = Mix(page, ColorOf(scene_.sealColor), Share(scene_.inks.seal, x, y));
        page = Mix(page, ink, Share(scene_.inks.black, x, y));
        return Mix(color, page, paperShare);
    }

    const Scene& scene_;
    const LightField& light_;
    std::vector<float> factors_, structure_, wood_;
};

std::uint8_t ToByte(float value, bool inverted) {
    const auto level = static_cast<int>(std::clamp(value, 0.0F, 255.0F) + 0.5F);
    return static_cast<std::uint8_t>(inverted ? 255 - level : level);
}

float GrayOf(const Color& c) {
    return 0.299F * c.red + 0.587F * c.green + 0.114F * c.blue;
}

void StoreRow(std::span<const Color> colors, Depth depth, bool inverted, std::uint8_t* row) {
    switch (depth) {
        case Depth::kColor:
            for (const Color& c : colors) {
                *row++ = ToByte(c.blue, inverted);
                *row++ = ToByte(c.green, inverted);
                *row++ = ToByte(c.red, inverted);
            }
            return;
        case Depth::kGray:
            for (const Color& c : colors)
                *row++ = ToByte(GrayOf(c), inverted);
            return;
        case Depth::kBilevel:
            for (std::size_t x = 0; x < colors.size(); ++x)
                if ((GrayOf(colors[x]) >= 128) != inverted)
                    row[x / 8] = static_cast<std::uint8_t>(row[x / 8] | (0x80 >> (x % 8)));
            return;
    }
}

CDibImage NewImage(int width, int height, int bpp, int dpi) {
    CDibImage image;
    if (image.Create(width, height, bpp) == nullptr)
        throw std::bad_alloc();
    if (bpp <= 8)
        image.SetGrayPalette();
    image.Clear(0);
    image.SetXDpi(dpi);
    image.SetYDpi(dpi);
    return image;
}

}  // namespace

CDibImage ScanScene(const Scene& scene, Depth depth, bool inverted) {
    const int bpp = depth == Depth::kColor ? 24 : (depth == Depth::kGray ? 8 : 1);
    CDibImage image = NewImage(scene.width, scene.height, bpp, scene.dpi);
    const LightField light(scene.light, scene.width, scene.height);
    // Scratch for each of a few bands, made before the threads start.
    constexpr int kBands = 16;
    std::vector<RowScanner> scanners(kBands, RowScanner(scene, light));
    std::vector<std::vector<Color>> rows(kBands, std::vector<Color>(scene.width));
#pragma omp parallel for schedule(static)
    for (int band = 0; band < kBands; ++band)
        for (int y = band; y < scene.height; y += kBands) {
            scanners[band].Scan(y, rows[band]);
            StoreRow(rows[band], depth, inverted, image.GetBits(scene.height - 1 - y));
        }
    return image;
}

CDibImage PlaneToImage(const Plane& plane, int dpi) {
    CDibImage image = NewImage(plane.Width(), plane.Height(), 8, dpi);
    for (int y = 0; y < plane.Height(); ++y)
        std::copy_n(plane.Row(y), plane.Width(), image.GetBits(plane.Height() - 1 - y));
    return image;
}

}  // namespace velloran::samples
