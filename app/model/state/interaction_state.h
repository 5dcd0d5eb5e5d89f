// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/geometry.h"
#include "dravik/lean.h"
#include "dravik/review.h"
#include "dravik/uuid.h"
#include "state/lean_edit_target.h"

#include <optional>
#include <set>
#include <string>

namespace tessary {

// What the reviewer is in the middle of. Every change of frame, pair or mode ends it and renews
// the canvas generation, which voids edit targets prepared before.
struct InteractionState {
    dravik::Uuid canvasGeneration;
    std::optional<dravik::ReviewEditTarget> previewTarget; // joint under drag
    std::set<std::string> highlightedJoints;
    bool placing = false; // the next click places the selected joint
    std::optional<LeanEditTarget> leanPreviewTarget;
    std::optional<dravik::LeanHandle> leanPlacement; // the next click places this line
    std::optional<dravik::Point2> leanPlacementStart;
};

} // namespace tessary
