#pragma once
// A position in two coordinates.

namespace Math {

template <typename T>
struct Point2T {
    Point2T() = default;
    Point2T(T xValue, T yValue) : x(xValue), y(yValue) {}

    bool operator==(const Point2T& other) const { return x == other.x && y == other.y; }
    bool operator!=(const Point2T& other) const { return !(*this == other); }

    T x{};
    T y{};
};

} // namespace Math
