// SPDX-License-Identifier: Apache-2.0
#include "dravik/lean_analysis.h"
#include "hash/sha256.h"
#include "lean/lean_pair.h"
#include "lean/lean_rules.h"

#include "json/json_writer.h"

namespace dravik::LeanAnalysis {

namespace {

using json::Json;

// −0 and 0 are the same evidence but would print differently.
double canonical(double value) {
    return value + 0.0;
}

Json evidence(const Point2& p) {
    return Json{{"x", canonical(p.x)}, {"y", canonical(p.y)}};
}

Json evidence(const std::optional<LeanLine>& line) {
    if (!line)
        return nullptr;
    return Json{{"a", evidence(line->a)},
                {"b", evidence(line->b)},
                {"uncertainty", canonical(line->uncertainty)}};
}

// Provenance is left out: who drew a line does not change what it shows.
Json evidence(const ReviewFrame& frame, const LeanAnnotation* lines) {
    Json annotation = nullptr;
    if (lines) {
        const bool shared = lines->basis == LeanBasis::sharedFeature;
        annotation = Json{{"wheel", evidence(lines->wheel)},
                          {"wheelReviewed", lines->wheelReviewed},
                          {"wheelNotObservable", lines->wheelNotObservable},
                          {"reference", evidence(lines->reference)},
                          {"referenceReviewed", lines->referenceReviewed},
                          {"basis", rawValue(lines->basis)},
                          {"featureID", shared ? Json(lean::trimmed(lines->featureID)) : Json()}};
    }
    return Json{{"frameID", frame.id}, {"sourceHash", frame.sourceHash}, {"lines", annotation}};
}

} // namespace

std::string evidenceDigest(const ReviewDocument& document, const ReviewPair& pair) {
    const lean::PairLean lean = lean::pairLean(document, pair);
    Json root{{"evidence", "dravik-lean-evidence"},
              {"version", 1},
              {"rider", evidence(lean.rider, lean.riderLines)},
              {"reference", evidence(lean.reference, lean.referenceLines)}};
    const std::string text = json::dump(root, "lean evidence", json::Layout::compact);
    return sha256Text(text.data(), text.size());
}

} // namespace dravik::LeanAnalysis
