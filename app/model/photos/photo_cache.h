// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "photos/frame_photo.h"

#include <cstdint>
#include <map>
#include <set>
#include <string>

namespace tessary {

// The decoded panels of one session's photos within a budget of decoded bytes. The frames on
// screen are pinned; the others give way least recently used first. A frame holds one picture,
// the sharpest decoded from its file as it is now.
class PhotoCache {
  public:
    static constexpr std::uint64_t defaultBudget = 512 * dravik::mebibyte;

    explicit PhotoCache(std::uint64_t budget = defaultBudget) : budget_(budget) {}

    // Marks the frame's picture as just used.
    const DecodedPhoto* find(const std::string& frameID);
    // Keeps `decoded` when the frame holds nothing, a picture of another stamp or a blurrier one,
    // making room from the least recently used unpinned frames. What would not fit even then is
    // refused, except a pinned frame's only picture of its file: what is on screen is always held.
    // True when kept.
    bool insert(const std::string& frameID, DecodedPhoto decoded);
    void drop(const std::string& frameID);

    void pin(std::set<std::string> frameIDs);
    const std::set<std::string>& pinned() const { return pinned_; }

    std::uint64_t budget() const { return budget_; }
    void setBudget(std::uint64_t budget);
    std::uint64_t bytes() const { return bytes_; }
    std::size_t size() const { return held_.size(); }

  private:
    struct Held {
        DecodedPhoto decoded;
        std::uint64_t lastUse = 0;
    };
    // Evicts unpinned frames other than `keep`, least recently used first, until `incoming` more
    // bytes fit or nothing is left to evict.
    void makeRoom(std::uint64_t incoming, const std::string& keep);

    std::uint64_t budget_;
    std::uint64_t bytes_ = 0;
    std::uint64_t clock_ = 0;
    std::map<std::string, Held> held_;
    std::set<std::string> pinned_;
};

} // namespace tessary
