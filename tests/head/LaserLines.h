#pragma once

#include <vector>

#include "head/SceneGeometry.h"

namespace Korvex3Sync::tests {

/// Where laser lines cross the rows of an image, to a fraction of a pixel.
class LaserLines {
public:
    LaserLines(const std::vector<unsigned char>& image, int width, int height);

    int Height() const { return static_cast<int>(m_rows.size()); }
    /// The crossings of a row, from left to right.
    const std::vector<double>& Row(int row) const;
    /// The crossing that is nearest to a place, interpolated between the rows above and below;
    /// nothing when there is none within `limit` pixels.
    std::optional<double> Near(const Pixel& place, double limit) const;

private:
    std::optional<double> NearInRow(int row, double x, double limit) const;

    std::vector<std::vector<double>> m_rows;
};

/// The points of the lines of the first set that both sensors see. For each crossing in the left
/// image, the light planes predict a place in the right image for each line. The line with a
/// crossing nearest to its place is chosen; a crossing that fits two lines is left out.
std::vector<Point> PointsOnFirstSet(const virtual_head::HeadDescription& head,
                                    const LaserLines& left, const LaserLines& right);

/// The points of an image pair with a single line, from the two sensors alone: where the ray of a
/// left crossing, seen by the right sensor, meets the line there. Where it meets it more than once,
/// or not at all between the depths, there is no point.
std::vector<Point> PointsOnSingleLine(const virtual_head::HeadDescription& head,
                                      const LaserLines& left, const LaserLines& right);

}  // namespace Korvex3Sync::tests
