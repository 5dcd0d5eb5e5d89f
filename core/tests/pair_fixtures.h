#pragma once

// Pairs of frames with reviewed arms, for the tests of pair resolution and analysis.

#include "dravik/analysis.h"
#include "dravik/review.h"

#include <cmath>
#include <numbers>
#include <string>
#include <vector>

namespace pairtest {

inline dravik::ReviewFrame frame(const std::string& pairID, const std::string& riderID,
                                 const std::string& role) {
    dravik::ReviewFrame f;
    f.pairID = pairID;
    f.riderID = riderID;
    f.id = pairID + "/" + riderID;
    f.role = role;
    f.riderDisplayName = riderID;
    f.name = pairID;
    f.file = "photos/" + riderID + ".jpg";
    f.sourceHash = "sha256:" + std::string(64, role == "subject" ? '1' : '2');
    f.imageSize = {1000, 800};
    f.panel = {0, 0, 1000, 800};
    f.crop = {100, 100, 600, 600};
    return f;
}

// Pair "turn": the rider's frame (index 0, "turn/rider") and the reference's ("turn/ref").
inline dravik::ReviewDocument pairDocument() {
    return dravik::ReviewDocument(
        "sha256:" + std::string(64, 'a'),
        {frame("turn", "rider", "subject"), frame("turn", "ref", "reference")});
}

inline const dravik::ReviewPair turnPair{"turn", {"turn/rider", "turn/ref"}};

struct Arm {
    dravik::Point2 shoulder, elbow, wrist;
};

// Upper arm straight up from the elbow, forearm turned so the included angle is `degrees`.
inline Arm armWithAngle(double degrees, dravik::Point2 elbow = {500, 400}) {
    const double radians = degrees * std::numbers::pi / 180.0;
    return {{elbow.x, elbow.y - 100},
            elbow,
            {elbow.x + 100 * std::sin(radians), elbow.y - 100 * std::cos(radians)}};
}

// Reviews the shoulder, elbow and wrist of one side ("left" or "right") of a frame.
inline void reviewArm(dravik::ReviewDocument& document, std::size_t frame, const std::string& side,
                      const Arm& arm,
                      dravik::JointReviewState state = dravik::JointReviewState::corrected) {
    document.setJoint(frame, side + "_shoulder", arm.shoulder, state);
    document.setJoint(frame, side + "_elbow", arm.elbow, state);
    document.setJoint(frame, side + "_wrist", arm.wrist, state);
}

// A stored context for pair "turn" with a direction and the views of both elbows comparable.
inline dravik::PairContext comparableContext(dravik::CornerDirection direction) {
    dravik::PairContext context;
    context.pairID = "turn";
    context.directionOverride = direction;
    context.viewComparability = {{"leftElbow", dravik::ViewComparability::comparable},
                                 {"rightElbow", dravik::ViewComparability::comparable}};
    return context;
}

inline dravik::PairReport analyze(const dravik::ReviewDocument& document) {
    return dravik::PairAnalysis::analyze(document, turnPair, dravik::RuleCatalog::production());
}

} // namespace pairtest
