#pragma once

#include <QObject>

class QAction;
class QMainWindow;

namespace tessary {

class ReviewerModel;

// The window's menu commands: opening, saving and undoing. There is deliberately no Redo.
class ReviewMenus : public QObject {
    Q_OBJECT

  public:
    ReviewMenus(QMainWindow& window, ReviewerModel& model);

    QAction* openSession() const { return open_; }
    QAction* importPhotoFolder() const { return import_; }
    QAction* arrangeSession() const { return arrange_; }
    QAction* saveReview() const { return save_; }
    QAction* undoReviewEdit() const { return undo_; }

  private:
    void refresh();

    ReviewerModel& model_;
    QAction* open_;
    QAction* import_;
    QAction* arrange_;
    QAction* save_;
    QAction* undo_;
};

} // namespace tessary
