// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/lean.h"
#include "dravik/lean_report.h"

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace dravik {

class ReviewDocument;
struct ReviewPair;

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
// The lean report of a document; `pair` is the current pair (if any), `proposals` the
// machine-proposed lines shown for frames that have none saved.
LeanReport report(const ReviewDocument& document, const std::optional<ReviewPair>& pair,
                  const std::map<std::string, LeanAnnotation>& proposals);
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
