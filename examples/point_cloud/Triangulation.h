#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "Geometry.h"
#include "Lines.h"

namespace point_cloud {

// The midpoint between two rays where they come closest.
inline Vector Meet(const Vector& fromA, const Vector& a, const Vector& fromB, const Vector& b) {
    const Vector between = fromB - fromA;
    const double ab = Dot(a, b);
    const double aa = Dot(a, a);
    const double bb = Dot(b, b);
    const double both = aa * bb - ab * ab;
    const double alongA = (Dot(between, a) * bb - Dot(between, b) * ab) / both;
    const double alongB = (Dot(between, a) * ab - Dot(between, b) * aa) / both;
    return (fromA + a * alongA + fromB + b * alongB) * 0.5;
}

struct Point {
    Vector place;
    std::array<int, 3> color{};
};

class Triangulation {
public:
    Triangulation(int width, int height) : m_left(-1, width, height), m_right(1, width, height) {}

    void Add(const Set& set, std::vector<Point>& points) const {
        const Rows left = FindLines(set, 0);
        const Rows right = FindLines(set, 1);
        const Pose pose(set.key);
        for (int row = 0; row < set.height; ++row) {
            for (const double column : left[static_cast<std::size_t>(row)]) {
                if (const auto place = Find({column, static_cast<double>(row)}, right, pose)) {
                    points.push_back({*place, ColorAt(set, static_cast<int>(column), row)});
                }
            }
        }
    }

private:
    // The point in the object's coordinates; nothing unless exactly one laser line explains it.
    std::optional<Vector> Find(const Pixel& left, const Rows& right, const Pose& pose) const {
        constexpr double kAgreement = 1;  // pixels
        const Vector ray = m_left.Ray(left);
        std::optional<Vector> found;
        for (const Vector& normal : m_planes) {
            const double along = Dot(kLaser - m_left.Center(), normal) / Dot(ray, normal);
            const Vector guess = m_left.Center() + ray * along;
            if (!OnObject(pose.ToObject(guess))) {
                continue;
            }
            const Pixel expected = m_right.Project(guess);
            const auto column = LineNear(right, expected);
            if (!column || std::abs(*column - expected.column) > kAgreement) {
                continue;
            }
            if (found) {
                return std::nullopt;
            }
            found = pose.ToObject(
                Meet(m_left.Center(), ray, m_right.Center(), m_right.Ray({*column, expected.row})));
        }
        return found;
    }

    // z grows away from the head, so a point above the plate has a negative z.
    static bool OnObject(const Vector& point) { return point.z > -kHighest && point.z < kLowest; }

    // The colour from the four photosites of the RGGB mosaic around a pixel of the left sensor.
    static std::array<int, 3> ColorAt(const Set& set, int column, int row) {
        const std::uint8_t* const red = set.images[2].data() +
                                        static_cast<std::ptrdiff_t>(row / 2 * 2) * set.width +
                                        column / 2 * 2;
        return {red[0], (red[1] + red[set.width]) / 2, red[set.width + 1]};
    }

    Sensor m_left;
    Sensor m_right;
    std::vector<Vector> m_planes = LaserPlanes();
};

}  // namespace point_cloud
