#include "shell/review_menus.h"

#include "arrange/session_setup_dialog.h"
#include "reviewer_model.h"

#include <QAction>
#include <QMainWindow>
#include <QMenuBar>

namespace tessary {

ReviewMenus::ReviewMenus(QMainWindow& window, ReviewerModel& model)
    : QObject(&window), model_(model) {
    QMenu* file = window.menuBar()->addMenu("&File");
    open_ = file->addAction("Open Session…");
    open_->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_O));
    import_ = file->addAction("Import Photo Folder…");
    arrange_ = file->addAction("Arrange Session…");
    save_ = file->addAction("Save Review");
    save_->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_S));
    QMenu* edit = window.menuBar()->addMenu("&Edit");
    undo_ = edit->addAction("Undo Review Edit");
    undo_->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Z));

    connect(open_, &QAction::triggered, this, [this] { model_.openSession(); });
    connect(import_, &QAction::triggered, this, [this] { model_.importPhotoFolder(); });
    connect(arrange_, &QAction::triggered, this,
            [this, &window] { SessionSetupDialog::openFor(&window, model_); });
    connect(save_, &QAction::triggered, this, [this] { model_.save(); });
    connect(undo_, &QAction::triggered, this, [this] { model_.undo(); });
    connect(&model_, &ReviewerModel::undoStackChanged, this, &ReviewMenus::refresh);
    connect(&model_, &ReviewerModel::discoveryChanged, this, &ReviewMenus::refresh);
    connect(&model_, &ReviewerModel::sessionChanged, this, &ReviewMenus::refresh);
    refresh();
}

void ReviewMenus::refresh() {
    undo_->setEnabled(!model_.undoStack().empty());
    import_->setEnabled(!model_.isDiscovering());
    arrange_->setEnabled(model_.document() != nullptr);
}

} // namespace tessary
