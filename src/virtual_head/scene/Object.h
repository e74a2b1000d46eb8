#pragma once

#include "virtual_head/scene/Geometry.h"

namespace Korvex3Sync::virtual_head::scene {

enum class Shape { None, Plate, Sphere, Box };

/// Where a ray meets the object, in the object's coordinates.
struct Hit {
    Shape shape = Shape::None;
    float along = 0;  // distance along the ray, in units of its direction
    Vector point;
    Vector normal;  // outwards, of length 1
};

/// The object: an infinite plate at z = 0, and a sphere and a box on its side of negative z.
class Object {
public:
    explicit Object(const SceneDescription& scene);

    const Vector& SphereCenter() const { return m_sphereCenter; }
    const Vector& BoxCenter() const { return m_boxCenter; }
    float SphereRadius() const { return m_sphereRadius; }
    /// Radius of a sphere around the box.
    float BoxRadius() const { return m_boxRadius; }
    /// In the coordinates of the box: from its centre, along its edges.
    Vector InBox(const Vector& point) const { return m_boxTurn * (point - m_boxCenter); }

    /// Where a ray enters the box, with the normal of the face. `from` and `direction` are in the
    /// object's coordinates. Nothing if the ray misses the box or begins behind it.
    Hit MeetBox(const Vector& from, const Vector& direction) const;
    /// Whether the sphere or the box is between a point on a surface and a light.
    bool Shades(const Hit& point, const Vector& light) const;

private:
    const Vector m_sphereCenter;
    const float m_sphereRadius;
    const Vector m_boxCenter;
    const Vector m_boxHalf;
    const float m_boxRadius;
    Rotation m_boxTurn;
};

/// Rays from one point, as for a camera.
class Tracer {
public:
    Tracer(const Object& object, const Vector& from);
    /// The nearest point that the ray hits, the plate at the latest.
    Hit Meet(const Vector& direction) const;

private:
    struct Ball {
        Vector toCenter;
        float outside;  // squared distance minus squared radius
    };
    static Ball MakeBall(const Vector& from, const Vector& center, float radius);

    const Object& m_object;
    const Vector m_from;
    const Ball m_sphere;
    const Ball m_aroundBox;
};

}  // namespace Korvex3Sync::virtual_head::scene
