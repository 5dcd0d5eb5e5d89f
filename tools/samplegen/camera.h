// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "canvas.h"
#include "vec3.h"

namespace tessary::samplegen {

// An orthographic view of the leaned motorcycle: good enough at a long lens, and it keeps
// every drawn shape and every reported joint on the same projection.
class Camera {
  public:
    // `azimuth`: compass direction the camera looks along (radians, 0 = the motorcycle's
    // heading); `pitch`: how far it looks down; `roll`: the motorcycle's roll (see rolled()).
    Camera(double azimuth, double pitch, double roll);

    // Pixels per metre and the picture position of the ground point under the motorcycle.
    void frame(double pixelsPerMetre, Vec2 origin) {
        scale_ = pixelsPerMetre;
        origin_ = origin;
    }
    double scale() const { return scale_; }

    Vec3 toWorld(Vec3 local) const { return rolled(local, roll_); }
    Vec2 project(Vec3 local) const { return projectWorld(toWorld(local)); }
    Vec2 projectWorld(Vec3 world) const;
    // Distance along the view direction (larger is further away).
    double depth(Vec3 local) const { return dot(toWorld(local), forward_); }
    // A direction (in the motorcycle's frame) expressed in the view: x right, y down, z towards
    // the viewer; used for shading.
    Vec3 viewDirection(Vec3 localDirection) const;
    Vec3 forward() const { return forward_; }

  private:
    double roll_;
    Vec3 forward_, right_, up_;
    double scale_ = 1;
    Vec2 origin_;
};

} // namespace tessary::samplegen
