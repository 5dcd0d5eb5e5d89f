// SPDX-License-Identifier: Apache-2.0
#include "toolbar/review_toolbar.h"

#include "reviewer_model.h"
#include "toolbar/segmented_picker.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QPushButton>
#include <QResizeEvent>
#include <QSignalBlocker>
#include <QVBoxLayout>

namespace tessary {

ReviewToolbar::ReviewToolbar(ReviewerModel& model, QWidget* parent)
    : QWidget(parent), model_(model),
      reviewMode_(new SegmentedPicker("Review mode", "Single", "Compare", 190, this)),
      edit_(new SegmentedPicker("Edit", "Joints", "Wheel lean", 185, this)),
      markers_(new QCheckBox("Show markers", this)), inspector_(new QPushButton("Inspector", this)),
      undo_(new QPushButton("Undo", this)) {
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(6);
    firstRow_ = new QHBoxLayout;
    secondRow_ = new QHBoxLayout;
    rows->addLayout(firstRow_);
    rows->addLayout(secondRow_);
    firstRow_->addWidget(reviewMode_);
    firstRow_->addWidget(edit_);
    firstRow_->addWidget(markers_);
    firstRow_->addStretch();
    trailing_ = new QWidget(this);
    auto* trailing = new QHBoxLayout(trailing_);
    trailing->setContentsMargins(0, 0, 0, 0);
    trailing->addWidget(inspector_);
    trailing->addWidget(undo_);
    firstRow_->addWidget(trailing_);
    secondRow_->addStretch();

    // After each request the controls show the model again, in case it refused.
    connect(reviewMode_, &SegmentedPicker::chosen, this, [this](bool on) {
        model_.setCompare(on);
        refresh();
    });
    connect(edit_, &SegmentedPicker::chosen, this, [this](bool on) {
        model_.setLeanMode(on);
        refresh();
    });
    connect(markers_, &QCheckBox::toggled, this, [this](bool on) { model_.setShowMarkers(on); });
    connect(inspector_, &QPushButton::clicked, this,
            [this] { model_.setInspectorVisible(!model_.inspectorVisible()); });
    connect(undo_, &QPushButton::clicked, this, [this] { model_.undo(); });

    connect(&model_, &ReviewerModel::navigationChanged, this, &ReviewToolbar::refresh);
    connect(&model_, &ReviewerModel::viewOptionsChanged, this, &ReviewToolbar::refresh);
    connect(&model_, &ReviewerModel::undoStackChanged, this, &ReviewToolbar::refresh);
    refresh();
}

void ReviewToolbar::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    arrange(event->size().width());
}

QSize ReviewToolbar::minimumSizeHint() const {
    const int width = reviewMode_->width() + edit_->width() + markers_->sizeHint().width() +
                      2 * firstRow_->spacing();
    return {width, layout()->minimumSize().height()};
}

void ReviewToolbar::arrange(int width) {
    const int needed =
        minimumSizeHint().width() + trailing_->sizeHint().width() + 2 * firstRow_->spacing();
    const bool oneRow = width >= needed;
    if (oneRow == (firstRow_->indexOf(trailing_) >= 0))
        return;
    if (oneRow) {
        secondRow_->removeWidget(trailing_);
        firstRow_->addWidget(trailing_);
    } else {
        firstRow_->removeWidget(trailing_);
        secondRow_->addWidget(trailing_);
    }
    updateGeometry();
}

void ReviewToolbar::refresh() {
    reviewMode_->display(model_.compare());
    edit_->display(model_.leanMode());
    {
        const QSignalBlocker blocker(markers_);
        markers_->setChecked(model_.showMarkers());
    }
    undo_->setEnabled(!model_.undoStack().empty());
}

} // namespace tessary
