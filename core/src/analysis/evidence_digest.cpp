// SPDX-License-Identifier: Apache-2.0
#include "analysis/evidence_digest.h"

#include "analysis/included_angle.h"
#include "hash/sha256.h"
#include "pairs/pairs_json.h"

namespace dravik::analysis {

nlohmann::json canonicalEvidence(const Evidence& evidence) {
    using nlohmann::json;
    json frames = json::array();
    for (const ReviewFrame* frame : evidence.frames) {
        json points = json::object();
        for (const std::string& joint : evidence.joints) {
            auto point = usableReviewedPoint(*frame, joint);
            points[joint] = point ? json{{"x", point->x}, {"y", point->y}} : json(nullptr);
        }
        frames.push_back(
            {{"id", frame->id}, {"sourceHash", frame->sourceHash}, {"joints", points}});
    }
    json root = json::object();
    root["analyzer"] = PairAnalysis::analyzerVersion();
    root["rules"] = evidence.catalog->version;
    root["pairID"] = evidence.pairID;
    root["frames"] = std::move(frames);
    // Converting from the ordered form sorts the keys.
    root["context"] = json(toJson(*evidence.context));
    root["photoAssessment"] = evidence.assessment ? json(toJson(*evidence.assessment)) : json();
    return root;
}

std::string evidenceDigest(const Evidence& evidence) {
    // Invalid UTF-8 is replaced rather than refused: the digest must never fail.
    std::string text =
        canonicalEvidence(evidence).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    return sha256Text(text.data(), text.size());
}

} // namespace dravik::analysis
