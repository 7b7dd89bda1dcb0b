#include <algorithm>
#include <new>
#include <vector>

#include "codecs/EncodedPage.h"
#include "codecs/Jpeg.h"
#include "codecs/JpegErrors.h"
#include "codecs/JpegMetadata.h"
#include "codecs/JpegSource.h"
#include "core/DibImage.h"
#include "core/GrayDepth.h"
#include "io/ByteSink.h"

namespace velloran {
namespace {

struct JpegOptions : JpegRules {
    int quality = 0, dpi = 0;
};

/// libjpeg's compressor writing into a sink.
class JpegEncoder {
 public:
    explicit JpegEncoder(ByteSink& sink) : sink_(sink) {
        InstallJpegErrors(errors_);
        jpeg_.err = &errors_.manager;
    }
    ~JpegEncoder() { jpeg_destroy_compress(&jpeg_); }
    JpegEncoder(const JpegEncoder&) = delete;
    JpegEncoder& operator=(const JpegEncoder&) = delete;

    /// Throws CNewJPEGException, as Write does.
    void Prepare(const CDibImage& image, const JpegOptions& options, const JpegSourceHead* source);
    void Write(const CDibImage& image);

 private:
    static JpegEncoder& Of(j_compress_ptr jpeg) {
        return *static_cast<JpegEncoder*>(jpeg->client_data);
    }
    static void OnStart(j_compress_ptr jpeg);
    static boolean OnFull(j_compress_ptr jpeg);
    static void OnEnd(j_compress_ptr jpeg);
    void Flush(std::size_t count);

    void SetQuantTables(const JpegSourceHead& source);
    void SetCoding(const JpegOptions& options, const JpegSourceHead* source);
    void SetSampling(const JpegOptions& options, const JpegSourceHead* source);
    bool CopySampling(const JpegSourceHead& source);
    void SetManualSampling(const JpegOptions& options);

    ByteSink& sink_;
    JpegErrors errors_;
    jpeg_compress_struct jpeg_{};
    jpeg_destination_mgr destination_{};
    std::vector<JOCTET> buffer_ = std::vector<JOCTET>(1U << 18);
};

void JpegEncoder::OnStart(j_compress_ptr jpeg) {
    jpeg->dest->next_output_byte = Of(jpeg).buffer_.data();
    jpeg->dest->free_in_buffer = Of(jpeg).buffer_.size();
}

boolean JpegEncoder::OnFull(j_compress_ptr jpeg) {
    Of(jpeg).Flush(Of(jpeg).buffer_.size());  // whatever free_in_buffer says, by libjpeg's rule
    OnStart(jpeg);
    return TRUE;
}

void JpegEncoder::OnEnd(j_compress_ptr jpeg) {
    Of(jpeg).Flush(Of(jpeg).buffer_.size() - jpeg->dest->free_in_buffer);
}

void JpegEncoder::Flush(std::size_t count) {
    if (sink_.Write(buffer_.data(), count))
        return;
    FailJpeg(reinterpret_cast<j_common_ptr>(&jpeg_), "Write failed");
}

void JpegEncoder::Prepare(const CDibImage& image, const JpegOptions& options,
                          const JpegSourceHead* source) {
    RunJpeg(errors_, [this, &image, &options, source] {
        jpeg_create_compress(&jpeg_);
        jpeg_.client_data = this;
        destination_.init_destination = OnStart;
        destination_.empty_output_buffer = OnFull;
        destination_.term_destination = OnEnd;
        jpeg_.dest = &destination_;

        jpeg_.image_width = static_cast<JDIMENSION>(image.GetWidth());
        jpeg_.image_height = static_cast<JDIMENSION>(image.GetHeight());
        const bool gray = image.GetBpp() == 8;
        jpeg_.input_components = gray ? 1 : 3;
        jpeg_.in_color_space = gray ? JCS_GRAYSCALE : JCS_EXT_BGR;
        jpeg_set_defaults(&jpeg_);
        jpeg_set_quality(&jpeg_, options.quality, /*force_baseline=*/FALSE);
        jpeg_.write_JFIF_header = TRUE;
        jpeg_.density_unit = 1;
        jpeg_.X_density = jpeg_.Y_density = static_cast<UINT16>(std::clamp(options.dpi, 0, 0xFFFF));
        if (source != nullptr && options.sourceQuality != 0)
            SetQuantTables(*source);
        SetCoding(options, source);
        if (jpeg_.num_components == 3)
            SetSampling(options, source);
    });
}

void JpegEncoder::SetQuantTables(const JpegSourceHead& source) {
    for (std::size_t slot = 0; slot < source.quantTables.size(); ++slot) {
        if (!source.quantTables[slot])
            continue;
        JQUANT_TBL*& table = jpeg_.quant_tbl_ptrs[slot];
        if (table == nullptr)
            table = jpeg_alloc_quant_table(reinterpret_cast<j_common_ptr>(&jpeg_));
        std::copy(source.quantTables[slot]->begin(), source.quantTables[slot]->end(),
                  table->quantval);
        table->sent_table = FALSE;
    }
}

void JpegEncoder::SetCoding(const JpegOptions& options, const JpegSourceHead* source) {
    const bool inherit = source != nullptr && options.sourceCode != 0;
    if (inherit ? source->progressive : options.progressive != 0) {
        jpeg_.optimize_coding = TRUE;
        jpeg_simple_progression(&jpeg_);
        return;
    }
    const bool optimize = inherit ? !source->usualHuffmanTables : options.optimize != 0;
    jpeg_.optimize_coding = optimize ? TRUE : FALSE;
}

void JpegEncoder::SetSampling(const JpegOptions& options, const JpegSourceHead* source) {
    const bool inherit = source != nullptr && options.sourceSample != 0;
    if (inherit && CopySampling(*source))
        return;
    if (!inherit && options.resampleType == 1)
        return SetManualSampling(options);
    const LumaSampling luma = AutomaticLumaSampling(
        options.quality, static_cast<int>(jpeg_.image_width), static_cast<int>(jpeg_.image_height));
    for (int i = 0; i < 3; ++i) {
        jpeg_.comp_info[i].h_samp_factor = i == 0 ? luma.horizontal : 1;
        jpeg_.comp_info[i].v_samp_factor = i == 0 ? luma.vertical : 1;
    }
}

/// False where the factors are none that can be written: too few components, more than 10 blocks
/// an MCU, or a factor that does not divide the largest.
bool JpegEncoder::CopySampling(const JpegSourceHead& source) {
    if (source.components < 3)
        return false;
    int horizontal = 1, vertical = 1, blocks = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        horizontal = std::max(horizontal, source.sampling[i].horizontal);
        vertical = std::max(vertical, source.sampling[i].vertical);
        blocks += source.sampling[i].horizontal * source.sampling[i].vertical;
    }
    for (std::size_t i = 0; i < 3; ++i)
        if (horizontal % source.sampling[i].horizontal != 0 ||
            vertical % source.sampling[i].vertical != 0)
            return false;
    if (blocks > C_MAX_BLOCKS_IN_MCU)
        return false;
    for (std::size_t i = 0; i < 3; ++i) {
        jpeg_.comp_info[i].h_samp_factor = source.sampling[i].horizontal;
        jpeg_.comp_info[i].v_samp_factor = source.sampling[i].vertical;
    }
    return true;
}

void JpegEncoder::SetManualSampling(const JpegOptions& options) {
    const bool halve = options.resampleH != 0 || options.resampleV != 0;
    for (int i = 0; i < 3; ++i) {
        const bool chroma = i > 0;
        jpeg_.comp_info[i].h_samp_factor = halve && !(chroma && options.resampleH != 0) ? 2 : 1;
        jpeg_.comp_info[i].v_samp_factor = halve && !(chroma && options.resampleV != 0) ? 2 : 1;
    }
}

void JpegEncoder::Write(const CDibImage& image) {
    const int height = image.GetHeight();
    std::vector<JSAMPROW> rows;
    for (int y = height - 1; y >= 0; --y)  // the library only reads them
        rows.push_back(const_cast<JSAMPROW>(image.GetBits(y)));
    const JSAMPARRAY allRows = rows.data();
    const std::vector<JpegSegment> segments =
        JpegSegmentsOf(MetadataToWrite(image, image.GetBpp() == 24));
    const JpegSegment* segment = segments.data();
    const std::size_t segmentCount = segments.size();
    RunJpeg(errors_, [this, allRows, segment, segmentCount] {
        jpeg_start_compress(&jpeg_, /*write_all_tables=*/TRUE);
        for (std::size_t i = 0; i < segmentCount; ++i)
            jpeg_write_marker(&jpeg_, segment[i].marker, segment[i].bytes.data(),
                              static_cast<unsigned int>(segment[i].bytes.size()));
        while (jpeg_.next_scanline < jpeg_.image_height)
            jpeg_write_scanlines(&jpeg_, allRows + jpeg_.next_scanline,
                                 jpeg_.image_height - jpeg_.next_scanline);
        jpeg_finish_compress(&jpeg_);
    });
}

bool Code(ByteSink& sink, const CDibImage& image, const JpegOptions& options,
          const JpegSourceHead* source, FileError* error) {
    JpegEncoder encoder(sink);
    try {
        encoder.Prepare(image, options, source);
        encoder.Write(image);
    } catch (const CNewJPEGException& reason) {
        return FailCoding(sink, error, reason.what());
    }
    return true;
}

}  // namespace

LumaSampling AutomaticLumaSampling(int quality, int width, int height) {
    if (quality >= 90)
        return {1, 1};
    if (quality < 70)
        return {2, 2};
    // The direction of the lines of most pages keeps its colour detail.
    return width <= height ? LumaSampling{1, 2} : LumaSampling{2, 1};
}

bool SaveJpeg(ByteSink& sink, CDibImage& image, const CDibImage* sourceImage, int quality, int dpi,
              const JpegRules& rules, FileError* error) {
    return SaveWith(image, error, [&] {
        if (image.GetWidth() > JPEG_MAX_DIMENSION || image.GetHeight() > JPEG_MAX_DIMENSION)
            return FailContent(error, "A JPEG is at most 65500 pixels wide and high",
                               FileReason::kTooLarge);
        if (EnsureGrayOrRgb(image) == 0)
            return FailNoMemory(error);
        image.SetXDpi(dpi);
        image.SetYDpi(dpi);
        return Code(sink, image, {rules, quality, dpi}, JpegHeadFor(image, sourceImage), error);
    });
}

}  // namespace velloran
