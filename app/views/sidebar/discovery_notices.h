#pragma once

#include <QWidget>

class QLabel;

namespace tessary {

class BusySpinner;
class CollapsibleSection;
class ReviewerModel;

// What folder discovery is doing, and the folders it could not analyse.
class DiscoveryNotices : public QWidget {
    Q_OBJECT

  public:
    explicit DiscoveryNotices(ReviewerModel& model, QWidget* parent = nullptr);

    QWidget* statusLine() const { return statusLine_; }
    BusySpinner* spinner() const { return spinner_; }
    QLabel* statusText() const { return status_; }
    CollapsibleSection* failureGroup() const { return failureGroup_; }
    QLabel* failureText() const { return failures_; }

  private:
    void refresh();

    ReviewerModel& model_;
    QWidget* statusLine_;
    BusySpinner* spinner_;
    QLabel* status_;
    CollapsibleSection* failureGroup_;
    QLabel* failures_;
};

} // namespace tessary
