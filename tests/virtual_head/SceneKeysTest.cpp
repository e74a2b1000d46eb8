#include <gmock/gmock.h>

#include <limits>

#include "virtual_head/Request.h"
#include "virtual_head/TestFiles.h"
#include "virtual_head/config/HeadFile.h"

namespace Korvex3Sync::tests {
namespace {

using namespace virtual_head;
using testing::EndsWith;
using testing::HasSubstr;

class SceneKeysTest : public testing::Test {
protected:
    std::variant<HeadDescription, HeadFileError> Read(const std::string& keys) {
        WriteText(m_file, "[scene]\n" + keys);
        return ReadHeadFile(m_file);
    }
    SceneDescription Good(const std::string& keys) {
        const auto read = Read(keys);
        if (const auto* error = std::get_if<HeadFileError>(&read)) {
            ADD_FAILURE() << error->message;
            return {};
        }
        return std::get<HeadDescription>(read).scene;
    }
    /// The line that is named and what is wrong there.
    std::pair<int, std::string> Wrong(const std::string& keys) {
        const auto read = Read(keys);
        const auto* error = std::get_if<HeadFileError>(&read);
        if (error == nullptr) {
            ADD_FAILURE() << "was taken: " << keys;
            return {};
        }
        return {error->line, error->message};
    }

    TemporaryFolder m_folder;
    const std::filesystem::path m_file = m_folder.Path() / "head.toml";
};

TEST_F(SceneKeysTest, EveryKeyIsTakenOver) {
    const SceneDescription scene = Good(R"(
focal_length = 1200.5
baseline = 100
toe_in = 8
distance = 400
sphere_center = [1, -2.5, -3]
sphere_radius = 30
box_center = [40, 5, -6]
box_size = [7, 8, 9]
box_turn = -10
projector = [11, 12, -13]
laser_lines = 5
laser_spacing = 14
laser_width = 1.5
laser_angle = 16
poses = 3
motion = 2
swing = 1
)");
    EXPECT_EQ(scene.focalLength, 1200.5);
    EXPECT_EQ(scene.baseline, 100);
    EXPECT_EQ(scene.toeIn, 8);
    EXPECT_EQ(scene.distance, 400);
    EXPECT_EQ(scene.sphereCenter, (std::array<double, 3>{1, -2.5, -3}));
    EXPECT_EQ(scene.sphereRadius, 30);
    EXPECT_EQ(scene.boxCenter, (std::array<double, 3>{40, 5, -6}));
    EXPECT_EQ(scene.boxSize, (std::array<double, 3>{7, 8, 9}));
    EXPECT_EQ(scene.boxTurn, -10);
    EXPECT_EQ(scene.projector, (std::array<double, 3>{11, 12, -13}));
    EXPECT_EQ(scene.laserLines, 5);
    EXPECT_EQ(scene.laserSpacing, 14);
    EXPECT_EQ(scene.laserWidth, 1.5);
    EXPECT_EQ(scene.laserAngle, 16);
    EXPECT_EQ(scene.poses, 3);
    EXPECT_EQ(scene.motion, 2);
    EXPECT_EQ(scene.swing, 1);
}

TEST_F(SceneKeysTest, UnknownKeyNamesItsLine) {
    const auto [line, what] = Wrong("baseline = 100\ncolour = 3\n");
    EXPECT_EQ(line, 3);
    EXPECT_THAT(what, EndsWith("unknown key \"colour\" in [scene]"));
}

TEST_F(SceneKeysTest, WrongTypesNameTheirLine) {
    EXPECT_THAT(Wrong("baseline = \"wide\"").second,
                EndsWith(":2: [scene] baseline: a number is expected"));
    EXPECT_THAT(Wrong("poses = 2.5").second,
                EndsWith(":2: [scene] poses: a whole number is expected"));
    for (const char* place : {"1", "[1, 2]", "[1, 2, 3, 4]", "[1, 2, \"x\"]"}) {
        EXPECT_THAT(Wrong(std::string("projector = ") + place).second,
                    EndsWith(":2: [scene] projector: an array of 3 numbers is expected"));
    }
}

TEST_F(SceneKeysTest, ValuesOutOfRangeNameTheRange) {
    EXPECT_THAT(Wrong("poses = 9").second, EndsWith("poses: 9 is out of range, 1 to 8"));
    EXPECT_THAT(Wrong("poses = 0").second, EndsWith("poses: 0 is out of range, 1 to 8"));
    EXPECT_THAT(Wrong("laser_width = 0.05").second, HasSubstr("out of range, 0.1 to 5"));
    EXPECT_THAT(Wrong("toe_in = nan").second, HasSubstr("out of range, 0 to 45"));
    EXPECT_THAT(Wrong("motion = inf").second, HasSubstr("out of range, 0 to 30"));
    EXPECT_THAT(Wrong("box_size = [5, 401, 5]").second, HasSubstr("401 is out of range, 1 to 400"));
}

TEST_F(SceneKeysTest, ObjectThatComesTooNearNamesTheDistance) {
    const auto [line, what] = Wrong("poses = 1\ndistance = 100\n");
    EXPECT_EQ(line, 3);
    EXPECT_THAT(what, HasSubstr("[scene] distance: the object comes nearer than 40 mm"));
    EXPECT_THAT(Wrong("sphere_radius = 200\nsphere_center = [0, 0, -200]").second,
                HasSubstr("nearer than 40 mm"));
}

TEST_F(SceneKeysTest, DescriptionOfAProgramObeysTheSameRules) {
    HeadDescription description;
    std::string error;
    description.scene.poses = 9;
    EXPECT_FALSE(RequestVirtualHead(description, error));
    EXPECT_EQ(error, "[scene] poses: 9 is out of range, 1 to 8");
    description.scene = {};
    description.scene.projector[1] = std::numeric_limits<double>::quiet_NaN();
    EXPECT_FALSE(RequestVirtualHead(description, error));
    description.scene = {};
    description.scene.distance = 101;
    EXPECT_FALSE(RequestVirtualHead(description, error));
    EXPECT_THAT(error, HasSubstr("[scene] distance: "));
}

}  // namespace
}  // namespace Korvex3Sync::tests
