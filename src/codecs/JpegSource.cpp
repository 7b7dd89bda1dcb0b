#include "codecs/JpegSource.h"

#include <algorithm>
#include <span>

#include "codecs/JpegErrors.h"
#include "core/DibImage.h"

namespace velloran {
namespace {

/// The tables that a compressor starts with, to compare against.
class UsualTables {
 public:
    UsualTables() {
        InstallJpegErrors(errors_);
        jpeg_.err = &errors_.manager;
        RunJpeg(errors_, [this] {
            jpeg_create_compress(&jpeg_);
            jpeg_.image_width = jpeg_.image_height = 1;
            jpeg_.input_components = 1;
            jpeg_.in_color_space = JCS_GRAYSCALE;
            jpeg_set_defaults(&jpeg_);
        });
    }
    ~UsualTables() { jpeg_destroy_compress(&jpeg_); }
    UsualTables(const UsualTables&) = delete;
    UsualTables& operator=(const UsualTables&) = delete;

    const JHUFF_TBL* Dc() const { return jpeg_.dc_huff_tbl_ptrs[0]; }
    const JHUFF_TBL* Ac() const { return jpeg_.ac_huff_tbl_ptrs[0]; }

 private:
    JpegErrors errors_;
    jpeg_compress_struct jpeg_{};
};

bool SameCodes(const JHUFF_TBL* a, const JHUFF_TBL* b) {
    if (a == nullptr || b == nullptr)  // a file without tables is coded by the usual ones
        return true;
    if (!std::equal(a->bits + 1, a->bits + 17, b->bits + 1))
        return false;
    int symbols = 0;
    for (int length = 1; length <= 16; ++length)
        symbols += a->bits[length];
    return std::equal(a->huffval, a->huffval + std::min(symbols, 256), b->huffval);
}

void CopyQuantTables(const jpeg_decompress_struct& head, JpegSourceHead& source) {
    for (std::size_t slot = 0; slot < source.quantTables.size(); ++slot) {
        const JQUANT_TBL* table = head.quant_tbl_ptrs[slot];
        if (table == nullptr)
            continue;
        const std::span<const UINT16> values(table->quantval);
        if (std::find(values.begin(), values.end(), 0) != values.end())
            continue;  // the compressor would divide by it
        std::copy(values.begin(), values.end(), source.quantTables[slot].emplace().begin());
    }
}

}  // namespace

JpegSourceHead SourceHeadOf(const jpeg_decompress_struct& head) {
    JpegSourceHead source;
    CopyQuantTables(head, source);
    source.components = head.num_components;
    for (int i = 0; i < std::min(head.num_components, 4); ++i)
        source.sampling[static_cast<std::size_t>(i)] = {head.comp_info[i].h_samp_factor,
                                                        head.comp_info[i].v_samp_factor};
    source.progressive = head.progressive_mode != 0;
    static const UsualTables usual;
    source.usualHuffmanTables = SameCodes(head.dc_huff_tbl_ptrs[0], usual.Dc()) &&
                                SameCodes(head.ac_huff_tbl_ptrs[0], usual.Ac());
    return source;
}

const JpegSourceHead* JpegHeadFor(const CDibImage& image, const CDibImage* sourceImage) {
    if (image.Source().jpegHead != nullptr || sourceImage == nullptr)
        return image.Source().jpegHead.get();
    return sourceImage->Source().jpegHead.get();
}

}  // namespace velloran
