// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>
#include <string>
#include <vector>

class QHBoxLayout;

namespace tessary {

class LeanEvidenceView;
class PairFeedbackView;
class ReviewerModel;

// The active pair's photos side by side above the pair feedback (and the lean evidence, in wheel
// lean review, when the feedback does not carry it).
class PairComparisonView : public QWidget {
    Q_OBJECT

  public:
    explicit PairComparisonView(ReviewerModel& model, QWidget* parent = nullptr);

  private:
    void refresh();

    ReviewerModel& model_;
    QWidget* content_;
    QHBoxLayout* panes_;
    LeanEvidenceView* leanEvidence_;
    // The frames the panes were made for; panes persist while the pair stays the same.
    std::vector<std::string> shownIDs_;
};

} // namespace tessary
