// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/geometry.h"
#include "dravik/lean.h"
#include "state/presentation.h"

#include <map>
#include <optional>
#include <string>

namespace tessary {

// How the open session is shown: the active photo, the modes and each photo's own settings.
struct ViewState {
    std::optional<std::string> activeFrameID;
    bool compare = false;
    bool showMarkers = true;
    bool inspectorVisible = true;
    bool leanMode = false;
    bool showLean = true;
    std::string selected = "left_elbow";
    dravik::LeanHandle selectedLeanHandle = dravik::LeanHandle::wheelA;
    std::map<std::string, Presentation> presentation;
    // Remembered viewport centres; views write them while scrolling, nobody is told.
    std::map<std::string, dravik::Point2> viewportCenters;
};

} // namespace tessary
