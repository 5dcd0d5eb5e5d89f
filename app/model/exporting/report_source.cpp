// SPDX-License-Identifier: Apache-2.0
#include "exporting/report_source.h"

#include "dravik/error.h"
#include "dravik/manifest.h"
#include "dravik/pairs.h"
#include "editing/snapshot_building.h"
#include "opening/session_reading.h"
#include "state/companion_lookup.h"

#include <algorithm>

namespace tessary {

namespace {

const dravik::ReviewPair* pairHolding(const std::vector<dravik::ReviewPair>& pairs,
                                      const std::string& frameID) {
    for (const dravik::ReviewPair& pair : pairs)
        if (std::find(pair.frameIDs.begin(), pair.frameIDs.end(), frameID) != pair.frameIDs.end())
            return &pair;
    return nullptr;
}

ReportSubject subjectOf(const dravik::ReviewPair& pair) {
    if (pair.hasReference())
        return {pair.id, std::nullopt};
    return {pair.id, pair.frameIDs.front()};
}

} // namespace

ReportSession ReportSession::read(const std::filesystem::path& manifest,
                                  const std::filesystem::path& results) {
    SessionRead read = readSession(manifest, results);
    if (!read.reopened)
        throw dravik::DravikError("No review of this session is saved beside \u201c" +
                                  manifest.filename().string() +
                                  "\u201d, so there is no reviewed evidence to report.");
    return {manifest,
            results,
            read.title,
            std::move(read.document),
            std::move(read.companions),
            std::move(read.proposals)};
}

std::vector<ReportSubject> reportSubjects(const dravik::ReviewDocument& document,
                                          const std::optional<std::string>& pairID,
                                          const std::optional<std::string>& frameID) {
    const std::vector<dravik::ReviewPair> pairs = dravik::PairReview::resolve(document.frames());
    if (frameID) {
        const dravik::ReviewPair* pair = pairHolding(pairs, *frameID);
        if (!pair)
            throw dravik::DravikError("The session has no photo \u201c" + *frameID + "\u201d.");
        return {{pair->id, *frameID}};
    }
    std::vector<ReportSubject> subjects;
    for (const dravik::ReviewPair& pair : pairs)
        if (!pairID || pair.id == *pairID)
            subjects.push_back(subjectOf(pair));
    if (pairID && subjects.empty())
        throw dravik::DravikError("The session has no pair \u201c" + *pairID + "\u201d.");
    return subjects;
}

ReportPage reportPage(const ReportSession& session, const ReportSubject& subject) {
    const Snapshot snapshot = buildSnapshot(session.document, subject.pairID, session.proposals);
    const auto pair =
        std::find_if(snapshot.pairs.begin(), snapshot.pairs.end(),
                     [&](const auto& candidate) { return candidate.id == subject.pairID; });
    if (pair == snapshot.pairs.end())
        throw dravik::DravikError("The session has no pair \u201c" + subject.pairID + "\u201d.");

    ReportPage page;
    page.subject = subject;
    page.leanReport = snapshot.leanReport;
    page.comparing = !subject.frameID && pair->hasReference();
    page.frameIDs = page.comparing ? pair->frameIDs
                                   : std::vector{subject.frameID.value_or(pair->frameIDs.front())};
    const dravik::ReviewFrame* first = session.document->frame(page.frameIDs.front());
    if (!first)
        throw dravik::DravikError("The session has no photo \u201c" + page.frameIDs.front() +
                                  "\u201d.");
    page.title = first->name;
    for (const std::string& id : page.frameIDs)
        if (auto region = session.companions.framingRegions.find(id);
            region != session.companions.framingRegions.end())
            page.framing.emplace(id, region->second);

    // The feedback under a photo in Single mode belongs to the rider's own photo only.
    if (!page.comparing && first->role != "subject")
        return page;
    page.report = snapshot.report;
    const dravik::PairReport* report = page.report ? &*page.report : nullptr;
    page.feedback = report ? ReportPage::Feedback::pair : ReportPage::Feedback::singlePhoto;
    const std::string checklistSubject = checklistSubjectFor(*pair, first->id);
    page.checklistConflict = checklistConflicts(session.companions, checklistSubject, report);
    if (const auto* shown = checklistShown(session.companions, checklistSubject, report))
        page.checklist = *shown;
    page.checklistError = session.companions.coachingChecklistError;
    if (page.feedback == ReportPage::Feedback::singlePhoto) {
        if (const auto* notes = singlePhotoCoachingFor(session.companions, *first, *pair))
            page.singlePhotoCoaching = *notes;
        page.singlePhotoCoachingError = session.companions.singlePhotoCoachingError;
    }
    return page;
}

} // namespace tessary
