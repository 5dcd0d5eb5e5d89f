#include "shell/review_menus.h"

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
    open_ = file->addAction("Open Session…");
    open_->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_O));
    save_ = file->addAction("Save Review");
    save_->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_S));
    addDiskReviewCommands(window, *file);
    QMenu* edit = window.menuBar()->addMenu("&Edit");
    undo_ = edit->addAction("Undo Review Edit");
    undo_->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Z));

    connect(open_, &QAction::triggered, this, [this] { model_.openSession(); });
    connect(save_, &QAction::triggered, this, [this] { model_.save(); });
    connect(undo_, &QAction::triggered, this, [this] { model_.undo(); });
    connect(&model_, &ReviewerModel::undoStackChanged, this, &ReviewMenus::refresh);
    refresh();
}

void ReviewMenus::refresh() {
    undo_->setEnabled(!model_.undoStack().empty());
}

void ReviewMenus::addDiskReviewCommands(QMainWindow& window, QMenu& file) {
    file.addSeparator();
    saveCopy_ = file.addAction("Save Review Copy…");
    reload_ = file.addAction("Reload Review from Disk");
    merge_ = file.addAction("Merge With Review on Disk");
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
