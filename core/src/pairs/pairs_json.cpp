// SPDX-License-Identifier: Apache-2.0
#include "pairs/pairs_json.h"

#include "dravik/analysis.h"

#include <algorithm>
#include <initializer_list>
#include <set>

namespace dravik {

namespace {

using json::Json;
using json::Node;

// Unknown keys are refused so that a misspelt key never silently drops the reviewer's input.
void requireKnownKeys(const Node& node, std::initializer_list<std::string_view> known) {
    for (const auto& [key, value] : node.members())
        if (std::find(known.begin(), known.end(), key) == known.end())
            value.fail("is not a known key");
}

template <class Enum, std::size_t N> std::string choices(const Enum (&all)[N]) {
    std::string text;
    for (std::size_t i = 0; i < N; ++i) {
        if (i > 0)
            text += i + 1 == N ? " or " : ", ";
        text += json::quoted(rawValue(all[i]));
    }
    return text;
}

template <class Enum, std::size_t N> Enum readEnum(const Node& node, const Enum (&all)[N]) {
    const std::string text = node.string();
    for (Enum value : all)
        if (rawValue(value) == text)
            return value;
    node.fail("must be " + choices(all));
}

PairFeature readKneeFeature(const std::string& key, const Node& value) {
    auto feature = pairFeature(key);
    if (feature != PairFeature::insideKnee && feature != PairFeature::outsideKnee)
        value.fail("is not a knee: the keys must be " + json::quoted("insideKnee") + " or " +
                   json::quoted("outsideKnee"));
    return *feature;
}

void requireObservationID(const std::string& key, const Node& value) {
    const auto& ids = PairAnalysis::observationIDs();
    if (std::find(ids.begin(), ids.end(), key) != ids.end())
        return;
    std::string names;
    for (const std::string& id : ids)
        names += (names.empty() ? "" : " or ") + json::quoted(id);
    value.fail("is not an observation: the keys must be " + names);
}

} // namespace

Json toJson(const PairContext& context) {
    Json out = Json::object();
    out["pairID"] = context.pairID;
    if (context.directionOverride)
        out["directionOverride"] = rawValue(*context.directionOverride);
    if (context.kneePlacements) {
        Json knees = Json::object();
        for (const auto& [feature, placement] : *context.kneePlacements)
            knees[std::string(rawValue(feature))] = rawValue(placement);
        out["kneePlacements"] = std::move(knees);
    }
    Json views = Json::object();
    for (const auto& [id, comparability] : context.viewComparability)
        views[id] = rawValue(comparability);
    out["viewComparability"] = std::move(views);
    return out;
}

PairContext pairContextFromJson(const Node& node) {
    requireKnownKeys(node, {"pairID", "directionOverride", "kneePlacements", "viewComparability"});
    PairContext context;
    context.pairID = node["pairID"].nonEmptyString();
    if (auto direction = node.find("directionOverride"))
        context.directionOverride = readEnum(*direction, allCornerDirections);
    if (auto knees = node.find("kneePlacements")) {
        context.kneePlacements.emplace();
        for (const auto& [key, value] : knees->members())
            context.kneePlacements->emplace(readKneeFeature(key, value),
                                            readEnum(value, allKneePlacements));
    }
    for (const auto& [key, value] : node["viewComparability"].members()) {
        requireObservationID(key, value);
        context.viewComparability.emplace(key, readEnum(value, allViewComparabilities));
    }
    return context;
}

Json toJson(const CoachingBullet& bullet) {
    Json out = Json::object();
    out["id"] = bullet.id;
    out["headline"] = bullet.headline;
    out["detail"] = bullet.detail;
    if (bullet.feature)
        out["feature"] = rawValue(*bullet.feature);
    return out;
}

CoachingBullet coachingBulletFromJson(const Node& node) {
    requireKnownKeys(node, {"id", "headline", "detail", "feature"});
    CoachingBullet bullet;
    bullet.id = node["id"].nonEmptyString();
    bullet.headline = node["headline"].nonEmptyString();
    bullet.detail = node["detail"].string();
    if (auto feature = node.find("feature"))
        bullet.feature = readEnum(*feature, allPairFeatures);
    return bullet;
}

Json toJson(const PairPhotoAssessment& assessment) {
    Json out = Json::object();
    if (assessment.direction)
        out["direction"] = rawValue(*assessment.direction);
    Json coaching = Json::array();
    for (const CoachingBullet& bullet : assessment.coaching)
        coaching.push_back(toJson(bullet));
    out["coaching"] = std::move(coaching);
    return out;
}

PairPhotoAssessment pairPhotoAssessmentFromJson(const Node& node) {
    requireKnownKeys(node, {"direction", "coaching"});
    PairPhotoAssessment assessment;
    if (auto direction = node.find("direction"))
        assessment.direction = readEnum(*direction, allCornerDirections);
    std::set<std::string> ids;
    for (const Node& item : node["coaching"].items()) {
        CoachingBullet bullet = coachingBulletFromJson(item);
        if (!ids.insert(bullet.id).second)
            item["id"].fail("repeats the id of an earlier bullet");
        assessment.coaching.push_back(std::move(bullet));
    }
    return assessment;
}

} // namespace dravik
