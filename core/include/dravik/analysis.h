// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/pair_report.h"
#include "dravik/pairs.h"

#include <string>
#include <string_view>
#include <vector>

namespace dravik {

class ReviewDocument;

// The rules a pair is analysed under; a change of any rule needs a new version.
struct RuleCatalog {
    std::string version;
    double elbowThresholdDegrees = 10.0; // |difference| that earns an elbow bullet
    double minimumSegmentPixels = 1.0;   // shorter arm segments give no direction
    bool operator==(const RuleCatalog&) const = default;

    static const RuleCatalog& production();
};

namespace PairAnalysis {
// Identifies this implementation of the rules in every report.
std::string_view analyzerVersion();
// Every observation id a context may record a view comparability for.
const std::vector<std::string>& observationIDs();
// Fails when a frame of the pair is not in the document.
PairReport analyze(const ReviewDocument& document, const ReviewPair& pair,
                   const RuleCatalog& catalog);
} // namespace PairAnalysis

} // namespace dravik
