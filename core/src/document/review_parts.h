// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/review.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace dravik {

// Everything a review document holds, as plain values, for code that builds a document whole
// (a merge, a migration) rather than by one reviewer step after another.
struct ReviewParts {
    std::string identity;
    std::vector<ReviewFrame> frames;
    std::map<std::string, LeanAnnotation> leanAnnotations;
    std::map<std::string, PairContext> pairContexts;
    std::map<std::string, LeanPairContext> leanPairContexts;
    std::map<std::string, PairPhotoAssessment> pairAssessments;

    static ReviewParts of(const ReviewDocument& document);
    // The document holding exactly these parts at exactly `revision`.
    ReviewDocument assemble(std::int64_t revision) const;
};

} // namespace dravik
