// SPDX-License-Identifier: Apache-2.0
#include "arrangement/arrange_session.h"
#include "arrangement/arrangement_plan.h"
#include "arrangement/companion_migration.h"
#include "arrangement/file_set_commit.h"
#include "arrangement/review_migration.h"
#include "dravik/error.h"
#include "dravik/session_review.h"
#include "dravik/store.h"
#include "hash/sha256.h"
#include "store/file_lock.h"
#include "store/review_make.h"

#include "json/json_reader.h"

namespace dravik {

namespace arrangement {

namespace {

namespace fs = std::filesystem;

struct Prepared {
    ArrangementEffect effect;
    std::vector<FileWrite> writes; // in the order they are put in place
};

// Everything an arrangement would write, read and checked in memory.
Prepared prepare(const SessionArrangement& arrangement, const fs::path& manifest,
                 const fs::path& results) {
    const std::string manifestLabel = json::quoted(json::fileLabel(manifest));
    const SessionManifest session = SessionManifest::load(manifest);
    const SessionReview review = SessionReview::open(manifest, results);
    const ArrangementPlan plan = arrangement::plan(session, arrangement, manifestLabel);

    Prepared prepared;
    prepared.effect.review = review.file;
    for (const PairInput& pair : session.pairs)
        if (!plan.keptPairs.contains(pair.id))
            prepared.effect.photoCoaching += pair.photoCoaching.size();
    const std::string manifestBytes = plan.manifest.encode();
    if (!plan.reKeysFrames) {
        // Frames keep their ids: results, review and companions hold as they are; names,
        // titles and directions reach the review through ReviewStore::adopt.
        if (plan.manifest != session)
            prepared.writes.push_back({manifest, manifestBytes});
        return prepared;
    }

    const ResultsFile arrangedResults = reKeyResults(ResultsFile::load(results), plan);
    const std::string resultsBytes = arrangedResults.encode();
    const ReviewDocument arranged = makeReview(
        plan.manifest, arrangedResults, sha256Text(resultsBytes.data(), resultsBytes.size()),
        manifestLabel, json::quoted(json::fileLabel(results)));
    prepared.effect.reKeysFrames = true;
    prepared.effect.review = manifest.parent_path() / ReviewStore::reviewFileName(arranged);
    if (review.saved) {
        std::error_code error;
        if (fs::exists(prepared.effect.review, error))
            throw DravikError(json::quoted(json::fileLabel(prepared.effect.review)) +
                              " already holds a review of the session arranged this way; move "
                              "it out of the session’s folder to arrange the session again.");
        ArrangementEffect& effect = prepared.effect;
        prepared.writes.push_back({effect.review, ReviewStore::encode(migrateReview(
                                                      review.document, arranged, plan, effect))});
        effect.keptReview = review.file;
    }
    prepared.writes.push_back({results, resultsBytes});
    for (FileWrite& write : migrateCompanions(manifest.parent_path(), review.document.frames(),
                                              arranged.frames(), plan, prepared.effect))
        prepared.writes.push_back(std::move(write));
    // In this order: the review under its new name, which nothing reads before the results
    // change, then what the manifest names, and the manifest last.
    prepared.writes.push_back({manifest, manifestBytes});
    return prepared;
}

} // namespace

ArrangementEffect apply(const SessionArrangement& arrangement, const fs::path& manifest,
                        const fs::path& results,
                        const std::function<void(std::size_t)>& beforeRename) {
    const FileLock lock(manifest); // one arrangement of a session at a time
    Prepared prepared = prepare(arrangement, manifest, results);
    commitFiles(prepared.writes, beforeRename);
    return prepared.effect;
}

} // namespace arrangement

ArrangementEffect SessionArrangement::preview(const std::filesystem::path& manifest,
                                              const std::filesystem::path& results) const {
    return arrangement::prepare(*this, manifest, results).effect;
}

ArrangementEffect SessionArrangement::apply(const std::filesystem::path& manifest,
                                            const std::filesystem::path& results) const {
    return arrangement::apply(*this, manifest, results, {});
}

} // namespace dravik
