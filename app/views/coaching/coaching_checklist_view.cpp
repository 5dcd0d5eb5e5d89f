// SPDX-License-Identifier: Apache-2.0
#include "coaching/coaching_checklist_view.h"

#include "coaching_texts.h"
#include "common/collapsible_section.h"
#include "common/text_format.h"
#include "common/widgets.h"
#include "reviewer_model.h"

#include <QLabel>
#include <QVBoxLayout>

namespace tessary {

CoachingChecklistView::CoachingChecklistView(ReviewerModel& model, QWidget* parent)
    : QWidget(parent), model_(model) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    heading_ = headingLabel({}, this);
    conflict_ = warningLabel(qText(texts::checklistConflict), this);
    loadError_ = warningLabel({}, this);
    assessed_ = new QVBoxLayout;
    allTopics_ = new CollapsibleSection(qText(texts::allTopicsTitle), this);
    layout->addWidget(heading_);
    layout->addWidget(conflict_);
    layout->addWidget(loadError_);
    layout->addLayout(assessed_);
    layout->addWidget(allTopics_);

    for (auto signal : {&ReviewerModel::sessionChanged, &ReviewerModel::snapshotChanged,
                        &ReviewerModel::navigationChanged})
        connect(&model_, signal, this, &CoachingChecklistView::refresh);
    refresh();
}

void CoachingChecklistView::refresh() {
    const texts::ChecklistRows rows = texts::checklistRows(model_.currentCoachingChecklist());
    heading_->setText(qText(texts::checklistHeading(rows)));
    conflict_->setVisible(model_.checklistDirectionConflict());
    const auto& failure = model_.coachingChecklistError();
    loadError_->setVisible(failure.has_value());
    loadError_->setText(QString::fromStdString(failure.value_or(std::string())));

    clearLayout(assessed_);
    if (rows.assessed.empty())
        assessed_->addWidget(textLabel(qText(texts::checklistAutomatic)));
    for (const dravik::CoachingChecklistItem& item : rows.assessed)
        assessed_->addWidget(textLabel(qText(texts::checklistStatusLine(item))));

    clearLayout(allTopics_->contentLayout());
    for (const dravik::CoachingChecklistItem& item : rows.items) {
        allTopics_->contentLayout()->addWidget(textLabel(qText(texts::checklistStatusLine(item))));
        if (const auto cue = texts::reviewCueLine(item))
            allTopics_->contentLayout()->addWidget(secondaryLabel(qText(*cue)));
    }
}

} // namespace tessary
