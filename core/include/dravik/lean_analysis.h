#pragma once

#include "dravik/lean.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace dravik {

class ReviewDocument;
struct ReviewPair;

// The angle between a frame's wheel axis and its reference line, as seen in the photo.
struct LeanMeasurement {
    double angle = 0;       // degrees in (−90°, 90°]; positive when the wheel's top leans right
    double sensitivity = 0; // half-width of the annotation-sensitivity interval, degrees
    LeanBasis basis = LeanBasis::assumedLevel;
    std::string featureID; // blanks trimmed; empty for the assumed-level basis
    bool reviewed = false; // both lines reviewed
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

namespace LeanAnalysis {
// None when a line is missing or shorter than minLeanLineLength, or the wheel is not observable.
std::optional<LeanMeasurement> measure(const LeanAnnotation& annotation);
// Refuses a pair without a reference photo or with frames the document lacks. None when either
// side is unmeasured, the bases differ, or a shared feature is not named alike on both sides.
std::optional<LeanComparison> compare(const ReviewDocument& document, const ReviewPair& pair);
// "sha256:" + hex over the canonical text of the evidence a comparison rests on.
std::string evidenceDigest(const ReviewDocument& document, const ReviewPair& pair);
// atan2(−(b.y − a.y), b.x − a.x) in degrees: counter-clockwise as seen, since y grows down.
double orientation(const LeanLine& line);
// Into (−90°, 90°]: a line has no direction, so angles 180° apart are the same.
double wrap(double degrees);
// atan(2u / length) in degrees: how far the line may turn if each endpoint is off by u.
double sensitivity(const LeanLine& line);
std::string_view limitations();
} // namespace LeanAnalysis

namespace LeanReview {
// Every stored annotation fits its frame; every lean pair context belongs to a pair with a
// reference photo and carries a well-formed approval digest, if any.
void validate(const ReviewDocument& document);
} // namespace LeanReview

// "lean-proposals.json": machine-proposed lean lines, matched to frames by the caller.
std::vector<LeanAnnotation> loadLeanProposals(const std::filesystem::path& file);
std::vector<LeanAnnotation> decodeLeanProposals(std::string_view json,
                                                const std::string& fileLabel);
std::string encodeLeanProposals(const std::vector<LeanAnnotation>& proposals);

} // namespace dravik
