// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "camera.h"
#include "canvas.h"
#include "pose.h"
#include "scene.h"

#include <cstdint>
#include <utility>

namespace tessary::samplegen {

// The motorcycle's shadow on the track, then the motorcycle and its rider, far parts first.
void drawFigure(Canvas& canvas, const Camera& camera, const RiderPose& pose, const RiderLook& look,
                int turn, double lean, std::uint64_t textureSeed);

// The front wheel's upright axis in the picture: its contact with the track, then its top.
std::pair<Vec2, Vec2> frontWheelAxis(const Camera& camera);

// Picture points that outline the motorcycle and rider (for framing the shot).
std::vector<Vec2> figureOutline(const Camera& camera, const RiderPose& pose);

} // namespace tessary::samplegen
