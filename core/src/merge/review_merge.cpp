// SPDX-License-Identifier: Apache-2.0
#include "dravik/review_merge.h"

#include "document/review_parts.h"
#include "dravik/error.h"
#include "dravik/store.h"
#include "merge/merge_labels.h"

#include "json/json_reader.h"
#include <limits>
#include <set>

namespace dravik {

namespace {

enum class Outcome { keepTheirs, takeMine, conflict };

template <class Value> Outcome decide(const Value& base, const Value& mine, const Value& theirs) {
    if (mine == theirs || mine == base)
        return Outcome::keepTheirs;
    if (theirs == base)
        return Outcome::takeMine;
    return Outcome::conflict;
}

template <class Value>
std::optional<Value> entry(const std::map<std::string, Value>& values, const std::string& key) {
    auto it = values.find(key);
    return it == values.end() ? std::nullopt : std::optional<Value>(it->second);
}

template <class Value>
void store(std::map<std::string, Value>& values, const std::string& key,
           const std::optional<Value>& value) {
    if (value)
        values.insert_or_assign(key, *value);
    else
        values.erase(key);
}

template <class Value, class... Maps> std::set<std::string> keysOf(const Maps&... maps) {
    std::set<std::string> keys;
    (..., [&](const std::map<std::string, Value>& map) {
        for (const auto& item : map)
            keys.insert(item.first);
    }(maps));
    return keys;
}

void requireSameSession(const ReviewDocument& document, const ReviewDocument& base,
                        const std::string& whose) {
    try {
        ReviewStore::validate(document, base);
    } catch (const DravikError& error) {
        throw DravikError(whose + " cannot be merged: " + json::clause(error.what()) + ".");
    }
}

std::string pairTitle(const ReviewDocument& document, const std::string& pairID) {
    for (const ReviewFrame& frame : document.frames())
        if (frame.pairID == pairID)
            return frame.name.empty() ? pairID : frame.name;
    return pairID;
}

} // namespace

ReviewMerge::ReviewMerge(ReviewDocument base, ReviewDocument mine, ReviewDocument theirs)
    : mine_(std::move(mine)), theirs_(std::move(theirs)) {
    requireSameSession(mine_, base, "This window’s review");
    requireSameSession(theirs_, base, "The review on disk");

    auto compare = [&](MergeItem item, const std::string& key, const std::string& joint,
                       const auto& b, const auto& m, const auto& t, std::string place,
                       std::string what) {
        switch (decide(b, m, t)) {
        case Outcome::takeMine:
            fromMine_.push_back({item, key, joint});
            return;
        case Outcome::keepTheirs:
            fromTheirs_ += !(t == b) && !(m == t);
            return;
        case Outcome::conflict:
            break;
        }
        const bool aboutPair = item == MergeItem::pairContext || item == MergeItem::leanPairContext;
        conflicts_.push_back({item, aboutPair ? std::string() : key,
                              aboutPair ? key : theirs_.frame(key)->pairID, joint, std::move(place),
                              std::move(what), merge::describe(m), merge::describe(t),
                              MergeChoice::theirs});
    };

    // Validation put the same frames in the same order on all three sides.
    for (std::size_t i = 0; i < base.frames().size(); ++i) {
        const ReviewFrame& b = base.frames()[i];
        const ReviewFrame& m = mine_.frames()[i];
        const ReviewFrame& t = theirs_.frames()[i];
        const std::string place = t.name + " · " + t.riderDisplayName;
        for (const std::string& joint : keysOf<JointEdit>(b.edits, m.edits, t.edits))
            compare(MergeItem::joint, t.id, joint, entry(b.edits, joint), entry(m.edits, joint),
                    entry(t.edits, joint), place, joint);
        compare(MergeItem::retries, t.id, "", b.retries, m.retries, t.retries, place,
                "Accepted re-detections");
    }
    for (const std::string& id : keysOf<LeanAnnotation>(
             base.leanAnnotations(), mine_.leanAnnotations(), theirs_.leanAnnotations())) {
        const ReviewFrame* t = theirs_.frame(id);
        compare(MergeItem::leanLines, id, "", entry(base.leanAnnotations(), id),
                entry(mine_.leanAnnotations(), id), entry(theirs_.leanAnnotations(), id),
                t->name + " · " + t->riderDisplayName, "Lean lines");
    }
    for (const std::string& id :
         keysOf<PairContext>(base.pairContexts(), mine_.pairContexts(), theirs_.pairContexts()))
        compare(MergeItem::pairContext, id, "", entry(base.pairContexts(), id),
                entry(mine_.pairContexts(), id), entry(theirs_.pairContexts(), id),
                pairTitle(theirs_, id), "Pair statements");
    for (const std::string& id : keysOf<LeanPairContext>(
             base.leanPairContexts(), mine_.leanPairContexts(), theirs_.leanPairContexts()))
        compare(MergeItem::leanPairContext, id, "", entry(base.leanPairContexts(), id),
                entry(mine_.leanPairContexts(), id), entry(theirs_.leanPairContexts(), id),
                pairTitle(theirs_, id), "Lean checks");
}

ReviewDocument ReviewMerge::merged() const {
    if (theirs_.revision() == std::numeric_limits<std::int64_t>::max())
        throw DravikError("The review has reached its highest revision number.");
    ReviewParts parts = ReviewParts::of(theirs_);
    auto takeMine = [&](MergeItem item, const std::string& key, const std::string& joint) {
        switch (item) {
        case MergeItem::joint: {
            const auto& edits = mine_.frame(key)->edits;
            store(parts.frames[*theirs_.frameIndex(key)].edits, joint, entry(edits, joint));
            break;
        }
        case MergeItem::retries:
            parts.frames[*theirs_.frameIndex(key)].retries = mine_.frame(key)->retries;
            break;
        case MergeItem::leanLines:
            store(parts.leanAnnotations, key, entry(mine_.leanAnnotations(), key));
            break;
        case MergeItem::pairContext:
            store(parts.pairContexts, key, entry(mine_.pairContexts(), key));
            break;
        case MergeItem::leanPairContext:
            store(parts.leanPairContexts, key, entry(mine_.leanPairContexts(), key));
            break;
        }
    };
    for (const Entry& e : fromMine_)
        takeMine(e.item, e.key, e.joint);
    for (const MergeConflict& conflict : conflicts_)
        if (conflict.choice == MergeChoice::mine)
            takeMine(conflict.item, conflict.frameID.empty() ? conflict.pairID : conflict.frameID,
                     conflict.joint);
    return parts.assemble(theirs_.revision() + 1);
}

} // namespace dravik
