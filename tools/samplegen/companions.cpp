// SPDX-License-Identifier: Apache-2.0
#include "companions.h"

#include "dravik/coaching.h"
#include "dravik/framing.h"
#include "dravik/lean.h"
#include "dravik/lean_analysis.h"
#include "dravik/pairs.h"

#include <algorithm>
#include <cmath>

namespace tessary::samplegen {

namespace {

// Drafts, so that the reviewer still has to confirm or correct both lines.
constexpr const char* proposalProvenance = "sample-scene";

double tenth(double v) {
    return std::round(v * 10) / 10;
}

dravik::Point2 rounded(const dravik::Point2& p) {
    return {tenth(p.x), tenth(p.y)};
}

// A level line through the wheel's contact point: the camera is held level, so the photo's
// horizontal is the assumed-level reference a reviewer would draw along the track.
dravik::LeanLine levelLine(const dravik::Point2& through, const dravik::PixelRect& panel) {
    const double half = 0.12 * panel.width;
    const double x0 = std::max(panel.x + 1, through.x - half);
    const double x1 = std::min(panel.maxX() - 1, through.x + half);
    return {rounded({x0, through.y}), rounded({x1, through.y})};
}

std::string leanProposals(const dravik::ReviewDocument& raw,
                          const std::map<std::string, WheelAxis>& wheels) {
    std::vector<dravik::LeanAnnotation> proposals;
    for (const dravik::ReviewFrame& frame : raw.frames()) {
        const WheelAxis& axis = wheels.at(frame.id);
        dravik::LeanAnnotation annotation(
            frame, dravik::LeanLine{rounded(axis.contact), rounded(axis.top)}, proposalProvenance);
        annotation.setReference(levelLine(axis.contact, frame.panel));
        annotation.validate(frame);
        proposals.push_back(std::move(annotation));
    }
    return dravik::encodeLeanProposals(proposals);
}

// The rider and the front wheel: lean review needs the wheel in view as much as the joints.
dravik::PixelRect framed(const dravik::ReviewFrame& frame, const WheelAxis& wheel) {
    const double margin = 0.05 * frame.panel.height;
    const double x0 = std::max(
        frame.panel.x,
        std::floor(std::min({frame.crop.x, wheel.contact.x - margin, wheel.top.x - margin})));
    const double y0 = std::max(
        frame.panel.y,
        std::floor(std::min({frame.crop.y, wheel.contact.y - margin, wheel.top.y - margin})));
    const double x1 = std::min(
        frame.panel.maxX(),
        std::ceil(std::max({frame.crop.maxX(), wheel.contact.x + margin, wheel.top.x + margin})));
    const double y1 = std::min(
        frame.panel.maxY(),
        std::ceil(std::max({frame.crop.maxY(), wheel.contact.y + margin, wheel.top.y + margin})));
    return {x0, y0, x1 - x0, y1 - y0};
}

std::string framing(const dravik::ReviewDocument& raw,
                    const std::map<std::string, WheelAxis>& wheels) {
    std::vector<dravik::PhotoFramingRegion> regions;
    for (const dravik::ReviewFrame& frame : raw.frames())
        regions.push_back(
            {frame.id, frame.sourceHash, frame.panel, framed(frame, wheels.at(frame.id))});
    return dravik::PhotoFramingRegion::encode(regions);
}

std::string singlePhotoCoaching(const dravik::ReviewDocument& raw) {
    std::vector<dravik::SinglePhotoCoaching> notes;
    for (const dravik::ReviewPair& pair : dravik::PairReview::resolve(raw.frames())) {
        if (pair.frameIDs.size() != 1)
            continue;
        const dravik::ReviewFrame* frame = raw.frame(pair.frameIDs.front());
        notes.push_back({frame->id,
                         frame->sourceHash,
                         {"Head turned toward the exit, eyes level with the horizon.",
                          "Inside knee opened toward the kerb, with the foot on the peg's ball.",
                          "Upper body low over the tank; the outside arm looks relaxed."},
                         {"One photo of a right-hand corner: a single instant of the turn.",
                          "The far-side arm and leg are partly hidden by the motorcycle."}});
    }
    return dravik::SinglePhotoCoaching::encode(notes);
}

std::string checklist(const dravik::ReviewDocument& raw) {
    using Status = dravik::CoachingReviewStatus;
    std::vector<dravik::CoachingChecklistReview> reviews;
    for (const dravik::ReviewPair& pair : dravik::PairReview::resolve(raw.frames())) {
        if (pair.frameIDs.size() != 2)
            continue;
        // Assessed under the corner direction the session's photo coaching gives the pair.
        reviews.push_back({dravik::CoachingChecklist::subjectID(pair),
                           std::string(dravik::CoachingChecklist::catalogVersion()),
                           dravik::CornerDirection::left,
                           {{"head-eyes", Status::looksConsistent},
                            {"arms-elbows", Status::practiceCueApplies},
                            {"inside-knee", Status::looksConsistent},
                            {"outside-foot", Status::cannotAssess}}});
    }
    return dravik::CoachingChecklist::encode(reviews, raw.frames());
}

} // namespace

std::vector<CompanionFile> bundledCompanions(const dravik::ReviewDocument& raw,
                                             const std::map<std::string, WheelAxis>& wheels) {
    return {{"lean-proposals.json", leanProposals(raw, wheels)},
            {"photo-framing.json", framing(raw, wheels)},
            {"single-photo-coaching.json", singlePhotoCoaching(raw)},
            {"coaching-checklist.json", checklist(raw)}};
}

} // namespace tessary::samplegen
