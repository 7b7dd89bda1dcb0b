#include "documents/book/PageSetting.h"

#include <algorithm>

#include "text/ProfileFile.h"

namespace velloran {

namespace {

constexpr std::u16string_view kSection = u"PageSetting";
constexpr int kLongestPeriod = 15, kLastRule = 2;

}  // namespace

PageSetting ReadPageSetting(const ProfileFile& profile) {
    const PageSetting usual;
    PageSetting setting;
    setting.autoSave = profile.GetInt(kSection, u"m_bAutoSave", usual.autoSave ? 1 : 0) != 0;
    setting.autoLoad = profile.GetInt(kSection, u"m_bAutoLoad", usual.autoLoad ? 1 : 0) != 0;
    setting.autoSavePeriod = std::clamp(
        profile.GetInt(kSection, u"m_iAutoSavePeriod", usual.autoSavePeriod), 0, kLongestPeriod);
    const int rule = profile.GetInt(kSection, u"m_eCrtAppType", 0);
    setting.geometry = static_cast<GeometryRule>(rule < 0 || rule > kLastRule ? 0 : rule);
    setting.source = profile.GetString(kSection, u"m_strSrc").value_or(u"");
    return setting;
}

void WritePageSetting(const PageSetting& setting, ProfileFile& profile) {
    profile.SetInt(kSection, u"m_bAutoSave", setting.autoSave ? 1 : 0);
    profile.SetInt(kSection, u"m_bAutoLoad", setting.autoLoad ? 1 : 0);
    profile.SetInt(kSection, u"m_iAutoSavePeriod", setting.autoSavePeriod);
    profile.SetInt(kSection, u"m_eCrtAppType", static_cast<int>(setting.geometry));
    profile.SetString(kSection, u"m_strSrc", setting.autoLoad ? setting.source : u"");
}

}  // namespace velloran
