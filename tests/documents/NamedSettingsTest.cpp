// Named sets of parameters, with the questions that they ask.

#include "documents/settings/NamedSettings.h"

#include <gtest/gtest.h>

#include "support/ScriptedAsker.h"
#include "support/TempFolder.h"

namespace velloran::test {
namespace {

using End = SettingsOutcome::End;

class NamedSettings : public testing::Test {
 protected:
    SettingsStore Store() const { return SettingsStore(folder_ / "store.ini"); }
    static Settings With(ParaIndex index, std::int32_t value) {
        Settings settings;
        settings.Set(index, value);
        return settings;
    }
    End Save(std::u16string_view name, const Settings& settings, ScriptedAsker& asker) const {
        return SaveNamedSetting(Store(), name, settings, /*takeAll=*/false, asker).end;
    }
    std::vector<std::u16string> Names() const {
        std::vector<std::u16string> names;
        EXPECT_TRUE(ListNamedSettings(Store(), names, nullptr));
        return names;
    }

    TempFolder folder_;
};

TEST_F(NamedSettings, ANameOfBlanksCountsAsEmpty) {
    ScriptedAsker asker;
    const SettingsOutcome outcome = SaveNamedSetting(Store(), u" \t\u3000 ", {}, true, asker);
    EXPECT_EQ(outcome.end, End::kRefused);
    EXPECT_EQ(ToUtf8(outcome.message), "请输入有效的设置名称。");
    EXPECT_FALSE(std::filesystem::exists(folder_ / "store.ini"));
}

TEST_F(NamedSettings, ANameThatCannotHeadASectionIsRefused) {
    ScriptedAsker asker;
    EXPECT_EQ(Save(u"a]b", With(PARA_CONTRAST, 120), asker), End::kRefused);
    EXPECT_EQ(Save(u"a\nb", With(PARA_CONTRAST, 120), asker), End::kRefused);
}

TEST_F(NamedSettings, AskBeforeReplacingOnlyWhereTheStoredBrightnessIsNoDefault) {
    ScriptedAsker asker;
    EXPECT_EQ(Save(u"a", With(PARA_CONTRAST, 120), asker), End::kDone);
    EXPECT_EQ(Save(u"a", With(PARA_BRIGHTNESS, 90), asker), End::kDone);
    EXPECT_TRUE(asker.questions.empty());
    EXPECT_EQ(Save(u" a ", With(PARA_CONTRAST, 130), asker), End::kDeclined);
    ASSERT_EQ(asker.questions.size(), 1U);
    EXPECT_EQ(asker.questions[0], "在磁盘中有同名的设置存在，您想覆盖吗？");
    EXPECT_EQ(ReadNamedSetting(Store(), u"a", true).settings[PARA_BRIGHTNESS], 90);
    ScriptedAsker willing({ScriptedAsker::kYesAnswer});
    EXPECT_EQ(Save(u"a", With(PARA_CONTRAST, 130), willing), End::kDone);
    EXPECT_EQ(ReadNamedSetting(Store(), u"a", true).settings[PARA_BRIGHTNESS], 100);
    EXPECT_EQ(ReadNamedSetting(Store(), u"a", true).settings[PARA_CONTRAST], 130);
}

TEST_F(NamedSettings, ReadWithoutThePageKeepTheRotationAlone) {
    ScriptedAsker asker;
    Settings settings;
    settings.Set(PARA_ROATE, 2);
    settings.Set(PARA_CRT_TYPE, 2);
    settings.Set(PARA_CRT_PT_LT, 77);
    settings.Set(PARA_PAGE_SPLIT_TYPE, 258);
    settings.Set(PARA_PAGE_SPLIT_MID, 500);
    settings.Set(PARA_CONTRAST, 120);
    ASSERT_EQ(Save(u"a", settings, asker), End::kDone);
    const Settings read = ReadNamedSetting(Store(), u"a", /*takeAll=*/false).settings;
    EXPECT_EQ(read[PARA_ROATE], 2);
    EXPECT_EQ(read[PARA_CRT_TYPE], 0);
    EXPECT_EQ(read[PARA_CRT_PT_LT], 0);
    EXPECT_EQ(read[PARA_PAGE_SPLIT_TYPE], 0);
    EXPECT_EQ(read[PARA_PAGE_SPLIT_MID], 0);
    EXPECT_EQ(read[PARA_CONTRAST], 120);
    EXPECT_EQ(read.name, u"a");
    Settings whole = ReadNamedSetting(Store(), u"a", /*takeAll=*/true).settings;
    whole.name.clear();
    EXPECT_EQ(whole, settings);
}

TEST_F(NamedSettings, DeletedGiveWayToTheFirstThatRemains) {
    ScriptedAsker asker;
    Save(u"one", With(PARA_CONTRAST, 110), asker);
    Save(u"two", With(PARA_CONTRAST, 120), asker);
    EXPECT_EQ(DeleteNamedSetting(Store(), u"one", asker).end, End::kDeclined);
    EXPECT_EQ(asker.questions.back(), "您真的想从磁盘记录中删除当前设置吗？");
    ScriptedAsker willing({ScriptedAsker::kYesAnswer, ScriptedAsker::kYesAnswer});
    const SettingsOutcome outcome = DeleteNamedSetting(Store(), u"one", willing);
    EXPECT_EQ(outcome.end, End::kDone);
    EXPECT_EQ(outcome.selected, u"two");
    EXPECT_EQ(outcome.settings[PARA_CONTRAST], 120);
    EXPECT_EQ(DeleteNamedSetting(Store(), u"two", willing).settings, Settings());
    EXPECT_TRUE(Names().empty());
    EXPECT_EQ(DeleteNamedSetting(Store(), u"  ", willing).end, End::kRefused);
}

TEST_F(NamedSettings, KeepWhatElseTheStoreHolds) {
    WriteAll(folder_ / "store.ini", "; mine\r\n[other]\r\nPARA_GAMMA=90\r\nunknown=x\r\n");
    ScriptedAsker asker;
    ASSERT_EQ(Save(u"new", With(PARA_CONTRAST, 120), asker), End::kDone);
    EXPECT_EQ(
        ReadAll(folder_ / "store.ini"),
        "; mine\r\n[other]\r\nPARA_GAMMA=90\r\nunknown=x\r\n\r\n[new]\r\nPARA_CONTRAST=120\r\n");
}

TEST_F(NamedSettings, OfTheStoreOfBeforeAreTakenAlong) {
    const SettingsStore store(folder_ / "new.ini", folder_ / "old.ini");
    WriteAll(folder_ / "old.ini", "[kept]\nPARA_GAMMA=90\n");
    ScriptedAsker asker;
    ASSERT_EQ(SaveNamedSetting(store, u"mine", With(PARA_CONTRAST, 120), true, asker).end,
              End::kDone);
    EXPECT_EQ(ReadAll(folder_ / "new.ini"), "[kept]\nPARA_GAMMA=90\n\n[mine]\nPARA_CONTRAST=120\n");
    EXPECT_EQ(ReadAll(folder_ / "old.ini"), "[kept]\nPARA_GAMMA=90\n");
}

TEST_F(NamedSettings, AStoreThatCannotBeWrittenIsNamed) {
    std::filesystem::create_directory(folder_ / "store.ini");
    ScriptedAsker asker;
    const SettingsOutcome outcome =
        SaveNamedSetting(Store(), u"a", With(PARA_CONTRAST, 120), true, asker);
    EXPECT_EQ(outcome.end, End::kFailed);
    EXPECT_EQ(outcome.path, folder_ / "store.ini");
}

}  // namespace
}  // namespace velloran::test
