// SPDX-License-Identifier: Apache-2.0
#include "shell/disk_review_commands.h"

#include "reviewer_model.h"
#include "shell/confirmation.h"
#include "shell/merge_dialog.h"

#include <QMessageBox>

namespace tessary {

DiskReviewCommands::DiskReviewCommands(QWidget& window, ReviewerModel& model)
    : QObject(&window), window_(window), model_(model) {}

QMessageBox* DiskReviewCommands::reloadPrompt() const {
    return reloadPrompt_ && reloadPrompt_->isVisible() ? reloadPrompt_.data() : nullptr;
}

MergeDialog* DiskReviewCommands::mergeDialog() const {
    return mergeDialog_ && mergeDialog_->isVisible() ? mergeDialog_.data() : nullptr;
}

void DiskReviewCommands::reload() {
    const int unsaved = model_.unsavedEdits();
    if (unsaved == 0) {
        model_.reloadFromDisk();
        return;
    }
    const QString edits =
        unsaved == 1 ? "1 unsaved edit" : QString::number(unsaved) + " unsaved edits";
    reloadPrompt_ =
        askToConfirm(window_, "Discard " + edits + " and load the review saved on disk?", "Discard",
                     [this] { model_.reloadFromDisk(); });
}

void DiskReviewCommands::merge() {
    auto pending = model_.prepareMerge();
    if (!pending)
        return;
    if (pending->merge.conflicts().empty()) {
        model_.applyMerge(*pending);
        return;
    }
    mergeDialog_ = new MergeDialog(std::move(*pending), &window_);
    mergeDialog_->setAttribute(Qt::WA_DeleteOnClose);
    connect(mergeDialog_, &QDialog::accepted, this, [this, dialog = mergeDialog_] {
        if (dialog)
            model_.applyMerge(dialog->settled());
    });
    mergeDialog_->open();
}

} // namespace tessary
