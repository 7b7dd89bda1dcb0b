#include "codecs/ResolutionMark.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <vector>

#include "core/StepContext.h"
#include "io/ByteSink.h"
#include "io/ByteSource.h"

namespace velloran {

namespace {

using Bytes = std::vector<std::uint8_t>;

/// Bytes of the copy that are not those of the source.
struct Patch {
    std::uint64_t at = 0;
    Bytes bytes;
};

std::uint32_t BigEndian(const std::uint8_t* bytes, int count) {
    std::uint32_t value = 0;
    for (int i = 0; i < count; ++i)
        value = value << 8 | bytes[i];
    return value;
}

std::uint64_t LittleEndian(const std::uint8_t* bytes, int count) {
    std::uint64_t value = 0;
    for (int i = count - 1; i >= 0; --i)
        value = value << 8 | bytes[i];
    return value;
}

Bytes BytesOf(std::uint64_t value, int count, bool isBigEndian) {
    Bytes bytes;
    for (int i = 0; i < count; ++i)
        bytes.push_back(static_cast<std::uint8_t>(value >> 8 * (isBigEndian ? count - 1 - i : i)));
    return bytes;
}

class MarkedCopy {
 public:
    MarkedCopy(ByteSource& source, int dpi, ByteSink& sink, FileError* error)
        : source_(source), dpi_(static_cast<std::uint32_t>(dpi)), sink_(sink), error_(error) {}

    MarkResult Bmp() {
        constexpr std::uint32_t kWithResolution = 40, kResolutionAt = 38;
        std::array<std::uint8_t, 54> head{};
        if (!ReadHead(head) || head[0] != 'B' || head[1] != 'M')
            return Unfit("head cut short");
        if (LittleEndian(&head[14], 4) < kWithResolution)
            return Unfit("the head holds no resolution");
        // The metre has 10000 / 254 inches; whole pixels of it are kept.
        const std::uint64_t pixelsPerMetre = std::uint64_t{dpi_} * 10000 / 254;
        Bytes both = BytesOf(pixelsPerMetre, 4, /*isBigEndian=*/false);
        both.insert(both.end(), both.begin(), both.begin() + 4);
        return CopyPatched({{kResolutionAt, std::move(both)}});
    }

    MarkResult Jpeg() {
        constexpr std::uint8_t kDotsPerInch = 1;
        std::array<std::uint8_t, 18> head{};
        if (!ReadHead(head) || head[0] != 0xFF || head[1] != 0xD8 || head[2] != 0xFF ||
            head[3] != 0xE0)
            return MarkResult::kNotJfif;
        if (BigEndian(&head[4], 2) < 14)
            return Unfit("the JFIF head is too short");
        Bytes mark = {kDotsPerInch};
        for (int i = 0; i < 2; ++i)
            for (const std::uint8_t byte : BytesOf(dpi_, 2, /*isBigEndian=*/true))
                mark.push_back(byte);
        return CopyPatched({{13, std::move(mark)}});
    }

    /// The chunks as they stand, but for those that told a resolution; the new one stands behind
    /// the head, where every reader looks for it.
    MarkResult Png() {
        constexpr std::uint64_t kHeadEnd = 33;
        std::array<std::uint8_t, kHeadEnd> head{};
        if (!ReadHead(head) || BigEndian(&head[8], 4) != 13 || !IsName(&head[12], "IHDR"))
            return Unfit("damaged head");
        if (!CopyRange(0, kHeadEnd) || (dpi_ > 0 && !WriteResolutionChunk()))
            return NotCopied();
        std::uint64_t from = kHeadEnd, at = kHeadEnd;  // what waits to be copied; the chunk
        bool beforePixels = true;
        while (beforePixels && at + 12 <= source_.Size()) {
            std::array<std::uint8_t, 8> chunk{};
            if (source_.ReadAt(at, chunk) != chunk.size())
                return NotCopied();
            const std::uint64_t next = at + 12 + BigEndian(chunk.data(), 4);
            if (next > source_.Size())
                break;  // a cut file stays as cut as it is
            beforePixels = !IsName(&chunk[4], "IDAT");
            if (IsName(&chunk[4], "pHYs")) {
                if (!CopyRange(from, at))
                    return NotCopied();
                from = next;
            }
            at = next;
        }
        return CopyRange(from, source_.Size()) ? MarkResult::kDone : NotCopied();
    }

    MarkResult Tiff();

 private:
    struct TiffEntry {
        int type = 0;
        std::uint64_t count = 0;
        std::uint64_t valueAt = 0;  // in the file
        bool isInline = false;
    };
    struct TiffForm {
        bool isBigEndian = false, isBig = false;
        std::uint64_t directory = 0, directoryEnd = 0;
        std::optional<TiffEntry> unit, x, y;
    };

    bool ReadTiffDirectory(TiffForm& form);
    std::optional<Patch> TiffResolution(const TiffForm& form, const TiffEntry& entry) const;
    std::optional<Patch> TiffUnit(const TiffForm& form, const TiffEntry& entry) const;

    bool ReadHead(std::span<std::uint8_t> head) { return source_.ReadAt(0, head) == head.size(); }
    static bool IsName(const std::uint8_t* bytes, const char* name) {
        return std::equal(name, name + 4, bytes);
    }

    bool WriteResolutionChunk() {
        constexpr std::uint8_t kMetres = 1;
        Bytes chunk = BytesOf(9, 4, true);
        for (const char c : {'p', 'H', 'Y', 's'})
            chunk.push_back(static_cast<std::uint8_t>(c));
        // Rounded to the nearest pixel a metre, as PNG pages are written.
        const std::uint64_t pixelsPerMetre = (std::uint64_t{dpi_} * 10000 + 127) / 254;
        for (int i = 0; i < 2; ++i)
            for (const std::uint8_t byte : BytesOf(pixelsPerMetre, 4, true))
                chunk.push_back(byte);
        chunk.push_back(kMetres);
        const auto sum = ::crc32(0, chunk.data() + 4, static_cast<uInt>(chunk.size() - 4));
        for (const std::uint8_t byte : BytesOf(sum, 4, true))
            chunk.push_back(byte);
        return sink_.Write(chunk.data(), chunk.size());
    }

    MarkResult CopyPatched(const std::vector<Patch>& patches) {
        if (!CopyRange(0, source_.Size()))
            return NotCopied();
        for (const Patch& patch : patches)
            if (!sink_.Seek(patch.at) || !sink_.Write(patch.bytes.data(), patch.bytes.size()))
                return NotCopied();
        return MarkResult::kDone;
    }

    bool CopyRange(std::uint64_t from, std::uint64_t end) {
        constexpr std::uint64_t kChunk = std::uint64_t{1} << 18;
        chunk_.resize(kChunk);
        while (from < end) {
            if (CurrentCancel().IsCancelled())
                return false;
            const auto size = static_cast<std::size_t>(std::min(kChunk, end - from));
            if (source_.ReadAt(from, {chunk_.data(), size}) != size ||
                !sink_.Write(chunk_.data(), size))
                return false;
            from += size;
        }
        return true;
    }

    MarkResult Unfit(const char* why) {
        FailContent(error_, why, FileReason::kDamaged);
        return MarkResult::kUnfit;
    }
    MarkResult NotCopied() {
        if (sink_.HasFailed())
            sink_.FailWrite(error_);
        else if (source_.FailWhenUnreadable(error_))
            FailDamaged(error_, "became shorter while it was read");
        return MarkResult::kNotCopied;
    }

    ByteSource& source_;
    std::uint32_t dpi_;
    ByteSink& sink_;
    FileError* error_;
    Bytes chunk_;
};

bool MarkedCopy::ReadTiffDirectory(TiffForm& form) {
    std::array<std::uint8_t, 16> head{};
    if (source_.ReadAt(0, std::span(head).first(8)) != 8)
        return false;
    form.isBigEndian = head[0] == 'M';
    const auto number = [&form](const std::uint8_t* bytes, int count) {
        std::uint64_t value = 0;
        for (int i = 0; i < count; ++i)
            value = value << 8 | bytes[form.isBigEndian ? i : count - 1 - i];
        return value;
    };
    const std::uint64_t version = number(&head[2], 2);
    form.isBig = version == 43;
    if ((version != 42 && !form.isBig) || (form.isBig && !ReadHead(head)))
        return false;
    const int word = form.isBig ? 8 : 4, countSize = form.isBig ? 8 : 2;
    const std::size_t entrySize = form.isBig ? 20 : 12;
    form.directory = number(&head[form.isBig ? 8 : 4], word);
    std::array<std::uint8_t, 20> bytes{};
    const std::uint64_t size = source_.Size();
    if (form.directory < 8 || form.directory > size ||
        source_.ReadAt(form.directory, std::span(bytes).first(countSize)) !=
            static_cast<std::size_t>(countSize))
        return false;
    const std::uint64_t count = number(bytes.data(), countSize);
    constexpr std::uint64_t kMostEntries = 65535;
    if (count > kMostEntries)
        return false;
    std::uint64_t at = form.directory + static_cast<std::uint64_t>(countSize);
    form.directoryEnd = at + count * entrySize + static_cast<std::uint64_t>(word);
    for (std::uint64_t i = 0; i < count; ++i, at += entrySize) {
        if (source_.ReadAt(at, std::span(bytes).first(entrySize)) != entrySize)
            return false;
        constexpr std::uint64_t kX = 282, kY = 283, kUnit = 296, kRational = 5;
        const std::uint64_t tag = number(bytes.data(), 2);
        if (tag != kX && tag != kY && tag != kUnit)
            continue;
        TiffEntry entry;
        entry.type = static_cast<int>(number(&bytes[2], 2));
        entry.count = number(&bytes[4], word);
        entry.isInline = entry.type != static_cast<int>(kRational) || form.isBig;
        entry.valueAt = entry.isInline ? at + 4 + static_cast<std::uint64_t>(word)
                                       : number(&bytes[4 + static_cast<std::size_t>(word)], word);
        (tag == kX ? form.x : tag == kY ? form.y : form.unit) = entry;
    }
    return true;
}

std::optional<Patch> MarkedCopy::TiffResolution(const TiffForm& form,
                                                const TiffEntry& entry) const {
    constexpr int kRational = 5;
    constexpr std::uint64_t kSize = 8, kHead = 8;
    if (entry.type != kRational || entry.count != 1)
        return std::nullopt;
    // A value that lies in the head or among the entries is none of a sound file.
    const std::uint64_t end = entry.valueAt + kSize;
    if (!entry.isInline && (entry.valueAt < kHead || end < kSize || end > source_.Size() ||
                            (end > form.directory && entry.valueAt < form.directoryEnd)))
        return std::nullopt;
    Patch patch{entry.valueAt, BytesOf(dpi_, 4, form.isBigEndian)};
    for (const std::uint8_t byte : BytesOf(1, 4, form.isBigEndian))
        patch.bytes.push_back(byte);
    return patch;
}

std::optional<Patch> MarkedCopy::TiffUnit(const TiffForm& form, const TiffEntry& entry) const {
    constexpr int kShort = 3;
    constexpr std::uint64_t kNone = 1, kInch = 2;
    if (entry.type != kShort || entry.count != 1)
        return std::nullopt;
    return Patch{entry.valueAt, BytesOf(dpi_ == 0 ? kNone : kInch, 2, form.isBigEndian)};
}

MarkResult MarkedCopy::Tiff() {
    TiffForm form;
    if (!ReadTiffDirectory(form))
        return Unfit("damaged directory");
    if (!form.unit || !form.x || !form.y)
        return Unfit("a resolution tag is missing");
    const auto unit = TiffUnit(form, *form.unit);
    const auto x = TiffResolution(form, *form.x), y = TiffResolution(form, *form.y);
    if (!unit || !x || !y)
        return Unfit("damaged resolution tags");
    return CopyPatched({*unit, *x, *y});
}

}  // namespace

bool CanMarkResolution(int type) {
    return type == kTypeJpeg || type == kTypeBmp || type == kTypePng || type == kTypeTiff;
}

MarkResult CopyWithResolution(ByteSource& source, int type, int dpi, ByteSink& sink,
                              FileError* error) {
    MarkedCopy copy(source, dpi, sink, error);
    switch (type) {
        case kTypeBmp:
            return copy.Bmp();
        case kTypeJpeg:
            return copy.Jpeg();
        case kTypePng:
            return copy.Png();
        case kTypeTiff:
            return copy.Tiff();
        default:
            FailContent(error, "of another type", FileReason::kKindNotWritten);
            return MarkResult::kUnfit;
    }
}

}  // namespace velloran
