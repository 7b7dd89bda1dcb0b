#include "samples/Coverage.h"

#include <algorithm>
#include <cmath>

namespace velloran::samples {

PixelBox PixelsAround(const Bounds& bounds, int width, int height) {
    if (bounds.IsEmpty())
        return {};
    const Box& box = bounds.Get();
    const auto limited = [](double value, int limit) {
        return static_cast<int>(std::clamp(value, 0.0, static_cast<double>(limit)));
    };
    return {limited(std::floor(box.left), width), limited(std::floor(box.top), height),
            limited(std::ceil(box.right), width), limited(std::ceil(box.bottom), height)};
}

void Coverage::Fill(const Path& path, const PixelBox& pixels) {
    pixels_ = pixels;
    if (pixels.IsEmpty())
        return;
    // An edge at the right border touches two columns more.
    stride_ = static_cast<std::size_t>(pixels.Width()) + 2;
    values_.assign(stride_ * pixels.Height(), 0.0F);
    for (const Contour& contour : path.contours)
        for (std::size_t i = 0; i < contour.size(); ++i)
            AddEdge(contour[i], contour[(i + 1) % contour.size()]);
    for (int y = 0; y < pixels.Height(); ++y) {
        float* row = values_.data() + y * stride_;
        float sum = 0;
        for (int x = 0; x < pixels.Width(); ++x) {
            sum += row[x];
            row[x] = std::min(std::abs(sum), 1.0F);
        }
    }
}

void Coverage::AddEdge(Point from, Point to) {
    float direction = 1;
    if (from.y > to.y) {
        std::swap(from, to);
        direction = -1;
    }
    double x0 = from.x - pixels_.left, y0 = from.y - pixels_.top;
    double x1 = to.x - pixels_.left, y1 = to.y - pixels_.top;
    const double width = pixels_.Width(), height = pixels_.Height();
    if (y1 <= 0 || y0 >= height || y0 == y1)
        return;
    const double slope = (x1 - x0) / (y1 - y0);
    if (y0 < 0) {
        x0 -= y0 * slope;
        y0 = 0;
    }
    if (y1 > height) {
        x1 -= (y1 - height) * slope;
        y1 = height;
    }
    // What lies left of the area still covers all that is right of it; it is pushed to the border,
    // as is what lies right of it, where it covers nothing.
    double cuts[4] = {y0, y0, y1, y1};
    int last = 1;
    double crossings[2] = {y0 - x0 / slope, y0 + (width - x0) / slope};
    if (slope < 0)
        std::swap(crossings[0], crossings[1]);
    for (const double crossing : crossings)
        if (slope != 0 && crossing > cuts[last - 1] && crossing < y1)
            cuts[last++] = crossing;
    cuts[last] = y1;
    for (int i = 0; i < last; ++i) {
        const double a = std::clamp(x0 + (cuts[i] - y0) * slope, 0.0, width);
        const double b = std::clamp(x0 + (cuts[i + 1] - y0) * slope, 0.0, width);
        AddInside(a, cuts[i], b, cuts[i + 1], direction);
    }
}

// One edge, y0 <= y1, inside the area: what each row's pixels right of the edge gain.
void Coverage::AddInside(double x0, double y0, double x1, double y1, float direction) {
    if (y1 <= y0)
        return;
    const double slope = (x1 - x0) / (y1 - y0);
    const int lastRow = std::min(static_cast<int>(std::ceil(y1)), pixels_.Height());
    for (int y = static_cast<int>(y0); y < lastRow; ++y) {
        float* row = values_.data() + y * stride_;
        const double top = std::max<double>(y, y0), bottom = std::min<double>(y + 1.0, y1);
        const double height = (bottom - top) * direction;
        const double xTop = x0 + (top - y0) * slope, xBottom = x0 + (bottom - y0) * slope;
        const double left = std::clamp(std::min(xTop, xBottom), 0.0, pixels_.Width() + 0.0);
        const double right = std::clamp(std::max(xTop, xBottom), left, pixels_.Width() + 0.0);
        const int first = static_cast<int>(left);
        if (right <= first + 1.0) {
            const double middle = (left + right) / 2 - first;
            row[first] += static_cast<float>(height * (1 - middle));
            row[first + 1] += static_cast<float>(height * middle);
            continue;
        }
        // The share of the row's height that lies left of a column's right border, integrated.
        const double perPixel = height / (right - left);
        double before = 0;
        for (int x = first; x < right; ++x) {
            const double from = std::max<double>(x, left), to = std::min<double>(x + 1.0, right);
            const double crossed = perPixel * (to - from);
            const double covered = before + crossed * (x + 1 - (from + to) / 2);
            // `covered` is the pixel's area; `row` holds differences along the row.
            row[x] += static_cast<float>(covered - before);
            row[x + 1] += static_cast<float>(before + crossed - covered);
            before += crossed;
        }
    }
}

}  // namespace velloran::samples
