#include "codecs/LibraryVersions.h"

#include <gif_lib.h>
#include <jpeglib.h>
#include <lcms2.h>
#include <libdjvu/ddjvuapi.h>
#include <libraw/libraw.h>
#include <openjpeg.h>
#include <png.h>
#include <tiffio.h>
#include <webp/decode.h>

#include <sstream>

namespace velloran {

namespace {

std::string TiffVersion() {
    // "LIBTIFF, Version 4.5.0" and lines of rights behind it.
    std::istringstream words(TIFFGetVersion());
    std::string word;
    while (words >> word)
        if (word.front() >= '0' && word.front() <= '9')
            return word;
    return "?";
}

std::string WebpVersion() {
    const int version = WebPGetDecoderVersion();  // a byte for each of three numbers
    return std::to_string(version >> 16) + "." + std::to_string(version >> 8 & 0xFF) + "." +
           std::to_string(version & 0xFF);
}

std::string LcmsVersion() {
    const int version = cmsGetEncodedCMMversion();  // 2140 is 2.14
    return std::to_string(version / 1000) + "." + std::to_string(version % 1000 / 10);
}

std::string DjvuVersion() {
    const std::string text = ddjvu_get_version_string();  // "DjVuLibre-3.5.28"
    return text.substr(text.rfind('-') + 1);
}

std::string Joined(int major, int minor, int last) {
    return std::to_string(major) + "." + std::to_string(minor) + "." + std::to_string(last);
}

}  // namespace

std::vector<LibraryVersion> LibraryVersions() {
    const int jpeg = LIBJPEG_TURBO_VERSION_NUMBER;  // 2001005 is 2.1.5
    return {{"libjpeg-turbo", Joined(jpeg / 1'000'000, jpeg / 1000 % 1000, jpeg % 1000)},
            {"libpng", png_get_libpng_ver(nullptr)},
            {"libtiff", TiffVersion()},
            {"giflib", Joined(GIFLIB_MAJOR, GIFLIB_MINOR, GIFLIB_RELEASE)},
            {"libwebp", WebpVersion()},
            {"OpenJPEG", opj_version()},
            {"DjVuLibre", DjvuVersion()},
            {"LibRaw", libraw_version()},
            {"Little CMS", LcmsVersion()}};
}

}  // namespace velloran
