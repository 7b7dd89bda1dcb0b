// velloran-contact-sheet: puts pictures side by side with captions.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <iostream>
#include <new>
#include <stdexcept>

#include "core/GrayDepth.h"
#include "files/ImageFiles.h"
#include "params/ParaBlock.h"
#include "samples/ContactSheet.h"
#include "text/Text.h"

namespace {

using namespace velloran;
using namespace velloran::samples;

struct Options {
    std::filesystem::path target;
    std::vector<std::string> pictures;
    std::vector<int> crop;  // left, top, width, height
    SheetLayout layout;
    int quality = 85;
};

void AddOptions(CLI::App& app, Options& options) {
    const auto positive = CLI::Range(1, 20000);
    app.add_option("TARGET", options.target, "The sheet; its extension chooses the format")
        ->required();
    app.add_option("CAPTION=FILE", options.pictures, "The pictures, row by row")->required();
    app.add_option("--columns", options.layout.columns, "Pictures a row")
        ->check(positive)
        ->capture_default_str();
    app.add_option("--cell-width", options.layout.cellWidth, "Larger pictures are shrunk")
        ->check(positive)
        ->capture_default_str();
    app.add_option("--cell-height", options.layout.cellHeight, "Larger pictures are shrunk")
        ->check(positive)
        ->capture_default_str();
    app.add_option("--crop", options.crop, "LEFT TOP WIDTH HEIGHT: shows this part of each picture")
        ->expected(4)
        ->allow_extra_args(false)
        ->check(CLI::Range(0, 1 << 20));
    app.add_option("--caption", options.layout.captionSize, "Size of the captions; 0: none")
        ->check(CLI::Range(0, 200))
        ->capture_default_str();
    app.add_option("--quality", options.quality, "Of a JPEG")
        ->check(CLI::Range(10, 100))
        ->capture_default_str();
}

/// Keeps the part of the page, as far as there is one.
void CropTo(const std::vector<int>& part, CDibImage& image) {
    // At 24 bits a cut falls on any column.
    if (ConvertToRgb(image) == 0)
        throw std::bad_alloc();
    const int right = std::max(0, image.GetWidth() - part[0] - part[2]);
    const int bottom = std::max(0, image.GetHeight() - part[1] - part[3]);
    if (!image.CropInPlace(part[0], part[1], right, bottom))
        throw std::invalid_argument("has no such part");
}

SheetPicture Load(const std::string& argument, const std::vector<int>& crop) {
    const std::size_t sign = argument.find('=');
    const std::string path = sign == std::string::npos ? argument : argument.substr(sign + 1);
    SheetPicture picture;
    if (sign != std::string::npos)
        picture.caption = ToUtf16(argument.substr(0, sign));
    try {
        if (!LoadImageFile(path, picture.image))
            throw std::runtime_error("cannot be read");
        if (!crop.empty())
            CropTo(crop, picture.image);
    } catch (const std::exception& error) {
        throw std::runtime_error(path + ": " + error.what());
    }
    return picture;
}

void WriteSheet(const Options& options) {
    std::vector<SheetPicture> pictures;
    for (const std::string& argument : options.pictures)
        pictures.push_back(Load(argument, options.crop));
    CDibImage sheet = MakeContactSheet(pictures, options.layout);
    constexpr int kDpi = 96, kTrueColor = 0;
    FileError error;
    if (!SaveImageFile(options.target, sheet, options.quality, kDpi, kTrueColor, /*cropGif=*/false,
                       CParaBlock(), &error))
        throw std::runtime_error(options.target.string() + ": cannot be written");
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app("Puts pictures side by side with captions.", "velloran-contact-sheet");
    Options options;
    AddOptions(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : 2;
    }
    try {
        WriteSheet(options);
    } catch (const std::exception& error) {
        std::cerr << error.what() << "\n";
        return 1;
    }
    return 0;
}
