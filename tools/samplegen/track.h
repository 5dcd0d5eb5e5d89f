// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "canvas.h"
#include "scene.h"

namespace tessary::samplegen {

// Sky, trees, barrier boards, run-off, kerb and asphalt, laid out around `ground`: the picture
// point under the motorcycle, which must land on the asphalt.
void drawTrack(Canvas& canvas, const CornerLook& corner, Vec2 ground);

} // namespace tessary::samplegen
