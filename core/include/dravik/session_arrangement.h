// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/manifest.h"
#include "dravik/pairs.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace dravik {

// One photo of a session, named by the frame that shows it in the session as it is on disk.
struct ArrangedPhoto {
    std::string frameID; // "pairID/riderID" of the manifest on disk
    std::string file;    // as the manifest gives it; never changed by arranging
    std::string riderName;
    bool operator==(const ArrangedPhoto&) const = default;
};

// A rider photo, compared with a reference rider photo when there is one.
struct ArrangedPair {
    std::string title;
    std::string riderFrameID;
    std::optional<std::string> referenceFrameID;
    std::optional<CornerDirection> cornerDirection; // the turn seen in the photos; none: not said
    bool operator==(const ArrangedPair&) const = default;
};

// What arranging a session does to what it holds, told before (preview) and after (apply).
struct ArrangementEffect {
    // Photos changed pairs or roles: their frames get new ids, the results file is re-keyed and
    // the review is carried over into a new file (the review's identity is the results' hash).
    bool reKeysFrames = false;
    std::filesystem::path review; // the arranged session's review file (it may not exist yet)
    std::optional<std::filesystem::path> keptReview; // the review before, left as it was

    // What was said about pairs that no longer exist (their rider or reference rider changed),
    // and is dropped:
    std::size_t pairContexts = 0;     // the reviewer's pair statements
    std::size_t leanPairContexts = 0; // the reviewer's lean checks
    std::size_t photoCoaching = 0;    // coaching notes of the manifest
    std::size_t singlePhotoNotes = 0; // notes of "single-photo-coaching.json"
    std::size_t checklists = 0;       // subjects of "coaching-checklist.json"

    std::size_t dropped() const {
        return pairContexts + leanPairContexts + photoCoaching + singlePhotoNotes + checklists;
    }
    bool operator==(const ArrangementEffect&) const = default;
};

// Who is in which photo and which photos are compared: the session's manifest as a reviewer
// edits it. Every photo of the session belongs to exactly one pair, as its rider or its
// reference rider.
struct SessionArrangement {
    std::string title;
    std::vector<ArrangedPhoto> photos; // in session order
    std::vector<ArrangedPair> pairs;   // in the order the arranged session lists them

    // The session as its manifest arranges it now.
    static SessionArrangement of(const SessionManifest& manifest);

    ArrangedPhoto* photo(std::string_view frameID);
    const ArrangedPhoto* photo(std::string_view frameID) const;
    // Makes `referenceFrameID` the reference rider of `riderFrameID`'s pair, taking both out of
    // the pairs they were in: a pair that loses its rider keeps its reference rider as its rider,
    // and a reference rider that `riderFrameID` had gets a pair of its own after it.
    void pairUp(const std::string& riderFrameID, const std::string& referenceFrameID);
    // The reference rider of `riderFrameID`'s pair gets a pair of its own, right after it.
    void separate(const std::string& riderFrameID);

    // What apply() would do and drop, without writing anything; refuses what apply() would.
    ArrangementEffect preview(const std::filesystem::path& manifest,
                              const std::filesystem::path& results) const;
    // Rewrites the manifest, re-keys the results, carries the saved review and the companion
    // files over to the photos' new frames, all or nothing: on any failure every file is as it
    // was. The review before stays beside the new one as a backup.
    ArrangementEffect apply(const std::filesystem::path& manifest,
                            const std::filesystem::path& results) const;
};

} // namespace dravik
