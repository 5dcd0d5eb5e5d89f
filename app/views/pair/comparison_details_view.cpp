// SPDX-License-Identifier: Apache-2.0
#include "pair/comparison_details_view.h"

#include "common/text_format.h"
#include "common/widgets.h"
#include "pair/highlight.h"
#include "pair_feedback_texts.h"
#include "reviewer_model.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

namespace tessary {

using namespace Qt::StringLiterals;

ComparisonDetailsView::ComparisonDetailsView(ReviewerModel& model, QWidget* parent)
    : CollapsibleSection({}, parent), model_(model) {
    QVBoxLayout* layout = contentLayout();
    layout->addWidget(textLabel(qText(texts::comparisonExplanation), this));
    auto* row = new QHBoxLayout;
    row->addWidget(new QLabel(qText(texts::directionOverrideTitle), this));
    direction_ = new QComboBox(this);
    direction_->setAccessibleName(qText(texts::directionOverrideTitle));
    direction_->setFixedWidth(320);
    for (const texts::DirectionChoice& choice : texts::directionChoices)
        direction_->addItem(qText(choice.title));
    row->addWidget(direction_);
    row->addStretch();
    layout->addLayout(row);
    connect(direction_, &QComboBox::activated, this, [this](int index) {
        const dravik::PairReport* report = model_.report();
        if (!report)
            return;
        dravik::PairContext context = report->context;
        context.directionOverride = texts::directionChoices[index].direction;
        model_.updateContext(context);
    });
    withheld_ = warningLabel(qText(texts::withheldNotice), this);
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
    setTitle(qText(texts::comparisonDetailsTitle(*report)));
    {
        const QSignalBlocker block(direction_);
        direction_->setCurrentIndex(static_cast<int>(texts::directionChoice(*report)));
    }
    withheld_->setVisible(texts::withholdsPhotoCoaching(*report));
    for (const dravik::FocusPoint& point : report->focusPoints) {
        auto* button = new QPushButton(qText(texts::focusPointLine(point)));
        button->setFlat(true);
        button->setStyleSheet(u"text-align: left"_s);
        connect(button, &QPushButton::clicked, this,
                [this, feature = point.feature] { highlight(model_, feature); });
        focusPoints_->addWidget(button);
    }
}

} // namespace tessary
