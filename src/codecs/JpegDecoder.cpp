#include "codecs/JpegDecoder.h"

#include <jerror.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>

namespace velloran {
namespace {

// Each scan walks over all blocks, whatever it holds: a file pays for its scans with its bytes.
constexpr int kMostScans = 500;  // 64 coefficients of 4 components, refined twice, is less
constexpr int kScansForNothing = 16;
constexpr std::uint64_t kBlocksOfAByte = 64;
constexpr long kMostCoefficientBytes = 0x7FFFFFFF;
constexpr std::array<JOCTET, 2> kEndMarker = {0xFF, JPEG_EOI};
constexpr std::uint8_t kStartOfImage = 0xD8;
constexpr std::uint8_t kTemporary = 0x01;
constexpr int kFirstFrameMarker = 0xC0;  // what lies below no file holds
constexpr std::size_t kExifMark = 6;     // "Exif" and two zeros

bool IsRestart(int marker) {
    return marker >= JPEG_RST0 && marker <= JPEG_RST0 + 7;
}

}  // namespace

JpegDecoder::JpegDecoder(ByteSource& source, std::uint64_t limit) : reader_(source, limit) {
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
        source_ = {nullptr,      0, OnSourceEvent, OnSourceEmpty, SkipSource, OnRestartLost,
                   OnSourceEvent};
        jpeg_.src = &source_;
        jpeg_save_markers(&jpeg_, JPEG_APP0 + 1, 0xFFFF);
        jpeg_save_markers(&jpeg_, JPEG_APP0 + 2, 0xFFFF);
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
        SetScanLimit();
        jpeg_start_decompress(&jpeg_);
        // A file that ends before its first component starts shows nothing at all.
        if (jpeg_has_multiple_scans(&jpeg_) && !sawFirstComponent_)
            unitRowsPresent_ = 0;
        endIsFinal_ |= jpeg_has_multiple_scans(&jpeg_) != FALSE;  // all scans are read
    });
}

int JpegDecoder::ReadRows(std::span<const JSAMPROW> rows) {
    const JDIMENSION first = jpeg_.output_scanline;
    RunJpeg(errors_, [this, rows, first] {
        const JDIMENSION wanted =
            std::min(jpeg_.output_height, first + static_cast<JDIMENSION>(rows.size()));
        while (jpeg_.output_scanline < wanted &&
               (!endIsFinal_ || jpeg_.output_scanline < static_cast<JDIMENSION>(RowsPresent()))) {
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

void JpegDecoder::NoteEndOfData(JDIMENSION unitRow, bool final) {
    // Later scans only refine what is there.
    if (!IsInFirstPassOfFirstComponent())
        return;
    unitRowsPresent_ = std::min(unitRowsPresent_, unitRow);
    endIsFinal_ |= final;
}

void JpegDecoder::NoteDataAgain() {
    if (IsInFirstPassOfFirstComponent() && !endIsFinal_)
        unitRowsPresent_ = ~0U;
}

void JpegDecoder::NoteDamage(const char* text) {
    if (damage_[0] == '\0')
        std::snprintf(damage_, sizeof damage_, "%s", text);
}

bool JpegDecoder::IsOnlyScan() const {
    return !jpeg_.progressive_mode && jpeg_.comps_in_scan == jpeg_.num_components;
}

void JpegDecoder::SetScanLimit() {
    std::uint64_t blocks = 0;
    for (int i = 0; i < jpeg_.num_components; ++i)
        blocks +=
            std::uint64_t{jpeg_.comp_info[i].width_in_blocks} * jpeg_.comp_info[i].height_in_blocks;
    const std::uint64_t paid = reader_.End() * kBlocksOfAByte / std::max<std::uint64_t>(blocks, 1);
    mostScans_ = kScansForNothing +
                 static_cast<int>(std::min<std::uint64_t>(paid, kMostScans - kScansForNothing));
}

void JpegDecoder::OnWarning(j_common_ptr jpeg, int level) {
    JpegDecoder& decoder = Of(jpeg);
    auto* decompress = reinterpret_cast<j_decompress_ptr>(jpeg);
    const int code = jpeg->err->msg_code;
    if (level >= 0) {
        if (code == JTRC_RST)  // a restart stood where it belongs
            decoder.NoteDataAgain();
        return;
    }
    ++jpeg->err->num_warnings;
    if (code != JWRN_JFIF_MAJOR && code != JWRN_ADOBE_XFORM) {
        char text[JMSG_LENGTH_MAX];
        jpeg->err->format_message(jpeg, text);
        decoder.NoteDamage(text);
    }
    // The decoder wanted bits and met a marker. Behind a restart marker data goes on; behind any
    // other one, among them the one that stands in for the end of the file, none follows, unless
    // it is itself the damage and a restart is found behind it.
    if (code == JWRN_HIT_MARKER && !IsRestart(decompress->unread_marker)) {
        const int marker = decompress->unread_marker;
        const bool mayGoOn = decompress->restart_interval != 0 && marker != JPEG_EOI &&
                             (decoder.IsOnlyScan() || marker < kFirstFrameMarker);
        decoder.NoteEndOfData(decompress->input_iMCU_row, !mayGoOn);
    }
}

/// Called where a restart marker should stand and another one does. In the only scan of a file any
/// marker but the end is one that damage made: the search goes on behind it.
boolean JpegDecoder::OnRestartLost(j_decompress_ptr jpeg, int desired) {
    JpegDecoder& decoder = Of(reinterpret_cast<j_common_ptr>(jpeg));
    decoder.NoteDamage("a restart marker is missing");
    if (decoder.IsOnlyScan() && !IsRestart(jpeg->unread_marker) &&
        jpeg->unread_marker != JPEG_EOI) {
        int last = 0, marker = 0;
        while (!IsRestart(marker) && marker != JPEG_EOI) {
            if (jpeg->src->bytes_in_buffer == 0)
                OnSourceEmpty(jpeg);
            const int byte = *jpeg->src->next_input_byte++;
            --jpeg->src->bytes_in_buffer;
            marker = last == 0xFF ? byte : 0;
            last = byte;
        }
        jpeg->unread_marker = marker;
    }
    const boolean found = jpeg_resync_to_restart(jpeg, desired);
    if (jpeg->unread_marker == 0)
        decoder.NoteDataAgain();
    else if (jpeg->unread_marker == JPEG_EOI)
        decoder.NoteEndOfData(jpeg->input_iMCU_row, /*final=*/true);
    return found;
}

void JpegDecoder::OnProgress(j_common_ptr jpeg) {
    auto* decompress = reinterpret_cast<j_decompress_ptr>(jpeg);
    JpegDecoder& decoder = Of(jpeg);
    if (decompress->input_scan_number > decoder.mostScans_)
        FailJpeg(jpeg, "Too many scans");
    decoder.sawFirstComponent_ |= decoder.IsInFirstPassOfFirstComponent();
}

boolean JpegDecoder::OnSourceEmpty(j_decompress_ptr jpeg) {
    JpegDecoder& decoder = Of(reinterpret_cast<j_common_ptr>(jpeg));
    if (const auto bytes = decoder.reader_.Take(); !bytes.empty()) {
        jpeg->src->next_input_byte = bytes.data();
        jpeg->src->bytes_in_buffer = bytes.size();
        return TRUE;
    }
    decoder.NoteDamage("the file breaks off before its end");
    jpeg->src->next_input_byte = kEndMarker.data();
    jpeg->src->bytes_in_buffer = kEndMarker.size();
    // Arithmetic decoding takes zeros for missing data without a warning, and may rightly do so
    // for the last bytes: the row that it is in counts as present. Between scans the row is past
    // the last one.
    if (jpeg->arith_code && jpeg->global_state != 0)
        decoder.NoteEndOfData(jpeg->input_iMCU_row + 1, /*final=*/true);
    return TRUE;
}

void JpegDecoder::SkipSource(j_decompress_ptr jpeg, long count) {
    if (count <= 0)
        return;
    const auto wanted = static_cast<std::uint64_t>(count);
    const auto inBuffer = std::min<std::uint64_t>(wanted, jpeg->src->bytes_in_buffer);
    jpeg->src->next_input_byte += inBuffer;
    jpeg->src->bytes_in_buffer -= static_cast<std::size_t>(inBuffer);
    Of(reinterpret_cast<j_common_ptr>(jpeg)).reader_.Skip(wanted - inBuffer);
}

void JpegDecoder::Finish() {
    if (jpeg_.output_scanline < jpeg_.output_height)
        return;  // not even the rows came whole
    try {
        RunJpeg(errors_, [this] { jpeg_finish_decompress(&jpeg_); });
    } catch (const CNewJPEGException&) {
        // What follows the picture is no part of it.
    }
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
