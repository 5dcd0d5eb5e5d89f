// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>

class QLabel;
class QVBoxLayout;

namespace tessary {

class CollapsibleSection;
class ReviewerModel;

// The whole-body checklist of the active photo; read only.
class CoachingChecklistView : public QWidget {
    Q_OBJECT

  public:
    explicit CoachingChecklistView(ReviewerModel& model, QWidget* parent = nullptr);

  private:
    void refresh();

    ReviewerModel& model_;
    QLabel* heading_;
    QLabel* conflict_;
    QLabel* loadError_;
    QVBoxLayout* assessed_;
    CollapsibleSection* allTopics_;
};

} // namespace tessary
