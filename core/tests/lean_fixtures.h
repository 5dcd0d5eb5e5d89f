#pragma once

// Frames, lines and documents for the lean tests: one pair "p1" of a rider and a reference rider,
// each photo 2000 × 1500 shown whole.

#include "dravik/lean.h"
#include "dravik/review.h"

#include <string>
#include <vector>

namespace dravik::leantest {

inline std::string hash(char digit) {
    return "sha256:" + std::string(64, digit);
}

inline ReviewFrame frame(const std::string& pairID, const std::string& riderID,
                         const std::string& role, char hashDigit) {
    ReviewFrame f;
    f.id = pairID + "/" + riderID;
    f.role = role;
    f.riderDisplayName = riderID;
    f.name = pairID;
    f.file = "photos/" + riderID + ".jpg";
    f.sourceHash = hash(hashDigit);
    f.imageSize = {2000, 1500};
    f.panel = {0, 0, 2000, 1500};
    f.crop = {100, 100, 800, 800};
    f.pairID = pairID;
    f.riderID = riderID;
    return f;
}

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

// Rider frame "p1/rider" (hash a…), reference frame "p1/ref" (hash b…).
inline ReviewDocument pairDocument() {
    return ReviewDocument(
        hash('9'), {frame("p1", "rider", "subject", 'a'), frame("p1", "ref", "reference", 'b')});
}

inline ReviewPair pair() {
    return ReviewPair{"p1", {"p1/rider", "p1/ref"}};
}

inline void store(ReviewDocument& document, const LeanAnnotation& annotation) {
    document.setLeanAnnotation(annotation.frameID, annotation);
}

} // namespace dravik::leantest
