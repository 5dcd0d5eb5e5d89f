// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/manifest.h"
#include "dravik/session_arrangement.h"

#include <map>
#include <set>
#include <string>

namespace dravik::arrangement {

// How an arrangement changes a session's manifest and the ids of its frames.
struct ArrangementPlan {
    SessionManifest manifest;                    // the arranged manifest
    std::map<std::string, std::string> frameIDs; // each photo's frame id before → after
    // Pairs whose rider and reference rider are the same photos as before: they keep their ids
    // (the same before and after), and what was said about them still holds.
    std::set<std::string> keptPairs;
    // Some frame changed its id, role or place: the results must be re-keyed.
    bool reKeysFrames = false;
};

// Refuses, with a sentence, an arrangement that does not place every photo of `session` in
// exactly one pair or was made for another version of it.
ArrangementPlan plan(const SessionManifest& session, const SessionArrangement& arrangement,
                     const std::string& manifestLabel);

} // namespace dravik::arrangement
