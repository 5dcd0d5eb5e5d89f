#include "pair/comparison_details_view.h"

#include "common/text_format.h"
#include "common/widgets.h"
#include "pair/highlight.h"
#include "reviewer_model.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>
#include <algorithm>

namespace tessary {

using namespace Qt::StringLiterals;

namespace {

// The picker's rows: no override, then the two turn directions.
const std::optional<dravik::CornerDirection> overrides[] = {
    std::nullopt, dravik::CornerDirection::left, dravik::CornerDirection::right};

} // namespace

ComparisonDetailsView::ComparisonDetailsView(ReviewerModel& model, QWidget* parent)
    : CollapsibleSection({}, parent), model_(model) {
    QVBoxLayout* layout = contentLayout();
    layout->addWidget(textLabel(u"Rider and Reference rider come from the session’s saved role "
                                u"assignments. Turn direction uses your saved selection, or the "
                                u"photo assessment when available."_s,
                                this));
    auto* row = new QHBoxLayout;
    row->addWidget(new QLabel(u"Direction override"_s, this));
    direction_ = new QComboBox(this);
    direction_->setAccessibleName(u"Direction override"_s);
    direction_->setFixedWidth(320);
    direction_->addItems({u"Use photo assessment"_s, u"Left"_s, u"Right"_s});
    row->addWidget(direction_);
    row->addStretch();
    layout->addLayout(row);
    connect(direction_, &QComboBox::activated, this, [this](int index) {
        const dravik::PairReport* report = model_.report();
        if (!report)
            return;
        dravik::PairContext context = report->context;
        context.directionOverride = overrides[index];
        model_.updateContext(context);
    });
    withheld_ = warningLabel(u"Photo coaching is withheld because your direction override "
                             u"differs from the reviewed photos."_s,
                             this);
    layout->addWidget(withheld_);
    focusPoints_ = new QVBoxLayout;
    layout->addLayout(focusPoints_);

    connect(&model_, &ReviewerModel::snapshotChanged, this, &ComparisonDetailsView::refresh);
    connect(&model_, &ReviewerModel::navigationChanged, this, &ComparisonDetailsView::refresh);
    refresh();
}

void ComparisonDetailsView::refresh() {
    clearLayout(focusPoints_);
    const dravik::PairReport* report = model_.report();
    if (!report)
        return;
    setTitle(u"Comparison details · "_s +
             qText(dravik::rawValue(report->effectiveCornerDirection)) + u" turn"_s);
    const auto& chosen = report->context.directionOverride;
    {
        const QSignalBlocker block(direction_);
        const auto* row = std::find(std::begin(overrides), std::end(overrides), chosen);
        direction_->setCurrentIndex(
            row == std::end(overrides) ? 0 : static_cast<int>(row - std::begin(overrides)));
    }
    withheld_->setVisible(chosen.has_value() && !report->hasPhotoCoaching);
    for (const dravik::FocusPoint& point : report->focusPoints) {
        auto* button = new QPushButton(qText(dravik::label(point.feature)) + u": "_s +
                                       whole(point.difference) + u"° "_s +
                                       QString::fromUtf8(RiderLabels::rider) + u" − "_s +
                                       QString::fromUtf8(RiderLabels::reference));
        button->setFlat(true);
        button->setStyleSheet(u"text-align: left"_s);
        connect(button, &QPushButton::clicked, this,
                [this, feature = point.feature] { highlight(model_, feature); });
        focusPoints_->addWidget(button);
    }
}

} // namespace tessary
