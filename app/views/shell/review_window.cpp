#include "shell/review_window.h"

#include "shell/quit_prompt.h"
#include "shell/review_alert.h"
#include "shell/review_menus.h"
#include "shell/reviewer_view.h"

#include <QCloseEvent>
#include <QShowEvent>

namespace tessary {

ReviewWindow::ReviewWindow(ReviewerModel& model, QWidget* parent)
    : QMainWindow(parent), view_(new ReviewerView(model, this)),
      menus_(new ReviewMenus(*this, model)), alert_(new ReviewAlert(*this, model)),
      quitPrompt_(new QuitPrompt(*this, model)) {
    setWindowTitle("Joint Review");
    view_->setMinimumSize(1000, 650);
    setCentralWidget(view_);
}

void ReviewWindow::showEvent(QShowEvent* event) {
    QMainWindow::showEvent(event);
    if (!event->spontaneous())
        emit appeared();
}

// Closing the window is quitting.
void ReviewWindow::closeEvent(QCloseEvent* event) {
    if (quitPrompt_->allowsClose())
        QMainWindow::closeEvent(event);
    else
        event->ignore();
}

} // namespace tessary
