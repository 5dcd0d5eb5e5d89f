// SPDX-License-Identifier: Apache-2.0
#include "shell/review_menus.h"

#include "arrange/session_setup_dialog.h"
#include "coaching_report.h"
#include "reviewer_model.h"
#include "shell/disk_review_commands.h"

#include <QAction>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>

namespace tessary {

ReviewMenus::ReviewMenus(QMainWindow& window, ReviewerModel& model)
    : QObject(&window), model_(model) {
    QMenu* file = window.menuBar()->addMenu("&File");
    open_ = file->addAction("&Open Session…");
    open_->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_O));
    import_ = file->addAction("&Import Photo Folder…");
    arrange_ = file->addAction("&Arrange Session…");
    save_ = file->addAction("&Save Review");
    save_->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_S));
    addDiskReviewCommands(window, *file);
    file->addSeparator();
    exportReport_ = file->addAction("Export Coaching &Report…");
    exportCoco_ = file->addAction("Export Reviewed &Joints (COCO)…");
    file->addSeparator();
    quit_ = file->addAction("&Quit");
    quit_->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    quit_->setMenuRole(QAction::QuitRole);
    // Closing the window is quitting, and asks first when there is something to lose.
    connect(quit_, &QAction::triggered, &window, &QMainWindow::close);
    QMenu* edit = window.menuBar()->addMenu("&Edit");
    undo_ = edit->addAction("&Undo Review Edit");
    undo_->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Z));

    connect(open_, &QAction::triggered, this, [this] { model_.openSession(); });
    connect(import_, &QAction::triggered, this, [this] { model_.importPhotoFolder(); });
    connect(arrange_, &QAction::triggered, this,
            [this, &window] { SessionSetupDialog::openFor(&window, model_); });
    connect(save_, &QAction::triggered, this, [this] { model_.save(); });
    connect(undo_, &QAction::triggered, this, [this] { model_.undo(); });
    connect(exportReport_, &QAction::triggered, this, [this] {
        model_.exportCoachingReport([](const ReportSession& session,
                                       const std::vector<ReportSubject>& subjects,
                                       const std::filesystem::path& output) {
            return writeCoachingReport(session, subjects, output);
        });
    });
    connect(exportCoco_, &QAction::triggered, this, [this] { model_.exportCocoKeypoints(); });
    connect(&model_, &ReviewerModel::snapshotChanged, this, &ReviewMenus::refresh);
    connect(&model_, &ReviewerModel::undoStackChanged, this, &ReviewMenus::refresh);
    connect(&model_, &ReviewerModel::discoveryChanged, this, &ReviewMenus::refresh);
    connect(&model_, &ReviewerModel::sessionChanged, this, &ReviewMenus::refresh);
    refresh();
}

void ReviewMenus::refresh() {
    undo_->setEnabled(!model_.undoStack().empty());
    exportReport_->setEnabled(model_.document() != nullptr);
    exportCoco_->setEnabled(model_.document() != nullptr);
    import_->setEnabled(!model_.isDiscovering());
    arrange_->setEnabled(model_.document() != nullptr);
}

void ReviewMenus::addDiskReviewCommands(QMainWindow& window, QMenu& file) {
    file.addSeparator();
    saveCopy_ = file.addAction("Save Review &Copy…");
    reload_ = file.addAction("Re&load Review from Disk");
    merge_ = file.addAction("&Merge With Review on Disk");
    disk_ = new DiskReviewCommands(window, model_);
    connect(saveCopy_, &QAction::triggered, this, [this] { model_.saveCopy(); });
    connect(reload_, &QAction::triggered, disk_, &DiskReviewCommands::reload);
    connect(merge_, &QAction::triggered, disk_, &DiskReviewCommands::merge);
    const auto refreshDiskCommands = [this] {
        const bool open = model_.document() != nullptr;
        for (QAction* action : {saveCopy_, reload_, merge_})
            action->setEnabled(open);
    };
    connect(&model_, &ReviewerModel::snapshotChanged, this, refreshDiskCommands);
    refreshDiskCommands();
}

} // namespace tessary
