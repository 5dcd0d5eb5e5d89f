// SPDX-License-Identifier: Apache-2.0
#include "arrangement/arrangement_plan.h"

#include "discovery/discovered_manifest.h"
#include "dravik/error.h"

#include "json/json_reader.h"
#include <tuple>
#include <vector>

namespace dravik::arrangement {

namespace {

constexpr std::string_view subjectRole = "subject";
constexpr std::string_view referenceRole = "reference";

struct Photo {
    const PairInput* pair = nullptr;
    const RiderInput* rider = nullptr;
};

std::string photoName(const RiderInput& rider) {
    return json::quoted(json::fileLabel(rider.file));
}

std::map<std::string, Photo> photosOf(const SessionManifest& session) {
    std::map<std::string, Photo> photos;
    for (const PairInput& pair : session.pairs)
        for (const RiderInput& rider : pair.riders)
            photos.emplace(pair.id + "/" + rider.id, Photo{&pair, &rider});
    return photos;
}

DravikError staleArrangement(const std::string& manifestLabel) {
    return DravikError("The arrangement was made for another version of " + manifestLabel +
                       "; open the session again to arrange it.");
}

// Every photo listed once, with the file the session has for it, and nothing else.
void requireSamePhotos(const std::map<std::string, Photo>& photos,
                       const SessionArrangement& arrangement, const std::string& manifestLabel) {
    std::set<std::string> listed;
    bool same = arrangement.photos.size() == photos.size();
    for (const ArrangedPhoto& photo : arrangement.photos) {
        auto found = photos.find(photo.frameID);
        same = same && found != photos.end() && found->second.rider->file == photo.file &&
               listed.insert(photo.frameID).second;
    }
    if (!same)
        throw staleArrangement(manifestLabel);
}

void requireOnePairEach(const std::map<std::string, Photo>& photos,
                        const SessionArrangement& arrangement, const std::string& manifestLabel) {
    std::map<std::string, int> uses;
    for (const ArrangedPair& pair : arrangement.pairs) {
        for (const std::string* id :
             {&pair.riderFrameID, pair.referenceFrameID ? &*pair.referenceFrameID : nullptr}) {
            if (!id)
                continue;
            if (!photos.contains(*id))
                throw staleArrangement(manifestLabel);
            ++uses[*id];
        }
        if (pair.referenceFrameID == pair.riderFrameID)
            throw DravikError("The photo " + photoName(*photos.at(pair.riderFrameID).rider) +
                              " cannot be compared with itself.");
    }
    for (const auto& [id, photo] : photos) {
        if (uses[id] == 0)
            throw DravikError("The photo " + photoName(*photo.rider) +
                              " is in no pair; every photo belongs to exactly one.");
        if (uses[id] > 1)
            throw DravikError("The photo " + photoName(*photo.rider) +
                              " is in two pairs; every photo belongs to exactly one.");
    }
}

// The same rider photo, with the same reference rider or none, as one pair of the session.
bool unchanged(const ArrangedPair& arranged, const std::map<std::string, Photo>& photos) {
    const Photo& rider = photos.at(arranged.riderFrameID);
    if (rider.rider->role != subjectRole)
        return false;
    if (!arranged.referenceFrameID)
        return rider.pair->riders.size() == 1;
    return rider.pair->riders.size() == 2 &&
           photos.at(*arranged.referenceFrameID).pair == rider.pair;
}

// What a review document's frames are made of, in order.
std::vector<std::tuple<std::string, std::string, std::string, std::string>>
framesOf(const SessionManifest& manifest) {
    std::vector<std::tuple<std::string, std::string, std::string, std::string>> frames;
    for (const PairInput& pair : manifest.pairs)
        for (const RiderInput& rider : pair.riders)
            frames.emplace_back(pair.id + "/" + rider.id, rider.role, rider.file, rider.sourceHash);
    return frames;
}

} // namespace

ArrangementPlan plan(const SessionManifest& session, const SessionArrangement& arrangement,
                     const std::string& manifestLabel) {
    const std::map<std::string, Photo> photos = photosOf(session);
    requireSamePhotos(photos, arrangement, manifestLabel);
    requireOnePairEach(photos, arrangement, manifestLabel);
    std::map<std::string, std::string> names;
    for (const ArrangedPhoto& photo : arrangement.photos)
        names[photo.frameID] = photo.riderName;

    ArrangementPlan result;
    result.manifest.title = arrangement.title;
    std::vector<bool> kept;
    std::set<std::string> takenPairIDs;
    for (const ArrangedPair& pair : arrangement.pairs) {
        kept.push_back(unchanged(pair, photos));
        if (kept.back())
            takenPairIDs.insert(photos.at(pair.riderFrameID).pair->id);
    }
    for (std::size_t i = 0; i < arrangement.pairs.size(); ++i) {
        const ArrangedPair& arranged = arrangement.pairs[i];
        const Photo& riderPhoto = photos.at(arranged.riderFrameID);
        PairInput pair;
        if (kept[i]) {
            // Kept whole, rider order and photo coaching included, so its frames keep their ids.
            pair = *riderPhoto.pair;
            result.keptPairs.insert(pair.id);
            for (RiderInput& rider : pair.riders) {
                const std::string frameID = pair.id + "/" + rider.id;
                rider.displayName = names.at(frameID);
                result.frameIDs.emplace(frameID, frameID);
            }
        } else {
            pair.id = discovery::uniqueID(riderPhoto.pair->id, takenPairIDs);
            auto add = [&](const std::string& frameID, std::string_view role) {
                const Photo& photo = photos.at(frameID);
                RiderInput rider = *photo.rider;
                rider.id = std::string(role == subjectRole ? "rider" : "reference");
                // A photo that changes its role must change its frame id too, or the review of
                // the old role could be taken for this one.
                if (pair.id == photo.pair->id && rider.id == photo.rider->id && rider.role != role)
                    rider.id += "-2";
                rider.role = std::string(role);
                rider.displayName = names.at(frameID);
                result.frameIDs.emplace(frameID, pair.id + "/" + rider.id);
                pair.riders.push_back(std::move(rider));
            };
            add(arranged.riderFrameID, subjectRole);
            if (arranged.referenceFrameID)
                add(*arranged.referenceFrameID, referenceRole);
        }
        pair.title = arranged.title;
        pair.cornerDirection = arranged.cornerDirection;
        result.manifest.pairs.push_back(std::move(pair));
    }
    result.reKeysFrames = framesOf(session) != framesOf(result.manifest);
    return result;
}

} // namespace dravik::arrangement
