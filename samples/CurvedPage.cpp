#include "samples/CurvedPage.h"

#include <algorithm>
#include <cmath>

#include "samples/Defects.h"
#include "samples/PagePlaces.h"
#include "samples/PageScan.h"
#include "samples/TextFlow.h"

namespace velloran::samples {

namespace {

/// Of the page's height: how far its edge rises at the peak of the curl.
struct RiseRange {
    double low, high;
};
constexpr RiseRange kRises[] = {{0, 0}, {0.006, 0.014}, {0.018, 0.034}, {0.042, 0.06}};

SheetPlace PlaceOf(const CurvedRequest& request, const Frame& frame, PagePlaces& places,
                   Random& random) {
    const double w = frame.width, h = frame.height;
    const bool spineAtLeft = random.Chance(0.5);
    const double width = request.cut ? w : w * 0.87, height = request.cut ? h : h * 0.84;
    const RiseRange& range = kRises[static_cast<int>(request.strength)];
    PageCurl curl{width, height, 0, 0, 0, spineAtLeft};
    curl.topRise = height * random.Between(range.low, range.high);
    curl.bottomRise = curl.topRise * random.Between(-0.2, 0.9);
    curl.squeeze = curl.topRise == 0 ? 0 : random.Between(0.1, 0.22);
    if (random.Chance(0.5))  // the camera stands below the page's middle, not above it
        std::swap(curl.topRise, curl.bottomRise), curl.topRise *= -1, curl.bottomRise *= -1;
    Warp warp;
    if (request.strength != CurlStrength::kFlat)
        warp.Curl(curl);
    const double left = request.cut ? 0 : (spineAtLeft ? w * 0.07 : w * 0.06);
    const double top = request.cut ? 0 : h * random.Between(0.075, 0.09);
    warp.Move(left, top);
    warp.Turn(random.Between(-1, 1), {w / 2, h / 2});
    if (request.tilted) {
        const auto corner = [&](double x, double y) {
            return Point{w * (x + random.Between(-0.02, 0.02)),
                         h * (y + random.Between(-0.02, 0.02))};
        };
        warp.Project(
            w, h, {corner(0.05, 0.03), corner(0.95, 0.03), corner(0.98, 0.97), corner(0.02, 0.97)});
    }
    const SheetPlace place{0, width, height, frame.dpi + 0.0, warp, std::nullopt};
    if (!request.cut || request.tilted)
        places.paper.Add(warp({{RectangleContour({0, 0, width, height})}}));
    const double spine = spineAtLeft ? 0 : width;
    const Point a = warp({spine, 0}), b = warp({spine, height});
    const auto at = [&](double y) { return Point{a.x + (b.x - a.x) * (y - a.y) / (b.y - a.y), y}; };
    if (request.strength != CurlStrength::kFlat)
        places.gutter = GutterTruth{at(0), at(h)};
    places.pages.push_back(place);
    return place;
}

/// A landscape in halftone.
void DrawPicture(Sheet& sheet, const Box& box, Random& random) {
    const double light = random.Between(0.1, 0.3), hill = random.Between(0.3, 0.6);
    const double phase = random.Turn();
    ScreenTruth* const kUnnoted = nullptr;
    const auto tone = [=](Point p) {
        const double x = (p.x - box.left) / box.Width(), y = (p.y - box.top) / box.Height();
        const double ridge = 0.55 + 0.2 * std::sin(phase + 5 * x) + 0.08 * std::sin(13 * x);
        return y > ridge ? hill : light * (1 - y);
    };
    const double pitch = std::max(3.0, sheet.Dpi() / 85);
    sheet.PrintTone({{RectangleContour(box)}}, {pitch, 45}, tone, sheet.GetInks().black, kUnnoted);
    sheet.Ink(StrokePath(RectangleContour(box), std::max(1.0, sheet.Dpi() / 150), true));
}

/// Paragraphs from the top of the area down, pictures between them.
void DrawText(Sheet& sheet, const CurvedRequest& request, Random& random) {
    const bool isChinese = request.language == Language::kChinese;
    const Box area = Box{0, 0, sheet.Width(), sheet.Height()}.Inset(
        sheet.Width() * random.Between(0.09, 0.14), sheet.Height() * random.Between(0.07, 0.12));
    const double em = sheet.FontPoints(random.Between(9.5, request.sparse ? 15 : 12.5));
    const double lineHeight =
        em * (isChinese ? 1.65 : 1.36) * (request.sparse ? random.Between(1.3, 1.7) : 1);
    FlowStyle style{request.language, isChinese ? Font::kSong : Font::kSerif, em, area.Width(), 0};
    if (isChinese)
        style.width = std::floor(area.Width() / em) * em;
    style.indent = em * (isChinese ? 2 : 1.2);
    const std::u16string title = Title(request.language, random);
    sheet.WriteLine(title, style.font, em * 0.8, {area.left, area.top});
    double baseline = area.top + em * 3;
    TextPile sentences = TextPile::Sentences(request.language, random);
    const double bottom =
        request.sparse ? area.top + area.Height() * random.Between(0.6, 1) : area.bottom - 2 * em;
    int untilPicture = request.pictures ? 1 + random.Below(2) : 1 << 20;
    while (baseline <= bottom) {
        if (untilPicture-- == 0) {
            const double height = area.Height() * random.Between(0.12, 0.25);
            const double width = area.Width() * random.Between(0.4, 0.95);
            const double left = area.left + (area.Width() - width) * random.Unit();
            const Box box{left, baseline - em * 0.5, left + width, baseline + height};
            if (box.bottom > bottom)
                break;
            DrawPicture(sheet, box, random);
            baseline = box.bottom + lineHeight * 1.2;
            untilPicture = 1 + random.Below(3);
        }
        const int length = request.sparse ? 1 + random.Below(2) : 3 + random.Below(4);
        for (const FlowLine& line :
             FlowParagraph(sentences.Paragraph(length), style, sheet.Fonts())) {
            if (baseline > bottom)
                break;
            std::vector<Point> origins;
            for (std::size_t i = 0; i < line.starts.size(); ++i)
                origins.push_back(Point{area.left + line.starts[i], baseline} +
                                  MarkShift(line.text[i], style.font, false, sheet.Fonts()) * em);
            sheet.WriteLine(line.text, style.font, em, origins,
                            {Point{area.left + line.starts.front(), baseline},
                             Point{area.left + line.end, baseline}});
            baseline += lineHeight;
        }
        if (request.sparse)
            baseline += lineHeight * random.Between(0.3, 1.5);
    }
    sheet.WriteLine(u"37", Font::kSerif, em * 0.9, {area.left + area.Width() / 2, area.bottom});
}

}  // namespace

std::string NameOf(CurlStrength strength) {
    constexpr const char* kNames[] = {"flat", "gentle", "medium", "strong"};
    return kNames[static_cast<int>(strength)];
}

std::string NameOf(const CurvedRequest& request) {
    std::string name = NameOf(request.strength);
    name += request.language == Language::kChinese ? "_chinese" : "_latin";
    for (const auto& [is, word] :
         {std::pair{request.sparse, "_sparse"}, std::pair{request.pictures, "_pictures"},
          std::pair{request.tilted, "_tilted"}, std::pair{request.cut, "_cut"},
          std::pair{request.light == LightKind::kUneven, "_uneven"},
          std::pair{request.light == LightKind::kCorner, "_corner"}})
        if (is)
            name += word;
    return name;
}

CurvedRequest CurvedRequestAt(int index, int dpi, std::uint64_t seed) {
    Random random(MixBits(seed) + static_cast<std::uint64_t>(index));
    CurvedRequest request;
    request.strength = static_cast<CurlStrength>(index % kCurlStrengthCount);
    request.language = random.Chance(0.5) ? Language::kChinese : Language::kLatin;
    request.sparse = random.Chance(0.3);
    request.pictures = random.Chance(0.35);
    request.tilted = random.Chance(0.25);
    request.cut = random.Chance(0.3);
    request.light = random.Chance(0.5)   ? LightKind::kUneven
                    : random.Chance(0.3) ? LightKind::kCorner
                                         : LightKind::kEven;
    request.dpi = dpi;
    request.seed = random.Bits();
    return request;
}

SamplePage MakeCurvedPage(const CurvedRequest& request) {
    thread_local FontBook fonts;
    Random random(request.seed);
    Random placing = random.Branch(), writing = random.Branch(), aging = random.Branch();
    const Frame frame{2480 * request.dpi / 300, 3508 * request.dpi / 300, request.dpi};
    SamplePage page;
    Scene scene;
    scene.width = frame.width;
    scene.height = frame.height;
    scene.dpi = frame.dpi;
    scene.seed = request.seed;
    scene.stock = MakeStock(StockKind::kCream);
    scene.noise = 2;
    Truth& truth = page.truth;
    truth.kind = NameOf(request);
    truth.seed = request.seed;
    truth.width = frame.width;
    truth.height = frame.height;
    truth.dpi = frame.dpi;
    truth.bitsPerPixel = 24;
    truth.paper = scene.stock.color;
    truth.ink = scene.ink;
    truth.noise = scene.noise;

    PagePlaces places;
    const SheetPlace place = PlaceOf(request, frame, places, placing);
    truth.gutter = places.gutter;
    scene.inks.black = Plane(frame.width, frame.height);
    Sheet sheet(place, scene.inks, fonts, truth);
    truth.pages.emplace_back();
    for (int i = 0; i < 17; ++i) {
        const double x = place.width * i / 16;
        truth.pages[0].topCurve.push_back(place.warp({x, 0}));
        truth.pages[0].bottomCurve.push_back(place.warp({x, place.height}));
    }
    truth.pages[0].corners = {place.warp({0, 0}), place.warp({place.width, 0}),
                              place.warp({place.width, place.height}),
                              place.warp({0, place.height})};
    DrawText(sheet, request, writing);
    truth.pages[0].contentBox = sheet.Content().Get();
    truth.contentBox = sheet.Content().Get();
    scene.inks.black.Soften();
    if (!places.paper.contours.empty()) {
        Coverage scratch;
        scene.paper = Plane(frame.width, frame.height);
        scene.paper.Paint(places.paper, 255, scratch);
        truth.background = scene.desk;
    }
    PageRecipe lit = RecipeOf(PageKind::kCurved);
    lit.light = request.light;
    scene.light = MakeLight(lit, places, frame, aging);
    page.image = ScanScene(scene, aging.Chance(0.3) ? Depth::kGray : Depth::kColor, false);
    truth.bitsPerPixel = page.image.GetBpp();
    return page;
}

}  // namespace velloran::samples
