// SPDX-License-Identifier: Apache-2.0
#include "pair/knee_placement_view.h"

#include "common/text_format.h"
#include "common/widgets.h"
#include "pair_feedback_texts.h"
#include "reviewer_model.h"

#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QSignalBlocker>
#include <QVBoxLayout>
#include <algorithm>

namespace tessary {

namespace {

using texts::knees;

int indexOf(dravik::KneePlacement placement) {
    const auto* all = std::begin(dravik::allKneePlacements);
    return static_cast<int>(std::find(all, std::end(dravik::allKneePlacements), placement) - all);
}

} // namespace

KneePlacementView::KneePlacementView(ReviewerModel& model, QWidget* parent)
    : QWidget(parent), model_(model) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(headingLabel(qText(texts::kneeHeading), this));
    layout->addWidget(textLabel(qText(texts::kneeInstruction), this));
    auto* grid = new QGridLayout;
    for (int i = 0; i < 2; ++i) {
        labels_[i] = new QLabel(this);
        pickers_[i] = new QComboBox(this);
        for (dravik::KneePlacement placement : dravik::allKneePlacements)
            pickers_[i]->addItem(qText(dravik::label(placement)));
        grid->addWidget(labels_[i], i, 0);
        grid->addWidget(pickers_[i], i, 1);
        connect(pickers_[i], &QComboBox::activated, this, [this, knee = knees[i]](int index) {
            const dravik::PairReport* report = model_.report();
            if (!report)
                return;
            dravik::PairContext context = report->context;
            if (!context.kneePlacements)
                context.kneePlacements.emplace();
            (*context.kneePlacements)[knee] = dravik::allKneePlacements[index];
            model_.updateContext(context);
        });
    }
    grid->setColumnStretch(2, 1);
    layout->addLayout(grid);
    layout->addWidget(secondaryLabel(qText(texts::kneeNote), this));

    connect(&model_, &ReviewerModel::snapshotChanged, this, &KneePlacementView::refresh);
    connect(&model_, &ReviewerModel::navigationChanged, this, &KneePlacementView::refresh);
    refresh();
}

void KneePlacementView::refresh() {
    const dravik::PairReport* report = model_.report();
    if (!report)
        return;
    for (int i = 0; i < 2; ++i) {
        labels_[i]->setText(qText(texts::kneeLabel(*report, knees[i])));
        pickers_[i]->setAccessibleName(labels_[i]->text());
        const auto stored = texts::kneePlacement(*report, knees[i]);
        const int selected = stored ? indexOf(*stored) : -1; // none stored: the picker shows none
        const QSignalBlocker block(pickers_[i]);
        pickers_[i]->setCurrentIndex(selected);
    }
}

} // namespace tessary
