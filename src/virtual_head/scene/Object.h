#pragma once

#include "virtual_head/scene/Geometry.h"

namespace Korvex3Sync::virtual_head::scene {

enum class Shape { None, Plate, Sphere, Box };

/// Where a ray meets the object, in the object's coordinates.
struct Hit {
    Shape shape = Shape::None;
    float along = 0;  // in lengths of the ray's direction
    Vector point;
    Vector normal;  // outwards, of length 1
};

/// The object: a plate without end at z = 0, and a sphere and a box that stand on it towards
/// negative z.
class Object {
public:
    explicit Object(const SceneDescription& scene);

    const Vector& SphereCenter() const { return m_sphereCenter; }
    const Vector& BoxCenter() const { return m_boxCenter; }
    float SphereRadius() const { return m_sphereRadius; }
    /// Of a sphere around the box.
    float BoxRadius() const { return m_boxRadius; }
    /// In the box's own coordinates: from its middle, along its edges.
    Vector InBox(const Vector& point) const { return m_boxTurn * (point - m_boxCenter); }

    /// Where a ray enters the box, with the face's normal. `from` and `direction` are in the
    /// object's coordinates. None when it misses or begins behind.
    Hit MeetBox(const Vector& from, const Vector& direction) const;
    /// Whether the sphere or the box stands between a point on a shape and a light.
    bool Shades(const Hit& point, const Vector& light) const;

private:
    const Vector m_sphereCenter;
    const float m_sphereRadius;
    const Vector m_boxCenter;
    const Vector m_boxHalf;
    const float m_boxRadius;
    Rotation m_boxTurn;
};

/// Rays from one point, as a camera sends them.
class Tracer {
public:
    Tracer(const Object& object, const Vector& from);
    /// The nearest point that the ray meets; none further off than the plate is of any use.
    Hit Meet(const Vector& direction) const;

private:
    struct Ball {
        Vector toCenter;
        float outside;  // square of the distance, less the square of the radius
    };
    static Ball MakeBall(const Vector& from, const Vector& center, float radius);

    const Object& m_object;
    const Vector m_from;
    const Ball m_sphere;
    const Ball m_aroundBox;
};

}  // namespace Korvex3Sync::virtual_head::scene
