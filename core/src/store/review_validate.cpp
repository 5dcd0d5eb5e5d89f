// SPDX-License-Identifier: Apache-2.0
#include "document/review_parts.h"
#include "dravik/store.h"

#include "json/json_reader.h"
#include <set>

namespace dravik {

namespace {

// What must not differ between a saved frame and the frame made afresh from the session.
const char* firstDifference(const ReviewFrame& saved, const ReviewFrame& raw) {
    if (saved.file != raw.file)
        return "its photo file";
    if (saved.sourceHash != raw.sourceHash)
        return "its photo’s content hash";
    if (saved.role != raw.role)
        return "its role";
    if (saved.imageSize != raw.imageSize)
        return "its photo size";
    if (saved.panel != raw.panel)
        return "its panel";
    if (saved.raw != raw.raw)
        return "its detections";
    return nullptr;
}

// The file the review was read from; without one, the name its identity gives it.
std::string savedLabel(const ReviewDocument& saved, const std::filesystem::path& file) {
    if (!file.empty())
        return json::quoted(json::fileLabel(file));
    try {
        return json::quoted(ReviewStore::reviewFileName(saved));
    } catch (const DravikError&) {
        return "The saved review";
    }
}

} // namespace

void ReviewStore::validate(const ReviewDocument& saved, const ReviewDocument& raw,
                           const std::filesystem::path& savedFile) {
    const std::string label = savedLabel(saved, savedFile);
    if (saved.identity() != raw.identity())
        throw DravikError(label + " belongs to other detection results than this session’s.");
    const auto& savedFrames = saved.frames();
    const auto& rawFrames = raw.frames();
    if (savedFrames.size() != rawFrames.size())
        throw DravikError(label + " holds " + std::to_string(savedFrames.size()) +
                          " frames, but the session has " + std::to_string(rawFrames.size()) + ".");
    for (std::size_t i = 0; i < savedFrames.size(); ++i) {
        const ReviewFrame& s = savedFrames[i];
        const ReviewFrame& r = rawFrames[i];
        if (s.id != r.id)
            throw DravikError(label + " has the frame “" + s.id + "” where the session has “" +
                              r.id + "”.");
        if (const char* what = firstDifference(s, r))
            throw DravikError(label + " does not match the session’s frame “" + s.id +
                              "”: " + what + " differs.");
    }
    for (const auto& [frameID, annotation] : saved.leanAnnotations()) {
        const ReviewFrame* frame = raw.frame(frameID);
        if (!frame)
            throw DravikError(label + " holds lean lines for the frame “" + frameID +
                              "”, which the session does not have.");
        try {
            annotation.validate(*frame);
        } catch (const DravikError& error) {
            throw DravikError(label + " holds lean lines that the session’s frame “" + frameID +
                              "” cannot take: " + json::clause(error.what()) + ".");
        }
    }
    std::set<std::string> pairs;
    for (const ReviewFrame& frame : rawFrames)
        pairs.insert(frame.pairID);
    auto requirePair = [&](const std::string& pairID) {
        if (!pairs.contains(pairID))
            throw DravikError(label + " holds statements about the pair “" + pairID +
                              "”, which the session does not have.");
    };
    for (const auto& entry : saved.pairContexts())
        requirePair(entry.first);
    for (const auto& entry : saved.leanPairContexts())
        requirePair(entry.first);
    // Photo assessments are not compared: they come from the manifest, which may be edited
    // without invalidating the review; adopt() takes the session's.
}

ReviewDocument ReviewStore::adopt(ReviewDocument saved, const ReviewDocument& raw,
                                  const std::filesystem::path& savedFile) {
    validate(saved, raw, savedFile);
    // Rider names and pair titles follow the manifest too: naming riders changes no detection.
    ReviewParts parts = ReviewParts::of(saved);
    for (std::size_t i = 0; i < parts.frames.size(); ++i) {
        parts.frames[i].riderDisplayName = raw.frames()[i].riderDisplayName;
        parts.frames[i].name = raw.frames()[i].name;
    }
    parts.pairAssessments = raw.pairAssessments();
    return parts.assemble(saved.revision());
}

} // namespace dravik
