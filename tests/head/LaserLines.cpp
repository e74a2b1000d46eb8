#include "head/LaserLines.h"

#include <algorithm>
#include <cmath>

namespace Korvex3Sync::tests {
namespace {

constexpr int kHalf = 6;         // pixels to either side of a peak that belong to it
constexpr int kHighEnough = 40;  // grey levels above what surrounds it
// What is not symmetric is a line that an edge of the object cuts.
constexpr double kMostOff = 0.75;
constexpr double kMostSlant = 1.5;  // pixels from row to row
constexpr double kNearest = 245;    // depths between which a point is looked for
constexpr double kFarthest = 350;

std::vector<double> Crossings(const unsigned char* row, int width) {
    std::vector<double> crossings;
    for (int x = kHalf; x + kHalf < width; ++x) {
        const int peak = row[x];
        const int ground = std::max(row[x - kHalf], row[x + kHalf]);
        const auto* const highest = std::max_element(row + x - kHalf, row + x + kHalf + 1);
        if (highest != row + x || peak < ground + kHighEnough) {
            continue;
        }
        double sum = 0;
        double moment = 0;
        for (int i = -kHalf; i <= kHalf; ++i) {
            const double over = std::max(0, row[x + i] - ground);
            sum += over;
            moment += over * i;
        }
        if (std::abs(moment / sum) <= kMostOff) {
            crossings.push_back(x + moment / sum);
        }
    }
    return crossings;
}

/// The pixel that a ray is seen at by the other sensor, at a depth.
std::optional<Pixel> SeenAt(const Sensor& left, const Point& ray, const Sensor& right,
                            double depth) {
    return right.Project(left.Center() + ray * (depth / ray[2]));
}

}  // namespace

LaserLines::LaserLines(const std::vector<unsigned char>& image, int width, int height) {
    for (int row = 0; row < height; ++row) {
        m_rows.push_back(Crossings(image.data() + std::ptrdiff_t{row} * width, width));
    }
}

const std::vector<double>& LaserLines::Row(int row) const {
    return m_rows.at(static_cast<std::size_t>(row));
}

std::optional<double> LaserLines::NearInRow(int row, double x, double limit) const {
    std::optional<double> best;
    for (const double crossing : Row(row)) {
        if (std::abs(crossing - x) <= limit &&
            (!best || std::abs(crossing - x) < std::abs(*best - x))) {
            best = crossing;
        }
    }
    return best;
}

std::optional<double> LaserLines::Near(const Pixel& place, double limit) const {
    const int above = static_cast<int>(std::floor(place.y));
    if (above < 0 || above + 1 >= Height()) {
        return std::nullopt;
    }
    const auto first = NearInRow(above, place.x, limit);
    const auto second = first ? NearInRow(above + 1, *first, kMostSlant) : std::nullopt;
    if (!second) {
        return std::nullopt;
    }
    return *first + (*second - *first) * (place.y - above);
}

std::vector<Point> PointsOnFirstSet(const virtual_head::HeadDescription& head,
                                    const LaserLines& left, const LaserLines& right) {
    constexpr double kLimit = 0.6;  // pixels
    const Sensor leftSensor(head, Sensor::Left);
    const Sensor rightSensor(head, Sensor::Right);
    std::vector<Point> points;
    for (int row = 0; row < left.Height(); ++row) {
        for (const double x : left.Row(row)) {
            const Pixel pixel{x, static_cast<double>(row)};
            const Point ray = leftSensor.Ray(pixel);
            std::vector<Pixel> found;
            for (int line = 0; line < head.scene.laserLines; ++line) {
                const double along = AlongToFirstSet(head.scene, line, leftSensor.Center(), ray);
                const double depth = along * ray[2];
                if (depth < kNearest || depth > kFarthest) {
                    continue;
                }
                const auto seen = SeenAt(leftSensor, ray, rightSensor, depth);
                const auto crossing = seen ? right.Near(*seen, kLimit) : std::nullopt;
                if (crossing) {
                    found.push_back({*crossing, seen->y});
                }
            }
            if (found.size() == 1) {
                points.push_back(Triangulate(leftSensor, pixel, rightSensor, found[0]));
            }
        }
    }
    return points;
}

std::vector<Point> PointsOnSingleLine(const virtual_head::HeadDescription& head,
                                      const LaserLines& left, const LaserLines& right) {
    constexpr double kStep = 0.5;  // millimetres of depth
    constexpr double kLimit = 8;   // pixels
    const Sensor leftSensor(head, Sensor::Left);
    const Sensor rightSensor(head, Sensor::Right);
    std::vector<Point> points;
    for (int row = 0; row < left.Height(); ++row) {
        if (left.Row(row).size() != 1) {
            continue;
        }
        const Pixel pixel{left.Row(row)[0], static_cast<double>(row)};
        const Point ray = leftSensor.Ray(pixel);
        std::vector<Pixel> met;
        std::optional<double> before;  // by how much the line was to the right, a step ago
        for (double depth = kNearest; depth <= kFarthest; depth += kStep) {
            const auto seen = SeenAt(leftSensor, ray, rightSensor, depth);
            const auto crossing = seen ? right.Near(*seen, kLimit) : std::nullopt;
            const std::optional<double> off =
                crossing ? std::optional(*crossing - seen->x) : std::nullopt;
            if (off && before && (*off > 0) != (*before > 0)) {
                met.push_back({*crossing, seen->y});
            }
            before = off;
        }
        if (met.size() == 1) {
            points.push_back(Triangulate(leftSensor, pixel, rightSensor, met[0]));
        }
    }
    return points;
}

}  // namespace Korvex3Sync::tests
