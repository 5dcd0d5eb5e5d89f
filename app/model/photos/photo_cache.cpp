// SPDX-License-Identifier: Apache-2.0
#include "photos/photo_cache.h"

namespace tessary {

const DecodedPhoto* PhotoCache::find(const std::string& frameID) {
    auto found = held_.find(frameID);
    if (found == held_.end())
        return nullptr;
    found->second.lastUse = ++clock_;
    return &found->second.decoded;
}

bool PhotoCache::insert(const std::string& frameID, DecodedPhoto decoded) {
    auto found = held_.find(frameID);
    const bool sameFile = found != held_.end() && found->second.decoded.stamp == decoded.stamp;
    if (sameFile && !sharper(decoded.photo.scale, found->second.decoded.photo.scale)) {
        found->second.lastUse = ++clock_;
        return false;
    }
    const std::uint64_t incoming = decoded.photo.bytes();
    const std::uint64_t replaced = found == held_.end() ? 0 : found->second.decoded.photo.bytes();
    std::uint64_t evictable = 0;
    for (const auto& [id, held] : held_)
        if (id != frameID && !pinned_.contains(id))
            evictable += held.decoded.photo.bytes();
    const bool fits = bytes_ - replaced - evictable + incoming <= budget_;
    if (!fits && (sameFile || !pinned_.contains(frameID)))
        return false;
    makeRoom(incoming > replaced ? incoming - replaced : 0, frameID);
    bytes_ = bytes_ - replaced + incoming;
    held_.insert_or_assign(frameID, Held{std::move(decoded), ++clock_});
    return true;
}

void PhotoCache::drop(const std::string& frameID) {
    auto found = held_.find(frameID);
    if (found == held_.end())
        return;
    bytes_ -= found->second.decoded.photo.bytes();
    held_.erase(found);
}

void PhotoCache::pin(std::set<std::string> frameIDs) {
    pinned_ = std::move(frameIDs);
}

void PhotoCache::setBudget(std::uint64_t budget) {
    budget_ = budget;
    makeRoom(0, {});
}

void PhotoCache::makeRoom(std::uint64_t incoming, const std::string& keep) {
    while (bytes_ + incoming > budget_) {
        auto oldest = held_.end();
        for (auto entry = held_.begin(); entry != held_.end(); ++entry)
            if (entry->first != keep && !pinned_.contains(entry->first) &&
                (oldest == held_.end() || entry->second.lastUse < oldest->second.lastUse))
                oldest = entry;
        if (oldest == held_.end())
            return;
        bytes_ -= oldest->second.decoded.photo.bytes();
        held_.erase(oldest);
    }
}

} // namespace tessary
