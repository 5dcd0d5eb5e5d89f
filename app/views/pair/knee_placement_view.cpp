#include "pair/knee_placement_view.h"

#include "common/text_format.h"
#include "common/widgets.h"
#include "reviewer_model.h"

#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QSignalBlocker>
#include <QVBoxLayout>
#include <algorithm>

namespace tessary {

using namespace Qt::StringLiterals;

namespace {

constexpr dravik::PairFeature knees[] = {dravik::PairFeature::insideKnee,
                                         dravik::PairFeature::outsideKnee};

int indexOf(dravik::KneePlacement placement) {
    const auto* all = std::begin(dravik::allKneePlacements);
    return static_cast<int>(std::find(all, std::end(dravik::allKneePlacements), placement) - all);
}

} // namespace

KneePlacementView::KneePlacementView(ReviewerModel& model, QWidget* parent)
    : QWidget(parent), model_(model) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(headingLabel(u"Knee placement · visual review"_s, this));
    layout->addWidget(
        textLabel(u"Compare Rider with Reference rider at a similar cornering moment. Choose a "
                  u"difference only when the thigh, knee and tank are visible in both views and "
                  u"perspective allows comparison. Consider pelvis and foot placement together; "
                  u"otherwise choose Cannot compare."_s,
                  this));
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
    layout->addWidget(secondaryLabel(u"Knees marked obscured are excluded from coaching."_s, this));

    connect(&model_, &ReviewerModel::snapshotChanged, this, &KneePlacementView::refresh);
    connect(&model_, &ReviewerModel::navigationChanged, this, &KneePlacementView::refresh);
    refresh();
}

void KneePlacementView::refresh() {
    const dravik::PairReport* report = model_.report();
    if (!report)
        return;
    for (int i = 0; i < 2; ++i) {
        const auto role = dravik::role(knees[i], report->effectiveCornerDirection);
        labels_[i]->setText(QString::fromStdString(role.value_or(std::string())) + u" knee"_s);
        pickers_[i]->setAccessibleName(labels_[i]->text());
        int selected = -1; // no choice stored: the picker shows none
        if (const auto& stored = report->context.kneePlacements)
            if (auto found = stored->find(knees[i]); found != stored->end())
                selected = indexOf(found->second);
        const QSignalBlocker block(pickers_[i]);
        pickers_[i]->setCurrentIndex(selected);
    }
}

} // namespace tessary
