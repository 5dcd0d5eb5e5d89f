// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>

class QAction;
class QMainWindow;
class QMenu;

namespace tessary {

class DiskReviewCommands;
class ReviewerModel;

// The window's menu commands: opening, saving (and the ways out of a refused save), exporting,
// undoing and quitting. There is deliberately no Redo.
class ReviewMenus : public QObject {
    Q_OBJECT

  public:
    ReviewMenus(QMainWindow& window, ReviewerModel& model);

    QAction* openSession() const { return open_; }
    QAction* importPhotoFolder() const { return import_; }
    QAction* arrangeSession() const { return arrange_; }
    QAction* saveReview() const { return save_; }
    QAction* exportCoachingReport() const { return exportReport_; }
    QAction* exportCocoKeypoints() const { return exportCoco_; }
    QAction* undoReviewEdit() const { return undo_; }
    QAction* quit() const { return quit_; }
    QAction* saveReviewCopy() const { return saveCopy_; }
    QAction* reloadReview() const { return reload_; }
    QAction* mergeReview() const { return merge_; }
    DiskReviewCommands* diskCommands() const { return disk_; }

  private:
    void refresh();
    // The ways out of a refused save, enabled while a session is open.
    void addDiskReviewCommands(QMainWindow& window, QMenu& file);

    ReviewerModel& model_;
    QAction* open_;
    QAction* import_;
    QAction* arrange_;
    QAction* save_;
    QAction* exportReport_;
    QAction* exportCoco_;
    QAction* undo_;
    QAction* quit_;
    QAction* saveCopy_;
    QAction* reload_;
    QAction* merge_;
    DiskReviewCommands* disk_;
};

} // namespace tessary
