#include <libraw/libraw.h>

#include <array>
#include <memory>
#include <string>
#include <utility>

#include "codecs/ByteOrder.h"
#include "codecs/DecodedPage.h"
#include "codecs/Jpeg.h"
#include "codecs/Raw.h"
#include "codecs/RawHead.h"
#include "codecs/TiffExif.h"
#include "core/StepContext.h"
#include "io/ByteSource.h"
#include "io/MemorySource.h"

namespace velloran {
namespace {

// Packed raw data shrinks to a half or a third.
constexpr std::int64_t kMaxRatio = 64;

/// Ends the library's work soon after a cancel.
int OnProgress(void* cancel, LibRaw_progress, int, int) {
    return static_cast<const CancelToken*>(cancel)->IsCancelled() ? 1 : 0;
}

class RawReader {
 public:
    explicit RawReader(ByteSource& source)
        : source_(source), raw_(std::make_unique<LibRaw>(LIBRAW_OPIONS_NO_DATAERR_CALLBACK)) {
        raw_->set_progress_handler(OnProgress, &cancel_);
        libraw_output_params_t& output = raw_->imgdata.params;
        output.use_camera_wb = 1;
        output.output_color = 1;  // sRGB
        output.output_bps = 8;
        output.max_raw_memory_mb = 2048;
    }

    bool ReadHead(FileError* error) {
        const auto bytes = source_.AllBytes(error);
        if (!bytes)
            return false;
        // The library only reads them.
        const int status =
            raw_->open_buffer(const_cast<std::uint8_t*>(bytes->data()), bytes->size());
        if (status != LIBRAW_SUCCESS)
            return Fail(status, error);
        const libraw_image_sizes_t& sizes = raw_->imgdata.sizes;
        const bool isSideways = (sizes.flip & 4) != 0;
        width_ = isSideways ? sizes.height : sizes.width;
        height_ = isSideways ? sizes.width : sizes.height;
        while (bits_ < 16 && raw_->imgdata.color.maximum >> bits_ != 0)
            ++bits_;
        return IsAcceptableSize(width_, height_, 64) ||
               FailContent(error, "the picture has no acceptable size", FileReason::kTooLarge);
    }

    ImageInfo Info() const {
        ImageInfo info;
        info.width = width_;
        info.height = height_;
        info.bitsPerPixel = bits_;
        return info;
    }
    int SourceBits() const { return 24; }

    void ReadNotes(LoadNotes& notes) {
        std::array<std::uint8_t, 8> head{};
        source_.ReadAt(0, head);
        Metadata metadata;
        metadata.exif = CollectTiffExif(source_, NumberAt(head.data() + 4, 4, head[0] == 'M'));
        notes.TakeMetadata(std::move(metadata));
    }

    bool ReadPage(CDibImage& page, LoadNotes& notes, FileError* error) {
        if (!IsPlausibleSize(std::int64_t{2} * width_ * height_, source_.Size(), kMaxRatio))
            return FailDamaged(error, "the file is too short for its picture");
        int status = raw_->unpack();
        if (status == LIBRAW_SUCCESS)
            status = raw_->dcraw_process();
        if (status != LIBRAW_SUCCESS)
            return ReadPreview(status, page, notes, error);
        int width = 0, height = 0, colors = 0, bits = 0;
        raw_->get_mem_image_format(&width, &height, &colors, &bits);
        if (!IsAcceptableSize(width, height, 24) || (colors != 3 && colors != 1) || bits != 8)
            return FailContent(error, "colours of this kind are not read",
                               FileReason::kKindNotRead);
        if (!CreatePage(width, height, colors == 3 ? 24 : 8, false, page, error))
            return false;
        if (colors == 1)
            page.SetGrayPalette();
        status = raw_->copy_mem_image(RowFromTop(page, 0), -static_cast<int>(page.GetEffWidth()),
                                      /*bgr=*/1);
        if (status != LIBRAW_SUCCESS)
            return Fail(status, error);
        SetDpi(page);
        return true;
    }

 private:
    static bool Fail(int status, FileError* error) {
        if (status == LIBRAW_UNSUFFICIENT_MEMORY)
            return FailNoMemory(error);
        if (status == LIBRAW_TOO_BIG)
            return FailContent(error, libraw_strerror(status), FileReason::kTooLarge);
        return status == LIBRAW_FILE_UNSUPPORTED
                   ? FailContent(error, libraw_strerror(status), FileReason::kKindNotRead)
                   : FailDamaged(error, libraw_strerror(status));
    }

    static void SetDpi(CDibImage& page) {
        constexpr int kUntold = 96;  // cameras know no paper
        page.SetXDpi(kUntold);
        page.SetYDpi(kUntold);
    }

    /// A preview that is about as large as the picture itself.
    bool ReadPreview(int reason, CDibImage& page, LoadNotes& notes, FileError* error) {
        const libraw_thumbnail_t& preview = raw_->imgdata.thumbnail;
        if (cancel_.IsCancelled() || raw_->unpack_thumb() != LIBRAW_SUCCESS ||
            preview.tformat != LIBRAW_THUMBNAIL_JPEG || preview.thumb == nullptr)
            return Fail(reason, error);
        MemorySource source({reinterpret_cast<const std::uint8_t*>(preview.thumb),
                             static_cast<std::size_t>(preview.tlength)});
        LoadNotes own;
        if (!LoadJpeg(source, page, /*reverseCmyk=*/false, own, nullptr))
            return Fail(reason, error);
        const std::int64_t pixels = std::int64_t{page.GetWidth()} * page.GetHeight();
        if (pixels * 10 < std::int64_t{width_} * height_ * 8)
            return Fail(reason, error);
        notes.NoteDamage(std::string("the raw data cannot be decoded, the preview was taken: ") +
                         libraw_strerror(reason));
        SetDpi(page);
        return true;
    }

    ByteSource& source_;
    CancelToken cancel_ = CurrentCancel();
    std::unique_ptr<LibRaw> raw_;
    int width_ = 0, height_ = 0, bits_ = 0;
};

}  // namespace

bool IsRawFile(ByteSource& source) {
    if (!LooksRaw(source))
        return false;
    ImageInfo info;
    return ReadRawInfo(source, info, nullptr);
}

bool LoadRaw(ByteSource& source, CDibImage& image, LoadNotes& notes, FileError* error) {
    return LoadWith<RawReader>(source, image, notes, error);
}

bool ReadRawInfo(ByteSource& source, ImageInfo& info, FileError* error) {
    return InfoWith<RawReader>(source, info, error);
}

bool ReadRawNotes(ByteSource& source, LoadNotes& notes, FileError* error) {
    return NotesWith<RawReader>(source, notes, error);
}

}  // namespace velloran
