// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "environment/bundle.h"

#include <QObject>
#include <QStringList>
#include <memory>

namespace tessary {

class FileChooser;
class ReviewerModel;
class ReviewWindow;

// The application: one model for the life of the process and the one window that shows it.
class TessaryApp : public QObject {
    Q_OBJECT

  public:
    // `arguments` as the process got them, the program first. Without a chooser, files are asked
    // for with the window's own dialogs.
    TessaryApp(Bundle bundle, QStringList arguments, std::shared_ptr<FileChooser> chooser = {});
    ~TessaryApp() override;

    ReviewerModel& model() const { return *model_; }
    ReviewWindow& window() const { return *window_; }
    void show();

  private:
    // Runs each time the window appears; feeds the model only while nothing is open.
    void startUp();

    QStringList arguments_;
    std::unique_ptr<ReviewerModel> model_;
    std::unique_ptr<ReviewWindow> window_;
};

} // namespace tessary
