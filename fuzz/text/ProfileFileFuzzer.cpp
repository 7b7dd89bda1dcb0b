// Any bytes as a profile file: what is not changed is written back byte for byte, what is read
// reads the same from the bytes written, and a changed value stands where it was put.

#include "text/ProfileFile.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "params/ParaTable.h"
#include "text/Text.h"
#include "text/TextEncoding.h"

namespace {

using namespace velloran;

void Require(bool holds) {
    if (!holds)
        std::abort();
}

/// Keys of the parameters, read from every section.
void Query(const ProfileFile& profile, const ProfileFile& again) {
    Require(profile.SectionNames() == again.SectionNames());
    int sections = 0;
    for (const std::u16string& section : profile.SectionNames()) {
        Require(profile.HasSection(section));
        Require(profile.HasKeys(section) == again.HasKeys(section));
        for (const int index : {PARA_BRIGHTNESS, PARA_COLOR, PARA_DPI}) {
            const std::u16string key = ToUtf16(ParaRowOf(index).name);
            Require(profile.GetString(section, key) == again.GetString(section, key));
            Require(profile.GetInt(section, key, -7) == again.GetInt(section, key, -7));
        }
        if (++sections == 20)
            return;
    }
}

/// Writes a key into the first section, or a new one, and deletes it again.
void Change(ProfileFile& profile, TextEncoding encoding) {
    const std::vector<std::u16string> names = profile.SectionNames();
    const std::u16string section = names.empty() ? u"s" : names.front();
    profile.SetInt(section, u"PARA_DPI", 600);
    Require(profile.GetInt(section, u"para_dpi", 0) == 600);
    const std::string bytes = profile.ToBytes();
    // With the key the bytes may look like another encoding only where they held no mark.
    if (DetectTextEncoding(bytes) == encoding) {
        ProfileFile again;
        again.Parse(bytes);
        Require(again.GetInt(section, u"PARA_DPI", 0) == 600);
        Require(again.ToBytes() == bytes);
    }
    profile.DeleteKey(section, u"PARA_DPI");
    Require(profile.GetString(section, u"PARA_DPI") == std::nullopt);
    profile.DeleteSection(section);
    Require(!profile.HasSection(section));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    ProfileFile profile;
    profile.Parse(bytes);
    Require(profile.ToBytes() == bytes);
    ProfileFile again;
    again.Parse(profile.ToBytes());
    Query(profile, again);
    Change(profile, DetectTextEncoding(bytes));
    return 0;
}
