// Sources of which only a part can be read, or is: told, listed, and never replaced by their
// results.

#include <nlohmann/json.hpp>

#include "BatchFolder.h"

namespace velloran::test {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

class DamagedSources : public BatchFolder {
 protected:
    /// The first frame of a GIF twice.
    static void DoubleFrame(const fs::path& file) {
        const std::string bytes = ReadAll(file);
        const auto flags = static_cast<unsigned char>(bytes.at(10));
        const std::size_t frame = 13 + 3 * (std::size_t{2} << (flags & 7));
        const std::string body = bytes.substr(frame, bytes.size() - frame - 1);
        WriteAll(file, bytes.substr(0, frame) + body + body + ";");
    }
    static void CutHalf(const fs::path& file) {
        const std::string bytes = ReadAll(file);
        WriteAll(file, bytes.substr(0, bytes.size() / 2));
    }
    Outcome Enhance(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), "enhance");
        return RunProgram(arguments, {.folder = folder_.Path()});
    }
};

TEST_F(DamagedSources, ACutSourceIsConvertedWithAWarningAndListed) {
    for (const char* name : {"a.png", "b.jpg", "c.bmp", "d.tif", "e.webp", "f.gif"}) {
        WritePage(Source() / name, 200, 200, /*color=*/false);
        CutHalf(Source() / name);
    }
    const Outcome outcome = Run({"src", "out", "--json"});
    const Json report = Json::parse(outcome.out);
    // What cannot be read at all is named as failed; the others are damaged.
    EXPECT_EQ(report["damaged"].size() + report["failed"].size(), 6U) << outcome.out;
    EXPECT_GE(report["damaged"].size(), 4U) << outcome.out;
    for (const auto& path : report["damaged"])
        EXPECT_NE(outcome.err.find(path.get<std::string>() + ": 文件不完整或已损坏"),
                  std::string::npos)
            << path;
    const Outcome single = Enhance({"src/a.png", "a.jpg"});
    EXPECT_EQ(single.status, 0);
    EXPECT_NE(single.err.find("文件不完整或已损坏"), std::string::npos) << single.err;
}

TEST_F(DamagedSources, StrictCountsDamagedSourcesAsFailed) {
    WritePage(Source() / "a.png", 200, 200);
    CutHalf(Source() / "a.png");
    const Outcome outcome = Run({"src", "out", "--strict"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(FilesIn(Target()).empty());
    EXPECT_EQ(ReadAll(folder_ / "log.txt"), RunLogOf("src/a.png\t\t文件损坏\r\n"));
}

TEST_F(DamagedSources, ADamagedSourceIsNeverReplacedByItsResult) {
    WritePage(Source() / "a.png", 200, 200);
    CutHalf(Source() / "a.png");
    const std::string before = ReadAll(Source() / "a.png");
    EXPECT_EQ(Run({"src", "src", "--yes", "--ext", "png"}).status, 1);
    EXPECT_EQ(ReadAll(Source() / "a.png"), before);
    EXPECT_EQ(Enhance({"src/a.png", "src/a.png"}).status, 1);
    EXPECT_EQ(ReadAll(Source() / "a.png"), before);
}

TEST_F(DamagedSources, OfSeveralPicturesTheFirstIsConvertedWithAWarningAndNeverInPlace) {
    WriteFlat(Source() / "a.gif", 50);
    DoubleFrame(Source() / "a.gif");
    const Outcome outcome = Run({"src", "out", "--ext", "gif"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_NE(outcome.err.find("src/a.gif: 文件含有2幅图像"), std::string::npos) << outcome.err;
    const std::string before = ReadAll(Source() / "a.gif");
    EXPECT_EQ(Run({"src", "src", "--yes", "--ext", "gif"}).status, 1);
    EXPECT_EQ(Enhance({"src/a.gif", "src/a.gif"}).status, 1);
    EXPECT_EQ(ReadAll(Source() / "a.gif"), before);
}

}  // namespace
}  // namespace velloran::test
