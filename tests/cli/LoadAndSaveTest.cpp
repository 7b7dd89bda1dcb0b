// What of a source comes through to its target: transparency and resolution; the same for a picture
// and for a folder.

#include "BatchFolder.h"

namespace velloran::test {
namespace {

namespace fs = std::filesystem;

class LoadAndSave : public BatchFolder {
 protected:
    /// A page of one grey, transparent in its left half, where it hides black.
    void WriteTransparent(const fs::path& file, bool color, int width = 16) const {
        fs::create_directories(file.parent_path());
        CDibImage page = Filled(width, 16, color ? 24 : 8, 100);
        ASSERT_TRUE(page.CreateAlpha());
        for (int y = 0; y < 16; ++y)
            for (int x = 0; x < width / 2; ++x) {
                page.GetAlpha()[y * width + x] = 0;
                std::fill_n(page.GetBits(y) + x * (color ? 3 : 1), color ? 3 : 1, std::uint8_t{0});
            }
        // Colour in the other half, so that the page stays a page of colour.
        if (color)
            for (int y = 0; y < 16; ++y)
                page.GetBits(y)[3 * (width - 1)] = 250;
        ASSERT_TRUE(SaveImageFile(file, page, 100, 96, 2, false, CParaBlock()));
    }
    static void WriteTransparentGif(const fs::path& file) {
        fs::create_directories(file.parent_path());
        CDibImage page = Filled(16, 16, 8, 0);  // the first pixel's colour becomes transparent
        for (int y = 0; y < 16; ++y) {
            std::fill_n(page.GetBits(y) + 8, 7, std::uint8_t{100});
            page.GetBits(y)[15] = static_cast<std::uint8_t>(150 + y);  // no page of two levels
        }
        CParaBlock block;
        block.SetPara(PARA_DECREASE_TRANSPARENT, 1);
        ASSERT_TRUE(SaveImageFile(file, page, 100, 96, 2, false, block));
    }
    static CDibImage Loaded(const fs::path& file) {
        CDibImage page;
        EXPECT_TRUE(LoadImageFile(file, page)) << file;
        return page;
    }
    Outcome Enhance(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), "enhance");
        return RunProgram(arguments, {.folder = folder_.Path()});
    }
};

TEST_F(LoadAndSave, TransparentPagesLieOnWhiteWhereTheTargetHoldsNoTransparency) {
    for (const bool color : {false, true}) {
        WriteTransparent(Source() / "a.png", color);
        for (const std::string extension : {"jpg", "bmp", "gif"}) {
            ASSERT_EQ(Enhance({"src/a.png", "a." + extension}).status, 0);
            const CDibImage one = Loaded(folder_ / ("a." + extension));
            EXPECT_GT(PixelAt(one, 2, 8).red, 245) << extension << color;
            EXPECT_NEAR(PixelAt(one, 12, 8).red, 100, 8) << extension << color;
            ASSERT_EQ(Run({"src", "out", "--ext", extension}).status, 0);
            EXPECT_EQ(ReadAll(Target() / ("a." + extension)), ReadAll(folder_ / ("a." + extension)))
                << "a folder's pages are those of a single run";
        }
    }
}

TEST_F(LoadAndSave, TheFillColourIsTheOneOfTheSettings) {
    WriteTransparent(Source() / "a.png", /*color=*/true);
    ASSERT_EQ(Enhance({"src/a.png", "a.bmp", "-s", "PARA_FILL_BLANK_COLOR=0x000080FF"}).status, 0);
    const CDibImage page = Loaded(folder_ / "a.bmp");
    EXPECT_EQ(PixelAt(page, 2, 8).red, 0xFF);
    EXPECT_EQ(PixelAt(page, 2, 8).green, 0x80);
    EXPECT_EQ(PixelAt(page, 2, 8).blue, 0);
}

TEST_F(LoadAndSave, TransparencyStaysWhereTheTargetHoldsIt) {
    WriteTransparentGif(Source() / "g.gif");
    WriteTransparent(Source() / "p.png", /*color=*/true);
    for (const std::string source : {"g.gif", "p.png"})
        for (const std::string extension : {"png", "webp", "tif"}) {
            ASSERT_EQ(Enhance({"src/" + source, "a." + extension, "-s", "PARA_QUALITY=100"}).status,
                      0);
            const CDibImage page = Loaded(folder_ / ("a." + extension));
            ASSERT_NE(page.GetAlpha(), nullptr) << source << extension;
            EXPECT_EQ(page.GetAlpha()[8 * 16 + 2], 0) << source << extension;
            EXPECT_EQ(page.GetAlpha()[8 * 16 + 12], 255) << source << extension;
            EXPECT_EQ(PixelAt(page, 12, 8).red, 100) << source << extension;
        }
}

TEST_F(LoadAndSave, ATransparentGifIsNotBlackInJpegs) {
    WriteTransparentGif(Source() / "g.gif");
    ASSERT_EQ(Run({"src", "out"}).status, 0);
    EXPECT_GT(GrayOf(Target() / "g.jpg"), 245);
}

TEST_F(LoadAndSave, APageThatItsStepsMakeOpaqueLiesOnTheFillColour) {
    WriteTransparent(Source() / "a.png", /*color=*/true, 64);
    ASSERT_EQ(Enhance({"src/a.png", "a.png", "-s", "PARA_RESIZE=50"}).status, 0);
    const CDibImage page = Loaded(folder_ / "a.png");
    ASSERT_EQ(page.GetWidth(), 32);
    const bool isTransparent = page.GetAlpha() != nullptr && page.GetAlpha()[4 * 32 + 4] < 128;
    EXPECT_TRUE(isTransparent || PixelAt(page, 4, 4).red > 245);
}

TEST_F(LoadAndSave, KeepDpiGivesTheSourcesOwnResolution) {
    CDibImage page = Filled(16, 16, 8, 50);
    ASSERT_TRUE(SaveImageFile(Source() / "a.png", page, 90, 240, 2, false, CParaBlock()));
    WriteFlat(Source() / "none.gif", 50);  // a kind that tells none
    ASSERT_EQ(Run({"src", "out", "--ext", "png", "--keep-dpi", "-s", "PARA_DPI=300"}).status, 0);
    EXPECT_EQ(Loaded(Target() / "a.png").GetXDpi(), 240);
    EXPECT_EQ(Loaded(Target() / "none.png").GetXDpi(), 300);
    ASSERT_EQ(Run({"src", "out", "--ext", "png", "-s", "PARA_DPI=300"}).status, 0);
    EXPECT_EQ(Loaded(Target() / "a.png").GetXDpi(), 300);
    ASSERT_EQ(Enhance({"src/a.png", "b.png", "--keep-dpi"}).status, 0);
    EXPECT_EQ(Loaded(folder_ / "b.png").GetXDpi(), 240);
}

}  // namespace
}  // namespace velloran::test
