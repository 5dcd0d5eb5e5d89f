// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/review.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace dravik {

// What one entry of a review document is: the unit a merge compares and takes whole.
enum class MergeItem {
    joint,           // one joint's edit of one frame
    retries,         // the accepted re-detections of one frame
    leanLines,       // the lean annotation of one frame
    pairContext,     // the reviewer's statements about one pair
    leanPairContext, // the lean checks of one pair
};

enum class MergeChoice { theirs, mine };

// An entry changed on both sides, to different values.
struct MergeConflict {
    MergeItem item = MergeItem::joint;
    std::string frameID; // joint, retries and lean lines
    std::string pairID;  // always: the pair of the frame, or the pair itself
    std::string joint;   // joint only
    // Texts for a dialog: where ("Turn 3 · Alex", or the pair's title), what ("left_elbow",
    // "Lean lines", ...), and each side's value ("Corrected at (412.5, 288.0)", "Unreviewed").
    std::string place;
    std::string what;
    std::string mine;
    std::string theirs;
    MergeChoice choice = MergeChoice::theirs;
    bool operator==(const MergeConflict&) const = default;
};

// A three-way merge of review documents of one session: `base` is the revision this window last
// read or saved, `mine` what it holds now, `theirs` what the file holds now. An entry changed on
// one side only is taken from that side; the same change on both sides is taken once; different
// changes are conflicts, each settled by its `choice` (theirs unless changed).
class ReviewMerge {
  public:
    // Refuses, with one sentence, documents that are not reviews of the same session (identity,
    // frames) as `base`.
    ReviewMerge(ReviewDocument base, ReviewDocument mine, ReviewDocument theirs);

    std::vector<MergeConflict>& conflicts() { return conflicts_; }
    const std::vector<MergeConflict>& conflicts() const { return conflicts_; }
    // Entries changed on one side only, for a summary ("3 of your changes kept").
    std::size_t changesFromMine() const { return fromMine_.size(); }
    std::size_t changesFromTheirs() const { return fromTheirs_; }

    // `theirs` with mine's one-sided changes and each conflict's chosen side, at the revision
    // one above theirs; save it with expectedRevision() so that a third writer is still refused.
    ReviewDocument merged() const;
    std::int64_t expectedRevision() const { return theirs_.revision(); }

  private:
    struct Entry {
        MergeItem item;
        std::string key; // frame id or pair id
        std::string joint;
    };

    ReviewDocument mine_;
    ReviewDocument theirs_;
    std::vector<Entry> fromMine_;
    std::size_t fromTheirs_ = 0;
    std::vector<MergeConflict> conflicts_;
};

} // namespace dravik
