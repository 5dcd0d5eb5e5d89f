// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace dravik {

struct ReviewFrame;

// A rider photo and, optionally, the reference rider's photo it is compared with.
struct ReviewPair {
    std::string id;
    std::vector<std::string> frameIDs; // the rider's frame first, then the reference's
    bool operator==(const ReviewPair&) const = default;
    bool hasReference() const { return frameIDs.size() == 2; }
};

namespace PairReview {
// Groups frames by pair id in document order; refuses two riders of one role or more than two
// frames.
std::vector<ReviewPair> resolve(const std::vector<ReviewFrame>& frames);
} // namespace PairReview

enum class CornerDirection { unknown, left, right };
inline constexpr CornerDirection allCornerDirections[] = {
    CornerDirection::unknown, CornerDirection::left, CornerDirection::right};
std::string_view rawValue(CornerDirection direction); // "Unknown", "Left", "Right"
std::optional<CornerDirection> cornerDirection(std::string_view rawValue);

// A measured feature of a pair. In a left turn the left side is the inside.
enum class PairFeature { insideElbow, outsideElbow, insideKnee, outsideKnee };
inline constexpr PairFeature allPairFeatures[] = {
    PairFeature::insideElbow, PairFeature::outsideElbow, PairFeature::insideKnee,
    PairFeature::outsideKnee};
std::string_view label(PairFeature feature);    // "Inside elbow", ...
std::string_view rawValue(PairFeature feature); // "insideElbow", ...
std::optional<PairFeature> pairFeature(std::string_view rawValue);
// The joints to highlight for a feature in a turn; empty for an unknown direction.
std::vector<std::string> joints(PairFeature feature, CornerDirection direction);
// "Inside" or "Outside"; none for an unknown direction.
std::optional<std::string> role(PairFeature feature, CornerDirection direction);

enum class KneePlacement { cannotCompare, similar, riderFurtherOut, riderCloserIn, obscured };
inline constexpr KneePlacement allKneePlacements[] = {
    KneePlacement::cannotCompare, KneePlacement::similar, KneePlacement::riderFurtherOut,
    KneePlacement::riderCloserIn, KneePlacement::obscured};
std::string_view label(KneePlacement placement); // "Cannot compare", "Similar", ...
std::string_view rawValue(KneePlacement placement);
std::optional<KneePlacement> kneePlacement(std::string_view rawValue);

enum class ViewComparability { unreviewed, comparable, notComparable };
inline constexpr ViewComparability allViewComparabilities[] = {
    ViewComparability::unreviewed, ViewComparability::comparable, ViewComparability::notComparable};
std::string_view
label(ViewComparability comparability); // "Unreviewed", "Comparable", "Not comparable"
std::string_view rawValue(ViewComparability comparability);
std::optional<ViewComparability> viewComparability(std::string_view rawValue);

// One coaching point for the rider, with the feature whose joints it concerns (if any).
struct CoachingBullet {
    std::string id;
    std::string headline;
    std::string detail;
    std::optional<PairFeature> feature;
    bool operator==(const CoachingBullet&) const = default;
};

// A pair reviewed from its photos: the turn direction seen and whole-body coaching notes.
struct PairPhotoAssessment {
    std::optional<CornerDirection> direction;
    std::vector<CoachingBullet> coaching;
    bool operator==(const PairPhotoAssessment&) const = default;
};

// What the reviewer states about a pair.
struct PairContext {
    std::string pairID;
    std::optional<CornerDirection> directionOverride;
    // Made under one turn direction; cleared when the direction changes.
    std::optional<std::map<PairFeature, KneePlacement>> kneePlacements;
    // By observation id: one per arm, PairAnalysis::observationIDs() ("leftElbow", "rightElbow").
    std::map<std::string, ViewComparability> viewComparability;
    bool operator==(const PairContext&) const = default;
};

} // namespace dravik
