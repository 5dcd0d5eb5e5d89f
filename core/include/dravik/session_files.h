// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string_view>

namespace dravik {

class ReviewDocument;

// The files a session keeps beside its manifest, besides the photos and the review.
namespace SessionFiles {
inline constexpr std::string_view leanProposals = "lean-proposals.json";
inline constexpr std::string_view photoFraming = "photo-framing.json";
inline constexpr std::string_view singlePhotoCoaching = "single-photo-coaching.json";
inline constexpr std::string_view coachingChecklist = "coaching-checklist.json";
inline constexpr std::string_view companions[] = {leanProposals, photoFraming, singlePhotoCoaching,
                                                  coachingChecklist};

// A name a review document is saved under: "joint-review-" … ".json".
bool isReviewName(std::string_view fileName);

// Refuses, with a sentence naming it, a `target` about to be written that is one of the
// session's own files: its manifest, its results, a review or companion file beside the
// manifest, or a photo of `document`. Links and other spellings of the same file count.
void refuseAsTarget(const std::filesystem::path& target, const std::filesystem::path& manifest,
                    const std::filesystem::path& results, const ReviewDocument& document);
} // namespace SessionFiles

} // namespace dravik
