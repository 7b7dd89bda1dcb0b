#pragma once

// The kinds of sample pages, as a table: a kind is a row of choices.

#include <optional>
#include <span>
#include <string_view>

#include "samples/ComicPen.h"
#include "samples/PageScan.h"

namespace velloran::samples {

enum class PageKind {
    kTextLatin,
    kTextChinese,
    kTextVertical,
    kTextSkewed,
    kSkewedOnBlack,
    kLightUneven,
    kShadowCorner,
    kBleedThrough,
    kSpecks,
    kBlackEdges,
    kOldPaper,
    kRedSeal,
    kTable,
    kGutterShadow,
    kSpread,
    kSpreadOpen,
    kCurved,
    kPhotoPerspective,
    kComicLine,
    kComicScreen,
    kComicColor,
    kGray,
    kBilevel,
    kInverted,
    kBlank,
};
constexpr int kPageKindCount = 25;

enum class Content { kLatin, kChinese, kVertical, kTable, kLetter, kComic, kNothing };
/// How the paper lies in the picture.
enum class Lie {
    kFull,        // paper to all edges
    kOnBlack,     // the whole sheet on the black lid of a scanner
    kRightPage,   // the right page of a book, its gutter in the picture
    kSpread,      // two pages, flat
    kOpenSpread,  // two pages, curled towards the gutter
    kOpenPage,    // one page of an open book, curled
    kPhoto,       // on a table, in perspective
};
enum class LightKind { kEven, kUneven, kCorner };
/// How much stands on a book page.
enum class BookFill { kFull, kFewLines, kNumberOnly, kPictures };
enum class StockKind { kWhite, kCream, kNewsprint, kOld };

struct PageRecipe {
    PageKind kind;
    std::string_view name;  // as in file names and in the truth
    Content content;
    Lie lie = Lie::kFull;
    double largestAngle = 0;  // degrees; the page's own is a quarter of it or more, either way
    LightKind light = LightKind::kEven;
    StockKind stock = StockKind::kWhite;
    ComicStyle style = ComicStyle::kLine;
    Depth depth = Depth::kColor;
    double noise = 1.2;  // standard deviation, levels
    bool bleedThrough = false, specks = false, blackEdges = false, inverted = false;
    BookFill fill = BookFill::kFull;
    /// Where the gutter of two pages lies and how dark its valley is: ranges, as shares of the
    /// width and of the light.
    double gutterFrom = 0.48, gutterTo = 0.52;
    double gutterDepthFrom = 0.55, gutterDepthTo = 0.7;
    /// How far a corner of a photographed page may lie off its place, as a share of the picture.
    double photoShake = 0.02;
    double photoFarFrom = 0.05, photoFarTo = 0.09;  // how much narrower its far edge is, a side
};

const PageRecipe& RecipeOf(PageKind kind);
bool IsTwoPages(PageKind kind);

/// The kinds of a named set, in order: demo, text, comic, spread, all. Empty for another name.
std::span<const PageKind> KindsOfSet(std::string_view set);

}  // namespace velloran::samples
