#include "samples/Warp.h"

#include <cmath>
#include <numbers>

namespace velloran::samples {

namespace {

constexpr double kLongestStraight = 6;  // pixels, on a curled page

Point Curled(const PageCurl& curl, Point page) {
    const double share = page.x / curl.width;
    const double s = curl.spineAtLeft ? share : 1 - share;
    const double bump = 6.75 * s * (1 - s) * (1 - s);
    const double squeezed = s - curl.squeeze * s * (1 - s) * (1 - s);
    const double down = page.y / curl.height;
    const double rise = curl.topRise + (curl.bottomRise - curl.topRise) * down;
    return {(curl.spineAtLeft ? squeezed : 1 - squeezed) * curl.width, page.y - rise * bump};
}

// The square (0,0) (1,0) (1,1) (0,1) to four corners: Heckbert, "Fundamentals of texture mapping
// and image warping", 1989.
std::array<double, 9> SquareToQuad(const std::array<Point, 4>& q) {
    const Point d1 = q[1] - q[2], d2 = q[3] - q[2], sum = q[0] - q[1] + (q[2] - q[3]);
    const double determinant = d1.x * d2.y - d2.x * d1.y;
    const double g = (sum.x * d2.y - d2.x * sum.y) / determinant;
    const double h = (d1.x * sum.y - sum.x * d1.y) / determinant;
    return {q[1].x - q[0].x + g * q[1].x,
            q[3].x - q[0].x + h * q[3].x,
            q[0].x,
            q[1].y - q[0].y + g * q[1].y,
            q[3].y - q[0].y + h * q[3].y,
            q[0].y,
            g,
            h,
            1};
}

}  // namespace

Warp& Warp::Curl(const PageCurl& curl) {
    curl_ = curl;
    return *this;
}

Warp& Warp::Move(double dx, double dy) {
    Append({1, 0, dx, 0, 1, dy, 0, 0, 1});
    return *this;
}

Warp& Warp::Turn(double degrees, Point center) {
    const double angle = degrees * std::numbers::pi / 180;
    const double c = std::cos(angle), s = std::sin(angle);
    Append({c, -s, center.x - c * center.x + s * center.y, s, c,
            center.y - s * center.x - c * center.y, 0, 0, 1});
    return *this;
}

Warp& Warp::Mirror(double width) {
    Append({-1, 0, width, 0, 1, 0, 0, 0, 1});
    return *this;
}

Warp& Warp::Project(double width, double height, const std::array<Point, 4>& corners) {
    Append({1 / width, 0, 0, 0, 1 / height, 0, 0, 0, 1});
    Append(SquareToQuad(corners));
    return *this;
}

void Warp::Append(const Matrix& next) {
    Matrix product{};
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            for (int k = 0; k < 3; ++k)
                product[row * 3 + column] += next[row * 3 + k] * matrix_[k * 3 + column];
    matrix_ = product;
}

Point Warp::operator()(Point page) const {
    if (curl_)
        page = Curled(*curl_, page);
    const Matrix& m = matrix_;
    const double w = m[6] * page.x + m[7] * page.y + m[8];
    return {(m[0] * page.x + m[1] * page.y + m[2]) / w, (m[3] * page.x + m[4] * page.y + m[5]) / w};
}

Path Warp::operator()(const Path& path) const {
    Path warped;
    warped.contours.reserve(path.contours.size());
    for (const Contour& contour : path.contours) {
        Contour out;
        out.reserve(contour.size());
        for (std::size_t i = 0; i < contour.size(); ++i) {
            const Point from = contour[i], to = contour[(i + 1) % contour.size()];
            const int pieces =
                curl_ ? 1 + static_cast<int>(Length(to - from) / kLongestStraight) : 1;
            for (int piece = 0; piece < pieces; ++piece)
                out.push_back((*this)(Blend(from, to, static_cast<double>(piece) / pieces)));
        }
        warped.Add(std::move(out));
    }
    return warped;
}

}  // namespace velloran::samples
