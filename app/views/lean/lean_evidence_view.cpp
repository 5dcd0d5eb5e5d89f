// SPDX-License-Identifier: Apache-2.0
#include "lean/lean_evidence_view.h"

#include "common/text_format.h"
#include "common/widgets.h"
#include "dravik/lean_report.h"
#include "lean_evidence_texts.h"
#include "reviewer_model.h"
#include "revision_texts.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

namespace tessary {

LeanEvidenceView::LeanEvidenceView(ReviewerModel& model, QWidget* parent)
    : QWidget(parent), model_(model) {
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(headingLabel(qText(texts::leanEvidenceHeading), this));
    status_ = secondaryLabel({}, this);
    layout->addWidget(status_);
    measurements_ = new QVBoxLayout;
    layout->addLayout(measurements_);

    comparison_ = new QWidget(this);
    auto* pairLayout = new QVBoxLayout(comparison_);
    pairLayout->setContentsMargins(0, 0, 0, 0);
    readout_ = textLabel({}, comparison_);
    speedReadout_ = textLabel(qText(texts::similarSpeedReadout), comparison_);
    pairLayout->addWidget(readout_);
    pairLayout->addWidget(speedReadout_);
    pairLayout->addWidget(headingLabel(qText(texts::comparisonEvidenceHeading), comparison_));
    const auto currentContext = [this] {
        const dravik::ReviewDocument* document = model_.document();
        const auto pair = model_.pair();
        const dravik::LeanPairContext* stored =
            document && pair ? document->leanPairContext(pair->id) : nullptr;
        return stored ? *stored : dravik::LeanPairContext();
    };
    for (const texts::LeanCheck& check : texts::leanChecks) {
        auto* box = new QCheckBox(qText(check.title), comparison_);
        pairLayout->addWidget(box);
        checks_.append(box);
        connect(box, &QCheckBox::toggled, this, [this, flag = check.flag, currentContext](bool on) {
            dravik::LeanPairContext context = currentContext();
            context.*flag = on;
            model_.updateLeanContext(context, false);
        });
    }
    approve_ = new QPushButton(qText(texts::approveComparison), comparison_);
    approve_->setCheckable(true);
    pairLayout->addWidget(approve_);
    approval_ = secondaryLabel({}, comparison_);
    pairLayout->addWidget(approval_);
    connect(approve_, &QPushButton::clicked, this, [this, currentContext] {
        model_.updateLeanContext(currentContext(), true);
        refresh(); // the click pressed the button; only the model says it stays so
    });
    similarSpeed_ = new QCheckBox(qText(texts::similarSpeedTitle), comparison_);
    pairLayout->addWidget(similarSpeed_);
    connect(similarSpeed_, &QCheckBox::toggled, this, [this, currentContext](bool on) {
        dravik::LeanPairContext context = currentContext();
        context.similarSpeed = on;
        model_.updateLeanContext(context, false);
    });
    pairLayout->addWidget(secondaryLabel(qText(texts::similarSpeedCaption), comparison_));
    layout->addWidget(comparison_);
    layout->addWidget(secondaryLabel(qText(dravik::LeanAnalysis::limitations()), this));
    layout->addStretch();

    for (auto signal : {&ReviewerModel::snapshotChanged, &ReviewerModel::navigationChanged,
                        &ReviewerModel::leanProposalsChanged})
        connect(&model_, signal, this, &LeanEvidenceView::refresh);
    for (auto signal : {&ReviewerModel::interactionChanged, &ReviewerModel::savedRevisionChanged})
        connect(&model_, signal, this, &LeanEvidenceView::refreshStatus);
    refresh();
}

void LeanEvidenceView::refreshStatus() {
    const dravik::ReviewDocument* document = model_.document();
    status_->setVisible(document != nullptr);
    if (!document)
        return;
    const std::string_view state = model_.hasPreview()  ? texts::previewPending
                                   : model_.isUnsaved() ? texts::unsaved
                                                        : texts::savedLocally;
    status_->setText(qText(texts::revisionStatus(document->revision(), state)));
}

void LeanEvidenceView::refresh() {
    refreshStatus();
    clearLayout(measurements_);
    const dravik::ReviewDocument* document = model_.document();
    const dravik::LeanReport* report = model_.leanReport();
    if (document)
        for (const std::string& id : model_.visibleIDs())
            if (const dravik::ReviewFrame* frame = model_.frame(id))
                measurements_->addWidget(
                    textLabel(qText(texts::leanMeasurementLine(*frame, report->frame(id)))));

    const auto pair = model_.pair();
    const bool comparing = document && model_.compare() && pair && pair->hasReference();
    comparison_->setVisible(comparing);
    if (!comparing)
        return;
    const dravik::LeanPairContext* stored = document->leanPairContext(pair->id);
    const dravik::LeanPairContext context = stored ? *stored : dravik::LeanPairContext();
    readout_->setText(qText(texts::leanComparisonLine(*report)));
    speedReadout_->setVisible(context.similarSpeed);
    for (qsizetype i = 0; i < checks_.size(); ++i) {
        const QSignalBlocker block(checks_[i]);
        checks_[i]->setChecked(context.*texts::leanChecks[i].flag);
    }
    {
        const QSignalBlocker block(similarSpeed_);
        similarSpeed_->setChecked(context.similarSpeed);
    }
    approve_->setEnabled(context.checksComplete());
    // Shown pressed while the approval still names the evidence on screen.
    approve_->setChecked(report->approved);
    approval_->setText(qText(texts::approvalLine(*report, context)));
}

} // namespace tessary
