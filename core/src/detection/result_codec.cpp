// SPDX-License-Identifier: Apache-2.0
#include "detection/result_codec.h"

#include "dravik/joints.h"

#include "json/geometry_codec.h"
#include <algorithm>
#include <array>
#include <set>

namespace dravik::json {

namespace {

constexpr std::array candidateKinds = {"person", "bicycle", "motorcycle"};

double readScore(const Node& node) {
    double score = node.number();
    if (score < 0 || score > 1)
        node.fail("must lie between 0 and 1");
    return score;
}

std::size_t readIndex(const Node& node, std::size_t count) {
    std::int64_t index = node.integer();
    if (index < 0 || std::uint64_t(index) >= count)
        node.fail("must be the position of a candidate of this result");
    return std::size_t(index);
}

// Indices are checked once every candidate is known: a person may ride a vehicle listed later.
void readCandidates(const Node& node, DravikResult& result) {
    const std::vector<Node> items = node.items();
    for (const Node& item : items) {
        Candidate candidate;
        Node kind = item["kind"];
        candidate.kind = kind.string();
        if (std::find(candidateKinds.begin(), candidateKinds.end(), candidate.kind) ==
            candidateKinds.end())
            kind.fail("must be \u201cperson\u201d, \u201cbicycle\u201d or \u201cmotorcycle\u201d");
        candidate.box = readRect(item["box"]);
        candidate.score = readScore(item["score"]);
        result.candidates.push_back(std::move(candidate));
    }
    for (std::size_t i = 0; i < items.size(); ++i) {
        auto riding = items[i].find("riding");
        if (!riding)
            continue;
        if (!result.candidates[i].isPerson())
            riding->fail("is for people only");
        std::size_t vehicle = readIndex(*riding, items.size());
        if (result.candidates[vehicle].isPerson())
            riding->fail("must be the position of a vehicle");
        result.candidates[i].riding = vehicle;
    }
}

} // namespace

DravikResult readResult(const Node& node) {
    DravikResult result;
    result.kind = node["kind"].nonEmptyString();
    result.status = node["status"].nonEmptyString();
    Node count = node["count"];
    result.count = count.integer();
    if (result.count < 0)
        count.fail("must not be negative");
    std::set<std::string> seen;
    for (const Node& item : node["joints"].items()) {
        JointResult joint;
        Node name = item["name"];
        joint.name = name.string();
        if (!InspectionRenderer::jointID(joint.name))
            name.fail("is not a known joint name");
        if (!seen.insert(joint.name).second)
            name.fail("repeats a joint already listed in this result");
        joint.x = item["x"].number();
        joint.y = item["y"].number();
        Node confidence = item["confidence"];
        joint.confidence = confidence.number();
        if (joint.confidence < 0 || joint.confidence > 1)
            confidence.fail("must lie between 0 and 1");
        result.joints.push_back(std::move(joint));
    }
    if (auto candidates = node.find("candidates"))
        readCandidates(*candidates, result);
    if (auto rider = node.find("rider")) {
        result.rider = readIndex(*rider, result.candidates.size());
        if (!result.candidates[*result.rider].isPerson())
            rider->fail("must name a person");
    }
    return result;
}

Json write(const DravikResult& result) {
    Json joints = Json::array();
    for (const JointResult& joint : result.joints)
        joints.push_back(Json{{"name", joint.name},
                              {"x", joint.x},
                              {"y", joint.y},
                              {"confidence", joint.confidence}});
    Json written{{"kind", result.kind},
                 {"status", result.status},
                 {"count", result.count},
                 {"joints", std::move(joints)}};
    // Left out when empty, so that results of older detectors are written back as they were.
    if (!result.candidates.empty()) {
        Json candidates = Json::array();
        for (const Candidate& candidate : result.candidates) {
            Json item{{"kind", candidate.kind},
                      {"box", write(candidate.box)},
                      {"score", candidate.score}};
            if (candidate.riding)
                item["riding"] = *candidate.riding;
            candidates.push_back(std::move(item));
        }
        written["candidates"] = std::move(candidates);
    }
    if (result.rider)
        written["rider"] = *result.rider;
    return written;
}

DetectionRetry readRetry(const Node& node) {
    DetectionRetry retry;
    if (auto primary = node.find("primary"))
        retry.primary = readResult(*primary);
    if (auto refined = node.find("refined"))
        retry.refined = readResult(*refined);
    return retry;
}

Json write(const DetectionRetry& retry) {
    Json body = Json::object();
    if (retry.primary)
        body["primary"] = write(*retry.primary);
    if (retry.refined)
        body["refined"] = write(*retry.refined);
    return body;
}

} // namespace dravik::json
