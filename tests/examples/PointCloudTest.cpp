#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <numbers>
#include <sstream>
#include <string>
#include <vector>

#include "support/ChildProcess.h"
#include "virtual_head/TestFiles.h"
#include "virtual_head/config/SceneDescription.h"

namespace Korvex3Sync::tests {

namespace {

using ::testing::HasSubstr;

struct Point {
    std::array<double, 3> place{};
    std::array<int, 3> color{};
};

/// Reads the whole file; fails the test for anything but the PLY that is expected.
std::vector<Point> ReadPly(const std::filesystem::path& file) {
    std::ifstream stream(file);
    std::string header;
    std::size_t count = 0;
    for (std::string line; std::getline(stream, line);) {
        header += line + '\n';
        if (line == "end_header") {
            break;
        }
        if (line.starts_with("element vertex ")) {
            count = std::stoul(line.substr(line.rfind(' ')));
        }
    }
    EXPECT_TRUE(header.starts_with("ply\nformat ascii 1.0\n")) << header;
    EXPECT_THAT(header, HasSubstr("property float x\nproperty float y\nproperty float z\n"
                                  "property uchar red\nproperty uchar green\n"
                                  "property uchar blue\nend_header\n"));
    std::vector<Point> points;
    for (Point point; stream >> point.place[0] >> point.place[1] >> point.place[2] >>
                      point.color[0] >> point.color[1] >> point.color[2];) {
        points.push_back(point);
    }
    EXPECT_TRUE(stream.eof());
    EXPECT_EQ(points.size(), count);
    return points;
}

/// How far points lie from the surfaces of the object, in its own coordinates.
class KnownObject {
public:
    double FromPlate(const Point& point) const { return std::abs(point.place[2]); }

    double FromSphere(const Point& point) const {
        const auto off = Minus(point.place, m_scene.sphereCenter);
        return std::abs(std::hypot(off[0], off[1], off[2]) - m_scene.sphereRadius);
    }

    double FromBox(const Point& point) const {
        const auto off = Minus(point.place, m_scene.boxCenter);
        const double turn = m_scene.boxTurn * std::numbers::pi / 180;
        const std::array<double, 3> inBox{off[0] * std::cos(turn) + off[1] * std::sin(turn),
                                          off[1] * std::cos(turn) - off[0] * std::sin(turn),
                                          off[2]};
        std::array<double, 3> outside{};
        double inside = -1000;
        for (std::size_t i = 0; i < outside.size(); ++i) {
            const double beyond = std::abs(inBox[i]) - m_scene.boxSize[i] / 2;
            outside[i] = std::max(beyond, 0.0);
            inside = std::max(inside, beyond);
        }
        return inside < 0 ? -inside : std::hypot(outside[0], outside[1], outside[2]);
    }

private:
    static std::array<double, 3> Minus(const std::array<double, 3>& a,
                                       const std::array<double, 3>& b) {
        return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
    }

    const virtual_head::SceneDescription m_scene{};
};

ChildResult PointCloud(const std::vector<std::string>& arguments, const std::string& head) {
    std::vector<std::string> command{KORVEX_POINT_CLOUD};
    command.insert(command.end(), arguments.begin(), arguments.end());
    ChildOptions options;
    options.environment.emplace_back("KORVEX_VIRTUAL_HEAD", head);
    return RunChild(command, options);
}

/// The built-in scene in half the size, so that a sanitizer is done in time.
std::string HalfSizeHead(const TemporaryFolder& folder) {
    const auto file = folder.Path() / "head.toml";
    WriteText(file, "[camera]\nwidth = 640\nheight = 512\n");
    return file.string();
}

TEST(PointCloud, LiesOnTheKnownObject) {
    const TemporaryFolder folder;
    const auto file = folder.Path() / "points.ply";
    const ChildResult result = PointCloud({file.string(), "4"}, HalfSizeHead(folder));
    ASSERT_EQ(result.exitCode, 0) << result.error;
    const std::vector<Point> points = ReadPly(file);
    EXPECT_THAT(result.output,
                HasSubstr(std::to_string(points.size()) + " points of 4 image sets"));

    const KnownObject object;
    constexpr double kNear = 0.5;  // mm
    int plate = 0;
    int sphere = 0;
    int box = 0;
    int off = 0;
    for (const Point& point : points) {
        if (object.FromPlate(point) < kNear) {
            ++plate;
        } else if (object.FromSphere(point) < kNear) {
            ++sphere;
        } else if (object.FromBox(point) < kNear) {
            ++box;
        } else {
            ++off;
        }
    }
    // The wrong points are at the edges of the shapes, where a line ends within a few pixels.
    EXPECT_LT(off, static_cast<int>(points.size()) / 500) << "of " << points.size();
    EXPECT_GT(plate, 5000);
    EXPECT_GT(sphere, 1000);
    EXPECT_GT(box, 500);
}

TEST(PointCloud, HasTheColoursOfTheObject) {
    const TemporaryFolder folder;
    const auto file = folder.Path() / "points.ply";
    ASSERT_EQ(PointCloud({file.string(), "1"}, HalfSizeHead(folder)).exitCode, 0);
    int lit = 0;
    const std::vector<Point> points = ReadPly(file);
    for (const Point& point : points) {
        const auto [least, most] = std::minmax_element(point.color.begin(), point.color.end());
        EXPECT_GE(*least, 0);
        EXPECT_LE(*most, 255);
        lit += *most > 20 ? 1 : 0;
    }
    EXPECT_GT(lit, static_cast<int>(points.size()) / 2);
}

TEST(PointCloud, AFileThatCannotBeWrittenIsTold) {
    const TemporaryFolder folder;
    const ChildResult result =
        PointCloud({"/no/such/folder/points.ply", "1"}, HalfSizeHead(folder));
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.error, HasSubstr("cannot write /no/such/folder/points.ply"));
}

TEST(PointCloud, WithoutAHeadItSaysSo) {
    const ChildResult result = PointCloud({"/no/such/folder/points.ply"}, "");
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.error, HasSubstr("no head"));
}

}  // namespace

}  // namespace Korvex3Sync::tests
