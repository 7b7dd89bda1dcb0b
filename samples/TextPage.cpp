#include "samples/TextPage.h"

#include <algorithm>
#include <cmath>

#include "samples/ComicScenes.h"
#include "samples/TextFlow.h"
#include "text/Text.h"

namespace velloran::samples {

namespace {

struct BookType {
    Font body, title;
    double lineHeight, bodyPoints;
};
constexpr BookType kLatinType = {Font::kSerif, Font::kSerifBold, 1.36, 12};
constexpr BookType kChineseType = {Font::kSong, Font::kHei, 1.7, 12};

// Small pictures still get letters that one can tell apart, and several in a line.
double BodySize(const Sheet& sheet, double points) {
    const double small = std::min(9.0, sheet.Width() / 14);
    return std::clamp(sheet.FontPoints(points), small, std::max(small, sheet.Width() / 14));
}

Box TextArea(const Sheet& sheet) {
    return Box{0, 0, sheet.Width(), sheet.Height()}.Inset(sheet.Width() * 0.12,
                                                          sheet.Height() * 0.1);
}

void WriteCentered(Sheet& sheet, std::u16string_view text, Font font, double size, double middle,
                   double baseline) {
    const double share = sheet.Fonts().TextWidth(font, text);
    size = std::min(size, sheet.Width() * 0.76 / share);
    const double width = share * size;
    sheet.WriteLine(text, font, size, {middle - width / 2, baseline});
}

// The words of a paragraph; returns where the next baseline lies.
double WriteParagraph(Sheet& sheet, std::u16string_view text, const FlowStyle& style, double left,
                      double baseline, double lineHeight, double bottom) {
    for (const FlowLine& line : FlowParagraph(text, style, sheet.Fonts())) {
        if (baseline > bottom)
            break;
        std::vector<Point> origins;
        for (std::size_t i = 0; i < line.starts.size(); ++i)
            origins.push_back(Point{left + line.starts[i], baseline} +
                              MarkShift(line.text[i], style.font, false, sheet.Fonts()) *
                                  style.size);
        sheet.WriteLine(
            line.text, style.font, style.size, origins,
            {Point{left + line.starts.front(), baseline}, Point{left + line.end, baseline}});
        baseline += lineHeight;
    }
    return baseline;
}

/// A picture across a part of the column; returns where the next baseline lies.
double DrawPicture(Sheet& sheet, const Box& free, double em, Random& random) {
    const double height = std::min(em * random.Between(7, 14), free.Height() - em);
    if (height < em * 4)
        return free.top;
    const double width = free.Width() * random.Between(0.4, 1);
    const double left = free.left + (free.Width() - width) * random.Unit();
    const Box panel{left, free.top - em * 0.6, left + width, free.top - em * 0.6 + height};
    ComicPen pen(sheet, ComicStyle::kScreen);
    sheet.ClipTo(RectangleContour(panel));
    DrawScene(random.Below(kSceneCount), pen, panel, random);
    sheet.ClipTo({});
    pen.Stroke(RectangleContour(panel), 1, /*closed=*/true);
    pen.FinishNotes();
    return panel.bottom + em * 1.4;
}

FlowStyle StyleOf(const Sheet& sheet, Language language, const Box& area) {
    const BookType& type = language == Language::kChinese ? kChineseType : kLatinType;
    FlowStyle style{language, type.body, BodySize(sheet, type.bodyPoints), area.Width(), 0};
    if (language == Language::kChinese)  // whole characters fill the line
        style.width = std::floor(area.Width() / style.size) * style.size;
    style.indent = style.size * (language == Language::kChinese ? 2 : 1.2);
    return style;
}

}  // namespace

void DrawBookPage(Sheet& sheet, Language language, BookFill fill, int pageNumber, Random& random) {
    const BookType& type = language == Language::kChinese ? kChineseType : kLatinType;
    const Box area = TextArea(sheet);
    const FlowStyle style = StyleOf(sheet, language, area);
    const double em = style.size, lineHeight = em * type.lineHeight;
    const double middle = area.left + style.width / 2;
    const auto writeNumber = [&] {
        WriteCentered(sheet, ToUtf16(std::to_string(pageNumber)), Font::kSerif, em * 0.9, middle,
                      area.bottom);
    };
    if (fill == BookFill::kNumberOnly)
        return writeNumber();

    const std::u16string title = Title(language, random);
    sheet.WriteLine(title, type.body, em * 0.8, {area.left, area.top});
    const double ruleWidth = std::max(1.0, em / 26);
    const double ruleY = area.top + em * 0.5;
    sheet.Ink({{RectangleContour({area.left, ruleY, area.left + style.width, ruleY + ruleWidth})}});
    double baseline = area.top + em * 3.4;
    WriteCentered(sheet, title, type.title, em * 1.6, middle, baseline);
    baseline += em * 2.6;

    double bottom = area.bottom - em * 2;
    if (fill == BookFill::kFewLines)
        bottom = baseline + lineHeight * (1 + random.Below(4));
    TextPile sentences = TextPile::Sentences(language, random);
    while (baseline <= bottom) {
        const std::u16string text = sentences.Paragraph(3 + random.Below(4));
        baseline = WriteParagraph(sheet, text, style, area.left, baseline, lineHeight, bottom);
        if (fill == BookFill::kPictures)
            baseline = DrawPicture(sheet, {area.left, baseline, area.left + style.width, bottom},
                                   em, random);
    }
    writeNumber();
}

void DrawVerticalPage(Sheet& sheet, Random& random) {
    const double em = BodySize(sheet, 15), columnPitch = em * 1.75;
    const double thin = std::max(1.0, em / 30), thick = std::max(2.0, em / 8);
    const Box area = TextArea(sheet);
    const int columns = std::max(2, static_cast<int>(area.Width() / columnPitch));
    const int rows = std::max(2, static_cast<int>((area.Height() - em) / (em * 1.06)));
    const double advance = (area.Height() - em) / rows;
    const Box frame = {area.Center().x - columns * columnPitch / 2, area.top,
                       area.Center().x + columns * columnPitch / 2, area.bottom};
    const Box outer = frame.Inset(-em * 0.35, -em * 0.35);
    const auto frameLine = [&](const Box& box, double width) {
        sheet.Ink(StrokePath(RectangleContour(box), width, /*closed=*/true));
    };
    frameLine(frame, thin);
    frameLine(outer, thick);
    std::u16string text = u"　　" + Title(Language::kChinese, random);
    text.resize(std::max<std::size_t>(text.size(), rows), u'　');
    TextPile sentences = TextPile::Sentences(Language::kChinese, random);
    while (static_cast<int>(text.size()) < columns * rows)
        text += sentences.Next();
    for (int column = 0; column < columns; ++column) {
        const double middle = frame.right - (column + 0.5) * columnPitch;
        if (column > 0)
            sheet.Line(
                {{middle + columnPitch / 2, frame.top}, {middle + columnPitch / 2, frame.bottom}},
                thin);
        std::vector<Point> origins;
        const std::u16string words = text.substr(static_cast<std::size_t>(column) * rows, rows);
        for (int row = 0; row < static_cast<int>(words.size()); ++row) {
            const Point origin = {middle - em / 2,
                                  frame.top + em * 0.5 + advance * row + em * 0.86};
            origins.push_back(origin +
                              MarkShift(words[row], Font::kSong, true, sheet.Fonts()) * em);
        }
        sheet.WriteLine(words, Font::kSong, em, origins,
                        {Point{middle, frame.top + em * 0.5},
                         Point{middle, frame.top + em * 0.5 + advance * rows}},
                        /*vertical=*/true);
    }
}

void DrawTablePage(Sheet& sheet, Random& random) {
    const Box area = TextArea(sheet);
    const double em = BodySize(sheet, 12);
    TableTruth table;
    table.page = sheet.Page();
    table.columns = std::clamp(static_cast<int>(area.Width() / (em * 4.5)), 2, 8);
    table.rows = std::clamp(static_cast<int>(area.Height() / (em * 2.6)) - 3, 2, 13);
    table.ruleWidth = std::max(1.0, em / 20);
    WriteCentered(sheet, Title(Language::kChinese, random), Font::kHei, em * 1.6, area.Center().x,
                  area.top + em * 1.6);
    const double top = area.top + em * 3.4, rowHeight = em * 2.6;
    const double columnWidth = area.Width() / table.columns;
    const auto rule = [&](std::vector<std::array<Point, 2>>& notes, Point from, Point to) {
        sheet.Line({from, to}, table.ruleWidth);
        notes.push_back({sheet.InScan(from), sheet.InScan(to)});
    };
    for (int row = 0; row <= table.rows; ++row) {
        const double y = top + row * rowHeight;
        rule(table.horizontal, {area.left, y}, {area.right, y});
    }
    for (int column = 0; column <= table.columns; ++column) {
        const double x = area.left + column * columnWidth;
        rule(table.vertical, {x, top}, {x, top + table.rows * rowHeight});
    }
    for (int row = 0; row < table.rows; ++row)
        for (int column = 0; column < table.columns; ++column) {
            const bool isName = row == 0 || column == 0;
            WriteCentered(sheet, TableCell(row, column, random),
                          row == 0 ? Font::kHei : (isName ? Font::kSong : Font::kSerif), em,
                          area.left + (column + 0.5) * columnWidth,
                          top + (row + 0.5) * rowHeight + em * 0.35);
        }
    sheet.GetTruth().table = std::move(table);
    FlowStyle style = StyleOf(sheet, Language::kChinese, area);
    WriteParagraph(sheet, TextPile::Sentences(Language::kChinese, random).Paragraph(4), style,
                   area.left, top + sheet.GetTruth().table->rows * rowHeight + em * 2.4, em * 1.7,
                   area.bottom);
}

Point DrawLetter(Sheet& sheet, Random& random) {
    const Box area = TextArea(sheet);
    const FlowStyle style = StyleOf(sheet, Language::kChinese, area);
    const double em = style.size, lineHeight = em * 1.9;
    WriteCentered(sheet, Title(Language::kChinese, random), Font::kHei, em * 1.8, area.Center().x,
                  area.top + em * 2);
    double baseline = area.top + em * 5;
    const double bottom = area.top + area.Height() * 0.6;
    TextPile sentences = TextPile::Sentences(Language::kChinese, random);
    while (baseline <= bottom)
        baseline = WriteParagraph(sheet, sentences.Paragraph(3), style, area.left, baseline,
                                  lineHeight, bottom);
    const std::u16string signature = u"北坡书社";
    const double right = area.right - em * 2;
    baseline += lineHeight * 1.5;
    sheet.WriteLine(signature, Font::kSong, em, {right - em * 4, baseline});
    sheet.WriteLine(u"三月十二日", Font::kSong, em, {right - em * 5, baseline + lineHeight});
    return {right - em * 5, baseline + lineHeight * 0.35};
}

}  // namespace velloran::samples
