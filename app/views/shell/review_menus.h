#pragma once

#include <QObject>

class QAction;
class QMainWindow;

namespace tessary {

class ReviewerModel;

// The window's menu commands: opening, saving, exporting and undoing. There is deliberately no
// Redo.
class ReviewMenus : public QObject {
    Q_OBJECT

  public:
    ReviewMenus(QMainWindow& window, ReviewerModel& model);

    QAction* openSession() const { return open_; }
    QAction* saveReview() const { return save_; }
    QAction* exportCoachingReport() const { return exportReport_; }
    QAction* exportCocoKeypoints() const { return exportCoco_; }
    QAction* undoReviewEdit() const { return undo_; }
    QAction* quit() const { return quit_; }

  private:
    void refresh();

    ReviewerModel& model_;
    QAction* open_;
    QAction* save_;
    QAction* exportReport_;
    QAction* exportCoco_;
    QAction* undo_;
    QAction* quit_;
};

} // namespace tessary
