// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/pairs.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace dravik {

// What one rider's photo gives for an included angle.
struct AngleSide {
    std::optional<double> angle; // degrees, 0 to 180 (180 = straight arm)
    // The joints the angle needs that lack a reviewed point (unreviewed, obscured or uncertain),
    // in shoulder, elbow, wrist order.
    std::vector<std::string> missingJoints;
    // All joints reviewed, but a segment is too short to give a direction.
    bool degenerate = false;
    bool operator==(const AngleSide&) const = default;
};

// The reviewed 2D included angle of one elbow in both photos.
struct PairObservation {
    // Names the arm measured ("leftElbow", "rightElbow"), so that the view comparability recorded
    // under it stays with that arm when the turn direction changes.
    std::string id;
    PairFeature feature; // insideElbow or outsideElbow under the effective direction
    AngleSide rider;
    AngleSide reference;
    std::optional<double> difference; // Rider − Reference rider, degrees
    ViewComparability comparability = ViewComparability::unreviewed;
    bool operator==(const PairObservation&) const = default;
};

// An observation with a difference, for the list ordered by size of difference.
struct FocusPoint {
    std::string id; // the observation's id
    PairFeature feature;
    double difference = 0; // Rider − Reference rider, degrees
    bool operator==(const FocusPoint&) const = default;
};

// The analysis of one pair.
struct PairReport {
    std::string pairID;
    std::vector<CoachingBullet> coaching;
    bool hasPhotoCoaching = false; // coaching holds the manifest's photo review of the pair
    CornerDirection effectiveCornerDirection = CornerDirection::unknown;
    PairContext context; // the stored context, or an empty one with the pair id
    std::vector<PairObservation> observations; // inside elbow, then outside elbow
    std::vector<FocusPoint> focusPoints;       // largest |difference| first
    std::string evidenceDigest;                // "sha256:" + 64 hex digits
    std::string analyzerVersion;
    std::string ruleCatalogVersion;
    bool operator==(const PairReport&) const = default;

    // The first 12 hex digits of the evidence digest, for display.
    std::string shortDigest() const;
    // Shown under every report.
    static std::string_view limitations();
};

} // namespace dravik
