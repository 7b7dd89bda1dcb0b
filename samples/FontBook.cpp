#include "samples/FontBook.h"

#include <ft2build.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include FT_FREETYPE_H
#include FT_OUTLINE_H

namespace velloran::samples {

namespace {

struct FontPlace {
    const char* file;     // below a folder of fonts
    const char* package;  // Debian package
    /// How far ink spreads on paper, in shares of the font size: a light font needs it to look
    /// printed.
    double inkGain = 0;
};
constexpr FontPlace kFontPlaces[kFontCount] = {
    {"liberation/LiberationSerif-Regular.ttf", "fonts-liberation"},
    {"liberation/LiberationSerif-Bold.ttf", "fonts-liberation"},
    {"liberation/LiberationSans-Bold.ttf", "fonts-liberation"},
    {"arphic/uming.ttc", "fonts-arphic-uming", 0.026},
    {"wqy/wqy-microhei.ttc", "fonts-wqy-microhei"},
};

std::filesystem::path FindFont(const FontPlace& place) {
    std::vector<std::filesystem::path> folders = {
        "/usr/share/fonts/truetype", "/usr/local/share/fonts/truetype", "/usr/share/fonts"};
    if (const char* own = std::getenv("VELLORAN_FONTS"))
        folders.insert(folders.begin(), own);
    for (const auto& folder : folders) {
        std::error_code ignored;
        if (std::filesystem::exists(folder / place.file, ignored))
            return folder / place.file;
    }
    throw FontMissing(std::string("font ") + place.file +
                      " not found: install the Debian package " + place.package +
                      ", or name a folder of fonts in VELLORAN_FONTS");
}

// Collects an outline; curves become chords of a two-thousandth of the font size or less off.
struct OutlineReader {
    Path path;
    double unitsPerEm;

    Point At(const FT_Vector* v) const { return {v->x / unitsPerEm, -v->y / unitsPerEm}; }
    Point Last() const { return path.contours.back().back(); }
    void LineTo(Point to) { path.contours.back().push_back(to); }

    void QuadraticTo(Point control, Point to) {
        const Point from = Last();
        const double bend = Length(from - control * 2 + to) / 4;
        const int steps = 1 + static_cast<int>(std::sqrt(bend / 0.0005));
        for (int i = 1; i <= steps; ++i) {
            const double t = static_cast<double>(i) / steps;
            LineTo(samples::Blend(samples::Blend(from, control, t), samples::Blend(control, to, t),
                                  t));
        }
    }
    void CubicTo(Point a, Point b, Point to) {
        constexpr int kSteps = 8;
        const Point from = Last();
        for (int i = 1; i <= kSteps; ++i) {
            const double t = static_cast<double>(i) / kSteps, u = 1 - t;
            LineTo(from * (u * u * u) + a * (3 * u * u * t) + b * (3 * u * t * t) +
                   to * (t * t * t));
        }
    }
};

OutlineReader& ReaderOf(void* user) {
    return *static_cast<OutlineReader*>(user);
}

Path ReadOutline(FT_Outline& outline, double unitsPerEm) {
    OutlineReader reader{{}, unitsPerEm};
    FT_Outline_Funcs functions{};
    functions.move_to = [](const FT_Vector* to, void* user) {
        ReaderOf(user).path.Add({ReaderOf(user).At(to)});
        return 0;
    };
    functions.line_to = [](const FT_Vector* to, void* user) {
        ReaderOf(user).LineTo(ReaderOf(user).At(to));
        return 0;
    };
    functions.conic_to = [](const FT_Vector* control, const FT_Vector* to, void* user) {
        ReaderOf(user).QuadraticTo(ReaderOf(user).At(control), ReaderOf(user).At(to));
        return 0;
    };
    functions.cubic_to = [](const FT_Vector* a, const FT_Vector* b, const FT_Vector* to,
                            void* user) {
        ReaderOf(user).CubicTo(ReaderOf(user).At(a), ReaderOf(user).At(b), ReaderOf(user).At(to));
        return 0;
    };
    FT_Outline_Decompose(&outline, &functions, &reader);
    return std::move(reader.path);
}

}  // namespace

struct FontBook::Faces {
    FT_Library library = nullptr;
    std::array<FT_Face, kFontCount> faces{};

    Faces() {
        if (FT_Init_FreeType(&library) != 0)
            throw FontMissing("FreeType could not be started");
    }
    ~Faces() { FT_Done_FreeType(library); }  // frees the faces, too
    Faces(const Faces&) = delete;
    Faces& operator=(const Faces&) = delete;

    FT_Face Open(Font font) {
        FT_Face& face = faces[static_cast<int>(font)];
        if (face != nullptr)
            return face;
        const std::filesystem::path path = FindFont(kFontPlaces[static_cast<int>(font)]);
        if (FT_New_Face(library, path.c_str(), 0, &face) != 0) {
            face = nullptr;
            throw FontMissing("font " + path.string() + " cannot be read");
        }
        return face;
    }
};

FontBook::FontBook() : faces_(std::make_unique<Faces>()) {}
FontBook::~FontBook() = default;

const Glyph& FontBook::Get(Font font, char16_t character) {
    const auto [place, isNew] = glyphs_.try_emplace({font, character});
    Glyph& glyph = place->second;
    if (!isNew)
        return glyph;
    const FT_Face face = faces_->Open(font);
    if (FT_Load_Char(face, character, FT_LOAD_NO_SCALE | FT_LOAD_NO_BITMAP) != 0 ||
        face->glyph->format != FT_GLYPH_FORMAT_OUTLINE)
        return glyph;
    const double unitsPerEm = face->units_per_EM;
    const auto gain = static_cast<FT_Pos>(kFontPlaces[static_cast<int>(font)].inkGain * unitsPerEm);
    if (gain > 0) {
        FT_Outline_Embolden(&face->glyph->outline, gain);
        FT_Outline_Translate(&face->glyph->outline, -gain / 2, -gain / 2);
    }
    glyph.outline = ReadOutline(face->glyph->outline, unitsPerEm);
    glyph.advance = face->glyph->metrics.horiAdvance / unitsPerEm;
    return glyph;
}

double FontBook::TextWidth(Font font, std::u16string_view text) {
    double width = 0;
    for (const char16_t character : text)
        width += Get(font, character).advance;
    return width;
}

}  // namespace velloran::samples
