// describe, params, info and detect: commands that write nothing but their answer.

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <nlohmann/json.hpp>

#include "RunProgram.h"
#include "support/SharedData.h"
#include "support/TempFolder.h"

namespace velloran::test {
namespace {

using Json = nlohmann::ordered_json;

std::vector<std::string> KeysOf(const Json& object) {
    std::vector<std::string> keys;
    for (const auto& [key, value] : object.items())
        keys.push_back(key);
    return keys;
}

TEST(Describe, EndsItsLinesInLineFeedsAlone) {
    const Outcome outcome = RunProgram({"describe", "-s", "PARA_CONTRAST=120"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out.find('\r'), std::string::npos);
    EXPECT_EQ(LinesOf(outcome.out).front(), "对比度: 120");
    EXPECT_EQ(outcome.out.back(), '\n');
}

TEST(Describe, LaterOptionsWin) {
    const Outcome outcome =
        RunProgram({"describe", "-s", "PARA_GAMMA=1", "--set", "PARA_GAMMA=130"});
    EXPECT_EQ(LinesOf(outcome.out).front(), "Gamma校正: 130");
}

TEST(Describe, CropSummaryIsOneLine) {
    const Outcome outcome = RunProgram({"describe", "--crop-summary", "-s",
                                        "PARA_CROPPING_P_LEFT=15", "-s", "PARA_FIND_CNT_BOX=1"});
    EXPECT_EQ(outcome.out, "左1.5%, 自动裁边\n");
}

bool IsAscii(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](unsigned char c) { return c < 0x80; });
}

TEST(Describe, SpeaksEnglishWhenAsked) {
    std::vector<std::string> words = {"describe", "--lang", "en"};
    for (const char* set :
         {"PARA_CONTRAST=120", "PARA_ROATE=1", "PARA_COLOR=7", "PARA_DESKEW=4", "PARA_SHARPEN=3",
          "PARA_AUTO_LEVELS=9", "PARA_LUM_CORRECT=2", "PARA_PAGE_SIZE=3", "PARA_FIND_CNT_BOX=1",
          "PARA_ERODE=2", "PARA_USM_TIMES=1", "JPG_PROGRESSIVE=0", "PARA_ADJUST_UNSHADOW=-10"})
        words.insert(words.end(), {"-s", set});
    const Outcome outcome = RunProgram(words);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_TRUE(IsAscii(outcome.out)) << outcome.out;
    EXPECT_NE(outcome.out.find("Contrast: 120\n"), std::string::npos) << outcome.out;
    EXPECT_EQ(LinesOf(outcome.out).front(), "Rotate left");
    EXPECT_NE(outcome.out.find("Colors: Black and white, Threshold by: Otsu\n"), std::string::npos)
        << outcome.out;
}

TEST(Params, SpeakEnglishWhenAsked) {
    for (const char* form : {"--verbose", "--json"}) {
        const std::string out = RunProgram({"params", "--lang", "en", form}).out;
        EXPECT_TRUE(IsAscii(out)) << out;
        EXPECT_NE(out.find("Illumination correction"), std::string::npos);
    }
}

TEST(Params, ListsAll134InOrder) {
    const std::vector<std::string> lines = LinesOf(RunProgram({"params"}).out);
    ASSERT_EQ(lines.size(), 134U);
    EXPECT_EQ(lines[0].substr(0, 28), "0\tPARA_BRIGHTNESS\t100\t0..200");
    EXPECT_EQ(lines[133].substr(0, 26), "133\tJPG_PROGRESSIVE\t1\t0..1");
}

TEST(Params, NumberTheTextsOfTheirLists) {
    const std::vector<std::string> lines = LinesOf(RunProgram({"params"}).out);
    EXPECT_EQ(lines.at(62), "62\tPARA_PAGE_SIZE_UNIT\t0\t0=厘米, 1=像素\t页面尺寸单位");
}

TEST(Params, JsonBeginsWithTheSevenKeys) {
    const Json all = Json::parse(RunProgram({"params", "--json"}).out);
    ASSERT_EQ(all.size(), 134U);
    const std::vector<std::string> keys = {"index", "name", "default", "min",
                                           "max",   "list", "meaning"};
    for (const Json& row : all) {
        std::vector<std::string> first = KeysOf(row);
        first.resize(keys.size());
        EXPECT_EQ(first, keys);
    }
    EXPECT_EQ(all[6]["name"], "PARA_QUALITY");
    EXPECT_EQ(all[6]["default"], 70);
    EXPECT_EQ(all[6]["min"], 10);
    EXPECT_EQ(all[6]["max"], 100);
    EXPECT_TRUE(all[6]["list"].is_null());
    EXPECT_EQ(all[96]["default"], -1);
    EXPECT_TRUE(all[96]["min"].is_null());
    EXPECT_EQ(all[48]["list"], Json({"(无)", "左旋", "右旋", "颠倒", "镜像", "翻转"}));
    EXPECT_FALSE(all[48]["meaning"].get<std::string>().empty());
}

TEST(Params, JsonTellsWhatValuesMean) {
    const Json all = Json::parse(RunProgram({"params", "--json"}).out);
    ASSERT_EQ(all.size(), 134U);
    const Json& radius = all[47];
    EXPECT_EQ(radius["name"], "PARA_USM_RADIUS");
    EXPECT_EQ(radius["kind"], "number");
    EXPECT_EQ(radius["tab"], "image");
    EXPECT_EQ(radius["tabPlace"], 39);
    EXPECT_EQ(radius["group"], "usm");
    EXPECT_EQ(radius["unit"], "pixels");
    EXPECT_EQ(radius["scale"], (Json{{"factor", 1}, {"offset", 0}, {"divisor", 10}}));
    EXPECT_TRUE(radius["neutral"].is_null());
    EXPECT_EQ(radius["enabledWhen"]["parameter"], "PARA_USM_TIMES");
    EXPECT_EQ(radius["enabledWhen"]["values"], Json::parse("[[1, 2147483647]]"));
    EXPECT_TRUE(radius["steps"].empty());
    const Json& split = all[122];
    EXPECT_EQ(split["kind"], "packed");
    EXPECT_EQ(split["fields"][0]["name"], "kind");
    EXPECT_EQ(split["fields"][0]["list"], Json({"无分页", "单页", "双页右翻", "双页左翻"}));
    EXPECT_EQ(split["fields"][1]["shift"], 8);
    EXPECT_EQ(all[74]["steps"], Json::parse(R"([{"step": 4, "from": 1, "to": 4}])"));
    EXPECT_EQ(all[0]["neutral"], 100);
    EXPECT_TRUE(all[12]["tab"].is_null());
    EXPECT_EQ(all[12]["group"], "batch");
}

TEST(Info, TellsNineFieldsALine) {
    const TempFolder folder;
    WritePage(folder / "a.png", 40, 30);
    const Outcome outcome = RunProgram({"info", "a.png"}, {.folder = folder.Path()});
    EXPECT_EQ(outcome.status, 0);
    const std::string& line = outcome.out;
    EXPECT_EQ(line.substr(0, line.find("\t8\t")), "a.png\t5\tPNG\t40\t30");
    EXPECT_EQ(std::count(line.begin(), line.end(), '\t'), 8);
    EXPECT_EQ(line.substr(line.size() - 7), "\t96\t96\n");
}

TEST(Info, JsonHasItsKeysInTheirOrder) {
    const TempFolder folder;
    WritePage(folder / "grey.bmp", 17, 5);
    WritePage(folder / "colour.jpg", 16, 8, /*color=*/true);
    WriteAll(folder / "broken.png", "\x89PNG\r\n");
    const Outcome outcome = RunProgram({"info", "--json", "grey.bmp", "colour.jpg", "broken.png"},
                                       {.folder = folder.Path()});
    EXPECT_EQ(outcome.status, 1);
    const Json all = Json::parse(outcome.out);
    ASSERT_EQ(all.size(), 3U);
    const std::vector<std::string> keys = {"path",  "type",    "typeName", "width", "height",
                                           "bpp",   "colours", "xDpi",     "yDpi",  "grey",
                                           "error", "pages",   "profile",  "exif",  "xmp"};
    for (const Json& file : all)
        EXPECT_EQ(KeysOf(file), keys);
    EXPECT_EQ(all[0]["type"], 4);
    EXPECT_EQ(all[0]["width"], 17);
    EXPECT_EQ(all[0]["height"], 5);
    EXPECT_EQ(all[0]["bpp"], 8);
    EXPECT_EQ(all[0]["colours"], 256);
    EXPECT_EQ(all[0]["grey"], true);
    EXPECT_TRUE(all[0]["error"].is_null());
    EXPECT_EQ(all[1]["bpp"], 24);
    EXPECT_EQ(all[1]["colours"], 0);
    EXPECT_EQ(all[1]["grey"], false);
    EXPECT_EQ(all[2]["error"], "文件读取失败。");
    EXPECT_EQ(outcome.err, "broken.png: 文件读取失败。 (文件损坏)\n");
}

/// A photograph with EXIF that was taken with the camera on its side.
std::filesystem::path Photo() {
    return SharedData() / "photos/boston_cooking_a.jpg";
}

TEST(Info, JsonTellsProfileExifAndXmp) {
    if (SharedData().empty())
        GTEST_SKIP();
    const TempFolder folder;
    WritePage(folder / "plain.png", 17, 5);
    const std::filesystem::path photo = Photo();
    const Outcome outcome =
        RunProgram({"info", "--json", photo.native(), "plain.png"}, {.folder = folder.Path()});
    const Json all = Json::parse(outcome.out);
    EXPECT_EQ(all[0]["exif"], true);
    EXPECT_EQ(all[0]["xmp"], false);
    EXPECT_EQ(all[0]["profile"], nullptr);
    EXPECT_EQ(all[0]["pages"], 1);
    EXPECT_EQ(all[1]["exif"], false);
}

TEST(Enhance, CarriesExifUnlessItIsStripped) {
    if (SharedData().empty())
        GTEST_SKIP();
    const TempFolder folder;
    const std::filesystem::path photo = Photo();
    for (const char* type : {"jpg", "png", "tif", "webp", "jp2"}) {
        const std::string kept = std::string("kept.") + type, bare = std::string("bare.") + type;
        ASSERT_EQ(RunProgram({"enhance", photo.native(), kept}, {.folder = folder.Path()}).status,
                  0);
        ASSERT_EQ(
            RunProgram({"enhance", photo.native(), bare, "--strip"}, {.folder = folder.Path()})
                .status,
            0);
        const Json all =
            Json::parse(RunProgram({"info", "--json", kept, bare}, {.folder = folder.Path()}).out);
        EXPECT_EQ(all[0]["exif"], true) << type;
        EXPECT_EQ(all[0]["width"], 2448) << type;  // upright, whatever reads it
        EXPECT_EQ(all[0]["height"], 3264) << type;
        EXPECT_EQ(all[1]["exif"], false) << type;
    }
}

TEST(BatchOfPhotos, StripLeavesEverythingThatTravelsBehind) {
    if (SharedData().empty())
        GTEST_SKIP();
    const TempFolder folder;
    std::filesystem::create_directory(folder / "in");
    std::filesystem::create_symlink(Photo(), folder / "in" / "a.jpg");
    for (const bool strip : {false, true}) {
        std::vector<std::string> words = {"batch", "in", strip ? "bare" : "kept", "--ext", "png"};
        if (strip)
            words.emplace_back("--strip");
        ASSERT_EQ(RunProgram(words, {.folder = folder.Path()}).status, 0);
    }
    const Json all = Json::parse(
        RunProgram({"info", "--json", "kept/a.png", "bare/a.png"}, {.folder = folder.Path()}).out);
    EXPECT_EQ(all[0]["exif"], true);
    EXPECT_EQ(all[1]["exif"], false);
}

TEST(Detect, PageSaysWhatTheSnifferSays) {
    const TempFolder folder;
    WritePage(folder / "a.png", 17, 5);
    WriteAll(folder / "b", "%PDF-1.4");
    WriteAll(folder / "c", "HH\x01");
    const Outcome outcome =
        RunProgram({"detect", "--page", "a.png", "b", "c"}, {.folder = folder.Path()});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, "259\t2\t0\ta.png\n258\t2\t6\tb\n0\t0\t-1\tc\n");
    EXPECT_EQ(RunProgram({"detect", "--page", "--by-name", "a.png"}).status, 2);
}

TEST(Enhance, APdfIsRefusedInTheSystemsWords) {
    const TempFolder folder;
    WriteAll(folder / "a.pdf", "%PDF-1.4 and more");
    const Outcome outcome = RunProgram({"enhance", "a.pdf", "b.png"}, {.folder = folder.Path()});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.err.find("文件包含PDF内容"), std::string::npos) << outcome.err;
}

TEST(Info, EachUnreadableFileIsNamedAndTheOthersAreTold) {
    const TempFolder folder;
    WritePage(folder / "a.png");
    WriteAll(folder / "empty.png", "");
    std::filesystem::create_directory(folder / "folder.png");
    const Outcome outcome = RunProgram({"info", "missing.png", "empty.png", "folder.png", "a.png"},
                                       {.folder = folder.Path()});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(LinesOf(outcome.out).size(), 1U);
    EXPECT_EQ(
        outcome.err,
        "missing.png: 文件读取失败。 (没有这个文件或文件夹)\nempty.png: 文件读取失败。 (空文件)\n"
        "folder.png: 文件读取失败。 (是文件夹)\n");
}

TEST(Info, PathsThatAreNoTextPass) {
    const TempFolder folder;
    WritePage(folder / "a.png");
    const std::string name = "b\xFF\xFE \n\".png";
    std::filesystem::rename(folder / "a.png", folder / name);
    const Outcome plain = RunProgram({"info", name}, {.folder = folder.Path()});
    EXPECT_EQ(plain.status, 0);
    EXPECT_EQ(plain.out.substr(0, name.size()), name);
    const Json all =
        Json::parse(RunProgram({"info", "--json", name}, {.folder = folder.Path()}).out);
    EXPECT_EQ(all[0]["path"], "b\uFFFD\uFFFD \n\".png");
    EXPECT_EQ(all[0]["pathBytes"], "b%FF%FE %0A\".png");
    WritePage(folder / "c.png");
    const Json text =
        Json::parse(RunProgram({"info", "--json", "c.png"}, {.folder = folder.Path()}).out);
    EXPECT_FALSE(text[0].contains("pathBytes"));
}

TEST(InfoSlow, AThousandFilesTakeTwoSeconds) {
    const TempFolder folder;
    std::vector<std::string> arguments = {"info"};
    WritePage(folder / "0.png");
    for (int i = 1; i < 1000; ++i)
        std::filesystem::copy_file(folder / "0.png", folder / (std::to_string(i) + ".png"));
    for (int i = 0; i < 1000; ++i)
        arguments.push_back(std::to_string(i) + ".png");
    const auto start = std::chrono::steady_clock::now();
    const Outcome outcome = RunProgram(arguments, {.folder = folder.Path()});
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
    EXPECT_EQ(LinesOf(outcome.out).size(), 1000U);
}

TEST(Detect, GoesByContentThenByName) {
    const TempFolder folder;
    WritePage(folder / "a.png");
    std::filesystem::rename(folder / "a.png", folder / "a.jpg");
    EXPECT_EQ(RunProgram({"detect", "a.jpg"}, {.folder = folder.Path()}).out, "5\ta.jpg\n");
    EXPECT_EQ(RunProgram({"detect", "--by-name", "a.jpg"}, {.folder = folder.Path()}).out,
              "1\ta.jpg\n");
}

TEST(Detect, AFileThatCannotBeOpenedIsKnownByItsName) {
    const TempFolder folder;
    const Outcome outcome =
        RunProgram({"detect", "gone.png", "gone.xyz"}, {.folder = folder.Path()});
    EXPECT_EQ(outcome.out, "5\tgone.png\n0\tgone.xyz\n");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err,
              "gone.png: 打开失败 (没有这个文件或文件夹)\n"
              "gone.xyz: 打开失败 (没有这个文件或文件夹)\n");
    EXPECT_EQ(RunProgram({"detect", "--by-name", "gone.png"}).status, 0);
}

}  // namespace
}  // namespace velloran::test
