// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/pairs.h"
#include "dravik/review.h"

#include <string>

namespace dravik::lean {

// The two frames of a pair and their stored lean lines (null when none).
struct PairLean {
    const ReviewFrame& rider;
    const ReviewFrame& reference;
    const LeanAnnotation* riderLines;
    const LeanAnnotation* referenceLines;
};

// Refuses a pair without a reference photo or with frames the document lacks.
PairLean pairLean(const ReviewDocument& document, const ReviewPair& pair);

// The review document's file name between quotes, for messages.
std::string documentLabel(const ReviewDocument& document);

} // namespace dravik::lean
