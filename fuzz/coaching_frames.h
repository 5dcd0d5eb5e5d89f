// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/review.h"

#include <string>
#include <vector>

// The session the coaching and framing seeds were written for: a rider and a reference rider in
// pair "turn3", and a rider's photo on its own in pair "solo".
namespace fuzzing {

inline std::vector<dravik::ReviewFrame> coachingFrames() {
    auto frame = [](std::string pairID, std::string riderID, std::string role, char digit,
                    dravik::PixelRect panel) {
        dravik::ReviewFrame f;
        f.id = pairID + "/" + riderID;
        f.role = std::move(role);
        f.file = pairID + "-" + riderID + ".jpg";
        f.sourceHash = "sha256:" + std::string(64, digit);
        f.imageSize = {1000, 800};
        f.panel = panel;
        f.crop = panel;
        f.pairID = std::move(pairID);
        f.riderID = std::move(riderID);
        return f;
    };
    return {frame("turn3", "rider", "subject", 'a', {0, 0, 640, 480}),
            frame("turn3", "ref", "reference", 'b', {0, 0, 640, 480}),
            frame("solo", "rider", "subject", 'c', {10.25, 20.5, 300.75, 200.125})};
}

} // namespace fuzzing
