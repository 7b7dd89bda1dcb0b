#include "codecs/PlainMetadata.h"

#include <lcms2.h>

#include <array>
#include <string>
#include <string_view>

namespace velloran::test {
namespace {

Blob Saved(cmsHPROFILE profile) {
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile, nullptr, &size);
    Blob bytes(size);
    cmsSaveProfileToMem(profile, bytes.data(), &size);
    cmsCloseProfile(profile);
    return bytes;
}

/// A corner of the cube of inks as a colour of the connection space.
cmsInt32Number MixInks(const cmsUInt16Number in[], cmsUInt16Number out[], void*) {
    cmsCIELab lab{100, 0, 0};
    if (in[3] > 0x8000)
        lab.L = 0;
    else if (in[0] > 0x8000 && in[1] < 0x8000 && in[2] < 0x8000)
        lab = {54.29, 80.80, 69.89};  // red of sRGB under D50
    cmsFloat2LabEncoded(out, &lab);
    return 1;
}

/// Numbers in one order of bytes.
class Writer {
 public:
    explicit Writer(bool bigEndian) : bigEndian_(bigEndian) {}
    void Put(std::uint64_t value, int size) {
        for (int i = 0; i < size; ++i)
            bytes_.push_back(
                static_cast<std::uint8_t>(value >> (8 * (bigEndian_ ? size - 1 - i : i))));
    }
    void Put(std::string_view text) { bytes_.insert(bytes_.end(), text.begin(), text.end()); }
    void Entry(int tag, int type, std::uint32_t count, std::uint32_t value) {
        Put(static_cast<std::uint64_t>(tag), 2);
        Put(static_cast<std::uint64_t>(type), 2);
        Put(count, 4);
        if (type == 3) {
            Put(value, 2);
            Put(0, 2);
        } else {
            Put(value, 4);
        }
    }
    Blob Take() { return std::move(bytes_); }

 private:
    bool bigEndian_;
    Blob bytes_;
};

}  // namespace

Blob RgbProfile() {
    return Saved(cmsCreate_sRGBProfile());
}

Blob GrayProfile() {
    cmsToneCurve* curve = cmsBuildGamma(nullptr, 2.2);
    const cmsHPROFILE profile = cmsCreateGrayProfile(cmsD50_xyY(), curve);
    cmsFreeToneCurve(curve);
    return Saved(profile);
}

Blob CmykProfile() {
    const cmsHPROFILE profile = cmsCreateProfilePlaceholder(nullptr);
    cmsSetProfileVersion(profile, 2.1);
    cmsSetDeviceClass(profile, cmsSigOutputClass);
    cmsSetColorSpace(profile, cmsSigCmykData);
    cmsSetPCS(profile, cmsSigLabData);
    cmsPipeline* pipeline = cmsPipelineAlloc(nullptr, 4, 3);
    cmsStage* table = cmsStageAllocCLut16bit(nullptr, 2, 4, 3, nullptr);
    cmsStageSampleCLut16bit(table, MixInks, nullptr, 0);
    cmsPipelineInsertStage(pipeline, cmsAT_END, table);
    for (const cmsTagSignature tag : {cmsSigAToB0Tag, cmsSigAToB1Tag})
        cmsWriteTag(profile, tag, pipeline);
    cmsPipelineFree(pipeline);
    cmsMLU* name = cmsMLUalloc(nullptr, 1);
    cmsMLUsetASCII(name, "en", "US", "Odd inks");
    cmsWriteTag(profile, cmsSigProfileDescriptionTag, name);
    cmsMLUfree(name);
    return Saved(profile);
}

Blob ExifOf(bool bigEndian, int orientation) {
    constexpr int kShort = 3, kLong = 4, kRational = 5, kText = 2, kBytes = 7;
    // Places: directory at 8 with 8 entries, 110; values from there; EXIF's directory at 160 with
    // 3 entries; thumbnail's directory at 214, its picture at 250.
    Writer to(bigEndian);
    to.Put(bigEndian ? "MM" : "II");
    to.Put(42, 2);
    to.Put(8, 4);
    to.Put(8, 2);
    to.Entry(0x10F, kText, 8, 110);
    to.Entry(0x112, kShort, 1, static_cast<std::uint32_t>(orientation));
    to.Entry(0x11A, kRational, 1, 118);
    to.Entry(0x11B, kRational, 1, 126);
    to.Entry(0x128, kShort, 1, 2);
    to.Entry(0x8769, kLong, 1, 160);
    to.Entry(0xC5F0, kBytes, 12, 134);
    to.Entry(0xC5F1, kShort, 1, 77);
    to.Put(214, 4);
    to.Put(std::string_view("Grandma\0", 8));
    for (int i = 0; i < 2; ++i) {
        to.Put(72, 4);
        to.Put(1, 4);
    }
    to.Put(std::string_view(kUnknownValue, 12));
    to.Put(std::string(14, '\0'));
    to.Put(3, 2);
    to.Entry(0x829A, kRational, 1, 202);
    to.Entry(0xA002, kLong, 1, 4000);
    to.Entry(0xA003, kShort, 1, 3000);
    to.Put(0, 4);
    to.Put(1, 4);
    to.Put(125, 4);
    to.Put(std::string(4, '\0'));
    to.Put(2, 2);
    to.Entry(0x201, kLong, 1, 250);
    to.Entry(0x202, kLong, 1, 40);
    to.Put(0, 4);
    to.Put(std::string(6, '\0'));
    to.Put("\xFF\xD8thumbnail-thumbnail-thumbnail-thumbnail");
    Blob block = to.Take();
    block.resize(290);
    return block;
}

Blob XmpPacket() {
    constexpr std::string_view kText =
        "<?xpacket begin=\"\" id=\"W5M0MpCehiHzreSzNTczkc9d\"?>"
        "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"><rdf:RDF "
        "xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\"><rdf:Description "
        "xmlns:tiff=\"http://ns.adobe.com/tiff/1.0/\" tiff:Orientation=\"6\" "
        "tiff:Artist=\"Grandma\"/></rdf:RDF></x:xmpmeta><?xpacket end=\"w\"?>";
    return Blob(kText.begin(), kText.end());
}

}  // namespace velloran::test
