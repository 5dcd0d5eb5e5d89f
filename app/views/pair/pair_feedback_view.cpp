// SPDX-License-Identifier: Apache-2.0
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
#include "pair_feedback_texts.h"
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
    QLabel* title = headingLabel(qText(texts::provisionalCoaching), content_);
    title->setWordWrap(false);
    statusRow->addWidget(title);
    status_ = secondaryLabel({}, content_);
    status_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    statusRow->addWidget(status_, 1);
    layout->addLayout(statusRow);
    layout->addWidget(secondaryLabel(qText(texts::assumptionLine()), content_));
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
        status_->setText(qText(texts::awaitingEdit));
        status_->setStyleSheet(u"color: rgb(230, 126, 0)"_s);
        return;
    }
    status_->setStyleSheet({});
    status_->setText(qText(texts::revisionStatus(
        document->revision(), model_.isUnsaved() ? texts::unsaved : texts::savedLocally)));
}

void PairFeedbackView::refresh() {
    const dravik::PairReport* report = model_.report();
    content_->setVisible(report != nullptr);
    clearLayout(bullets_);
    if (!report)
        return;
    refreshStatus();
    leanEvidence_->setVisible(model_.leanMode());

    for (const dravik::CoachingBullet& bullet : report->coaching) {
        auto* entry = new TextButton(qText(texts::bulletHeadline(bullet)),
                                     QString::fromStdString(bullet.detail));
        connect(entry, &TextButton::clicked, this,
                [this, feature = bullet.feature] { highlight(model_, feature); });
        bullets_->addWidget(entry);
    }
    if (const auto status = texts::coachingStatus(*report))
        bullets_->addWidget(textLabel(qText(*status)));

    methodNote_->setText(qText(texts::methodNote(*report)));
    knees_->setVisible(texts::asksForKneePlacement(*report));
}

} // namespace tessary
