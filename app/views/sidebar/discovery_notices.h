// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>

class QLabel;

namespace tessary {

class BusySpinner;
class CollapsibleSection;
class ReviewerModel;

// What folder discovery or an import is doing, the folders it could not analyse and the files of
// an imported folder that were not imported.
class DiscoveryNotices : public QWidget {
    Q_OBJECT

  public:
    explicit DiscoveryNotices(ReviewerModel& model, QWidget* parent = nullptr);

    QWidget* statusLine() const { return statusLine_; }
    BusySpinner* spinner() const { return spinner_; }
    QLabel* statusText() const { return status_; }
    CollapsibleSection* failureGroup() const { return failureGroup_; }
    QLabel* failureText() const { return failures_; }
    CollapsibleSection* unusableGroup() const { return unusableGroup_; }
    QLabel* unusableText() const { return unusable_; }

  private:
    void refresh();

    ReviewerModel& model_;
    QWidget* statusLine_;
    BusySpinner* spinner_;
    QLabel* status_;
    CollapsibleSection* failureGroup_;
    QLabel* failures_;
    CollapsibleSection* unusableGroup_;
    QLabel* unusable_;
};

} // namespace tessary
