// SPDX-License-Identifier: Apache-2.0
#include "dravik/coaching.h"

namespace dravik {

namespace {

// Cues describe what to practise and what a photo can show (positions, never forces or timing).
// Raise the version whenever a topic is added, removed, renamed or changes meaning, so that
// findings saved against the old list are not shown against the new one.
constexpr std::string_view version = "whole-body-1";

std::vector<CoachingTopic> makeTopics() {
    return {
        {"head-eyes", "Head and eyes",
         "Turn your head and look through the corner toward the exit, not at the ground in front "
         "of the wheel."},
        {"upper-body", "Upper body",
         "Move your chest toward the inside and forward, so your head leads your body into the "
         "turn."},
        {"shoulders", "Shoulders",
         "Let your shoulders drop and follow your head; keep them level with the bars rather than "
         "hunched."},
        {"arms-elbows", "Arms and elbows",
         "Keep your arms relaxed and your elbows bent and low, so the bars can move freely."},
        {"hands-wrists", "Hands and wrists",
         "Keep your wrists low and in line with your forearms rather than bent up above the bars."},
        {"back", "Back", "Keep your back rounded and relaxed rather than stiff or arched."},
        {"hips", "Hips and seat",
         "Shift your hips toward the inside of the seat before you turn in, sitting on one cheek."},
        {"outside-knee", "Outside knee",
         "Rest your outside knee and thigh against the tank to hold yourself in place."},
        {"inside-knee", "Inside knee",
         "Open your inside knee toward the corner, leading with it rather than forcing it out."},
        {"outside-foot", "Outside foot",
         "Keep the ball of your outside foot on the peg, heel tucked in toward the bike."},
        {"inside-foot", "Inside foot",
         "Keep the ball of your inside foot on the peg, toes clear of the ground."},
        {"overall", "Overall body position", ""},
    };
}

} // namespace

std::string_view label(CoachingReviewStatus status) {
    switch (status) {
    case CoachingReviewStatus::notAssessed:
        return "Not assessed";
    case CoachingReviewStatus::looksConsistent:
        return "Looks consistent";
    case CoachingReviewStatus::practiceCueApplies:
        return "Practice cue applies";
    case CoachingReviewStatus::cannotAssess:
        return "Cannot assess from this photo";
    }
    return {};
}

std::string_view rawValue(CoachingReviewStatus status) {
    switch (status) {
    case CoachingReviewStatus::notAssessed:
        return "notAssessed";
    case CoachingReviewStatus::looksConsistent:
        return "looksConsistent";
    case CoachingReviewStatus::practiceCueApplies:
        return "practiceCueApplies";
    case CoachingReviewStatus::cannotAssess:
        return "cannotAssess";
    }
    return {};
}

std::optional<CoachingReviewStatus> coachingReviewStatus(std::string_view text) {
    for (CoachingReviewStatus status : allCoachingReviewStatuses)
        if (rawValue(status) == text)
            return status;
    return std::nullopt;
}

namespace CoachingChecklist {

const std::vector<CoachingTopic>& catalog() {
    static const std::vector<CoachingTopic> topics = makeTopics();
    return topics;
}

std::string_view catalogVersion() {
    return version;
}

std::string subjectID(const ReviewPair& pair) {
    if (pair.hasReference() || pair.frameIDs.empty())
        return pair.id;
    return pair.frameIDs.front();
}

std::vector<CoachingChecklistItem> rows(const std::optional<CoachingChecklistReview>& review) {
    std::vector<CoachingChecklistItem> items;
    items.reserve(catalog().size());
    for (const CoachingTopic& topic : catalog()) {
        CoachingReviewStatus status = CoachingReviewStatus::notAssessed;
        if (review) {
            auto it = review->statuses.find(topic.id);
            if (it != review->statuses.end())
                status = it->second;
        }
        items.push_back({topic.id, topic, status});
    }
    return items;
}

} // namespace CoachingChecklist

} // namespace dravik
