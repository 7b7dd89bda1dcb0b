#include "samples/ComicPage.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "samples/ComicScenes.h"
#include "samples/TextFlow.h"
#include "text/Text.h"

namespace velloran::samples {

namespace {

struct Panel {
    Contour corners;
    Box Around() const { return Path{{corners}}.GetBounds().Get(); }
};

// Rows of one to three panels; the borders between neighbours lean a little.
std::vector<Panel> LayOutPanels(const Box& area, double gap, Random& random) {
    constexpr int kRows = 3;
    std::vector<Panel> panels;
    double cuts[kRows + 1] = {0, 0.3 + random.Between(-0.03, 0.05),
                              0.66 + random.Between(-0.04, 0.04), 1};
    const int wide = random.Below(kRows);
    for (int row = 0; row < kRows; ++row) {
        const double top = area.top + area.Height() * cuts[row] + (row > 0 ? gap / 2 : 0);
        const double bottom =
            area.top + area.Height() * cuts[row + 1] - (row < kRows - 1 ? gap / 2 : 0);
        const int count = row == wide ? 1 : 2 + random.Below(row == 1 ? 1 : 2);
        double leftTop = area.left, leftBottom = area.left;
        for (int i = 1; i <= count; ++i) {
            double rightTop = area.right, rightBottom = area.right;
            if (i < count) {
                const double middle =
                    area.left + area.Width() * (i + random.Between(-0.12, 0.12)) / count;
                const double lean = area.Width() * random.Between(-0.03, 0.03);
                rightTop = middle + lean - gap / 2;
                rightBottom = middle - lean - gap / 2;
            }
            panels.push_back(
                {{{leftTop, top}, {rightTop, top}, {rightBottom, bottom}, {leftBottom, bottom}}});
            leftTop = rightTop + gap;
            leftBottom = rightBottom + gap;
        }
    }
    return panels;
}

// The words of a balloon in columns from right to left.
std::vector<std::u16string> BalloonColumns(std::u16string_view text) {
    const std::size_t columns = text.size() > 8 ? 3 : (text.size() > 4 ? 2 : 1);
    const std::size_t rows = (text.size() + columns - 1) / columns;
    std::vector<std::u16string> split;
    for (std::size_t i = 0; i < text.size(); i += rows)
        split.emplace_back(text.substr(i, rows));
    return split;
}

void WriteBalloon(Sheet& sheet, const std::vector<std::u16string>& columns, Point middle,
                  double em) {
    const double pitch = em * 1.2;
    const auto rows = static_cast<double>(columns.front().size());
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const double x =
            middle.x +
            (static_cast<double>(columns.size() - 1) / 2 - static_cast<double>(i)) * pitch;
        const double top = middle.y - rows * em * 1.04 / 2;
        std::vector<Point> origins;
        for (std::size_t row = 0; row < columns[i].size(); ++row) {
            const Point origin = {x - em / 2, top + em * (1.04 * static_cast<double>(row) + 0.88)};
            origins.push_back(origin +
                              MarkShift(columns[i][row], Font::kHei, true, sheet.Fonts()) * em);
        }
        sheet.WriteLine(
            columns[i], Font::kHei, em, origins,
            {Point{x, top}, Point{x, top + em * 1.04 * static_cast<double>(columns[i].size())}},
            /*vertical=*/true);
    }
}

void DrawBalloon(ComicPen& pen, const Box& panel, double em, bool atLeft,
                 std::u16string_view text) {
    const std::vector<std::u16string> columns = BalloonColumns(text);
    const double radiusX = em * (0.75 + 0.8 * static_cast<double>(columns.size()));
    const double radiusY = em * (0.9 + 0.7 * static_cast<double>(columns.front().size()));
    if (radiusX * 2 > panel.Width() * 0.6 || radiusY * 2 > panel.Height() * 0.75)
        return;
    const double inset = em * 0.6;
    const Point middle = {atLeft ? panel.left + inset + radiusX : panel.right - inset - radiusX,
                          panel.top + inset + radiusY};
    const Contour bubble = EllipseContour(middle, radiusX, radiusY, 72);
    const double aside = atLeft ? 1 : -1, line = pen.LineWidth();
    const Point tip = middle + Point{aside * radiusX * 1.05, radiusY * 1.25};
    const Point root = middle + Point{aside * radiusX * 0.45, radiusY * 0.6};
    const double half = em * 0.32;
    const Contour tail = {root + Point{-half, half * 0.4}, root + Point{half, -half * 0.4}, tip};
    pen.White(tail);
    pen.Object(bubble, {}, 1.1);
    pen.Stroke({tail[0], tip, tail[1]}, 1.1);
    // The bubble opens into the tail, and nothing of the tail stays inside the bubble.
    pen.White(EllipseContour(middle, radiusX - line * 0.55, radiusY - line * 0.55, 72));
    const Point back = (tip - root) * (1.6 * line / Length(tip - root));
    pen.White(
        {Blend(tail[0], root, line / half), Blend(tail[1], root, line / half), tip - back * 1.5});
    pen.Paper().GetTruth().balloons.push_back({pen.Paper().InScan({{bubble}})});
    WriteBalloon(pen.Paper(), columns, middle, em);
}

}  // namespace

void DrawComicPage(Sheet& sheet, ComicStyle style, int pageNumber, Random& random) {
    ComicPen pen(sheet, style);
    const Box area =
        Box{0, 0, sheet.Width(), sheet.Height()}.Inset(sheet.Width() * 0.08, sheet.Height() * 0.07);
    const double gap = area.Width() * 0.022;
    const double em = std::clamp(sheet.FontPoints(10.5), 8.0, std::max(8.0, area.Width() / 22));
    int order[kSceneCount];
    std::iota(std::begin(order), std::end(order), 0);
    for (int i = kSceneCount - 1; i > 0; --i)
        std::swap(order[i], order[random.Below(i + 1)]);
    TextPile speech = TextPile::Speech(random);
    int next = 0;
    for (const Panel& panel : LayOutPanels(area, gap, random)) {
        Random own = random.Branch();
        sheet.ClipTo(panel.corners);
        const int scene = order[next++ % kSceneCount];
        DrawScene(scene, pen, panel.Around(), own);
        constexpr int kBurst = 2;  // its sound needs no words beside it
        if (scene != kBurst)
            DrawBalloon(pen, panel.Around(), em, own.Chance(0.5), speech.Next());
        sheet.ClipTo({});
        pen.Stroke(panel.corners, 1.6, /*closed=*/true);
        std::vector<Point> corners;
        for (const Point corner : panel.corners)
            corners.push_back(sheet.InScan(corner));
        sheet.GetTruth().panels.push_back(std::move(corners));
    }
    pen.FinishNotes();
    const std::u16string number = ToUtf16(std::to_string(pageNumber));
    sheet.WriteLine(number, Font::kSans, em * 0.8,
                    {area.Center().x - em * 0.4, area.bottom + em * 1.6});
}

}  // namespace velloran::samples
