// SPDX-License-Identifier: Apache-2.0
#include "dravik/error.h"
#include "job_queue.h"
#include "photos/photo_decoding.h"
#include "reviewer_model.h"

#include <QCoreApplication>
#include <algorithm>

namespace tessary {

std::map<std::string, FramePhoto>
ReviewerModel::photosFor(PhotoState& photos, const dravik::ReviewDocument& document,
                         const std::vector<std::string>& frameIDs) {
    // Pinned with what is on screen while they are decoded, so that making room for one never
    // drops another; the caller pins what ends up on screen.
    const std::set<std::string> before = photos.cache.pinned();
    std::set<std::string> pinned = before;
    pinned.insert(frameIDs.begin(), frameIDs.end());
    photos.cache.pin(pinned);
    std::map<std::string, FramePhoto> found;
    try {
        for (const std::string& id : frameIDs) {
            const dravik::ReviewFrame* frame = document.frame(id);
            auto verified = photos.verified.find(id);
            if (!frame || verified == photos.verified.end())
                throw dravik::DravikError("No session is open.");
            photos.refused.erase(id);
            if (&photos == &photos_)
                settleDecode(id);
            const DecodedPhoto* held = photos.cache.find(id);
            if (held && stampNow(verified->second.file) == held->stamp) {
                found.emplace(id, held->photo);
                continue;
            }
            DecodedPhoto decoded = decodePhoto(*frame, verified->second,
                                               scaleFor(verified->second, densityFor(photos, id)));
            found.emplace(id, decoded.photo);
            photos.cache.insert(id, std::move(decoded));
        }
    } catch (...) {
        photos.cache.pin(before);
        throw;
    }
    return found;
}

void ReviewerModel::settleDecode(const std::string& frameID) {
    if (!photos_.decoding.contains(frameID))
        return;
    if (!decoder_->withdrawIf([&](const std::string& key) { return key == frameID; }).empty()) {
        photos_.decoding.erase(frameID);
        return;
    }
    decoder_->waitFor(frameID);
    QCoreApplication::sendPostedEvents(decodeInbox_.get(), QEvent::MetaCall);
}

double ReviewerModel::densityFor(const PhotoState& photos, const std::string& frameID) const {
    if (auto asked = photos.density.find(frameID); asked != photos.density.end())
        return asked->second;
    if (learnedDensity_)
        return *learnedDensity_;
    auto verified = photos.verified.find(frameID);
    return verified == photos.verified.end() ? 1.0 : fittedDensity(verified->second);
}

std::vector<std::string> ReviewerModel::neighbours() const {
    const dravik::ReviewDocument* current = document();
    if (!current || !view_.activeFrameID)
        return {};
    std::vector<std::string> near;
    if (view_.compare) {
        const auto shownPair = pair();
        const std::vector<dravik::ReviewPair>& all = pairs();
        auto at = std::find_if(all.begin(), all.end(), [&](const dravik::ReviewPair& candidate) {
            return shownPair && candidate.id == shownPair->id;
        });
        if (at == all.end())
            return {};
        if (std::next(at) != all.end())
            near.insert(near.end(), std::next(at)->frameIDs.begin(), std::next(at)->frameIDs.end());
        if (at != all.begin())
            near.insert(near.end(), std::prev(at)->frameIDs.begin(), std::prev(at)->frameIDs.end());
        return near;
    }
    const auto index = current->frameIndex(*view_.activeFrameID);
    const std::vector<dravik::ReviewFrame>& frames = current->frames();
    if (!index)
        return {};
    if (*index + 1 < frames.size())
        near.push_back(frames[*index + 1].id);
    if (*index > 0)
        near.push_back(frames[*index - 1].id);
    return near;
}

void ReviewerModel::prefetchNeighbours() {
    const std::vector<std::string> near = neighbours();
    std::set<std::string> keep(near.begin(), near.end());
    for (const auto& [id, photo] : photos_.shown)
        keep.insert(id);
    withdrawDecodes(keep);
    int priority = 1; // after the sharper pictures of what is on screen
    for (const std::string& id : near)
        if (auto verified = photos_.verified.find(id); verified != photos_.verified.end())
            decodeInBackground(id, scaleFor(verified->second, densityFor(photos_, id)), priority++);
}

void ReviewerModel::withdrawDecodes(const std::set<std::string>& keep) {
    for (const std::string& key :
         decoder_->withdrawIf([&](const std::string& key) { return !keep.contains(key); }))
        photos_.decoding.erase(key);
}

void ReviewerModel::decodeInBackground(const std::string& frameID, dravik::PhotoScale scale,
                                       int priority) {
    const dravik::ReviewFrame* frame = this->frame(frameID);
    auto verified = photos_.verified.find(frameID);
    if (!frame || verified == photos_.verified.end() || photos_.refused.contains(frameID))
        return;
    if (auto asked = photos_.decoding.find(frameID);
        asked != photos_.decoding.end() && !sharper(scale, asked->second))
        return;
    if (const DecodedPhoto* held = photos_.cache.find(frameID);
        held && !sharper(scale, held->photo.scale))
        return;
    photos_.decoding.insert_or_assign(frameID, scale);
    const dravik::Uuid session = session_.sessionID;
    auto decode = [this, session, frameID, scale, frame = *frame, photo = verified->second] {
        std::optional<DecodedPhoto> decoded;
        try {
            decoded = decodePhoto(frame, photo, scale);
        } catch (const std::exception&) {
            // Shown again, the frame is decoded on the spot and says what is wrong.
        }
        QMetaObject::invokeMethod(
            decodeInbox_.get(),
            [this, session, frameID, scale, decoded = std::move(decoded)] {
                photoDecoded(session, frameID, scale, decoded);
            },
            Qt::QueuedConnection);
    };
    for (const std::string& key : decoder_->submit({frameID, priority, std::move(decode)}))
        photos_.decoding.erase(key);
}

void ReviewerModel::photoDecoded(const dravik::Uuid& session, const std::string& frameID,
                                 dravik::PhotoScale scale, std::optional<DecodedPhoto> decoded) {
    SignalHold hold(*this);
    if (session != session_.sessionID)
        return;
    if (auto asked = photos_.decoding.find(frameID);
        asked != photos_.decoding.end() && asked->second == scale)
        photos_.decoding.erase(asked);
    if (!decoded) {
        photos_.refused.insert(frameID);
        return;
    }
    const FramePhoto photo = decoded->photo;
    if (!photos_.cache.insert(frameID, std::move(*decoded)))
        return;
    if (auto shown = photos_.shown.find(frameID); shown != photos_.shown.end()) {
        shown->second = photo;
        mark(imagesChange);
    }
}

void ReviewerModel::requestPhotoDetail(const std::string& frameID, double density) {
    auto shown = photos_.shown.find(frameID);
    auto verified = photos_.verified.find(frameID);
    if (shown == photos_.shown.end() || verified == photos_.verified.end() || !(density > 0))
        return;
    photos_.density.insert_or_assign(frameID, density);
    // Automatic framing is how a new frame will be shown; a zoom the reviewer chose is not.
    if (settings(frameID).autoFrame)
        learnedDensity_ = density;
    const dravik::PhotoScale wanted = scaleFor(verified->second, density);
    if (sharper(wanted, shown->second.scale))
        decodeInBackground(frameID, wanted, 0);
}

void ReviewerModel::setPhotoBudget(std::uint64_t bytes) {
    photoBudget_ = bytes;
    photos_.cache.setBudget(bytes);
}

} // namespace tessary
