// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/geometry.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace dravik {

struct ReviewFrame;

// A hand-placed endpoint is trusted to about this many source pixels.
inline constexpr double placedLeanUncertainty = 3.0;

struct LeanLine {
    Point2 a;
    Point2 b;
    double uncertainty = placedLeanUncertainty; // endpoint uncertainty, source pixels
    bool operator==(const LeanLine&) const = default;
};

enum class LeanBasis { assumedLevel, sharedFeature };
inline constexpr LeanBasis allLeanBases[] = {LeanBasis::assumedLevel, LeanBasis::sharedFeature};
std::string_view label(LeanBasis basis);    // shown in the basis picker
std::string_view prefix(LeanBasis basis);   // "Proxy reference · " or "Shared feature · "
std::string_view rawValue(LeanBasis basis); // "assumedLevel", "sharedFeature"
std::optional<LeanBasis> leanBasis(std::string_view rawValue);

// The four endpoints of the two lean lines.
enum class LeanHandle { wheelA, wheelB, referenceA, referenceB };
inline constexpr LeanHandle allLeanHandles[] = {LeanHandle::wheelA, LeanHandle::wheelB,
                                                LeanHandle::referenceA, LeanHandle::referenceB};
std::string_view label(LeanHandle handle);    // "Wheel endpoint 1", ...
std::string_view rawValue(LeanHandle handle); // "wheelA", ...
std::optional<LeanHandle> leanHandle(std::string_view rawValue);
inline bool isReference(LeanHandle h) {
    return h == LeanHandle::referenceA || h == LeanHandle::referenceB;
}
inline bool isStart(LeanHandle h) {
    return h == LeanHandle::wheelA || h == LeanHandle::referenceA;
}

inline constexpr std::string_view reviewerProvenance = "reviewer";

// Limits that LeanAnnotation::validate applies, for the editors' steppers and placements.
inline constexpr double minLeanUncertainty = 0.5; // source pixels
inline constexpr double maxLeanUncertainty = 50.0;
inline constexpr double minLeanLineLength = 1.0; // shorter lines have no direction worth measuring
inline constexpr std::size_t maxLeanTextLength = 100; // feature ID and provenance, in characters
// The reviewer steps an uncertainty by whole pixels: below one pixel a "%.0f" readout would show
// the same figure for different values.
inline constexpr double leanUncertaintyStep = 1.0;
inline constexpr double minSteppedLeanUncertainty = std::max(1.0, minLeanUncertainty);

enum class LeanLineKind { wheel, reference };

// The lean lines of one frame.
struct LeanAnnotation {
    std::string frameID;
    std::string sourceHash;
    std::optional<LeanLine> wheel;
    bool wheelReviewed = false;
    bool wheelNotObservable = false;
    std::optional<LeanLine> reference;
    bool referenceReviewed = false;
    LeanBasis basis = LeanBasis::assumedLevel;
    std::string featureID; // the shared feature's name, same in both photos
    std::string provenance{reviewerProvenance};
    bool operator==(const LeanAnnotation&) const = default;

    LeanAnnotation() = default;
    LeanAnnotation(const ReviewFrame& frame, std::optional<LeanLine> wheelLine,
                   std::string provenanceText = std::string(reviewerProvenance));

    // Refuses an annotation for another frame or photo version, with points off the shown panel,
    // unusable lines or contradictory flags (docs/lean.md lists the rules).
    void validate(const ReviewFrame& frame) const;
    std::optional<Point2> point(LeanHandle handle) const;
    // Sets one endpoint; nothing happens when that handle's line is absent.
    void move(LeanHandle handle, const Point2& to);
    // Replace or remove a line, clearing the flags that spoke about the old one.
    void setWheel(std::optional<LeanLine> line);
    void setReference(std::optional<LeanLine> line);
    void setLine(LeanLineKind kind, std::optional<LeanLine> line);
    const std::optional<LeanLine>& line(LeanLineKind kind) const;

    // The reviewer saw the wheel and confirms its axis; a wheel can be one or the other.
    void confirmWheel();
    void markWheelNotObservable();
    // Moves a line's endpoint uncertainty by `steps` whole steps, kept within
    // [minSteppedLeanUncertainty, maxLeanUncertainty]; false when the line is absent or at the
    // bound already, and then nothing changes.
    bool stepUncertainty(LeanLineKind kind, int steps);
    bool canStepUncertainty(LeanLineKind kind, int steps) const;
};

// The reviewer's comparability checks for a pair's lean comparison.
struct LeanPairContext {
    std::string pairID;
    bool sameWheelCue = false;
    bool cameraViewsComparable = false;
    bool wheelHeadingsComparable = false;
    bool referenceComparable = false;
    bool cameraRollComparable = false;
    bool similarSpeed = false; // user reported
    std::optional<std::string> approvalDigest;
    bool operator==(const LeanPairContext&) const = default;

    bool checksComplete() const {
        return sameWheelCue && cameraViewsComparable && wheelHeadingsComparable &&
               referenceComparable && cameraRollComparable;
    }
};

} // namespace dravik
