// SPDX-License-Identifier: Apache-2.0
#include "shell/reviewer_view.h"

#include "arrange/session_setup_dialog.h"
#include "dravik/discovery.h"
#include "inspector/joint_inspector.h"
#include "lean/lean_review_view.h"
#include "pair/frame_pane.h"
#include "photo_area/photo_area.h"
#include "photo_area/status_row.h"
#include "reviewer_model.h"
#include "sidebar/discovery_notices.h"
#include "sidebar/sidebar.h"
#include "toolbar/review_toolbar.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace tessary {

namespace {

constexpr int leanPanelWidth = 290;

QFrame* separator(QWidget* parent) {
    auto* line = new QFrame(parent);
    line->setFrameShape(QFrame::VLine);
    line->setFrameShadow(QFrame::Sunken);
    return line;
}

} // namespace

ReviewerView::ReviewerView(ReviewerModel& model, QWidget* parent)
    : QWidget(parent), model_(model), sidebar_(new Sidebar(model, this)),
      toolbar_(new ReviewToolbar(model)), discovery_(new DiscoveryNotices(model)),
      riderNoticeRow_(new QWidget),
      riderNotice_(new QLabel("Automatically imported photo · confirm the intended rider before "
                              "relying on joint markers.",
                              riderNoticeRow_)),
      setRider_(new QPushButton("Set rider…", riderNoticeRow_)), photoArea_(new PhotoArea(model)),
      statusRow_(new StatusRow(model)), inspectorSeparator_(separator(this)),
      jointInspector_(new JointInspector(model, this)),
      leanPanel_(new LeanReviewView(model, this)) {
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    row->addWidget(sidebar_);
    row->addWidget(separator(this));

    auto* central = new QWidget(this);
    auto* column = new QVBoxLayout(central);
    column->setSpacing(10);
    column->addWidget(toolbar_);
    column->addWidget(discovery_);
    riderNotice_->setWordWrap(true);
    auto* notice = new QHBoxLayout(riderNoticeRow_);
    notice->setContentsMargins(0, 0, 0, 0);
    notice->addWidget(riderNotice_, 1);
    notice->addWidget(setRider_);
    connect(setRider_, &QPushButton::clicked, this, [this] {
        if (const dravik::ReviewFrame* frame = model_.frame())
            SessionSetupDialog::openFor(window(), model_, frame->id);
    });
    column->addWidget(riderNoticeRow_);
    column->addWidget(photoArea_, 1);
    column->addWidget(statusRow_);
    row->addWidget(central, 1);

    row->addWidget(inspectorSeparator_);
    row->addWidget(jointInspector_);
    leanPanel_->setFixedWidth(leanPanelWidth);
    row->addWidget(leanPanel_);

    for (auto signal : {&ReviewerModel::snapshotChanged, &ReviewerModel::navigationChanged,
                        &ReviewerModel::viewOptionsChanged})
        connect(&model_, signal, this, &ReviewerView::refresh);
    refresh();
}

QWidget* ReviewerView::inspectorColumn() const {
    if (!jointInspector_->isHidden())
        return jointInspector_;
    if (!leanPanel_->isHidden())
        return leanPanel_;
    return nullptr;
}

FramePane* ReviewerView::activePane() const {
    const auto active = model_.activeFrameID();
    if (!active)
        return nullptr;
    for (FramePane* pane : photoArea_->findChildren<FramePane*>())
        if (pane->frameID() == *active && pane->isVisible())
            return pane;
    return nullptr;
}

void ReviewerView::refresh() {
    const dravik::ReviewFrame* frame = model_.frame();
    riderNoticeRow_->setVisible(frame && frame->riderDisplayName ==
                                             dravik::SessionDiscovery::unreviewedRiderName());
    const bool inspector = model_.inspectorVisible();
    jointInspector_->setVisible(inspector && !model_.leanMode());
    leanPanel_->setVisible(inspector && model_.leanMode());
    inspectorSeparator_->setVisible(inspector);
}

} // namespace tessary
