// SPDX-License-Identifier: Apache-2.0
#include "dravik/error.h"
#include "dravik/session_arrangement.h"

#include <algorithm>

namespace dravik {

namespace {

constexpr std::string_view subjectRole = "subject";

} // namespace

SessionArrangement SessionArrangement::of(const SessionManifest& manifest) {
    SessionArrangement arrangement;
    arrangement.title = manifest.title;
    for (const PairInput& pair : manifest.pairs) {
        ArrangedPair arranged{pair.title, "", std::nullopt, pair.cornerDirection};
        for (const RiderInput& rider : pair.riders) {
            std::string frameID = pair.id + "/" + rider.id;
            arrangement.photos.push_back({frameID, rider.file, rider.displayName});
            if (rider.role == subjectRole && arranged.riderFrameID.empty())
                arranged.riderFrameID = std::move(frameID);
            else
                arranged.referenceFrameID = std::move(frameID);
        }
        // A pair with a reference rider only (never resolvable) takes it as its rider.
        if (arranged.riderFrameID.empty()) {
            arranged.riderFrameID = *arranged.referenceFrameID;
            arranged.referenceFrameID.reset();
        }
        arrangement.pairs.push_back(std::move(arranged));
    }
    return arrangement;
}

ArrangedPhoto* SessionArrangement::photo(std::string_view frameID) {
    auto it = std::find_if(photos.begin(), photos.end(),
                           [&](const ArrangedPhoto& p) { return p.frameID == frameID; });
    return it == photos.end() ? nullptr : &*it;
}

const ArrangedPhoto* SessionArrangement::photo(std::string_view frameID) const {
    return const_cast<SessionArrangement*>(this)->photo(frameID);
}

namespace {

const ArrangedPhoto& requirePhoto(const SessionArrangement& arrangement,
                                  const std::string& frameID) {
    const ArrangedPhoto* photo = arrangement.photo(frameID);
    if (!photo)
        throw DravikError("The session has no photo shown as “" + frameID + "”.");
    return *photo;
}

// A new pair's title, as discovery names one: its photo's file name.
std::string titleOf(const SessionArrangement& arrangement, const std::string& frameID) {
    return std::filesystem::path(requirePhoto(arrangement, frameID).file).filename().string();
}

// Takes a photo out of its pair; a pair left without its rider takes its reference rider as
// rider, and a pair left empty goes. Returns where a pair of the photo's own would go: after the
// pair it was in, or in its place.
std::size_t detach(std::vector<ArrangedPair>& pairs, const std::string& frameID) {
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        ArrangedPair& pair = pairs[i];
        if (pair.referenceFrameID == frameID) {
            pair.referenceFrameID.reset();
        } else if (pair.riderFrameID == frameID) {
            if (pair.referenceFrameID) {
                pair.riderFrameID = *pair.referenceFrameID;
                pair.referenceFrameID.reset();
            } else {
                pairs.erase(pairs.begin() + static_cast<std::ptrdiff_t>(i));
                return i;
            }
        } else {
            continue;
        }
        return i + 1;
    }
    return pairs.size();
}

std::vector<ArrangedPair>::iterator pairOf(std::vector<ArrangedPair>& pairs,
                                           const std::string& riderFrameID) {
    return std::find_if(pairs.begin(), pairs.end(), [&](const ArrangedPair& pair) {
        return pair.riderFrameID == riderFrameID;
    });
}

} // namespace

void SessionArrangement::separate(const std::string& riderFrameID) {
    requirePhoto(*this, riderFrameID);
    auto pair = pairOf(pairs, riderFrameID);
    if (pair == pairs.end() || !pair->referenceFrameID)
        return;
    const std::string reference = *pair->referenceFrameID;
    pair->referenceFrameID.reset();
    pairs.insert(pair + 1,
                 ArrangedPair{titleOf(*this, reference), reference, std::nullopt, std::nullopt});
}

void SessionArrangement::pairUp(const std::string& riderFrameID,
                                const std::string& referenceFrameID) {
    requirePhoto(*this, riderFrameID);
    requirePhoto(*this, referenceFrameID);
    if (riderFrameID == referenceFrameID)
        throw DravikError("A photo cannot be compared with itself.");
    detach(pairs, referenceFrameID);
    if (pairOf(pairs, riderFrameID) == pairs.end()) {
        const std::size_t at = std::min(detach(pairs, riderFrameID), pairs.size());
        pairs.insert(pairs.begin() + static_cast<std::ptrdiff_t>(at),
                     ArrangedPair{titleOf(*this, riderFrameID), riderFrameID, referenceFrameID,
                                  std::nullopt});
        return;
    }
    separate(riderFrameID);
    pairOf(pairs, riderFrameID)->referenceFrameID = referenceFrameID;
}

} // namespace dravik
