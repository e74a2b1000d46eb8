#include "virtual_head/scene/Surface.h"

namespace Korvex3Sync::virtual_head::scene {
namespace {

constexpr float kField = 20;  // millimetres
constexpr float kBand = 8;
constexpr float kCheck = 11;

int Step(float value, float size) {
    return Floor(value * (1 / size));
}

bool Within(float value, float lowest, float highest) {
    return value >= lowest && value < highest;
}

bool IsLetter(float x, float y) {
    const float right = x - 54;
    const float down = y + 74;
    if (!Within(right, 0, 28) || !Within(down, 0, 44)) {
        return false;
    }
    return right < 8 || down < 8 || (Within(down, 18, 26) && right < 21);
}

Color Plate(const Vector& point) {
    if (IsLetter(point.x, point.y)) {
        return {0.06F, 0.06F, 0.07F};
    }
    const int column = Step(point.x, kField);
    const int row = Step(point.y, kField);
    switch ((column * 5 + row * 3) & 15) {
        case 1:
            return {0.80F, 0.16F, 0.14F};
        case 6:
            return {0.16F, 0.62F, 0.25F};
        case 11:
            return {0.15F, 0.32F, 0.78F};
        case 14:
            return {0.92F, 0.76F, 0.16F};
        default:
            return (column + row) % 2 == 0 ? Color{0.82F, 0.81F, 0.78F}
                                           : Color{0.60F, 0.60F, 0.62F};
    }
}

Color Sphere(const Vector& offset) {
    // A field above and to the right of the middle, so that a mirrored view is noticeable.
    if (Within(offset.x, 4, 16) && Within(offset.y, -18, -6)) {
        return {0.10F, 0.45F, 0.50F};
    }
    return Step(offset.y, kBand) % 2 == 0 ? Color{0.86F, 0.47F, 0.27F} : Color{0.93F, 0.83F, 0.66F};
}

Color Box(const Vector& place) {
    // Shifted slightly, so that no face of the box lies exactly between two colours.
    const int sum =
        Step(place.x + 0.3F, kCheck) + Step(place.y + 0.3F, kCheck) + Step(place.z + 0.3F, kCheck);
    return sum % 2 == 0 ? Color{0.35F, 0.66F, 0.83F} : Color{0.78F, 0.86F, 0.90F};
}

}  // namespace

Color ColorAt(const Object& object, const Hit& hit) {
    switch (hit.shape) {
        case Shape::Plate:
            return Plate(hit.point);
        case Shape::Sphere:
            return Sphere(hit.point - object.SphereCenter());
        case Shape::Box:
            return Box(object.InBox(hit.point));
        case Shape::None:
            break;
    }
    return {};
}

}  // namespace Korvex3Sync::virtual_head::scene
