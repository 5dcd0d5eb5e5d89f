// SPDX-License-Identifier: Apache-2.0
#include "shell/review_window.h"

#include "common/wheel_guard.h"
#include "reviewer_model.h"
#include "shell/help_menu.h"
#include "shell/quit_prompt.h"
#include "shell/review_alert.h"
#include "shell/review_menus.h"
#include "shell/reviewer_view.h"
#include "shell/view_menu.h"

#include <QCloseEvent>
#include <QShowEvent>

namespace tessary {

ReviewWindow::ReviewWindow(ReviewerModel& model, QWidget* parent)
    : QMainWindow(parent), model_(model), view_(new ReviewerView(model, this)),
      menus_(new ReviewMenus(*this, model)), alert_(new ReviewAlert(*this, model)),
      quitPrompt_(new QuitPrompt(*this, model)) {
    addViewMenu(*this, *view_, model);
    addHelpMenu(*this);
    new WheelGuard(*this);
    view_->setMinimumSize(1000, 650);
    setCentralWidget(view_);
    connect(&model_, &ReviewerModel::sessionChanged, this, &ReviewWindow::refreshTitle);
    refreshTitle();
}

void ReviewWindow::refreshTitle() {
    const QString session = QString::fromStdString(model_.sessionTitle());
    setWindowTitle(session.isEmpty() ? QStringLiteral("Joint Review")
                                     : QStringLiteral("Joint Review \u2014 ") + session);
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
