#pragma once

#include <array>
#include <optional>

#include "virtual_head/config/HeadDescription.h"

namespace Korvex3Sync::tests {

// The geometry of the virtual head as docs/virtual-head.md tells it, written down a second time, so
// that an error in how the pictures are drawn cannot hide here. Millimetres, in the head's
// coordinates unless said otherwise.

using Point = std::array<double, 3>;

Point operator+(const Point& a, const Point& b);
Point operator-(const Point& a, const Point& b);
Point operator*(const Point& a, double factor);
double Dot(const Point& a, const Point& b);
double Length(const Point& a);

struct Pixel {
    double x = 0;
    double y = 0;
};

/// One of the two sensors.
class Sensor {
public:
    enum Side { Left, Right };
    Sensor(const virtual_head::HeadDescription& description, Side side);

    const Point& Center() const { return m_center; }
    /// Direction of what a pixel sees, of no certain length.
    Point Ray(const Pixel& pixel) const;
    /// Where a point is seen; nothing when it lies behind.
    std::optional<Pixel> Project(const Point& point) const;

private:
    Point m_center;
    double m_toeIn;
    double m_focal;
    Pixel m_middle;
};

/// Where the two rays come nearest to each other: the middle between them.
Point Triangulate(const Sensor& left, const Pixel& leftPixel, const Sensor& right,
                  const Pixel& rightPixel);

/// How far a ray goes, in lengths of its direction, to the sheet of light of a line of the first
/// set.
double AlongToFirstSet(const virtual_head::SceneDescription& scene, int line, const Point& from,
                       const Point& direction);

/// How far a point is from the nearest surface of the object in a pose.
double DistanceToObject(const virtual_head::SceneDescription& scene, int pose, const Point& point);

}  // namespace Korvex3Sync::tests
