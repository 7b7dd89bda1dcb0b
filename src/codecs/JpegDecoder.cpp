#include "codecs/JpegDecoder.h"

#include <jerror.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace velloran {
namespace {

constexpr int kMostScans = 500;  // 64 coefficients of 4 components, refined twice, is less
constexpr long kMostCoefficientBytes = 0x7FFFFFFF;
constexpr std::array<JOCTET, 2> kEndMarker = {0xFF, JPEG_EOI};
constexpr std::uint8_t kStartOfImage = 0xD8;
constexpr std::uint8_t kTemporary = 0x01;
constexpr std::size_t kExifMark = 6;  // "Exif" and two zeros

bool IsRestart(int marker) {
    return marker >= JPEG_RST0 && marker <= JPEG_RST0 + 7;
}

}  // namespace

JpegDecoder::JpegDecoder(std::span<const std::uint8_t> bytes) : bytes_(bytes) {
    InstallJpegErrors(errors_);
    errors_.manager.emit_message = OnWarning;
    jpeg_.err = &errors_.manager;
}

JpegDecoder::~JpegDecoder() {
    jpeg_destroy_decompress(&jpeg_);
}

JpegDecoder& JpegDecoder::Of(j_common_ptr jpeg) {
    return *static_cast<JpegDecoder*>(jpeg->client_data);
}

void JpegDecoder::ReadHead() {
    RunJpeg(errors_, [this] {
        jpeg_create_decompress(&jpeg_);
        jpeg_.client_data = this;
        jpeg_.mem->max_memory_to_use = kMostCoefficientBytes;
        progress_.progress_monitor = OnProgress;
        jpeg_.progress = &progress_;
        source_ = {bytes_.data(), bytes_.size(),          OnSourceEvent, OnSourceEmpty,
                   SkipSource,    jpeg_resync_to_restart, OnSourceEvent};
        jpeg_.src = &source_;
        jpeg_save_markers(&jpeg_, JPEG_APP0 + 1, 0xFFFF);
        jpeg_read_header(&jpeg_, TRUE);
    });
}

std::span<const std::uint8_t> JpegDecoder::Exif() const {
    for (jpeg_saved_marker_ptr marker = jpeg_.marker_list; marker; marker = marker->next)
        if (marker->marker == JPEG_APP0 + 1 && marker->data_length > kExifMark &&
            std::memcmp(marker->data, "Exif\0\0", kExifMark) == 0)
            return {marker->data, marker->data_length};
    return {};
}

void JpegDecoder::Start(J_COLOR_SPACE colors) {
    RunJpeg(errors_, [this, colors] {
        jpeg_.out_color_space = colors;
        jpeg_start_decompress(&jpeg_);
        // A file that ends before its first component starts shows nothing at all.
        if (jpeg_has_multiple_scans(&jpeg_) && !sawFirstComponent_)
            unitRowsPresent_ = 0;
    });
}

int JpegDecoder::ReadRows(std::span<const JSAMPROW> rows) {
    const JDIMENSION first = jpeg_.output_scanline;
    RunJpeg(errors_, [this, rows, first] {
        const JDIMENSION wanted =
            std::min(jpeg_.output_height, first + static_cast<JDIMENSION>(rows.size()));
        while (jpeg_.output_scanline < wanted &&
               jpeg_.output_scanline < static_cast<JDIMENSION>(RowsPresent())) {
            const JDIMENSION at = jpeg_.output_scanline;
            // The library takes an array that it may write to, and leaves it alone.
            jpeg_read_scanlines(&jpeg_, const_cast<JSAMPARRAY>(&rows[at - first]), wanted - at);
        }
    });
    return static_cast<int>(jpeg_.output_scanline - first);
}

int JpegDecoder::RowsPresent() const {
    const auto unitRow = static_cast<std::uint64_t>(jpeg_.max_v_samp_factor) * DCTSIZE;
    return static_cast<int>(
        std::min<std::uint64_t>(jpeg_.image_height, unitRowsPresent_ * unitRow));
}

bool JpegDecoder::IsInFirstPassOfFirstComponent() const {
    if (jpeg_.progressive_mode && (jpeg_.Ss != 0 || jpeg_.Ah != 0))
        return false;
    const auto* scan = &jpeg_.cur_comp_info[0];
    return std::find(scan, scan + jpeg_.comps_in_scan, jpeg_.comp_info) !=
           scan + jpeg_.comps_in_scan;
}

void JpegDecoder::NoteEndOfData(JDIMENSION unitRow) {
    // Later scans only refine what is there.
    if (IsInFirstPassOfFirstComponent())
        unitRowsPresent_ = std::min(unitRowsPresent_, unitRow);
}

void JpegDecoder::OnWarning(j_common_ptr jpeg, int level) {
    if (level >= 0)
        return;
    ++jpeg->err->num_warnings;
    auto* decompress = reinterpret_cast<j_decompress_ptr>(jpeg);
    // The decoder wanted bits and met a marker. Behind a restart marker data goes on; behind any
    // other one, among them the one that stands in for the end of the file, none follows.
    if (jpeg->err->msg_code == JWRN_HIT_MARKER && !IsRestart(decompress->unread_marker))
        Of(jpeg).NoteEndOfData(decompress->input_iMCU_row);
}

void JpegDecoder::OnProgress(j_common_ptr jpeg) {
    auto* decompress = reinterpret_cast<j_decompress_ptr>(jpeg);
    if (decompress->input_scan_number > kMostScans)
        FailJpeg(jpeg, "Too many scans");
    JpegDecoder& decoder = Of(jpeg);
    decoder.sawFirstComponent_ |= decoder.IsInFirstPassOfFirstComponent();
}

boolean JpegDecoder::OnSourceEmpty(j_decompress_ptr jpeg) {
    jpeg->src->next_input_byte = kEndMarker.data();
    jpeg->src->bytes_in_buffer = kEndMarker.size();
    // Arithmetic decoding takes zeros for missing data without a warning, and may rightly do so
    // for the last bytes: the row that it is in counts as present. Between scans the row is past
    // the last one.
    if (jpeg->arith_code && jpeg->global_state != 0)
        Of(reinterpret_cast<j_common_ptr>(jpeg)).NoteEndOfData(jpeg->input_iMCU_row + 1);
    return TRUE;
}

void JpegDecoder::SkipSource(j_decompress_ptr jpeg, long count) {
    if (count <= 0)
        return;
    const auto skipped =
        std::min<std::size_t>(static_cast<std::size_t>(count), jpeg->src->bytes_in_buffer);
    jpeg->src->next_input_byte += skipped;
    jpeg->src->bytes_in_buffer -= skipped;
}

std::size_t LengthOfWholeSegments(std::span<const std::uint8_t> bytes) {
    std::size_t at = 0;
    while (at < bytes.size()) {
        const void* found = std::memchr(&bytes[at], 0xFF, bytes.size() - at);
        if (found == nullptr)
            return bytes.size();
        at = static_cast<std::size_t>(static_cast<const std::uint8_t*>(found) - bytes.data());
        const std::size_t start = at;
        while (at < bytes.size() && bytes[at] == 0xFF)
            ++at;
        if (at == bytes.size())
            return start;
        const int marker = bytes[at++];
        if (marker == 0 || marker == kTemporary || marker == kStartOfImage || IsRestart(marker))
            continue;
        if (marker == JPEG_EOI)
            return bytes.size();
        if (bytes.size() - at < 2)
            return start;
        const std::size_t length = bytes[at] * 256U + bytes[at + 1];
        if (bytes.size() - at < length)
            return start;
        at += std::max<std::size_t>(length, 2);
    }
    return bytes.size();
}

}  // namespace velloran
