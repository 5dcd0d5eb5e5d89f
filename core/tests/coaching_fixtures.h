#pragma once

#include "dravik/review.h"

#include <string>
#include <vector>

// A small session for the coaching and framing files: a rider compared with a reference rider in
// pair "turn3", and a rider's photo on its own in pair "solo".
namespace coaching_fixtures {

inline std::string hash(char digit) {
    return "sha256:" + std::string(64, digit);
}

inline dravik::ReviewFrame frame(const std::string& pairID, const std::string& riderID,
                                 const std::string& role, char hashDigit,
                                 dravik::PixelRect panel = {0, 0, 640, 480}) {
    dravik::ReviewFrame f;
    f.id = pairID + "/" + riderID;
    f.role = role;
    f.riderDisplayName = role == "subject" ? "Rider" : "Reference rider";
    f.name = pairID;
    f.file = pairID + "-" + riderID + ".jpg";
    f.sourceHash = hash(hashDigit);
    f.imageSize = {1000, 800};
    f.panel = panel;
    f.crop = panel;
    f.pairID = pairID;
    f.riderID = riderID;
    return f;
}

inline std::vector<dravik::ReviewFrame> session() {
    return {frame("turn3", "rider", "subject", 'a'), frame("turn3", "ref", "reference", 'b'),
            frame("solo", "rider", "subject", 'c', {10.25, 20.5, 300.75, 200.125})};
}

} // namespace coaching_fixtures
