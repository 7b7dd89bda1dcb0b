#include "documents/merge/MergeState.h"

#include <optional>

#include "documents/book/RowName.h"
#include "text/NumberText.h"
#include "text/Text.h"

namespace velloran {

namespace {

constexpr std::u16string_view kMain = u"Main";

struct TextKey {
    std::u16string_view name;
    std::u16string MergePara::*member;
};
constexpr TextKey kTextKeys[] = {
    {u"strSrc1", &MergePara::source1},
    {u"strSrc2", &MergePara::source2},
    {u"strTgt", &MergePara::target},
};

struct NumberKey {
    std::u16string_view name;
    std::int32_t MergePara::*member;
};
constexpr NumberKey kNumberKeys[] = {
    {u"SrcFile", &MergePara::sourceFiles},
    {u"TgtFile", &MergePara::targetFile},
    {u"TwoSrc", &MergePara::twoSources},
    {u"Layout", &MergePara::layout},
    {u"Align", &MergePara::align},
    {u"Size", &MergePara::size},
    {u"JpgQuality", &MergePara::jpegQuality},
    {u"Jp2Rate", &MergePara::jp2Rate},
    {u"Blank", &MergePara::blank},
    {u"DPI", &MergePara::dpi},
    {u"ShowBox", &MergePara::showBox},
    {u"FindContentBox", &MergePara::findContentBox},
    {u"RemoveBlackEdge", &MergePara::removeBlackEdge},
    {u"CbfSpeckleSize", &MergePara::speckleSize},
    {u"SpeckleCompensation", &MergePara::speckleCompensation},
    {u"BkMore", &MergePara::bkMore},
    {u"clrFill", &MergePara::fill},
};

struct JpegKey {
    std::u16string_view name;
    ParaIndex index;
};
constexpr JpegKey kJpegKeys[] = {
    {u"JpgResampleType", JPG_RESAMPLE_TYPE}, {u"JpgResample_H", JPG_RESAMPLE_H},
    {u"JpgResample_V", JPG_RESAMPLE_V},      {u"JpgSrcSample", JPG_SRC_SAMPLE},
    {u"JpgSrcQuality", JPG_SRC_QUALITY},     {u"JpgSrcCode", JPG_SRC_CODE},
    {u"JpgOptimize", JPG_OPTIMIZE},          {u"JpgProgressive", JPG_PROGRESSIVE},
};

/// The section of an item. Two files of one name may stand in the two folders: the second one's is
/// marked by what no name holds.
std::u16string SectionOf(const MergeItem& item) {
    return (item.folder == 0 ? u"" : u"2\\") + TextOfName(item.name);
}

/// The section that holds an item's values; empty for none.
std::u16string FindSection(const ProfileFile& profile, const MergeItem& item) {
    for (const std::u16string& section : {SectionOf(item), TextOfName(item.name)})
        if (!EqualIgnoringCase(section, kMain) && profile.HasSection(section))
            return section;
    return {};
}

}  // namespace

bool SetMergeKey(std::u16string_view key, std::u16string_view value, MergePara& para) {
    for (const TextKey& known : kTextKeys)
        if (EqualIgnoringCase(known.name, key)) {
            if (IsOneLine(value))
                para.*known.member = value;
            return IsOneLine(value);
        }
    const std::optional<std::int32_t> number = ParseInt32(ToUtf8(value));
    for (const NumberKey& known : kNumberKeys)
        if (EqualIgnoringCase(known.name, key)) {
            para.*known.member = number.value_or(para.*known.member);
            return number.has_value();
        }
    for (std::size_t i = 0; i < std::size(kJpegKeys); ++i)
        if (EqualIgnoringCase(kJpegKeys[i].name, key)) {
            para.jpeg[i] = number.value_or(para.jpeg[i]);
            return number.has_value();
        }
    return false;
}

std::vector<std::u16string> MergeKeys() {
    std::vector<std::u16string> names;
    for (const TextKey& key : kTextKeys)
        names.emplace_back(key.name);
    for (const NumberKey& key : kNumberKeys)
        names.emplace_back(key.name);
    for (const JpegKey& key : kJpegKeys)
        names.emplace_back(key.name);
    return names;
}

void ReadMergeOptions(const ProfileFile& profile, MergePara& para) {
    for (const TextKey& key : kTextKeys)
        if (const auto text = profile.GetString(kMain, key.name); text && !text->empty())
            para.*key.member = *text;
    for (const NumberKey& key : kNumberKeys)
        para.*key.member = profile.GetInt(kMain, key.name, para.*key.member);
    for (std::size_t i = 0; i < std::size(kJpegKeys); ++i)
        para.jpeg[i] = profile.GetInt(kMain, kJpegKeys[i].name, para.jpeg[i]);
}

void ReadMergeItems(const ProfileFile& profile, std::vector<MergeItem>& items) {
    for (MergeItem& item : items) {
        if (item.name.empty())
            return;
        const std::u16string section = FindSection(profile, item);
        if (section.empty())
            continue;
        item.offsetH = profile.GetInt(section, u"OffsetHorizontal", item.offsetH);
        item.offsetV = profile.GetInt(section, u"OffsetVertical", item.offsetV);
        item.scale = profile.GetInt(section, u"Scale", item.scale);
        item.deskewType = profile.GetInt(section, u"DeskewType", item.deskewType);
        item.deskewAngle = profile.GetInt(section, u"DeskewAngle", item.deskewAngle);
        item.checked = profile.GetInt(section, u"Checked", 1) != 0;
    }
}

void WriteMergeState(const MergeState& state, ProfileFile& profile) {
    for (const TextKey& key : kTextKeys)
        profile.SetString(kMain, key.name, state.para.*key.member);
    for (const NumberKey& key : kNumberKeys)
        profile.SetInt(kMain, key.name, state.para.*key.member);
    for (std::size_t i = 0; i < std::size(kJpegKeys); ++i)
        profile.SetInt(kMain, kJpegKeys[i].name, state.para.jpeg[i]);
    for (const MergeItem& item : state.items) {
        const std::u16string section = SectionOf(item);
        if (EqualIgnoringCase(section, kMain) || !IsOneLine(section))
            continue;
        const ProfileFile::KeyAndValue keys[] = {
            {u"OffsetHorizontal", DecimalText(item.offsetH)},
            {u"OffsetVertical", DecimalText(item.offsetV)},
            {u"Scale", DecimalText(item.scale)},
            {u"DeskewType", DecimalText(item.deskewType)},
            {u"DeskewAngle", DecimalText(item.deskewAngle)},
            {u"Checked", DecimalText(item.checked ? 1 : 0)},
        };
        profile.ReplaceSection(section, keys);
    }
}

void ApplyJpegOptions(const MergePara& para, Settings& base) {
    for (std::size_t i = 0; i < std::size(kJpegKeys); ++i)
        if (para.jpeg[i] >= 0)
            base.Set(kJpegKeys[i].index, para.jpeg[i]);
}

}  // namespace velloran
