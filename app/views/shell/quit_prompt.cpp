// SPDX-License-Identifier: Apache-2.0
#include "shell/quit_prompt.h"

#include "reviewer_model.h"
#include "shell/confirmation.h"

#include <QMainWindow>
#include <QMessageBox>
#include <utility>

namespace tessary {

QuitPrompt::QuitPrompt(QMainWindow& window, ReviewerModel& model)
    : QObject(&window), window_(window), model_(model) {}

QMessageBox* QuitPrompt::box() const {
    return box_ && box_->isVisible() ? box_.data() : nullptr;
}

bool QuitPrompt::allowsClose() {
    if (std::exchange(confirmed_, false) || model_.unsavedEdits() == 0)
        return true;
    if (!box())
        box_ = askToConfirm(window_, "Quit and discard unsaved changes?", "Quit", [this] {
            confirmed_ = true;
            window_.close();
        });
    return false;
}

} // namespace tessary
