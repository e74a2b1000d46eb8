#pragma once

#include <array>
#include <optional>

#include "virtual_head/config/HeadDescription.h"

namespace Korvex3Sync::tests {

// The geometry of the virtual head as docs/virtual-head.md describes it. It is independent of the
// code that renders the pictures, so that an error there is found. Millimetres, in the head's
// coordinates unless stated otherwise.

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
    /// The direction that a pixel sees, of any length.
    Point Ray(const Pixel& pixel) const;
    /// Where a point is seen; nothing if it is behind the sensor.
    std::optional<Pixel> Project(const Point& point) const;

private:
    Point m_center;
    double m_toeIn;
    double m_focal;
    Pixel m_middle;
};

/// The midpoint between the two rays where they come closest.
Point Triangulate(const Sensor& left, const Pixel& leftPixel, const Sensor& right,
                  const Pixel& rightPixel);

/// How far a ray goes, in lengths of its direction, to the sheet of light of a line of the first
/// set.
double AlongToFirstSet(const virtual_head::SceneDescription& scene, int line, const Point& from,
                       const Point& direction);

/// How far a point is from the nearest surface of the object in a pose.
double DistanceToObject(const virtual_head::SceneDescription& scene, int pose, const Point& point);

}  // namespace Korvex3Sync::tests
