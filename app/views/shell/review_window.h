// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QMainWindow>

namespace tessary {

class ReviewAlert;
class ReviewerModel;
class ReviewerView;
class ReviewMenus;
class QuitPrompt;

// "Joint Review", with the open session's title: the one window, with its menus and its alert.
class ReviewWindow : public QMainWindow {
    Q_OBJECT

  public:
    explicit ReviewWindow(ReviewerModel& model, QWidget* parent = nullptr);

    ReviewerView* view() const { return view_; }
    ReviewMenus* menus() const { return menus_; }
    ReviewAlert* alert() const { return alert_; }
    QuitPrompt* quitPrompt() const { return quitPrompt_; }

  signals:
    // Each time the window is shown by the program (not when the window system restores it).
    void appeared();

  protected:
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

  private:
    void refreshTitle();

    ReviewerModel& model_;
    ReviewerView* view_;
    ReviewMenus* menus_;
    ReviewAlert* alert_;
    QuitPrompt* quitPrompt_;
};

} // namespace tessary
