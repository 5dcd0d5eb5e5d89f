// SPDX-License-Identifier: Apache-2.0
#include "pair/angle_measurements_view.h"

#include "common/text_format.h"
#include "common/widgets.h"
#include "pair_feedback_texts.h"
#include "reviewer_model.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>
#include <algorithm>

namespace tessary {

namespace {

// The side's angle, then why it is missing when it is.
void addSide(QVBoxLayout* layout, const char* sideLabel, const dravik::AngleSide& side) {
    layout->addWidget(textLabel(qText(texts::sideAngleLine(sideLabel, side))));
    if (const auto gap = texts::sideGapLine(sideLabel, side))
        layout->addWidget(secondaryLabel(qText(*gap)));
}

} // namespace

AngleMeasurementsView::AngleMeasurementsView(ReviewerModel& model, QWidget* parent)
    : QWidget(parent), model_(model) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(headingLabel(qText(texts::anglesHeading), this));
    observations_ = new QVBoxLayout;
    layout->addLayout(observations_);
    evidence_ = secondaryLabel({}, this);
    layout->addWidget(evidence_);
    layout->addWidget(secondaryLabel(qText(dravik::PairReport::limitations()), this));

    connect(&model_, &ReviewerModel::snapshotChanged, this, &AngleMeasurementsView::refresh);
    connect(&model_, &ReviewerModel::navigationChanged, this, &AngleMeasurementsView::refresh);
    refresh();
}

void AngleMeasurementsView::refresh() {
    clearLayout(observations_);
    const dravik::PairReport* report = model_.report();
    if (!report)
        return;
    for (const dravik::PairObservation& observation : report->observations) {
        auto* block = new QVBoxLayout;
        block->setSpacing(2);
        auto* title = textLabel(qText(dravik::label(observation.feature)));
        QFont bold = title->font();
        bold.setBold(true);
        title->setFont(bold);
        block->addWidget(title);

        auto* row = new QHBoxLayout;
        row->addWidget(new QLabel(qText(texts::viewsTitle)));
        auto* views = new QComboBox;
        views->setAccessibleName(qText(texts::viewsTitle));
        for (dravik::ViewComparability value : dravik::allViewComparabilities)
            views->addItem(qText(dravik::label(value)));
        const auto* all = std::begin(dravik::allViewComparabilities);
        views->setCurrentIndex(static_cast<int>(
            std::find(all, std::end(dravik::allViewComparabilities), observation.comparability) -
            all));
        connect(views, &QComboBox::activated, this, [this, id = observation.id](int index) {
            const dravik::PairReport* current = model_.report();
            if (!current)
                return;
            dravik::PairContext context = current->context;
            context.viewComparability[id] = dravik::allViewComparabilities[index];
            model_.updateContext(context);
        });
        row->addWidget(views);
        row->addStretch();
        block->addLayout(row);

        block->addWidget(textLabel(qText(texts::differenceLine(observation.difference))));
        addSide(block, RiderLabels::rider, observation.rider);
        addSide(block, RiderLabels::reference, observation.reference);
        observations_->addLayout(block);
    }
    evidence_->setText(qText(texts::evidenceLine(*report)));
}

} // namespace tessary
