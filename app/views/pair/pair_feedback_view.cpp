#include "pair/pair_feedback_view.h"

#include "coaching/coaching_checklist_view.h"
#include "common/text_button.h"
#include "common/text_format.h"
#include "common/widgets.h"
#include "lean/lean_evidence_view.h"
#include "pair/angle_measurements_view.h"
#include "pair/comparison_details_view.h"
#include "pair/highlight.h"
#include "pair/knee_placement_view.h"
#include "reviewer_model.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace tessary {

using namespace Qt::StringLiterals;

PairFeedbackView::PairFeedbackView(ReviewerModel& model, QWidget* parent)
    : QWidget(parent), model_(model) {
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    content_ = new QWidget(this);
    outer->addWidget(content_);
    auto* layout = new QVBoxLayout(content_);

    leanEvidence_ = new QWidget(content_);
    auto* leanLayout = new QVBoxLayout(leanEvidence_);
    leanLayout->setContentsMargins(0, 0, 0, 0);
    auto* evidence = new LeanEvidenceView(model_, leanEvidence_);
    evidence->layout()->setContentsMargins(0, 0, 0, 0); // aligned with the coaching below
    leanLayout->addWidget(evidence);
    leanLayout->addWidget(divider(leanEvidence_));
    layout->addWidget(leanEvidence_);

    auto* statusRow = new QHBoxLayout;
    QLabel* title = headingLabel(u"Provisional coaching"_s, content_);
    title->setWordWrap(false);
    statusRow->addWidget(title);
    status_ = secondaryLabel({}, content_);
    status_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    statusRow->addWidget(status_, 1);
    layout->addLayout(statusRow);
    layout->addWidget(secondaryLabel(u"For "_s + QString::fromUtf8(RiderLabels::rider) + u" · "_s +
                                         QString::fromUtf8(RiderLabels::reference) +
                                         u" assumed correct"_s,
                                     content_));
    layout->addWidget(new CoachingChecklistView(model_, content_));
    bullets_ = new QVBoxLayout;
    layout->addLayout(bullets_);
    methodNote_ = secondaryLabel({}, content_);
    layout->addWidget(methodNote_);
    layout->addWidget(new ComparisonDetailsView(model_, content_));
    knees_ = new KneePlacementView(model_, content_);
    layout->addWidget(knees_);
    layout->addWidget(new AngleMeasurementsView(model_, content_));
    layout->addStretch();

    for (auto signal : {&ReviewerModel::snapshotChanged, &ReviewerModel::navigationChanged,
                        &ReviewerModel::viewOptionsChanged})
        connect(&model_, signal, this, &PairFeedbackView::refresh);
    for (auto signal : {&ReviewerModel::interactionChanged, &ReviewerModel::savedRevisionChanged})
        connect(&model_, signal, this, &PairFeedbackView::refreshStatus);
    refresh();
}

void PairFeedbackView::refreshStatus() {
    const dravik::ReviewDocument* document = model_.document();
    if (!model_.report() || !document)
        return;
    if (model_.hasPreview()) {
        status_->setText(u"Awaiting completion of edit"_s);
        status_->setStyleSheet(u"color: rgb(230, 126, 0)"_s);
        return;
    }
    status_->setStyleSheet({});
    status_->setText(u"Revision "_s + QString::number(document->revision()) + u" · "_s +
                     (model_.isUnsaved() ? u"Unsaved"_s : u"Saved locally"_s));
}

void PairFeedbackView::refresh() {
    const dravik::PairReport* report = model_.report();
    content_->setVisible(report != nullptr);
    clearLayout(bullets_);
    if (!report)
        return;
    refreshStatus();
    leanEvidence_->setVisible(model_.leanMode());

    const bool directionKnown = report->effectiveCornerDirection != dravik::allCornerDirections[0];
    for (const dravik::CoachingBullet& bullet : report->coaching) {
        auto* entry = new TextButton(u"• "_s + QString::fromStdString(bullet.headline),
                                     QString::fromStdString(bullet.detail));
        connect(entry, &TextButton::clicked, this,
                [this, feature = bullet.feature] { highlight(model_, feature); });
        bullets_->addWidget(entry);
    }
    if (report->coaching.empty())
        bullets_->addWidget(textLabel(
            directionKnown
                ? u"No actionable difference from the available reviews. Elbows need comparable, "
                  u"reviewed angles; add a knee placement review below for knee guidance."_s
                : u"This pair has no turn assessment yet. Set a direction under Comparison "
                  u"details, or add a photo review."_s));

    methodNote_->setText(
        report->hasPhotoCoaching
            ? u"Photo-based coaching draft · whole-body comparison. These notes come from "
              u"reviewing this pair, not from the skeleton or an angle threshold."_s
            : u"Draft guidance · elbow differences of 10° or more get attention; this is an "
              u"adjustable heuristic, not a validated target. Knee guidance uses visual "
              u"placement only."_s);
    knees_->setVisible(!(directionKnown && report->hasPhotoCoaching));
}

} // namespace tessary
