// SPDX-License-Identifier: Apache-2.0
#include "pair/pair_comparison_view.h"

#include "common/split_memory.h"
#include "common/widgets.h"
#include "lean/lean_evidence_view.h"
#include "pair/frame_pane.h"
#include "pair/pair_feedback_view.h"
#include "reviewer_model.h"

#include <QHBoxLayout>
#include <QScrollArea>
#include <QSplitter>
#include <QVBoxLayout>

namespace tessary {

PairComparisonView::PairComparisonView(ReviewerModel& model, QWidget* parent)
    : QWidget(parent), model_(model) {
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    content_ = new QWidget(this);
    outer->addWidget(content_);
    auto* layout = new QVBoxLayout(content_);
    layout->setContentsMargins(0, 0, 0, 0);
    // The feedback is long: it scrolls under the photos, and the reader moves the split.
    auto* split = new QSplitter(Qt::Vertical, content_);
    split->setChildrenCollapsible(false);
    auto* photos = new QWidget(split);
    panes_ = new QHBoxLayout(photos);
    panes_->setContentsMargins(0, 0, 0, 0);
    auto* feedback = new QScrollArea(split);
    feedback->setWidgetResizable(true);
    feedback->setFrameShape(QFrame::NoFrame);
    feedback->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto* padded = new QWidget;
    auto* paddedLayout = new QVBoxLayout(padded);
    paddedLayout->setContentsMargins(0, 8, 0, 8);
    // The pair feedback carries the lean evidence under the photos, whichever frame is active, so
    // that they never move; without a report it is shown here, in the same place.
    leanEvidence_ = new LeanEvidenceView(model_, padded);
    paddedLayout->addWidget(leanEvidence_);
    paddedLayout->addWidget(new PairFeedbackView(model_, padded));
    feedback->setWidget(padded);
    split->addWidget(photos);
    split->addWidget(feedback);
    split->setStretchFactor(0, 7);
    split->setStretchFactor(1, 3);
    if (!keepSplit(split, QStringLiteral("pairComparison")))
        split->setSizes({700, 300});
    layout->addWidget(split);

    connect(&model_, &ReviewerModel::snapshotChanged, this, &PairComparisonView::refresh);
    connect(&model_, &ReviewerModel::navigationChanged, this, &PairComparisonView::refresh);
    connect(&model_, &ReviewerModel::viewOptionsChanged, this, &PairComparisonView::refresh);
    refresh();
}

void PairComparisonView::refresh() {
    const auto pair = model_.pair();
    content_->setVisible(pair.has_value());
    leanEvidence_->setVisible(model_.leanMode() && !model_.report());
    const std::vector<std::string> ids = pair ? pair->frameIDs : std::vector<std::string>();
    if (ids == shownIDs_)
        return;
    clearLayout(panes_);
    for (const std::string& id : ids)
        panes_->addWidget(new FramePane(model_, id), 1);
    shownIDs_ = ids;
}

} // namespace tessary
