#include "core/GrayDepth.h"

#include <algorithm>
#include <array>
#include <cstdlib>

#include "core/DibImage.h"
#include "core/GrayRows.h"
#include "core/IndexRows.h"
#include "core/Rounding.h"
#include "core/Threads.h"

namespace velloran {
namespace {

constexpr int kGrayTolerance = 5;
using EntryFlags = std::array<bool, 256>;
using GrayTable = std::array<std::uint8_t, 256>;

bool IsLarge(const CBaseImage& image) {
    return IsWorthThreads(std::int64_t{image.GetWidth()} * image.GetHeight());
}

bool IsGrayEntry(const PaletteEntry& entry, int tolerance) {
    return std::abs(entry.green - entry.red) < tolerance &&
           std::abs(entry.red - entry.blue) < tolerance &&
           std::abs(entry.green - entry.blue) < tolerance;
}

/// Whether a pixel uses an entry that is flagged.
bool UsesEntry(const CBaseImage& image, const EntryFlags& flagged) {
    for (int y = 0; y < image.GetHeight(); ++y) {
        bool found = false;
        ForEachIndex(image.GetBits(y), image.GetWidth(), image.GetBpp(),
                     [&](int, int index) { found |= flagged[index]; });
        if (found)
            return true;
    }
    return false;
}

GrayTable GraysOfPalette(const CBaseImage& image) {
    GrayTable grays{};
    for (int i = 0; i < image.GetPaletteCount(); ++i) {
        const PaletteEntry& entry = image.GetPalette()[i];
        grays[i] = LumaOf(entry.blue, entry.green, entry.red);
    }
    return grays;
}

/// The transparent index after a change to grey levels: the grey of its entry, or none where
/// another colour in use has the same grey and would turn transparent with it.
int TransparentGray(const CBaseImage& image, const GrayTable& grays) {
    const int index = image.Fields().backgroundIndex;
    if (index < 0 || index >= image.GetPaletteCount())
        return -1;
    EntryFlags sameGray{};
    for (int i = 0; i < image.GetPaletteCount(); ++i)
        sameGray[i] = i != index && grays[i] == grays[index];
    return UsesEntry(image, sameGray) ? -1 : grays[index];
}

void MapToGray(const CBaseImage& source, const GrayTable& grays, CBaseImage& target) {
#pragma omp parallel for schedule(static) if (IsLarge(source))
    for (int y = 0; y < source.GetHeight(); ++y) {
        std::uint8_t* to = target.GetBits(y);
        ForEachIndex(source.GetBits(y), source.GetWidth(), source.GetBpp(),
                     [&](int x, int index) { to[x] = grays[index]; });
    }
}

void ColorRowsToGray(const CBaseImage& source, CBaseImage& target) {
#pragma omp parallel for schedule(static) if (IsLarge(source))
    for (int y = 0; y < source.GetHeight(); ++y)
        GrayOfColors(source.GetBits(y), source.GetWidth(), target.GetBits(y));
}

void NoteTransparency(CBaseImage& image, int index, const PaletteEntry& color) {
    ImageFields& fields = image.Fields();
    if (fields.backgroundIndex >= 0)
        fields.backgroundColor = color;
    fields.backgroundIndex = index;
    fields.alphaPaletteEnabled = 0;
}

int PaletteToGray(CBaseImage& image) {
    const GrayTable grays = GraysOfPalette(image);
    const int transparent = TransparentGray(image, grays);
    const int index = std::clamp(image.Fields().backgroundIndex, 0, image.GetPaletteCount() - 1);
    const PaletteEntry color{grays[index], grays[index], grays[index], 0};
    if (image.GetBpp() == 8) {
        MapToGray(image, grays, image);
    } else {
        CBaseImage gray;
        if (gray.Create(image.GetWidth(), image.GetHeight(), 8) == nullptr)
            return 0;
        MapToGray(image, grays, gray);
        image.TakePixels(gray);
    }
    image.SetGrayPalette();
    NoteTransparency(image, transparent, color);
    return 1;
}

int ColorToGray(CBaseImage& image) {
    CBaseImage gray;
    if (gray.Create(image.GetWidth(), image.GetHeight(), 8) == nullptr)
        return 0;
    ColorRowsToGray(image, gray);
    gray.SetGrayPalette();
    image.TakePixels(gray);
    NoteTransparency(image, -1, image.Fields().backgroundColor);
    return 1;
}

}  // namespace

int EnsureGrayOrRgb(CDibImage& image) {
    if (!image.IsValid())
        return 0;
    if (image.GetBpp() == 24 || image.IsGrayScale())
        return 1;
    const PaletteEntry* palette = image.GetPalette();
    // The two entries of a 1-bit picture count even where no pixel uses one of them.
    const bool gray = image.GetBpp() == 1 ? IsGrayEntry(palette[0], kGrayTolerance) &&
                                                IsGrayEntry(palette[1], kGrayTolerance)
                                          : UsesOnlyGrayEntries(image, kGrayTolerance);
    return gray ? ConvertToGray(image) : ConvertToRgb(image);
}

int ConvertToGray(CDibImage& image) {
    if (!image.IsValid())
        return 0;
    if (image.IsGrayScale())
        return 1;
    if (image.IsGhost())
        return 0;
    return image.GetBpp() == 24 ? ColorToGray(image) : PaletteToGray(image);
}

int ConvertToRgb(CDibImage& image) {
    return image.IncreaseBpp24() ? 1 : 0;
}

bool UsesOnlyGrayEntries(const CBaseImage& image, int tolerance) {
    const PaletteEntry* palette = image.GetPalette();
    if (palette == nullptr)
        return false;
    EntryFlags colored{};
    for (int i = 0; i < image.GetPaletteCount(); ++i)
        colored[i] = !IsGrayEntry(palette[i], tolerance);
    if (std::find(colored.begin(), colored.end(), true) == colored.end())
        return true;
    return !UsesEntry(image, colored);
}

bool CBaseImage::IncreaseBpp24() {
    const PaletteEntry* palette = GetPalette();
    if (palette == nullptr || IsGhost())
        return GetBpp() == 24 && IsValid();
    CBaseImage color;
    if (color.Create(GetWidth(), GetHeight(), 24) == nullptr)
        return false;
#pragma omp parallel for schedule(static) if (IsLarge(*this))
    for (int y = 0; y < GetHeight(); ++y) {
        std::uint8_t* to = color.GetBits(y);
        ForEachIndex(GetBits(y), GetWidth(), GetBpp(), [&](int x, int index) {
            to[3 * x] = palette[index].blue;
            to[3 * x + 1] = palette[index].green;
            to[3 * x + 2] = palette[index].red;
        });
    }
    const int index = std::clamp(fields_.backgroundIndex, 0, GetPaletteCount() - 1);
    const PaletteEntry transparent = palette[index];
    TakePixels(color);
    NoteTransparency(*this, -1, transparent);
    return true;
}

}  // namespace velloran
