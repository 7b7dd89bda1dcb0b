#include "samples/PageKinds.h"

#include <array>

namespace velloran::samples {

namespace {

using enum PageKind;

// In the order of PageKind.
constexpr PageRecipe kRecipes[kPageKindCount] = {
    {kTextLatin, "text_latin", Content::kLatin},
    {kTextChinese, "text_chinese", Content::kChinese},
    {kTextVertical, "text_vertical", Content::kVertical, Lie::kFull, 0.6, LightKind::kEven,
     StockKind::kCream},
    {kTextSkewed, "text_skewed", Content::kChinese, Lie::kFull, 4},
    {kSkewedOnBlack, "skewed_on_black", Content::kLatin, Lie::kOnBlack, 3.5, LightKind::kEven,
     StockKind::kCream},
    {kLightUneven, "light_uneven", Content::kChinese, Lie::kFull, 0.5, LightKind::kUneven},
    {kShadowCorner, "shadow_corner", Content::kLatin, Lie::kFull, 0.5, LightKind::kCorner},
    {.kind = kBleedThrough,
     .name = "bleed_through",
     .content = Content::kChinese,
     .largestAngle = 0.5,
     .stock = StockKind::kCream,
     .bleedThrough = true},
    {.kind = kSpecks, .name = "specks", .content = Content::kChinese, .specks = true},
    {.kind = kBlackEdges, .name = "black_edges", .content = Content::kLatin, .blackEdges = true},
    {kOldPaper, "old_paper", Content::kVertical, Lie::kFull, 1, LightKind::kUneven, StockKind::kOld,
     ComicStyle::kLine, Depth::kColor, 4},
    {kRedSeal, "red_seal", Content::kLetter},
    {kTable, "table", Content::kTable, Lie::kFull, 0.8},
    {kGutterShadow, "gutter_shadow", Content::kChinese, Lie::kRightPage, 1},
    {kSpread, "spread", Content::kChinese, Lie::kSpread, 1},
    {kSpreadOpen, "spread_open", Content::kLatin, Lie::kOpenSpread, 0, LightKind::kEven,
     StockKind::kCream},
    {kCurved, "curved", Content::kLatin, Lie::kOpenPage, 0, LightKind::kUneven, StockKind::kCream},
    {kPhotoPerspective, "photo_perspective", Content::kChinese, Lie::kPhoto, 0, LightKind::kUneven,
     StockKind::kWhite, ComicStyle::kLine, Depth::kColor, 2},
    {kComicLine, "comic_line", Content::kComic, Lie::kFull, 0.8},
    {kComicScreen, "comic_screen", Content::kComic, Lie::kFull, 1.2, LightKind::kEven,
     StockKind::kNewsprint, ComicStyle::kScreen},
    {kComicColor, "comic_color", Content::kComic, Lie::kFull, 1.2, LightKind::kEven,
     StockKind::kCream, ComicStyle::kColor},
    {kGray, "gray", Content::kLatin, Lie::kFull, 1, LightKind::kUneven, StockKind::kCream,
     ComicStyle::kLine, Depth::kGray, 2},
    {kBilevel, "bilevel", Content::kChinese, Lie::kFull, 1, LightKind::kEven, StockKind::kWhite,
     ComicStyle::kLine, Depth::kBilevel, 0},
    {.kind = kInverted,
     .name = "inverted",
     .content = Content::kLatin,
     .depth = Depth::kGray,
     .inverted = true},
    {kBlank, "blank", Content::kNothing},
};

constexpr PageKind kTextSet[] = {kTextLatin,     kTextChinese, kTextVertical, kTextSkewed,
                                 kSkewedOnBlack, kLightUneven, kShadowCorner, kBleedThrough,
                                 kSpecks,        kBlackEdges,  kOldPaper,     kRedSeal,
                                 kTable,         kGray,        kBilevel,      kInverted};
constexpr PageKind kComicSet[] = {kComicLine, kComicScreen, kComicColor};
constexpr PageKind kSpreadSet[] = {kGutterShadow, kSpread, kSpreadOpen};
constexpr PageKind kDemoSet[] = {kComicScreen, kComicColor,      kTextSkewed, kSkewedOnBlack,
                                 kOldPaper,    kBleedThrough,    kRedSeal,    kSpreadOpen,
                                 kCurved,      kPhotoPerspective};

constexpr std::array<PageKind, kPageKindCount> AllKinds() {
    std::array<PageKind, kPageKindCount> kinds{};
    for (int i = 0; i < kPageKindCount; ++i)
        kinds[i] = kRecipes[i].kind;
    return kinds;
}
constexpr std::array<PageKind, kPageKindCount> kAllSet = AllKinds();
static_assert([] {
    for (int i = 0; i < kPageKindCount; ++i)
        if (static_cast<int>(kRecipes[i].kind) != i)
            return false;
    return true;
}());

}  // namespace

const PageRecipe& RecipeOf(PageKind kind) {
    return kRecipes[static_cast<int>(kind)];
}

bool IsTwoPages(PageKind kind) {
    const Lie lie = RecipeOf(kind).lie;
    return lie == Lie::kSpread || lie == Lie::kOpenSpread;
}

std::span<const PageKind> KindsOfSet(std::string_view set) {
    struct NamedSet {
        std::string_view name;
        std::span<const PageKind> kinds;
    };
    const NamedSet sets[] = {{"demo", kDemoSet},
                             {"text", kTextSet},
                             {"comic", kComicSet},
                             {"spread", kSpreadSet},
                             {"all", kAllSet}};
    for (const NamedSet& named : sets)
        if (named.name == set)
            return named.kinds;
    return {};
}

}  // namespace velloran::samples
