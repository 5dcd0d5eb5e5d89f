// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/pairs.h"

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace dravik {

struct ReviewFrame;

// One whole-body topic of the checklist. The cue is a practice cue for the rider; it may be empty.
struct CoachingTopic {
    std::string id;
    std::string title;
    std::string cue;
    bool operator==(const CoachingTopic&) const = default;
};

// The first case means the topic has not been assessed yet.
enum class CoachingReviewStatus { notAssessed, looksConsistent, practiceCueApplies, cannotAssess };
inline constexpr CoachingReviewStatus allCoachingReviewStatuses[] = {
    CoachingReviewStatus::notAssessed, CoachingReviewStatus::looksConsistent,
    CoachingReviewStatus::practiceCueApplies, CoachingReviewStatus::cannotAssess};
std::string_view label(CoachingReviewStatus status);    // "Not assessed", ...
std::string_view rawValue(CoachingReviewStatus status); // "notAssessed", ...
std::optional<CoachingReviewStatus> coachingReviewStatus(std::string_view rawValue);

// One row of the checklist panel; its id is the topic's id.
struct CoachingChecklistItem {
    std::string id;
    CoachingTopic topic;
    CoachingReviewStatus status = CoachingReviewStatus::notAssessed;
    bool operator==(const CoachingChecklistItem&) const = default;
};

// The saved checklist findings of one subject. The subject is a pair's id when the pair has a
// reference rider, else the id of the pair's single frame. "Inside" and "outside" topics were
// judged for `cornerDirection`.
struct CoachingChecklistReview {
    std::string subjectID;
    std::string catalogVersion;
    CornerDirection cornerDirection = CornerDirection::unknown;
    std::map<std::string, CoachingReviewStatus>
        statuses; // by topic id; a missing topic is unassessed
    bool operator==(const CoachingChecklistReview&) const = default;
};

namespace CoachingChecklist {
// The whole-body topics, in the order the panel lists them.
const std::vector<CoachingTopic>& catalog();
std::string_view catalogVersion();

// The checklist subject a pair stands for (see CoachingChecklistReview).
std::string subjectID(const ReviewPair& pair);

// Reads "coaching-checklist.json", keyed by subject id. Fails with one sentence naming the file
// when it does not match the session's frames and photos, or this catalogue's version and topics.
std::map<std::string, CoachingChecklistReview> load(const std::filesystem::path& file,
                                                    const std::vector<ReviewFrame>& frames);
std::map<std::string, CoachingChecklistReview>
decode(std::string_view json, const std::string& fileLabel, const std::vector<ReviewFrame>& frames);
// The file for these reviews, each subject's photos taken from `frames`; refuses what load would.
std::string encode(const std::vector<CoachingChecklistReview>& reviews,
                   const std::vector<ReviewFrame>& frames);

// One item per catalogue topic, in catalogue order; every topic unassessed without a review.
std::vector<CoachingChecklistItem> rows(const std::optional<CoachingChecklistReview>& review);
} // namespace CoachingChecklist

// Photo-based coaching notes of a rider's photo that has no reference rider to compare with.
struct SinglePhotoCoaching {
    std::string frameID;
    std::string sourceHash;
    std::vector<std::string> observations;    // at least one, in the order shown
    std::vector<std::string> assessmentBasis; // what the notes were judged from
    bool operator==(const SinglePhotoCoaching&) const = default;

    // Reads "single-photo-coaching.json", keyed by frame id. Fails with one sentence naming the
    // file on an unknown frame, a frame that is not a lone rider photo, a changed photo or a
    // second record for one frame.
    static std::map<std::string, SinglePhotoCoaching> load(const std::filesystem::path& file,
                                                           const std::vector<ReviewFrame>& frames);
    static std::map<std::string, SinglePhotoCoaching>
    decode(std::string_view json, const std::string& fileLabel,
           const std::vector<ReviewFrame>& frames);
    static std::string encode(const std::vector<SinglePhotoCoaching>& records);
};

} // namespace dravik
