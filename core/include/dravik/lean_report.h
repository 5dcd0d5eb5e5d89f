// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/lean.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace dravik {

// The angle between a frame's wheel axis and its reference line, as seen in the photo.
struct LeanMeasurement {
    double angle = 0;       // degrees in (−90°, 90°]; positive when the wheel's top leans right
    double sensitivity = 0; // half-width of the annotation-sensitivity interval, degrees
    LeanBasis basis = LeanBasis::assumedLevel;
    std::string featureID;           // blanks trimmed; empty for the assumed-level basis
    bool reviewed = false;           // both lines reviewed
    double referenceOrientation = 0; // of the reference line, degrees, counter-clockwise as seen
    bool operator==(const LeanMeasurement&) const = default;

    double low() const { return angle - sensitivity; }
    double high() const { return angle + sensitivity; }
    std::string_view title() const;   // "2D wheel lean" or "Wheel-to-feature orientation"
    std::string_view wording() const; // "2D wheel lean" or "wheel-to-feature orientation"
};

// Rider − Reference rider, both measured on the same basis.
struct LeanComparison {
    double difference = 0;  // degrees
    double sensitivity = 0; // the two frames' sensitivities added
    LeanMeasurement rider;
    LeanMeasurement reference;
    bool operator==(const LeanComparison&) const = default;

    double low() const { return difference - sensitivity; }
    double high() const { return difference + sensitivity; }
};

// Why a pair's lean cannot be compared, in a sentence that names the photo at fault.
struct LeanComparisonGap {
    enum class Kind { missingLine, unmeasurable, differentBases, differentFeatures, refused };
    Kind kind = Kind::missingLine;
    std::string explanation;
    bool operator==(const LeanComparisonGap&) const = default;
};

// The lines a frame shows (its saved annotation, else its proposal) and what they measure.
struct LeanFrameEvidence {
    std::optional<LeanAnnotation> annotation;
    std::optional<LeanMeasurement> measurement;
    bool operator==(const LeanFrameEvidence&) const = default;
};

// Everything the window shows about lean for one document and its current pair, computed once
// per change of either.
struct LeanReport {
    std::map<std::string, LeanFrameEvidence> frames; // by frame id; frames without lines omitted
    bool comparable = false; // the current pair has a reference photo to compare with
    std::optional<LeanComparison> comparison;
    std::optional<LeanComparisonGap> gap; // why there is no comparison, for a comparable pair
    std::optional<std::string> evidenceDigest;
    // The pair's stored approval names exactly the evidence shown now.
    bool approved = false;
    bool operator==(const LeanReport&) const = default;

    const LeanFrameEvidence* frame(const std::string& frameID) const;
};

namespace LeanAnalysis {
// Shown with every lean result.
std::string_view limitations();
} // namespace LeanAnalysis

} // namespace dravik
