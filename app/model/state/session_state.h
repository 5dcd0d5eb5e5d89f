// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/coaching.h"
#include "dravik/geometry.h"
#include "dravik/lean.h"
#include "dravik/uuid.h"

#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace tessary {

// The files read beside a session's manifest that never stop it from opening: a file that fails
// leaves its part empty, and coaching and checklist failures say why in their notice.
struct CompanionFiles {
    std::map<std::string, dravik::PixelRect> framingRegions;
    std::map<std::string, dravik::SinglePhotoCoaching> singlePhotoCoaching;
    std::optional<std::string> singlePhotoCoachingError;
    std::map<std::string, dravik::CoachingChecklistReview> coachingChecklists;
    std::optional<std::string> coachingChecklistError;
};

// The open session: where its files are and what was read beside them. Replaced whole when
// another session opens.
struct SessionState {
    dravik::Uuid sessionID;
    std::string title;
    std::optional<std::filesystem::path> manifestURL;
    std::optional<std::filesystem::path> reviewURL;
    CompanionFiles companions;
    std::map<std::string, dravik::LeanAnnotation> leanProposals;
    std::optional<std::filesystem::path> resultsURL; // arranging rewrites it with the manifest
};

} // namespace tessary
