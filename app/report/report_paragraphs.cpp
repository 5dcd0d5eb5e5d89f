// SPDX-License-Identifier: Apache-2.0
#include "report_paragraphs.h"

#include "coaching_texts.h"
#include "lean_evidence_texts.h"
#include "pair_feedback_texts.h"
#include "rider_labels.h"

namespace tessary {

namespace {

using Style = ReportParagraph::Style;

class Paragraphs {
  public:
    void add(Style style, std::string_view text) { all_.push_back({style, std::string(text)}); }
    std::vector<ReportParagraph> take() { return std::move(all_); }

  private:
    std::vector<ReportParagraph> all_;
};

// On paper a checkbox cannot be ticked: its state is written in front of its title.
std::string ticked(bool on, std::string_view title) {
    return (on ? "\u2611 " : "\u2610 ") + std::string(title);
}

void addChecklist(Paragraphs& out, const ReportPage& page) {
    const texts::ChecklistRows rows =
        texts::checklistRows(page.checklist ? &*page.checklist : nullptr);
    out.add(Style::subheading, texts::checklistHeading(rows));
    if (page.checklistConflict)
        out.add(Style::warning, texts::checklistConflict);
    if (page.checklistError)
        out.add(Style::warning, *page.checklistError);
    if (rows.assessed.empty())
        out.add(Style::body, texts::checklistAutomatic);
    // The assessed topics with their practice cues, as the full list in the panel gives them.
    for (const dravik::CoachingChecklistItem& item : rows.assessed) {
        out.add(Style::body, texts::checklistStatusLine(item));
        if (const auto cue = texts::reviewCueLine(item))
            out.add(Style::secondary, *cue);
    }
}

void addPairFeedback(Paragraphs& out, const ReportPage& page) {
    const dravik::PairReport& report = *page.report;
    out.add(Style::heading, texts::provisionalCoaching);
    out.add(Style::secondary, texts::assumptionLine());
    addChecklist(out, page);
    for (const dravik::CoachingBullet& bullet : report.coaching) {
        out.add(Style::subheading, texts::bulletHeadline(bullet));
        out.add(Style::body, bullet.detail);
    }
    if (const auto status = texts::coachingStatus(report))
        out.add(Style::body, *status);
    out.add(Style::secondary, texts::methodNote(report));

    out.add(Style::heading, texts::comparisonDetailsTitle(report));
    out.add(Style::body, texts::comparisonExplanation);
    out.add(Style::body,
            std::string(texts::directionOverrideTitle) + ": " +
                std::string(texts::directionChoices[texts::directionChoice(report)].title));
    if (texts::withholdsPhotoCoaching(report))
        out.add(Style::warning, texts::withheldNotice);
    for (const dravik::FocusPoint& point : report.focusPoints)
        out.add(Style::body, texts::focusPointLine(point));

    if (texts::asksForKneePlacement(report)) {
        out.add(Style::heading, texts::kneeHeading);
        out.add(Style::body, texts::kneeInstruction);
        for (const dravik::PairFeature knee : texts::knees) {
            const auto placement = texts::kneePlacement(report, knee);
            // An empty picker is shown as nothing chosen.
            out.add(Style::body, texts::kneeLabel(report, knee) + ": " +
                                     (placement ? std::string(dravik::label(*placement))
                                                : std::string("\u2014")));
        }
        out.add(Style::secondary, texts::kneeNote);
    }

    out.add(Style::heading, texts::anglesHeading);
    for (const dravik::PairObservation& observation : report.observations) {
        out.add(Style::subheading, dravik::label(observation.feature));
        out.add(Style::body, std::string(texts::viewsTitle) + ": " +
                                 std::string(dravik::label(observation.comparability)));
        out.add(Style::body, texts::differenceLine(observation.difference));
        for (const auto& [side, angle] :
             {std::pair{RiderLabels::rider, &observation.rider},
              std::pair{RiderLabels::reference, &observation.reference}}) {
            out.add(Style::body, texts::sideAngleLine(side, *angle));
            if (const auto gap = texts::sideGapLine(side, *angle))
                out.add(Style::secondary, *gap);
        }
    }
    out.add(Style::secondary, texts::evidenceLine(report));
    out.add(Style::secondary, dravik::PairReport::limitations());
}

void addSinglePhotoFeedback(Paragraphs& out, const ReportPage& page) {
    out.add(Style::heading, texts::provisionalCoaching);
    out.add(Style::secondary, texts::singlePhotoSubtitle);
    addChecklist(out, page);
    if (page.singlePhotoCoachingError)
        out.add(Style::warning, *page.singlePhotoCoachingError);
    if (const auto& notes = page.singlePhotoCoaching) {
        out.add(Style::body, texts::singlePhotoNote);
        for (const std::string& observation : notes->observations)
            out.add(Style::body, texts::observationLine(observation));
        out.add(Style::subheading, texts::assessmentBasisTitle);
        for (const std::string& basis : notes->assessmentBasis)
            out.add(Style::body, basis);
    } else if (!page.singlePhotoCoachingError) {
        out.add(Style::body, texts::noSinglePhotoCoaching);
    }
    out.add(Style::secondary, texts::stillPhotoLimitation);
}

void addLeanEvidence(Paragraphs& out, const ReportPage& page,
                     const dravik::ReviewDocument& document) {
    out.add(Style::heading, texts::leanEvidenceHeading);
    for (const std::string& id : page.frameIDs)
        if (const dravik::ReviewFrame* frame = document.frame(id))
            out.add(Style::body, texts::leanMeasurementLine(*frame, page.leanReport.frame(id)));
    if (page.comparing) {
        const dravik::LeanPairContext* stored = document.leanPairContext(page.subject.pairID);
        const dravik::LeanPairContext context = stored ? *stored : dravik::LeanPairContext();
        out.add(Style::body, texts::leanComparisonLine(page.leanReport));
        if (context.similarSpeed)
            out.add(Style::body, texts::similarSpeedReadout);
        out.add(Style::subheading, texts::comparisonEvidenceHeading);
        for (const texts::LeanCheck& check : texts::leanChecks)
            out.add(Style::body, ticked(context.*check.flag, check.title));
        out.add(Style::body, texts::approvalLine(page.leanReport, context));
        out.add(Style::body, ticked(context.similarSpeed, texts::similarSpeedTitle));
        out.add(Style::secondary, texts::similarSpeedCaption);
    }
    out.add(Style::secondary, dravik::LeanAnalysis::limitations());
}

} // namespace

std::vector<ReportParagraph> feedbackParagraphs(const ReportPage& page,
                                                const dravik::ReviewDocument& document) {
    Paragraphs out;
    if (page.feedback == ReportPage::Feedback::pair && page.report)
        addPairFeedback(out, page);
    else if (page.feedback == ReportPage::Feedback::singlePhoto)
        addSinglePhotoFeedback(out, page);
    addLeanEvidence(out, page, document);
    return out.take();
}

} // namespace tessary
