// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>

namespace tessary {

// How one photo is shown; kept per frame by the model.
struct Presentation {
    std::string kind = "3D"; // "3D" shows the 3D projection of the joints, "2D" the 2D detection
    double zoom = 1.0;
    bool showRaw = false;            // raw detections instead of the reviewed joints
    bool autoFrame = true;           // crop the view to the framing region
    std::int64_t framingRequest = 0; // raised to ask the viewport to frame the photo again
    bool operator==(const Presentation&) const = default;
};

} // namespace tessary
