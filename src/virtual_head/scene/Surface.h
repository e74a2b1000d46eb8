#pragma once

#include "virtual_head/scene/Object.h"

namespace Korvex3Sync::virtual_head::scene {

/// The fraction of light that a surface reflects, 0 to 1 for each colour.
struct Color {
    float red = 0;
    float green = 0;
    float blue = 0;

    float Grey() const { return 0.3F * red + 0.59F * green + 0.11F * blue; }
};

/// The colour of the object where a ray hits it. The plate is a light chequerboard of 20 mm with
/// coloured fields and a dark letter F above and to the right of the middle. The sphere has bands,
/// the box chequered faces.
Color ColorAt(const Object& object, const Hit& hit);

}  // namespace Korvex3Sync::virtual_head::scene
