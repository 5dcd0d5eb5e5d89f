// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>

class QComboBox;
class QLabel;

namespace tessary {

class ReviewerModel;

// The reviewer's visual comparison of the two knees, for pairs without photo coaching.
class KneePlacementView : public QWidget {
    Q_OBJECT

  public:
    explicit KneePlacementView(ReviewerModel& model, QWidget* parent = nullptr);

  private:
    void refresh();

    ReviewerModel& model_;
    QLabel* labels_[2];
    QComboBox* pickers_[2];
};

} // namespace tessary
