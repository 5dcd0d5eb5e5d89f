// SPDX-License-Identifier: Apache-2.0
#include "coaching/single_photo_feedback_view.h"

#include "coaching/coaching_checklist_view.h"
#include "coaching_texts.h"
#include "common/collapsible_section.h"
#include "common/text_format.h"
#include "common/widgets.h"
#include "pair_feedback_texts.h"
#include "reviewer_model.h"

#include <QLabel>
#include <QVBoxLayout>

namespace tessary {

SinglePhotoFeedbackView::SinglePhotoFeedbackView(ReviewerModel& model, QWidget* parent)
    : QWidget(parent), model_(model) {
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(headingLabel(qText(texts::provisionalCoaching), this));
    layout->addWidget(secondaryLabel(qText(texts::singlePhotoSubtitle), this));
    layout->addWidget(new CoachingChecklistView(model_, this));
    loadError_ = warningLabel({}, this);
    layout->addWidget(loadError_);
    note_ = textLabel(qText(texts::singlePhotoNote), this);
    observations_ = new QVBoxLayout;
    basis_ = new CollapsibleSection(qText(texts::assessmentBasisTitle), this);
    absent_ = textLabel(qText(texts::noSinglePhotoCoaching), this);
    layout->addWidget(note_);
    layout->addLayout(observations_);
    layout->addWidget(basis_);
    layout->addWidget(absent_);
    layout->addWidget(secondaryLabel(qText(texts::stillPhotoLimitation), this));
    layout->addStretch();

    for (auto signal : {&ReviewerModel::sessionChanged, &ReviewerModel::snapshotChanged,
                        &ReviewerModel::navigationChanged})
        connect(&model_, signal, this, &SinglePhotoFeedbackView::refresh);
    refresh();
}

void SinglePhotoFeedbackView::refresh() {
    const dravik::SinglePhotoCoaching* coaching = model_.currentSinglePhotoCoaching();
    // Notes that failed to load are named instead of being passed off as never written.
    const auto& failure = model_.singlePhotoCoachingError();
    loadError_->setVisible(failure.has_value());
    loadError_->setText(QString::fromStdString(failure.value_or(std::string())));
    note_->setVisible(coaching != nullptr);
    basis_->setVisible(coaching != nullptr);
    absent_->setVisible(coaching == nullptr && !failure);
    clearLayout(observations_);
    clearLayout(basis_->contentLayout());
    if (!coaching)
        return;
    for (const std::string& observation : coaching->observations)
        observations_->addWidget(textLabel(qText(texts::observationLine(observation))));
    for (const std::string& basis : coaching->assessmentBasis)
        basis_->contentLayout()->addWidget(textLabel(QString::fromStdString(basis)));
}

} // namespace tessary
