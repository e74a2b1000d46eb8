#include "virtual_head/scene/View.h"

#include <algorithm>
#include <cmath>

namespace Korvex3Sync::virtual_head::scene {
namespace {

std::uint8_t ToByte(float level) {
    return static_cast<std::uint8_t>(std::min(level * kWhite + 0.5F, 255.0F));
}

float PixelSize(const HeadDescription& description) {
    return static_cast<float>(description.scene.distance) / MakeCamera(description, 0).focal;
}

/// The colour channel of a mosaic pixel: red at even rows and columns, blue at odd ones.
float Through(const Color& color, int column, int row) {
    if (column % 2 != row % 2) {
        return color.green;
    }
    return row % 2 == 0 ? color.red : color.blue;
}

}  // namespace

/// One sensor and one pose, in the coordinates of the object.
struct Painter::Sight {
    Sight(const HeadDescription& description, const Object& object, const Projector& light,
          int sensor, const Pose& pose)
        : camera(Seen(pose, MakeCamera(description, sensor))),
          projector(Seen(pose, light)),
          tracer(object, camera.center) {}

    Camera camera;
    Projector projector;
    Tracer tracer;
};

void Allocate(const HeadDescription& description, bool mosaic, View& view) {
    const auto pixels =
        static_cast<std::size_t>(description.width) * static_cast<std::size_t>(description.height);
    view.strobe.resize(pixels);
    view.mosaic.resize(mosaic ? pixels : 0);
    for (View::Bytes& projected : view.projected) {
        projected.resize(pixels);
    }
    view.infrared.resize(pixels);
}

Painter::Painter(const HeadDescription& description)
    : m_description(description),
      m_object(description.scene),
      m_projector(MakeProjector(description.scene)),
      m_patterns(description.scene, PixelSize(description)) {}

void Painter::Draw(int sensor, int pose, View& view) const {
    const Sight sight(m_description, m_object, m_projector, sensor,
                      MakePose(m_description.scene, pose));
    view.lines.clear();
    for (int row = 0; row < m_description.height; ++row) {
        DrawRow(sight, row, view);
    }
}

void Painter::DrawRow(const Sight& sight, int row, View& view) const {
    const Camera& camera = sight.camera;
    const float down = (static_cast<float>(row) - camera.middleY) / camera.focal;
    const Vector middle = camera.axes.z + camera.axes.y * down;
    const auto distance = static_cast<float>(m_description.scene.distance);
    auto index = static_cast<std::size_t>(row) * static_cast<std::size_t>(m_description.width);
    for (int column = 0; column < m_description.width; ++column, ++index) {
        const float right = (static_cast<float>(column) - camera.middleX) / camera.focal;
        const Vector ray = middle + camera.axes.x * right;
        const Hit hit = sight.tracer.Meet(ray);
        if (hit.shape == Shape::None) {
            continue;
        }
        // The strobe is a ring around the sensor.
        const float length = std::sqrt(Dot(ray, ray));
        const float near = distance / (hit.along * length);
        const float lit = std::max(0.0F, -Dot(hit.normal, ray)) / length * near * near;
        const Color color = ColorAt(m_object, hit);
        view.strobe[index] = ToByte(lit * color.Grey());
        if (!view.mosaic.empty()) {
            view.mosaic[index] = ToByte(lit * Through(color, column, row));
        }
        DrawStructured(sight, hit, color.Grey(), index, view);
    }
}

void Painter::DrawStructured(const Sight& sight, const Hit& hit, float grey, std::size_t index,
                             View& view) const {
    const Projector& light = sight.projector;
    const Vector way = light.center - hit.point;
    const float facing = Dot(hit.normal, way);
    const Vector seen = light.axes * way;  // towards the light: z is negative
    if (facing <= 0 || seen.z >= 0) {
        return;
    }
    const float u = seen.x / seen.z;
    const float v = seen.y / seen.z;
    const bool picture = Patterns::InPicture(u, v);
    const LineLight first = m_patterns.FirstLines(u, v);
    const LineLight second = m_patterns.SecondLines(u, v);
    if ((!picture && first.sets == 0 && second.sets == 0) || m_object.Shades(hit, light.center)) {
        return;
    }
    const float length = std::sqrt(Dot(way, way));
    const float near = light.reach / length;
    const float lit = grey * facing / length * near * near;
    for (const LineLight& line : {first, second}) {
        if (const std::uint8_t level = ToByte(lit * line.level); level > 0) {
            view.lines.push_back({static_cast<std::uint32_t>(index), level, line.sets});
        }
    }
    if (picture) {
        for (int type = 0; type < Patterns::kProjected; ++type) {
            view.projected[static_cast<std::size_t>(type)][index] =
                ToByte(lit * m_patterns.Projected(type, u, v));
        }
        view.infrared[index] = ToByte(lit * m_patterns.Infrared(u, v));
    }
}

}  // namespace Korvex3Sync::virtual_head::scene
