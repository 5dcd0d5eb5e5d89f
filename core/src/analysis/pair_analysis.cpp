// SPDX-License-Identifier: Apache-2.0
#include "analysis/coaching_text.h"
#include "analysis/evidence_digest.h"
#include "analysis/included_angle.h"
#include "dravik/analysis.h"
#include "dravik/digest_text.h"
#include "dravik/error.h"
#include "dravik/review.h"
#include "dravik/store.h"

#include "json/geometry_codec.h"
#include <algorithm>
#include <cmath>

namespace dravik {

namespace {

constexpr PairFeature elbowFeatures[] = {PairFeature::insideElbow, PairFeature::outsideElbow};
constexpr PairFeature kneeFeatures[] = {PairFeature::insideKnee, PairFeature::outsideKnee};

// A difference that equals the threshold up to rounding of the geometry still counts.
constexpr double thresholdTolerance = 1e-9;

// "Unknown" states nothing, so it neither overrides nor contradicts a direction.
std::optional<CornerDirection> known(std::optional<CornerDirection> direction) {
    if (direction == CornerDirection::unknown)
        return std::nullopt;
    return direction;
}

std::string documentName(const ReviewDocument& document) {
    if (!json::isContentHash(document.identity()))
        return "the review document";
    return json::quoted(ReviewStore::reviewFileName(document));
}

const ReviewFrame& pairFrame(const ReviewDocument& document, const ReviewPair& pair,
                             const std::string& frameID) {
    const ReviewFrame* frame = document.frame(frameID);
    if (!frame)
        throw DravikError("Pair " + json::quoted(pair.id) + " names the photo " +
                          json::quoted(frameID) + ", which is not in " + documentName(document) +
                          ".");
    return *frame;
}

std::string observationID(PairFeature feature, CornerDirection direction) {
    // joints() names the side: "left_shoulder", "left_elbow", ...
    return joints(feature, direction).front().starts_with("left_") ? "leftElbow" : "rightElbow";
}

std::vector<PairObservation> observe(const ReviewFrame& rider, const ReviewFrame& reference,
                                     CornerDirection direction, const PairContext& context,
                                     const RuleCatalog& catalog) {
    std::vector<PairObservation> observations;
    for (PairFeature feature : elbowFeatures) {
        const auto chain = joints(feature, direction);
        PairObservation observation;
        observation.id = observationID(feature, direction);
        observation.feature = feature;
        observation.rider =
            analysis::measureIncludedAngle(rider, chain, catalog.minimumSegmentPixels);
        observation.reference =
            analysis::measureIncludedAngle(reference, chain, catalog.minimumSegmentPixels);
        if (observation.rider.angle && observation.reference.angle)
            observation.difference = *observation.rider.angle - *observation.reference.angle;
        if (auto it = context.viewComparability.find(observation.id);
            it != context.viewComparability.end())
            observation.comparability = it->second;
        observations.push_back(std::move(observation));
    }
    return observations;
}

std::vector<CoachingBullet> ruleBullets(const std::vector<PairObservation>& observations,
                                        const PairContext& context, const RuleCatalog& catalog) {
    std::vector<CoachingBullet> bullets;
    for (const PairObservation& observation : observations)
        if (observation.difference && observation.comparability == ViewComparability::comparable &&
            std::abs(*observation.difference) >= catalog.elbowThresholdDegrees - thresholdTolerance)
            bullets.push_back(analysis::elbowBullet(observation));
    if (context.kneePlacements)
        for (PairFeature knee : kneeFeatures)
            if (auto it = context.kneePlacements->find(knee); it != context.kneePlacements->end())
                if (auto bullet = analysis::kneeBullet(knee, it->second))
                    bullets.push_back(std::move(*bullet));
    return bullets;
}

std::vector<FocusPoint> focusPoints(const std::vector<PairObservation>& observations) {
    std::vector<FocusPoint> points;
    for (const PairObservation& observation : observations)
        if (observation.difference)
            points.push_back({observation.id, observation.feature, *observation.difference});
    std::stable_sort(points.begin(), points.end(), [](const FocusPoint& a, const FocusPoint& b) {
        return std::abs(a.difference) > std::abs(b.difference);
    });
    return points;
}

} // namespace

std::string shortDigest(std::string_view digest) {
    constexpr std::string_view prefix = "sha256:";
    if (digest.starts_with(prefix))
        digest.remove_prefix(prefix.size());
    return std::string(digest.substr(0, 12));
}

std::string PairReport::shortDigest() const {
    return dravik::shortDigest(evidenceDigest);
}

std::string_view PairReport::limitations() {
    return "These notes compare two still photos. A 2D angle changes with camera position and "
           "lens, and a photo shows one moment: it cannot establish speed, line, grip pressure, "
           "weight on the pegs or what either rider did before and after. Treat each note as a "
           "question to check on track or with a coach, not as a measured fault.";
}

const RuleCatalog& RuleCatalog::production() {
    static const RuleCatalog catalog{"elbow-10deg-v1", 10.0, 1.0};
    return catalog;
}

namespace PairAnalysis {

std::string_view analyzerVersion() {
    return "pair-analysis-1";
}

const std::vector<std::string>& observationIDs() {
    static const std::vector<std::string> ids = {"leftElbow", "rightElbow"};
    return ids;
}

PairReport analyze(const ReviewDocument& document, const ReviewPair& pair,
                   const RuleCatalog& catalog) {
    if (pair.frameIDs.empty() || pair.frameIDs.size() > 2)
        throw DravikError("Pair " + json::quoted(pair.id) + " in " + documentName(document) +
                          " must hold a rider photo and at most one reference photo to be "
                          "analysed.");
    const ReviewFrame& rider = pairFrame(document, pair, pair.frameIDs[0]);
    const ReviewFrame* reference =
        pair.hasReference() ? &pairFrame(document, pair, pair.frameIDs[1]) : nullptr;

    PairReport report;
    report.pairID = pair.id;
    report.analyzerVersion = std::string(analyzerVersion());
    report.ruleCatalogVersion = catalog.version;
    if (const PairContext* stored = document.pairContext(pair.id))
        report.context = *stored;
    else
        report.context.pairID = pair.id;

    const PairPhotoAssessment* assessment = nullptr;
    if (auto it = document.pairAssessments().find(pair.id); it != document.pairAssessments().end())
        assessment = &it->second;
    const auto overrideDirection = known(report.context.directionOverride);
    const auto photoDirection = known(assessment ? assessment->direction : std::nullopt);
    report.effectiveCornerDirection =
        overrideDirection.value_or(photoDirection.value_or(CornerDirection::unknown));

    // Without a direction there is no inside or outside, and without a reference nothing to
    // compare: no observation and no rule applies.
    const bool comparable =
        reference && report.effectiveCornerDirection != CornerDirection::unknown;
    std::vector<std::string> jointsUsed;
    if (comparable) {
        report.observations =
            observe(rider, *reference, report.effectiveCornerDirection, report.context, catalog);
        for (PairFeature feature : elbowFeatures)
            for (std::string& joint : joints(feature, report.effectiveCornerDirection))
                jointsUsed.push_back(std::move(joint));
    }
    report.focusPoints = focusPoints(report.observations);

    const bool contradicted =
        overrideDirection && photoDirection && *overrideDirection != *photoDirection;
    report.hasPhotoCoaching = assessment && !assessment->coaching.empty() && !contradicted;
    if (report.hasPhotoCoaching)
        report.coaching = assessment->coaching;
    else if (comparable)
        report.coaching = ruleBullets(report.observations, report.context, catalog);

    analysis::Evidence evidence{pair.id,         {&rider},   jointsUsed,
                                &report.context, assessment, &catalog};
    if (reference)
        evidence.frames.push_back(reference);
    report.evidenceDigest = analysis::evidenceDigest(evidence);
    return report;
}

} // namespace PairAnalysis

} // namespace dravik
