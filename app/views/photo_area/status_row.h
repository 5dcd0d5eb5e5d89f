// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>

class QAction;
class QLabel;
class QToolButton;

namespace tessary {

class ReviewerModel;

// The row under the photos: the detection retry menu, what the mouse and keys do, and the model's
// status message.
class StatusRow : public QWidget {
    Q_OBJECT

  public:
    explicit StatusRow(ReviewerModel& model, QWidget* parent = nullptr);

    QToolButton* retryMenu() const { return retry_; }
    QAction* cropRetry() const { return cropRetry_; }
    QAction* fullPhotoRetry() const { return fullPhotoRetry_; }
    QLabel* helpText() const { return help_; }
    QLabel* messageText() const { return message_; }

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    void refresh();

    ReviewerModel& model_;
    QToolButton* retry_;
    QAction* cropRetry_;
    QAction* fullPhotoRetry_;
    QLabel* help_;
    QLabel* message_;
};

} // namespace tessary
