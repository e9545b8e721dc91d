#include "depotbrowser/icon_pixels.h"

#include <cmath>
#include <cstddef>

namespace depot {
namespace {

// Icons are described in a square of sixteen units.
constexpr double kUnits = 16.0;

// Each pixel is looked at in so many places across and down.
constexpr int kSamples = 4;

struct Point {
    double x, y;
};

struct Shape {
    std::uint32_t colour;  // 0xRRGGBB
    std::vector<Point> points;
};

Shape Rectangle(std::uint32_t colour, Point upperLeft, Point lowerRight) {
    return {colour,
            {upperLeft, {lowerRight.x, upperLeft.y}, lowerRight, {upperLeft.x, lowerRight.y}}};
}

constexpr std::uint32_t kAmber = 0xF2C35A;
constexpr std::uint32_t kDarkAmber = 0xA86F0C;
constexpr std::uint32_t kPaper = 0xF4F6FA;
constexpr std::uint32_t kSlate = 0x5C6B80;
constexpr std::uint32_t kBlue = 0x3F73BF;
constexpr std::uint32_t kSilver = 0xC6CFDB;

// A shape stands over those before it.
std::vector<Shape> ShapesOf(OwnIcon icon) {
    switch (icon) {
        case OwnIcon::kFolder:
            return {{kDarkAmber, {{1, 3}, {6, 3}, {8, 5}, {15, 5}, {15, 14}, {1, 14}}},
                    Rectangle(kAmber, {2, 7}, {14, 13})};
        case OwnIcon::kFile:
            return {{kSlate, {{3, 1}, {10, 1}, {14, 5}, {14, 15}, {3, 15}}},
                    {kPaper, {{4, 2}, {9, 2}, {9, 6}, {13, 6}, {13, 14}, {4, 14}}},
                    Rectangle(kBlue, {5, 7}, {12, 8}),
                    Rectangle(kBlue, {5, 9}, {12, 10}),
                    Rectangle(kBlue, {5, 11}, {10, 12})};
        default:
            return {Rectangle(kSlate, {2, 2}, {14, 14}), Rectangle(kSilver, {3, 3}, {13, 8}),
                    Rectangle(kSilver, {3, 9}, {13, 13}), Rectangle(kBlue, {6, 5}, {10, 6}),
                    Rectangle(kBlue, {6, 10}, {10, 11})};
    }
}

// Puts the points between the pixels.
std::vector<Shape> Scaled(std::vector<Shape> shapes, int side) {
    for (Shape& shape : shapes) {
        for (Point& point : shape.points) {
            point = {std::round(point.x * side / kUnits), std::round(point.y * side / kUnits)};
        }
    }
    return shapes;
}

bool Holds(const Shape& shape, Point place) {
    bool inside = false;
    const std::vector<Point>& points = shape.points;
    for (std::size_t index = 0, last = points.size() - 1; index < points.size(); last = index++) {
        const Point &from = points[index], &to = points[last];
        const bool crosses = (from.y > place.y) != (to.y > place.y);
        if (crosses && place.x < (to.x - from.x) * (place.y - from.y) / (to.y - from.y) + from.x) {
            inside = !inside;
        }
    }
    return inside;
}

// The sum of the colours seen in one pixel.
struct Sum {
    std::uint32_t red = 0, green = 0, blue = 0, seen = 0;

    void Add(std::uint32_t colour) {
        red += colour >> 16 & 0xFF;
        green += colour >> 8 & 0xFF;
        blue += colour & 0xFF;
        ++seen;
    }
    std::uint32_t Pixel() const {
        if (seen == 0) return 0;
        const std::uint32_t share = seen * 0xFF / (kSamples * kSamples);
        return share << 24 | red / seen << 16 | green / seen << 8 | blue / seen;
    }
};

std::uint32_t PixelAt(const std::vector<Shape>& shapes, int x, int y) {
    Sum sum;
    for (int sample = 0; sample < kSamples * kSamples; ++sample) {
        const int across = sample % kSamples, down = sample / kSamples;
        const Point place = {x + (across + 0.5) / kSamples, y + (down + 0.5) / kSamples};
        for (auto shape = shapes.rbegin(); shape != shapes.rend(); ++shape) {
            if (!Holds(*shape, place)) continue;
            sum.Add(shape->colour);
            break;
        }
    }
    return sum.Pixel();
}

}  // namespace

std::vector<std::uint32_t> IconPixels(OwnIcon icon, int side) {
    const std::vector<Shape> shapes = Scaled(ShapesOf(icon), side);
    std::vector<std::uint32_t> pixels;
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) pixels.push_back(PixelAt(shapes, x, y));
    }
    return pixels;
}

}  // namespace depot
