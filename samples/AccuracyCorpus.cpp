#include "samples/AccuracyCorpus.h"

#include <algorithm>
#include <utility>

#include "samples/Random.h"

namespace velloran::samples {

namespace {

/// What a group of pages has in common, and how many of them there are.
struct Group {
    const char* name;
    int pages;
    PageRecipe recipe;
    bool isEasyGutter = false;
    double largestAngle = 5;
};

PageRecipe Book(Content content, BookFill fill = BookFill::kFull) {
    PageRecipe recipe{PageKind::kTextLatin, "corpus", content};
    recipe.fill = fill;
    recipe.stock = StockKind::kCream;
    return recipe;
}

PageRecipe With(PageRecipe recipe, auto change) {
    change(recipe);
    return recipe;
}

PageRecipe Spread(Content content, double depthFrom, double depthTo, BookFill fill) {
    return With(Book(content, fill), [&](PageRecipe& r) {
        r.lie = Lie::kSpread;
        r.gutterFrom = 0.35;
        r.gutterTo = 0.65;
        r.gutterDepthFrom = depthFrom;
        r.gutterDepthTo = depthTo;
    });
}

std::vector<Group> Groups() {
    using enum Content;
    const auto dark = [](PageRecipe r) {
        return With(r, [](PageRecipe& c) { c.blackEdges = true; });
    };
    const auto photo = [](double shake, double farFrom, double farTo, Content content) {
        return With(Book(content), [&](PageRecipe& r) {
            r.lie = Lie::kPhoto;
            r.light = LightKind::kUneven;
            r.noise = 2;
            r.photoShake = shake;
            r.photoFarFrom = farFrom;
            r.photoFarTo = farTo;
        });
    };
    return {
        {"latin", 32, Book(kLatin)},
        {"chinese", 32, Book(kChinese)},
        {"vertical", 24, Book(kVertical)},
        {"table", 16, Book(kTable)},
        {"pictures", 24, Book(kLatin, BookFill::kPictures)},
        {"pictures, chinese", 24, Book(kChinese, BookFill::kPictures)},
        {"letter", 10, Book(kLetter)},
        {"few lines", 20, Book(kLatin, BookFill::kFewLines)},
        {"number alone", 12, Book(kLatin, BookFill::kNumberOnly), false, 1},
        {"comic", 16, With(Book(kComic), [](PageRecipe& r) { r.style = ComicStyle::kScreen; })},
        {"black edges", 24, dark(Book(kLatin))},
        {"black edges, chinese", 16, dark(Book(kChinese, BookFill::kPictures))},
        {"on black", 16, With(Book(kLatin), [](PageRecipe& r) { r.lie = Lie::kOnBlack; })},
        {"specks", 20, With(Book(kChinese), [](PageRecipe& r) { r.specks = true; })},
        {"uneven light", 16,
         With(Book(kChinese), [](PageRecipe& r) { r.light = LightKind::kUneven; })},
        {"shadowed corner", 12,
         With(Book(kLatin), [](PageRecipe& r) { r.light = LightKind::kCorner; })},
        {"old paper", 16,
         With(Book(kVertical),
              [](PageRecipe& r) {
                  r.stock = StockKind::kOld;
                  r.noise = 4;
                  r.light = LightKind::kUneven;
              })},
        {"bleed through", 10, With(Book(kChinese), [](PageRecipe& r) { r.bleedThrough = true; })},
        {"bilevel", 10,
         With(Book(kChinese),
              [](PageRecipe& r) {
                  r.depth = Depth::kBilevel;
                  r.noise = 0;
              })},
        {"blank", 6, Book(kNothing), false, 0},
        {"spread, dark", 16, Spread(kChinese, 0.5, 0.7, BookFill::kFull), true, 1.5},
        {"spread, dark, black edges", 14, dark(Spread(kLatin, 0.5, 0.7, BookFill::kFull)), true,
         1.5},
        {"spread, soft", 14, Spread(kLatin, 0.15, 0.3, BookFill::kFull), false, 1.5},
        {"spread, pictures", 14, Spread(kChinese, 0.3, 0.6, BookFill::kPictures), false, 1.5},
        {"spread, tables", 8, Spread(kTable, 0.3, 0.6, BookFill::kFull), false, 1.5},
        {"photograph", 14, photo(0.015, 0.03, 0.05, kChinese), false, 0},
        {"photograph, pictures", 8, photo(0.015, 0.03, 0.05, kComic), false, 0},
    };
}

/// One page in five at 600 dpi would take most of the time: one in twelve does.
int DpiOf(int index) {
    if (index % 12 == 11)
        return 600;
    return index % 2 == 0 ? 300 : 150;
}

CorpusPage PageOf(const Group& group, int index, std::uint64_t seed) {
    Random random(MixBits(seed) + static_cast<std::uint64_t>(index));
    CorpusPage page;
    page.group = group.name;
    page.isEasyGutter = group.isEasyGutter;
    SampleRequest& request = page.request;
    request.recipe = group.recipe;
    request.dpi = DpiOf(index);
    request.width = 2480 * request.dpi / 300;
    request.height = 3508 * request.dpi / 300;
    const Lie lie = group.recipe.lie;
    if (lie == Lie::kSpread)
        std::swap(request.width, request.height);
    request.seed = random.Bits() >> 1;
    if (lie != Lie::kPhoto)
        request.angleDegrees = group.largestAngle * random.Between(-1, 1);
    const bool isScreened =
        group.recipe.content == Content::kComic || group.recipe.depth == Depth::kBilevel;
    if (!isScreened && random.Chance(0.4))
        page.jpegQuality = 40 + random.Below(45);
    return page;
}

}  // namespace

std::vector<CorpusPage> AccuracyCorpus(std::uint64_t seed, int share) {
    std::vector<CorpusPage> pages;
    int index = 0;
    for (const Group& group : Groups())
        for (int i = 0; i < group.pages; ++i, ++index)
            if (index % std::max(share, 1) == 0)
                pages.push_back(PageOf(group, index, seed));
    return pages;
}

}  // namespace velloran::samples
