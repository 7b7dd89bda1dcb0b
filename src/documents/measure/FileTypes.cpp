#include "documents/measure/FileTypes.h"

#include <algorithm>

#include "text/DocumentLabels.h"
#include "text/Text.h"

namespace velloran {

namespace {

constexpr ToolFileType kStatsTypes[] = {
    {"bmp", u"BMP", u"*.bmp;*.dib"},
    {"jpg", u"JPG", u"*.jpg;*.jpeg;*.jpe;"},
    {"png", u"PNG", u"*.png;"},
    {"tif", labels::kSinglePageTiff, u"*.tif;*.tiff;"},
    {"jp2", u"JPEG 2000", u"*.jpf;*.jpx;*.jp2;*.j2k;*.jpc;*.j2c;"},
    {"gif", u"GIF", u"*.gif;"},
    {"pdg", u"PDG", u"*.pdg;"},
    {"webp", u"webp", u"*.webp;"},
};
constexpr ToolFileType kDpiTypes[] = {
    {"bmp", u"BMP", u"*.bmp;"},
    {"jpg", u"JPEG(JFIF)", u"*.jpg;*.jpeg;*.jpe;"},
    {"png", u"PNG", u"*.png;"},
    {"tif", labels::kSinglePageTiff, u"*.tif;*.tiff;"},
};

}  // namespace

std::span<const ToolFileType> StatsFileTypes() {
    return kStatsTypes;
}

std::span<const ToolFileType> DpiFileTypes() {
    return kDpiTypes;
}

std::optional<std::u16string> FilterOfWords(std::span<const ToolFileType> types,
                                            std::string_view list, std::string& wrong) {
    std::u16string filter;
    while (!list.empty()) {
        const std::size_t comma = list.find(',');
        const std::string_view word = list.substr(0, comma);
        list.remove_prefix(comma == std::string_view::npos ? list.size() : comma + 1);
        const auto found = std::ranges::find_if(
            types, [word](const ToolFileType& type) { return EqualIgnoringCase(type.word, word); });
        if (found == types.end()) {
            wrong = word;
            return std::nullopt;
        }
        filter += found->filter;
    }
    return filter;
}

std::u16string FilterOfAll(std::span<const ToolFileType> types) {
    std::u16string filter;
    for (const ToolFileType& type : types)
        filter += type.filter;
    return filter;
}

}  // namespace velloran
