// SPDX-License-Identifier: Apache-2.0
#pragma once

// Lines and documents for the lean tests: one pair "p1" of a rider and a reference rider, each
// photo 2000 × 1500 shown whole.

#include "dravik/lean.h"
#include "dravik/review.h"
#include "test_support.h"

#include <string>

namespace dravik::leantest {

inline LeanLine line(double ax, double ay, double bx, double by, double uncertainty = 3.0) {
    return LeanLine{{ax, ay}, {bx, by}, uncertainty};
}

inline LeanAnnotation lines(const ReviewFrame& f, const LeanLine& wheel, const LeanLine& reference,
                            LeanBasis basis = LeanBasis::assumedLevel,
                            const std::string& featureID = {}) {
    LeanAnnotation a(f, wheel);
    a.reference = reference;
    a.basis = basis;
    a.featureID = featureID;
    return a;
}

inline ReviewFrame riderFrame() {
    return test::frame("p1", "rider", "subject", 'a');
}

// Rider frame "p1/rider" (hash a…), reference frame "p1/ref" (hash b…).
inline ReviewDocument pairDocument() {
    return ReviewDocument(test::digitHash('9'),
                          {riderFrame(), test::frame("p1", "ref", "reference", 'b')});
}

inline ReviewPair pair() {
    return ReviewPair{"p1", {"p1/rider", "p1/ref"}};
}

} // namespace dravik::leantest
