#include "codecs/ColorProfile.h"

#include <lcms2.h>

#include <type_traits>

#include "codecs/Cmyk.h"
#include "codecs/Metadata.h"
#include "text/Text.h"

namespace velloran {
namespace {

struct ProfileDeleter {
    void operator()(void* profile) const { cmsCloseProfile(profile); }
};
using Profile = std::unique_ptr<void, ProfileDeleter>;
struct ContextDeleter {
    void operator()(cmsContext context) const { cmsDeleteContext(context); }
};
using Context = std::unique_ptr<std::remove_pointer_t<cmsContext>, ContextDeleter>;

Profile Open(cmsContext context, std::span<const std::uint8_t> bytes) {
    return Profile(cmsOpenProfileFromMemTHR(context, bytes.data(),
                                            static_cast<cmsUInt32Number>(bytes.size())));
}

}  // namespace

std::string ProfileDescription(std::span<const std::uint8_t> profile) {
    const Context context(cmsCreateContext(nullptr, nullptr));
    const Profile opened = Open(context.get(), profile);
    if (opened == nullptr)
        return {};
    constexpr std::size_t kMost = 256;
    wchar_t text[kMost] = L"";
    cmsGetProfileInfo(opened.get(), cmsInfoDescription, "en", "US", text, sizeof text);
    std::u32string characters;
    for (std::size_t i = 0; i < kMost && text[i] != 0; ++i)
        characters += static_cast<char32_t>(text[i]);
    std::u16string units;
    for (const char32_t c : characters)
        if (c > 0xFFFF && c <= 0x10FFFF) {
            units += static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
            units += static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
        } else {
            units += static_cast<char16_t>(c);
        }
    return ToUtf8(units);
}

InkConverter::InkConverter(std::span<const std::uint8_t> profile, bool invert) : invert_(invert) {
    if (KindOfProfile(profile) != ProfileKind::kCmyk)
        return;
    const Profile inks = Open(nullptr, profile);
    const Profile screen(cmsCreate_sRGBProfile());
    if (inks == nullptr || screen == nullptr)
        return;
    transform_ = cmsCreateTransform(inks.get(), invert ? TYPE_CMYK_8_REV : TYPE_CMYK_8,
                                    screen.get(), TYPE_BGR_8, INTENT_PERCEPTUAL, cmsFLAGS_NOCACHE);
}

InkConverter::~InkConverter() {
    if (transform_ != nullptr)
        cmsDeleteTransform(transform_);
}

void InkConverter::ConvertRow(const std::uint8_t* cmyk, std::uint8_t* bgr, int width) const {
    if (transform_ != nullptr)
        cmsDoTransform(transform_, cmyk, bgr, static_cast<cmsUInt32Number>(width));
    else
        ConvertCmykRow(cmyk, bgr, width, invert_);
}

}  // namespace velloran
