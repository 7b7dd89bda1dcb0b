#include "codecs/JpegExif.h"

#include <libexif/exif-data.h>

#include <memory>

#include "core/Rounding.h"

namespace velloran {
namespace {

struct ExifDeleter {
    void operator()(ExifData* data) const { exif_data_unref(data); }
};
using ExifHandle = std::unique_ptr<ExifData, ExifDeleter>;

ExifHandle Parse(std::span<const std::uint8_t> exif) {
    ExifHandle data(exif_data_new());
    if (data == nullptr)
        return nullptr;
    // Following the standard would add the tags that it asks for, among them a resolution of 72.
    exif_data_unset_option(data.get(), EXIF_DATA_OPTION_FOLLOW_SPECIFICATION);
    exif_data_load_data(data.get(), exif.data(), static_cast<unsigned int>(exif.size()));
    return data;
}

const ExifEntry* Find(const ExifData& data, ExifTag tag) {
    const ExifEntry* entry = exif_content_get_entry(data.ifd[EXIF_IFD_0], tag);
    return entry != nullptr && entry->data != nullptr && entry->components > 0 ? entry : nullptr;
}

int IntegerOf(ExifData& data, ExifTag tag, int missing) {
    const ExifEntry* entry = Find(data, tag);
    if (entry == nullptr || entry->format != EXIF_FORMAT_SHORT || entry->size < 2)
        return missing;
    return exif_get_short(entry->data, exif_data_get_byte_order(&data));
}

std::optional<double> RationalOf(ExifData& data, ExifTag tag) {
    const ExifEntry* entry = Find(data, tag);
    if (entry == nullptr || entry->format != EXIF_FORMAT_RATIONAL || entry->size < 8)
        return std::nullopt;
    const ExifRational value = exif_get_rational(entry->data, exif_data_get_byte_order(&data));
    if (value.denominator == 0)
        return std::nullopt;
    return static_cast<double>(value.numerator) / value.denominator;
}

int LimitedDpi(double value) {
    constexpr double kMost = 1'000'000;  // far above any scanner
    return TruncToInt(value < kMost ? value : kMost);
}

}  // namespace

ExifFacts ReadExifFacts(std::span<const std::uint8_t> exif) {
    ExifFacts facts;
    if (exif.empty())
        return facts;
    const ExifHandle data = Parse(exif);
    if (data == nullptr)
        return facts;
    facts.resolutionUnit = IntegerOf(*data, EXIF_TAG_RESOLUTION_UNIT, 0);
    facts.xResolution = RationalOf(*data, EXIF_TAG_X_RESOLUTION);
    facts.yResolution = RationalOf(*data, EXIF_TAG_Y_RESOLUTION);
    const int orientation = IntegerOf(*data, EXIF_TAG_ORIENTATION, 1);
    if (orientation >= 1 && orientation <= 8)
        facts.orientation = orientation;
    return facts;
}

PageDpi ApplyExifResolution(const ExifFacts& exif, PageDpi head) {
    PageDpi dpi = head;
    if (exif.resolutionUnit == 2) {
        if (exif.xResolution)
            dpi.x = LimitedDpi(*exif.xResolution);
        if (exif.yResolution)
            dpi.y = LimitedDpi(*exif.yResolution);
    } else if (exif.resolutionUnit == 3) {
        for (const std::optional<double>& value : {exif.xResolution, exif.yResolution})
            if (value)  // both go to x: pages made so far rely on it
                dpi.x = LimitedDpi(*value * 254 / 10000 + 0.5);
    }
    return dpi;
}

}  // namespace velloran
