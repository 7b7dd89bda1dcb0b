#include "samples/SampleFiles.h"

#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>

#include "codecs/FileForms.h"
#include "support/Images.h"
#include "support/TempFolder.h"

namespace velloran::samples {
namespace {

SampleSet SmallSet() {
    SampleSet set{.name = "all", .seed = 5, .width = 200, .height = 280, .dpi = 72};
    set.format = "png";
    return set;
}

TEST(SampleFiles, PictureTruthAndMaskStandBesideEachOther) {
    const test::TempFolder folder;
    SampleSet set = SmallSet();
    set.inkMasks = true;
    const SampleRequest request = RequestsOf(set)[1];
    WriteSample(set, request, 2, folder.Path());
    EXPECT_EQ(folder.AllNames(),
              (std::vector<std::string>{"002_text_chinese.json", "002_text_chinese.png",
                                        "002_text_chinese_ink.png"}));
    CDibImage image;
    ASSERT_TRUE(LoadPng(folder / "002_text_chinese.png", image));
    test::ExpectSamePixels(image, MakeSamplePage(request).image);
    EXPECT_EQ(image.GetXDpi(), 72);
}

TEST(SampleFiles, TruthOfEveryKindIsJsonWithTheSameKeys) {
    std::vector<std::string> firstKeys;
    for (const SampleRequest& request : RequestsOf(SmallSet())) {
        const auto json = nlohmann::json::parse(ToJson(MakeSamplePage(request).truth, "x.png"));
        std::vector<std::string> keys;
        for (const auto& [key, value] : json.items())
            keys.push_back(key);
        if (firstKeys.empty())
            firstKeys = keys;
        EXPECT_EQ(keys, firstKeys);
        EXPECT_EQ(json["image"], "x.png");
        EXPECT_EQ(json["width"], request.width);
        EXPECT_EQ(json["seed"], request.seed);
        EXPECT_EQ(json["pages"].size(), IsTwoPages(request.kind) ? 2U : 1U);
    }
}

TEST(SampleFiles, BilevelTiffKeepsItsDepth) {
    const test::TempFolder folder;
    SampleSet set = SmallSet();
    set.format = "tif";
    SampleRequest request = RequestsOf(set)[0];
    request.kind = PageKind::kBilevel;
    WriteSample(set, request, 1, folder.Path());
    CDibImage image;
    ASSERT_TRUE(LoadTiff(folder / "001_bilevel.tif", image));
    EXPECT_EQ(image.GetBpp(), 1);
    test::ExpectSamePixels(image, MakeSamplePage(request).image);
}

TEST(SampleFiles, AFolderThatIsNotThereIsAnErrorWithItsName) {
    const test::TempFolder folder;
    const SampleSet set = SmallSet();
    try {
        WriteSample(set, RequestsOf(set)[0], 1, folder / "missing");
        FAIL() << "nothing thrown";
    } catch (const std::runtime_error& error) {
        EXPECT_NE(std::string(error.what()).find("missing"), std::string::npos);
    }
}

}  // namespace
}  // namespace velloran::samples
