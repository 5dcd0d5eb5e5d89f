// SPDX-License-Identifier: Apache-2.0
#include "coaching/coaching_subjects.h"

#include "dravik/coaching.h"

namespace dravik::coaching {

void failMismatch(const json::Source& source, std::string_view problem) {
    if (source.writing)
        json::fail(source, problem);
    throw DravikError(json::quoted(source.label) +
                      " does not match this session: " + std::string(problem) + ".");
}

void failMismatch(const json::Node& node, std::string_view problem) {
    failMismatch(node.source(), node.path() + " " + std::string(problem));
}

std::map<std::string, std::vector<const ReviewFrame*>>
sessionSubjects(const std::vector<ReviewFrame>& frames, const json::Source& source) {
    std::vector<ReviewPair> pairs;
    try {
        pairs = PairReview::resolve(frames);
    } catch (const DravikError&) {
        failMismatch(source, "the session’s photos cannot be grouped into pairs");
    }
    std::map<std::string, const ReviewFrame*> byID;
    for (const ReviewFrame& frame : frames)
        byID.emplace(frame.id, &frame);
    std::map<std::string, std::vector<const ReviewFrame*>> subjects;
    for (const ReviewPair& pair : pairs) {
        std::vector<const ReviewFrame*> members;
        for (const std::string& id : pair.frameIDs)
            if (auto it = byID.find(id); it != byID.end())
                members.push_back(it->second);
        subjects.emplace(CoachingChecklist::subjectID(pair), std::move(members));
    }
    return subjects;
}

} // namespace dravik::coaching
