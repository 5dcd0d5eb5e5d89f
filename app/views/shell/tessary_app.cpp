// SPDX-License-Identifier: Apache-2.0
#include "shell/tessary_app.h"

#include "reviewer_model.h"
#include "shell/dialog_file_chooser.h"
#include "shell/review_window.h"

#include <QScreen>
#include <algorithm>
#include <filesystem>

namespace tessary {

TessaryApp::TessaryApp(Bundle bundle, QStringList arguments, std::shared_ptr<FileChooser> chooser)
    : arguments_(std::move(arguments)) {
    auto dialogs = chooser ? nullptr : std::make_shared<DialogFileChooser>();
    model_ =
        std::make_unique<ReviewerModel>(std::move(bundle), chooser ? std::move(chooser) : dialogs);
    window_ = std::make_unique<ReviewWindow>(*model_);
    if (dialogs)
        dialogs->setParent(window_.get());
    connect(window_.get(), &ReviewWindow::appeared, this, &TessaryApp::startUp);
}

// The window goes first: its views hold references to the model.
TessaryApp::~TessaryApp() {
    window_.reset();
}

void TessaryApp::show() {
    // Roomy by default, yet never larger than the screen.
    const QRect screen = window_->screen()->availableGeometry();
    window_->resize(std::min(1440, screen.width()), std::min(920, screen.height()));
    window_->show();
}

void TessaryApp::startUp() {
    window_->raise();
    window_->activateWindow();
    if (model_->document())
        return;
    if (arguments_.size() >= 3) {
        model_->load(std::filesystem::absolute(arguments_[1].toStdString()),
                     std::filesystem::absolute(arguments_[2].toStdString()));
        return;
    }
    model_->loadPresets();
    if (!model_->presets().empty())
        model_->openPreset(model_->presets().front());
    model_->discoverSessionsOnLaunch();
}

} // namespace tessary
