// SPDX-License-Identifier: Apache-2.0
#include "dravik/error.h"
#include "dravik/pairs.h"
#include "dravik/review.h"

#include "json/json_reader.h"
#include <filesystem>
#include <unordered_map>

namespace dravik {

namespace {

constexpr std::string_view riderRole = "subject";

std::string photoName(const ReviewFrame& frame) {
    return json::quoted(json::fileLabel(std::filesystem::path(frame.file)));
}

std::string photoList(const std::vector<const ReviewFrame*>& frames) {
    std::string list;
    for (std::size_t i = 0; i < frames.size(); ++i) {
        if (i > 0)
            list += i + 1 == frames.size() ? " and " : ", ";
        list += photoName(*frames[i]);
    }
    return list;
}

ReviewPair makePair(const std::string& id, const std::vector<const ReviewFrame*>& frames) {
    const std::string pairName = "Pair " + json::quoted(id);
    if (frames.size() > 2)
        throw DravikError(pairName + " holds " + std::to_string(frames.size()) + " photos (" +
                          photoList(frames) +
                          "), but a pair holds one rider photo and at most one reference photo.");
    std::vector<const ReviewFrame*> riders;
    std::vector<const ReviewFrame*> references;
    for (const ReviewFrame* frame : frames)
        (frame->role == riderRole ? riders : references).push_back(frame);
    if (riders.size() > 1)
        throw DravikError(pairName + " holds two rider photos, " + photoList(riders) +
                          ", but compares one rider with one reference rider.");
    if (references.size() > 1)
        throw DravikError(pairName + " holds two reference photos, " + photoList(references) +
                          ", but compares one rider with one reference rider.");
    if (riders.empty())
        throw DravikError(pairName + " holds the reference photo " + photoList(references) +
                          " but no rider photo to compare with it.");
    ReviewPair pair{id, {riders.front()->id}};
    if (!references.empty())
        pair.frameIDs.push_back(references.front()->id);
    return pair;
}

} // namespace

namespace PairReview {

std::vector<ReviewPair> resolve(const std::vector<ReviewFrame>& frames) {
    // Pair ids in order of first appearance, each with its frames in document order.
    std::vector<std::pair<std::string, std::vector<const ReviewFrame*>>> groups;
    std::unordered_map<std::string, std::size_t> groupIndex;
    for (const ReviewFrame& frame : frames) {
        if (frame.pairID.empty())
            throw DravikError("The photo " + photoName(frame) + " belongs to no pair.");
        auto [it, added] = groupIndex.try_emplace(frame.pairID, groups.size());
        if (added)
            groups.push_back({frame.pairID, {}});
        groups[it->second].second.push_back(&frame);
    }
    std::vector<ReviewPair> pairs;
    pairs.reserve(groups.size());
    for (const auto& [id, members] : groups)
        pairs.push_back(makePair(id, members));
    return pairs;
}

} // namespace PairReview

} // namespace dravik
