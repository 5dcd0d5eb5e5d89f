#include "coaching/coaching_checklist_view.h"

#include "common/collapsible_section.h"
#include "common/text_format.h"
#include "common/widgets.h"
#include "dravik/coaching.h"
#include "reviewer_model.h"

#include <QLabel>
#include <QVBoxLayout>

namespace tessary {

using namespace Qt::StringLiterals;

namespace {

QString statusLine(const dravik::CoachingChecklistItem& item) {
    return QString::fromStdString(item.topic.title) + u" · "_s + qText(dravik::label(item.status));
}

} // namespace

CoachingChecklistView::CoachingChecklistView(ReviewerModel& model, QWidget* parent)
    : QWidget(parent), model_(model) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    heading_ = headingLabel({}, this);
    conflict_ = warningLabel(u"Saved findings use a different turn direction. Restore the photo "
                             u"direction or reassess this checklist."_s,
                             this);
    loadError_ = warningLabel({}, this);
    assessed_ = new QVBoxLayout;
    allTopics_ = new CollapsibleSection(u"All topics and practice cues"_s, this);
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
    const dravik::CoachingChecklistReview* saved = model_.currentCoachingChecklist();
    const auto items = dravik::CoachingChecklist::rows(
        saved ? std::optional(*saved) : std::optional<dravik::CoachingChecklistReview>());
    std::vector<const dravik::CoachingChecklistItem*> assessed;
    for (const dravik::CoachingChecklistItem& item : items)
        if (item.status != dravik::allCoachingReviewStatuses[0])
            assessed.push_back(&item);

    heading_->setText(u"Whole-body review · "_s + QString::number(assessed.size()) + u" of "_s +
                      QString::number(items.size()) + u" topics assessed"_s);
    conflict_->setVisible(model_.checklistDirectionConflict());
    const auto& failure = model_.coachingChecklistError();
    loadError_->setVisible(failure.has_value());
    loadError_->setText(QString::fromStdString(failure.value_or(std::string())));

    clearLayout(assessed_);
    if (assessed.empty())
        assessed_->addWidget(textLabel(u"Checklist added automatically. Photo-specific findings "
                                       u"await visual review; no fault has been detected."_s));
    for (const dravik::CoachingChecklistItem* item : assessed)
        assessed_->addWidget(textLabel(statusLine(*item)));

    clearLayout(allTopics_->contentLayout());
    for (const dravik::CoachingChecklistItem& item : items) {
        allTopics_->contentLayout()->addWidget(textLabel(statusLine(item)));
        if (!item.topic.cue.empty())
            allTopics_->contentLayout()->addWidget(
                secondaryLabel(u"Review cue: "_s + QString::fromStdString(item.topic.cue)));
    }
}

} // namespace tessary
