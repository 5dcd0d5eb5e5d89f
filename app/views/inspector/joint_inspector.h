// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>

class QLabel;
class QListWidget;
class QPushButton;

namespace tessary {

class ReviewerModel;

// The right column in joint mode: every joint of the active rider with its review state, and the
// buttons that set the selected joint's state.
class JointInspector : public QWidget {
    Q_OBJECT

  public:
    static constexpr int columnWidth = 250;

    explicit JointInspector(ReviewerModel& model, QWidget* parent = nullptr);

    QLabel* heading() const { return heading_; }
    QListWidget* jointList() const { return joints_; }
    QPushButton* placeButton() const { return place_; }
    QPushButton* confirmButton() const { return confirm_; }
    QPushButton* obscuredButton() const { return obscured_; }
    QPushButton* uncertainButton() const { return uncertain_; }

  private:
    void refresh();

    ReviewerModel& model_;
    QLabel* heading_;
    QListWidget* joints_;
    QPushButton* place_;
    QPushButton* confirm_;
    QPushButton* obscured_;
    QPushButton* uncertain_;
};

} // namespace tessary
