// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QList>
#include <QWidget>

class QCheckBox;
class QLabel;
class QPushButton;
class QVBoxLayout;

namespace tessary {

class ReviewerModel;

// The measured lean of each visible rider, the pair's lean comparison and its approval.
class LeanEvidenceView : public QWidget {
    Q_OBJECT

  public:
    explicit LeanEvidenceView(ReviewerModel& model, QWidget* parent = nullptr);

  private:
    void refresh();
    void refreshStatus();

    ReviewerModel& model_;
    QLabel* status_;
    QVBoxLayout* measurements_;
    QWidget* comparison_;
    QLabel* readout_;
    QLabel* speedReadout_;
    QList<QCheckBox*> checks_;
    QPushButton* approve_;
    QLabel* approval_;
    QCheckBox* similarSpeed_;
};

} // namespace tessary
