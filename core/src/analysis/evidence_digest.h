// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/analysis.h"
#include "dravik/review.h"

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace dravik::analysis {

// Everything a pair report is derived from.
struct Evidence {
    std::string pairID;
    std::vector<const ReviewFrame*> frames; // rider, then reference rider when there is one
    std::vector<std::string> joints;        // the joints whose reviewed points were used
    const PairContext* context = nullptr;
    const PairPhotoAssessment* assessment = nullptr; // none when the manifest holds none
    const RuleCatalog* catalog = nullptr;
};

// Keys sorted, so the same evidence always gives the same text.
nlohmann::json canonicalEvidence(const Evidence& evidence);

// "sha256:" + hex digest of the compact text of canonicalEvidence.
std::string evidenceDigest(const Evidence& evidence);

} // namespace dravik::analysis
