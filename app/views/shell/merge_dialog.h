// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "editing/review_on_disk.h"

#include <QDialog>
#include <vector>

class QPushButton;
class QRadioButton;

namespace tessary {

// "Merge With Review on Disk": lists the entries both sides changed, by photo (or pair) and
// joint (or what else the entry is), each with this window's value and the one on disk. The
// reviewer keeps one side for each; on disk is chosen until they pick otherwise.
class MergeDialog : public QDialog {
    Q_OBJECT

  public:
    MergeDialog(PendingMerge pending, QWidget* parent);

    // The merge with the choices made.
    PendingMerge settled() const;

    QRadioButton* keepMine(std::size_t conflict) const { return mine_.at(conflict); }
    QRadioButton* keepTheirs(std::size_t conflict) const { return theirs_.at(conflict); }
    QPushButton* mergeButton() const { return merge_; }

  private:
    PendingMerge pending_;
    std::vector<QRadioButton*> mine_;
    std::vector<QRadioButton*> theirs_;
    QPushButton* merge_;
};

} // namespace tessary
