// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>

class QLabel;
class QVBoxLayout;

namespace tessary {

class ReviewerModel;

// Provisional coaching of the active pair, the reviewer's context and the measurements behind it.
class PairFeedbackView : public QWidget {
    Q_OBJECT

  public:
    explicit PairFeedbackView(ReviewerModel& model, QWidget* parent = nullptr);

  private:
    void refresh();
    void refreshStatus();

    ReviewerModel& model_;
    QWidget* content_;
    QWidget* leanEvidence_;
    QLabel* status_;
    QVBoxLayout* bullets_;
    QLabel* methodNote_;
    QWidget* knees_;
};

} // namespace tessary
