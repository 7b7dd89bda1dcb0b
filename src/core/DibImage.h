#pragma once

// The working image: what documents, pages and the pipeline hold. It adds to the bitmap what the
// loader knew of the file.

#include <cstdint>
#include <memory>
#include <string>

#include "core/BaseImage.h"

namespace velloran {

struct JpegSourceHead;
struct Metadata;

/// What the loader tells of the file that an image came from.
struct ImageSource {
    /// Bits per pixel of the file, or the count of palette entries where a loader counted them.
    std::uint32_t sourceColours = 0;
    std::uint32_t sourceFlag = 0;  // set by a loader; 0 for images that were built
    std::string sourceName;        // path, as the bytes of the disk
    std::uint32_t sourceInfo = 0;  // file type id of sourceName
    /// What a new JPEG may inherit of the source; null where that is no JPEG.
    std::shared_ptr<const JpegSourceHead> jpegHead = nullptr;
    /// Colour profile, EXIF and XMP of the source; null where it has none.
    std::shared_ptr<const Metadata> metadata = nullptr;
};

class CDibImage : public CBaseImage {
 public:
    CDibImage() = default;
    /// Deep copies, the source record too; empty when memory runs out.
    CDibImage(const CDibImage& source);
    CDibImage& operator=(const CDibImage& source);
    /// A new image takes the source record over as well.
    CDibImage(CDibImage&& from) noexcept = default;
    /// Transfer: the source record of this image stays.
    CDibImage& operator=(CDibImage&& from) noexcept;

    /// Cuts tenths of a percent of the width and height from each side, see PerMilleToPixels.
    /// False when all four are 0, the image is empty or CropInPlace refuses.
    bool CropPerMille(int left, int top, int right, int bottom);

    ImageSource& Source() { return source_; }
    const ImageSource& Source() const { return source_; }

 private:
    void CopySource(const CDibImage& source);

    ImageSource source_;
};

/// A margin in tenths of a percent as pixels: (size * margin * 10 + 5) / 10000 in integers, and a
/// result below 3 becomes 0. Margins outside 0..1000 are limited first.
int PerMilleToPixels(int size, int marginPerMille);

}  // namespace velloran
