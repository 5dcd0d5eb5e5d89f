// SPDX-License-Identifier: Apache-2.0
#include "detection/session_discovery.h"
#include "environment/photo_folder_import.h"
#include "gui_thread.h"
#include "reviewer_model.h"

#include <QDir>
#include <QPointer>

namespace tessary {

namespace fs = std::filesystem;

namespace {

std::string analysing(int current, int total) {
    return "Analysing " + std::to_string(current) + " of " + std::to_string(total) +
           " photos\u2026";
}

} // namespace

void ReviewerModel::importPhotoFolder() {
    SignalHold hold(*this);
    if (isDiscovering_ || isDetecting_)
        return;
    const auto data = bundle_.dataDirectory();
    if (!data) {
        setError("Photos can be imported only into a data folder, and none is configured.");
        return;
    }
    const auto source = chooser_->chooseFolder("Choose a folder of photos to import",
                                               QDir::homePath().toStdString());
    if (!source)
        return;
    assign(isDiscovering_, true, discoveryChange);
    assign(discoveryFailures_, {}, discoveryChange);
    assign(unusablePhotos_, {}, discoveryChange);
    assign(discoveryStatus_, "Copying photos\u2026", discoveryChange);

    QPointer<ReviewerModel> model(this);
    const auto progress = [model](int current, int total) {
        onGuiThread([model, current, total] {
            if (!model || !model->isDiscovering_)
                return;
            SignalHold progressed(*model);
            model->assign(model->discoveryStatus_, analysing(current, total), discoveryChange);
        });
    };
    inBackground([model, source = *source, data = *data, known = knownResults(),
                  analyze = batchAnalysis(progress)] {
        ImportedFolder imported;
        try {
            imported = copyPhotoFolder(source, data);
        } catch (const std::exception& failure) {
            onGuiThread([model, reason = std::string(failure.what())] {
                if (!model)
                    return;
                SignalHold failed(*model);
                model->assign(model->isDiscovering_, false, discoveryChange);
                model->assign(model->discoveryStatus_, {}, discoveryChange);
                model->setError(reason);
            });
            return;
        }
        std::vector<std::string> unusable;
        for (const UnusablePhoto& photo : imported.unusable)
            unusable.push_back(photo.reason);
        onGuiThread([model, unusable, photos = static_cast<int>(imported.photos)] {
            if (!model)
                return;
            SignalHold copied(*model);
            model->assign(model->unusablePhotos_, unusable, discoveryChange);
            model->assign(model->discoveryStatus_,
                          "Starting the analysis of " + std::to_string(photos) + " photos\u2026",
                          discoveryChange);
        });
        const auto report = scanFolders(data, known, {}, analyze);
        onGuiThread([model, report, folder = imported.folder] {
            if (model)
                model->finishDiscovery(report, folder);
        });
    });
}

} // namespace tessary
