#pragma once

// One JPEG under libjpeg's decompressor: the head first, then rows from the top of the picture.
// Knows how far the data of a broken-off file reaches, and goes on behind damage where a restart
// marker allows it. Internal to the codecs.

#include <cstddef>
#include <cstdint>
#include <span>

#include "codecs/JpegErrors.h"
#include "io/SourceReader.h"

namespace velloran {

class JpegDecoder {
 public:
    /// Reads up to `limit` bytes of the source, which must outlive this.
    explicit JpegDecoder(ByteSource& source, std::uint64_t limit = UINT64_MAX);
    ~JpegDecoder();
    JpegDecoder(const JpegDecoder&) = delete;
    JpegDecoder& operator=(const JpegDecoder&) = delete;

    /// Reads up to the first scan. Throws CNewJPEGException, as all that follow.
    void ReadHead();

    /// Size, components, tables and density, after ReadHead.
    const jpeg_decompress_struct& Head() const { return jpeg_; }

    /// The first APP1 segment that holds EXIF, from its "Exif" mark on; empty without one.
    std::span<const std::uint8_t> Exif() const;

    /// Starts decoding. A file of several scans is read to its end here.
    void Start(J_COLOR_SPACE colors);

    /// Fills the next rows. Returns how many, fewer than asked for where the picture or the data
    /// ends.
    int ReadRows(std::span<const JSAMPROW> rows);

    /// Rows from the top for which the file holds data; what ReadRows gave below them means
    /// nothing. Final when ReadRows has given fewer rows than asked for, or the last one.
    int RowsPresent() const;

    /// Reads on to the end mark, behind the last row.
    void Finish();

    /// What is wrong with the data as far as it was read; empty for nothing.
    const char* Damage() const { return damage_; }

 private:
    static void OnWarning(j_common_ptr jpeg, int level);
    static void OnProgress(j_common_ptr jpeg);
    static void OnSourceEvent(j_decompress_ptr) {}
    static boolean OnSourceEmpty(j_decompress_ptr jpeg);
    static void SkipSource(j_decompress_ptr jpeg, long count);
    static JpegDecoder& Of(j_common_ptr jpeg);
    static boolean OnRestartLost(j_decompress_ptr jpeg, int desired);
    bool IsInFirstPassOfFirstComponent() const;
    void NoteEndOfData(JDIMENSION unitRow, bool final);
    void NoteDataAgain();
    void NoteDamage(const char* text);
    void SetScanLimit();
    bool IsOnlyScan() const;

    SourceReader reader_;
    JpegErrors errors_;
    jpeg_decompress_struct jpeg_{};
    jpeg_source_mgr source_{};
    jpeg_progress_mgr progress_{};
    bool sawFirstComponent_ = false;
    JDIMENSION unitRowsPresent_ = ~0U;  // rows of MCUs; all, as long as nothing is missing
    bool endIsFinal_ = false;           // no restart can bring data again
    int mostScans_ = 0;
    char damage_[JMSG_LENGTH_MAX] = "";
};

/// Length of the file up to a marker segment that is cut off by its end; the whole length when
/// there is none. Entropy-coded data counts as whole wherever it ends.
std::size_t LengthOfWholeSegments(std::span<const std::uint8_t> bytes);

}  // namespace velloran
