// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/lean.h"
#include "dravik/lean_report.h"
#include "dravik/pair_report.h"
#include "dravik/review.h"
#include "state/session_state.h"

#include <cstddef>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tessary {

// A session as a coaching report reads it: the saved review and the files beside it, read as the
// window reads them.
struct ReportSession {
    std::filesystem::path manifest;
    std::filesystem::path results;
    std::string title; // the manifest's
    std::shared_ptr<const dravik::ReviewDocument> document;
    CompanionFiles companions;
    std::map<std::string, dravik::LeanAnnotation> proposals;

    // The session with its saved review; refused when no review is saved beside the manifest,
    // for a report always describes a saved revision.
    static ReportSession read(const std::filesystem::path& manifest,
                              const std::filesystem::path& results);
};

// One page: a pair compared with its reference rider, or one photo as Single mode shows it.
struct ReportSubject {
    std::string pairID;
    std::optional<std::string> frameID; // the photo; none for the pair compared
    bool operator==(const ReportSubject&) const = default;
};

// The pages for a pair or a photo named, else one per pair of the document: a pair without a
// reference rider is its photo's page. An unknown id is refused with a sentence.
std::vector<ReportSubject> reportSubjects(const dravik::ReviewDocument& document,
                                          const std::optional<std::string>& pairID,
                                          const std::optional<std::string>& frameID);

// Everything one page shows, derived as the window derives its panels.
struct ReportPage {
    enum class Feedback { pair, singlePhoto, none };

    ReportSubject subject;
    std::string title;                 // the pair's
    std::vector<std::string> frameIDs; // the photos shown, the rider's first
    bool comparing = false;            // both photos, with the lean comparison
    Feedback feedback = Feedback::none;
    std::optional<dravik::PairReport> report; // with the pair feedback
    dravik::LeanReport leanReport;
    std::optional<dravik::CoachingChecklistReview> checklist; // the saved findings shown
    bool checklistConflict = false;
    std::optional<std::string> checklistError;
    std::optional<dravik::SinglePhotoCoaching> singlePhotoCoaching;
    std::optional<std::string> singlePhotoCoachingError;
    std::map<std::string, dravik::PixelRect> framing; // of the photos shown that have a region
};

ReportPage reportPage(const ReportSession& session, const ReportSubject& subject);

// Writes the report of `subjects` to `output`, whole or not at all, and gives its page count;
// fails with a DravikError. The window's model calls it without knowing how a report is drawn.
using CoachingReportWriter = std::function<std::size_t(
    const ReportSession&, const std::vector<ReportSubject>&, const std::filesystem::path&)>;

} // namespace tessary
