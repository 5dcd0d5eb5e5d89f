// SPDX-License-Identifier: Apache-2.0
#include "photo_area/status_row.h"

#include "reviewer_model.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QResizeEvent>
#include <QStyle>
#include <QToolButton>

namespace tessary {

namespace {

constexpr int narrowWidth = 760;

QString helpFor(const ReviewerModel& model) {
    if (model.leanMode())
        return "Drag yellow wheel or cyan reference handles. Release saves; Escape cancels.";
    if (model.placing())
        return "Click the active photo to place the selected joint. Escape cancels.";
    return "Drag to correct; arrows move 1 source pixel, Shift moves 10.";
}

} // namespace

StatusRow::StatusRow(ReviewerModel& model, QWidget* parent)
    : QWidget(parent), model_(model), retry_(new QToolButton(this)), help_(new QLabel(this)),
      message_(new QLabel(this)) {
    auto* menu = new QMenu(retry_);
    cropRetry_ = menu->addAction("Original rider crop");
    fullPhotoRetry_ = menu->addAction("Full photo panel");
    retry_->setMenu(menu);
    retry_->setPopupMode(QToolButton::InstantPopup);
    connect(cropRetry_, &QAction::triggered, this, [this] { model_.retryDetection(false); });
    connect(fullPhotoRetry_, &QAction::triggered, this, [this] { model_.retryDetection(true); });

    help_->setForegroundRole(QPalette::PlaceholderText);
    help_->setWordWrap(true);
    message_->setWordWrap(true);
    message_->setTextFormat(Qt::PlainText);
    message_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    message_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(retry_);
    layout->addWidget(help_, 2);
    layout->addWidget(message_, 3);

    connect(&model_, &ReviewerModel::detectingChanged, this, &StatusRow::refresh);
    connect(&model_, &ReviewerModel::viewOptionsChanged, this, &StatusRow::refresh);
    connect(&model_, &ReviewerModel::interactionChanged, this, &StatusRow::refresh);
    connect(&model_, &ReviewerModel::messageChanged, this, &StatusRow::refresh);
    refresh();
}

// Beside two panes and an inspector the row is too narrow for the hint and the message, which
// would wrap past its height: the message matters more, the hint stays in the tooltip.
void StatusRow::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    help_->setVisible(width() >= narrowWidth);
}

void StatusRow::refresh() {
    const bool detecting = model_.isDetecting();
    retry_->setText(detecting ? "Detecting…" : "Retry detection for active rider");
    // The style leaves no room for the menu's arrow, which would cover the last letter.
    retry_->setMinimumWidth(
        retry_->sizeHint().width() +
        retry_->style()->pixelMetric(QStyle::PM_MenuButtonIndicator, nullptr, retry_));
    retry_->setEnabled(!detecting);
    help_->setText(helpFor(model_));
    setToolTip(help_->text());
    message_->setText(QString::fromStdString(model_.message()));
}

} // namespace tessary
