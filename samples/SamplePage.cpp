#include "samples/SamplePage.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "samples/ComicPage.h"
#include "samples/Defects.h"
#include "samples/PagePlaces.h"
#include "samples/Seal.h"
#include "samples/TextPage.h"

namespace velloran::samples {

namespace {

constexpr int kCurvePoints = 17;
constexpr int kSofteningDpi = 150;  // below, letters are too small to lose anything

void CheckRequest(const SampleRequest& request) {
    const auto within = [](double value, double low, double high) {
        return value >= low && value <= high;
    };
    if (!within(request.width, kSmallestSide, kLargestSide) ||
        !within(request.height, kSmallestSide, kLargestSide))
        throw std::invalid_argument("a sample page is 96 to 20000 pixels wide and high");
    if (!within(request.dpi, 30, 2400))
        throw std::invalid_argument("a sample page has 30 to 2400 dpi");
    if (request.angleDegrees && !within(*request.angleDegrees, -kLargestTurn, kLargestTurn))
        throw std::invalid_argument("a sample page is turned by 5 degrees at most");
}

double AngleOf(const SampleRequest& request, const PageRecipe& recipe, Random& random) {
    const double own = random.Sign() * random.Between(recipe.largestAngle / 4, recipe.largestAngle);
    return request.angleDegrees.value_or(std::round(own * 100) / 100 + 0.0);
}

void PrepareInks(Scene& scene, const PageRecipe& recipe) {
    const Plane bare(scene.width, scene.height);
    scene.inks.black = bare;
    if (recipe.content == Content::kLetter)
        scene.inks.seal = bare;
    if (recipe.content == Content::kComic && recipe.style == ComicStyle::kColor)
        scene.inks.cyan = scene.inks.magenta = scene.inks.yellow = bare;
}

void DrawContent(Sheet& sheet, const PageRecipe& recipe, int pageNumber, const Scene& scene,
                 Random& random) {
    switch (recipe.content) {
        case Content::kLatin:
            return DrawBookPage(sheet, Language::kLatin, recipe.fill, pageNumber, random);
        case Content::kChinese:
            return DrawBookPage(sheet, Language::kChinese, recipe.fill, pageNumber, random);
        case Content::kVertical:
            return DrawVerticalPage(sheet, random);
        case Content::kTable:
            return DrawTablePage(sheet, random);
        case Content::kComic:
            return DrawComicPage(sheet, recipe.style, pageNumber, random);
        case Content::kLetter: {
            const Point signature = DrawLetter(sheet, random);
            const double radius = std::min(sheet.Width() * 0.09, sheet.Millimeters(21));
            // The ring lies over the signature, the solid middle does not.
            DrawSeal(sheet, signature - Point{radius * 0.35, 0}, radius, scene.sealColor);
            return;
        }
        case Content::kNothing:
            return;
    }
}

PageTruth TruthOfPlace(const SheetPlace& place) {
    PageTruth truth;
    const double w = place.width, h = place.height;
    truth.corners = {place.warp({0, 0}), place.warp({w, 0}), place.warp({w, h}),
                     place.warp({0, h})};
    for (int i = 0; i < kCurvePoints; ++i) {
        const double x = w * i / (kCurvePoints - 1);
        truth.topCurve.push_back(place.warp({x, 0}));
        truth.bottomCurve.push_back(place.warp({x, h}));
    }
    return truth;
}

void DrawPages(Scene& scene, const PageRecipe& recipe, const PagePlaces& places, FontBook& fonts,
               Truth& truth, Random& random) {
    const int firstNumber = 2 + 2 * random.Below(60);
    Bounds all;
    for (const SheetPlace& place : places.pages) {
        truth.pages.push_back(TruthOfPlace(place));
        Sheet sheet(place, scene.inks, fonts, truth);
        DrawContent(sheet, recipe, firstNumber + place.page, scene, random);
        if (sheet.Content().IsEmpty())
            continue;
        truth.pages.back().contentBox = sheet.Content().Get();
        all.Add(sheet.Content().Get());
        if (!sheet.UprightContent().IsEmpty())
            truth.pages.back().uprightContentBox = sheet.UprightContent().Get();
    }
    if (!all.IsEmpty())
        truth.contentBox = all.Get();
    if (scene.dpi >= kSofteningDpi)
        for (Plane* plane : {&scene.inks.black, &scene.inks.seal})
            plane->Soften();
}

void DrawReverse(Scene& scene, const PageRecipe& recipe, const PagePlaces& places, FontBook& fonts,
                 Truth& truth, Random& random) {
    Truth unseen;
    Inks inks;
    inks.black = Plane(scene.width, scene.height);
    for (const SheetPlace& place : places.reversed) {
        Sheet sheet(place, inks, fonts, unseen);
        DrawContent(sheet, recipe, 1, scene, random);
    }
    scene.reverse = std::move(inks.black);
    scene.reverse.Blur(std::max(1, scene.dpi / 150));
    scene.bleedThrough = std::round(random.Between(0.12, 0.22) * 100) / 100;
    truth.bleedThrough = scene.bleedThrough;
}

void LayPaper(Scene& scene, const PageRecipe& recipe, const PagePlaces& places, Truth& truth) {
    if (places.paper.contours.empty())
        return;
    Coverage scratch;
    scene.paper = Plane(scene.width, scene.height);
    scene.paper.Paint(places.paper, 255, scratch);
    if (recipe.lie == Lie::kPhoto) {
        scene.desk = {120, 86, 58};
        scene.woodenDesk = true;
        Path shadow = places.paper;
        for (Contour& contour : shadow.contours)
            for (Point& point : contour)
                point = point + Point{0.035, 0.05} * scene.dpi;
        scene.deskShadow = Plane(scene.width, scene.height);
        scene.deskShadow.Paint(shadow, 255, scratch);
        scene.deskShadow.Blur(std::max(1, scene.dpi / 20));
    }
    truth.background = scene.desk;
}

std::string_view NameOf(LightKind light) {
    constexpr std::string_view kNames[] = {"even", "uneven", "corner"};
    return kNames[static_cast<int>(light)];
}

Rgb Inverted(const Rgb& c) {
    return {255 - c.red, 255 - c.green, 255 - c.blue};
}

void NoteRequest(const SampleRequest& request, const PageRecipe& recipe, const Scene& scene,
                 Truth& truth) {
    truth.kind = recipe.name;
    truth.seed = request.seed;
    truth.width = request.width;
    truth.height = request.height;
    truth.dpi = request.dpi;
    truth.bitsPerPixel =
        recipe.depth == Depth::kColor ? 24 : (recipe.depth == Depth::kGray ? 8 : 1);
    truth.inverted = recipe.inverted;
    truth.paper = recipe.inverted ? Inverted(scene.stock.color) : scene.stock.color;
    truth.ink = recipe.inverted ? Inverted(scene.ink) : scene.ink;
    truth.light = NameOf(recipe.light);
    truth.noise = recipe.noise;
}

Plane AllInk(const Inks& inks) {
    Plane mask = inks.black;
    for (const Plane* plane : {&inks.cyan, &inks.magenta, &inks.yellow, &inks.seal}) {
        if (plane->IsEmpty())
            continue;
        for (int y = 0; y < mask.Height(); ++y)
            std::transform(mask.Row(y), mask.Row(y) + mask.Width(), plane->Row(y), mask.Row(y),
                           [](std::uint8_t a, std::uint8_t b) { return std::max(a, b); });
    }
    return mask;
}

}  // namespace

SamplePage MakeSamplePage(const SampleRequest& request) {
    CheckRequest(request);
    thread_local FontBook fonts;  // opening fonts costs more than a small page
    const PageRecipe recipe = request.recipe.value_or(RecipeOf(request.kind));
    Random random(request.seed);
    // Branches are taken in this order whatever the kind, so that what one part draws does not
    // move the others.
    Random placing = random.Branch(), writing = random.Branch(), aging = random.Branch();
    const Frame frame{request.width, request.height, request.dpi};

    SamplePage page;
    Scene scene;
    scene.width = frame.width;
    scene.height = frame.height;
    scene.dpi = frame.dpi;
    scene.seed = request.seed;
    scene.stock = MakeStock(recipe.stock);
    scene.noise = recipe.noise;
    NoteRequest(request, recipe, scene, page.truth);

    const double angle = AngleOf(request, recipe, placing);
    const PagePlaces places = PlacePages(recipe, frame, angle, placing);
    page.truth.angleDegrees = places.angleDegrees;
    page.truth.gutter = places.gutter;
    PrepareInks(scene, recipe);
    DrawPages(scene, recipe, places, fonts, page.truth, writing);
    if (recipe.bleedThrough)
        DrawReverse(scene, recipe, places, fonts, page.truth, aging);
    LayPaper(scene, recipe, places, page.truth);
    if (recipe.specks)
        AddSpecks(scene, page.truth, aging);
    if (recipe.blackEdges)
        AddBlackEdges(scene, page.truth, aging);
    scene.light = MakeLight(recipe, places, frame, aging);
    page.image = ScanScene(scene, recipe.depth, recipe.inverted);
    if (request.wantInkMask)
        page.inkMask = PlaneToImage(AllInk(scene.inks), frame.dpi);
    return page;
}

}  // namespace velloran::samples
