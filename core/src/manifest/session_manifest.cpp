// SPDX-License-Identifier: Apache-2.0
#include "dravik/manifest.h"
#include "pairs/pairs_json.h"

#include "json/document_io.h"
#include "json/geometry_codec.h"
#include <set>

namespace dravik {

namespace {

constexpr std::string_view format = "dravik-session";
constexpr std::string_view kind = "session manifest";

// Frame ids join the pair and rider ids with "/", so neither may hold one.
std::string readID(const json::Node& node) {
    std::string id = node.nonEmptyString();
    if (id.find('/') != std::string::npos)
        node.fail("must not contain \"/\"");
    return id;
}

RiderInput readRider(const json::Node& node) {
    RiderInput rider;
    rider.id = readID(node["id"]);
    rider.role = json::readRole(node["role"]);
    rider.displayName = node["displayName"].string();
    rider.file = json::readPhotoPath(node["file"]);
    rider.sourceHash = json::readContentHash(node["sourceHash"]);
    rider.imageSize = json::readImageSize(node["imageSize"]);
    rider.panel = json::readRectInside(node["panel"], rider.imageSize);
    rider.crop = json::readRectInside(node["crop"], rider.imageSize);
    return rider;
}

PairInput readPair(const json::Node& node) {
    PairInput pair;
    pair.id = readID(node["id"]);
    pair.title = node["title"].string();
    json::Node riders = node["riders"];
    std::set<std::string> ids;
    std::set<std::string> roles;
    for (const json::Node& item : riders.items()) {
        RiderInput rider = readRider(item);
        if (!ids.insert(rider.id).second)
            item["id"].fail("repeats the id of another rider of this pair");
        if (!roles.insert(rider.role).second)
            item["role"].fail("repeats the role of another rider of this pair");
        pair.riders.push_back(std::move(rider));
    }
    // Two distinct roles already cap a pair at two riders.
    if (pair.riders.empty())
        riders.fail("must list at least one rider");
    if (auto direction = node.find("cornerDirection")) {
        pair.cornerDirection = cornerDirection(direction->string());
        if (!pair.cornerDirection)
            direction->fail("must be \"Unknown\", \"Left\" or \"Right\"");
    }
    if (auto coaching = node.find("photoCoaching")) {
        std::set<std::string> bulletIDs;
        for (const json::Node& item : coaching->items()) {
            CoachingBullet bullet = coachingBulletFromJson(item);
            if (!bulletIDs.insert(bullet.id).second)
                item["id"].fail("repeats the id of an earlier bullet");
            pair.photoCoaching.push_back(std::move(bullet));
        }
    }
    return pair;
}

SessionManifest read(const json::Node& root) {
    json::expectHeader(root, format, 1);
    SessionManifest manifest;
    manifest.title = root["title"].string();
    std::set<std::string> ids;
    for (const json::Node& item : root["pairs"].items()) {
        PairInput pair = readPair(item);
        if (!ids.insert(pair.id).second)
            item["id"].fail("repeats the id of another pair");
        manifest.pairs.push_back(std::move(pair));
    }
    return manifest;
}

json::Json write(const RiderInput& rider) {
    return json::Json{{"id", rider.id},
                      {"role", rider.role},
                      {"displayName", rider.displayName},
                      {"file", rider.file},
                      {"sourceHash", rider.sourceHash},
                      {"imageSize", json::write(rider.imageSize)},
                      {"panel", json::write(rider.panel)},
                      {"crop", json::write(rider.crop)}};
}

} // namespace

std::string SessionManifest::encode() const {
    json::Json root = json::header(format, 1);
    root["title"] = title;
    json::Json list = json::Json::array();
    for (const PairInput& pair : pairs) {
        json::Json riders = json::Json::array();
        for (const RiderInput& rider : pair.riders)
            riders.push_back(write(rider));
        json::Json entry{{"id", pair.id}, {"title", pair.title}, {"riders", std::move(riders)}};
        if (pair.cornerDirection)
            entry["cornerDirection"] = rawValue(*pair.cornerDirection);
        if (!pair.photoCoaching.empty()) {
            json::Json coaching = json::Json::array();
            for (const CoachingBullet& bullet : pair.photoCoaching)
                coaching.push_back(toJson(bullet));
            entry["photoCoaching"] = std::move(coaching);
        }
        list.push_back(std::move(entry));
    }
    root["pairs"] = std::move(list);
    return json::encodeDocument(root, kind, json::Layout::pretty, read);
}

SessionManifest SessionManifest::decode(std::string_view text, const std::string& fileLabel) {
    return json::decodeDocument(text, fileLabel, kind, read);
}

SessionManifest SessionManifest::load(const std::filesystem::path& file) {
    return json::loadDocument(file, kind, read);
}

} // namespace dravik
