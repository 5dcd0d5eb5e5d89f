// SPDX-License-Identifier: Apache-2.0
#include "photo_area/photo_area.h"

#include "coaching/single_photo_feedback_view.h"
#include "common/split_memory.h"
#include "lean/lean_evidence_view.h"
#include "pair/frame_pane.h"
#include "pair/pair_comparison_view.h"
#include "pair/pair_feedback_view.h"
#include "photo_area/empty_state.h"
#include "reviewer_model.h"

#include <QLabel>
#include <QScrollArea>
#include <QSplitter>
#include <QVBoxLayout>

namespace tessary {

namespace {

QWidget* scrolling(QWidget* content) {
    auto* scroll = new QScrollArea;
    scroll->setWidget(content);
    scroll->setWidgetResizable(true);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setFrameShape(QFrame::NoFrame);
    return scroll;
}

} // namespace

PhotoArea::PhotoArea(ReviewerModel& model, QWidget* parent)
    : QWidget(parent), model_(model), splitter_(new QSplitter(Qt::Vertical, this)) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(splitter_);
    splitter_->setChildrenCollapsible(false);
    splitter_->setHandleWidth(10);
    for (auto signal : {&ReviewerModel::sessionChanged, &ReviewerModel::snapshotChanged,
                        &ReviewerModel::navigationChanged, &ReviewerModel::viewOptionsChanged})
        connect(&model_, signal, this, &PhotoArea::refresh);
    refresh();
}

void PhotoArea::refresh() {
    bool changed = false;
    auto put = [&](Slot slot, const std::string& key, int stretch, const auto& make) {
        changed |= place(slot, key, stretch, make);
    };
    const dravik::ReviewFrame* frame = model_.frame();
    const bool subject = frame && frame->role == "subject";
    const bool hasReport = model_.report() != nullptr;
    const bool single = frame && !model_.compare();
    const bool compare = frame && model_.compare();
    const auto pair = compare ? model_.pair() : std::nullopt;
    auto on = [](bool shown) { return shown ? std::string("shown") : std::string(); };

    put(emptyState, on(!frame), 1, [this] {
        return new EmptyState("Open a photo session", [this] { model_.importPhotoFolder(); });
    });
    put(singlePane, single ? frame->id : std::string(), 7,
        [this, frame] { return new FramePane(model_, frame->id); });
    put(singleFeedback, single && subject ? (hasReport ? "pair" : "single") : "", 3,
        [this, hasReport]() -> QWidget* {
            if (hasReport)
                return scrolling(new PairFeedbackView(model_));
            return scrolling(new SinglePhotoFeedbackView(model_));
        });
    // With a pair the comparison view carries the lean evidence under its photos, so that they
    // stay put whichever frame is active.
    put(leanEvidence, on(compare && model_.leanMode() && !pair), 1,
        [this] { return scrolling(new LeanEvidenceView(model_)); });
    put(comparison, pair ? pair->id : std::string(), 4,
        [this] { return new PairComparisonView(model_); });
    put(noReference, on(compare && !pair && subject), 0, [] {
        auto* label =
            new QLabel("No reference rider exists for this photograph. Review it in Single mode.");
        label->setWordWrap(true);
        label->setAlignment(Qt::AlignCenter);
        return label;
    });
    // The space is shared out again only when parts come or go, not when one is replaced.
    if (changed)
        shareSpace();
}

// An arrangement starts with each part's share of the height, or where the reviewer last dragged
// the same arrangement's split.
void PhotoArea::shareSpace() {
    QList<int> sizes;
    int total = 0;
    QString arrangement = QStringLiteral("photoArea");
    for (std::size_t slot = 0; slot < parts_.size(); ++slot)
        if (parts_[slot].widget) {
            sizes << std::max(stretch_[slot], 1);
            total += sizes.back();
            arrangement += QString::number(slot);
        }
    if (keepSplit(splitter_, arrangement))
        return;
    const int height = std::max(splitter_->height(), 400);
    for (int& size : sizes)
        size = size * height / std::max(total, 1);
    splitter_->setSizes(sizes);
}

bool PhotoArea::place(Slot slot, const std::string& key, int stretch,
                      const std::function<QWidget*()>& make) {
    Part& part = parts_[slot];
    if (part.key == key)
        return false;
    part.key = key;
    stretch_[slot] = stretch;
    QWidget* old = part.widget;
    part.widget = key.empty() ? nullptr : make();
    if (old && part.widget)
        // Taking the old part's place keeps the height the reviewer gave it.
        splitter_->replaceWidget(splitter_->indexOf(old), part.widget);
    else if (part.widget)
        splitter_->insertWidget(splitter_->indexOf(nextPart(slot)), part.widget);
    if (old) {
        // The old part may be the one whose event led here; it goes once that event is done.
        old->hide();
        old->setParent(nullptr);
        old->deleteLater();
    }
    return !old != !part.widget;
}

// The first part after `slot`, before which a new part of `slot` goes; null when there is none.
QWidget* PhotoArea::nextPart(Slot slot) const {
    for (std::size_t later = slot + 1; later < parts_.size(); ++later)
        if (parts_[later].widget)
            return parts_[later].widget;
    return nullptr;
}

} // namespace tessary
