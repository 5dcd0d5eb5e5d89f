// SPDX-License-Identifier: Apache-2.0
#include "arrangement/companion_migration.h"

#include "dravik/coaching.h"
#include "dravik/error.h"
#include "dravik/framing.h"
#include "dravik/lean_analysis.h"
#include "dravik/pairs.h"
#include "dravik/session_files.h"

#include <optional>

namespace dravik::arrangement {

namespace fs = std::filesystem;

namespace {

// The file's records as `read` gives them, or none when there is no such file or it does not
// match the session: then arranging leaves it alone.
template <class Read> auto readIfFitting(const fs::path& file, Read read) {
    using Records = decltype(read(file));
    std::error_code error;
    if (!fs::exists(file, error))
        return std::optional<Records>();
    try {
        return std::optional<Records>(read(file));
    } catch (const DravikError&) {
        return std::optional<Records>();
    }
}

std::optional<FileWrite> leanProposals(const fs::path& file, const ArrangementPlan& plan) {
    auto proposals = readIfFitting(file, loadLeanProposals);
    if (!proposals)
        return std::nullopt;
    bool moved = false;
    for (LeanAnnotation& proposal : *proposals)
        if (auto id = plan.frameIDs.find(proposal.frameID);
            id != plan.frameIDs.end() && id->second != proposal.frameID) {
            proposal.frameID = id->second;
            moved = true;
        }
    if (!moved)
        return std::nullopt;
    return FileWrite{file, encodeLeanProposals(*proposals)};
}

std::optional<FileWrite> photoFraming(const fs::path& file, const std::vector<ReviewFrame>& before,
                                      const std::vector<ReviewFrame>& after,
                                      const ArrangementPlan& plan) {
    auto bounds =
        readIfFitting(file, [&](const fs::path& f) { return PhotoFramingRegion::load(f, before); });
    if (!bounds)
        return std::nullopt;
    std::map<std::string, PixelRect> arranged;
    for (const auto& [frameID, rect] : *bounds)
        arranged.emplace(plan.frameIDs.at(frameID), rect);
    if (arranged == *bounds)
        return std::nullopt;
    std::vector<PhotoFramingRegion> regions;
    for (const ReviewFrame& frame : after)
        if (auto rect = arranged.find(frame.id); rect != arranged.end())
            regions.push_back({frame.id, frame.sourceHash, frame.panel, rect->second});
    return FileWrite{file, PhotoFramingRegion::encode(regions)};
}

std::optional<FileWrite> singlePhotoNotes(const fs::path& file,
                                          const std::vector<ReviewFrame>& before,
                                          const std::vector<ReviewFrame>& after,
                                          const ArrangementPlan& plan, std::size_t& dropped) {
    auto notes = readIfFitting(
        file, [&](const fs::path& f) { return SinglePhotoCoaching::load(f, before); });
    if (!notes)
        return std::nullopt;
    // Notes belong to a photo on its own; they hold while its pair is kept, under the same id.
    std::vector<SinglePhotoCoaching> kept;
    for (const ReviewFrame& frame : after)
        if (auto note = notes->find(frame.id);
            note != notes->end() && plan.keptPairs.contains(frame.pairID))
            kept.push_back(note->second);
    if (kept.size() == notes->size())
        return std::nullopt;
    dropped += notes->size() - kept.size();
    return FileWrite{file, SinglePhotoCoaching::encode(kept)};
}

std::optional<FileWrite> checklists(const fs::path& file, const std::vector<ReviewFrame>& before,
                                    const std::vector<ReviewFrame>& after,
                                    const ArrangementPlan& plan, std::size_t& dropped) {
    auto reviews =
        readIfFitting(file, [&](const fs::path& f) { return CoachingChecklist::load(f, before); });
    if (!reviews)
        return std::nullopt;
    // Findings are about a pair (or a photo on its own) as a whole: a kept pair keeps its
    // subject id, any other pair is someone else's comparison.
    std::vector<CoachingChecklistReview> kept;
    for (const ReviewPair& pair : PairReview::resolve(after))
        if (auto review = reviews->find(CoachingChecklist::subjectID(pair));
            review != reviews->end() && plan.keptPairs.contains(pair.id))
            kept.push_back(review->second);
    if (kept.size() == reviews->size())
        return std::nullopt;
    dropped += reviews->size() - kept.size();
    return FileWrite{file, CoachingChecklist::encode(kept, after)};
}

} // namespace

std::vector<FileWrite> migrateCompanions(const fs::path& folder,
                                         const std::vector<ReviewFrame>& before,
                                         const std::vector<ReviewFrame>& after,
                                         const ArrangementPlan& plan, ArrangementEffect& effect) {
    std::vector<FileWrite> writes;
    for (auto write : {leanProposals(folder / SessionFiles::leanProposals, plan),
                       photoFraming(folder / SessionFiles::photoFraming, before, after, plan),
                       singlePhotoNotes(folder / SessionFiles::singlePhotoCoaching, before, after,
                                        plan, effect.singlePhotoNotes),
                       checklists(folder / SessionFiles::coachingChecklist, before, after, plan,
                                  effect.checklists)})
        if (write)
            writes.push_back(std::move(*write));
    return writes;
}

} // namespace dravik::arrangement
