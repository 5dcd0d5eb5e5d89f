// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>
#include <QPointer>

class QMainWindow;
class QMessageBox;

namespace tessary {

class ReviewerModel;

// Closing the window is quitting: with edits the review file does not hold (a save was refused),
// it first asks "Quit and discard unsaved changes?". Cancel keeps the window and the edits.
class QuitPrompt : public QObject {
    Q_OBJECT

  public:
    QuitPrompt(QMainWindow& window, ReviewerModel& model);

    // Whether a close may go ahead now; if not, the question is on screen and answering Quit
    // closes the window again.
    bool allowsClose();
    // The question while it is shown, else null.
    QMessageBox* box() const;

  private:
    QMainWindow& window_;
    ReviewerModel& model_;
    QPointer<QMessageBox> box_;
    bool confirmed_ = false;
};

} // namespace tessary
