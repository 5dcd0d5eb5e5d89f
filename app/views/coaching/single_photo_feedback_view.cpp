#include "coaching/single_photo_feedback_view.h"

#include "coaching/coaching_checklist_view.h"
#include "common/collapsible_section.h"
#include "common/widgets.h"
#include "dravik/coaching.h"
#include "reviewer_model.h"

#include <QLabel>
#include <QVBoxLayout>

namespace tessary {

using namespace Qt::StringLiterals;

SinglePhotoFeedbackView::SinglePhotoFeedbackView(ReviewerModel& model, QWidget* parent)
    : QWidget(parent), model_(model) {
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(headingLabel(u"Provisional coaching"_s, this));
    layout->addWidget(secondaryLabel(u"Single-photo assessment · no reference rider"_s, this));
    layout->addWidget(new CoachingChecklistView(model_, this));
    loadError_ = warningLabel({}, this);
    layout->addWidget(loadError_);
    note_ = textLabel(u"Photo-based draft · observations and practice cues, not coach-validated "
                      u"findings. No comparison with another rider is implied."_s,
                      this);
    observations_ = new QVBoxLayout;
    basis_ = new CollapsibleSection(u"Assessment basis"_s, this);
    absent_ =
        textLabel(u"No provisional photo assessment has been added for this image yet."_s, this);
    layout->addWidget(note_);
    layout->addLayout(observations_);
    layout->addWidget(basis_);
    layout->addWidget(absent_);
    layout->addWidget(secondaryLabel(u"A still photo cannot establish grip pressure, hidden joint "
                                     u"positions, braking or acceleration timing, or a precise "
                                     u"body-position target."_s,
                                     this));
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
        observations_->addWidget(textLabel(u"• "_s + QString::fromStdString(observation)));
    for (const std::string& basis : coaching->assessmentBasis)
        basis_->contentLayout()->addWidget(textLabel(QString::fromStdString(basis)));
}

} // namespace tessary
