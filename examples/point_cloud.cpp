// Measures the built-in scene of the virtual head with its laser lines and saves the points as PLY,
// in millimetres and in the coordinates of the object.
//
//   point_cloud [FILE] [SETS]            (default: points.ply, 8 sets)
//
// A laser line is found in the left image, row by row. A point of it lies on the ray of that pixel
// and in the plane of the laser line; which line it is tells the right image: for the right plane,
// and for no other, the point is seen there on a line, too. The point itself is where the rays of
// the two sensors meet. Where sensors, laser lines and object stand is what docs/virtual-head.md
// says of the scene's defaults; a real head needs its calibration here.

#include <Korvex3Sync/Korvex3Sync.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <numbers>
#include <optional>
#include <semaphore>
#include <string>
#include <vector>

using namespace Korvex3Sync;

namespace {

// ------------------------------------------------------------------ the geometry, as documented

constexpr double kFocalLength = 1500;  // pixels, for images of 1280 x 1024
constexpr double kBaseline = 150;      // mm
constexpr double kToeIn = 13;          // degrees
constexpr double kDistance = 320;      // mm, from the middle of the baseline to the plate
constexpr int kLaserLines = 9;
constexpr double kLaserSpacing = 22;  // mm, at the plate
constexpr double kLaserAngle = 20;    // degrees from the vertical
constexpr int kPoses = 4;
constexpr double kMotion = 6;    // mm
constexpr double kSwing = 4;     // degrees
constexpr double kHighest = 70;  // mm: no part of the object stands further out of the plate
constexpr double kLowest = 3;    // mm below the plate, for what noise does

constexpr double Radians(double degrees) {
    return degrees * std::numbers::pi / 180;
}

// x to the right, y down, z away from the head; millimetres.
struct Vector {
    double x = 0;
    double y = 0;
    double z = 0;
};

Vector operator+(const Vector& a, const Vector& b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
Vector operator-(const Vector& a, const Vector& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
Vector operator*(const Vector& a, double factor) {
    return {a.x * factor, a.y * factor, a.z * factor};
}
double Dot(const Vector& a, const Vector& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
Vector Cross(const Vector& a, const Vector& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
Vector Unit(const Vector& a) {
    return a * (1 / std::sqrt(Dot(a, a)));
}

struct Pixel {
    double column = 0;
    double row = 0;
};

// An ideal sensor that stands beside the middle of the baseline and is turned towards it.
class Sensor {
public:
    // `side` is -1 for the left sensor and 1 for the right one.
    Sensor(double side, int width, int height)
        : m_center{side * kBaseline / 2, 0, 0},
          m_x{std::cos(Radians(kToeIn)), 0, side * std::sin(Radians(kToeIn))},
          m_z{-side * std::sin(Radians(kToeIn)), 0, std::cos(Radians(kToeIn))},
          m_focal(kFocalLength * std::max(width / 1280.0, height / 1024.0)),
          m_middle{(width - 1) / 2.0, (height - 1) / 2.0} {}

    const Vector& Center() const { return m_center; }

    Vector Ray(const Pixel& pixel) const {
        return m_x * ((pixel.column - m_middle.column) / m_focal) +
               Vector{0, (pixel.row - m_middle.row) / m_focal, 0} + m_z;
    }

    Pixel Project(const Vector& point) const {
        const Vector seen = point - m_center;
        const double depth = Dot(seen, m_z);
        return {m_middle.column + m_focal * Dot(seen, m_x) / depth,
                m_middle.row + m_focal * seen.y / depth};
    }

private:
    Vector m_center;
    Vector m_x;
    Vector m_z;
    double m_focal;
    Pixel m_middle;
};

const Vector kLaser{0, -70, 0};

// The normals of the planes in which the light of the lines of laser work mode 1 runs.
std::vector<Vector> LaserPlanes() {
    const Vector aim = Vector{0, 0, kDistance} - kLaser;
    const double reach = std::sqrt(Dot(aim, aim));
    const Vector z = Unit(aim);
    const Vector x = Unit(Cross({0, 1, 0}, z));
    const Vector y = Cross(z, x);
    std::vector<Vector> normals;
    for (int line = 0; line < kLaserLines; ++line) {
        // The line holds the directions x * u + y * v + z with u * cos + v * sin = offset.
        const double offset = (line - (kLaserLines - 1) / 2.0) * kLaserSpacing / reach;
        normals.push_back(x * std::cos(Radians(kLaserAngle)) + y * std::sin(Radians(kLaserAngle)) -
                          z * offset);
    }
    return normals;
}

// The object moves on from trigger to trigger: head = turn * object + shift.
class Pose {
public:
    explicit Pose(int key) {
        const double phase = 2 * std::numbers::pi * (key % kPoses) / kPoses;
        const double along = std::cos(phase);
        const double across = std::sin(phase);
        const double swing = Radians(kSwing * along);
        const double nod = Radians(kSwing * across / 2);
        m_shift = {kMotion * along, kMotion * across / 2, kDistance + kMotion * across};
        // About y by `swing`, after about x by `nod`; the columns are the object's axes.
        m_x = {std::cos(swing), 0, -std::sin(swing)};
        m_y = {std::sin(swing) * std::sin(nod), std::cos(nod), std::cos(swing) * std::sin(nod)};
        m_z = {std::sin(swing) * std::cos(nod), -std::sin(nod), std::cos(swing) * std::cos(nod)};
    }

    Vector ToObject(const Vector& head) const {
        const Vector moved = head - m_shift;
        return {Dot(moved, m_x), Dot(moved, m_y), Dot(moved, m_z)};
    }

private:
    Vector m_shift;
    Vector m_x;
    Vector m_y;
    Vector m_z;
};

// ------------------------------------------------------------------ finding the lines

// One image set, copied out of the scan callback.
struct Set {
    int width = 0;
    int height = 0;
    int key = 0;
    std::array<std::vector<std::uint8_t>, 3> images;  // left, right, colour mosaic
};

// The middles of the lines in one row, to a part of a pixel, from left to right.
std::vector<double> FindPeaks(const Set& set, std::size_t image, int row) {
    constexpr int kHalf = 4;          // pixels to either side that belong to a line
    constexpr int kLeastHeight = 40;  // grey levels above what lies beside
    const std::uint8_t* const pixels =
        set.images[image].data() + static_cast<std::ptrdiff_t>(row) * set.width;
    std::vector<double> peaks;
    for (int x = 2 * kHalf; x < set.width - 2 * kHalf; ++x) {
        // The first of equal neighbours stands for all of them.
        const bool highest = *std::max_element(pixels + x - kHalf, pixels + x) < pixels[x] &&
                             *std::max_element(pixels + x, pixels + x + kHalf + 1) == pixels[x];
        const int ground = std::max(pixels[x - 2 * kHalf], pixels[x + 2 * kHalf]);
        if (!highest || pixels[x] - ground < kLeastHeight) {
            continue;
        }
        double weight = 0;
        double sum = 0;
        for (int i = x - kHalf; i <= x + kHalf + 1; ++i) {
            const double height = std::max(0, pixels[i] - ground);
            weight += height;
            sum += height * i;
        }
        peaks.push_back(sum / weight);
    }
    return peaks;
}

using Rows = std::vector<std::vector<double>>;

Rows FindLines(const Set& set, std::size_t image) {
    Rows rows;
    for (int row = 0; row < set.height; ++row) {
        rows.push_back(FindPeaks(set, image, row));
    }
    return rows;
}

std::optional<double> Nearest(const std::vector<double>& peaks, double column, double within) {
    std::optional<double> nearest;
    for (const double peak : peaks) {
        if (std::abs(peak - column) < within) {
            within = std::abs(peak - column);
            nearest = peak;
        }
    }
    return nearest;
}

// Where a line passes near a place of the image, at exactly its row.
std::optional<double> LineNear(const Rows& rows, const Pixel& place) {
    constexpr double kWithin = 3;  // pixels
    const int row = static_cast<int>(std::floor(place.row));
    if (row < 0 || row + 1 >= static_cast<int>(rows.size())) {
        return std::nullopt;
    }
    const auto above = Nearest(rows[static_cast<std::size_t>(row)], place.column, kWithin);
    const auto below = Nearest(rows[static_cast<std::size_t>(row) + 1], place.column, kWithin);
    if (!above || !below) {
        return std::nullopt;
    }
    return *above + (*below - *above) * (place.row - row);
}

// ------------------------------------------------------------------ points

// The middle between two rays where they come closest.
Vector Meet(const Vector& fromA, const Vector& a, const Vector& fromB, const Vector& b) {
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
    // The point in the object's coordinates; none unless exactly one laser line explains it.
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

    // z grows away from the head, so what stands out of the plate has a negative one.
    static bool OnObject(const Vector& point) { return point.z > -kHighest && point.z < kLowest; }

    // The four photosites of an RGGB mosaic around a pixel of the left sensor.
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

bool Save(const std::string& file, const std::vector<Point>& points) {
    std::ofstream ply(file);
    ply << "ply\nformat ascii 1.0\ncomment millimetres; x right, y down, z away from the head\n"
        << "element vertex " << points.size()
        << "\nproperty float x\nproperty float y\nproperty float z\n"
        << "property uchar red\nproperty uchar green\nproperty uchar blue\nend_header\n";
    for (const auto& [place, color] : points) {
        ply << place.x << ' ' << place.y << ' ' << place.z << ' ' << color[0] << ' ' << color[1]
            << ' ' << color[2] << '\n';
    }
    ply.close();
    return !ply.fail();
}

// ------------------------------------------------------------------ the scan

// Takes copies of image sets until it has enough. The library calls OnSet on a camera's thread.
class Collector {
public:
    Collector(std::size_t sets, std::size_t pixels) : m_sets(sets) {
        for (Set& set : m_sets) {
            for (auto& image : set.images) {
                image.resize(pixels);
            }
        }
    }

    static void OnSet(const void* const& context, std::vector<unsigned char*>& images,
                      const int& width, const int& height, std::vector<int>&) {
        auto* const self = static_cast<Collector*>(const_cast<void*>(context));
        const auto pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
        if (self->m_taken == self->m_sets.size() || images.size() != 3 ||
            pixels != self->m_sets.front().images.front().size()) {
            return;
        }
        Set& set = self->m_sets[self->m_taken++];
        set.width = width;
        set.height = height;
        for (std::size_t i = 0; i < images.size(); ++i) {
            std::copy_n(images[i], pixels, set.images[i].begin());
        }
        // The head puts the trigger number, modulo 256, into this pixel of the right image.
        set.key = images[1][3];
        self->m_arrived.release();
    }

    bool WaitForSet() { return m_arrived.try_acquire_for(std::chrono::seconds(5)); }
    const std::vector<Set>& Sets() const { return m_sets; }

private:
    std::vector<Set> m_sets;
    std::size_t m_taken = 0;
    std::counting_semaphore<> m_arrived{0};
};

// True when all sets came.
bool Scan(void* const& head, Collector& collector) {
    // Light for the colour frames only: in the others the lines stand on black.
    SetStrobeControlledByTrigger(head, CONTROL_ROUTE_2, STROBE_STATE_1);
    SetStrobeDutioRatio(head, 100, 0, 0);
    EnableBlueLaser(head, LASER_WORK_MODE_1, true);
    SetScanCallBackFunction(head, Collector::OnSet, &collector);
    EnableVideoTrigger(head, TRIGGER_LASER_LINES_COLOR, true);
    bool came = true;
    for (std::size_t i = 0; came && i < collector.Sets().size(); ++i) {
        came = collector.WaitForSet();
    }
    EnableVideoTrigger(head, TRIGGER_LASER_LINES_COLOR, false);
    SetScanCallBackFunction(head, nullptr, nullptr);
    EnableBlueLaser(head, LASER_WORK_MODE_1, false);
    return came;
}

int Run(const std::string& file, int sets) {
    std::vector<char*> serials;
    std::vector<int> widths;
    std::vector<int> heights;
    std::vector<bool> color;
    int cameras = 0;
    void* head = nullptr;
    GetCamerasInformation("KV00", serials, widths, heights, color, cameras);
    const bool connected =
        ConnectDevice("KV00", "", serials, widths, heights, head) == STATUS_SUCCESS;
    for (char* serial : serials) {
        delete[] serial;
    }
    if (!connected) {
        std::cerr << "no head; KORVEX_VIRTUAL_HEAD=default gives a simulated one\n";
        return 1;
    }
    const int width = widths.front();
    const int height = heights.front();
    Collector collector(static_cast<std::size_t>(sets),
                        static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    const bool came = Scan(head, collector);
    DisConnectDevice(head);
    if (!came) {
        std::cerr << "the head gave too few image sets with colour\n";
        return 1;
    }
    std::vector<Point> points;
    const Triangulation triangulation(width, height);
    for (const Set& set : collector.Sets()) {
        triangulation.Add(set, points);
    }
    if (!Save(file, points)) {
        std::cerr << "cannot write " << file << '\n';
        return 1;
    }
    std::cout << points.size() << " points of " << sets << " image sets in " << file << '\n';
    return 0;
}

}  // namespace

int main(int count, char** arguments) {
    constexpr int kMostSets = 100;  // each takes 4 MB
    const std::string file = count > 1 ? arguments[1] : "points.ply";
    const int sets = count > 2 ? std::atoi(arguments[2]) : 8;
    if (count > 3 || sets < 1 || sets > kMostSets) {
        std::cerr << "usage: point_cloud [FILE] [SETS]     SETS: 1 to " << kMostSets << '\n';
        return 2;
    }
    return Run(file, sets);
}
