// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>
#include <QPointer>

class QMessageBox;
class QWidget;

namespace tessary {

class MergeDialog;
class ReviewerModel;

// The File menu's ways out of a refused save that ask first: reloading
// throws the unsaved edits away only after "Discard", and a merge whose sides disagree is settled
// in the merge dialog.
class DiskReviewCommands : public QObject {
    Q_OBJECT

  public:
    DiskReviewCommands(QWidget& window, ReviewerModel& model);

    void reload();
    void merge();

    // The question or dialog while it is shown, else null.
    QMessageBox* reloadPrompt() const;
    MergeDialog* mergeDialog() const;

  private:
    QWidget& window_;
    ReviewerModel& model_;
    QPointer<QMessageBox> reloadPrompt_;
    QPointer<MergeDialog> mergeDialog_;
};

} // namespace tessary
