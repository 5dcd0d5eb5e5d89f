// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>

class QLabel;
class QVBoxLayout;

namespace tessary {

class CollapsibleSection;
class ReviewerModel;

// The provisional assessment of a photo that has no reference rider to compare with.
class SinglePhotoFeedbackView : public QWidget {
    Q_OBJECT

  public:
    explicit SinglePhotoFeedbackView(ReviewerModel& model, QWidget* parent = nullptr);

  private:
    void refresh();

    ReviewerModel& model_;
    QLabel* note_;
    QVBoxLayout* observations_;
    CollapsibleSection* basis_;
    QLabel* absent_;
    QLabel* loadError_;
};

} // namespace tessary
