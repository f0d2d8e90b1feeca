#pragma once
// The extent of a volume: width, height and depth.

namespace Math {

template <typename T>
struct Size3T {
    Size3T() = default;
    Size3T(T w, T h, T d) : width(w), height(h), depth(d) {}

    bool operator==(const Size3T& other) const
    {
        return width == other.width && height == other.height && depth == other.depth;
    }
    bool operator!=(const Size3T& other) const { return !(*this == other); }

    T width{};
    T height{};
    T depth{};
};

} // namespace Math
