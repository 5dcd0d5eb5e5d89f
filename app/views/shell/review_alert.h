// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>
#include <QPointer>

class QMessageBox;
class QWidget;

namespace tessary {

class ReviewerModel;

// "Review needs attention": shown while the model holds an error; dismissing it in any way clears
// the error.
class ReviewAlert : public QObject {
    Q_OBJECT

  public:
    ReviewAlert(QWidget& window, ReviewerModel& model);

    // The alert while it is shown, else null.
    QMessageBox* box() const;

  private:
    void refresh();

    ReviewerModel& model_;
    QMessageBox* box_;
};

} // namespace tessary
